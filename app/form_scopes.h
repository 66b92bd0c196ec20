// What commands hold while the machine stands still for them.
#pragma once

#include "app/kiv_form.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"

#include <optional>

// Parks the CPU thread and silences the sound for as long as it lives. Not paused: the CPU thread could not
// be parked, and the command is dropped.
class kiv_form::pause_scope {
  public:
    explicit pause_scope(kiv_form &f) : form(f), is_paused(f.pause_machine() != 0) {
        if (is_paused) program.directx->stop();
    }
    ~pause_scope() {
        if (!is_paused) return;
        if (form.held) { // stays so; what covered its picture is gone
            kiv_directx::present_frame();
            if (form.debugging && form.attached) form.window->debugger_changed(false);
            return;
        }
        program.cpu_thread->resume_run();
        program.directx->play();
    }
    pause_scope(const pause_scope &) = delete;
    pause_scope &operator=(const pause_scope &) = delete;
    explicit operator bool() const { return is_paused; }
    // The emulation ends here.
    void end() {
        is_paused = false;
        program.cpu_thread->request_stop();
        program.cpu_thread->resume_run();
        program.cpu_thread->stop();
        program.directx->release();
    }

  private:
    kiv_form &form;
    bool is_paused;
};

// The two halves around every dialog, whatever happens between them.
class kiv_form::dialog_scope {
  public:
    enum how : unsigned { plain = 0, take_focus = 1, erase = 2, release_keys = 4 };

    dialog_scope(kiv_form &f, unsigned wanted) : form(f), with(wanted) {
        if (form.in_dialog) return;
        pause.emplace(form);
        if (!*pause) return;
        form.in_dialog = true;
        form.show_cursor_if_full_screen();
        if (with & take_focus) form.window->set_focus();
        form.window->invalidate((with & erase) != 0);
    }
    ~dialog_scope() {
        if (!*this) return;
        form.in_dialog = false;
        if (form.session_ends) {
            pause->end();
            return;
        }
        form.hide_cursor_if_full_screen();
        form.window->set_focus();
        if (with & release_keys) form.release_keys();
    }
    dialog_scope(const dialog_scope &) = delete;
    dialog_scope &operator=(const dialog_scope &) = delete;
    explicit operator bool() const { return pause && *pause; }

  private:
    kiv_form &form;
    const unsigned with;
    std::optional<pause_scope> pause; // ends last
};

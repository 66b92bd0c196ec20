// The debugger of the window: from its menu item to what it shows.
#include "app/form_debugger.h"

#include "api/kiv.h"
#include "api/typing.h"
#include "app/debugger_look.h"
#include "app/form_scopes.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "platform/texts.h"

#include <utility>

using platform::debugger_action;

// ---- the form's part ---------------------------------------------------------------------------------

void kiv_form::toggle_debugger() {
    if (debugging)
        close_debugger();
    else
        open_debugger();
}

// The machine goes on as it was: running, or paused.
void kiv_form::open_debugger() {
    if (in_dialog || deactivated || wire_refuses()) return;
    end_rewind();
    if (!pause_machine()) return;
    typing.cancel();
    debugging = std::make_unique<debugger>(*this);
    program.cpu_thread->run_from(&debugging->session);
    if (held)
        debugging->session.stop_here();
    else
        program.cpu_thread->resume_run();
    window->show_debugger(debugging.get(), own.debugger_layout);
    window->menus_changed();
}

void kiv_form::close_debugger() {
    if (!debugging || in_dialog || deactivated) return;
    end_rewind();
    own.debugger_layout = window->debugger_layout();
    window->show_debugger(nullptr, {});
    if (!pause_machine()) return;
    program.cpu_thread->run_from(nullptr);
    debugging.reset();
    resume_held();
    save_user_settings();
    window->menus_changed();
}

void kiv_form::resume_held() {
    held = false;
    program.cpu_thread->resume_run();
    program.directx->play();
}

void kiv_form::at_machine(std::function<void()> change) {
    if (debug_session *const s = session())
        s->before_pass(std::move(change));
    else
        change();
}

void kiv_form::machine_changed(bool another) {
    if (another) { // its tape may have come with it
        const auto known = tape_names.find(cassette_tape_checksum());
        tape_name = known == tape_names.end() ? std::string() : known->second;
    }
    if (debug_session *const s = session()) s->changed(another);
}

// ---- stop and go -------------------------------------------------------------------------------------

kiv_form::debugger::debugger(kiv_form &f)
    : session(
          program.directx->sound(), [&f] { f.post(WM_DEBUG_STOPPED, 0, 0); },
          [&f](const std::string &path) {
              if (!f.window->save_picture(path)) throw debug_error(path + ": " + platform::last_file_error());
          }),
      form(f) {}

template <class Do> bool kiv_form::debugger::while_parked(Do what) {
    if (form.held || form.in_dialog || form.deactivated) {
        what();
        return true;
    }
    if (program.cpu_thread == nullptr || !program.cpu_thread->pause()) return false;
    what();
    program.cpu_thread->resume_run();
    return true;
}

template <class Do> bool kiv_form::debugger::work(Do what) {
    while_parked([&] {
        const bool had_dialog = std::exchange(form.in_dialog, true);
        working = true;
        const auto shown = form.host.begin_work(*form.window, platform::text("デバッガが実行しています"));
        session.goes_on = [&shown](double part) { return shown->goes_on(part); };
        what();
        session.goes_on = nullptr;
        working = false;
        form.in_dialog = had_dialog;
    });
    if (!form.session_ends) return true;
    pause_scope(form).end();
    return false;
}

void kiv_form::debugger::stopped() {
    if (form.in_dialog || form.deactivated) return session.tell_again(); // once that is over
    if (!form.held && !form.pause_machine()) return;
    if (!session.stands()) { // it was told to go meanwhile
        if (!form.held) program.cpu_thread->resume_run();
        return;
    }
    form.held = true;
    program.directx->stop();
    show_machine();
    session.show_stop();
    form.window->menus_changed();
    ++changes;
    form.window->debugger_changed(true);
}

void kiv_form::debugger::stopped_by_hand() {
    session.stop_here();
    show_machine();
    moved();
}

void kiv_form::debugger::moved() {
    ++changes;
    form.window->debugger_changed(false);
}

// The picture as far as the machine has come. A picture leaves the carried attributes for the next one;
// looking must not.
void kiv_form::debugger::show_machine() {
    const uint8_t colour = machine.carried_colour, attribute = machine.carried_attribute;
    kiv_directx::present_frame();
    machine.carried_colour = colour;
    machine.carried_attribute = attribute;
}

// A machine that runs is stopped first, where it is.
void kiv_form::debugger::run(aim_kind kind, uint16_t address) {
    if (form.in_dialog || form.deactivated) return;
    form.end_rewind();
    if (!form.held && kind != aim_kind::address) return form.toggle_pause();
    if (!form.held && !form.pause_machine()) return;
    session.go(kind, address);
    form.held = false;
    program.cpu_thread->resume_run();
    if (kind == aim_kind::none || kind == aim_kind::address) program.directx->play();
    form.window->menus_changed();
    moved();
}

void kiv_form::debugger::step_back(aim_kind kind) {
    if (form.in_dialog || form.deactivated) return;
    form.end_rewind();
    if (!form.held) form.toggle_pause();
    if (!form.held) return;
    if (!work([&] { session.back(kind); })) return;
    form.release_keys();
    show_machine();
    session.show_stop();
    moved();
}

void kiv_form::debugger::debugger_acts(debugger_action action, uint16_t value) {
    switch (action) {
    case debugger_action::go_or_stop: return run(aim_kind::none, 0);
    case debugger_action::into: return run(aim_kind::into, 0);
    case debugger_action::over: return run(aim_kind::over, 0);
    case debugger_action::out: return run(aim_kind::out, 0);
    case debugger_action::frame: return run(aim_kind::frame, 0);
    case debugger_action::run_to: return run(aim_kind::address, value);
    case debugger_action::back_into: return step_back(aim_kind::into);
    case debugger_action::back_over: return step_back(aim_kind::over);
    case debugger_action::back_out: return step_back(aim_kind::out);
    case debugger_action::back_frame: return step_back(aim_kind::frame);
    case debugger_action::back_go: return step_back(aim_kind::none);
    case debugger_action::put_pc: debugger_sets_register(KIV_REG_PC, value); return;
    }
}

// ---- changes and questions ---------------------------------------------------------------------------

std::string kiv_form::debugger::debugger_sets_register(int index, uint32_t value) {
    std::string wrong;
    while_parked([&] {
        if (session.driver.set_register(index, value) != KIV_OK) wrong = kiv_error_text();
    });
    moved();
    return wrong;
}

std::string kiv_form::debugger::debugger_writes(int area, uint32_t address,
                                                const std::vector<uint8_t> &bytes) {
    std::string wrong;
    while_parked([&] {
        if (session.driver.write(area, address, bytes.data(), bytes.size()) != KIV_OK)
            wrong = kiv_error_text();
    });
    if (form.held) show_machine();
    moved();
    return wrong;
}

void kiv_form::debugger::debugger_toggles_point(uint16_t address) {
    while_parked([&] {
        for (const stop_point &p : session.driver.points())
            if (p.kind == stop_kind::address && p.first == address && p.last == address) {
                session.driver.remove(p.id);
                return;
            }
        session.driver.add({.first = address, .last = address});
    });
    moved();
}

std::string kiv_form::debugger::debugger_adds_point(const std::string &text) {
    const bool whole = text.starts_with("break ") || text.starts_with("watch ");
    std::string wrong;
    while_parked([&] { wrong = session.command(whole ? text : "break " + text); });
    moved();
    return wrong;
}

void kiv_form::debugger::debugger_removes_point(uint32_t id) {
    while_parked([&] { session.driver.remove(id); });
    moved();
}

void kiv_form::debugger::debugger_enables_point(uint32_t id, bool on) {
    while_parked([&] { session.driver.enable(id, on); });
    moved();
}

void kiv_form::debugger::debugger_command(const std::string &line) {
    if (form.in_dialog || form.deactivated) return;
    form.end_rewind();
    const std::string word = line.substr(0, line.find_first_of(" \t"));
    if (word == "go" || word == "g" || word == "c" || word == "continue") {
        if (line == word) {
            if (form.held) run(aim_kind::none, 0);
            return;
        }
    }
    bool goes_on = true, another_place = false;
    const bool lives = work([&] {
        const uint64_t before = kiv_t_states();
        goes_on = session.execute(line, form.held);
        another_place = kiv_t_states() != before;
    });
    if (!lives) return;
    if (another_place) form.release_keys();
    if (form.held) show_machine();
    moved();
    if (!goes_on) form.post(platform::wm_sys_command, menu_debugger, 0);
}

std::vector<std::string> kiv_form::debugger::debugger_completes(const std::string &line) {
    std::vector<std::string> words;
    while_parked([&] { words = session.complete(line); });
    return words;
}

int64_t kiv_form::debugger::debugger_finds(const std::string &text, std::string &wrong) {
    int64_t value = -1;
    while_parked([&] {
        try {
            value = parse_expression(text, session.driver.symbols)();
        } catch (const debug_error &error) {
            wrong = error.what();
        }
    });
    return wrong.empty() ? value & 0xFFFF : -1;
}

void kiv_form::debugger::debugger_closed(const std::string &layout) {
    form.own.debugger_layout = layout;
    form.post(platform::wm_sys_command, menu_debugger, 0);
}

bool kiv_form::debugger::debugger_looks(const platform::debugger_request &at, platform::debugger_look &look) {
    if (working) return false;
    look.running = !form.held;
    look.changes = changes;
    return while_parked([&] {
        look.why = session.why();
        look_at_machine(session, at, look);
    });
}

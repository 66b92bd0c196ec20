// Time at the person's will: other speeds, frame by frame, and backwards.
#include "app/kiv_form.h"

#include "app/form_debugger.h"
#include "app/form_scopes.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/texts.h"
#include "support/host_keys.h"

#include <chrono>

using platform::text;

namespace {

constexpr uint32_t rewind_tick_ms = 16;

} // namespace

// Per cent, in the order of the menu.
const uint32_t kiv_form::speeds[kiv_form::speed_count] = {25, 50, 75, 100, 150, 200, 300, 400};

void kiv_form::choose_speed(uint32_t percent) {
    speed = percent;
    own.values[user_speed] = static_cast<int>(percent);
    save_user_settings();
    apply_speed();
    notify(text("速さ") + " " + std::to_string(percent) + " %");
}

void kiv_form::apply_speed() {
    const bool fast = (fast_forward || fast_key) && !typing_ticks;
    program.cpu_thread->set_speed(fast ? any_speed : speed);
    program.cpu_thread->set_fast_tape(lenient(user_fast_tape) && !typing_ticks);
    window->menus_changed();
}

void kiv_form::toggle_fast_forward() {
    fast_forward = !fast_forward;
    apply_speed();
    notify(text(fast_forward ? "早送り" : "もとの速さ"));
}

// The machine is paused from then on.
void kiv_form::step_time(bool back) {
    if (in_dialog || deactivated || wire_refuses()) return;
    end_rewind();
    if (!held) toggle_pause();
    if (!held) return;
    if (debugging) // whose past it is
        return debugging->debugger_acts(
            back ? platform::debugger_action::back_frame : platform::debugger_action::frame, 0);
    if (!back) {
        if (program.cpu_thread->step_frame())
            kiv_directx::present_frame();
        else
            post(WM_Z80ABORT, main_cpu.trace_pc, main_cpu.stop_reason);
        return;
    }
    if (history.at_beginning()) {
        notify(text("これより前には戻れません"));
        return;
    }
    const std::string wrong = history.one_back();
    if (!wrong.empty()) tell_fault(wrong);
    machine_changed(true);
    release_keys();
    kiv_directx::present_frame();
}

void kiv_form::begin_rewind() {
    if (rewinding || in_dialog || deactivated || wire_refuses()) return;
    held_before_rewind = held;
    if (!held && !pause_machine()) return;
    held = rewinding = true;
    program.directx->stop();
    const auto begun = std::chrono::steady_clock::now();
    const uint64_t from = history.now();
    const uint64_t run = ++rewinds;
    notify(text("巻き戻し中"));
    window->menus_changed();
    host.every(rewind_tick_ms, [this, begun, from, run] {
        if (!rewinding || run != rewinds) return false;
        if (in_dialog || deactivated) return true;
        const std::chrono::duration<double> gone = std::chrono::steady_clock::now() - begun;
        const auto back = static_cast<uint64_t>(gone.count() * machine.clock_hz);
        return rewind_to(from > back ? from - back : 0);
    });
}

bool kiv_form::rewind_to(uint64_t stamp) {
    const bool was_at_beginning = history.at_beginning();
    const std::string wrong = history.go_back_to(stamp);
    kiv_directx::present_frame();
    machine_changed(true);
    if (!wrong.empty()) {
        tell_fault(wrong);
    } else if (history.at_beginning() && !was_at_beginning) {
        notify(text("これより前には戻れません"));
    }
    return wrong.empty() && !history.at_beginning();
}

void kiv_form::end_rewind() {
    if (!rewinding) return;
    rewinding = false;
    release_keys();
    held = held_before_rewind;
    window->menus_changed();
    if (held || in_dialog || deactivated) return;
    program.cpu_thread->resume_run();
    program.directx->play();
}

void kiv_form::toggle_rewind() {
    if (rewinding)
        end_rewind();
    else
        begin_rewind();
}

// Scroll Lock, which the machine does not have, works for as long as it is held: backwards, and with Shift
// ahead. True: it was that key.
bool kiv_form::time_key(uint32_t virtual_key, bool down) {
    if (virtual_key != vk_scroll_lock) return false;
    if (down && !window->shift_down()) {
        begin_rewind();
    } else if (down) {
        fast_key = true;
        apply_speed();
    } else {
        end_rewind();
        if (!fast_key) return true;
        fast_key = false;
        apply_speed();
    }
    return true;
}

#include "cpu/z80_thread.h"

#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "machine/machine_run.h"
#include "machine/run_block.h"
#include "platform/clock.h"
#include "platform/host.h"
#include "platform/thread.h"
#include "support/log.h"
#include "support/main_window.h"
#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>

namespace {

constexpr auto pause_limit = std::chrono::milliseconds(5000);
constexpr uint32_t cycles_between_looks = 1280; // 256 of the shortest instructions
constexpr double shortest_sleep = 0.001;        // seconds; less is spun away
constexpr double early_wake = 0.0005;           // what a sleep may be late
constexpr uint32_t longest_sleep_ms = 20;       // so that a pause does not wait for a long slice's end
constexpr uint32_t looks_per_slice = 4;         // at the keys, at least
constexpr uint32_t quiet_tape = 50;        // slices without a byte, after which the tape is not read any more
constexpr double timer_units = 10'000'000; // of a second
constexpr double fastest_frames = 60;      // a second, of a machine that runs as fast as it can
constexpr uint64_t second_processor = 2, first_processor = 1;

bool try_pin(uint64_t mask) {
    const bool pinned = platform::set_current_thread_affinity(mask);
    trace(pinned ? "Z80 Thread固定(%d)成功" : "Z80 Thread固定(%d)失敗", static_cast<int>(mask));
    return pinned;
}

} // namespace

// Real time of the run, in ticks of the performance counter. Rate and clock are read once.
struct z80_thread::slice_clock {
    double ticks_per_second = static_cast<double>(platform::performance_frequency());
    double clock_hz = machine.clock_hz != 0 ? machine.clock_hz : default_clock_hz;
    int64_t slice_start = platform::performance_counter();
    int64_t now = slice_start; // as last read
    int64_t shown = 0;         // when a frame was last asked for
    uint32_t speed = full_speed;

    // Until `cycles` T-states from the slice's start have taken their time; 0 when they have.
    double seconds_left(uint64_t cycles) {
        now = platform::performance_counter();
        if (speed == any_speed) return 0;
        const auto target = static_cast<int64_t>(
            std::ceil(static_cast<double>(cycles) * ticks_per_second / (clock_hz * speed / full_speed)));
        const int64_t left = target - (now - slice_start);
        return left > 0 ? static_cast<double>(left) / ticks_per_second : 0;
    }
};

z80_thread::z80_thread() = default;

z80_thread::~z80_thread() {
    trace("ENTER ~z80_thread");
    stop();
    if (render != nullptr) {
        render->post_message(render_quit, 0, 0);
        render->stop();
        render.reset();
    }
    sync_event.close();
    ack_event.close();
    pace_timer.close();
    trace("LEAVE ~z80_thread");
}

int z80_thread::init() {
    sync_event = platform::event::open("SYNC");
    ack_event = platform::event::open("ACK");
    render = std::make_unique<kiv_render>(*this);
    pace_timer = platform::waitable_timer::create();
    if (pace_timer) return 1;
    trace("Z80 WaitTimer作成失敗");
    return 0;
}

// ---- park, resume and stop ----------------------------------------------------------------------------

int z80_thread::create_thread(int create_suspended) {
    if (has_thread()) return 0;
    {
        const std::lock_guard lock(park_mutex);
        control = control_run;
        released = false;
        body = create_suspended != 0 ? body_state::created : body_state::starting;
    }
    if (kel_thread::create_thread(create_suspended) != 0) return 1;
    const std::lock_guard lock(park_mutex);
    body = body_state::none;
    return 0;
}

uint32_t z80_thread::resume_thread() {
    {
        const std::lock_guard lock(park_mutex);
        if (body == body_state::created) body = body_state::starting;
    }
    return kel_thread::resume_thread();
}

void z80_thread::stop() {
    bool never_started = false;
    {
        const std::lock_guard lock(park_mutex);
        never_started = body == body_state::created;
        if (body != body_state::none && body != body_state::ended) control = control_stop;
        released = true;
        park_changed.notify_all();
    }
    if (never_started) resume_thread();
    kel_thread::stop();
    // A thread that had to be killed may have taken the mutex with it; then there is nothing left to say.
    if (const std::unique_lock lock(park_mutex, std::try_to_lock); lock && body != body_state::none)
        body = body_state::ended;
}

int z80_thread::pause() {
    {
        std::unique_lock lock(park_mutex);
        if (body == body_state::none || body == body_state::created || body == body_state::ended) return 0;
        sync_event.reset();
        ack_event.reset();
        const bool ending = control == control_stop && (body != body_state::parked || released);
        if (!ending) released = false; // also a release that the loop has not yet seen
        if (body == body_state::parked && !ending) {
            ack_event.signal();
            return 1;
        }
        if (!ending) control = control_pause;
        park_changed.notify_all(); // the start delay looks only when it is woken
        const uint64_t parks_before = parks;
        park_changed.wait_for(lock, pause_limit,
                              [&] { return parks != parks_before || body == body_state::ended; });
        if (parks != parks_before) return 1;
        if (body == body_state::ended) return 0;
    }
    stop();
    return 0;
}

void z80_thread::resume_run() {
    const std::lock_guard lock(park_mutex);
    // A park that was requested and has not begun is over as soon as it has been acknowledged.
    if (body == body_state::parked || control == control_pause) released = true;
    sync_event.signal();
    park_changed.notify_all();
}

void z80_thread::request_stop() {
    const std::lock_guard lock(park_mutex);
    control = control_stop;
    park_changed.notify_all();
}

// On the CPU thread, `control` being something else than run. False: the thread is to end.
bool z80_thread::answer_request() {
    std::unique_lock lock(park_mutex);
    if (control == control_pause) return park(lock);
    return control != control_stop;
}

void z80_thread::await_request() {
    std::unique_lock lock(park_mutex);
    park_changed.wait(lock, [this] { return control != control_run; });
}

// Acknowledges and waits for the release. False: the thread is to end.
bool z80_thread::park(std::unique_lock<std::mutex> &lock) {
    control = control_run;
    body = body_state::parked;
    suspended = 1;
    ++parks;
    ack_event.signal();
    park_changed.notify_all();
    park_changed.wait(lock, [&] { return released; });
    released = false;
    if (control == control_stop) return false;
    body = body_state::running;
    suspended = 0;
    return true;
}

// Lets the start of the program settle; a pause or a stop is answered meanwhile.
bool z80_thread::start_delay() {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(start_delay_ms);
    std::unique_lock lock(park_mutex);
    while (park_changed.wait_until(lock, until, [&] { return control != control_run; }))
        if (control == control_stop || !park(lock)) return false;
    return true;
}

// ---- the run ------------------------------------------------------------------------------------------

void z80_thread::run() {
    {
        const std::lock_guard lock(park_mutex);
        body = body_state::running;
        suspended = 0;
    }
    try {
        run_machine();
    } catch (const std::exception &e) {
        failed(e.what());
        if (the_main_window != nullptr) the_main_window->post(platform::wm_close, 0, 0);
    }
    const std::lock_guard lock(park_mutex);
    body = body_state::ended;
    park_changed.notify_all(); // a pause that came too late is answered, too
}

void z80_thread::run_machine() {
    if (!render->is_running()) render->create_thread(0);
    if (!try_pin(platform::process_affinity() & second_processor ? second_processor : first_processor))
        try_pin(first_processor);
    slice_clock clock;
    if (!start_delay()) return;
    kiv_directx *const directx = kiv_directx::instance();
    if (directx != nullptr) directx->play();
    clock.slice_start = platform::performance_counter();
    follow_speed(clock);
    run_block &run = run_state;
    uint32_t stop_at = 0;                     // in slice_cycles
    uint64_t charged_cycles = elapsed_cycles; // of this object's runs, whatever a snapshot brings
    for (;;) {
        if (control.load(std::memory_order_relaxed) != control_run) {
            // The clock goes on from where it was: the first slice after a pause is not waited for.
            if (!answer_request()) return;
        }
        if (source != nullptr) {
            run_source(clock, charged_cycles);
            continue;
        }
        // A stretch runs in a fraction of a millisecond: at its end rather than at its beginning, so that it
        // sees the keys that were struck meanwhile.
        if (run.slice_cycles >= stop_at) sleep_towards(clock, stop_at = next_stop());
        const run_result ran =
            run_passes(std::min(stop_at - run.slice_cycles, cycles_between_looks), run.charge_waits != 0);
        if (ran.outcome == pass_outcome::stopped) break;
        charged_cycles += ran.cycles;
        run.slice_cycles += ran.cycles;
        if (ran.outcome == pass_outcome::frame) {
            ++run.frames;
            run.calendar.now_cycles = run.cycles;
            // Two frames of one slice would be drawn as one, and the picture would move at 50 instead of the
            // machine's 55 Hz: each waits for its time, wherever the stretch ends.
            do sleep_towards(clock, run.slice_cycles);
            while (clock.speed < full_speed && control == control_run &&
                   clock.seconds_left(run.slice_cycles) >= shortest_sleep);
            show_cycles(charged_cycles);
            // A snapshot takes as long as a frame does without waiting.
            if (clock.speed != any_speed || run.frames % 8 == 0) end_frame();
            show_frame(clock);
        }
        if (run.slice_cycles < machine.cycles_per_slice) continue;
        finish_slice(clock, charged_cycles);
        stop_at = 0;
    }
    trace("Z80: HALT スレッド退出");
    cassette_flush_output();
    if (the_main_window != nullptr)
        the_main_window->post(WM_Z80ABORT, main_cpu.trace_pc, main_cpu.stop_reason);
}

// In slice_cycles: the next part of the slice, or a frame's end, which is shown at its time.
uint32_t z80_thread::next_stop() {
    const uint32_t now = run_state.slice_cycles, part = machine.cycles_per_slice / looks_per_slice + 1;
    const uint32_t part_end = std::min(now + part - now % part, machine.cycles_per_slice);
    const uint32_t frame = timing_frame_left();
    return frame == 0 ? part_end : std::min(part_end, now + frame);
}

void z80_thread::finish_slice(slice_clock &clock, uint64_t charged) {
    wait_for_slice_end(clock, run_state.slice_cycles);
    show_cycles(charged);
    kiv_directx *const directx = kiv_directx::instance();
    if (directx != nullptr && clock.speed != any_speed)
        directx->tickPCM();
    else
        end_slice();
    cassette_flush_output();
    run_state.slice_cycles = 0;
    follow_speed(clock);
}

void z80_thread::run_source(slice_clock &clock, uint64_t &charged) {
    uint64_t seen = run_state.cycles;
    const auto charge = [&] {
        charged += run_state.cycles - seen;
        seen = run_state.cycles;
    };
    const bool goes_on = source->run_slice(machine.cycles_per_slice - run_state.slice_cycles, [&] {
        charge();
        sleep_towards(clock, run_state.slice_cycles);
        show_cycles(charged);
        end_frame();
        if (frame_is_wanted(clock)) render->post_message(render_frame, 0, 0);
    });
    charge();
    if (run_state.slice_cycles >= machine.cycles_per_slice) finish_slice(clock, charged);
    if (!goes_on) await_request();
}

void z80_thread::end_frame() {
    if (watcher != nullptr) watcher->frame_ended();
}

// Nobody hears it, but phases and entries go on, and recordings.
void z80_thread::end_slice() {
    if (kiv_directx *const directx = kiv_directx::instance()) directx->next_slice();
}

// At a slice's end: the deck runs, and bytes were taken from the tape not long ago.
bool z80_thread::reads_tape() {
    const uint32_t at = machine.tape_position;
    tape_quiet = at == tape_seen ? tape_quiet + 1 : 0;
    tape_seen = at;
    return fast_tape != 0 && machine.tape_image != nullptr && tape_quiet < quiet_tape &&
           (machine.cassette_flags & (cassette_motor_off | cassette_stopped)) == 0;
}

// At any speed nobody could listen.
void z80_thread::follow_speed(slice_clock &clock) {
    const uint32_t wanted = reads_tape() ? any_speed : speed;
    if (wanted == clock.speed) return;
    clock.speed = wanted;
    at_any_speed = wanted == any_speed;
    kiv_directx *const directx = kiv_directx::instance();
    if (directx == nullptr) return;
    if (wanted == any_speed) return directx->stop();
    directx->set_sound_speed(wanted);
    directx->play();
}

void z80_thread::show_frame(slice_clock &clock) {
    if (!frame_is_wanted(clock)) return;
    if (const uint32_t frames = frames_ahead; frames != 0 && watcher != nullptr && clock.speed != any_speed)
        watcher->show_ahead(frames);
    render->post_message(render_frame, 0, 0);
}

// At any speed the screen gets what it can show; every frame of the machine would keep a processor busy.
bool z80_thread::frame_is_wanted(slice_clock &clock) {
    if (clock.speed != any_speed) return true;
    const int64_t at = platform::performance_counter();
    if (static_cast<double>(at - clock.shown) * fastest_frames < clock.ticks_per_second) return false;
    clock.shown = at;
    return true;
}

bool z80_thread::step_frame() {
    run_block &run = run_state;
    for (;;) {
        const run_result ran =
            run_passes(std::min(machine.cycles_per_slice - run.slice_cycles, cycles_between_looks),
                       run.charge_waits != 0);
        if (ran.outcome == pass_outcome::stopped) return false;
        run.slice_cycles += ran.cycles;
        if (run.slice_cycles >= machine.cycles_per_slice) {
            end_slice();
            cassette_flush_output();
            run.slice_cycles = 0;
        }
        if (ran.outcome != pass_outcome::frame) continue;
        ++run.frames;
        run.calendar.now_cycles = run.cycles;
        end_frame();
        return true;
    }
}

void z80_thread::show_cycles(uint64_t charged) {
    elapsed_cycles = charged;
    executed_cycles = main_cpu.total_cycles;
}

// Sleeps until about half a millisecond before the slice's first `cycles` T-states have taken their time.
void z80_thread::sleep_towards(slice_clock &clock, uint64_t cycles) {
    const double remaining = clock.seconds_left(cycles);
    if (remaining >= shortest_sleep &&
        pace_timer.arm(static_cast<int64_t>((remaining - early_wake) * timer_units)))
        pace_timer.wait(longest_sleep_ms);
}

// Sleeps, and spins the last of it, until the slice has taken its time. A host that is too slow does not make
// up for it later: the next slice is measured from here.
void z80_thread::wait_for_slice_end(slice_clock &clock, uint64_t cycles) {
    while (clock.seconds_left(cycles) > 0) sleep_towards(clock, cycles);
    clock.slice_start = clock.now;
}

// ---- what others ask ----------------------------------------------------------------------------------

void z80_thread::reset_cpu() { main_cpu.z80_reset(main_cpu); }

void z80_thread::set_pc_sp(uint16_t pc, uint16_t sp) {
    main_cpu.PC = pc;
    main_cpu.SP = sp;
}

uint16_t z80_thread::get_register(int index) { return z80_register(main_cpu, index); }

uint32_t z80_thread::take_elapsed_cycles() {
    const uint64_t elapsed = elapsed_cycles;
    const uint64_t since = elapsed - elapsed_taken;
    elapsed_taken = elapsed;
    return static_cast<uint32_t>(since);
}

uint32_t z80_thread::take_executed_cycles() {
    const uint32_t executed = executed_cycles;
    const uint32_t since = executed - executed_taken;
    executed_taken = executed;
    return since;
}

uint32_t z80_thread::is_suspended() const { return suspended; }
uint32_t z80_thread::get_no_wait() const { return run_state.charge_waits == 0; }
void z80_thread::set_no_wait(uint32_t value) { run_state.charge_waits = static_cast<uint8_t>(value == 0); }
uint32_t z80_thread::get_dma_gain() const { return dma_gain; }
void z80_thread::set_dma_gain(uint32_t value) { dma_gain = value; }
void z80_thread::set_speed(uint32_t percent) { speed = percent; }
void z80_thread::set_run_ahead(uint32_t frames) { frames_ahead = frames; }
void z80_thread::set_fast_tape(bool on) { fast_tape = on; }
bool z80_thread::is_at_any_speed() const { return at_any_speed != 0; }
void z80_thread::watch_frames(frame_watcher *who) { watcher = who; }
void z80_thread::run_from(pass_source *runs) { source = runs; }

// How the program keeps time: all three threads on the headless host with a ROM set. Drift of emulated time
// against the monotonic clock, processor time by thread, and how long a pause takes to be answered.
//
//   bench_real_time [seconds, default 20] [folder of the ROM images]
#include "bench/demonstration.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/machine_pass.h"
#include "platform/thread.h"
#include "support/main_window.h"
#include "tests/headless/headless_host.h"
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono;
using seconds_d = duration<double>;

shared<uint64_t> cycles; // T-states so far
platform::critical_section video_section;

struct quiet_listener : platform::window_listener {
    int64_t window_proc(platform::host_window &, const platform::message &, bool &handled) override {
        handled = false;
        return 0;
    }
    bool is_command_key(uint32_t) const override { return false; }
    bool is_key_down(uint32_t) const override { return false; }
    void dropped(const std::string &) override {}
    std::vector<platform::menu_item> menus() const override { return {}; }
};

struct reporting_window : main_window {
    void post(uint32_t, uint64_t address, uint64_t reason) override {
        std::printf("the CPU stopped at %04X, reason %u\n", static_cast<unsigned>(address),
                    static_cast<unsigned>(reason));
    }
    void set_full_screen_style(int, int) override {}
    void set_window_style(int, int) override {}
};

// Seconds on a processor, by thread in the order of their creation.
std::vector<double> thread_times() {
    std::vector<long> ids;
    DIR *tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return {};
    while (const dirent *entry = readdir(tasks))
        if (const long id = std::atol(entry->d_name)) ids.push_back(id);
    closedir(tasks);
    std::sort(ids.begin(), ids.end());
    std::vector<double> times;
    for (const long id : ids) {
        double nanoseconds = 0;
        std::ifstream("/proc/self/task/" + std::to_string(id) + "/schedstat") >> nanoseconds;
        times.push_back(nanoseconds / 1e9);
    }
    return times;
}

struct moment {
    steady_clock::time_point time;
    uint64_t emulated;
};

// The moment right after a slice's end, where emulated and real time are to agree.
moment next_slice_end(const platform::headless_host &host) {
    const uint64_t before = host.sound.unlocks();
    while (host.sound.unlocks() == before) std::this_thread::sleep_for(microseconds(50));
    return {steady_clock::now(), cycles};
}

// Processor seconds for one second of emulated time, as fast as it goes.
double unpaced_cost() {
    timespec start{}, end{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
    uint64_t done = 0;
    for (uint32_t iteration = 0; done < 4ull * default_clock_hz; ++iteration) {
        if (machine_pass(iteration, true) == pass_outcome::stopped) break;
        done += main_cpu.step_cycles;
    }
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    const double spent = static_cast<double>(end.tv_sec - start.tv_sec) +
                         static_cast<double>(end.tv_nsec - start.tv_nsec) / 1e9;
    return spent * default_clock_hz / static_cast<double>(done);
}

double milliseconds_since(steady_clock::time_point start) {
    return seconds_d(steady_clock::now() - start).count() * 1e3;
}

struct run_figures {
    double elapsed, drift, furthest_ahead, furthest_behind; // seconds
    uint64_t frames;
};

// The machine left alone for some seconds, looked at five times in each.
run_figures watch(const platform::headless_host &host, int seconds) {
    const moment start = next_slice_end(host);
    const uint64_t frames_before = host.screen.shown().number;
    run_figures f{};
    while (f.elapsed < seconds) {
        std::this_thread::sleep_for(milliseconds(200));
        const moment now = next_slice_end(host);
        f.elapsed = seconds_d(now.time - start.time).count();
        f.drift = static_cast<double>(now.emulated - start.emulated) / default_clock_hz - f.elapsed;
        f.furthest_ahead = std::max(f.furthest_ahead, f.drift);
        f.furthest_behind = std::min(f.furthest_behind, f.drift);
    }
    f.frames = host.screen.shown().number - frames_before;
    return f;
}

void print(const run_figures &f) {
    std::printf("%.1f s, %.2f frames a second; the speed line: %.3f / %.3f MHz\n", f.elapsed,
                static_cast<double>(f.frames) / f.elapsed, stat_sys_mhz.load(), stat_cpu_mhz.load());
    std::printf("emulated against real time: %+.2f ms at the end (%+.0f ppm), between %+.2f and %+.2f ms\n",
                f.drift * 1e3, f.drift / f.elapsed * 1e6, f.furthest_behind * 1e3, f.furthest_ahead * 1e3);
}

// false: one was not answered.
bool print_pauses(z80_thread &cpu) {
    std::mt19937 random(1);
    std::vector<double> pauses;
    for (int n = 0; n < 300; ++n) {
        std::this_thread::sleep_for(microseconds(random() % 30000));
        const auto asked = steady_clock::now();
        if (!cpu.pause()) return false;
        pauses.push_back(milliseconds_since(asked));
        cpu.resume_run();
    }
    std::sort(pauses.begin(), pauses.end());
    std::printf("pause answered after: median %.2f ms, 99 %% %.2f ms, longest %.2f ms of %zu\n",
                pauses[pauses.size() / 2], pauses[pauses.size() * 99 / 100], pauses.back(), pauses.size());
    return true;
}

} // namespace

int main(int argc, char **argv) {
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    platform::set_current_thread_affinity(1);
    platform::headless_host host;
    quiet_listener listener;
    reporting_window form;
    the_main_window = &form;
    platform::host_window &window = *host.create_window({"", 0, 0, 640, 400}, listener);

    kiv_directx directx(host);
    z80_thread cpu;
    sound_listener sound = directx_host_callbacks();
    sound.advance_sound = [](uint32_t n) {
        cycles += n;
        kiv_directx::instance()->advanceClock(n);
    };
    if (!boot_rom_set(
            argc > 2 ? argv[2] : KIV_FIRMWARE_DIR, sound, [] { video_section.enter(); },
            [] { video_section.leave(); }))
        return 1;
    const auto sync = platform::event::create("SYNC"), ack = platform::event::create("ACK");
    if (!cpu.init() || !directx.init(window, 1)) return 1;
    directx.toggle_status();
    cpu.create_thread(1);
    cpu.resume_thread();

    const auto run_slices = [&host](int n) {
        for (; n > 0; --n) next_slice_end(host);
    };
    run_slices(1);
    start_demonstration(run_slices);
    run_slices(50); // past its first second
    const std::vector<double> times_before = thread_times();
    const run_figures figures = watch(host, seconds);
    const std::vector<double> times_after = thread_times();
    print(figures);
    if (!print_pauses(cpu)) return 1;

    cpu.pause();
    cpu.request_stop();
    cpu.resume_run();
    cpu.stop();
    const double cost = unpaced_cost();
    if (times_before.size() == 3 && times_after.size() == 3)
        std::printf(
            "processor time of a second: CPU thread %.1f ms (%.1f ms of it instructions and devices, the "
            "rest spinning and sound), render thread %.1f ms\n",
            (times_after[1] - times_before[1]) / figures.elapsed * 1e3, cost * 1e3,
            (times_after[2] - times_before[2]) / figures.elapsed * 1e3);
    return 0;
}

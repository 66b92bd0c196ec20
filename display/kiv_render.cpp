#include "display/kiv_render.h"

#include "display/kiv_directx.h"
#include "platform/clock.h"
#include "platform/thread.h"
#include "support/log.h"
#include <cmath>

shared<double> stat_sys_mhz;
shared<double> stat_cpu_mhz;
shared<int32_t> stat_fps;
shared<double> stat_lpf;

namespace {

constexpr uint32_t period_ms = 1000;
constexpr uint64_t fourth_processor = 8, second_processor = 2, first_processor = 1;

// Rounded to whole kilohertz.
double megahertz(uint32_t cycles, double elapsed_ms) {
    return std::floor((cycles * 1000.0 / elapsed_ms / 1000000.0 + 0.0005) * 1000.0) / 1000.0;
}

bool try_pin(uint64_t mask) {
    const bool pinned = platform::set_current_thread_affinity(mask);
    trace(pinned ? "Render Thread固定(%d)成功" : "Render Thread固定(%d)失敗", static_cast<int>(mask));
    return pinned;
}

} // namespace

void publish_speed(const speed_period &p) {
    const double elapsed = p.elapsed_ms;
    stat_sys_mhz = megahertz(p.sys_cycles, elapsed);
    stat_cpu_mhz = megahertz(p.cpu_cycles, elapsed);
    stat_fps = static_cast<int32_t>(std::floor(p.frames * 1000.0 / elapsed + 0.5));
    stat_lpf = std::floor(static_cast<double>(p.rows) / p.frames + 0.05);
}

kiv_render::kiv_render(emulated_clock &cpu_clock) : clock(cpu_clock) {}

kiv_render::~kiv_render() {
    trace("ENTER ~Kiv_render_thread");
    quit();
    trace("LEAVE ~Kiv_render_thread");
}

void kiv_render::quit() {
    post_message(render_quit, 0, 0);
    stop();
}

void kiv_render::run() {
    if (!try_pin(platform::process_affinity() & fourth_processor ? fourth_processor : second_processor))
        try_pin(first_processor);
    uint32_t last_ms = platform::millisecond_clock();
    speed_period period{};
    for (;;) {
        platform::message m = platform::get_message();
        if (m.id == render_quit) return;
        if (m.id != render_frame) continue;
        while (platform::peek_message(render_frame, m)) {
        }
        draw(period, last_ms);
    }
}

// The figures are closed before the frame is drawn: it counts as a frame of the old period, its rows belong
// to the new one.
void kiv_render::draw(speed_period &period, uint32_t &last_ms) {
    ++period.frames;
    const uint32_t now = platform::millisecond_clock();
    period.elapsed_ms += now - last_ms;
    last_ms = now;
    if (period.elapsed_ms >= period_ms) {
        period.sys_cycles = clock.take_elapsed_cycles();
        period.cpu_cycles = clock.take_executed_cycles();
        publish_speed(period);
        period = {};
    }
    period.rows += kiv_directx::present_frame();
}

#include "display/kiv_render.h"

#include "presentation_fixture.h"
#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono;

TEST(SpeedFigures, FollowFromThePeriod) {
    const struct {
        speed_period period; // frames, rows, milliseconds, all cycles, instructions' cycles
        double sys, cpu;
        int fps;
        double lpf;
    } cases[] = {
        {{60, 1500, 1000, 3993600, 3912400}, 3.994, 3.912, 60, 25},
        {{60, 0, 1000, 3993600, 0}, 3.994, 0, 60, 0},
        {{61, 1500, 1016, 4057497, 3912400}, 3.994, 3.851, 60, 24}, // the last frame's rows come later
        {{1, 0, 4000, UINT32_MAX, UINT32_MAX}, 1073.742, 1073.742, 0, 0},
        {{30, 740, 2000, 7987200, 7987200}, 3.994, 3.994, 15, 24},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.period.frames) + " frames in " + std::to_string(c.period.elapsed_ms) +
                     " ms");
        publish_speed(c.period);
        EXPECT_DOUBLE_EQ(stat_sys_mhz, c.sys);
        EXPECT_DOUBLE_EQ(stat_cpu_mhz, c.cpu);
        EXPECT_EQ(stat_fps, c.fps);
        EXPECT_DOUBLE_EQ(stat_lpf, c.lpf);
    }
}

class KivRender : public presentation_test, public emulated_clock {
  protected:
    KivRender() {
        EXPECT_EQ(init(), 1);
        before_each_row = [] {
            while (held) std::this_thread::yield();
        };
    }
    uint32_t take_elapsed_cycles() override { return 3993600; }
    uint32_t take_executed_cycles() override { return 3912400; }
    void draw_frame() {
        render.post_message(render_frame, 0, 0);
        EXPECT_TRUE(host.screen.wait_for_frame(++drawn, 10'000));
    }

    static inline std::atomic<bool> held{false};
    uint64_t drawn = 0;
    kiv_render render{*this};
};

TEST_F(KivRender, FramesThatPileUpAreDrawnOnce) {
    ASSERT_EQ(render.create_thread(0), 1);
    draw_frame();
    held = true;
    render.post_message(render_frame, 0, 0); // this one is being drawn, or is one of the many
    for (int n = 0; n < 10; ++n) {
        render.post_message(render_frame, 0, 0);
        render.post_message(0x499, 0, 0); // nobody's
    }
    held = false;
    render.post_message(render_quit, 0, 0); // comes after all others
    render.stop();
    EXPECT_GE(host.screen.shown().number, 2u);
    EXPECT_LE(host.screen.shown().number, 3u);
}

TEST_F(KivRender, FiguresComeOnceASecond) {
    ASSERT_EQ(render.create_thread(0), 1);
    auto posted = steady_clock::now();
    for (int period = 0; period < 2; ++period) {
        const auto begin = posted;
        for (stat_fps = -1; stat_fps == -1; std::this_thread::sleep_for(milliseconds(10))) {
            posted = steady_clock::now();
            draw_frame();
        }
        EXPECT_GE(steady_clock::now() - begin, milliseconds(990));
        EXPECT_TRUE(stat_sys_mhz > 0 && stat_sys_mhz <= 3.994 && stat_fps <= 101 && stat_lpf >= 12);
    }
}

// The picture's object goes first; frames that are asked for afterwards are not drawn.
TEST_F(KivRender, TheThreadOutlivesThePicture) {
    ASSERT_EQ(render.create_thread(0), 1);
    EXPECT_EQ(kiv_directx::present_frame(), 25u);
    for (int n = 0; n < 100; ++n) {
        render.post_message(render_frame, 0, 0);
        if (n == 50) directx.reset();
    }
    EXPECT_EQ(kiv_directx::present_frame(), 0u);
    EXPECT_EQ(kiv_directx::instance(), nullptr);
}

} // namespace

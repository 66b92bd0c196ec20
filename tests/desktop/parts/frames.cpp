// Frames between the threads, surfaces, and where a picture stands on the screen.
#include "platform/desktop/desktop_display.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

namespace {

TEST(FrameBox, TheReaderSeesWholeFramesOnlyAndEachOnce) {
    frame_box box;
    EXPECT_EQ(box.take_newest(), nullptr);
    constexpr uint32_t frames = 5000;
    std::atomic<int> writers{2};
    const auto write = [&](uint32_t from) {
        for (uint32_t n = from; n <= frames; n += 2) {
            // Sizes change as a toggle to full screen changes them.
            frame_box::writer w(box, n % 3 == 0 ? 80 : 64, n % 3 == 0 ? 60 : 40);
            for (uint32_t &pixel : w.frame().pixels) pixel = n;
        }
        --writers;
    };
    std::thread a(write, 1), b(write, 2);
    uint32_t torn = 0;
    do {
        const boxed_frame *f = box.take_newest();
        if (f == nullptr) continue;
        const bool large = f->pixels[0] % 3 == 0;
        torn += f->width != (large ? 80 : 64) || f->pixels.size() != (large ? 4800u : 2560u);
        for (const uint32_t pixel : f->pixels) torn += pixel != f->pixels[0];
    } while (writers != 0);
    a.join();
    b.join();
    EXPECT_EQ(torn, 0u);
    { frame_box::writer(box, 1, 1).frame().pixels[0] = 7; }
    { frame_box::writer(box, 1, 1).frame().pixels[0] = 8; }
    const boxed_frame *newest = box.take_newest();
    ASSERT_NE(newest, nullptr);
    EXPECT_EQ(newest->pixels[0], 8u);
    EXPECT_EQ(box.take_newest(), nullptr);
}

class DesktopDisplay : public testing::Test {
  protected:
    std::shared_ptr<screen_link> link = std::make_shared<screen_link>();
    desktop_display display{link};
};

// Surfaces are released on the window thread while the render thread may be drawing.
TEST_F(DesktopDisplay, AReleaseWaitsForTheFrameThatIsBeingDrawn) {
    for (int round = 0; round < 20; ++round) {
        auto drawn = display.create_offscreen(640, 400, surface_memory::video);
        std::atomic<bool> drawing{false}, finished{false};
        std::thread render([&, s = drawn.get()] {
            void *pixels;
            int pitch;
            ASSERT_EQ(s->lock(pixels, pitch), display_result::ok);
            drawing = true;
            for (int i = 0; i < 640 * 400; ++i) static_cast<uint32_t *>(pixels)[i] = 1;
            finished = true;
            s->unlock();
        });
        while (!drawing) std::this_thread::yield();
        drawn->unlock(); // of another thread's lock: does nothing
        drawn.reset();
        EXPECT_TRUE(finished);
        render.join();
    }
}

TEST_F(DesktopDisplay, TheVerticalBlankComesAtTheScreensRate) {
    link->refresh_rate = 100;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(display.wait_vertical_blank(true));
    // Never early; how late is the host's affair.
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(185));
    link->refresh_rate = 0;
    EXPECT_TRUE(display.wait_vertical_blank(false));
}

} // namespace

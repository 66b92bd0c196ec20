// Frames between the threads, surfaces, and where a picture stands on the screen.
#include "platform/desktop/desktop_display.h"
#include "platform/desktop/picture_fit.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

namespace {

TEST(FrameBox, TheReaderSeesWholeFramesOnlyAndTheNewestLast) {
    frame_box box;
    EXPECT_EQ(box.take_newest(), nullptr);
    constexpr uint32_t frames = 5000;
    std::atomic<bool> done{false};
    const auto write = [&](uint32_t from) {
        for (uint32_t n = from; n <= frames; n += 2) {
            // Sizes change as a toggle to full screen changes them.
            frame_box::writer w(box, n % 3 == 0 ? 80 : 64, n % 3 == 0 ? 60 : 40);
            for (uint32_t &pixel : w.frame().pixels) pixel = n;
        }
    };
    std::thread a([&] {
        write(1);
        write(2);
        done = true;
    });
    std::thread b([&] { write(2); }); // restoring surfaces while a frame is drawn
    uint32_t seen = 0, torn = 0;
    const auto look = [&] {
        const boxed_frame *f = box.take_newest();
        if (f == nullptr) return;
        ++seen;
        const bool large = f->pixels[0] % 3 == 0;
        if (f->width != (large ? 80 : 64) || f->pixels.size() != (large ? 4800u : 2560u)) ++torn;
        for (const uint32_t pixel : f->pixels)
            if (pixel != f->pixels[0]) ++torn;
    };
    while (!done) look();
    a.join();
    b.join();
    look();
    EXPECT_EQ(torn, 0u);
    EXPECT_GT(seen, 0u);
    EXPECT_EQ(box.take_newest(), nullptr);
    { frame_box::writer(box, 1, 1).frame().pixels[0] = 7; }
    { frame_box::writer(box, 1, 1).frame().pixels[0] = 8; }
    ASSERT_NE(box.take_newest(), nullptr);
    EXPECT_EQ(box.take_newest(), nullptr) << "once each";
}

TEST(PictureFit, WholeFactorsCentredElseShrunk) {
    struct row {
        int pw, ph, aw, ah;
        placement at;
    };
    const row rows[] = {
        {640, 400, 640, 400, {0, 0, 640, 400}},
        {640, 400, 1280, 800, {0, 0, 1280, 800}},
        {640, 400, 1920, 1080, {320, 140, 1280, 800}},
        {640, 400, 3840, 2160, {320, 80, 3200, 2000}},
        {720, 480, 1366, 768, {323, 144, 720, 480}},
        {640, 400, 600, 800, {0, 212, 600, 375}},
        {640, 400, 2000, 300, {760, 0, 480, 300}},
        {640, 400, 1, 1, {0, 0, 1, 1}},
        {640, 400, 0, 10, {0, 0, 0, 0}},
    };
    for (const row &r : rows) {
        const placement got = fit_picture(r.pw, r.ph, r.aw, r.ah);
        EXPECT_TRUE(got.x == r.at.x && got.y == r.at.y && got.width == r.at.width &&
                    got.height == r.at.height)
            << r.pw << "x" << r.ph << " on " << r.aw << "x" << r.ah << ": " << got.x << "," << got.y << " "
            << got.width << "x" << got.height;
    }
}

// A window as the display needs it: it is asked for modes.
class mode_window : public host_window, public mode_switch {
  public:
    void post(uint32_t, uint64_t, uint64_t) override {}
    void destroy() override {}
    bool client_size(size2 &) const override { return false; }
    point client_origin() const override { return {}; }
    void invalidate(bool) override {}
    void set_focus() override {}
    bool is_foreground() const override { return true; }
    painter *current_painter() override { return nullptr; }
    int show_cursor(bool) override { return 0; }
    bool shift_down() const override { return false; }
    void disable_input_method() override {}
    bool set_framed(bool) override { return true; }
    void resize_client(int, int) override {}
    void centre() override {}
    void show() override {}
    void remove_default_menu_items() override {}
    bool has_menu_item(uint32_t) const override { return false; }
    void insert_menu_item(int, uint32_t, const std::string &) override {}
    void enter_mode(int width, int height) override {
        mode = std::to_string(width) + "x" + std::to_string(height);
    }
    void leave_mode() override { mode = "left"; }
    std::string mode;
};

class DesktopDisplay : public testing::Test {
  protected:
    std::shared_ptr<screen_link> link = std::make_shared<screen_link>();
    desktop_display display{link};
    mode_window window;
    int repaints = 0;

    void SetUp() override {
        link->set_repaint([this] { ++repaints; });
        ASSERT_TRUE(display.open());
    }
};

TEST_F(DesktopDisplay, WindowModeCopiesThirtyTwoBitPixels) {
    ASSERT_TRUE(display.set_cooperative_level(window, false));
    EXPECT_FALSE(display.set_mode(640, 400, 32)) << "only in full screen";
    const auto primary = display.create_primary(false);
    const auto drawn = display.create_offscreen(640, 400, surface_memory::video);
    ASSERT_TRUE(primary && drawn);
    surface_desc desc{};
    ASSERT_TRUE(drawn->describe(desc));
    EXPECT_TRUE(desc.width == 640 && desc.height == 400 && desc.pitch == 2560 && !desc.format.indexed8 &&
                desc.format.rgb);
    void *pixels = nullptr;
    int pitch = 0;
    ASSERT_EQ(drawn->lock(pixels, pitch), display_result::ok);
    void *again;
    EXPECT_EQ(drawn->lock(again, pitch), display_result::still_busy);
    static_cast<uint32_t *>(pixels)[639 + 399 * 640] = 0x123456;
    drawn->unlock();
    drawn->fill({-5, -5, 10, 3}, 0xABCDEF);
    EXPECT_EQ(primary->copy_from(*drawn, {0, 0, 640, 400}, {0, 0, 640, 400}, false), display_result::ok);
    EXPECT_EQ(repaints, 1);
    const boxed_frame *frame = link->frames.take_newest();
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(frame->pixels.size(), 256000u);
    EXPECT_EQ(frame->pixels[255999], 0xFF123456);
    EXPECT_EQ(frame->pixels[9 + 2 * 640], 0xFFABCDEF);
    EXPECT_EQ(frame->pixels[10 + 2 * 640], 0xFF000000);
    EXPECT_EQ(frame->pixels[9 + 3 * 640], 0xFF000000);
    link->set_repaint(nullptr);
    EXPECT_EQ(primary->copy_from(*drawn, {0, 0, 640, 400}, {0, 0, 640, 400}, false), display_result::failed)
        << "without a window";
}

TEST_F(DesktopDisplay, FullScreenModesAndThePalette) {
    ASSERT_TRUE(display.set_cooperative_level(window, true));
    for (const auto &[w, h, depth, accepted] : {std::tuple{640, 400, 8, true},
                                                {640, 480, 32, true},
                                                {720, 480, 8, true},
                                                {800, 480, 8, true},
                                                {800, 600, 32, true},
                                                {640, 400, 16, false},
                                                {1024, 768, 8, false},
                                                {0, 0, 8, false}})
        EXPECT_EQ(display.set_mode(w, h, depth), accepted) << w << "x" << h << "x" << depth;
    ASSERT_TRUE(display.set_mode(720, 480, 8));
    EXPECT_EQ(window.mode, "720x480");
    const auto primary = display.create_primary(true);
    const auto drawn = display.create_offscreen(720, 480, surface_memory::video);
    surface_desc desc{};
    ASSERT_TRUE(drawn->describe(desc));
    EXPECT_TRUE(desc.format.indexed8 && desc.pitch == 720);
    uint32_t palette[256] = {};
    palette[0xF8] = 0x00FF00;
    ASSERT_TRUE(primary->set_palette(palette));
    drawn->fill({719, 479, 720, 480}, 0xF8);
    EXPECT_EQ(primary->copy_from(*drawn, {0, 0, 720, 480}, {}, true), display_result::ok);
    const boxed_frame *frame = link->frames.take_newest();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->width, 720);
    EXPECT_EQ(frame->pixels[720 * 480 - 1], 0xFF00FF00);
    EXPECT_EQ(frame->pixels[0], 0xFF000000);
    display.restore_mode();
    EXPECT_EQ(window.mode, "left");
    EXPECT_EQ(display.create_primary(true), nullptr);
}

// Surfaces are released on the window thread while the render thread may be drawing.
TEST_F(DesktopDisplay, AReleaseWaitsForTheFrameThatIsBeingDrawn) {
    ASSERT_TRUE(display.set_cooperative_level(window, false));
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
    const double ms =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    EXPECT_GT(ms, 185); // never early; how late is the host's affair
    link->refresh_rate = 0;
    EXPECT_TRUE(display.wait_vertical_blank(false));
}

} // namespace

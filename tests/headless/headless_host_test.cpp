// The host that the program's tests run on: what those tests take for granted. Its faults on demand and its
// dialogs are tested by the tests that use them.
#include "platform/headless/headless_host.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

namespace {

// Notes what it hears and closes as the program does.
class listener : public window_listener {
  public:
    explicit listener(headless_host &on) : host(on) {}
    int64_t window_proc(host_window &window, const message &m, bool &handled) override {
        heard.push_back(m);
        if (m.id == wm_key_up) shifts.push_back(window.shift_down());
        if (m.id == wm_destroy) host.post_quit(7);
        if (m.id == wm_query_end_session) return 1;
        handled = m.id != wm_close;
        return 0;
    }
    std::vector<uint64_t> wparams(uint32_t id) const {
        std::vector<uint64_t> found;
        for (const message &m : heard)
            if (m.id == id) found.push_back(m.wparam);
        return found;
    }
    headless_host &host;
    std::vector<message> heard;
    std::vector<bool> shifts;
};

class HeadlessHost : public testing::Test {
  protected:
    HeadlessHost()
        : window(*static_cast<headless_window *>(host.create_window({"Kiv", 0, 0, 640, 400}, hears))) {}
    // An off-screen surface and the screen, in the mode given.
    void make_surfaces(bool full_screen, int width, int height) {
        display &d = host.get_display();
        EXPECT_TRUE(d.open());
        EXPECT_TRUE(d.set_cooperative_level(window, full_screen));
        EXPECT_EQ(d.set_mode(width, height, 8), full_screen);
        primary = d.create_primary(full_screen);
        offscreen = d.create_offscreen(width, height, surface_memory::video);
        ASSERT_TRUE(primary && offscreen);
    }
    headless_host host;
    listener hears{host};
    headless_window &window;
    std::unique_ptr<surface> primary, offscreen;
};

} // namespace

TEST_F(HeadlessHost, MessagesOfAllThreadsArriveInOrderUntilTheWindowIsGone) {
    std::vector<std::thread> posters;
    for (uint32_t n = 1; n <= 3; n++)
        posters.emplace_back([&, n] {
            for (uint64_t i = 0; i < 300; i++) window.post(wm_private + n, i, 0);
        });
    std::thread person([&] {
        for (auto &p : posters) p.join();
        size_t seen = 0;
        EXPECT_TRUE(host.run_on_window_thread([&] { seen = hears.wparams(wm_private + 1).size(); }));
        EXPECT_EQ(seen, 300u);
        window.end_session();
        window.close_box();
        window.post(wm_private + 9, 0, 0); // after the close: the window is gone
    });
    EXPECT_EQ(host.run_message_loop(), 7);
    person.join();
    for (uint32_t n = 1; n <= 3; n++) {
        const auto got = hears.wparams(wm_private + n);
        ASSERT_EQ(got.size(), 300u);
        EXPECT_TRUE(std::is_sorted(got.begin(), got.end()));
    }
    EXPECT_EQ(hears.wparams(wm_private + 9).size(), 0u);
    EXPECT_EQ(window.end_session_answer, 1);
    EXPECT_TRUE(window.state().gone);
    EXPECT_FALSE(host.run_on_window_thread([] {}, 1)) << "no loop runs any more";
}

TEST_F(HeadlessHost, KeysCarryTheirShiftAndRepeatAndAreReleasedWithTheActivation) {
    window.press_key(0x10);
    window.strike_key(0x75);
    window.release_key(0x10);
    window.press_key(0x41);
    window.press_key(0x41);
    window.activate(false);
    host.pump();
    EXPECT_EQ(hears.wparams(wm_key_down), (std::vector<uint64_t>{0x10, 0x75, 0x41, 0x41}));
    EXPECT_EQ(hears.wparams(wm_key_up), (std::vector<uint64_t>{0x75, 0x10, 0x41}));
    EXPECT_EQ(hears.shifts, (std::vector<bool>{true, false, false}));
    EXPECT_EQ(hears.wparams(wm_activate_app), std::vector<uint64_t>{0});
    EXPECT_EQ(hears.heard[5].lparam, uint64_t{1} << 30) << "the second press of a key that is down";
}

TEST_F(HeadlessHost, SurfacesShowTheirPixelsInEveryModeAndDepth) {
    struct {
        const char *label;
        bool full_screen;
        int desktop_depth, width, height;
        bool indexed;
    } const cases[] = {
        {"window on a 32-bit desktop", false, 32, 640, 400, false},
        {"window on an 8-bit desktop", false, 8, 640, 400, true},
        {"full screen", true, 32, 720, 480, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        host.screen.set_desktop(1024, 768, c.desktop_depth);
        ASSERT_NO_FATAL_FAILURE(make_surfaces(c.full_screen, c.width, c.height));
        std::vector<uint32_t> palette(256);
        palette[9] = 0x123456;
        EXPECT_EQ(primary->set_palette(palette.data()), c.indexed);
        void *pixels, *again;
        int pitch;
        ASSERT_EQ(offscreen->lock(pixels, pitch), display_result::ok);
        EXPECT_EQ(offscreen->lock(again, pitch), display_result::still_busy);
        ASSERT_EQ(pitch, c.width * (c.indexed ? 1 : 4));
        static_cast<uint8_t *>(pixels)[pitch * c.height - 1] = 9;
        if (!c.indexed) static_cast<uint32_t *>(pixels)[c.width * c.height - 1] = 0xFF123456;
        std::thread([&] { offscreen->unlock(); }).join(); // not its own: does nothing
        EXPECT_EQ(offscreen->lock(again, pitch), display_result::still_busy);
        offscreen->unlock();
        const uint64_t number = host.screen.shown().number;
        EXPECT_EQ(primary->copy_from(*offscreen, {0, 0, c.width, c.height}, {4, 24, 0, 0}, c.full_screen),
                  display_result::ok);
        const shown_frame frame = host.screen.shown();
        primary->fill({0, 0, 1, 1}, 0);
        EXPECT_EQ(host.screen.shown().number, number + 1) << "a fill is no frame";
        EXPECT_EQ(frame.full_screen, c.full_screen);
        EXPECT_EQ(frame.picture.at(c.width - 1, c.height - 1), 0x123456u);
        size2 size{};
        window.client_size(size);
        EXPECT_EQ(size.width, c.full_screen ? 720 : 640);
        host.get_display().close();
        window.client_size(size);
        EXPECT_EQ(size.width, 640);
    }
}

TEST_F(HeadlessHost, LostSurfacesStayLostUntilTheyAreRestored) {
    make_surfaces(false, 640, 400);
    const auto lock = [&] {
        void *pixels;
        int pitch;
        const display_result r = offscreen->lock(pixels, pitch);
        if (r == display_result::ok) offscreen->unlock();
        return r;
    };
    const auto copy = [&] { return primary->copy_from(*offscreen, {0, 0, 640, 400}, {}, false); };
    host.screen.lose_surfaces();
    EXPECT_EQ(lock(), display_result::lost);
    EXPECT_TRUE(offscreen->restore());
    EXPECT_EQ(lock(), display_result::ok);
    EXPECT_EQ(copy(), display_result::lost) << "the primary surface still is";
    host.faults.set(fault::restore, 1);
    EXPECT_FALSE(primary->restore());
    EXPECT_TRUE(primary->restore());
    EXPECT_EQ(copy(), display_result::ok);
    host.faults.set(fault::lock_lost, 1);
    EXPECT_EQ(lock(), display_result::lost);
    EXPECT_EQ(lock(), display_result::lost) << "the fault is over, the surface is not back";
    EXPECT_EQ(copy(), display_result::lost);
}

TEST_F(HeadlessHost, SoundCursorsMoveWithTheClockAndWhatTheyPassIsHeard) {
    headless_sound &device = host.sound;
    device.use_manual_clock();
    device.set_record_limit(10'000);
    ASSERT_TRUE(device.open());
    const auto stream = device.create_stream(7680, {1, 96000, 16});
    ASSERT_TRUE(stream);
    const auto put = [&](uint32_t offset, uint32_t bytes, int16_t value) {
        void *p1, *p2;
        uint32_t n1, n2;
        ASSERT_TRUE(stream->lock(offset, bytes, p1, n1, p2, n2));
        EXPECT_FALSE(stream->lock(0, 2, p1, n1, p2, n2)) << "locked already";
        ASSERT_EQ(n1 + n2, bytes);
        std::fill_n(static_cast<int16_t *>(p1), n1 / 2, value);
        if (p2 != nullptr) std::fill_n(static_cast<int16_t *>(p2), n2 / 2, value);
        stream->unlock(p1, n1, p2, n2);
    };
    const auto cursor_after = [&](uint64_t microseconds) {
        uint32_t play = 0, write = 0;
        device.advance(microseconds);
        EXPECT_TRUE(stream->get_position(play, write));
        EXPECT_EQ(write, (play + (device.is_playing() ? 100u : 0u)) % 7680);
        return play;
    };
    device.set_write_lead(100);
    put(0, 3840, 1);
    EXPECT_EQ(cursor_after(5'000), 0u) << "stopped";
    stream->play();
    EXPECT_EQ(cursor_after(20'000), 3840u);
    put(3840 + 1920, 3840, 2); // wraps
    EXPECT_EQ(cursor_after(25'000), 960u);
    stream->stop();
    EXPECT_EQ(cursor_after(1'000'000), 960u);
    stream->play();
    EXPECT_EQ(cursor_after(uint64_t{3600} * 1'000'000 * 30), 960u) << "30 hours: whole rounds";

    const std::vector<int16_t> heard = device.heard();
    ASSERT_EQ(heard.size(), 10'000u);
    const int16_t expected[] = {1, 1, 0, 2, 2, 1}; // of each 960 samples
    for (size_t i = 0; i < 5760; i++) ASSERT_EQ(heard[i], expected[i / 960]) << "sample " << i;
    EXPECT_EQ(device.written().size(), 3840u);
}

#include "platform/clock.h"
#include "platform/headless/headless_host.h"
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

namespace {

// Notes what it hears; paints grey, erases black; closes as the program does.
class listener : public window_listener {
  public:
    explicit listener(headless_host &on) : host(on) {}
    int64_t window_proc(host_window &window, const message &m, bool &handled) override {
        heard.push_back(m);
        if (m.id == wm_key_up) shifts.push_back(window.shift_down());
        size2 size;
        if (window.client_size(size) && (m.id == wm_paint || m.id == wm_erase_background))
            window.current_painter()->fill({0, 0, size.width, size.height}, m.id == wm_paint ? 0x808080 : 0);
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
        : window(*static_cast<headless_window *>(host.create_window({"Kiv", 0, 0, 640, 480}, hears))) {}
    headless_host host;
    listener hears{host};
    headless_window &window;
};

// An off-screen surface and the screen, in the depth and mode given.
struct surfaces {
    surfaces(headless_host &host, headless_window &window, bool full_screen, int width, int height) {
        display &d = host.get_display();
        EXPECT_TRUE(d.open());
        EXPECT_TRUE(d.set_cooperative_level(window, full_screen));
        if (full_screen) {
            EXPECT_TRUE(d.set_mode(width, height, 8));
        }
        primary = d.create_primary(full_screen);
        offscreen = d.create_offscreen(width, height, surface_memory::video);
    }
    std::unique_ptr<surface> primary, offscreen;
};

} // namespace

TEST_F(HeadlessHost, MessagesOfAllThreadsArriveInOrderUntilTheWindowIsGone) {
    std::vector<std::thread> posters;
    for (uint64_t n = 0; n < 3; n++)
        posters.emplace_back([&, n] {
            for (uint64_t i = 0; i < 300; i++) window.post(wm_private + 1 + static_cast<uint32_t>(n), i, 0);
        });
    std::thread person([&] {
        for (auto &p : posters) p.join();
        uint64_t seen = 0;
        EXPECT_TRUE(host.run_on_window_thread([&] { seen = hears.wparams(wm_private + 1).size(); }));
        EXPECT_EQ(seen, 300u);
        window.end_session();
        window.close_box();
        window.post(wm_private + 9, 0, 0); // after the close: the window is gone
    });
    EXPECT_EQ(host.run_message_loop(), 7);
    person.join();
    for (uint32_t n = 0; n < 3; n++) {
        const auto got = hears.wparams(wm_private + 1 + n);
        ASSERT_EQ(got.size(), 300u);
        EXPECT_TRUE(std::is_sorted(got.begin(), got.end()));
    }
    EXPECT_EQ(hears.wparams(wm_private + 9).size(), 0u);
    EXPECT_EQ(window.end_session_answer, 1);
    EXPECT_TRUE(window.state().gone);
    size2 size;
    EXPECT_FALSE(window.client_size(size));
    EXPECT_FALSE(host.run_on_window_thread([] {}, 1)) << "no loop runs any more";
}

TEST_F(HeadlessHost, KeysCarryTheirShiftAndRepeatAndAreReleasedWithTheActivation) {
    window.press_key(0x10);
    window.strike_key(0x75);
    window.release_key(0x10);
    window.press_key(0x41);
    window.press_key(0x41);
    window.activate(false);
    EXPECT_FALSE(window.is_foreground());
    host.pump();
    EXPECT_EQ(hears.wparams(wm_key_down), (std::vector<uint64_t>{0x10, 0x75, 0x41, 0x41}));
    EXPECT_EQ(hears.wparams(wm_key_up), (std::vector<uint64_t>{0x75, 0x10, 0x41}));
    EXPECT_EQ(hears.shifts, (std::vector<bool>{true, false, false}));
    EXPECT_EQ(hears.wparams(wm_activate_app), std::vector<uint64_t>{0});
    EXPECT_EQ(hears.heard[5].lparam, uint64_t{1} << 30) << "the second press of a key that is down";
}

TEST_F(HeadlessHost, AWindowIsShownPaintedMovedAndItsMenuChosen) {
    window.resize_client(641, 400);
    window.centre();
    window.show();
    window.insert_menu_item(0, 2, "about");
    window.insert_menu_item(1, 1, "settings");
    window.insert_menu_item(0, 2, "about again");
    host.pump();
    EXPECT_EQ(hears.wparams(wm_activate_app), std::vector<uint64_t>{1});
    EXPECT_EQ(hears.wparams(wm_move).size(), 1u);
    EXPECT_EQ(hears.wparams(wm_erase_background).size(), 1u);
    EXPECT_EQ(window.painted().width, 641);
    EXPECT_EQ(window.painted().at(640, 399), 0x808080u);
    EXPECT_EQ(window.current_painter(), nullptr);
    EXPECT_EQ(window.state().menu.size(), 2u);
    EXPECT_TRUE(window.choose_menu_item(1));
    EXPECT_FALSE(window.choose_menu_item(3));
    window.drag_to(10, 20);
    host.pump();
    EXPECT_EQ(hears.wparams(wm_sys_command), std::vector<uint64_t>{1});
    EXPECT_EQ(window.client_origin().x, 14);
    EXPECT_EQ(window.show_cursor(false), -1);
    EXPECT_EQ(window.show_cursor(true), 0);
    EXPECT_TRUE(window.set_framed(false));
    EXPECT_FALSE(window.choose_menu_item(1)) << "no frame, no menu";
}

TEST_F(HeadlessHost, DialogsFollowTheScriptOverAPaintedWindow) {
    std::string path = "before";
    settings_dialog values;
    values.sliders = {{"Volume", "(dB)", -100, 0, -4}};
    EXPECT_FALSE(host.open_file(window, {}, path)) << "without a script: cancelled";
    EXPECT_FALSE(host.settings(window, values));
    host.error_box(nullptr, "text", "caption");

    headless_script script;
    uint64_t paints = 0;
    script.save_file = [&](const file_dialog_options &o, std::string &chosen) {
        paints = window.paints();
        EXPECT_TRUE(host.in_dialog());
        chosen = o.file_name + ".KIV";
        return true;
    };
    script.settings = [](settings_dialog &d) {
        d.sliders[0].value = -9;
        return d.sliders[0].label == "Volume";
    };
    host.set_script(script);
    window.invalidate(false);
    file_dialog_options options;
    options.file_name = "dump";
    EXPECT_TRUE(host.save_file(window, options, path));
    EXPECT_EQ(path, "dump.KIV");
    EXPECT_EQ(paints, 1u) << "painted before the dialog was answered";
    EXPECT_FALSE(host.in_dialog());
    EXPECT_TRUE(host.settings(window, values));
    EXPECT_EQ(values.sliders[0].value, -9);
    const dialog_record record = host.dialogs();
    EXPECT_EQ(record.settings.back().sliders[0].value, -4);
    ASSERT_EQ(record.error_boxes.size(), 1u);
    EXPECT_FALSE(record.error_boxes[0].has_owner);
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
        surfaces s(host, window, c.full_screen, c.width, c.height);
        ASSERT_TRUE(s.primary && s.offscreen);
        surface_desc desc;
        ASSERT_TRUE(s.offscreen->describe(desc));
        EXPECT_EQ(desc.format.indexed8, c.indexed);
        std::vector<uint32_t> palette(256, 0x123456);
        EXPECT_EQ(s.primary->set_palette(palette.data()), c.indexed);
        void *pixels;
        int pitch;
        ASSERT_EQ(s.offscreen->lock(pixels, pitch), display_result::ok);
        ASSERT_EQ(pitch, c.width * (c.indexed ? 1 : 4));
        uint8_t *last_row = static_cast<uint8_t *>(pixels) + (c.height - 1) * pitch;
        if (c.indexed)
            last_row[c.width - 1] = 9;
        else
            reinterpret_cast<uint32_t *>(last_row)[c.width - 1] = 0xFF123456;
        std::thread([&] {
            void *other;
            int p;
            EXPECT_EQ(s.offscreen->lock(other, p), display_result::still_busy);
            s.offscreen->unlock(); // not this thread's
        }).join();
        s.offscreen->unlock();
        const uint64_t number = host.screen.shown().number;
        EXPECT_EQ(s.primary->copy_from(*s.offscreen, {0, 0, c.width, c.height}, {4, 24, 0, 0}, c.full_screen),
                  display_result::ok);
        const shown_frame frame = host.screen.shown();
        EXPECT_EQ(frame.number, number + 1);
        EXPECT_EQ(frame.full_screen, c.full_screen);
        EXPECT_EQ(frame.picture.at(c.width - 1, c.height - 1), 0x123456u);
        EXPECT_EQ(frame.picture.at(0, 0), c.indexed ? 0x123456u : 0u);
        size2 size;
        window.client_size(size);
        EXPECT_EQ(size.width, c.full_screen ? 720 : 640);
        s.primary->fill({0, 0, 1, 1}, 0);
        EXPECT_EQ(host.screen.shown().number, number + 1) << "a fill is no frame";
        host.get_display().close();
        window.client_size(size);
        EXPECT_EQ(size.width, 640);
    }
}

TEST_F(HeadlessHost, LostSurfacesStayLostUntilTheyAreRestored) {
    surfaces s(host, window, false, 640, 400);
    const auto lock = [&] {
        void *pixels;
        int pitch;
        const display_result r = s.offscreen->lock(pixels, pitch);
        if (r == display_result::ok) s.offscreen->unlock();
        return r;
    };
    const auto copy = [&] { return s.primary->copy_from(*s.offscreen, {0, 0, 640, 400}, {}, false); };
    host.faults.set(fault::lock_busy, 2);
    EXPECT_EQ(lock(), display_result::still_busy);
    EXPECT_EQ(lock(), display_result::still_busy);
    EXPECT_EQ(lock(), display_result::ok);
    host.screen.lose_surfaces();
    EXPECT_EQ(lock(), display_result::lost);
    EXPECT_EQ(copy(), display_result::lost);
    EXPECT_TRUE(s.offscreen->restore());
    EXPECT_EQ(lock(), display_result::ok);
    EXPECT_EQ(copy(), display_result::lost) << "the primary surface still is";
    host.faults.set(fault::restore, 1);
    EXPECT_FALSE(s.primary->restore());
    EXPECT_TRUE(s.primary->restore());
    EXPECT_EQ(copy(), display_result::ok);
    host.faults.set(fault::lock_lost);
    EXPECT_EQ(lock(), display_result::lost);
    host.faults.set(fault::lock_lost, 0);
    EXPECT_EQ(lock(), display_result::lost);
    EXPECT_TRUE(s.offscreen->restore());
    EXPECT_EQ(lock(), display_result::ok);
    host.faults.set(fault::copy_failed, 1);
    EXPECT_EQ(copy(), display_result::failed);
    EXPECT_EQ(host.faults.pending(fault::copy_failed), 0);
}

// Every call that sets something up fails when it is told to, once, and works the next time.
TEST_F(HeadlessHost, EveryStepFailsOnDemand) {
    display &d = host.get_display();
    sound_device &s = host.get_sound();
    const wave_format format{1, 96000, 16};
    std::unique_ptr<surface> primary, offscreen;
    std::unique_ptr<primary_sound_buffer> volume;
    std::unique_ptr<sound_stream> stream;
    surface_desc desc;
    uint32_t bytes, a, b;
    void *p1, *p2;
    const struct {
        fault f;
        std::function<bool()> works;
    } steps[] = {
        {fault::begin, [&] { return host.begin(); }},
        {fault::register_class, [&] { return host.register_window_class("KKEEL"); }},
        {fault::create_window,
         [&] {
             return host.create_window({"t", 0, 0, 1, 1}, hears) != nullptr;
         }},
        {fault::framed, [&] { return window.set_framed(true); }},
        {fault::display_open, [&] { return d.open(); }},
        {fault::display_cooperative_level, [&] { return d.set_cooperative_level(window, true); }},
        {fault::display_mode, [&] { return d.set_mode(640, 480, 8); }},
        {fault::display_caps, [&] { return d.get_caps(); }},
        {fault::primary, [&] { return (primary = d.create_primary(true)) != nullptr; }},
        {fault::offscreen_video_memory,
         [&] { return (offscreen = d.create_offscreen(640, 480, surface_memory::video)) != nullptr; }},
        {fault::offscreen_system_memory,
         [&] { return d.create_offscreen(640, 480, surface_memory::system) != nullptr; }},
        {fault::clipper, [&] { return d.create_clipper(); }},
        {fault::clip_window, [&] { return primary->set_clip_window(window); }},
        {fault::describe, [&] { return offscreen->describe(desc); }},
        {fault::not_rgb, [&] { return offscreen->describe(desc) && desc.format.rgb; }},
        {fault::create_palette, [&] { return d.create_palette(); }},
        {fault::set_palette, [&] { return primary->set_palette(std::vector<uint32_t>(256).data()); }},
        {fault::vertical_blank, [&] { return d.wait_vertical_blank(true); }},
        {fault::sound_open, [&] { return s.open(); }},
        {fault::sound_cooperative_level, [&] { return s.set_cooperative_level(window); }},
        {fault::sound_primary, [&] { return (volume = s.create_primary()) != nullptr; }},
        {fault::sound_primary_caps, [&] { return volume->get_caps(bytes); }},
        {fault::sound_format, [&] { return volume->set_format(format); }},
        {fault::sound_stream, [&] { return (stream = s.create_stream(7680, format)) != nullptr; }},
        {fault::sound_stream_caps, [&] { return stream->get_caps(bytes) && bytes == 7680; }},
        {fault::sound_lock, [&] { return stream->lock(0, 8, p1, a, p2, b); }},
        {fault::sound_position, [&] { return stream->get_position(a, b); }},
    };
    for (const auto &step : steps) {
        host.faults.set(step.f, 1);
        EXPECT_FALSE(step.works()) << "fault " << static_cast<int>(step.f);
        EXPECT_TRUE(step.works()) << "fault " << static_cast<int>(step.f);
    }
    EXPECT_FALSE(d.set_mode(641, 400, 8)) << "no such mode";
    host.screen.set_mode_filter([](int w, int, int depth) { return w == 720 && depth == 32; });
    EXPECT_FALSE(d.set_mode(720, 480, 8));
    EXPECT_TRUE(d.set_mode(720, 480, 32));
    EXPECT_EQ(host.screen.current_mode().width, 720);
}

// The render thread presents, the window thread repaints and refills, the test looks: always one whole frame.
TEST_F(HeadlessHost, TheScreenAlwaysShowsOneWholeFrame) {
    surfaces s(host, window, false, 640, 400);
    std::atomic<bool> leave{false};
    std::thread render([&] {
        for (uint32_t n = 1; !leave; n++) {
            void *pixels;
            int pitch;
            if (s.offscreen->lock(pixels, pitch) != display_result::ok) continue;
            std::fill_n(static_cast<uint32_t *>(pixels), 640 * 400, n);
            s.offscreen->unlock();
            s.primary->copy_from(*s.offscreen, {0, 0, 640, 400}, {}, false);
        }
    });
    ASSERT_TRUE(host.screen.wait_for_frame(1, 10'000));
    for (int i = 0; i < 50; i++) {
        const shown_frame frame = host.screen.shown();
        ASSERT_EQ(frame.picture.pixels.size(), 640u * 400u);
        const uint32_t first = frame.picture.at(0, 0);
        ASSERT_EQ(std::count(frame.picture.pixels.begin(), frame.picture.pixels.end(), first), 640 * 400);
        if (i % 10 == 0) {
            window.invalidate(true);
            host.pump();
        }
    }
    ASSERT_TRUE(host.screen.wait_for_frame(host.screen.shown().number + 3, 10'000));
    leave = true;
    render.join();
    EXPECT_FALSE(host.screen.wait_for_frame(UINT64_MAX, 1));
}

TEST_F(HeadlessHost, VerticalBlanksComeAtTheRefreshRate) {
    display &d = host.get_display();
    host.screen.set_refresh_rate(100);
    EXPECT_TRUE(d.wait_vertical_blank(true));
    const int64_t start = performance_counter();
    for (int i = 0; i < 5; i++) EXPECT_TRUE(d.wait_vertical_blank(true));
    EXPECT_GE(performance_counter() - start, performance_frequency() * 39 / 1000);
    EXPECT_TRUE(d.wait_vertical_blank(false));
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
    const auto cursor = [&] {
        uint32_t play = 0, write = 0;
        EXPECT_TRUE(stream->get_position(play, write));
        EXPECT_EQ(write, (play + (device.is_playing() ? 100u : 0u)) % 7680);
        return play;
    };
    device.set_write_lead(100);
    put(0, 3840, 1);
    device.advance(5'000);
    EXPECT_EQ(cursor(), 0u) << "stopped";
    stream->play();
    device.advance(20'000);
    EXPECT_EQ(cursor(), 3840u);
    put(3840 + 1920, 3840, 2); // wraps
    device.advance(25'000);
    EXPECT_EQ(cursor(), 960u);
    stream->stop();
    device.advance(1'000'000);
    EXPECT_EQ(cursor(), 960u);
    stream->play();
    device.advance(uint64_t{3600} * 1'000'000 * 30); // 30 hours: whole rounds
    EXPECT_EQ(cursor(), 960u);

    const std::vector<int16_t> heard = device.heard();
    const auto run = [&](size_t from, size_t to, int16_t value) {
        EXPECT_EQ(
            std::count(heard.begin() + static_cast<long>(from), heard.begin() + static_cast<long>(to), value),
            static_cast<long>(to - from))
            << "samples " << from << " to " << to;
    };
    ASSERT_EQ(heard.size(), 10'000u);
    run(0, 1920, 1);
    run(1920, 2880, 0);
    run(2880, 3840 + 960, 2);
    run(4800, 5760, 1);
    EXPECT_EQ(device.written().size(), 3840u);
    EXPECT_EQ(device.unlocks(), 2u);

    const auto volume = device.create_primary();
    volume->set_volume(-400);
    EXPECT_EQ(volume->get_volume(), -300);
    EXPECT_EQ(device.volume(), -400);
}

TEST_F(HeadlessHost, SoundInRealTimeIsNeverAheadOfTheClock) {
    ASSERT_TRUE(host.sound.open());
    const auto stream = host.sound.create_stream(1 << 20, {1, 96000, 16});
    const int64_t before = performance_counter();
    stream->play();
    sleep_ms(30);
    uint32_t play, write;
    ASSERT_TRUE(stream->get_position(play, write));
    const int64_t most = (performance_counter() - before) * 192000 / performance_frequency();
    EXPECT_GE(play, 192000u * 29 / 1000);
    EXPECT_LE(play, most + 192);
}

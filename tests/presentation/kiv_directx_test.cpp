#include "display/kiv_directx.h"

#include "app/kiv_assay.h"
#include "display/frame_composer.h"
#include "display/kiv_render.h"
#include "display/overlay_font.h"
#include "machine/kiv_machine.h"
#include "scripted_host.h"
#include "support/main_window.h"
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using platform::display_result;
using strings = std::vector<std::string>;

std::mutex lines_mutex;
strings lines;

void hear(const char *line) {
    const std::lock_guard lock(lines_mutex);
    lines.emplace_back(line);
}

long heard(const std::string &line) { return std::count(lines.begin(), lines.end(), line); }

class kiv_directx_test : public testing::Test, public main_window {
  protected:
    kiv_directx_test() : directx(new kiv_directx(host)) {
        lines.clear();
        set_trace_listener(hear);
        the_main_window = this;
        machine_init(
            machine, [] {}, [] {});
        machine.crtc_status = 0; // the text layer is on
    }
    ~kiv_directx_test() override {
        directx.reset();
        the_main_window = nullptr;
        set_trace_listener(nullptr);
        host_callbacks_listen({[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}});
    }
    void post(uint32_t, uint64_t, uint64_t) override {}
    void set_full_screen_style(int, int) override { tell.steps.emplace_back("full screen style"); }
    void set_window_style(int w, int h) override { tell.steps.push_back("window style " + size_text(w, h)); }

    int init() { return directx->init(host.window, 1); }
    int init_full_screen() {
        directx->set_full_screen(1);
        return init();
    }
    scripted_surface &screen() { return *host.display.offscreen; }

    scripted_host host;
    script &tell = host.tell;
    std::unique_ptr<kiv_directx> directx;
};

TEST_F(kiv_directx_test, a_window_is_set_up_in_order) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(tell.steps,
              (strings{"open", "window style 640x400", "cooperative window", "get_caps", "primary window",
                       "offscreen 640x400 video", "create_clipper", "set_clip_window", "describe",
                       "sound open", "sound level", "primary buffer", "primary caps", "set_format", "stream",
                       "stream caps", "stream lock", "stream unlock", "stop"}));
    EXPECT_EQ(lines,
              (strings{"DirectX:  Window Mode start", "DirectX:  Surface pixcel format = RGB",
                       "DirectX: Surface desc lpitch = 2560, height = 400, pixcel format = 64",
                       "DirectSound: Primary Buffer size = 4096", "reset_cpu_clk: m_tick_delay=79872l"}));
    tell.steps.clear();
    directx->release();
    EXPECT_EQ(tell.steps,
              (strings{"release offscreen", "release primary", "restore_mode", "close", "sound close"}));
}

TEST_F(kiv_directx_test, an_indexed_desktop_gets_the_palette) {
    tell.indexed8 = true;
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(directx->get_palette_mode(), 1u);
    EXPECT_EQ(tell.count("set_palette"), 1);
    EXPECT_EQ(heard("DirectX:  Surface pixcel format = 8-bit color indexed palette"), 1);
}

TEST_F(kiv_directx_test, every_refused_step_says_so_and_releases_what_was_made) {
    const struct {
        bool full_screen;
        strings refused;
        const char *line; // nullptr: none
    } cases[] = {
        {false, {"open"}, "DirectX: DirectDrawCreate Failed"},
        {false, {"cooperative window"}, "DirectX: dd->SetCooperativeLevel Failed"},
        {true, {"cooperative full"}, "DirectX: dd->SetCooperativeLevel Failed"},
        {false, {"get_caps"}, "DirectX:  dd->RestoreDisplayMode"},
        {false, {"primary window"}, "DirectX:  dd->CreateSurface(Primary) Failed"},
        {true, {"primary full"}, "DirectX:  dd->CreateSurface(Primary [Full Screen Mode]) Failed"},
        {false,
         {"offscreen 640x400 video", "offscreen 640x400 system"},
         "DirectX:  dd->CreateSurface(Off-screen) Failed"},
        {true,
         {"offscreen 640x400 video"},
         "DirectX:  dd->CreateSurface(Off-screen [Full Screen Mode]) Failed"},
        {false, {"create_clipper"}, "DirectX: dd->CreateClipper Failed"},
        {false, {"set_clip_window"}, "DirectX: dds1->SetClipper Failed"},
        {false, {"describe"}, "DirectX:  dds->GetSurfaceDesc(Off-screen) Failed"},
        {true, {"create_palette"}, nullptr},
        {false, {"sound open"}, nullptr},
        {false, {"sound level"}, "ERROR DS:SetCooperativeLevel失敗"},
        {false, {"primary buffer"}, "ERROR DS:CreateSoundBuffer(Primary)失敗"},
        {false, {"primary caps"}, "ERROR DS:GetCaps(Primary)失敗"},
        {false, {"set_format"}, "ERROR DS:SetFormat(Primary)失敗"},
        {false, {"stream"}, "ERROR DS:CreateSoundBuffer(2nd)失敗"},
        {false, {"stream caps"}, "ERROR DS:GetCaps(2nd)失敗"},
        {false, {"stream lock"}, "ERROR DS:Lock(2nd)失敗"},
    };
    for (const auto &c : cases) {
        tell.refused = {c.refused.begin(), c.refused.end()};
        tell.steps.clear();
        tell.indexed8 = false;
        lines.clear();
        directx->set_full_screen(c.full_screen);
        const std::string &what = c.refused[0];
        EXPECT_EQ(init(), 0) << what;
        EXPECT_GE(c.line == nullptr ? 1 : heard(c.line), 1) << what;
        const auto succeeded = [&](const std::string &s) {
            return tell.refused.count(s) ? 0 : tell.count(s);
        };
        EXPECT_EQ(tell.count("close"), succeeded("open")) << what;
        EXPECT_EQ(tell.count("sound close"), succeeded("sound open")) << what;
        EXPECT_EQ(tell.count("release primary"), succeeded("primary window") + succeeded("primary full"))
            << what;
        EXPECT_EQ(tell.count("release offscreen"), succeeded("offscreen 640x400 video")) << what;
        EXPECT_EQ(directx->frame(), 0u) << what;
        EXPECT_EQ(directx->getHardVolume(), 0) << what;
    }
    tell.refused = {};
    tell.indexed8 = tell.rgb = false;
    directx->set_full_screen(0);
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(heard("DirectX:  Surface does not support RGB pixcel format!"), 1);
}

TEST_F(kiv_directx_test, full_screen_takes_the_first_mode_that_is_there) {
    const struct {
        int screensize;
        strings refused;
        const char *taken; // nullptr: none
        int left, top;
    } cases[] = {
        {0, {}, "640x400x8", 0, 0},
        {0, {"640x400x8"}, "640x480x8", 0, 40},
        {0, {"640x400x8", "640x480x8", "720x480x8", "800x480x8"}, "800x600x8", 80, 100},
        {0,
         {"640x400x8", "640x480x8", "720x480x8", "800x480x8", "800x600x8", "640x400x32"},
         "640x480x32",
         0,
         40},
        {1, {}, "720x480x8", 40, 40},
        {1, {"720x480x8"}, "720x480x32", 40, 40},
        {1, {"720x480x8", "720x480x32"}, nullptr, 0, 0},
    };
    for (const auto &c : cases) {
        directx.reset();
        directx.reset(new kiv_directx(host));
        tell.refused.clear();
        for (const auto &mode : c.refused) tell.refused.insert("set_mode " + mode);
        tell.steps.clear();
        lines.clear();
        directx->set_screensize(static_cast<uint16_t>(c.screensize));
        ASSERT_EQ(init_full_screen(), c.taken != nullptr);
        EXPECT_EQ(tell.count("restore_mode"), 0);
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const std::string &s) { return s.find("SetDisplayMode(") != s.npos; }),
                  static_cast<long>(c.refused.size()) + (c.taken != nullptr));
        if (c.taken == nullptr) {
            EXPECT_EQ(heard("DirectX: dd->SetDisplayMode(Width=720, Height=480, Depth=32) Failed"), 1);
            continue;
        }
        EXPECT_EQ(tell.count(std::string("set_mode ") + c.taken), 1);
        EXPECT_EQ(geometry.frame_left, c.left) << c.taken;
        EXPECT_EQ(geometry.frame_top, c.top) << c.taken;
    }
}

TEST_F(kiv_directx_test, window_to_full_screen_and_back) {
    ASSERT_EQ(init(), 1);
    tell.steps.clear();
    EXPECT_EQ(directx->toggle_screen(), 1);
    EXPECT_EQ(directx->is_full_screen(), 1u);
    EXPECT_EQ(tell.steps[0], "release offscreen");
    EXPECT_EQ(tell.count("full screen style"), 1);
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_EQ(tell.count("copy 640x400 to 100,50-740,450 full"), 1);
    tell.indexed8 = false;
    EXPECT_EQ(directx->toggle_screen(), 1);
    EXPECT_EQ(directx->is_full_screen(), 0u);
    tell.origin = {-7, 300};
    directx->on_move();
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_EQ(tell.count("copy 640x400 to -7,300-633,700"), 1);
    tell.refused = {"primary full"};
    EXPECT_EQ(directx->toggle_screen(), 0);
    EXPECT_EQ(directx->frame(), 0u);
    EXPECT_EQ(tell.count("sound close"), 0);
}

TEST_F(kiv_directx_test, restored_surfaces_are_black) {
    ASSERT_EQ(init(), 1);
    tell.steps.clear();
    directx->restore_surfaces();
    EXPECT_EQ(tell.steps, (strings{"restore primary", "fill primary 640x400 0", "restore offscreen",
                                   "fill offscreen 640x400 0"}));
}

// The composer writes its 640 x 400 pixels and nothing beside them, whatever surrounds them.
TEST_F(kiv_directx_test, the_picture_sits_in_its_surface) {
    for (const bool indexed : {true, false}) {
        tell.refused = {"set_mode 640x400x8", "set_mode 640x480x8"};
        if (!indexed) {
            for (const char *size : {"640x400x32", "640x480x32", "720x480x8", "800x480x8", "800x600x8"})
                tell.refused.insert(std::string("set_mode ") + size);
        }
        tell.extra_pitch = 16;
        ASSERT_EQ(init_full_screen(), 1);
        EXPECT_EQ(directx->frame(), 25u);
        const uint32_t untouched = indexed ? 0x77 : 0x77777777;
        for (int y = 0; y < 480; ++y)
            for (int x = 0; x < 724; ++x) {
                const bool inside = x >= 40 && x < 680 && y >= 40 && y < 440;
                ASSERT_EQ(screen().pixel(x, y) == untouched, !inside) << x << "," << y;
            }
        machine.crtc_status = crtc_text_off;
        EXPECT_EQ(directx->frame(), 0u);
        EXPECT_EQ(directx->realizer(), 0u);
        machine.crtc_status = 0;
        EXPECT_EQ(screen().unlocks, 3);
    }
}

// Pixels that a line of text would have, on a surface of its own.
uint32_t overlay_pixel(const char *text, bool indexed, int x, int y) {
    static std::vector<uint32_t> pixels(340 * 20);
    if (x == 0 && y == 0) {
        std::fill(pixels.begin(), pixels.end(), 0x77777777);
        overlay_text({pixels.data(), 340, 340, 20, indexed}, text);
    }
    return indexed ? reinterpret_cast<uint8_t *>(pixels.data())[y * 340 + x]
                   : pixels[static_cast<size_t>(y * 340 + x)];
}

TEST_F(kiv_directx_test, the_speed_line_comes_and_is_wiped_once) {
    stat_sys_mhz = 3.994;
    stat_cpu_mhz = 3.912;
    stat_fps = 60;
    stat_lpf = 25;
    for (const bool indexed : {true, false}) {
        tell.refused = {"set_mode 640x400x8"};
        if (!indexed)
            for (const char *size : {"640x480x8", "720x480x8", "800x480x8", "800x600x8", "640x400x32"})
                tell.refused.insert(std::string("set_mode ") + size);
        ASSERT_EQ(init_full_screen(), 1); // 640 x 480: the line lies in the margin
        directx->toggle_status();
        directx->frame();
        int ink = 0;
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 340; ++x) {
                const uint32_t wanted =
                    overlay_pixel("SYS/CPU=3.994/3.912(MHz),FPS=60,LPF=25.0", indexed, x, y);
                ASSERT_EQ(screen().pixel(x, y), wanted) << x << "," << y;
                ink += wanted == (indexed ? 0xFFu : 0xFFFFFFu);
            }
        EXPECT_GT(ink, 400);
        directx->toggle_status();
        directx->frame();
        for (int y = 0; y < 25; ++y)
            for (int x = 0; x < 350; ++x)
                ASSERT_EQ(screen().pixel(x, y) == 0, x < 340 && y < 20) << x << "," << y;
        std::fill(screen().memory.begin(), screen().memory.end(), 0x12121212);
        directx->frame();
        EXPECT_EQ(screen().pixel(0, 0), indexed ? 0x12u : 0x12121212u) << "wiped once only";
    }
}

TEST_F(kiv_directx_test, a_figure_of_any_length_stays_inside_the_surface) {
    stat_sys_mhz = 1e300;
    stat_cpu_mhz = -1e300;
    stat_fps = INT_MIN;
    stat_lpf = 1e300;
    ASSERT_EQ(init(), 1);
    directx->toggle_status();
    EXPECT_EQ(directx->frame(), 25u);
}

TEST_F(kiv_directx_test, lost_and_busy_surfaces) {
    constexpr auto ok = display_result::ok, busy = display_result::still_busy, lost = display_result::lost,
                   failed = display_result::failed;
    const struct {
        std::vector<display_result> lock, copy;
        bool foreground;
        const char *refused;
        uint32_t rows;
        strings logged;
    } cases[] = {
        {{}, {}, true, "", 25, {}},
        {{busy, busy, ok}, {}, true, "", 25, {2, "DirectX: realizer() still drawing"}},
        {{lost, ok}, {}, true, "", 25, {"DirectX: realizer() surface lost"}},
        {{lost, ok}, {}, false, "", 0, {"DirectX: realizer() surface lost"}},
        {{lost, ok},
         {},
         true,
         "restore offscreen",
         0,
         {"DirectX: realizer() surface lost", "DirectX: realizer() surface restore Failed"}},
        {{failed}, {}, true, "", 0, {}},
        {{}, {lost, ok}, true, "", 25, {"DirectX: Surface Lost [WindowMode]"}},
        {{}, {lost, ok}, false, "", 0, {"DirectX: Surface Lost [WindowMode]", "DirectX: transfer Failed"}},
        {{},
         {lost, ok},
         true,
         "restore primary",
         0,
         {"DirectX: Surface Lost [WindowMode]", "DirectX: dds1->Restore Failed"}},
        {{}, {failed}, true, "", 0, {}},
        {{}, {busy}, true, "", 0, {}},
    };
    ASSERT_EQ(init(), 1);
    for (const auto &c : cases) {
        lines.clear();
        tell.lock_results = c.lock;
        tell.copy_results = c.copy;
        tell.foreground = c.foreground;
        tell.refused = {c.refused};
        const auto index = &c - cases;
        EXPECT_EQ(directx->frame(), c.rows) << "case " << index;
        EXPECT_EQ(lines, c.logged) << "case " << index;
    }
    // Without end: the frame is given up, the next one is drawn.
    for (const auto result : {busy, lost}) {
        tell.refused = {};
        tell.foreground = true;
        tell.copy_results.clear();
        tell.lock_results.assign(100000, result);
        EXPECT_EQ(directx->frame(), 0u);
        tell.lock_results.clear();
        if (result == lost) tell.copy_results.assign(100000, result);
        EXPECT_EQ(directx->frame(), result == lost ? 0u : 25u);
        tell.copy_results.clear();
        EXPECT_EQ(directx->frame(), 25u);
    }
}

TEST_F(kiv_directx_test, the_vertical_blank_is_waited_for_where_asked) {
    ASSERT_EQ(init(), 1);
    tell.refused = {"blank begins", "blank ends"};
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_EQ(tell.count("blank begins"), 0);
    directx->set_sync_vblank(1);
    EXPECT_EQ(directx->frame(), 0u);
    EXPECT_EQ(directx->wait_vblank_end(), 0);
    tell.refused = {};
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_EQ(directx->wait_vblank_end(), 1);
}

TEST_F(kiv_directx_test, without_an_object_no_frame_is_presented) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(kiv_directx::present_frame(), 25u);
    directx.reset();
    EXPECT_EQ(kiv_directx::present_frame(), 0u);
    EXPECT_EQ(kiv_directx::instance(), nullptr);
}

// ---- sound ------------------------------------------------------------------------------------------------

std::vector<int16_t> half_of(const scripted_stream &stream, int half) {
    std::vector<int16_t> samples(slice_samples);
    std::memcpy(samples.data(), stream.memory.data() + half * static_cast<int>(stream_half_bytes),
                stream_half_bytes);
    return samples;
}

TEST_F(kiv_directx_test, slices_go_into_the_half_without_the_write_cursor) {
    ASSERT_EQ(init(), 1);
    scripted_stream &stream = *host.sound.stream;
    EXPECT_EQ(half_of(stream, 0), std::vector<int16_t>(slice_samples, 0));
    EXPECT_EQ(half_of(stream, 1), std::vector<int16_t>(slice_samples, 0x5555))
        << "only the first half is cleared";
    std::vector<int16_t> ramp(slice_samples);
    std::iota(ramp.begin(), ramp.end(), int16_t{1});
    const struct {
        uint32_t cursor;
        int half;
    } cases[] = {{0, 1}, {3839, 1}, {3840, 0}, {7679, 0}};
    for (const bool split : {false, true})
        for (const auto &c : cases) {
            std::fill(stream.memory.begin(), stream.memory.end(), uint8_t{0x55});
            stream.split_locks = split;
            tell.write_cursor = c.cursor;
            directx->transferPCM(ramp.data());
            EXPECT_EQ(half_of(stream, c.half), ramp) << "cursor " << c.cursor;
            EXPECT_EQ(half_of(stream, 1 - c.half), std::vector<int16_t>(slice_samples, 0x5555)) << c.cursor;
        }
    std::fill(stream.memory.begin(), stream.memory.end(), uint8_t{0x55});
    tell.refused = {"stream lock"};
    directx->transferPCM(ramp.data());
    EXPECT_EQ(heard("transferPCM: fail to Lock pcm buffer"), 1);
    tell.refused = {"position"};
    directx->transferPCM(ramp.data());
    EXPECT_EQ(heard("transferPCM: fail to Lock pcm buffer"), 1);
    EXPECT_EQ(half_of(stream, 0), std::vector<int16_t>(slice_samples, 0x5555));
}

TEST_F(kiv_directx_test, the_machine_is_heard_unless_the_sound_is_off) {
    host_callbacks_listen(directx_host_callbacks());
    ASSERT_EQ(init(), 1);
    tell.write_cursor = 3840;
    const auto slice = [&] {
        machine.advance_sound(79872);
        directx->tickPCM();
        return half_of(*host.sound.stream, 0);
    };
    const std::vector<int16_t> silent(slice_samples, 0);
    EXPECT_EQ(slice()[0], 6000) << "sounding from power-on";
    machine.beep_off();
    EXPECT_EQ(slice(), silent);
    directx->setSoftVolume(2);
    machine.beep_on();
    EXPECT_EQ(slice()[0], 2000);
    directx->toggleSound();
    EXPECT_EQ(directx->isSoundOff(), 1u);
    EXPECT_EQ(slice(), silent);
    machine.beep_off();
    EXPECT_EQ(slice(), silent);
    directx->toggleSound();
    EXPECT_EQ(slice(), silent) << "old time is not replayed";
    machine.pcg_tone(1000, 2);
    EXPECT_EQ(slice()[1], 600);
    machine.tones_off();
    EXPECT_EQ(slice(), silent);
}

TEST_F(kiv_directx_test, volumes_read_back_as_the_settings_need_them) {
    ASSERT_EQ(init(), 1);
    for (int decibels = -100; decibels <= 0; ++decibels) {
        directx->setHardVolume(decibels);
        EXPECT_EQ(host.sound.primary->volume, decibels * 100);
        EXPECT_EQ(directx->getHardVolume() - 1, decibels);
    }
    for (const int extreme : {INT_MIN, INT_MIN / 100 - 1}) {
        directx->setHardVolume(extreme);
        EXPECT_EQ(host.sound.primary->volume, INT_MIN);
    }
    directx->setSoftVolume(18);
    EXPECT_EQ(directx->getSoftVolume(), 18);
}

TEST_F(kiv_directx_test, the_stream_plays_and_stops_where_there_is_one) {
    directx->play();
    directx->stop();
    EXPECT_EQ(lines, (strings{"DirectX:  ds->play() null reference", "DirectX:  ds->stop() null reference"}));
    directx->tickPCM();
    ASSERT_EQ(init(), 1);
    directx->play();
    directx->stop();
    EXPECT_EQ(tell.count("play"), 1);
    EXPECT_EQ(tell.count("stop"), 2);
}

} // namespace

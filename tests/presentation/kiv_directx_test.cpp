#include "display/frame_composer.h"
#include "display/kiv_render.h"
#include "display/overlay_font.h"
#include "presentation_fixture.h"
#include <climits>

namespace {

using platform::fault;

constexpr uint32_t white = 0xFFFFFF;

class kiv_directx_test : public presentation_test {
  protected:
    platform::rgb_picture next_picture() {
        directx->frame();
        return host.screen.shown().picture;
    }
};

TEST_F(kiv_directx_test, a_window_is_set_up) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(lines(),
              (strings{"DirectX:  Window Mode start", "DirectX:  Surface pixcel format = RGB",
                       "DirectX: Surface desc lpitch = 2560, height = 400, pixcel format = 64",
                       "DirectSound: Primary Buffer size = 65536", "reset_cpu_clk: m_tick_delay=79872l"}));
    EXPECT_EQ(directx->get_palette_mode(), 0u);
    EXPECT_EQ(host.sound.format().sample_rate, 96000u);
    EXPECT_FALSE(host.sound.is_playing());
    directx->release();
    EXPECT_FALSE(host.screen.is_open());
    EXPECT_FALSE(host.sound.is_open());
}

TEST_F(kiv_directx_test, an_indexed_desktop_gets_the_palette) {
    host.screen.set_desktop(1024, 768, 8);
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(directx->get_palette_mode(), 1u);
    EXPECT_EQ(heard("DirectX:  Surface pixcel format = 8-bit color indexed palette"), 1);
    EXPECT_EQ(next_picture().at(320, 200), white);
}

TEST_F(kiv_directx_test, every_refused_step_says_so_and_releases_what_was_made) {
    const struct {
        bool full_screen;
        std::vector<fault> faults;
        const char *line; // nullptr: none
    } cases[] = {
        {false, {fault::display_open}, "DirectX: DirectDrawCreate Failed"},
        {false, {fault::display_cooperative_level}, "DirectX: dd->SetCooperativeLevel Failed"},
        {true, {fault::display_cooperative_level}, "DirectX: dd->SetCooperativeLevel Failed"},
        {true, {fault::display_mode}, "DirectX: dd->SetDisplayMode(Width=800, Height=600, Depth=32) Failed"},
        {false, {fault::display_caps}, "DirectX:  dd->RestoreDisplayMode"},
        {false, {fault::primary}, "DirectX:  dd->CreateSurface(Primary) Failed"},
        {true, {fault::primary}, "DirectX:  dd->CreateSurface(Primary [Full Screen Mode]) Failed"},
        {false,
         {fault::offscreen_video_memory, fault::offscreen_system_memory},
         "DirectX:  dd->CreateSurface(Off-screen) Failed"},
        {true,
         {fault::offscreen_video_memory},
         "DirectX:  dd->CreateSurface(Off-screen [Full Screen Mode]) Failed"},
        {false, {fault::clipper}, "DirectX: dd->CreateClipper Failed"},
        {false, {fault::clip_window}, "DirectX: dds1->SetClipper Failed"},
        {false, {fault::describe}, "DirectX:  dds->GetSurfaceDesc(Off-screen) Failed"},
        {false, {fault::not_rgb}, "DirectX:  Surface does not support RGB pixcel format!"},
        {true, {fault::create_palette}, nullptr},
        {false, {fault::sound_open}, nullptr},
        {false, {fault::sound_cooperative_level}, "ERROR DS:SetCooperativeLevel失敗"},
        {false, {fault::sound_primary}, "ERROR DS:CreateSoundBuffer(Primary)失敗"},
        {false, {fault::sound_primary_caps}, "ERROR DS:GetCaps(Primary)失敗"},
        {false, {fault::sound_format}, "ERROR DS:SetFormat(Primary)失敗"},
        {false, {fault::sound_stream}, "ERROR DS:CreateSoundBuffer(2nd)失敗"},
        {false, {fault::sound_stream_caps}, "ERROR DS:GetCaps(2nd)失敗"},
        {false, {fault::sound_lock}, "ERROR DS:Lock(2nd)失敗"},
    };
    for (const auto &c : cases) {
        for (const fault f : c.faults) host.faults.set(f);
        lines().clear();
        const auto index = &c - cases;
        EXPECT_EQ(init(c.full_screen), 0) << "case " << index;
        EXPECT_GE(c.line == nullptr ? 1 : heard(c.line), 1) << "case " << index;
        EXPECT_FALSE(host.screen.is_open()) << "case " << index;
        EXPECT_FALSE(host.sound.is_open()) << "case " << index;
        EXPECT_EQ(directx->frame(), 0u) << "case " << index;
        EXPECT_EQ(directx->getHardVolume(), 0) << "case " << index;
        for (const fault f : c.faults) host.faults.set(f, 0);
    }
    host.faults.set(fault::offscreen_video_memory); // a window makes do with the other memory
    EXPECT_EQ(init(), 1);
    EXPECT_EQ(directx->frame(), 25u);
}

TEST_F(kiv_directx_test, full_screen_takes_the_first_mode_that_is_there) {
    const struct {
        uint16_t screensize;
        strings modes;
        int width, height, left, top; // 0: none is taken
        uint32_t palette_mode;
        long tried;
    } cases[] = {
        {0, {"640x400x8", "640x480x8"}, 640, 400, 0, 0, 1, 1},
        {0, {"640x480x8", "640x400x32"}, 640, 480, 0, 40, 1, 2},
        {0, {"800x600x8"}, 800, 600, 80, 100, 1, 5},
        {0, {"800x480x32", "720x480x32"}, 720, 480, 40, 40, 0, 8},
        {1, {"640x400x8", "720x480x8"}, 720, 480, 40, 40, 1, 1},
        {1, {"640x400x8", "720x480x32"}, 720, 480, 40, 40, 0, 2},
        {1, {"640x400x8", "640x400x32"}, 0, 0, 0, 0, 0, 2},
    };
    for (const auto &c : cases) {
        allow_modes(c.modes);
        lines().clear();
        directx->release();
        directx->set_screensize(c.screensize);
        ASSERT_EQ(init(true), c.width != 0);
        EXPECT_EQ(std::count_if(lines().begin(), lines().end(),
                                [](const auto &s) { return s.find("dd->SetDisplayMode(") != s.npos; }),
                  c.tried);
        if (c.width == 0) continue;
        EXPECT_EQ(host.screen.current_mode().width, c.width);
        EXPECT_EQ(host.screen.current_mode().height, c.height);
        EXPECT_EQ(directx->get_palette_mode(), c.palette_mode);
        // The composer draws its 640 x 400 pixels and nothing beside them.
        const platform::rgb_picture picture = next_picture();
        ASSERT_EQ(picture.width, c.width);
        ASSERT_EQ(picture.height, c.height);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x) {
                const bool inside = x >= c.left && x < c.left + 640 && y >= c.top && y < c.top + 400;
                ASSERT_EQ(picture.at(x, y), inside ? white : 0) << c.modes[0] << " " << x << "," << y;
            }
    }
}

TEST_F(kiv_directx_test, window_to_full_screen_and_back) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(directx->toggle_screen(), 1);
    EXPECT_EQ(directx->is_full_screen(), 1u);
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_TRUE(host.screen.shown().full_screen);
    EXPECT_EQ(directx->toggle_screen(), 1);
    EXPECT_EQ(directx->is_full_screen(), 0u);
    host.window()->drag_to(-70, 300);
    host.pump();
    const platform::point at = host.window()->client_origin();
    EXPECT_EQ(directx->frame(), 25u);
    const auto shown = host.screen.shown();
    EXPECT_FALSE(shown.full_screen);
    EXPECT_EQ(shown.destination.left, at.x);
    EXPECT_EQ(shown.destination.top, at.y);
    EXPECT_EQ(shown.destination.right, at.x + 640);
    EXPECT_EQ(shown.destination.bottom, at.y + 400);
    host.faults.set(fault::display_mode);
    EXPECT_EQ(directx->toggle_screen(), 0);
    EXPECT_EQ(directx->frame(), 0u);
    EXPECT_TRUE(host.sound.is_open());
}

TEST_F(kiv_directx_test, rows_are_those_of_the_text_layer) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(directx->realizer(), 25u);
    machine.crtc_status = crtc_text_off;
    EXPECT_EQ(directx->realizer(), 0u);
    EXPECT_EQ(directx->frame(), 0u);
    EXPECT_EQ(host.screen.shown().number, 1u) << "shown all the same";
}

TEST_F(kiv_directx_test, the_speed_line_comes_and_is_wiped_once) {
    stat_sys_mhz = 3.994;
    stat_cpu_mhz = 3.912;
    stat_fps = 60;
    stat_lpf = 25;
    std::vector<uint32_t> line(340 * 20);
    overlay_text({line.data(), 340, 340, 20, false}, "SYS/CPU=3.994/3.912(MHz),FPS=60,LPF=25.0");
    EXPECT_GT(std::count(line.begin(), line.end(), white), 2000) << "the text is black, its ground white";
    for (const char *mode : {"640x400x8", "640x480x8", "640x480x32"}) {
        allow_modes({mode});
        ASSERT_EQ(init(true), 1);
        const bool in_margin = geometry.frame_top != 0;
        directx->toggle_status();
        platform::rgb_picture picture = next_picture();
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 240; ++x)
                ASSERT_EQ(picture.at(x, y), line[static_cast<size_t>(y * 340 + x)])
                    << mode << " " << x << "," << y;
        EXPECT_EQ(picture.at(250, 5), in_margin ? 0 : white) << "the line ends";
        directx->toggle_status();
        picture = next_picture();
        for (int y = 0; y < 25; ++y)
            for (int x = 0; x < 350; ++x)
                ASSERT_EQ(picture.at(x, y), (x < 340 && y < 20) || in_margin ? 0 : white)
                    << mode << " " << x << "," << y;
        EXPECT_EQ(next_picture().at(0, 0), in_margin ? 0 : white) << mode << ": wiped once only";
        directx->toggle_status();
        directx->toggle_status(); // off again before a frame has come
        EXPECT_EQ(next_picture().at(0, 0), 0u);
        directx->release();
    }
}

TEST_F(kiv_directx_test, figures_of_any_length_stay_inside_the_surface) {
    stat_sys_mhz = stat_lpf = 1e300;
    stat_cpu_mhz = -1e300;
    stat_fps = INT_MIN;
    ASSERT_EQ(init(), 1);
    directx->toggle_status();
    EXPECT_EQ(directx->frame(), 25u);
}

TEST_F(kiv_directx_test, lost_and_busy_surfaces) {
    constexpr int for_ever = platform::fault_plan::always;
    const struct {
        fault what;
        int times;
        bool foreground, restore_refused;
        uint32_t rows;
        strings logged;
    } cases[] = {
        {fault::lock_busy, 2, true, false, 25, {2, "DirectX: realizer() still drawing"}},
        {fault::lock_lost, 1, true, false, 25, {"DirectX: realizer() surface lost"}},
        // The copy is tried all the same, and meets the surface that is still lost.
        {fault::lock_lost,
         1,
         false,
         false,
         0,
         {"DirectX: realizer() surface lost", "DirectX: Surface Lost [WindowMode]",
          "DirectX: transfer Failed"}},
        {fault::lock_lost,
         1,
         true,
         true,
         0,
         {"DirectX: realizer() surface lost", "DirectX: realizer() surface restore Failed",
          "DirectX: Surface Lost [WindowMode]", "DirectX: dds1->Restore Failed"}},
        {fault::lock_failed, 1, true, false, 0, {}},
        {fault::copy_lost, 1, true, false, 25, {"DirectX: Surface Lost [WindowMode]"}},
        {fault::copy_lost,
         1,
         false,
         false,
         0,
         {"DirectX: Surface Lost [WindowMode]", "DirectX: transfer Failed"}},
        {fault::copy_lost,
         1,
         true,
         true,
         0,
         {"DirectX: Surface Lost [WindowMode]", "DirectX: dds1->Restore Failed"}},
        {fault::copy_failed, 1, true, false, 0, {}},
        // Without end: the frame is given up.
        {fault::lock_busy, for_ever, true, false, 0, {20, "DirectX: realizer() still drawing"}},
        {fault::lock_lost, for_ever, true, false, 0, {3, "DirectX: realizer() surface lost"}},
        {fault::copy_lost, for_ever, true, false, 0, {3, "DirectX: Surface Lost [WindowMode]"}},
    };
    ASSERT_EQ(init(), 1);
    for (const auto &c : cases) {
        lines().clear();
        host.faults.set(c.what, c.times);
        host.faults.set(fault::restore, c.restore_refused ? for_ever : 0);
        host.window()->activate(c.foreground);
        const auto index = &c - cases;
        EXPECT_EQ(directx->frame(), c.rows) << "case " << index;
        EXPECT_EQ(lines(), c.logged) << "case " << index;
        host.faults.set(c.what, 0);
        host.faults.set(fault::restore, 0);
        directx->restore_surfaces();
        EXPECT_EQ(directx->frame(), 25u) << "after case " << index;
    }
}

TEST_F(kiv_directx_test, the_vertical_blank_is_waited_for_where_asked) {
    ASSERT_EQ(init(), 1);
    host.faults.set(fault::vertical_blank);
    EXPECT_EQ(directx->frame(), 25u);
    EXPECT_EQ(directx->wait_vblank_end(), 0);
    directx->set_sync_vblank(1);
    EXPECT_EQ(directx->frame(), 0u);
    host.faults.set(fault::vertical_blank, 0);
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

// ---- sound --------------------------------------------------------------------------------------------

// Slices handed over once every 20 ms are heard one after the other, wherever in the buffer it began.
TEST_F(kiv_directx_test, slices_go_into_the_half_without_the_write_cursor) {
    for (const uint64_t start_us : {0, 5000, 19000, 20000, 33000}) {
        ASSERT_EQ(init(), 1);
        host.sound.use_manual_clock();
        host.sound.set_record_limit(100'000);
        directx->play();
        host.sound.advance(start_us);
        std::vector<int16_t> wanted(start_us / 20000 * slice_samples + slice_samples, 0);
        for (int16_t n = 1; n <= 10; ++n) {
            const std::vector<int16_t> slice(slice_samples, n);
            directx->transferPCM(slice.data());
            wanted.insert(wanted.end(), slice.begin(), slice.end());
            host.sound.advance(20000);
        }
        const std::vector<int16_t> got = host.sound.heard();
        wanted.resize(got.size());
        EXPECT_GE(got.size(), 10 * slice_samples);
        EXPECT_EQ(got, wanted) << start_us;
        const uint64_t unlocks = host.sound.unlocks();
        lines().clear();
        host.faults.set(fault::sound_lock, 1);
        directx->transferPCM(wanted.data());
        EXPECT_EQ(lines(), strings{"transferPCM: fail to Lock pcm buffer"});
        host.faults.set(fault::sound_position, 1);
        directx->transferPCM(wanted.data());
        EXPECT_EQ(host.sound.unlocks(), unlocks);
        directx->release();
    }
}

TEST_F(kiv_directx_test, the_machine_is_heard_unless_the_sound_is_off) {
    host_callbacks_listen(directx_host_callbacks());
    ASSERT_EQ(init(), 1);
    const auto slice = [&] {
        host.sound.set_record_limit(slice_samples);
        machine.advance_sound(79872);
        directx->tickPCM();
        return host.sound.written();
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
        EXPECT_EQ(host.sound.volume(), decibels * 100);
        EXPECT_EQ(directx->getHardVolume() - 1, decibels);
    }
    for (const int extreme : {INT_MIN, INT_MAX}) { // a settings file may hold anything
        directx->setHardVolume(extreme);
        EXPECT_EQ(host.sound.volume(), extreme);
    }
    directx->setSoftVolume(18);
    EXPECT_EQ(directx->getSoftVolume(), 18);
}

TEST_F(kiv_directx_test, the_stream_plays_and_stops_where_there_is_one) {
    directx->play();
    directx->stop();
    directx->tickPCM();
    EXPECT_EQ(lines(), (strings{"DirectX:  ds->play() null reference", "DirectX:  ds->stop() null reference",
                                "makeNormalPCM: no data output", "makeNormalPCM: no data output"}));
    ASSERT_EQ(init(), 1);
    directx->play();
    EXPECT_TRUE(host.sound.is_playing());
    directx->stop();
    EXPECT_FALSE(host.sound.is_playing());
}

} // namespace

#include "display/frame_composer.h"
#include "display/kiv_render.h"
#include "display/overlay_font.h"
#include "presentation_fixture.h"
#include <climits>
#include <numeric>

namespace {

using platform::fault;

constexpr uint32_t white = 0xFFFFFF;
constexpr int for_ever = platform::fault_plan::always;

class KivDirectx : public presentation_test {
  protected:
    platform::rgb_picture next_picture() {
        directx->frame();
        return host.screen.shown().picture;
    }
};

TEST_F(KivDirectx, AWindowIsSetUpOnEitherKindOfDesktop) {
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(lines(),
              (strings{"DirectX:  Window Mode start", "DirectX:  Surface pixcel format = RGB",
                       "DirectX: Surface desc lpitch = 2560, height = 400, pixcel format = 64",
                       "DirectSound: Primary Buffer size = 65536", "reset_cpu_clk: m_tick_delay=79872l"}));
    EXPECT_EQ(directx->get_palette_mode(), 0u);
    EXPECT_FALSE(host.sound.is_playing());
    directx->release();
    EXPECT_FALSE(host.screen.is_open() || host.sound.is_open());
    host.screen.set_desktop(1024, 768, 8);
    ASSERT_EQ(init(), 1);
    EXPECT_EQ(directx->get_palette_mode(), 1u);
    EXPECT_EQ(heard("DirectX:  Surface pixcel format = 8-bit color indexed palette"), 1);
    EXPECT_EQ(next_picture().at(320, 200), white);
}

TEST_F(KivDirectx, EveryRefusedStepSaysSoAndReleasesWhatWasMade) {
    const struct {
        bool full_screen;
        fault refused;
        const char *line;
    } cases[] = {
        {false, fault::display_cooperative_level, "DirectX: dd->SetCooperativeLevel Failed"},
        {true, fault::display_cooperative_level, "DirectX: dd->SetCooperativeLevel Failed"},
        {true, fault::display_mode, "DirectX: dd->SetDisplayMode(Width=800, Height=600, Depth=32) Failed"},
        {false, fault::primary, "DirectX:  dd->CreateSurface(Primary) Failed"},
        {true, fault::primary, "DirectX:  dd->CreateSurface(Primary [Full Screen Mode]) Failed"},
        {false, fault::offscreen_system_memory, "DirectX:  dd->CreateSurface(Off-screen) Failed"},
        {true, fault::offscreen_video_memory,
         "DirectX:  dd->CreateSurface(Off-screen [Full Screen Mode]) Failed"},
        {false, fault::describe, "DirectX:  dds->GetSurfaceDesc(Off-screen) Failed"},
        {false, fault::sound_primary, "ERROR DS:CreateSoundBuffer(Primary)失敗"},
        {false, fault::sound_stream, "ERROR DS:CreateSoundBuffer(2nd)失敗"},
        {false, fault::sound_lock, "ERROR DS:Lock(2nd)失敗"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE("case " + std::to_string(&c - cases));
        // A window makes do with system memory.
        host.faults.set(fault::offscreen_video_memory, c.full_screen ? 0 : for_ever);
        host.faults.set(c.refused);
        lines().clear();
        EXPECT_EQ(init(c.full_screen), 0);
        EXPECT_NE(heard(c.line), 0) << c.line;
        EXPECT_FALSE(host.screen.is_open() || host.sound.is_open());
        EXPECT_EQ(directx->frame(), 0u);
        EXPECT_EQ(directx->getHardVolume(), 0);
        host.faults.set(c.refused, 0);
    }
    EXPECT_EQ(init(), 1);
    EXPECT_EQ(directx->frame(), 25u);
}

TEST_F(KivDirectx, FullScreenTakesTheFirstModeThatIsThere) {
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
        EXPECT_EQ(directx->get_palette_mode(), c.palette_mode);
        // The composer draws its 640 x 400 pixels and nothing beside them.
        const platform::rgb_picture p = next_picture();
        EXPECT_TRUE(p.width == c.width && p.height == c.height) << p.width << " x " << p.height;
        EXPECT_EQ(std::count(p.pixels.begin(), p.pixels.end(), white), 640 * 400) << c.modes[0];
        EXPECT_EQ(p.at(c.left, c.top) & p.at(c.left + 639, c.top + 399), white) << c.modes[0];
    }
}

TEST_F(KivDirectx, WindowToFullScreenAndBack) {
    ASSERT_EQ(init(), 1);
    for (const uint32_t full_screen : {1, 0}) {
        SCOPED_TRACE(full_screen ? "full screen" : "window");
        EXPECT_EQ(directx->toggle_screen(), 1);
        EXPECT_EQ(directx->is_full_screen(), full_screen);
        host.window()->drag_to(-70, 300);
        host.pump();
        EXPECT_EQ(directx->frame(), 25u);
        EXPECT_EQ(host.screen.shown().full_screen, full_screen != 0);
    }
    const platform::rectangle to = host.screen.shown().destination;
    const platform::point at = host.window()->client_origin();
    EXPECT_TRUE(to.left == at.x && to.top == at.y && to.right == at.x + 640 && to.bottom == at.y + 400);
    machine.crtc_status = crtc_text_off;
    EXPECT_EQ(directx->realizer(), 0u);
    EXPECT_EQ(directx->frame(), 0u);
    EXPECT_EQ(host.screen.shown().number, 3u) << "shown all the same";
    host.faults.set(fault::display_mode);
    EXPECT_EQ(directx->toggle_screen(), 0);
    EXPECT_TRUE(host.sound.is_open());
}

TEST_F(KivDirectx, TheSpeedLineComesAndIsWipedOnce) {
    for (const char *mode : {"640x400x8", "640x480x8", "640x480x32"}) { // over the picture, in the margin
        stat_sys_mhz = 3.994;
        stat_cpu_mhz = 3.912;
        stat_fps = 60;
        stat_lpf = 25;
        allow_modes({mode});
        ASSERT_EQ(init(true), 1);
        const std::vector<uint32_t> plain = next_picture().pixels;
        std::vector<uint32_t> written = plain, wiped = plain;
        overlay_text({written.data(), 640, 640, 400, false}, "SYS/CPU=3.994/3.912(MHz),FPS=60,LPF=25.0");
        EXPECT_GT(std::count(written.begin(), written.begin() + 640 * 12, white), 2000) << "black on white";
        for (int y = 0; y < 20; ++y) std::fill_n(wiped.begin() + 640 * y, 340, 0u);
        directx->toggle_status();
        EXPECT_TRUE(next_picture().pixels == written) << mode;
        directx->toggle_status();
        EXPECT_TRUE(next_picture().pixels == wiped) << mode;
        EXPECT_TRUE(next_picture().pixels == plain) << mode << ": wiped once only";
        stat_sys_mhz = stat_lpf = 1e300; // figures of any length stay inside the surface
        directx->toggle_status();
        EXPECT_EQ(directx->frame(), 25u);
        directx->toggle_status();
        directx->frame();
        directx->release();
    }
}

TEST_F(KivDirectx, AFrameThatCannotBeShownCostsItselfOnly) {
    const struct {
        fault what;
        int times;
        uint32_t rows;
        bool busy;
    } cases[] = {
        {fault::lock_busy, 1, 25, true},      {fault::lock_busy, for_ever, 0, true},
        {fault::lock_failed, 1, 0, false},    {fault::copy_failed, 1, 0, false},
        {fault::vertical_blank, 1, 0, false},
    };
    ASSERT_EQ(init(), 1);
    host.faults.set(fault::vertical_blank);
    EXPECT_EQ(directx->frame(), 25u) << "not waited for";
    host.faults.set(fault::vertical_blank, 0);
    directx->set_sync_vblank(1);
    for (const auto &c : cases) {
        SCOPED_TRACE("case " + std::to_string(&c - cases));
        lines().clear();
        host.faults.set(c.what, c.times);
        EXPECT_EQ(directx->frame(), c.rows);
        EXPECT_EQ(heard("DirectX: realizer() still drawing") != 0, c.busy);
        host.faults.set(c.what, 0);
        EXPECT_EQ(directx->frame(), 25u);
    }
}

// ---- sound --------------------------------------------------------------------------------------------

// Slices handed over once every 20 ms are heard one after the other, wherever in the buffer it began and
// whether or not the device gives it out in one piece.
TEST_F(KivDirectx, SlicesGoIntoTheHalfWithoutTheWriteCursor) {
    for (const uint64_t start_us : {0, 5000, 19000, 20000, 33000}) {
        SCOPED_TRACE(start_us);
        ASSERT_EQ(init(), 1);
        host.sound.use_manual_clock();
        host.sound.set_record_limit(100'000);
        host.sound.set_first_part(start_us == 20000 ? stream_bytes : 1502);
        directx->play();
        EXPECT_TRUE(host.sound.is_playing());
        host.sound.advance(start_us);
        std::vector<int16_t> wanted(start_us / 20000 * slice_samples + slice_samples, 0);
        std::vector<int16_t> slice(slice_samples);
        std::iota(slice.begin(), slice.end(), 1);
        for (int n = 0; n < 10; ++n) {
            std::rotate(slice.begin(), slice.begin() + 77, slice.end());
            directx->transferPCM(slice.data());
            wanted.insert(wanted.end(), slice.begin(), slice.end());
            host.sound.advance(20000);
        }
        const std::vector<int16_t> got = host.sound.heard();
        wanted.resize(got.size());
        EXPECT_GE(got.size(), 10 * slice_samples);
        EXPECT_EQ(got, wanted) << start_us;
        directx->stop();
        EXPECT_FALSE(host.sound.is_playing());
        lines().clear();
        const uint64_t unlocks = host.sound.unlocks();
        for (const fault f : {fault::sound_lock, fault::sound_position}) {
            host.faults.set(f, 1);
            directx->transferPCM(slice.data());
        }
        EXPECT_EQ(lines(), strings{"transferPCM: fail to Lock pcm buffer"});
        EXPECT_EQ(host.sound.unlocks(), unlocks);
        directx->release();
    }
}

// A device that has fetched some milliseconds beyond what it plays: a slice for those would come too late.
TEST_F(KivDirectx, AWriteLeadCountsAsPlayed) {
    const struct {
        uint64_t at_us;
        uint32_t lead_bytes;
        std::ptrdiff_t heard_at; // samples
    } cases[] = {{18000, 0, 1920}, {18000, 1000, 3840}, {10000, 1000, 1920}, {38000, 1000, 5760}};
    for (const auto &c : cases) {
        ASSERT_EQ(init(), 1);
        host.sound.use_manual_clock();
        host.sound.set_record_limit(100'000);
        host.sound.set_write_lead(c.lead_bytes);
        directx->play();
        host.sound.advance(c.at_us);
        std::vector<int16_t> slice(slice_samples, 1);
        slice[0] = 12345;
        directx->transferPCM(slice.data());
        host.sound.advance(80000);
        const std::vector<int16_t> got = host.sound.heard();
        EXPECT_EQ(std::find(got.begin(), got.end(), 12345) - got.begin(), c.heard_at)
            << c.at_us << " us, " << c.lead_bytes << " bytes";
        host.sound.set_write_lead(0);
        directx->release();
    }
}

TEST_F(KivDirectx, TheMachineIsHeardUnlessTheSoundIsOff) {
    directx->play();
    directx->stop();
    directx->tickPCM();
    EXPECT_EQ(lines(), (strings{"DirectX:  ds->play() null reference", "DirectX:  ds->stop() null reference",
                                "makeNormalPCM: no data output", "makeNormalPCM: no data output"}));
    host_callbacks_listen(directx_host_callbacks());
    ASSERT_EQ(init(), 1);
    const auto loudest = [&] { // in the next slice
        host.sound.set_record_limit(slice_samples);
        machine.advance_sound(79872);
        directx->tickPCM();
        const std::vector<int16_t> slice = host.sound.written();
        return slice.size() == slice_samples ? *std::max_element(slice.begin(), slice.end()) : -1;
    };
    EXPECT_EQ(loudest(), 6000) << "sounding from power-on";
    machine.beep_off();
    EXPECT_EQ(loudest(), 0);
    directx->setSoftVolume(2);
    machine.beep_on();
    EXPECT_EQ(loudest(), 2000);
    directx->toggleSound();
    EXPECT_EQ(loudest(), 0);
    machine.beep_off();
    directx->toggleSound();
    EXPECT_EQ(loudest(), 0) << "old time is not replayed";
    machine.pcg_tone(1000, 2);
    EXPECT_EQ(loudest(), 600);
    machine.tones_off();
    EXPECT_EQ(loudest(), 0);
    for (const int decibels : {INT_MIN, INT_MAX, -100, -4, 0}) { // a settings file may hold anything
        directx->setHardVolume(decibels);
        EXPECT_EQ(host.sound.volume(), std::clamp<int64_t>(int64_t{decibels} * 100, INT_MIN, INT_MAX));
    }
    EXPECT_EQ(directx->getHardVolume(), 1) << "one above what was set";
}

} // namespace

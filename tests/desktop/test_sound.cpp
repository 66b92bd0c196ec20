// The sound output on SDL's dummy device and without any.
#include "tests/desktop/host_fixture.h"

#include <chrono>
#include <thread>

using namespace platform;
using namespace std::chrono_literals;

namespace {

constexpr wave_format format{1, 96000, 16};

class DesktopSound : public testing::Test {
  protected:
    void open(const char *driver) {
        setenv("SDL_AUDIODRIVER", driver, 1);
        setenv("SDL_AUDIO_FREQUENCY", "64000", 1); // a block of 512 takes 8 ms: the dummy counts whole ones
        sound.open();
        primary = sound.create_primary();
        stream = sound.create_stream(7680, format);
        ASSERT_TRUE(primary && stream);
    }
    template <class Done> static void wait_until(Done done) {
        while (!done()) std::this_thread::sleep_for(10ms);
    }
    // What the emulator does every 20 ms: fill the half that the write cursor is not in.
    void slices(int count) {
        auto due = std::chrono::steady_clock::now();
        for (int i = 0; i < count; ++i) {
            uint32_t play, write, n1, n2;
            void *p1, *p2;
            ASSERT_TRUE(stream->get_position(play, write));
            ASSERT_TRUE(stream->lock(((write / 3840 - 1) & 1) * 3840, 3840, p1, n1, p2, n2));
            std::fill_n(static_cast<int16_t *>(p1), n1 / 2, int16_t{1000});
            stream->unlock(p1, n1, p2, n2);
            std::this_thread::sleep_until(due += 20ms);
        }
    }
    uint32_t cursor() {
        uint32_t play = 0, write = 0;
        EXPECT_TRUE(stream->get_position(play, write));
        return play;
    }

    desktop_sound sound;
    std::unique_ptr<primary_sound_buffer> primary;
    std::unique_ptr<sound_stream> stream;
};

TEST_F(DesktopSound, ADeviceTakesTheSlicesAndGivesThemUpOnStop) {
    open("dummy");
    wait_until([&] { return sound.get_figures().device_open; });
    stream->play();
    slices(100);
    const auto playing = sound.get_figures();
    EXPECT_GT(playing.feeder.fill_ms, 5);
    EXPECT_LT(playing.feeder.fill_ms + 1000.0 * playing.device_block / playing.device_rate, 90) << "latency";
    stream->stop();
    wait_until([&] { return sound.get_figures().feeder.fill_ms == 0; });
    sound.close();
    EXPECT_FALSE(sound.get_figures().device_open);
    sound.open(); // toggling or a second start
    wait_until([&] { return sound.get_figures().openings == 2; });
}

TEST_F(DesktopSound, WithoutADeviceTheCursorGoesByTheClock) {
    testing::internal::CaptureStderr();
    open("no such driver");
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(sound.get_figures().device_open);
    sound.close();
    sound.open();
    EXPECT_EQ(cursor(), 0u) << "stands while it is stopped";
    using seconds = std::chrono::duration<double>;
    const auto before = std::chrono::steady_clock::now();
    stream->play();
    const auto started = std::chrono::steady_clock::now();
    slices(7); // three and a half rounds of the buffer
    const double least = seconds(std::chrono::steady_clock::now() - started).count() * 192000;
    double position = cursor(); // known up to whole rounds of the buffer
    const double most = seconds(std::chrono::steady_clock::now() - before).count() * 192000;
    while (position < least - 8) position += 7680;
    EXPECT_LE(position, most + 8);
    stream->stop();
    const uint32_t stood = cursor();
    std::this_thread::sleep_for(5ms);
    EXPECT_EQ(cursor(), stood);
    // The device appears: it is taken without anyone asking.
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    wait_until([&] { return sound.get_figures().device_open; });
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said.rfind("kiv: no sound: ", 0), 0u) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

TEST_F(DesktopSound, LocksWrapAndAVolumeReadAndSetAgainStaysWhatItWas) {
    open("no such driver");
    uint32_t n1, n2;
    void *p1, *p2;
    ASSERT_TRUE(stream->lock(7000, 3840, p1, n1, p2, n2));
    EXPECT_TRUE(n1 == 680 && n2 == 3160 && static_cast<char *>(p1) == static_cast<char *>(p2) + 7000);
    EXPECT_FALSE(stream->lock(7680, 2, p1, n1, p2, n2));
    EXPECT_FALSE(stream->lock(0, 7682, p1, n1, p2, n2));
    EXPECT_EQ(sound.create_stream(7681, format), nullptr);
    EXPECT_EQ(sound.create_stream(7680, {2, 96000, 16}), nullptr);
    for (int db = -100; db <= 0; ++db) {
        primary->set_volume(db * 100);
        EXPECT_EQ(primary->get_volume() / 100 - 1, db);
    }
    for (const int32_t odd : {INT32_MIN, INT32_MAX}) primary->set_volume(odd), primary->get_volume();
}

} // namespace

// The sound output on SDL's dummy device and without any.
#include "tests/desktop/host_fixture.h"

#include <chrono>
#include <cstring>
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
        ASSERT_TRUE(sound.open());
        primary = sound.create_primary();
        stream = sound.create_stream(7680, format);
        ASSERT_TRUE(primary && stream);
        ASSERT_TRUE(primary->set_format(format));
    }
    template <class Done> static bool wait_until(Done done) {
        for (int i = 0; i < 400 && !done(); ++i) std::this_thread::sleep_for(10ms);
        return done();
    }
    // What the emulator does every 20 ms: fill the half that the write cursor is not in.
    void slice(int16_t value) {
        uint32_t play, write, n1, n2;
        ASSERT_TRUE(stream->get_position(play, write));
        ASSERT_LT(write, 7680u);
        const uint32_t half = (write / 3840 - 1) & 1;
        void *p1, *p2;
        ASSERT_TRUE(stream->lock(half * 3840, 3840, p1, n1, p2, n2));
        ASSERT_EQ(n1 + n2, 3840u);
        for (uint32_t i = 0; i < n1 / 2; ++i) static_cast<int16_t *>(p1)[i] = value;
        stream->unlock(p1, n1, p2, n2);
    }
    void slices_for(int count) {
        auto due = std::chrono::steady_clock::now();
        for (int i = 0; i < count; ++i) {
            slice(1000);
            due += 20ms;
            std::this_thread::sleep_until(due);
        }
    }

    desktop_sound sound;
    std::unique_ptr<primary_sound_buffer> primary;
    std::unique_ptr<sound_stream> stream;
};

TEST_F(DesktopSound, ADeviceTakesTheSlicesAndGivesThemUpOnStop) {
    open("dummy");
    ASSERT_TRUE(wait_until([&] { return sound.get_figures().device_open; }));
    stream->play();
    slices_for(100);
    const auto playing = sound.get_figures();
    EXPECT_GT(playing.feeder.fill_ms, 5);
    EXPECT_LT(playing.feeder.fill_ms + 1000.0 * playing.device_block / playing.device_rate, 90)
        << "latency in ms";
    stream->stop();
    EXPECT_TRUE(wait_until([&] { return sound.get_figures().feeder.fill_ms == 0; }));
    sound.close();
    EXPECT_FALSE(sound.get_figures().device_open);
    ASSERT_TRUE(sound.open()); // toggling or a second start
    EXPECT_TRUE(wait_until([&] { return sound.get_figures().openings == 2; }));
}

TEST_F(DesktopSound, WithoutADeviceTheCursorGoesByTheClock) {
    open("no such driver");
    uint32_t play, write;
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(sound.get_figures().device_open);
    ASSERT_TRUE(stream->get_position(play, write));
    EXPECT_EQ(play, 0u) << "stands while it is stopped";
    const auto before = std::chrono::steady_clock::now();
    stream->play();
    const auto started = std::chrono::steady_clock::now();
    slices_for(8);
    const auto asked = std::chrono::steady_clock::now();
    ASSERT_TRUE(stream->get_position(play, write));
    const auto answered = std::chrono::steady_clock::now();
    const auto bytes = [](auto time) { return std::chrono::duration<double>(time).count() * 192000; };
    const double least = bytes(asked - started), most = bytes(answered - before);
    // The cursor is known up to whole rounds of the buffer.
    double position = play;
    while (position < least - 8) position += 7680;
    EXPECT_LE(position, most + 8);
    stream->stop();
    uint32_t stood;
    ASSERT_TRUE(stream->get_position(play, write));
    std::this_thread::sleep_for(5ms);
    ASSERT_TRUE(stream->get_position(stood, write));
    EXPECT_EQ(stood, play);
    // The device appears: it is taken without anyone asking.
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    EXPECT_TRUE(wait_until([&] { return sound.get_figures().device_open; }));
}

TEST_F(DesktopSound, LocksWrapAndRefuseWhatIsOutside) {
    open("dummy");
    uint32_t bytes = 0, n1, n2;
    ASSERT_TRUE(stream->get_caps(bytes));
    EXPECT_EQ(bytes, 7680u);
    void *p1, *p2;
    ASSERT_TRUE(stream->lock(7000, 3840, p1, n1, p2, n2));
    EXPECT_EQ(n1, 680u);
    EXPECT_EQ(n2, 3160u);
    std::memset(p1, 1, n1);
    std::memset(p2, 1, n2);
    stream->unlock(p1, n1, p2, n2);
    ASSERT_TRUE(stream->lock(0, 7680, p1, n1, p2, n2));
    EXPECT_TRUE(n1 == 7680 && n2 == 0 && p2 == nullptr);
    stream->unlock(p1, 3840, p2, 0);
    EXPECT_FALSE(stream->lock(7680, 2, p1, n1, p2, n2));
    EXPECT_FALSE(stream->lock(0, 7682, p1, n1, p2, n2));
    EXPECT_EQ(sound.create_stream(7681, format), nullptr);
    EXPECT_EQ(sound.create_stream(7680, {2, 96000, 16}), nullptr);
}

TEST_F(DesktopSound, AVolumeReadAndSetAgainStaysWhatItWas) {
    open("no such driver");
    for (int db = -100; db <= 0; ++db) {
        primary->set_volume(db * 100);
        EXPECT_EQ(primary->get_volume() / 100 - 1, db);
    }
    for (const int32_t odd : {INT32_MIN, -50000, 500, INT32_MAX}) {
        primary->set_volume(odd);
        (void)primary->get_volume();
    }
}

} // namespace

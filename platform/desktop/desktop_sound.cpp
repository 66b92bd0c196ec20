#define SDL_MAIN_HANDLED
#include "platform/desktop/desktop_sound.h"

#include "platform/desktop/gamepads.h"
#include "support/log.h"
#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <thread>

namespace platform {

namespace {

constexpr uint32_t stream_rate = 96000;
constexpr auto retry_every = std::chrono::seconds(2);
constexpr auto look_every = std::chrono::milliseconds(500);
constexpr int silent_looks = 6; // without a callback, after which the device counts as hung
constexpr auto close_at_most = std::chrono::seconds(1);

using steady = std::chrono::steady_clock;

} // namespace

struct sound_output {
    sound_feeder feeder{stream_rate};
    std::mutex mutex;
    std::condition_variable changed;
    bool wanted = false;  // the device is to be open
    bool running = false; // the thread exists
    std::atomic<bool> device_open{false};
    std::atomic<int> device_rate{0}, device_block{0};
    std::atomic<uint32_t> openings{0};
    std::atomic<int32_t> volume{0}; // hundredths of a decibel
    std::atomic<int> loudness{100}; // percent
    void use_gain() {
        const double used = std::clamp<int32_t>(volume, -10000, 0);
        // A half on the scale is heard as about half as loud.
        const double share = std::pow(loudness / 100.0, 1.7);
        feeder.set_gain(used == -10000 ? 0.0f : static_cast<float>(share * std::pow(10.0, used / 2000.0)));
    }
};

namespace {

void fill_callback(void *user, Uint8 *bytes, int size) {
    static_cast<sound_output *>(user)->feeder.pull(reinterpret_cast<int16_t *>(bytes),
                                                   static_cast<size_t>(size) / sizeof(int16_t));
}

void say_nothing(const char *, int, const char *, int, const char *, ...) {}

// Without a device the library underneath explains itself on the terminal at every attempt, in dozens of
// lines. What it comes to is said once, by keep_device.
void silence_alsa() {
    using handler = void (*)(const char *, int, const char *, int, const char *, ...);
    void *library = dlopen("libasound.so.2", RTLD_LAZY);
    if (library == nullptr) return;
    const auto set = reinterpret_cast<int (*)(handler)>(dlsym(library, "snd_lib_error_set_handler"));
    if (set != nullptr) set(say_nothing);
}

bool is_usable(int rate) { return rate >= 8000 && rate <= 192000; }

bool start_audio() {
    const std::lock_guard lock(sdl_start_mutex());
    return SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
}
void end_audio() {
    const std::lock_guard lock(sdl_start_mutex());
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

// Opens the default device at the rate that it prefers; 0 on failure.
SDL_AudioDeviceID open_device(sound_output &output) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Kiv");
    SDL_SetMainReady();
    silence_alsa();
    if (!start_audio()) return 0;
    SDL_AudioSpec preferred{};
    char *name = nullptr;
    int rate = 48000;
    if (SDL_GetDefaultAudioInfo(&name, &preferred, 0) == 0) {
        SDL_free(name);
        if (is_usable(preferred.freq)) rate = preferred.freq;
    }
    // The variable that SDL itself goes by when a program has no wish of its own.
    if (const char *asked = SDL_getenv("SDL_AUDIO_FREQUENCY"); asked != nullptr && is_usable(SDL_atoi(asked)))
        rate = SDL_atoi(asked);
    SDL_AudioSpec wish{}, granted{};
    wish.freq = rate;
    wish.format = AUDIO_S16SYS;
    wish.channels = 1;
    // About 10 ms. A power of two: SDL 2.26 now and then rounds other numbers up after it has made its
    // buffer.
    wish.samples = rate <= 24000 ? 256 : rate <= 64000 ? 512 : rate <= 128000 ? 1024 : 2048;
    wish.callback = fill_callback;
    wish.userdata = &output;
    const SDL_AudioDeviceID device = SDL_OpenAudioDevice(
        nullptr, 0, &wish, &granted, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE | SDL_AUDIO_ALLOW_SAMPLES_CHANGE);
    if (device == 0) {
        end_audio();
        return 0;
    }
    output.feeder.open_device(static_cast<uint32_t>(granted.freq), granted.samples);
    output.device_rate = granted.freq;
    output.device_block = granted.samples;
    output.device_open = true;
    ++output.openings;
    trace("sound: device at %d Hz, %d samples a block", granted.freq, granted.samples);
    SDL_PauseAudioDevice(device, 0);
    return device;
}

void tell_missing() {
    static bool on_terminal = false;
    trace("sound: no device (%s)", SDL_GetError());
    if (!on_terminal) std::fprintf(stderr, "kiv: no sound: %s\n", SDL_GetError());
    on_terminal = true;
}

// The thread that owns the device: SDL may block in opening and closing, so nobody else calls it.
void keep_device(const std::shared_ptr<sound_output> &shared) {
    // The window thread is tied to one processor and its children with it; the sound's need not be.
    cpu_set_t all;
    CPU_ZERO(&all);
    for (size_t processor = 0; processor < CPU_SETSIZE; ++processor) CPU_SET(processor, &all);
    pthread_setaffinity_np(pthread_self(), sizeof all, &all);
    sound_output &output = *shared;
    SDL_AudioDeviceID device = 0;
    uint64_t pulled = 0;
    int looks_without_callback = 0;
    bool told = false;
    std::unique_lock lock(output.mutex);
    while (output.wanted) {
        lock.unlock();
        if (device == 0) {
            device = open_device(output);
            pulled = output.feeder.get_figures().pulled;
            looks_without_callback = 0;
            if (device == 0 && !told) tell_missing();
            told = device == 0;
        } else {
            const uint64_t now_pulled = output.feeder.get_figures().pulled;
            looks_without_callback = now_pulled == pulled ? looks_without_callback + 1 : 0;
            pulled = now_pulled;
            if (SDL_GetAudioDeviceStatus(device) == SDL_AUDIO_STOPPED ||
                looks_without_callback >= silent_looks) {
                trace("sound: the device is gone");
                output.device_open = false;
                SDL_CloseAudioDevice(device);
                end_audio();
                device = 0;
            }
        }
        lock.lock();
        output.changed.wait_for(lock, device == 0 ? std::chrono::milliseconds(retry_every) : look_every,
                                [&] { return !output.wanted; });
    }
    output.device_open = false;
    lock.unlock();
    if (device != 0) {
        const sound_feeder::figures heard = output.feeder.get_figures();
        trace("sound: device closed, %llu underruns, %llu skips, %.1f ms waiting of %.1f",
              static_cast<unsigned long long>(heard.underruns), static_cast<unsigned long long>(heard.skips),
              heard.fill_ms, heard.target_ms);
        SDL_CloseAudioDevice(device);
        end_audio();
    }
    SDL_TLSCleanup(); // SDL keeps its last error for every thread that called it
    lock.lock();
    output.running = false;
    output.changed.notify_all();
}

class desktop_primary_buffer : public primary_sound_buffer {
  public:
    explicit desktop_primary_buffer(std::shared_ptr<sound_output> o) : output(std::move(o)) {}
    uint32_t size() const override { return static_cast<uint32_t>(output->device_block.load()) * 2; }
    void set_volume(int32_t hundredths_db) override {
        output->volume = hundredths_db;
        output->use_gain();
    }
    int32_t get_volume() const override {
        const int32_t volume = output->volume;
        return volume > std::numeric_limits<int32_t>::max() - 100 ? volume : volume + 100;
    }

  private:
    std::shared_ptr<sound_output> output;
};

class desktop_stream : public sound_stream {
  public:
    desktop_stream(std::shared_ptr<sound_output> o, uint32_t size) : output(std::move(o)), memory(size) {}
    ~desktop_stream() override { output->feeder.stop(); }

    bool lock(uint32_t offset, uint32_t bytes, void *&part1, uint32_t &bytes1, void *&part2,
              uint32_t &bytes2) override {
        const auto size = static_cast<uint32_t>(memory.size());
        if (offset >= size || bytes == 0 || bytes > size) return false;
        bytes1 = std::min(bytes, size - offset);
        bytes2 = bytes - bytes1;
        part1 = memory.data() + offset;
        part2 = bytes2 == 0 ? nullptr : memory.data();
        return true;
    }

    // What was written goes to the device in the order of the unlocks. While stopped nothing does: what is
    // written then would be heard late.
    void unlock(void *part1, uint32_t bytes1, void *part2, uint32_t bytes2) override {
        if (!playing) return;
        append(part1, bytes1);
        append(part2, bytes2);
    }

    void play() override {
        const std::lock_guard lock(mutex);
        if (playing) return;
        started = steady::now();
        output->feeder.start();
        playing = true;
    }

    void stop() override {
        const std::lock_guard lock(mutex);
        if (!playing) return;
        stands_at = cursor();
        playing = false;
        output->feeder.stop();
    }

    void set_speed(uint32_t percent) override {
        const std::lock_guard lock(mutex);
        stands_at = cursor();
        started = steady::now();
        speed = percent;
        output->feeder.set_speed(percent);
    }

    bool get_position(uint32_t &play_cursor, uint32_t &write_cursor) override {
        const std::lock_guard lock(mutex);
        play_cursor = write_cursor = static_cast<uint32_t>(cursor());
        return true;
    }

  private:
    // Bytes into the buffer, by the clock: exact, and there without a device, too.
    uint64_t cursor() const {
        if (!playing) return stands_at;
        const auto elapsed = static_cast<uint64_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(steady::now() - started).count());
        return (stands_at + elapsed * stream_rate / 1000000 * speed / 100 * 2) % memory.size();
    }

    void append(const void *part, uint32_t bytes) {
        if (part == nullptr) return;
        int16_t samples[512];
        const auto *from = static_cast<const uint8_t *>(part);
        for (size_t done = 0, n; done < bytes; done += n) {
            n = std::min<size_t>(bytes - done, sizeof samples);
            std::memcpy(samples, from + done, n);
            output->feeder.push(samples, n / 2);
        }
    }

    std::shared_ptr<sound_output> output;
    std::vector<uint8_t> memory;
    std::mutex mutex; // the cursor, asked for by the CPU thread, moved by both
    std::atomic<bool> playing{false};
    steady::time_point started{};
    uint64_t stands_at = 0;
    uint32_t speed = 100; // per cent
};

} // namespace

desktop_sound::desktop_sound() : output(std::make_shared<sound_output>()) {}

desktop_sound::~desktop_sound() { close(); }

void desktop_sound::open() {
    const std::lock_guard lock(output->mutex);
    output->wanted = true;
    if (output->running) return;
    output->running = true;
    std::thread(keep_device, output).detach();
}

// Waits for the thread, but not for a device that hangs: then the thread keeps what it needs alive.
void desktop_sound::close() {
    std::unique_lock lock(output->mutex);
    output->wanted = false;
    output->changed.notify_all();
    if (output->changed.wait_for(lock, close_at_most, [&] { return !output->running; })) return;
    lock.unlock();
    const int loudness = output->loudness;
    output = std::make_shared<sound_output>();
    output->loudness = loudness;
}

void desktop_sound::set_loudness(int percent) {
    output->loudness = std::clamp(percent, 0, 100);
    output->use_gain();
}

std::unique_ptr<primary_sound_buffer> desktop_sound::create_primary() {
    return std::make_unique<desktop_primary_buffer>(output);
}

std::unique_ptr<sound_stream> desktop_sound::create_stream(uint32_t bytes, const wave_format &format) {
    if (bytes < 4 || bytes % 2 != 0 || format.channels != 1 || format.bits != 16 ||
        format.sample_rate != stream_rate)
        return nullptr;
    return std::make_unique<desktop_stream>(output, bytes);
}

desktop_sound::figures desktop_sound::get_figures() const {
    figures f;
    f.feeder = output->feeder.get_figures();
    f.device_open = output->device_open;
    f.device_rate = output->device_rate;
    f.device_block = output->device_block;
    f.openings = output->openings;
    return f;
}

} // namespace platform

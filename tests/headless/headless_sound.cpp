#include "tests/headless/headless_sound.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

namespace platform {

namespace {

constexpr uint32_t primary_bytes = 65536;
constexpr int32_t reported_above = 100; // hundredths of a decibel: what devices report beyond what was set
constexpr uint64_t us_per_second = 1'000'000;

uint64_t steady_us() {
    using namespace std::chrono;
    return static_cast<uint64_t>(duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

// What the device, its buffers and the test share.
struct headless_sound::device {
    mutable std::mutex mutex;
    fault_plan &faults;

    bool opened = false;
    bool manual = false;
    uint64_t manual_us = 0;
    uint32_t write_lead = 0;
    uint32_t first_part = std::numeric_limits<uint32_t>::max();
    int32_t volume = 0;

    // The stream. What is locked is a copy of its memory: whoever writes there meets nobody who reads.
    bool playing = false;
    uint64_t started_us = 0;
    uint32_t speed = 100;   // per cent
    uint64_t stands_at = 0; // bytes played up to the last start, over all rounds of the buffer
    uint64_t heard_to = 0;  // bytes, the same count
    uint32_t bytes_per_second = 0, sample_bytes = 2;
    std::vector<uint8_t> memory;

    size_t record_limit = 0;
    std::vector<int16_t> written, heard;
    uint64_t unlocks = 0;

    explicit device(fault_plan &plan) : faults(plan) {}

    uint64_t now_us() const { return manual ? manual_us : steady_us(); }

    // Bytes played so far, in whole samples.
    uint64_t played() const {
        if (!playing) return stands_at;
        const uint64_t us = now_us() - started_us;
        const uint64_t bytes =
            us / us_per_second * bytes_per_second + us % us_per_second * bytes_per_second / us_per_second;
        return stands_at + bytes * speed / 100 / sample_bytes * sample_bytes;
    }

    // Notes what the cursor has passed over since the last time.
    void listen() {
        const uint64_t to = played();
        if (memory.empty()) return;
        for (; heard_to < to && heard.size() < record_limit; heard_to += 2) {
            int16_t sample;
            std::memcpy(&sample, memory.data() + heard_to % memory.size(), sizeof sample);
            heard.push_back(sample);
        }
        heard_to = to;
    }
};

namespace {

using device = headless_sound::device;

class memory_primary_buffer : public primary_sound_buffer {
  public:
    explicit memory_primary_buffer(std::shared_ptr<device> d) : state(std::move(d)) {}
    uint32_t size() const override { return primary_bytes; }
    void set_volume(int32_t hundredths_db) override {
        const std::lock_guard lock(state->mutex);
        state->volume = hundredths_db;
    }
    int32_t get_volume() const override {
        const std::lock_guard lock(state->mutex);
        return std::min(state->volume, std::numeric_limits<int32_t>::max() - reported_above) + reported_above;
    }

  private:
    const std::shared_ptr<device> state;
};

class memory_stream : public sound_stream {
  public:
    explicit memory_stream(std::shared_ptr<device> d)
        : state(std::move(d)), size(static_cast<uint32_t>(state->memory.size())) {}
    ~memory_stream() override { memory_stream::stop(); }

    bool lock(uint32_t offset, uint32_t bytes, void *&part1, uint32_t &bytes1, void *&part2,
              uint32_t &bytes2) override {
        if (state->faults.take(fault::sound_lock)) return false;
        if (offset >= size || bytes == 0 || bytes > size) return false;
        const std::lock_guard lock(state->mutex);
        if (locked) return false;
        locked = true;
        staging = state->memory;
        bytes1 = std::min(bytes, bytes > size - offset ? size - offset : state->first_part);
        bytes2 = bytes - bytes1;
        part1 = staging.data() + offset;
        part2 = bytes2 == 0 ? nullptr : staging.data() + (offset + bytes1) % size;
        return true;
    }

    void unlock(void *part1, uint32_t bytes1, void *part2, uint32_t bytes2) override {
        const std::lock_guard lock(state->mutex);
        if (!locked) return;
        locked = false;
        state->listen(); // up to now the old contents were heard
        state->unlocks++;
        take_over(part1, bytes1);
        take_over(part2, bytes2);
    }

    void play() override {
        const std::lock_guard lock(state->mutex);
        if (state->playing) return;
        state->started_us = state->now_us();
        state->playing = true;
    }

    void stop() override {
        const std::lock_guard lock(state->mutex);
        state->listen();
        state->stands_at = state->played();
        state->playing = false;
    }

    void set_speed(uint32_t percent) override {
        const std::lock_guard lock(state->mutex);
        state->listen();
        state->stands_at = state->played();
        state->started_us = state->now_us();
        state->speed = percent;
    }

    bool get_position(uint32_t &play_cursor, uint32_t &write_cursor) override {
        if (state->faults.take(fault::sound_position)) return false;
        const std::lock_guard lock(state->mutex);
        state->listen();
        const uint64_t played = state->played();
        play_cursor = static_cast<uint32_t>(played % size);
        write_cursor = static_cast<uint32_t>((played + (state->playing ? state->write_lead : 0)) % size);
        return true;
    }

  private:
    void take_over(const void *part, uint32_t bytes) {
        if (part == nullptr) return;
        const auto *from = static_cast<const uint8_t *>(part);
        const auto offset = static_cast<size_t>(from - staging.data());
        if (offset >= size) return;
        bytes = std::min(bytes, size - static_cast<uint32_t>(offset));
        std::memcpy(state->memory.data() + offset, from, bytes);
        for (uint32_t i = 0; i + 1 < bytes && state->written.size() < state->record_limit; i += 2) {
            int16_t sample;
            std::memcpy(&sample, from + i, sizeof sample);
            state->written.push_back(sample);
        }
    }

    const std::shared_ptr<device> state;
    const uint32_t size;
    std::vector<uint8_t> staging;
    bool locked = false;
};

} // namespace

headless_sound::headless_sound(fault_plan &plan) : faults(plan), state(std::make_shared<device>(plan)) {}

headless_sound::~headless_sound() = default;

// ---- for the test ------------------------------------------------------------------------------------

void headless_sound::use_manual_clock() {
    const std::lock_guard lock(state->mutex);
    state->listen();
    state->stands_at = state->played();
    state->manual = true;
    state->started_us = state->manual_us;
}

void headless_sound::advance(uint64_t microseconds) {
    const std::lock_guard lock(state->mutex);
    state->manual_us += microseconds;
    state->listen();
}

void headless_sound::set_write_lead(uint32_t bytes) {
    const std::lock_guard lock(state->mutex);
    state->write_lead = bytes;
}

void headless_sound::set_first_part(uint32_t bytes) {
    const std::lock_guard lock(state->mutex);
    state->first_part = bytes;
}

void headless_sound::set_record_limit(size_t samples) {
    const std::lock_guard lock(state->mutex);
    state->listen();
    state->record_limit = samples;
    state->written.clear();
    state->heard.clear();
}

std::vector<int16_t> headless_sound::written() const {
    const std::lock_guard lock(state->mutex);
    return state->written;
}

std::vector<int16_t> headless_sound::heard() const {
    const std::lock_guard lock(state->mutex);
    state->listen();
    return state->heard;
}

uint64_t headless_sound::unlocks() const {
    const std::lock_guard lock(state->mutex);
    return state->unlocks;
}

bool headless_sound::is_open() const {
    const std::lock_guard lock(state->mutex);
    return state->opened;
}

uint32_t headless_sound::speed() const {
    const std::lock_guard lock(state->mutex);
    return state->speed;
}

bool headless_sound::is_playing() const {
    const std::lock_guard lock(state->mutex);
    return state->playing;
}

int32_t headless_sound::volume() const {
    const std::lock_guard lock(state->mutex);
    return state->volume;
}

// ---- for the program ---------------------------------------------------------------------------------

void headless_sound::open() {
    const std::lock_guard lock(state->mutex);
    state->opened = true;
}

void headless_sound::close() {
    const std::lock_guard lock(state->mutex);
    state->opened = false;
}

std::unique_ptr<primary_sound_buffer> headless_sound::create_primary() {
    if (faults.take(fault::sound_primary) || !is_open()) return nullptr;
    return std::make_unique<memory_primary_buffer>(state);
}

// One stream at a time: making one takes the place of the one before.
std::unique_ptr<sound_stream> headless_sound::create_stream(uint32_t bytes, const wave_format &format) {
    if (faults.take(fault::sound_stream) || !is_open()) return nullptr;
    if (format.bits != 16 || format.channels == 0 || format.sample_rate == 0 || bytes == 0 ||
        bytes % (2 * format.channels) != 0)
        return nullptr;
    {
        const std::lock_guard lock(state->mutex);
        state->memory.assign(bytes, 0);
        state->sample_bytes = 2 * format.channels;
        state->bytes_per_second = format.sample_rate * state->sample_bytes;
        state->playing = false;
        state->stands_at = state->heard_to = 0;
    }
    return std::make_unique<memory_stream>(state);
}

} // namespace platform

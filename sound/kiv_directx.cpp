// The sound half of kiv_directx: the streaming buffer, volumes, and the road from the machine to the slices.
#include "display/kiv_directx.h"

#include "machine/kiv_machine.h"
#include "support/log.h"
#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr platform::wave_format slice_format{1, sample_rate, 16};
constexpr int16_t silence[slice_samples] = {};

} // namespace

bool kiv_directx::sound_start() {
    if (sound_set_up()) return true;
    sound_release();
    return false;
}

bool kiv_directx::sound_set_up() {
    const auto failed = [](const char *step) {
        trace("ERROR DS:%s失敗", step);
        return false;
    };
    platform::sound_device &device = host.get_sound();
    device.open();
    sound_open = true;
    primary_buffer = device.create_primary();
    if (primary_buffer == nullptr) return failed("CreateSoundBuffer(Primary)");
    trace("DirectSound: Primary Buffer size = %d", static_cast<int>(primary_buffer->size()));

    stream = device.create_stream(stream_bytes, slice_format);
    if (stream == nullptr) return failed("CreateSoundBuffer(2nd)");
    if (!write_slice(0, stream_bytes, silence)) return failed("Lock(2nd)");
    stream->stop();
    reset_cpu_clk();
    return true;
}

void kiv_directx::sound_release() {
    primary_buffer.reset();
    stream.reset();
    if (!sound_open) return;
    host.get_sound().close();
    sound_open = false;
}

void kiv_directx::reset_cpu_clk() { slices.reset_cpu_clk(machine.clock_hz); }

void kiv_directx::play() {
    if (stream != nullptr)
        stream->play();
    else
        trace("DirectX:  ds->play() null reference");
}

void kiv_directx::stop() {
    if (stream != nullptr)
        stream->stop();
    else
        trace("DirectX:  ds->stop() null reference");
}

void kiv_directx::set_sound_speed(uint32_t percent) {
    if (stream != nullptr) stream->set_speed(percent);
}

void kiv_directx::tickPCM() {
    const int16_t *const samples = next_slice();
    transferPCM(sound_off != 0 ? silence : samples); // slices and phases go on while the sound is off
}

const int16_t *kiv_directx::next_slice() {
    const int16_t *const samples = makePCM(closeBanks());
    const std::lock_guard lock(sound_tap_mutex);
    if (sound_tap != nullptr) sound_tap->samples(samples, slice_samples);
    return samples;
}

const int16_t *kiv_directx::makePCM(slice_source source) {
    makeNormalPCM(source);
    return slices.samples();
}

// Locks `bytes` of the stream from `offset` on and stores a slice at their start. False: not locked.
bool kiv_directx::write_slice(uint32_t offset, uint32_t bytes, const int16_t *samples) {
    void *part1 = nullptr, *part2 = nullptr; // in two parts where the device's memory wraps
    uint32_t bytes1 = 0, bytes2 = 0;
    if (!stream->lock(offset, bytes, part1, bytes1, part2, bytes2)) return false;
    const uint32_t first = std::min(bytes1, slice_bytes), second = std::min(bytes2, slice_bytes - first);
    std::memcpy(part1, samples, first);
    if (part2 != nullptr) std::memcpy(part2, reinterpret_cast<const uint8_t *>(samples) + first, second);
    stream->unlock(part1, bytes1, part2, bytes2);
    return true;
}

// Into the half that the write cursor is not in.
void kiv_directx::transferPCM(const int16_t *samples) {
    uint32_t play_cursor = 0, write_cursor = 0;
    if (stream == nullptr || !stream->get_position(play_cursor, write_cursor)) return;
    const uint32_t half = (write_cursor / stream_half_bytes - 1) & 1;
    if (!write_slice(half * stream_half_bytes, stream_half_bytes, samples))
        trace("transferPCM: fail to Lock pcm buffer");
}

int32_t kiv_directx::getHardVolume() const {
    return primary_buffer == nullptr ? 0 : primary_buffer->get_volume() / 100;
}

// A settings file may hold any number.
void kiv_directx::setHardVolume(int32_t decibels) {
    constexpr int64_t lowest = std::numeric_limits<int32_t>::min(),
                      highest = std::numeric_limits<int32_t>::max();
    const int64_t hundredths = std::clamp(int64_t{decibels} * 100, lowest, highest);
    if (primary_buffer != nullptr) primary_buffer->set_volume(static_cast<int32_t>(hundredths));
}

int32_t kiv_directx::getSoftVolume() const { return slices.getSoftVolume(); }
void kiv_directx::setSoftVolume(int32_t n) { slices.setSoftVolume(n); }

uint32_t kiv_directx::isSoundOff() const { return sound_off; }
void kiv_directx::setSoundOff(uint32_t off) { sound_off = off; }
void kiv_directx::toggleSound() { sound_off = sound_off == 0; }

void kiv_directx::beepOn() { slices.beepOn(); }
void kiv_directx::beepOff() { slices.beepOff(); }
void kiv_directx::setTone(uint32_t frequency, uint32_t tone) { slices.setTone(frequency, tone); }
void kiv_directx::muteTones() { slices.muteTones(); }
void kiv_directx::clearPCM() { slices.clearPCM(); }
void kiv_directx::advanceClock(uint64_t cycles) { slices.advanceClock(cycles); }
void kiv_directx::appendPCMTick(uint32_t channel, uint32_t level, uint32_t param) {
    slices.appendPCMTick(channel, level, param);
}
void kiv_directx::advanceTick(uint32_t channel, uint64_t cycles) { slices.advanceTick(channel, cycles); }
slice_source kiv_directx::closeBanks() { return slices.closeBanks(); }
void kiv_directx::makeNormalPCM(slice_source source) { slices.makeNormalPCM(source); }

// advance_sound comes after every instruction: it reaches the clock without a virtual call.
sound_listener directx_host_callbacks() {
    return {
        [] { kiv_directx::instance()->beepOn(); },
        [] { kiv_directx::instance()->beepOff(); },
        [](uint16_t frequency, uint32_t tone) { kiv_directx::instance()->setTone(frequency, tone); },
        [](uint32_t cycles) { kiv_directx::instance()->kiv_directx::advanceClock(cycles); },
        [] { kiv_directx::instance()->muteTones(); },
        [] { kiv_directx::instance()->clearPCM(); },
    };
}

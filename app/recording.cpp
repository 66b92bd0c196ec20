#include "app/recording.h"

#include "display/frame_composer.h"
#include "machine/kiv_machine.h"
#include "platform/texts.h"
#include "sound/wave_header.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace {

constexpr size_t most_slices = 2048;   // 41 seconds that a disk may take to answer
constexpr size_t most_frames = 96;     // other than the one before them, 98 MB
constexpr uint32_t most_missed = 1000; // frames; more is another machine's time, loaded or reset
constexpr auto patience = std::chrono::seconds(5);
constexpr int video_input = 0, sound_input = 1;

std::vector<std::string> encoder_command(const std::string &path, uint32_t frame_t_states) {
    const std::string size = std::to_string(frame_width) + "x" + std::to_string(frame_height);
    const std::string rate = std::to_string(machine.clock_hz) + "/" + std::to_string(frame_t_states);
    return {"ffmpeg", "-loglevel", "error", "-nostdin", "-n", "-thread_queue_size", "64", "-f", "rawvideo",
            "-pix_fmt", "bgr0", "-s", size, "-framerate", rate, "-i", "pipe:3", "-thread_queue_size", "64",
            "-f", "s16le", "-ar", std::to_string(sample_rate), "-ac", "1", "-i", "pipe:4",
            // Twice the size: colours, which the usual format keeps for two pixels by two, stay sharp.
            "-vf", "scale=iw*2:ih*2:flags=neighbor", "-c:v", "libx264", "-preset", "superfast", "-crf", "18",
            "-pix_fmt", "yuv420p", "-c:a", "aac", "-ar", "48000", "-b:a", "128k", "-video_track_timescale",
            std::to_string(machine.clock_hz), "file:" + path};
}

} // namespace

recording::recording(kind what_kind, const std::string &path, std::function<void(const std::string &)> tell)
    : of_what(what_kind), file_path(path), ended(std::move(tell)) {}

recording::~recording() {
    stop();
    {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, patience, [this] { return writers == 0; })) encoder.kill();
    }
    for (std::thread *thread : {&sound_thread, &video_thread})
        if (thread->joinable()) thread->join();
}

std::string recording::start(uint32_t frame_t_states) {
    retraces = machine.key_retraces;
    if (of_what == kind::sound) {
        if (!wave.open(file_path)) return platform::last_file_error();
        put_wave_header(false);
        if (!wrong.empty()) return wrong;
    } else {
        if (!platform::is_program("ffmpeg"))
            return platform::text("ffmpegがありません (Debianのパッケージ ffmpeg)");
        if (const std::string why = encoder.start(encoder_command(file_path, frame_t_states), 2);
            !why.empty())
            return "ffmpeg: " + why;
    }
    writers = of_what == kind::video ? 2 : 1;
    sound_thread = std::thread([this] { write_sound(); });
    if (of_what == kind::video) video_thread = std::thread([this] { write_video(); });
    return {};
}

// A picture that the computer has not come to draw by now is the one before it here, too.
void recording::stop() {
    const uint32_t missed = retraces_passed();
    const std::lock_guard lock(mutex);
    if (!stopping && last_picture != nullptr && missed != 0) put_picture(last_picture, missed);
    stopping = true;
    changed.notify_all();
}

bool recording::is_stopping() const {
    const std::lock_guard lock(mutex);
    return stopping;
}

// ---- from the machine's threads -----------------------------------------------------------------------

void recording::samples(const int16_t *samples, size_t count) {
    const std::lock_guard lock(mutex);
    if (stopping) return;
    if (sound_queue.size() >= most_slices) return fail(platform::text("書き込みが間に合いません"));
    sound_queue.emplace_back(samples, samples + count);
    changed.notify_all();
}

uint32_t recording::retraces_passed() {
    const uint32_t now = machine.key_retraces;
    const uint32_t passed = now - retraces;
    retraces = now;
    return passed > most_missed ? 1 : passed;
}

void recording::frame(const uint32_t *pixels, uint32_t pitch) {
    if (of_what != kind::video) return;
    const uint32_t times = retraces_passed();
    if (times == 0) return; // drawn again
    picture shown(static_cast<size_t>(frame_width) * frame_height);
    for (size_t y = 0; y < frame_height; ++y)
        std::memcpy(&shown[y * frame_width], pixels + y * pitch, frame_width * sizeof(uint32_t));
    if (last_picture == nullptr || *last_picture != shown)
        last_picture = std::make_shared<const picture>(std::move(shown));
    const std::lock_guard lock(mutex);
    if (!stopping) put_picture(last_picture, times);
}

// Under the lock.
void recording::put_picture(const std::shared_ptr<const picture> &pixels, uint32_t times) {
    if (!frame_queue.empty() && frame_queue.back().pixels == pixels)
        frame_queue.back().times += times;
    else if (frame_queue.size() < most_frames)
        frame_queue.push_back({pixels, times});
    else
        return fail(platform::text("書き込みが間に合いません"));
    changed.notify_all();
}

// Under the lock. The first reason counts.
void recording::fail(const std::string &why) {
    if (wrong.empty()) wrong = why;
    stopping = true;
    changed.notify_all();
}

// ---- the writers --------------------------------------------------------------------------------------

bool recording::put_sound(const std::vector<int16_t> &samples) {
    const size_t size =
        samples.size() * sizeof samples[0]; // the host stores the low byte first, as the files do
    if (of_what == kind::video) return encoder.write(sound_input, samples.data(), size);
    if (wave_bytes + size > wave_limit || !wave.write(samples.data(), size)) {
        const std::string why = wave_bytes + size > wave_limit ? platform::text("WAVファイルの最大の長さです")
                                                               : platform::last_file_error();
        const std::lock_guard lock(mutex);
        fail(why);
        return false;
    }
    wave_bytes += size;
    return true;
}

void recording::write_sound() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return stopping || !sound_queue.empty(); });
        if (sound_queue.empty()) break;
        const std::vector<int16_t> next = std::move(sound_queue.front());
        sound_queue.pop_front();
        lock.unlock();
        const bool written = put_sound(next);
        lock.lock();
        if (written) continue;
        cut_off = true;
        fail({});
        break;
    }
    lock.unlock();
    if (of_what == kind::video) encoder.close_input(sound_input);
    writer_ends();
}

void recording::write_video() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return stopping || !frame_queue.empty(); });
        if (frame_queue.empty()) break;
        const shown_frame next = std::move(frame_queue.front());
        frame_queue.pop_front();
        lock.unlock();
        bool written = true;
        for (uint32_t n = 0; n < next.times && written; ++n)
            written = encoder.write(video_input, next.pixels->data(), next.pixels->size() * sizeof(uint32_t));
        lock.lock();
        if (written) continue;
        cut_off = true;
        fail({});
        break;
    }
    lock.unlock();
    encoder.close_input(video_input);
    writer_ends();
}

// The last one finishes the file.
void recording::writer_ends() {
    {
        const std::lock_guard lock(mutex);
        if (writers > 1) {
            --writers;
            return;
        }
    }
    const std::string why = finish();
    std::string first;
    {
        const std::lock_guard lock(mutex);
        first = wrong.empty() ? why : wrong;
    }
    ended(first);
    const std::lock_guard lock(mutex);
    writers = 0;
    changed.notify_all();
}

std::string recording::finish() {
    if (of_what == kind::video) {
        const std::string said = encoder.wait();
        if (!said.empty()) return "ffmpeg: " + said;
        return cut_off ? platform::text("ffmpegが途中で終わりました") : std::string();
    }
    // Also after a failure: what was written by then can be heard.
    put_wave_header(true);
    return wave.finish() ? std::string() : platform::last_file_error();
}

void recording::put_wave_header(bool again) {
    const wave_header_bytes header = wave_header(wave_bytes);
    const bool put =
        again ? wave.rewrite_start(header.data(), header.size()) : wave.write(header.data(), header.size());
    const std::lock_guard lock(mutex);
    if (!put && wrong.empty()) wrong = platform::last_file_error();
}

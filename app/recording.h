// Recordings: the machine's sound as a WAV file, its picture and sound as a video by an installed ffmpeg.
//
// The threads that make samples and pictures only append to a queue; a thread for each of the two writes.
// Both count the machine's own time, so a pause leaves no gap, and a picture that a busy computer did not
// draw is the one before it, shown twice: every picture has its exact time, and the sound stays with it.
#pragma once

#include "display/kiv_directx.h"
#include "platform/child_process.h"
#include "platform/file.h"
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class recording final : public output_tap {
  public:
    enum class kind { sound, video };

    // `ended` is called once, on a thread of the recording's, with what is wrong, or an empty text.
    recording(kind of_what, const std::string &path, std::function<void(const std::string &wrong)> ended);
    ~recording() override; // waits a few seconds for what is not written yet
    recording(const recording &) = delete;
    recording &operator=(const recording &) = delete;

    // While the machine stands. `frame_t_states`: of one picture. What is wrong, else empty.
    std::string start(uint32_t frame_t_states);
    // Once no more comes. What has come so far is written; `ended` tells when.
    void stop();
    bool is_stopping() const;
    const std::string &path() const { return file_path; }
    kind what() const { return of_what; }

    void samples(const int16_t *samples, size_t count) override;
    void frame(const uint32_t *pixels, uint32_t pitch) override;

  private:
    using picture = std::vector<uint32_t>;
    struct shown_frame {
        std::shared_ptr<const picture> pixels;
        uint32_t times;
    };
    uint32_t retraces_passed(); // since it was last asked
    void put_picture(const std::shared_ptr<const picture> &pixels, uint32_t times);
    void write_sound();
    void write_video();
    bool put_sound(const std::vector<int16_t> &samples);
    void put_wave_header(bool again);
    void fail(const std::string &why);
    void writer_ends();
    std::string finish();

    const kind of_what;
    const std::string file_path;
    const std::function<void(const std::string &)> ended;

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::vector<int16_t>> sound_queue;
    std::deque<shown_frame> frame_queue;
    bool stopping = false;
    bool cut_off = false; // the encoder took no more
    int writers = 0;
    std::string wrong;

    uint32_t retraces = 0; // the machine's, at the last picture
    std::shared_ptr<const picture> last_picture;
    uint64_t wave_bytes = 0;
    platform::file_aside wave;
    platform::child_process encoder;
    std::thread sound_thread, video_thread;
};

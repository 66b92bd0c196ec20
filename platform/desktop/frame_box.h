// The frames' way from the render thread to the window thread: three buffers, of which the writer owns one,
// the reader owns one, and the third holds the newest whole frame. Neither side ever waits for the other, and
// what the reader sees is always one frame as it was published.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace platform {

struct boxed_frame {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels; // 0xFFRRGGBB, rows top first, without gaps
};

class frame_box {
  public:
    // The writer's buffer, sized; publishes on destruction. Several threads may write: one waits for the
    // other.
    class writer {
      public:
        writer(frame_box &into, int width, int height) : box(into), turn(into.writing) {
            boxed_frame &f = frame();
            f.width = width;
            f.height = height;
            f.pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
        }
        ~writer() {
            box.back = box.newest.exchange(box.back | fresh, std::memory_order_acq_rel) & index_mask;
        }
        writer(const writer &) = delete;
        writer &operator=(const writer &) = delete;
        boxed_frame &frame() { return box.frames[box.back]; }
        uint32_t *row(int y) {
            return frame().pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(frame().width);
        }

      private:
        frame_box &box;
        std::lock_guard<std::mutex> turn;
    };

    // The newest frame since the last call, or null when there is none. It stays as it is until the next
    // call. One reading thread.
    const boxed_frame *take_newest() {
        if ((newest.load(std::memory_order_relaxed) & fresh) == 0) return nullptr;
        front = newest.exchange(front, std::memory_order_acq_rel) & index_mask;
        return &frames[front];
    }

  private:
    static constexpr unsigned index_mask = 3, fresh = 4; // `fresh`: nobody has read the newest one yet
    boxed_frame frames[3];
    std::mutex writing;
    unsigned back = 0;
    unsigned front = 1;
    std::atomic<unsigned> newest{2};
};

} // namespace platform

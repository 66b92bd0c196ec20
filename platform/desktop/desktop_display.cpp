#include "platform/desktop/desktop_display.h"

#include "platform/pixel_memory.h"
#include "platform/surface_turn.h"
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace platform {

namespace {

constexpr uint32_t opaque = 0xFF000000;
constexpr uint32_t rgb_flag = 0x40, indexed8_flag = 0x20; // of the pixel format, as the log shows it

struct mode {
    int width, height;
};
constexpr mode modes[] = {{640, 400}, {640, 480}, {720, 480}, {800, 480}, {800, 600}};

// A surface that is drawn into. While it is locked only the thread that locked it may touch it; others wait.
class offscreen_surface : public surface {
  public:
    offscreen_surface(int w, int h, bool indexed)
        : width(w), height(h), indexed8(indexed), pitch(indexed ? w : w * 4),
          memory(static_cast<size_t>(pitch) * static_cast<size_t>(h) / 4 + 1) {}

    // A frame that is being drawn on another thread is let finish; it would draw into freed memory.
    ~offscreen_surface() override { turns.let_finish(); }

    bool describe(surface_desc &desc) override {
        desc = {width, height, pitch, {indexed8, indexed8 ? rgb_flag | indexed8_flag : rgb_flag}};
        return true;
    }

    display_result lock(void *&pixels, int &bytes_per_line) override {
        if (!turns.try_lock()) return display_result::still_busy;
        pixels = memory.data();
        bytes_per_line = pitch;
        return display_result::ok;
    }

    void unlock() override { turns.unlock(); }

    void fill(const rectangle &area, uint32_t colour) override {
        const auto turn = turns.wait();
        const int left = std::clamp(area.left, 0, width), right = std::clamp(area.right, left, width);
        const int top = std::clamp(area.top, 0, height), bottom = std::clamp(area.bottom, top, height);
        for (int y = top; y < bottom; ++y) {
            if (indexed8)
                std::memset(row8(y) + left, static_cast<int>(colour & 0xFF),
                            static_cast<size_t>(right - left));
            else
                std::fill(row32(y) + left, row32(y) + right, colour);
        }
    }

    bool set_palette(const uint32_t *) override { return false; }
    display_result copy_from(surface &, const rectangle &, const rectangle &, bool) override {
        return display_result::failed;
    }

    // The part `area` as opaque 32-bit pixels.
    void convert(const rectangle &area, const uint32_t *palette, frame_box &into) {
        const auto turn = turns.wait();
        const int left = std::clamp(area.left, 0, width), right = std::clamp(area.right, left, width);
        const int top = std::clamp(area.top, 0, height), bottom = std::clamp(area.bottom, top, height);
        if (left == right || top == bottom) return;
        frame_box::writer frame(into, right - left, bottom - top);
        for (int y = top; y < bottom; ++y) {
            uint32_t *to = frame.row(y - top);
            if (indexed8) {
                const uint8_t *from = row8(y) + left;
                for (int x = 0; x < right - left; ++x) to[x] = palette[from[x]] | opaque;
            } else {
                const uint32_t *from = row32(y) + left;
                for (int x = 0; x < right - left; ++x) to[x] = from[x] | opaque;
            }
        }
    }

  private:
    uint8_t *row8(int y) {
        return reinterpret_cast<uint8_t *>(memory.data()) + static_cast<ptrdiff_t>(y) * pitch;
    }
    uint32_t *row32(int y) { return memory.data() + static_cast<ptrdiff_t>(y) * width; }

    const int width, height;
    const bool indexed8;
    const int pitch;
    pixel_memory memory;
    surface_turn turns;
};

// What stands for the screen: it has no pixels of its own, a copy onto it publishes a frame.
class primary_surface : public surface {
  public:
    primary_surface(std::shared_ptr<screen_link> l, int w, int h, bool indexed)
        : link(std::move(l)), width(w), height(h), indexed8(indexed), palette(256) {
        for (uint32_t i = 0; i < 256; ++i) palette[i] = i * 0x010101;
    }

    bool describe(surface_desc &desc) override {
        desc = {width,
                height,
                indexed8 ? width : width * 4,
                {indexed8, indexed8 ? rgb_flag | indexed8_flag : rgb_flag}};
        return true;
    }
    display_result lock(void *&, int &) override { return display_result::failed; }
    void unlock() override {}
    // Only whole: the screen shows whole frames.
    void fill(const rectangle &, uint32_t colour) override {
        const std::lock_guard turn(mutex);
        {
            frame_box::writer frame(link->frames, width, height);
            auto &pixels = frame.frame().pixels;
            std::fill(pixels.begin(), pixels.end(), (indexed8 ? palette[colour & 0xFF] : colour) | opaque);
        }
        link->ask_repaint();
    }

    bool set_palette(const uint32_t *rgb256) override {
        const std::lock_guard turn(mutex);
        palette.assign(rgb256, rgb256 + 256);
        return true;
    }

    // The destination is the window's client area or the whole screen: the window knows better where that is
    // by the time the frame is painted.
    display_result copy_from(surface &source, const rectangle &area, const rectangle &, bool) override {
        auto *drawn = dynamic_cast<offscreen_surface *>(&source);
        if (drawn == nullptr) return display_result::failed;
        const std::lock_guard turn(mutex);
        drawn->convert(area, palette.data(), link->frames);
        return link->ask_repaint() ? display_result::ok : display_result::failed;
    }

  private:
    std::shared_ptr<screen_link> link;
    const int width, height;
    const bool indexed8;
    std::mutex mutex; // the palette
    std::vector<uint32_t> palette;
};

} // namespace

void screen_link::set_repaint(std::function<void()> ask) {
    const std::lock_guard lock(mutex);
    repaint = std::move(ask);
}

bool screen_link::ask_repaint() {
    const std::lock_guard lock(mutex);
    if (!repaint) return false;
    repaint();
    return true;
}

desktop_display::desktop_display(std::shared_ptr<screen_link> to_screen) : link(std::move(to_screen)) {}

desktop_display::~desktop_display() = default;

bool desktop_display::set_cooperative_level(host_window &window, bool full_screen) {
    switcher = dynamic_cast<mode_switch *>(&window);
    exclusive = full_screen;
    if (!full_screen) restore_mode();
    return switcher != nullptr;
}

bool desktop_display::set_mode(int width, int height, int depth) {
    if (!exclusive || (depth != 8 && depth != 32)) return false;
    if (std::none_of(std::begin(modes), std::end(modes),
                     [&](const mode &m) { return m.width == width && m.height == height; }))
        return false;
    mode_width = width;
    mode_height = height;
    mode_depth = depth;
    mode_set = true;
    switcher->enter_mode(width, height);
    return true;
}

void desktop_display::restore_mode() {
    if (!mode_set) return;
    mode_set = false;
    if (switcher != nullptr) switcher->leave_mode();
}

std::unique_ptr<surface> desktop_display::create_primary(bool full_screen) {
    if (full_screen && !mode_set) return nullptr;
    return std::make_unique<primary_surface>(link, full_screen ? mode_width : 640,
                                             full_screen ? mode_height : 400, full_screen && mode_depth == 8);
}

std::unique_ptr<surface> desktop_display::create_offscreen(int width, int height, surface_memory) {
    if (width <= 0 || height <= 0 || width > 16384 || height > 16384) return nullptr;
    return std::make_unique<offscreen_surface>(width, height, mode_set && mode_depth == 8);
}

// No vertical blank of the host is to be had, so the clock stands in: blanks begin at whole periods since the
// clock's start and last a twentieth of one.
bool desktop_display::wait_vertical_blank(bool begin) {
    using namespace std::chrono;
    const double rate = link->refresh_rate;
    const auto period = nanoseconds(static_cast<int64_t>(1e9 / (rate > 1 ? rate : 60)));
    const auto now = steady_clock::now().time_since_epoch();
    const auto since = nanoseconds(now) % period;
    const auto blank = period / 20;
    const auto wait = begin ? period - since : since < blank ? blank - since : period - since + blank;
    std::this_thread::sleep_until(
        steady_clock::time_point(duration_cast<steady_clock::duration>(nanoseconds(now) + wait)));
    return true;
}

} // namespace platform

#include "tests/headless/headless_display.h"

#include "platform/pixel_memory.h"
#include "platform/surface_turn.h"
#include "tests/headless/headless_window.h"
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <thread>

namespace platform {

namespace {

constexpr uint32_t rgb_flag = 0x40, indexed8_flag = 0x20; // of the pixel format, as the log shows it
constexpr int largest_side = 4096;

bool ordinary_mode(int width, int height, int depth) {
    constexpr size2 sizes[] = {{640, 400}, {640, 480}, {720, 480}, {800, 480}, {800, 600}};
    return (depth == 8 || depth == 32) &&
           std::any_of(std::begin(sizes), std::end(sizes),
                       [=](const size2 &s) { return s.width == width && s.height == height; });
}

} // namespace

// What the display, its surfaces and the test share.
struct headless_display::screen {
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    fault_plan &faults;

    size2 desktop{1280, 1024};
    int desktop_depth = 32;
    std::function<bool(int, int, int)> accepts = ordinary_mode;
    double refresh_rate = 0;

    int surfaces = 0; // that live
    bool exclusive = false;
    headless_window *window = nullptr;
    size2 mode{0, 0};
    int mode_depth = 0;

    shown_frame frame;

    explicit screen(fault_plan &plan) : faults(plan) {}
    int depth() const { return mode_depth != 0 ? mode_depth : desktop_depth; }
};

namespace {

using screen = headless_display::screen;

// What every surface has: a format.
class memory_surface : public surface {
  public:
    memory_surface(std::shared_ptr<screen> s, int w, int h, bool indexed)
        : state(std::move(s)), width(w), height(h), indexed8(indexed), pitch(indexed ? w : w * 4) {
        ++state->surfaces; // made under the screen's mutex
    }
    ~memory_surface() override {
        const std::lock_guard lock(state->mutex);
        --state->surfaces;
    }

    bool describe(surface_desc &desc) override {
        if (state->faults.take(fault::describe)) return false;
        desc = {width, height, pitch, {indexed8, indexed8 ? rgb_flag | indexed8_flag : rgb_flag}};
        return true;
    }
    bool set_palette(const uint32_t *) override { return false; }
    display_result copy_from(surface &, const rectangle &, const rectangle &, bool) override {
        return display_result::failed;
    }

  protected:
    const std::shared_ptr<screen> state;
    const int width, height;
    const bool indexed8;
    const int pitch;
};

// Drawn into by one thread at a time: while it is locked, only the thread that locked it may touch it, and
// others wait.
class offscreen_surface : public memory_surface {
  public:
    offscreen_surface(std::shared_ptr<screen> s, int w, int h, bool indexed)
        : memory_surface(std::move(s), w, h, indexed),
          pixels(static_cast<size_t>(pitch) * static_cast<size_t>(h) / 4 + 1) {}

    // Whoever still draws is let finish, else it would draw into freed memory.
    ~offscreen_surface() override { turns.let_finish(); }

    display_result lock(void *&first_pixel, int &bytes_per_line) override {
        if (state->faults.take(fault::lock_busy)) return display_result::still_busy;
        if (state->faults.take(fault::lock_failed)) return display_result::failed;
        if (!turns.try_lock()) return display_result::still_busy;
        first_pixel = pixels.data();
        bytes_per_line = pitch;
        return display_result::ok;
    }

    void unlock() override { turns.unlock(); }

    void fill(const rectangle &area, uint32_t colour) override {
        const auto turn = turns.wait();
        const rectangle part = clipped(area);
        for (int y = part.top; y < part.bottom; y++) {
            if (indexed8)
                std::fill(row8(y) + part.left, row8(y) + part.right, static_cast<uint8_t>(colour));
            else
                std::fill(row32(y) + part.left, row32(y) + part.right, colour & 0xFFFFFF);
        }
    }

    rgb_picture to_rgb(const rectangle &area, const uint32_t *palette) {
        const auto turn = turns.wait();
        const rectangle part = clipped(area);
        rgb_picture picture{part.right - part.left, part.bottom - part.top, {}};
        picture.pixels.reserve(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
        for (int y = part.top; y < part.bottom; y++) {
            for (int x = part.left; x < part.right; x++)
                picture.pixels.push_back(indexed8 ? palette[row8(y)[x]] : row32(y)[x] & 0xFFFFFF);
        }
        return picture;
    }

  private:
    rectangle clipped(const rectangle &area) const {
        rectangle part;
        part.left = std::clamp(area.left, 0, width);
        part.right = std::clamp(area.right, part.left, width);
        part.top = std::clamp(area.top, 0, height);
        part.bottom = std::clamp(area.bottom, part.top, height);
        return part;
    }
    uint8_t *row8(int y) {
        return reinterpret_cast<uint8_t *>(pixels.data()) + static_cast<ptrdiff_t>(y) * pitch;
    }
    uint32_t *row32(int y) { return pixels.data() + static_cast<ptrdiff_t>(y) * width; }

    pixel_memory pixels;
    surface_turn turns;
};

// The screen itself. It is never drawn into: a copy puts a whole frame in the place of the one before.
class primary_surface : public memory_surface {
  public:
    primary_surface(std::shared_ptr<screen> s, int w, int h, bool indexed)
        : memory_surface(std::move(s), w, h, indexed), palette(256) {
        for (uint32_t i = 0; i < 256; i++) palette[i] = i * 0x010101;
    }

    display_result lock(void *&, int &) override { return display_result::failed; }
    void unlock() override {}

    // What is shown becomes one colour; a fill is no frame.
    void fill(const rectangle &, uint32_t colour) override {
        const std::lock_guard lock(state->mutex);
        std::vector<uint32_t> &shown = state->frame.picture.pixels;
        std::fill(shown.begin(), shown.end(), indexed8 ? palette[colour & 0xFF] : colour & 0xFFFFFF);
    }

    bool set_palette(const uint32_t *rgb256) override {
        if (!indexed8) return false;
        const std::lock_guard lock(state->mutex);
        palette.assign(rgb256, rgb256 + 256);
        return true;
    }

    display_result copy_from(surface &source, const rectangle &area, const rectangle &destination,
                             bool full_screen) override {
        auto *drawn = dynamic_cast<offscreen_surface *>(&source);
        if (drawn == nullptr || state->faults.take(fault::copy_failed)) return display_result::failed;
        std::vector<uint32_t> colours;
        {
            const std::lock_guard lock(state->mutex);
            colours = palette;
        }
        rgb_picture picture = drawn->to_rgb(area, colours.data());
        const std::lock_guard lock(state->mutex);
        state->frame.picture = std::move(picture);
        state->frame.destination = full_screen ? rectangle{0, 0, width, height} : destination;
        state->frame.full_screen = full_screen;
        state->frame.number++;
        state->changed.notify_all();
        return display_result::ok;
    }

  private:
    std::vector<uint32_t> palette; // under the screen's mutex
};

} // namespace

headless_display::headless_display(fault_plan &plan) : faults(plan), state(std::make_shared<screen>(plan)) {}

headless_display::~headless_display() = default;

// ---- for the test ------------------------------------------------------------------------------------

void headless_display::set_desktop(int width, int height, int depth) {
    const std::lock_guard lock(state->mutex);
    state->desktop = {width, height};
    state->desktop_depth = depth;
}

size2 headless_display::desktop_size() const {
    const std::lock_guard lock(state->mutex);
    return state->desktop;
}

void headless_display::set_mode_filter(std::function<bool(int, int, int)> accepts) {
    const std::lock_guard lock(state->mutex);
    state->accepts = std::move(accepts);
}

void headless_display::set_refresh_rate(double hertz) {
    const std::lock_guard lock(state->mutex);
    state->refresh_rate = hertz;
}

shown_frame headless_display::shown() const {
    const std::lock_guard lock(state->mutex);
    return state->frame;
}

bool headless_display::wait_for_frame(uint64_t number, uint32_t milliseconds) const {
    std::unique_lock lock(state->mutex);
    return state->changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                   [&] { return state->frame.number >= number; });
}

bool headless_display::is_open() const {
    const std::lock_guard lock(state->mutex);
    return state->surfaces != 0;
}

size2 headless_display::current_mode() const {
    const std::lock_guard lock(state->mutex);
    return state->mode;
}

// ---- for the program ---------------------------------------------------------------------------------

bool headless_display::set_cooperative_level(host_window &window, bool full_screen) {
    if (faults.take(fault::display_cooperative_level)) return false;
    const std::lock_guard lock(state->mutex);
    state->window = dynamic_cast<headless_window *>(&window);
    state->exclusive = full_screen;
    return true;
}

bool headless_display::set_mode(int width, int height, int depth) {
    if (faults.take(fault::display_mode)) return false;
    headless_window *window;
    {
        const std::lock_guard lock(state->mutex);
        if (!state->exclusive || !state->accepts(width, height, depth)) return false;
        state->mode = {width, height};
        state->mode_depth = depth;
        window = state->window;
    }
    if (window != nullptr) window->enter_mode(width, height);
    return true;
}

void headless_display::restore_mode() {
    headless_window *window;
    {
        const std::lock_guard lock(state->mutex);
        if (state->mode_depth == 0) return;
        state->mode = {0, 0};
        state->mode_depth = 0;
        window = state->window;
    }
    if (window != nullptr) window->leave_mode();
}

std::unique_ptr<surface> headless_display::create_primary(bool full_screen) {
    if (faults.take(fault::primary)) return nullptr;
    const std::lock_guard lock(state->mutex);
    if (full_screen != (state->mode_depth != 0)) return nullptr;
    const size2 size = full_screen ? state->mode : state->desktop;
    return std::make_unique<primary_surface>(state, size.width, size.height, state->depth() == 8);
}

std::unique_ptr<surface> headless_display::create_offscreen(int width, int height, surface_memory where) {
    const bool video = where == surface_memory::video;
    if (faults.take(video ? fault::offscreen_video_memory : fault::offscreen_system_memory)) return nullptr;
    const std::lock_guard lock(state->mutex);
    if (width <= 0 || height <= 0 || width > largest_side || height > largest_side) return nullptr;
    return std::make_unique<offscreen_surface>(state, width, height, state->depth() == 8);
}

// The begin of a blank is a multiple of the period, its end a twentieth of the period later.
bool headless_display::wait_vertical_blank(bool begin) {
    using namespace std::chrono;
    if (faults.take(fault::vertical_blank)) return false;
    double rate;
    {
        const std::lock_guard lock(state->mutex);
        rate = state->refresh_rate;
    }
    if (rate <= 0) return true;
    const auto period = nanoseconds(static_cast<int64_t>(1e9 / rate));
    const auto at = begin ? nanoseconds(0) : period / 20;
    const auto now = duration_cast<nanoseconds>(steady_clock::now().time_since_epoch());
    const auto next = now - at - (now - at) % period + period + at;
    std::this_thread::sleep_until(steady_clock::time_point(duration_cast<steady_clock::duration>(next)));
    return true;
}

} // namespace platform

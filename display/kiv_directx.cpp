// The picture half of kiv_directx: display set-up, the off-screen surface, the copy to the screen.
#include "display/kiv_directx.h"

#include "display/frame_composer.h"
#include "display/kiv_render.h"
#include "display/overlay_font.h"
#include "display/text_screen.h"
#include "machine/kiv_machine.h"
#include "platform/clock.h"
#include "support/log.h"
#include "support/main_window.h"
#include <cstdio>
#include <cstring>
#include <span>

namespace {

using platform::display_result;

struct mode_size {
    int width, height;
};
constexpr mode_size all_modes[] = {{640, 400}, {640, 480}, {720, 480}, {800, 480}, {800, 600}};
constexpr mode_size only_mode[] = {{720, 480}};
constexpr int full_screen_depths[] = {8, 32};
constexpr int window_depth = 8; // not used in a window: the desktop's depth stays

enum overlay : int32_t {
    overlay_erase = -1, // the line is wiped from the next frame, then overlay_off
    overlay_off = 0,
    overlay_on = 1,
};
// In full screen the line may lie in the margin, which the composer never redraws.
constexpr int overlay_erase_width = 340, overlay_erase_height = 20;

// A surface that stays busy costs this frame only.
constexpr int busy_tries = 20; // a millisecond each

// The object that frames are drawn by. Held while a frame is drawn, so that it does not go away meanwhile.
std::mutex presenter_mutex;
std::atomic<kiv_directx *> presenter{nullptr};

} // namespace

kiv_directx::kiv_directx(platform::host &h) : host(h) { presenter = this; }

kiv_directx::~kiv_directx() {
    {
        const std::lock_guard lock(presenter_mutex);
        if (presenter == this) presenter = nullptr;
    }
    release();
}

kiv_directx *kiv_directx::instance() { return presenter; }

uint32_t kiv_directx::present_frame() {
    const std::lock_guard lock(presenter_mutex);
    kiv_directx *const directx = presenter;
    return directx == nullptr ? 0 : directx->frame();
}

int kiv_directx::init(platform::host_window &main, uint32_t videomem) {
    window = &main;
    use_videomem = videomem;
    bool started;
    {
        const std::lock_guard lock(surfaces_mutex);
        started = video_start();
    }
    if (started && sound_start()) return 1;
    release();
    return 0;
}

void kiv_directx::release() {
    {
        const std::lock_guard lock(surfaces_mutex);
        video_release();
    }
    sound_release();
}

int kiv_directx::toggle_screen() {
    const std::lock_guard lock(surfaces_mutex);
    video_release();
    full_screen = full_screen == 0;
    return video_start();
}

void kiv_directx::restore_surfaces() {
    const std::lock_guard lock(surfaces_mutex);
    if (primary == nullptr) return; // then there is no off-screen surface, either
    const auto surfaces = {primary.get(), offscreen.get()};
    for (platform::surface *surface : surfaces) surface->fill({0, 0, width, height}, 0);
}

// ---- set-up and release; surfaces_mutex is held -------------------------------------------------------

bool kiv_directx::video_start() {
    const bool set_up = full_screen != 0 ? video_start_full_screen()
                                         : directdraw_setup(frame_width, frame_height, window_depth);
    if (set_up && create_surfaces()) return true;
    video_release();
    return false;
}

// The smallest mode that the display takes, 8 bits before 32.
bool kiv_directx::video_start_full_screen() {
    const auto modes =
        screensize == 1 ? std::span<const mode_size>(only_mode) : std::span<const mode_size>(all_modes);
    for (const int depth : full_screen_depths)
        for (const mode_size &mode : modes)
            if (directdraw_setup(mode.width, mode.height, depth)) return true;
    return false;
}

bool kiv_directx::directdraw_setup(int mode_width, int mode_height, int depth) {
    platform::display &display = host.get_display();
    if (full_screen != 0) {
        trace("DirectX:  Full Screen Mode start");
        if (the_main_window != nullptr) the_main_window->set_full_screen_style(mode_width, mode_height);
    } else {
        trace("DirectX:  Window Mode start");
        if (the_main_window != nullptr) the_main_window->set_window_style(mode_width, mode_height);
        on_move();
    }
    if (!display.set_cooperative_level(*window, full_screen != 0)) {
        trace("DirectX: dd->SetCooperativeLevel Failed");
        return false;
    }
    if (full_screen != 0) {
        const bool set = display.set_mode(mode_width, mode_height, depth);
        trace("DirectX: dd->SetDisplayMode(Width=%d, Height=%d, Depth=%d) %s", mode_width, mode_height, depth,
              set ? "Succeeded" : "Failed");
        if (!set) return false;
    }
    width = mode_width;
    height = mode_height;
    return true;
}

bool kiv_directx::create_surfaces() {
    const bool created = full_screen != 0 ? create_surfaces_full_screen() : create_surfaces_window();
    if (created && describe_offscreen()) return true;
    release_surfaces();
    return false;
}

bool kiv_directx::create_surfaces_full_screen() {
    platform::display &display = host.get_display();
    primary = display.create_primary(true);
    if (primary == nullptr) {
        trace("DirectX:  dd->CreateSurface(Primary [Full Screen Mode]) Failed");
        return false;
    }
    offscreen = display.create_offscreen(width, height, platform::surface_memory::video);
    if (offscreen == nullptr) trace("DirectX:  dd->CreateSurface(Off-screen [Full Screen Mode]) Failed");
    return offscreen != nullptr;
}

bool kiv_directx::create_surfaces_window() {
    platform::display &display = host.get_display();
    primary = display.create_primary(false);
    if (primary == nullptr) {
        trace("DirectX:  dd->CreateSurface(Primary) Failed");
        return false;
    }
    offscreen = display.create_offscreen(width, height, platform::surface_memory::video);
    if (offscreen == nullptr)
        offscreen = display.create_offscreen(width, height, platform::surface_memory::system);
    if (offscreen == nullptr) trace("DirectX:  dd->CreateSurface(Off-screen) Failed");
    return offscreen != nullptr;
}

bool kiv_directx::describe_offscreen() {
    platform::surface_desc desc{};
    if (!offscreen->describe(desc)) {
        trace("DirectX:  dds->GetSurfaceDesc(Off-screen) Failed");
        return false;
    }
    if (desc.format.indexed8) {
        trace("DirectX:  Surface pixcel format = 8-bit color indexed palette");
        palette_mode = 1;
        pixel_format = pixels_indexed8;
        primary->set_palette(host_palette.data());
    } else {
        palette_mode = 0;
        pixel_format = pixels_rgb32;
        trace("DirectX:  Surface pixcel format = RGB");
    }
    if (desc.width < frame_width || desc.height < frame_height) { // the renderers write the whole picture
        trace("DirectX:  Off-screen surface of %d x %d is too small", desc.width, desc.height);
        return false;
    }
    width = desc.width;
    height = desc.height;
    const int bytes_per_pixel = pixel_format == pixels_indexed8 ? 1 : 4;
    const std::lock_guard lock(composer_mutex);
    set_frame_geometry(width, height, static_cast<uint32_t>(desc.pitch / bytes_per_pixel));
    ahead_pixels.assign(static_cast<size_t>(desc.pitch) * static_cast<size_t>(height) / sizeof(uint32_t), 0);
    ahead_waits = false;
    on_move();
    trace("DirectX: Surface desc lpitch = %d, height = %d, pixcel format = %d", desc.pitch, desc.height,
          static_cast<int>(desc.format.flags));
    return true;
}

void kiv_directx::release_surfaces() {
    for (auto *surface : {&offscreen, &primary}) {
        if (*surface == nullptr) continue;
        (*surface)->unlock();
        surface->reset();
    }
}

void kiv_directx::video_release() {
    release_surfaces();
    host.get_display().restore_mode();
}

void kiv_directx::on_move() {
    if (window != nullptr) destination = window->client_origin();
}

// ---- frames -------------------------------------------------------------------------------------------

uint32_t kiv_directx::realizer() {
    const std::lock_guard lock(surfaces_mutex);
    return compose_locked();
}

// A parked machine's last frame may still be drawn, and reading the text takes the same working memory.
std::string kiv_directx::screen_text() {
    const std::scoped_lock lock(surfaces_mutex, composer_mutex);
    std::string text(text_screen_utf8(nullptr, 0), '\0');
    text_screen_utf8(text.data(), text.size() + 1);
    return text;
}

uint32_t kiv_directx::frame() {
    const std::lock_guard lock(surfaces_mutex);
    const uint32_t rows = compose_locked();
    if (primary == nullptr || !wait_vblank()) return 0;
    return copy_to_screen() ? rows : 0;
}

int kiv_directx::wait_vblank() { return sync_vblank == 0 || host.get_display().wait_vertical_blank(true); }

int kiv_directx::wait_vblank_end() { return host.get_display().wait_vertical_blank(false); }

// The off-screen surface's first pixel.
bool kiv_directx::lock_offscreen(void *&pixels) {
    int pitch = 0;
    for (int busy = 0; busy < busy_tries; ++busy) {
        const display_result result = offscreen->lock(pixels, pitch);
        if (result != display_result::still_busy) return result == display_result::ok;
        trace("DirectX: realizer() still drawing");
        platform::sleep_ms(1);
    }
    return false;
}

uint32_t kiv_directx::compose_locked() {
    void *pixels = nullptr;
    if (offscreen == nullptr || !lock_offscreen(pixels)) return 0;
    const uint32_t rows = put_picture(pixels);
    give_frame(pixels);
    draw_overlay(pixels);
    offscreen->unlock();
    ++drawn;
    return rows;
}

// The picture made ahead, if one waits, else the machine's as it is now. The margin around it is not touched.
uint32_t kiv_directx::put_picture(void *pixels) {
    const std::lock_guard lock(composer_mutex);
    if (!ahead_waits) {
        geometry.frame_pixels = pixels;
        return compose_frame(pixel_format);
    }
    ahead_waits = false;
    const size_t pixel_bytes = pixel_format == pixels_indexed8 ? 1 : 4,
                 pitch = geometry.frame_pitch * pixel_bytes;
    size_t at = static_cast<size_t>(geometry.frame_top) * pitch +
                static_cast<size_t>(geometry.frame_left) * pixel_bytes;
    for (int y = 0; y < frame_height; ++y, at += pitch)
        std::memcpy(static_cast<uint8_t *>(pixels) + at,
                    reinterpret_cast<uint8_t *>(ahead_pixels.data()) + at, frame_width * pixel_bytes);
    return ahead_rows;
}

// Under composer_mutex. The render thread holds that for as long as it composes or copies, never while it
// waits for the screen.
void kiv_directx::put_ahead() {
    geometry.frame_pixels = ahead_pixels.data();
    ahead_rows = compose_frame(pixel_format);
    ahead_waits = true;
}

std::vector<uint32_t> kiv_directx::small_picture() {
    const std::lock_guard lock(composer_mutex);
    if (ahead_pixels.empty()) return {};
    // What composing leaves for the next frame is not to change by a look.
    const uint8_t colour = machine.carried_colour, attribute = machine.carried_attribute;
    put_ahead();
    ahead_waits = false;
    machine.carried_colour = colour;
    machine.carried_attribute = attribute;
    const auto pixel = [this](int x, int y) {
        const size_t at = static_cast<size_t>(geometry.frame_top + y) * geometry.frame_pitch +
                          static_cast<size_t>(geometry.frame_left + x);
        return pixel_format == pixels_rgb32
                   ? ahead_pixels[at]
                   : host_palette[reinterpret_cast<uint8_t *>(ahead_pixels.data())[at]];
    };
    constexpr int times = frame_width / small_width;
    std::vector<uint32_t> small;
    small.reserve(size_t{small_width} * small_height);
    for (int y = 0; y < frame_height; y += times)
        for (int x = 0; x < frame_width; x += times) {
            uint32_t red = 0, green = 0, blue = 0;
            for (int i = 0; i < times * times; ++i) {
                const uint32_t p = pixel(x + i % times, y + i / times);
                red += p >> 16 & 0xFF, green += p >> 8 & 0xFF, blue += p & 0xFF;
            }
            constexpr uint32_t count = times * times;
            small.push_back(red / count << 16 | green / count << 8 | blue / count);
        }
    return small;
}

void kiv_directx::set_tap(output_tap *listens) {
    const std::scoped_lock lock(sound_tap_mutex, picture_tap_mutex);
    sound_tap = picture_tap = listens;
}

void kiv_directx::give_frame(const void *pixels) {
    const std::lock_guard lock(picture_tap_mutex);
    if (picture_tap == nullptr) return;
    const size_t first = static_cast<size_t>(geometry.frame_top) * geometry.frame_pitch +
                         static_cast<size_t>(geometry.frame_left);
    if (pixel_format == pixels_rgb32) {
        picture_tap->frame(static_cast<const uint32_t *>(pixels) + first, geometry.frame_pitch);
        return;
    }
    static std::array<uint32_t, static_cast<size_t>(frame_width) * frame_height> coloured;
    const uint8_t *row = static_cast<const uint8_t *>(pixels) + first;
    for (uint32_t *at = coloured.data(); at != coloured.data() + coloured.size(); row += geometry.frame_pitch)
        for (int x = 0; x < frame_width; ++x) *at++ = host_palette[row[x]];
    picture_tap->frame(coloured.data(), frame_width);
}

void kiv_directx::draw_overlay(void *pixels) {
    const overlay_surface surface{pixels, static_cast<int>(geometry.frame_pitch), width, height,
                                  pixel_format == pixels_indexed8};
    int32_t mode = overlay_mode;
    if (mode == overlay_off) return;
    if (mode == overlay_on) {
        char line[128];
        std::snprintf(line, sizeof line, "SYS/CPU=%.3f/%.3f(MHz),FPS=%d,LPF=%.1f", stat_sys_mhz.load(),
                      stat_cpu_mhz.load(), stat_fps.load(), stat_lpf.load());
        overlay_text(surface, line);
        return;
    }
    overlay_blacken(surface, overlay_erase_width, overlay_erase_height);
    // Unless it was toggled again meanwhile.
    overlay_mode.compare_exchange_strong(mode, overlay_off);
}

bool kiv_directx::copy_to_screen() {
    const platform::point at = destination;
    return primary->copy_from(*offscreen, {0, 0, width, height}, {at.x, at.y, at.x + width, at.y + height},
                              full_screen != 0) == display_result::ok;
}

void kiv_directx::toggle_status() { overlay_mode = overlay_mode == overlay_off ? overlay_on : overlay_erase; }

uint32_t kiv_directx::get_sync_vblank() const { return sync_vblank; }
void kiv_directx::set_sync_vblank(uint32_t on) { sync_vblank = on; }
uint32_t kiv_directx::is_full_screen() const { return full_screen; }
void kiv_directx::set_full_screen(uint32_t on) { full_screen = on; }
uint16_t kiv_directx::get_screensize() const { return screensize; }
void kiv_directx::set_screensize(uint16_t only_720x480) { screensize = only_720x480; }
uint32_t kiv_directx::get_palette_mode() const { return palette_mode; }
void kiv_directx::set_palette_mode(uint32_t mode) { palette_mode = mode; }
uint32_t kiv_directx::get_txt_on_demand() const { return txt_on_demand; }
void kiv_directx::set_txt_on_demand(uint32_t value) { txt_on_demand = value; }

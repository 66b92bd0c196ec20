#include "tests/headless/headless_window.h"

#include "support/host_keys.h"
#include <algorithm>

namespace platform {

namespace {

constexpr int frame_edge = 4, caption_height = 20;
constexpr uint64_t auto_repeat = uint64_t{1} << 30; // lparam of wm_key_down

class canvas_painter : public painter {
  public:
    explicit canvas_painter(rgb_picture &on) : canvas(on) {}
    void fill(const rectangle &area, uint32_t rgb) override {
        each_pixel(area, [&](int, int) { return rgb; });
    }
    void draw(const picture &image, int x, int y) override {
        each_pixel({x, y, x + image.width, y + image.height},
                   [&](int px, int py) { return image.pixels[(py - y) * image.width + px - x]; });
    }

  private:
    template <class F> void each_pixel(const rectangle &area, F colour) {
        for (int y = std::max(area.top, 0); y < std::min(area.bottom, canvas.height); y++)
            for (int x = std::max(area.left, 0); x < std::min(area.right, canvas.width); x++)
                canvas.pixels[static_cast<size_t>(y * canvas.width + x)] = colour(x, y) & 0xFFFFFF;
    }
    rgb_picture &canvas;
};

} // namespace

headless_window::headless_window(const window_options &options, window_listener &hears, message_sink &loop,
                                 const headless_display &on, fault_plan &plan)
    : listener(hears), sink(loop), display(on), faults(plan) {
    now.title = options.title;
    now.x = options.x;
    now.y = options.y;
    now.width = options.width;
    now.height = options.height;
}

// ---- for the test ------------------------------------------------------------------------------------

void headless_window::put_message(const message &m, bool shift) {
    sink.put([this, m, shift] {
        {
            const std::lock_guard lock(mutex);
            shift_of_message = shift;
            in_message = true;
        }
        send(m.id, m.wparam, m.lparam);
        const std::lock_guard lock(mutex);
        in_message = false;
    });
}

void headless_window::key_message(uint32_t id, uint32_t virtual_key) {
    uint64_t lparam = 0;
    bool shift;
    {
        const std::lock_guard lock(mutex);
        if (id == wm_key_down)
            lparam = keys_down.insert(virtual_key).second ? 0 : auto_repeat;
        else
            keys_down.erase(virtual_key);
        shift = keys_down.contains(vk_shift);
    }
    put_message({id, virtual_key, lparam}, shift);
}

void headless_window::press_key(uint32_t virtual_key) { key_message(wm_key_down, virtual_key); }
void headless_window::release_key(uint32_t virtual_key) { key_message(wm_key_up, virtual_key); }

void headless_window::strike_key(uint32_t virtual_key) {
    press_key(virtual_key);
    release_key(virtual_key);
}

void headless_window::close_box() { post(wm_close, 0, 0); }

void headless_window::end_session() {
    sink.put([this] { end_session_answer = send(wm_query_end_session, 0, 0); });
}

void headless_window::activate(bool active) {
    std::set<uint32_t> held;
    {
        const std::lock_guard lock(mutex);
        if (!active) held = keys_down;
    }
    for (const uint32_t key : held) release_key(key);
    post(wm_activate_app, active ? 1 : 0, 0);
}

void headless_window::drag_to(int x, int y) {
    {
        const std::lock_guard lock(mutex);
        now.x = x;
        now.y = y;
    }
    post(wm_move, 0, 0);
}

bool headless_window::choose_menu_item(uint32_t id) {
    const std::function<bool(const std::vector<menu_item> &)> offers = [&](const auto &items) {
        return std::any_of(items.begin(), items.end(), [&](const menu_item &item) {
            return item.enabled && (item.id == id || offers(item.items));
        });
    };
    if (!offers(listener.menus())) return false;
    post(wm_sys_command, id, 0);
    return true;
}

window_state headless_window::state() const {
    const std::lock_guard lock(mutex);
    window_state s = now;
    const size2 size = client_size_locked();
    s.width = size.width;
    s.height = size.height;
    return s;
}

rgb_picture headless_window::painted() const {
    const std::lock_guard lock(mutex);
    return canvas;
}

uint64_t headless_window::paints() const {
    const std::lock_guard lock(mutex);
    return paint_count;
}

int64_t headless_window::send(uint32_t id, uint64_t wparam, uint64_t lparam) {
    {
        const std::lock_guard lock(mutex);
        if (now.gone) return 0;
    }
    bool handled = true;
    const int64_t result = listener.window_proc(*this, {id, wparam, lparam}, handled);
    if (!handled && id == wm_close) destroy();
    return result;
}

// ---- for the host ------------------------------------------------------------------------------------

void headless_window::enter_mode(int width, int height) {
    const std::lock_guard lock(mutex);
    mode = {width, height};
    now.in_mode = true;
}

void headless_window::leave_mode() {
    const std::lock_guard lock(mutex);
    now.in_mode = false;
}

bool headless_window::paint_if_wanted() {
    rgb_picture drawn;
    bool erase;
    {
        const std::lock_guard lock(mutex);
        if (!paint_wanted || now.gone || painting != nullptr) return false;
        erase = erase_wanted;
        paint_wanted = erase_wanted = false;
        const size2 size = client_size_locked();
        drawn = canvas;
        if (drawn.width != size.width || drawn.height != size.height)
            drawn = {
                size.width, size.height,
                std::vector<uint32_t>(static_cast<size_t>(size.width) * static_cast<size_t>(size.height))};
    }
    canvas_painter on(drawn);
    painting = &on;
    if (erase) send(wm_erase_background, 0, 0);
    send(wm_paint, 0, 0);
    painting = nullptr;
    const std::lock_guard lock(mutex);
    canvas = std::move(drawn);
    paint_count++;
    return true;
}

// ---- for the program ---------------------------------------------------------------------------------

void headless_window::post(uint32_t id, uint64_t wparam, uint64_t lparam) {
    bool shift;
    {
        const std::lock_guard lock(mutex);
        shift = keys_down.contains(vk_shift);
    }
    put_message({id, wparam, lparam}, shift);
}

void headless_window::destroy() {
    send(wm_destroy, 0, 0);
    const std::lock_guard lock(mutex);
    now.gone = true;
    now.shown = false;
}

size2 headless_window::client_size_locked() const {
    return now.in_mode ? mode : size2{now.width, now.height};
}

bool headless_window::client_size(size2 &size) const {
    const std::lock_guard lock(mutex);
    if (now.gone) return false;
    size = client_size_locked();
    return true;
}

point headless_window::client_origin() const {
    const std::lock_guard lock(mutex);
    if (now.in_mode) return {0, 0};
    if (!now.framed) return {now.x, now.y};
    return {now.x + frame_edge, now.y + caption_height + frame_edge};
}

void headless_window::invalidate(bool erase) {
    {
        const std::lock_guard lock(mutex);
        if (now.gone) return;
        paint_wanted = true;
        erase_wanted |= erase;
    }
    sink.wake();
}

void headless_window::set_focus() {
    const std::lock_guard lock(mutex);
    now.focus_requests++;
}

painter *headless_window::current_painter() { return painting; }

int headless_window::show_cursor(bool show) {
    const std::lock_guard lock(mutex);
    return now.cursor_count += show ? 1 : -1;
}

bool headless_window::shift_down() const {
    const std::lock_guard lock(mutex);
    return in_message ? shift_of_message : keys_down.contains(vk_shift);
}

void headless_window::disable_input_method() {
    const std::lock_guard lock(mutex);
    now.input_method = false;
}

bool headless_window::set_framed(bool framed) {
    if (faults.take(fault::framed)) return false;
    const std::lock_guard lock(mutex);
    if (now.gone) return false;
    now.framed = framed;
    return true;
}

void headless_window::resize_client(int width, int height) {
    const std::lock_guard lock(mutex);
    now.width = width;
    now.height = height;
}

void headless_window::centre() {
    const size2 desktop = display.desktop_size();
    bool moved;
    {
        const std::lock_guard lock(mutex);
        const int border = now.framed ? 2 * frame_edge : 0, caption = now.framed ? caption_height : 0;
        const int x = (desktop.width - now.width - border) / 2;
        const int y = (desktop.height - now.height - border - caption) / 2;
        moved = x != now.x || y != now.y;
        now.x = x;
        now.y = y;
    }
    if (moved) send(wm_move, 0, 0);
}

void headless_window::show() {
    bool comes_up;
    {
        const std::lock_guard lock(mutex);
        comes_up = !now.shown && !now.gone;
        now.shown = !now.gone;
    }
    if (!comes_up) return;
    invalidate(true);
    post(wm_activate_app, 1, 0);
}

void headless_window::notify(const std::string &text) {
    const std::lock_guard lock(mutex);
    now.notices.push_back(text);
}

void headless_window::bring_to_front() {
    const std::lock_guard lock(mutex);
    now.brought_to_front++;
}

void headless_window::copy_picture() {
    const std::lock_guard lock(mutex);
    now.pictures_copied++;
}

bool headless_window::save_picture(const std::string &path) {
    const std::lock_guard lock(mutex);
    now.pictures_saved.push_back(path);
    return true;
}

void headless_window::set_view(const view_settings &settings) {
    const std::lock_guard lock(mutex);
    now.view = settings;
}

void headless_window::set_scale(int factor) {
    const std::lock_guard lock(mutex);
    now.scale = factor;
}

std::string headless_window::place() const { return "here"; }

void headless_window::show_keyboard(const keyboard_page *page) {
    const std::lock_guard lock(mutex);
    now.keyboard_shown = page != nullptr;
    if (page != nullptr) now.keyboard = *page;
}

bool headless_window::keyboard_shown() const {
    const std::lock_guard lock(mutex);
    return now.keyboard_shown;
}

void headless_window::show_debugger(debugger_listener *heard, const std::string &) {
    const std::lock_guard lock(mutex);
    now.debugger = heard;
}

void headless_window::debugger_changed(bool stopped) {
    const std::lock_guard lock(mutex);
    ++now.debugger_changes;
    now.debugger_stops += stopped;
}

} // namespace platform

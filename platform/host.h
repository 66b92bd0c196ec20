// The host that a person sees and hears: window and messages, dialogs, display and surfaces, sound.
//
// platform/desktop implements it with Qt 6 and SDL 2; the tests have one of their own, in memory. The program
// makes one and hands it to whoever needs it. Everything is called on the window thread unless said
// otherwise. All texts are UTF-8.
#pragma once

#include "platform/debugger.h"
#include "platform/texts.h"
#include "platform/thread.h"
#include "platform/view_settings.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// ---- window ------------------------------------------------------------------------------------------

// Messages to a window, below the program's own, which start at wm_private + 1.
enum window_message : uint32_t {
    wm_destroy = 0x02, // the window is being destroyed
    wm_move = 0x03,    // the client area has moved on the screen
    wm_paint = 0x0F,   // the client area needs drawing; host_window::painter() is valid meanwhile
    wm_close = 0x10,   // a close request: close box, Alt+F4, or posted
    wm_query_end_session = 0x11,
    wm_erase_background = 0x14, // as wm_paint, before it, when the background is to be erased
    wm_activate_app = 0x1C,     // wparam 1: the application becomes active, 0: inactive
    wm_key_down = 0x100,        // wparam: virtual-key code; lparam bit 30: auto-repeat, and key_signs
    wm_key_up = 0x101,          // wparam: virtual-key code
    wm_sys_command = 0x112,     // wparam: command ID of a menu item
    wm_pad_down = 0x120,        // wparam: pad_input
    wm_pad_up = 0x121,
    wm_private = 0x400,
};

// In lparam of wm_key_down: what the person's layout makes of the key.
constexpr uint64_t key_of_layout = uint64_t{1} << 31; // it chooses signs of the layout, and is none itself
constexpr int key_sign_shift = 32; // from this bit on the sign that it gives, UTF-32; 0: none

// What gamepads have, all of them taken together.
enum pad_input : uint32_t {
    pad_up,
    pad_down,
    pad_left,
    pad_right,
    pad_a,
    pad_b,
    pad_x,
    pad_y,
    pad_left_shoulder,
    pad_right_shoulder,
    pad_back,
    pad_start,
    pad_inputs
};

struct size2 {
    int width, height;
};
struct point {
    int x, y;
};
struct rectangle {
    int left, top, right, bottom;
}; // right and bottom are outside

// A picture of 0x00RRGGBB pixels, rows top first.
struct picture {
    const uint32_t *pixels;
    int width, height;
};

// Drawing into the client area while it is painted.
class painter {
  public:
    virtual ~painter() = default;
    virtual void fill(const rectangle &area, uint32_t rgb) = 0;
    virtual void draw(const picture &image, int x, int y) = 0; // unscaled, clipped to the client area
};

// A small picture, as `picture`.
struct menu_picture {
    int width, height;
    std::vector<uint32_t> pixels;
};

// An item of a menu. Without a text: a line between items; with items of its own: a menu in the menu.
struct menu_item {
    enum kinds { plain, check, choice }; // choices beside each other exclude each other
    uint32_t id = 0;                     // comes back as wparam of wm_sys_command; 0: it only says something
    std::string text;                    // an & before the letter that reaches it
    std::string shortcut;                // the key that does the same; one with Alt works by itself
    bool enabled = true;
    kinds kind = plain;
    bool checked = false;
    std::vector<menu_item> items;
    std::shared_ptr<const menu_picture> shown = nullptr; // before the text; null: none
};

// A page that shows a keyboard: what is held on it, and what is clicked comes as wm_key_down and wm_key_up.
struct shown_key {
    enum kinds {
        plain,
        until_next, // clicked, it stays down until another key was clicked
        turning     // likewise until it is clicked again
    };
    uint32_t code = 0;                       // virtual key
    int x = 0, y = 0, width = 0, height = 0; // in quarters of a key
    std::string label;                       // the sign with Shift on a line of its own before the other
    std::string host;                        // the key that presses it, when it has another name
    kinds kind = plain;
};
struct keyboard_page {
    std::string title, hint;
    std::vector<shown_key> keys;
};

class host_window {
  public:
    virtual ~host_window() = default;
    // From any thread; never blocks, keeps order.
    virtual void post(uint32_t message, uint64_t wparam, uint64_t lparam) = 0;
    // Sends wm_destroy and ends the window; the object stays valid until the host is destroyed.
    virtual void destroy() = 0;
    virtual bool client_size(size2 &size) const = 0; // false when the window is gone
    virtual point client_origin() const = 0;         // on the screen, in the surfaces' pixels
    virtual void invalidate(bool erase) = 0;         // asks for a wm_paint of the whole client area
    virtual void set_focus() = 0;
    virtual painter *current_painter() = 0; // null outside wm_paint and wm_erase_background
    // The cursor's display count after the call: shown while it is 0 or above.
    virtual int show_cursor(bool show) = 0;
    virtual bool shift_down() const = 0;
    virtual void disable_input_method() = 0;
    // Frame on or off (caption, system menu). False when refused.
    virtual bool set_framed(bool framed) = 0;
    // Client area of the given size in the program's pixels, of which the screen may show each enlarged, and
    // centring on the desktop, once; both keep focus and stacking.
    virtual void resize_client(int width, int height) = 0;
    virtual void centre() = 0;
    virtual void show() = 0;
    // A message that needs no answer: a command has failed, or is done.
    virtual void notify(const std::string &text) = 0;
    virtual void bring_to_front() = 0;
    // The machine's picture as it is shown, in its own pixels: onto the clipboard, or as a PNG file (false:
    // last_file_error says why).
    virtual void copy_picture() = 0;
    virtual bool save_picture(const std::string &path) = 0;
    virtual void menus_changed() = 0; // the listener's menus() are others than at the last call
    virtual void set_view(const view_settings &settings) = 0;
    // The frame around a picture enlarged `factor` times; 0: by what suits the desktop.
    virtual void set_scale(int factor) = 0;
    virtual std::string place() const = 0; // where it stands and how large, for window_options
    // A window beside this one, which keeps the keyboard; null: none. The person may close it.
    virtual void show_keyboard(const keyboard_page *page) = 0;
    virtual bool keyboard_shown() const = 0;
    // A window of its own for a debugger, with the layout that an earlier one had; null: none.
    virtual void show_debugger(debugger_listener *listener, const std::string &layout) = 0;
    virtual void debugger_changed(bool stopped) = 0; // look again; `stopped`: and come to the front
    virtual std::string debugger_layout() const = 0; // of the one that is shown
};

// Who receives a window's messages.
class window_listener {
  public:
    virtual ~window_listener() = default;
    // The result of the message; `handled` starts true and is set false for default handling.
    virtual int64_t window_proc(host_window &window, const message &m, bool &handled) = 0;
    // Whether the release of a key is a command: such a release is only given for a press by the person,
    // never because the keyboard went elsewhere.
    virtual bool is_command_key(uint32_t virtual_key) const = 0;
    // For the page with the keyboard.
    virtual bool is_key_down(uint32_t virtual_key) const = 0;
    // A file or a folder was dropped on the window.
    virtual void dropped(const std::string &path) = 0;
    // What the menu bar holds, as things stand.
    virtual std::vector<menu_item> menus() const = 0;
};

struct window_options {
    std::string title;
    int x, y, width, height;
    std::string place = {}; // of an earlier window; empty: centred
    int scale = 0;          // the picture's first enlargement; 0: by what suits the desktop
};

// ---- dialogs -----------------------------------------------------------------------------------------

struct file_dialog_options {
    std::string title;
    std::string filter_name;
    std::vector<std::string> patterns; // "*.KIV", matched without regard to case
    std::string file_name;             // what the name field starts with
    std::string default_extension;     // without the dot
    bool confirm_overwrite = false;
    bool must_exist = false;
};

struct settings_slider {
    std::string label, unit;
    int minimum, maximum, value;
};
struct settings_check {
    std::string label;
    bool checked;
};
// The settings dialog: sliders with a number box each that mirrors them, and check boxes.
struct settings_dialog {
    std::string caption, program_line, copyright_line;
    std::vector<settings_slider> sliders;
    std::vector<settings_check> checks;
};
// A command that takes long on the window thread. It shows itself once it has taken a moment, with how far it
// has come, and is asked now and then whether the person lets it go on.
class long_work {
  public:
    virtual ~long_work() = default;
    // `part` that is done, 0 to 1; less than 0: not known.
    virtual bool goes_on(double part) = 0;
};

// An error box with more than OK to answer it with.
struct question_box {
    std::string text, caption;
    std::string detail;               // shown when it is asked for; empty: nothing to show
    std::vector<std::string> buttons; // beside OK
};
// What the inputs of gamepads press, each one of `keys`.
struct pad_dialog {
    std::string caption, use_label, found; // found: the gamepads that are there
    bool use = false;
    struct row {
        std::string label;
        size_t key;
    };
    std::vector<row> rows;
    std::vector<std::string> keys;
};
struct help_dialog {
    std::string caption, program_line, copyright_line, text;
};

// ---- display -----------------------------------------------------------------------------------------

enum class display_result { ok, still_busy, failed };

// Pixel format of a surface. `flags` is what the log shows of it.
struct surface_format {
    bool indexed8; // else 32 bits, 0x00RRGGBB
    uint32_t flags;
};
struct surface_desc {
    int width, height;
    int pitch; // bytes per line
    surface_format format;
};

class surface {
  public:
    virtual ~surface() = default;
    virtual bool describe(surface_desc &desc) = 0;
    // Locks the whole surface for drawing; `pixels` is its first pixel. Render thread.
    virtual display_result lock(void *&pixels, int &pitch) = 0;
    virtual void unlock() = 0;
    virtual void fill(const rectangle &area, uint32_t colour) = 0;
    // Only for the primary surface: the palette of 8-bit surfaces.
    virtual bool set_palette(const uint32_t *rgb256) = 0;
    // Copies `source` onto this primary surface. Window mode: to `destination` in screen coordinates, waiting
    // while the surface is busy; full screen: whole, at (0, 0). What the screen shows is always one whole
    // frame. Render thread.
    virtual display_result copy_from(surface &source, const rectangle &area, const rectangle &destination,
                                     bool full_screen) = 0;
};

enum class surface_memory { video, system };

class display {
  public:
    virtual ~display() = default;
    virtual bool set_cooperative_level(host_window &window, bool full_screen) = 0;
    virtual bool set_mode(int width, int height, int depth) = 0; // full screen only
    virtual void restore_mode() = 0;
    virtual std::unique_ptr<surface> create_primary(bool full_screen) = 0; // null: refused
    virtual std::unique_ptr<surface> create_offscreen(int width, int height, surface_memory where) = 0;
    virtual bool wait_vertical_blank(bool begin) = 0; // render thread; begin or end of it
};

// ---- sound -------------------------------------------------------------------------------------------

struct wave_format {
    uint32_t channels, sample_rate, bits;
};

// A looping buffer of 16-bit samples with play and write cursors, in bytes from its start.
class sound_stream {
  public:
    virtual ~sound_stream() = default;
    // The buffer's memory from `offset`, `bytes` long, in one part or two where it wraps.
    virtual bool lock(uint32_t offset, uint32_t bytes, void *&part1, uint32_t &bytes1, void *&part2,
                      uint32_t &bytes2) = 0;
    virtual void unlock(void *part1, uint32_t bytes1, void *part2, uint32_t bytes2) = 0;
    virtual void play() = 0; // looping, from where it stands
    virtual void stop() = 0;
    virtual bool get_position(uint32_t &play, uint32_t &write) = 0;
    // What is written is played at this part of its rate, in per cent, 25 to 400; 100 at first.
    virtual void set_speed(uint32_t percent) = 0;
};

class primary_sound_buffer {
  public:
    virtual ~primary_sound_buffer() = default;
    virtual uint32_t size() const = 0;                  // bytes, of the device's own buffer; for the log
    virtual void set_volume(int32_t hundredths_db) = 0; // -10000 to 0
    // As the device reports it: 100 above what was set. Callers take one decibel off the whole decibels that
    // are reported, so a volume read and set again stays what it was, for every decibel from -100 to 0.
    virtual int32_t get_volume() const = 0;
};

class sound_device {
  public:
    virtual ~sound_device() = default;
    virtual void open() = 0;                    // also where there is no device: the sound is then not heard
    virtual void set_loudness(int percent) = 0; // 0 to 100, beside the volume
    virtual void close() = 0;
    virtual std::unique_ptr<primary_sound_buffer> create_primary() = 0;
    virtual std::unique_ptr<sound_stream> create_stream(uint32_t bytes, const wave_format &format) = 0;
};

// ---- the host ----------------------------------------------------------------------------------------

class host {
  public:
    virtual ~host() = default;
    virtual void begin_timer_resolution(uint32_t milliseconds) = 0;
    virtual void end_timer_resolution(uint32_t milliseconds) = 0;
    virtual host_window *create_window(const window_options &options,
                                       window_listener &listener) = 0; // null: refused
    virtual int run_message_loop() = 0;                                // until post_quit; its code
    virtual void post_quit(int code) = 0;
    // Calls `tick` on the window thread every so many milliseconds until it returns false.
    virtual void every(uint32_t milliseconds, std::function<bool()> tick) = 0;
    virtual std::string clipboard_text() const = 0;
    virtual void copy_text(const std::string &text) = 0; // onto the clipboard
    virtual std::string pictures_folder() const = 0;     // of the person's; empty: none
    virtual std::string music_folder() const = 0;
    virtual std::string movies_folder() const = 0;
    // Gamepads come as wm_pad_down and wm_pad_up, while a window of ours is the active one.
    virtual void use_gamepads(bool on) = 0;
    virtual std::vector<std::string> gamepads() const = 0; // that are there; none while they are not in use
    virtual void set_language(language which) = 0;         // of texts, and of the host's own
    // Calls `ready` on the window thread whenever something can be read from a descriptor; null: no more.
    virtual void watch(int descriptor, std::function<void()> ready) = 0;

    // Shows an OK box with the stop icon and waits for it; owner may be null.
    virtual void error_box(host_window *owner, const std::string &text, const std::string &caption) = 0;
    // The button pressed, from 1 on; 0: OK, or closed.
    virtual int ask(host_window *owner, const question_box &box) = 0;
    virtual bool choose_folder(host_window &owner, const std::string &title, std::string &path) = 0;
    // A chosen path, or false when the person cancelled.
    virtual bool open_file(host_window &owner, const file_dialog_options &options, std::string &path) = 0;
    virtual bool save_file(host_window &owner, const file_dialog_options &options, std::string &path) = 0;
    // True: OK, and the dialog's values are the ones chosen. False: cancelled, values unchanged.
    virtual bool settings(host_window &owner, settings_dialog &dialog) = 0;
    virtual bool pads(host_window &owner, pad_dialog &dialog) = 0; // likewise
    virtual void help(host_window &owner, const help_dialog &dialog) = 0;
    // While it exists, as with a dialog, posted messages wait.
    virtual std::unique_ptr<long_work> begin_work(host_window &owner, const std::string &text) = 0;

    virtual display &get_display() = 0;
    virtual sound_device &get_sound() = 0;
};

} // namespace platform

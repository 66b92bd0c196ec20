// The main window and everything a person can ask of the program: keys, commands, dialogs, activation, full
// screen, and the orderly stop. Its boot is in kiv_boot.cpp, its settings in kiv_settings.cpp.
//
// Everything here runs on the window thread, except `post`. The machine and the CPU are touched only while
// the CPU thread is parked.
#pragma once

#include "api/typing.h"
#include "app/character_keys.h"
#include "app/command_line.h"
#include "app/frame_history.h"
#include "app/recording.h"
#include "app/settings_file.h"
#include "app/user_settings.h"
#include "platform/event.h"
#include "platform/host.h"
#include "support/kel_dib.h"
#include "support/main_window.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The window's own messages, besides WM_Z80ABORT.
enum form_message : uint32_t {
    WM_Z80START = platform::wm_private + 1,      // from the boot: start the emulation
    WM_RECORDED = platform::wm_private + 3,      // from a recording's thread: it has ended
    WM_TAPE_FAULT = platform::wm_private + 5,    // from whoever wrote to the tape output: it failed
    WM_DEBUG_STOPPED = platform::wm_private + 4, // from the debugger on the CPU thread: the machine stands
};

enum form_menu_item : uint32_t {
    menu_settings = 1,
    menu_about = 2,
    menu_open = 16,
    menu_reset,
    menu_pause,
    menu_quit,
    menu_rom_folder,
    menu_save_dump,
    menu_paste,
    menu_state_quick_save,
    menu_state_quick_load,
    menu_state_undo,
    menu_state_save_file,
    menu_state_load_file,
    menu_copy_text,
    menu_copy_picture,
    menu_screenshot,
    menu_tape_play,
    menu_tape_stop,
    menu_tape_rewind,
    menu_tape_eject,
    menu_tape_output,
    menu_full_screen,
    menu_four_thirds,
    menu_whole_factors,
    menu_messages,
    menu_status,
    menu_pcg,
    menu_sound,
    menu_halt_waits,
    menu_steps_over,
    menu_back_deletes,
    menu_by_character,
    menu_keyboard,
    menu_pads,
    menu_louder,
    menu_quieter,
    menu_record_sound,
    menu_record_video,
    menu_fast_forward,
    menu_frame_forth,
    menu_frame_back,
    menu_rewind,
    menu_fast_tape,
    menu_debugger,
    // The first of a row each.
    menu_recent = 0x100,
    menu_scale = 0x110,
    menu_look = 0x120,
    menu_language = 0x130,
    menu_state_save = 0x140,
    menu_state_load = 0x150,
    menu_speed = 0x160,
    menu_run_ahead = 0x170,
};

constexpr size_t path_limit = 512; // bytes of a path with its closing 0

class debug_session;

class kiv_form final : public main_window, public platform::window_listener {
  public:
    explicit kiv_form(platform::host &host, const program_options &options = {});
    ~kiv_form() override;
    kiv_form(const kiv_form &) = delete;
    kiv_form &operator=(const kiv_form &) = delete;

    // Creates the window, with the program's version in its title. 1, or 0 when the host refuses.
    virtual int create(const std::string &title, int x, int y, int width, int height);
    // Posts a message to the own window; from any thread.
    void post(uint32_t message, uint64_t wparam, uint64_t lparam) override;
    // Boots the machine and posts WM_Z80START. 1, or 0 after a failure that it has shown or logged.
    virtual int initialize();
    int64_t window_proc(platform::host_window &from, const platform::message &m, bool &handled) override;
    bool is_command_key(uint32_t virtual_key) const override;
    bool is_key_down(uint32_t virtual_key) const override;
    std::vector<platform::menu_item> menus() const override;
    void dropped(const std::string &path) override;
    void come_to_front(); // another copy was started
    virtual void OnAppActivate(int active);
    virtual void on_paint();
    virtual void draw_pause_picture(platform::painter &painter);
    virtual int erase_background(platform::painter *painter); // 1, or 0 without a client area
    virtual void key_down(uint32_t virtual_key);
    virtual void key_up(uint32_t virtual_key);
    virtual void show_cursor();
    virtual void hide_cursor();
    virtual void show_cursor_if_full_screen();
    virtual void hide_cursor_if_full_screen();

    // The frame off, when full screen begins; the frame on and the client area of that size, in a window.
    void set_full_screen_style(int width, int height) override;
    void set_window_style(int width, int height) override;

    uint16_t debugger_port() const; // of --gdb; 0: nobody may come

  private:
    int64_t dispatch(const platform::message &m, bool &handled);
    void key_released(uint32_t virtual_key);
    void key_pressed(uint32_t virtual_key, uint64_t lparam);
    void machine_key_pressed(uint32_t virtual_key, uint64_t lparam);
    void machine_key_released(uint32_t virtual_key);
    void toggle_keys_by_character();
    void release_keys();
    void toggle_keyboard();
    void show_keyboard();
    void pad_changed(uint32_t input, bool down);
    void pads_command();

    // Commands.
    void start_emulation();
    void exit();
    void close_command();
    void toggle_status();
    void toggle_sound();
    void toggle_pcg_glyphs();
    void reset_machine();
    void change_screen();
    void save_dump();
    void open_file();
    void select_tape_output();
    void settings_command();
    void about_command();
    void on_z80_abort(uint32_t address, uint32_t reason);
    void reactivate();

    struct key_command;
    static const key_command key_commands[];
    static const key_command *command_of(uint32_t virtual_key);

    // Menus.
    struct menu_command;
    static const menu_command menu_commands[];
    bool run_menu_command(uint32_t id); // false: no item of ours
    std::vector<platform::menu_item> machine_menu() const;
    std::vector<platform::menu_item> edit_menu() const;
    std::vector<platform::menu_item> tape_menu() const;
    std::vector<platform::menu_item> view_menu() const;
    std::vector<platform::menu_item> settings_menu() const;
    enum tape_action { tape_play, tape_stop, tape_rewind, tape_eject };
    void tape_command(tape_action action);
    void tape_output_failed();
    void toggle_pause();
    void copy_text();

    // States.
    static std::string state_path(uint32_t slot); // 0 to 9
    static std::string state_time(uint32_t slot);
    static constexpr uint32_t state_slots = 10;
    std::shared_ptr<const platform::menu_picture> state_picture(uint32_t slot) const;
    void save_state(uint32_t slot);
    void load_state(uint32_t slot);
    void save_state_file(const std::string &path, const std::string &name);
    bool load_state_file(const std::string &path, const std::string &name);
    std::string put_state(const std::vector<uint8_t> &bytes);
    void undo_load();
    void choose_state_file(bool saving);
    std::vector<platform::menu_item> state_menu() const;

    // Sound and recordings.
    static std::string dated_path(const std::string &folder, const char *extension);
    void change_volume(int by);
    bool is_recording(recording::kind what) const;
    void toggle_recording(recording::kind what);
    void end_recording();
    void recorded();
    std::vector<platform::menu_item> sound_menu() const;

    // Time.
    static constexpr size_t speed_count = 8;
    static const uint32_t speeds[speed_count];
    void choose_speed(uint32_t percent);
    void apply_speed();
    void toggle_fast_forward();
    void step_time(bool back);
    void begin_rewind();
    bool rewind_to(uint64_t stamp); // false: there is no more
    void end_rewind();
    void toggle_rewind();
    bool time_key(uint32_t virtual_key, bool down);

    // Debugger.
    class debugger;
    friend class debugger;
    void toggle_debugger();
    void open_debugger();
    void close_debugger();
    // Does something to the keys: now, or where a debugger runs the machine, between two of its passes.
    void at_machine(std::function<void()> change);
    void machine_changed(bool another = false); // for the debugger, that somebody else has changed it
    void resume_held();
    class wire_debugger;
    friend class wire_debugger;
    void open_wire();
    bool wire_refuses();            // true: a debugger on the wire has the machine, and the person is told
    debug_session *session() const; // who runs the machine for a debugger; null: none

    // Text and files.
    void paste();
    void type_text(const std::string &text);
    bool type_on();
    bool stops_typing(uint32_t virtual_key);
    void use_file(const std::string &path);
    void use_file_of_command_line();
    void use_rom_folder(const std::string &folder);
    void copy_picture();
    void screenshot();
    void open_recent(uint32_t n);
    bool load_file(const std::string &path);
    void choose(user_setting which, int value);
    void flip(user_setting which);
    void apply_user_settings();
    void apply_language();
    void save_user_settings();

    class dialog_scope;  // around every dialog: the CPU thread parked
    class pause_scope;   // the same, for what needs no dialog
    int pause_machine(); // z80_thread's pause, then the buffered tape output
    // Something that the person should know and need not answer: what is done, unless the person wants no
    // messages; and what has failed, in any case.
    void notify(const std::string &text);
    void tell_fault(const std::string &text);
    void tell_saved(bool saved, const std::string &path, const std::string &name); // false: last_file_error
    bool refuse_long_path(const char *command, const std::string &path);

    // Boot.
    int load_roms();
    int load_roms_or_ask();
    int load_settings_or_ask();
    std::string rom_folder_of_start() const;
    void choose_rom_folder();
    bool lenient(user_setting which) const;
    int load_picture();
    int load_font();
    void remap_cursor_keys();

    // Settings.
    int load_settings_file();
    void read_settings(const char *section);
    int write_settings(const char *section);
    platform::settings_dialog make_settings_dialog() const;
    void take_settings_dialog(const platform::settings_dialog &dialog);
    void apply_settings();
    void apply_volumes();

    platform::host &host;
    platform::host_window *window = nullptr; // kept when it is destroyed: other threads may still post
    bool attached = false;                   // the window's messages come here
    bool in_dialog = false;                  // a dialog_scope lives
    bool session_ends = false;               // a log-off came meanwhile
    kel_dib pause_picture;
    std::vector<uint32_t> pause_pixels; // the pause picture as 0x00RRGGBB, rows top first
    setting_values settings{};
    program_options options;
    user_settings own;
    std::string rom_folder;           // the images come from there; empty: the current directory
    bool keeps_settings = true;       // KIV.INI can be written
    std::string settings_fault;       // why not
    uint32_t state_slot = 1;          // last saved to or loaded from
    std::vector<uint8_t> before_load; // what the last load threw away
    struct shown_state {
        int64_t saved_at = 0; // nanoseconds
        std::shared_ptr<const platform::menu_picture> picture;
    };
    mutable std::array<shown_state, state_slots> shown_states; // as last read for the menu
    typist typing;
    uint32_t typing_total = 0;
    bool typing_ticks = false;
    bool held = false; // paused by the person
    character_keys by_character;
    std::array<uint32_t, platform::pad_inputs> pad_keys_down{}; // virtual keys; 0: none
    std::mutex tape_fault_mutex;
    std::string tape_fault; // of its output, as last told
    std::mutex recording_mutex;
    std::string recording_fault;                // of the one that has ended; empty: none
    std::unique_ptr<recording> recorder;        // null: none is made
    std::map<uint64_t, std::string> tape_names; // by checksum, of all that were put in
    std::string tape_name;                      // of the tape that is in; empty: none
    uint64_t shifted_presses = 0;               // key_commands, by index: pressed with Shift
    frame_history history;
    uint32_t speed = 100;                // per cent
    bool fast_forward = false;           // switched on, and
    bool fast_key = false;               // for as long as its key is down
    std::unique_ptr<debugger> debugging; // null: no debugger
    std::unique_ptr<wire_debugger> wire; // null: none may come
    bool rewinding = false, held_before_rewind = false;
    uint64_t rewinds = 0;
    std::string ini_path;
    int deactivated = 0; // 1: paused because full screen lost activation
    platform::event sync_event, ack_event;
    platform::critical_section video_section;
};

// The desktop: a window, dialogs and presentation by Qt, sound by SDL. One object a process, made before
// anything else of the host and destroyed last.
#pragma once

#include "platform/desktop/desktop_sound.h"
#include "platform/host.h"

namespace platform {

class desktop_host : public host {
  public:
    // Why there is no desktop to show a window on, as a line for the person; empty: there is one. To be asked
    // before the object is made, which ends the process when the desktop cannot be reached.
    static std::string missing();

    desktop_host();
    ~desktop_host() override;
    desktop_host(const desktop_host &) = delete;
    desktop_host &operator=(const desktop_host &) = delete;

    // One size of the program's icon, 0xAARRGGBB; call it for each size, before windows are made.
    void add_icon(const picture &of_one_size);

    void begin_timer_resolution(uint32_t milliseconds) override;
    void end_timer_resolution(uint32_t milliseconds) override;
    host_window *create_window(const window_options &options, window_listener &listener) override;
    int run_message_loop() override;
    void post_quit(int code) override;
    void every(uint32_t milliseconds, std::function<bool()> tick) override;
    std::string clipboard_text() const override;
    void copy_text(const std::string &text) override;
    std::string pictures_folder() const override;
    std::string music_folder() const override;
    std::string movies_folder() const override;
    void use_gamepads(bool on) override;
    std::vector<std::string> gamepads() const override;
    void set_language(language which) override;
    void watch(int descriptor, std::function<void()> ready) override;

    void error_box(host_window *owner, const std::string &text, const std::string &caption) override;
    int ask(host_window *owner, const question_box &box) override;
    bool choose_folder(host_window &owner, const std::string &title, std::string &path) override;
    bool open_file(host_window &owner, const file_dialog_options &options, std::string &path) override;
    bool save_file(host_window &owner, const file_dialog_options &options, std::string &path) override;
    bool settings(host_window &owner, settings_dialog &dialog) override;
    bool pads(host_window &owner, pad_dialog &dialog) override;
    void help(host_window &owner, const help_dialog &dialog) override;
    std::unique_ptr<long_work> begin_work(host_window &owner, const std::string &text) override;

    display &get_display() override;
    sound_device &get_sound() override;

  private:
    struct parts;
    class dialog_scope;
    std::unique_ptr<parts> p;
};

} // namespace platform

// The host in memory: no desktop, no devices, everything that a person would do is scripted, everything that
// a person would notice can be looked at, and every call that can fail can be made to. Real threads run the
// program on it; all that they share is locked, and the test may look and act from any thread.
#pragma once

#include "platform/host.h"
#include "tests/headless/fault_plan.h"
#include "tests/headless/headless_display.h"
#include "tests/headless/headless_sound.h"
#include "tests/headless/headless_window.h"
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace platform {

// What a person does when a dialog comes up. Called on the window thread, after the window behind it has been
// painted. Without one, a box is confirmed at once and a dialog is cancelled.
struct headless_script {
    std::function<void(const std::string &text, const std::string &caption)> error_box;
    std::function<int(const question_box &box)> ask; // without one: OK
    std::function<bool(std::string &path)> choose_folder;
    std::function<bool(const file_dialog_options &options, std::string &path)> open_file, save_file;
    std::function<bool(settings_dialog &dialog)> settings;
    std::function<bool(pad_dialog &dialog)> pads;
    std::function<void(const help_dialog &dialog)> help;
    std::function<bool(double part)> work; // without one it goes on
};

struct shown_error_box {
    std::string text, caption;
    bool has_owner;
};

// What has been shown so far.
struct dialog_record {
    std::vector<shown_error_box> error_boxes;
    std::vector<question_box> questions; // also among the error boxes
    std::vector<file_dialog_options> open_files, save_files;
    std::vector<settings_dialog> settings; // as they came up
    std::vector<help_dialog> helps;
    std::vector<pad_dialog> pads;
    std::vector<int> folders;
};

class headless_host : public host, public message_sink {
  public:
    headless_host();
    ~headless_host() override;

    fault_plan faults;
    headless_display screen{faults};
    headless_sound sound{faults};

    // ---- for the test; from any thread ----
    void set_script(headless_script what_a_person_does);
    dialog_record dialogs() const;
    bool in_dialog() const;
    // The program's window, once it was made; null before.
    headless_window *window() const;
    // Runs `f` on the window thread, between two messages, and waits for that. False: the message loop did
    // not come to it in time (then it never will).
    bool run_on_window_thread(std::function<void()> f, uint32_t milliseconds = 10'000);
    int timer_resolutions() const; // begun and not yet ended

    // Window thread: hands out the messages that wait and paints, without waiting for more. For tests that
    // run no loop.
    void pump();

    // ---- for the program ----
    void begin_timer_resolution(uint32_t milliseconds) override;
    void end_timer_resolution(uint32_t milliseconds) override;
    host_window *create_window(const window_options &options, window_listener &listener) override;
    int run_message_loop() override;
    void post_quit(int code) override;
    void every(uint32_t milliseconds, std::function<bool()> tick) override;
    std::string clipboard_text() const override { return copied(); }
    void copy_text(const std::string &text) override;
    std::string copied() const; // last onto the clipboard
    std::string pictures_folder() const override { return "pictures"; }
    std::string music_folder() const override { return "music"; }
    std::string movies_folder() const override { return "movies"; }
    void use_gamepads(bool on) override { pads_used = on; }
    std::vector<std::string> gamepads() const override { return {}; }
    std::atomic<bool> pads_used{false};
    void set_language(language which) override { chosen_language = which; }
    std::atomic<language> chosen_language{};
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
    display &get_display() override { return screen; }
    sound_device &get_sound() override { return sound; }

  private:
    void put(std::function<void()> deliver) override;
    void wake() override;
    bool deliver_one();
    bool paint();
    class dialog_scope;
    template <class T, class F> F note(std::vector<T> &list, const T &dialog, const F &answer);

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> queue;
    bool paint_asked = false;
    bool quit = false;
    std::atomic<bool> ended{false}; // the message loop
    int quit_code = 0;
    headless_script script;
    dialog_record shown;
    std::string clipboard;
    int dialogs_open = 0;
    int resolutions = 0;
    std::vector<std::unique_ptr<headless_window>> windows;
    std::vector<std::jthread> watchers; // end first
    std::map<int, std::jthread> watched;
};

} // namespace platform

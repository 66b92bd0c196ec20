#include "tests/headless/headless_host.h"

#include <chrono>
#include <poll.h>

namespace platform {

headless_host::headless_host() = default;

headless_host::~headless_host() = default;

// ---- messages ----------------------------------------------------------------------------------------

void headless_host::put(std::function<void()> deliver) {
    const std::lock_guard lock(mutex);
    queue.push_back(std::move(deliver));
    changed.notify_all();
}

void headless_host::wake() {
    const std::lock_guard lock(mutex);
    paint_asked = true;
    changed.notify_all();
}

bool headless_host::deliver_one() {
    std::function<void()> deliver;
    {
        const std::lock_guard lock(mutex);
        if (queue.empty()) return false;
        deliver = std::move(queue.front());
        queue.pop_front();
    }
    deliver();
    return true;
}

bool headless_host::paint() {
    std::vector<headless_window *> all;
    {
        const std::lock_guard lock(mutex);
        paint_asked = false;
        for (const auto &w : windows) all.push_back(w.get());
    }
    bool painted = false;
    for (headless_window *w : all) painted |= w->paint_if_wanted();
    return painted;
}

void headless_host::pump() {
    while (deliver_one() || paint()) {
    }
}

// Painting waits until no message does, and a quit comes after all messages that were posted before it.
int headless_host::run_message_loop() {
    ended = false;
    for (;;) {
        if (deliver_one()) continue;
        std::unique_lock lock(mutex);
        if (!queue.empty()) continue;
        if (quit) {
            quit = false;
            ended = true;
            return quit_code;
        }
        if (paint_asked) {
            lock.unlock();
            paint();
            continue;
        }
        changed.wait(lock, [&] { return !queue.empty() || quit || paint_asked; });
    }
}

void headless_host::post_quit(int code) {
    const std::lock_guard lock(mutex);
    quit = true;
    quit_code = code;
    changed.notify_all();
}

bool headless_host::run_on_window_thread(std::function<void()> f, uint32_t milliseconds) {
    struct call {
        std::mutex mutex;
        std::condition_variable changed;
        enum { waiting, begun, done, given_up } state = waiting;
    };
    auto c = std::make_shared<call>();
    put([c, f = std::move(f)] {
        {
            const std::lock_guard lock(c->mutex);
            if (c->state == call::given_up) return;
            c->state = call::begun;
        }
        f();
        const std::lock_guard lock(c->mutex);
        c->state = call::done;
        c->changed.notify_all();
    });
    std::unique_lock lock(c->mutex);
    c->changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                        [&] { return c->state == call::done; });
    // Once begun it uses what the caller holds, however long it takes.
    if (c->state == call::begun) c->changed.wait(lock, [&] { return c->state == call::done; });
    if (c->state == call::waiting) c->state = call::given_up;
    return c->state == call::done;
}

// ---- set-up ------------------------------------------------------------------------------------------

void headless_host::begin_timer_resolution(uint32_t) {
    const std::lock_guard lock(mutex);
    resolutions++;
}

void headless_host::end_timer_resolution(uint32_t) {
    const std::lock_guard lock(mutex);
    resolutions--;
}

int headless_host::timer_resolutions() const {
    const std::lock_guard lock(mutex);
    return resolutions;
}

host_window *headless_host::create_window(const window_options &options, window_listener &listener) {
    if (options.width <= 0 || options.height <= 0 || faults.take(fault::create_window)) return nullptr;
    auto made = std::make_unique<headless_window>(options, listener, *this, screen, faults);
    const std::lock_guard lock(mutex);
    windows.push_back(std::move(made));
    return windows.back().get();
}

headless_window *headless_host::window() const {
    const std::lock_guard lock(mutex);
    return windows.empty() ? nullptr : windows.back().get();
}

// ---- dialogs -----------------------------------------------------------------------------------------

void headless_host::set_script(headless_script what_a_person_does) {
    const std::lock_guard lock(mutex);
    script = std::move(what_a_person_does);
}

dialog_record headless_host::dialogs() const {
    const std::lock_guard lock(mutex);
    return shown;
}

bool headless_host::in_dialog() const {
    const std::lock_guard lock(mutex);
    return dialogs_open != 0;
}

// Messages wait while a dialog is up; what is behind it is painted.
class headless_host::dialog_scope {
  public:
    explicit dialog_scope(headless_host &on) : host(on) {
        host.paint();
        const std::lock_guard lock(host.mutex);
        host.dialogs_open++;
    }
    ~dialog_scope() {
        const std::lock_guard lock(host.mutex);
        host.dialogs_open--;
    }
    dialog_scope(const dialog_scope &) = delete;
    dialog_scope &operator=(const dialog_scope &) = delete;

  private:
    headless_host &host;
};

// Puts the dialog on record; what the script answers to it, to be asked without the lock.
template <class T, class F> F headless_host::note(std::vector<T> &list, const T &dialog, const F &answer) {
    const std::lock_guard lock(mutex);
    list.push_back(dialog);
    return answer;
}

void headless_host::error_box(host_window *owner, const std::string &text, const std::string &caption) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.error_boxes, {text, caption, owner != nullptr}, script.error_box);
    if (answer) answer(text, caption);
}

void headless_host::every(uint32_t milliseconds, std::function<bool()> tick) {
    watchers.emplace_back([this, milliseconds, tick = std::move(tick)](const std::stop_token &stop) {
        bool wanted = true;
        while (wanted && !stop.stop_requested()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            while (!run_on_window_thread([&] { wanted = tick(); }, 100))
                if (ended || stop.stop_requested()) return;
        }
    });
}

void headless_host::copy_text(const std::string &text) {
    const std::lock_guard lock(mutex);
    clipboard = text;
}

std::string headless_host::copied() const {
    const std::lock_guard lock(mutex);
    return clipboard;
}

int headless_host::ask(host_window *owner, const question_box &box) {
    const dialog_scope scope(*this);
    note(shown.error_boxes, {box.text, box.caption, owner != nullptr}, 0);
    const auto answer = note(shown.questions, box, script.ask);
    return answer ? answer(box) : 0;
}

bool headless_host::choose_folder(host_window &, const std::string &, std::string &path) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.folders, 0, script.choose_folder);
    std::string chosen = path;
    if (!answer || !answer(chosen)) return false;
    path = chosen;
    return true;
}

// By a thread that waits for it and puts a message into the loop.
void headless_host::watch(int descriptor, std::function<void()> ready) {
    if (const auto old = watched.find(descriptor); old != watched.end()) {
        old->second.request_stop();
        watchers.push_back(std::move(old->second)); // it may be what calls
        watched.erase(old);
    }
    if (!ready) return;
    watched[descriptor] =
        std::jthread([this, descriptor, ready = std::move(ready)](const std::stop_token &stop) {
            while (!stop.stop_requested()) {
                pollfd look{descriptor, POLLIN, 0};
                if (poll(&look, 1, 20) > 0) run_on_window_thread(ready, 100);
            }
        });
}

bool headless_host::open_file(host_window &, const file_dialog_options &options, std::string &path) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.open_files, options, script.open_file);
    return answer && answer(options, path);
}

bool headless_host::save_file(host_window &, const file_dialog_options &options, std::string &path) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.save_files, options, script.save_file);
    return answer && answer(options, path);
}

bool headless_host::settings(host_window &, settings_dialog &values) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.settings, values, script.settings);
    settings_dialog chosen = values;
    if (!answer || !answer(chosen)) return false;
    values = chosen;
    return true;
}

bool headless_host::pads(host_window &, pad_dialog &values) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.pads, values, script.pads);
    pad_dialog chosen = values;
    if (!answer || !answer(chosen)) return false;
    values = chosen;
    return true;
}

void headless_host::help(host_window &, const help_dialog &text) {
    const dialog_scope scope(*this);
    const auto answer = note(shown.helps, text, script.help);
    if (answer) answer(text);
}

std::unique_ptr<long_work> headless_host::begin_work(host_window &, const std::string &) {
    struct work final : long_work {
        std::function<bool(double)> answer;
        bool goes_on(double part) override { return !answer || answer(part); }
    };
    auto made = std::make_unique<work>();
    const std::lock_guard lock(mutex);
    made->answer = script.work;
    return made;
}

} // namespace platform

#include "app/kiv_assay.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace {

constexpr size_t line_size = 1024;
constexpr int emulated_lines_per_second = 100;

std::atomic<trace_listener> listener{nullptr};

// -1: lines are dropped.
int trace_target() {
    static const int target = [] {
        const char *name = std::getenv("KIV_TRACE");
        if (name == nullptr || *name == '\0') return -1;
        if (std::strcmp(name, "-") == 0) return STDERR_FILENO;
        return open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0644);
    }();
    return target;
}

// Writes what a stopped or closed reader takes at once and drops the rest. A pipe whose reader is gone
// would end the process by SIGPIPE; poll tells before.
void write_without_blocking(int target, const char *text, size_t size) {
    pollfd p{target, POLLOUT, 0};
    if (poll(&p, 1, 0) != 1 || (p.revents & (POLLERR | POLLHUP | POLLNVAL)) || !(p.revents & POLLOUT)) return;
    [[maybe_unused]] const ssize_t written = write(target, text, size);
}

void hear_line(const char *text) {
    const int target = trace_target();
    if (const trace_listener hears = listener.load()) hears(text);
    if (target < 0) return;
    char line[line_size + 1];
    const size_t size = std::min(std::strlen(text), line_size);
    std::copy_n(text, size, line);
    line[size] = '\n';
    write_without_blocking(target, line, size + 1);
}

// A hundred lines a second pass; the first one of a later second says how many did not.
struct line_limiter {
    std::mutex mutex;
    std::string pending;
    std::chrono::steady_clock::time_point second_start{};
    int passed = 0;
    uint64_t left_out = 0;

    void line(const std::string &text) {
        const auto now = std::chrono::steady_clock::now();
        if (now - second_start >= std::chrono::seconds(1)) {
            if (left_out != 0) {
                std::string note = "(";
                note += std::to_string(left_out) + " lines left out)\n";
                write_without_blocking(STDERR_FILENO, note.data(), note.size());
            }
            second_start = now;
            passed = 0;
            left_out = 0;
        }
        if (passed >= emulated_lines_per_second) {
            ++left_out;
            return;
        }
        ++passed;
        write_without_blocking(STDERR_FILENO, text.data(), text.size());
    }

    void add(const char *text) {
        const std::lock_guard lock(mutex);
        pending += text;
        size_t end;
        while ((end = pending.find('\n')) != std::string::npos) {
            line(pending.substr(0, end + 1));
            pending.erase(0, end + 1);
        }
        if (pending.size() > 4 * line_size) pending.clear(); // a program that never ends its line
    }
};

} // namespace

void hear_log() {
    set_log_sink([](log_kind kind, const char *text) {
        static line_limiter limiter;
        if (kind == log_kind::line)
            hear_line(text);
        else
            limiter.add(text);
    });
}

kiv_assay::kiv_assay() { hear_log(); }
kiv_assay::~kiv_assay() = default;

void kiv_assay::trace(const char *format, ...) {
    char line[line_size];
    va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(line, sizeof line, format, arguments) >= 0) hear_line(line);
    va_end(arguments);
}

void set_trace_listener(trace_listener hears) {
    listener.store(hears);
    hear_log();
}

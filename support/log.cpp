#include "support/log.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace {

constexpr size_t line_size = 1024;

// Set while the program starts, read by every thread.
log_sink current_sink = nullptr;

bool lines_held = false;

void report(log_kind kind, const char *format, va_list arguments) {
    const log_sink sink = __atomic_load_n(&current_sink, __ATOMIC_RELAXED);
    if (sink == nullptr) return;
    char line[line_size];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): its callers began the list
    if (std::vsnprintf(line, sizeof line, format, arguments) >= 0) sink(kind, line);
}

} // namespace

void trace(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    report(log_kind::line, format, arguments);
    va_end(arguments);
}

void emulated_line(const char *format, ...) {
    if (__atomic_load_n(&lines_held, __ATOMIC_RELAXED)) return;
    va_list arguments;
    va_start(arguments, format);
    report(log_kind::device, format, arguments);
    va_end(arguments);
}

void hold_emulated_lines(bool held) { __atomic_store_n(&lines_held, held, __ATOMIC_RELAXED); }

void set_log_sink(log_sink sink) { __atomic_store_n(&current_sink, sink, __ATOMIC_RELAXED); }

// Where the machine's lines go: whoever holds it hears them through one function, and without one they are
// dropped. Depends on nothing, so that everything may report here.
#pragma once

// A line of the emulator, formatted into 1024 bytes and cut where it is longer.
void trace(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Text of the emulated devices, at the emulated program's pace (CRT controller state, DMA under-run). A line
// may come in several parts; line ends are part of the text.
void emulated_line(const char *format, ...) __attribute__((format(printf, 1, 2)));

// On the thread that runs the machine: what its devices say is dropped (true), as it will be said again.
void hold_emulated_lines(bool held);

enum class log_kind { line, device };
using log_sink = void (*)(log_kind kind, const char *text);

// Called on the thread that reports. Null: nobody hears.
void set_log_sink(log_sink sink);

// The log sink. Depends on nothing, so that everything may report through it.
//
// A line is formatted into 1024 bytes (longer ones are cut) and dropped, unless the environment variable
// KIV_TRACE names a file, or is "-" for the standard error stream, or a listener is installed.
#pragma once

class kiv_assay {
  public:
    kiv_assay();
    virtual ~kiv_assay();
    kiv_assay(const kiv_assay &) = delete;
    kiv_assay &operator=(const kiv_assay &) = delete;
    // printf-style; from any thread.
    virtual void trace(const char *format, ...) __attribute__((format(printf, 2, 3)));
};

// The same line, whether or not the sink object exists yet: what devices and libraries call.
void trace(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Who hears the lines besides the KIV_TRACE target; null: nobody. Called on the thread that reports.
using trace_listener = void (*)(const char *line);
void set_trace_listener(trace_listener listener);

// Lines for the standard error stream that come at the emulated program's pace (CRT controller state,
// DMA under-run): no more than a hundred a second, then one line that says how many were left out. Text
// without a line end is collected until the line is whole. Never blocks.
void emulated_line(const char *format, ...) __attribute__((format(printf, 1, 2)));

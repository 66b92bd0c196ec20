// The program's log sink: what becomes of the lines of support/log.h on a host.
//
// Lines are dropped unless the environment variable KIV_TRACE names a file, or is "-" for the standard error
// stream, or a listener is installed. What the emulated devices say goes to the standard error stream: no
// more than a hundred lines a second, then one line that says how many were left out; text without a line end
// is collected until the line is whole. Never blocks.
#pragma once

#include "support/log.h"

class kiv_assay {
  public:
    kiv_assay(); // from here on the sink hears
    virtual ~kiv_assay();
    kiv_assay(const kiv_assay &) = delete;
    kiv_assay &operator=(const kiv_assay &) = delete;
    // printf-style; from any thread.
    virtual void trace(const char *format, ...) __attribute__((format(printf, 2, 3)));
};

// The sink hears also without the object: what tools call first thing.
void hear_log();

// Who hears the lines besides the KIV_TRACE target; null: nobody. Called on the thread that reports.
using trace_listener = void (*)(const char *line);
void set_trace_listener(trace_listener listener);

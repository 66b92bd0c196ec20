// Tapes in files: an image into the deck, and what the machine writes appended to a file. Only while the CPU
// is parked.
#pragma once

#include "support/tape_writer.h"
#include <string>

// Loads a tape image; true on success. A file that cannot be opened leaves the old image.
bool cassette_load_tape(const std::string &path);

// Chooses the file to which written bytes are appended; empty: they are dropped. False, and nothing changed,
// when the path does not fit.
bool cassette_set_output(const std::string &path);

// Hands written bytes to a function instead, in blocks; `name` is what a log line calls it.
void cassette_set_output(tape_writer::sink sink, const std::string &name);

// After a write that failed nothing more is written until an output is chosen again; the log and the listener
// are told once.
const std::string &cassette_output_failure(); // its reason; empty while all is well
void cassette_on_output_failure(tape_writer::failure_listener listener); // called on the thread that flushes

// What is fuzzed: each reader of foreign bytes, fed with one input. A target returns 0; a fault is the
// sanitizer's to report.
//
// tests/fuzz/run builds one libFuzzer program a target; the replay test runs the corpus and a fixed number
// of its own mutations through the same functions in every build.
#pragma once

#include "tests/temporary_folder.h"
#include <cstddef>
#include <cstdint>

// The input as a file, in a folder that goes with the process; its path.
inline std::string put_input(const char *name, const uint8_t *data, size_t size) {
    static const temporary_folder folder;
    put_file(folder / name, {reinterpret_cast<const char *>(data), size});
    return folder / name;
}

int fuzz_tape(const uint8_t *data, size_t size);     // a tape image, read by every way a program can
int fuzz_dump(const uint8_t *data, size_t size);     // a memory dump, then ten frames of it running
int fuzz_settings(const uint8_t *data, size_t size); // a settings file, read, written, read again
int fuzz_bitmap(const uint8_t *data, size_t size);   // a bitmap, as a file and as a resource
int fuzz_snapshot(const uint8_t *data, size_t size); // a snapshot spoilt as the input says
int fuzz_program(const uint8_t *data, size_t size);  // port writes in any order, then a program, then frames
int fuzz_wire(const uint8_t *data, size_t size); // what a debugger's client says, packets and anything else

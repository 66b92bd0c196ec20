// Files of kiv-run: what it leaves behind (pictures, the text screen, the sound) is written aside and
// renamed.
#pragma once

#include "platform/file.h"
#include <cstdint>
#include <string>
#include <vector>

// The bytes of a file, `most` at most. Throws run_failure.
std::vector<uint8_t> bytes_of_file(const std::string &path, size_t most);

// Writes the composed frame (8-bit pixels, frame_width x frame_height) as a PNG file. Throws run_failure.
void write_png(const std::string &path, const uint8_t *pixels);

// "shot.png" and frame 20 give "shot-000020.png".
std::string numbered_name(const std::string &path, uint64_t frame);

// The text screen as the machine would show it now, a line a row, without trailing blanks. Empty while the
// text layer is off. Semigraphic cells appear as the Braille pattern of the same dots.
std::string text_screen();

// A file that takes its name when it is finished; all throw run_failure.
class output_file {
  public:
    void open(const std::string &path);
    void write(const void *bytes, size_t size) { check(file.write(bytes, size)); }
    void rewrite_start(const void *bytes, size_t size) { check(file.rewrite_start(bytes, size)); }
    bool take(const void *bytes, size_t size) { return file.write(bytes, size); } // does not throw
    void finish() { check(file.finish()); }
    bool is_open() const { return file.is_open(); }

  private:
    void check(bool good) const;
    platform::file_aside file;
    std::string name;
};

// A WAV file of 96000 Hz, one channel, 16 bits.
class wav_file {
  public:
    void open(const std::string &path); // all throw run_failure
    void add(const int16_t *samples, uint32_t count);
    void finish();
    bool is_open() const { return file.is_open(); }

  private:
    void write_header();
    output_file file;
    std::string name;
    uint64_t bytes = 0;
};

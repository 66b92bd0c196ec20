// What kiv-run leaves behind: pictures, the text screen, the sound. Files are written aside and renamed.
#pragma once

#include <cstdint>
#include <string>

// Writes the composed frame (8-bit pixels, frame_width x frame_height) as a PNG file. Throws run_failure.
void write_png(const std::string &path, const uint8_t *pixels);

// "shot.png" and frame 20 give "shot-000020.png".
std::string numbered_name(const std::string &path, uint64_t frame);

// The text screen as the machine would show it now, a line a row, without trailing blanks. Empty while the
// text layer is off. Semigraphic cells appear as the Braille pattern of the same dots.
std::string text_screen();

// A file that grows beside its target and takes its name when finished; it goes away when it is not.
class file_aside {
  public:
    file_aside() = default;
    ~file_aside();
    file_aside(const file_aside &) = delete;
    file_aside &operator=(const file_aside &) = delete;
    void open(const std::string &path); // all throw run_failure
    void write(const void *bytes, size_t size);
    void rewrite_start(const void *bytes, size_t size);
    void finish();
    bool is_open() const { return handle >= 0; }
    // Where the bytes lie until then; whoever appends to that file writes to this one.
    const std::string &aside_name() const { return aside; }

  private:
    [[noreturn]] void fail() const;
    std::string target, aside;
    int handle = -1;
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
    file_aside file;
    std::string name;
    uint64_t bytes = 0;
};

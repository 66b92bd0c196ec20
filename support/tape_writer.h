// Appends single bytes to a file. A program that writes in a loop sends hundreds of thousands of bytes a
// second, so bytes are collected until a flush; what the file holds then is what appending each byte by
// itself would have left. The file is open during a flush only: one that is moved away between two flushes is
// made anew under its name, and nothing goes into the one that left.
#pragma once

#include "platform/file.h"
#include <cstdint>
#include <string>
#include <vector>

class tape_writer {
  public:
    tape_writer() = default;
    ~tape_writer();
    tape_writer(const tape_writer &) = delete;
    tape_writer &operator=(const tape_writer &) = delete;

    // The file for all further bytes; it is made when the first byte is flushed.
    void set_path(const std::string &new_path);
    void put(uint8_t byte);
    // Writes what was collected. A failure is logged once for a path, and the bytes are lost.
    void flush();

  private:
    std::string path;
    std::vector<uint8_t> collected;
    bool failure_reported = false;
};

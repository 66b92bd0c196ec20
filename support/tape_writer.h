// Collects the single bytes of the tape output and hands them on in blocks: to a file, at its end, or to a
// function. A program that writes in a loop sends hundreds of thousands of bytes a second; what the file
// holds after a flush is what appending each byte by itself would have left. The file is open during a flush
// only: one that is moved away between two flushes is made anew under its name, and nothing goes into the one
// that left.
#pragma once

#include "platform/file.h"
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class tape_writer {
  public:
    using sink = std::function<bool(const uint8_t *bytes, size_t count)>; // false: last_file_error says why
    using failure_listener = void (*)(const std::string &path, const std::string &reason);

    tape_writer() = default;
    ~tape_writer();
    tape_writer(const tape_writer &) = delete;
    tape_writer &operator=(const tape_writer &) = delete;

    // The file for all further bytes, made when the first byte is flushed; they are dropped while it is
    // empty.
    void set_path(const std::string &new_path);
    void set_sink(sink new_sink, const std::string &name);
    void put(uint8_t byte);
    // Writes what was collected. After a failure, which is logged and told, nothing more is written until
    // another file is chosen: a tape with a hole is worse than one that ends.
    void flush();
    // Why nothing is written any more; empty while all is well.
    const std::string &failure() const { return reason; }
    // Called on the thread that flushes.
    void on_failure(failure_listener new_listener) { listener = new_listener; }

  private:
    std::string path;
    sink take;
    std::vector<uint8_t> collected;
    std::string reason;
    failure_listener listener = nullptr;
};

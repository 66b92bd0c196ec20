// Files of the host. Paths are UTF-8. Only regular files are opened: a folder, a FIFO or a device fails at
// once instead of hanging later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

using file_handle = int;
constexpr file_handle invalid_file = -1;

file_handle open_file(const std::string &path, bool read_only); // must exist
file_handle create_file(const std::string &path);               // must not exist; read and write
// For appending, made when missing; does not follow a link. For the tape output.
file_handle append_file(const std::string &path);
bool close_file(file_handle handle); // false: what was written may be lost
bool delete_file(const std::string &path);
bool file_exists(const std::string &path);

// One request; -1 on failure, else the bytes transferred (fewer at the end of the file).
int64_t read_file(file_handle handle, void *buffer, size_t bytes);
int64_t write_file(file_handle handle, const void *buffer, size_t bytes);
// As many requests as it takes; false on failure, with some of the bytes written.
bool write_whole(file_handle handle, const void *bytes, size_t size);
// origin 0 start, 1 current, 2 end; the new position, -1 on failure.
int64_t seek_file(file_handle handle, int origin, int64_t offset);
int64_t file_size(file_handle handle); // -1 on failure

// Why the last failed call of this thread failed, as a short text ("No such file or directory").
std::string last_file_error();

// Makes the folders that the file of this path is to lie in, where they are missing.
bool make_folder_of(const std::string &path);

// A file that grows beside its target and takes its name when it is finished, so that the path holds the old
// file or the new one, whole, at every moment. A symbolic link is followed, mode and owner are kept, the
// bytes are synced. Whoever writes the same path at the same time writes another file beside it; the last to
// finish wins. False leaves the old file; `last_file_error` says why. What is not finished goes away.
class file_aside {
  public:
    file_aside() = default;
    ~file_aside() { discard(); }
    file_aside(const file_aside &) = delete;
    file_aside &operator=(const file_aside &) = delete;

    bool open(const std::string &path);
    bool write(const void *bytes, size_t size);
    bool rewrite_start(const void *bytes, size_t size); // over the first bytes; the last write before finish
    bool finish();
    void discard();
    bool is_open() const { return handle != invalid_file; }

  private:
    bool take_name();
    bool take_mode();

    std::string target, folder, aside; // aside: the name meanwhile
    file_handle handle = invalid_file;
};

// Replaces the file's contents as a whole, through a file_aside.
bool atomic_write(const std::string &path, const void *bytes, size_t size);

// A write past the limit on a file's size fails, with an error that can be told, instead of ending the
// program by a signal without a word. For the start of a program.
void let_writes_fail();

// The current directory; empty when it is gone.
std::string current_directory();

} // namespace platform

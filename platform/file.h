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
void close_file(file_handle handle);
bool delete_file(const std::string &path);
bool file_exists(const std::string &path);

// One request; -1 on failure, else the bytes transferred (fewer at the end of the file).
int64_t read_file(file_handle handle, void *buffer, size_t bytes);
int64_t write_file(file_handle handle, const void *buffer, size_t bytes);
// origin 0 start, 1 current, 2 end; the new position, -1 on failure.
int64_t seek_file(file_handle handle, int origin, int64_t offset);
int64_t file_size(file_handle handle); // -1 on failure

// Why the last failed call of this thread failed, as a short text ("No such file or directory").
std::string last_file_error();

// Replaces the file's contents as a whole: written beside the target, synced and renamed, so that the path
// holds the old file or the new one at every moment. A symbolic link is followed, the mode is kept. False
// leaves the old file; `last_file_error` says why.
bool atomic_write(const std::string &path, const void *bytes, size_t size);

// The current directory; empty when it is gone.
std::string current_directory();

} // namespace platform

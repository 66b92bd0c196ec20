#include "support/kel_fstream.h"

#include <algorithm>

namespace {

[[noreturn]] void fail(int32_t code) { throw kel_exception{stream_category, code}; }

} // namespace

kel_fstream::kel_fstream() { kel_fstream::reset_fields(); }

kel_fstream::~kel_fstream() { kel_fstream::close(); }

uint32_t kel_fstream::read(void *buffer, uint32_t element_size, uint32_t count) {
    if (!is_open()) fail(stream_not_open);
    const int64_t got = platform::read_file(handle, buffer, static_cast<uint32_t>(element_size * count));
    if (got < 0) fail(stream_read_failed);
    return static_cast<uint32_t>(got);
}

uint32_t kel_fstream::write(const void *buffer, uint32_t element_size, uint32_t count) {
    if (!is_open()) fail(stream_not_open);
    const int64_t written = platform::write_file(handle, buffer, static_cast<uint32_t>(element_size * count));
    if (written < 0) fail(stream_write_failed);
    return static_cast<uint32_t>(written);
}

int kel_fstream::seek(int origin, int32_t offset) {
    if (!is_open()) return 0;
    const int64_t position = platform::seek_file(handle, origin, offset);
    return position >= 0 && position < stream_closed;
}

void kel_fstream::rewind() { seek(seek_start, 0); }

uint32_t kel_fstream::tell() {
    if (!is_open()) return stream_closed;
    const int64_t position = platform::seek_file(handle, seek_current, 0);
    return position < 0 ? stream_closed : static_cast<uint32_t>(position);
}

uint32_t kel_fstream::size() {
    if (!is_open()) return stream_closed;
    const int64_t bytes = platform::file_size(handle);
    return bytes < 0 ? stream_closed : static_cast<uint32_t>(std::min<int64_t>(bytes, stream_closed));
}

int kel_fstream::close() {
    if (!is_open()) return 1;
    if (owns_handle) {
        platform::close_file(handle);
        if (delete_on_close && !path.empty()) platform::delete_file(path);
    }
    path.clear();
    reset_fields();
    return 1;
}

int kel_fstream::opened(platform::file_handle result, const char *name, int delete_when_closed) {
    if (result == platform::invalid_file) return 0;
    reset_fields();
    handle = result;
    path = name;
    delete_on_close = delete_when_closed;
    return 1;
}

int kel_fstream::create_new(const char *name, int delete_when_closed) {
    return is_open() ? 0 : opened(platform::create_file(name), name, delete_when_closed);
}

int kel_fstream::open(const char *name, int read_only, int delete_when_closed) {
    return is_open() ? 0 : opened(platform::open_file(name, read_only != 0), name, delete_when_closed);
}

int kel_fstream::attach(platform::file_handle adopted, int owns) {
    if (is_open()) return 0;
    reset_fields();
    handle = adopted;
    owns_handle = owns;
    path.clear();
    return 1;
}

int kel_fstream::close_and_delete() {
    if (!is_open()) return 0;
    if (!path.empty()) {
        delete_on_close = 1;
        return close();
    }
    if (owns_handle) platform::close_file(handle);
    reset_fields();
    return 0;
}

platform::file_handle kel_fstream::detach() {
    if (!is_open()) return platform::invalid_file;
    const platform::file_handle given = handle;
    path.clear();
    reset_fields();
    return given;
}

void kel_fstream::reset_fields() {
    handle = platform::invalid_file;
    owns_handle = 1;
    delete_on_close = 0;
}

#include "support/kel_fstream.h"

kel_fstream::kel_fstream() { kel_fstream::reset_fields(); }

kel_fstream::~kel_fstream() { kel_fstream::close(); }

// A product past 32 bits could not be reported back; it fails as a transfer does, instead of wrapping into
// a small one that looks good.
uint32_t kel_fstream::request_bytes(uint32_t element_size, uint32_t count, int32_t failure) const {
    if (handle == platform::invalid_file) throw kel_exception{stream_category, stream_not_open};
    const uint64_t bytes = static_cast<uint64_t>(element_size) * count;
    if (bytes > 0xFFFFFFFF) throw kel_exception{stream_category, failure};
    return static_cast<uint32_t>(bytes);
}

uint32_t kel_fstream::read(void *buffer, uint32_t element_size, uint32_t count) {
    const uint32_t bytes = request_bytes(element_size, count, stream_read_failed);
    const int64_t done = platform::read_file(handle, buffer, bytes);
    if (done < 0) throw kel_exception{stream_category, stream_read_failed};
    return static_cast<uint32_t>(done);
}

uint32_t kel_fstream::write(const void *buffer, uint32_t element_size, uint32_t count) {
    const uint32_t bytes = request_bytes(element_size, count, stream_write_failed);
    const int64_t done = platform::write_file(handle, buffer, bytes);
    if (done < 0) throw kel_exception{stream_category, stream_write_failed};
    return static_cast<uint32_t>(done);
}

int kel_fstream::seek(int origin, int32_t offset) {
    if (handle == platform::invalid_file) return 0;
    const int64_t position = platform::seek_file(handle, origin, offset);
    return position >= 0 && static_cast<uint32_t>(position) != stream_closed ? 1 : 0;
}

void kel_fstream::rewind() { seek(seek_start, 0); }

uint32_t kel_fstream::tell() {
    if (handle == platform::invalid_file) return stream_closed;
    return static_cast<uint32_t>(platform::seek_file(handle, seek_current, 0));
}

uint32_t kel_fstream::size() {
    if (handle == platform::invalid_file) return stream_closed;
    return static_cast<uint32_t>(platform::file_size(handle));
}

int kel_fstream::close() {
    if (handle == platform::invalid_file) return 1;
    if (owns_handle != 0) {
        platform::close_file(handle);
        if (delete_on_close != 0 && path) platform::delete_file(*path);
    }
    path.reset();
    reset_fields();
    return 1;
}

int kel_fstream::opened(platform::file_handle new_handle, const std::string &file_name,
                        int delete_when_closed) {
    if (new_handle == platform::invalid_file) return 0;
    reset_fields();
    handle = new_handle;
    delete_on_close = delete_when_closed;
    path = file_name;
    return 1;
}

int kel_fstream::create_new(const std::string &file_name, int delete_when_closed) {
    if (handle != platform::invalid_file) return 0;
    return opened(platform::create_file(file_name), file_name, delete_when_closed);
}

int kel_fstream::open(const std::string &file_name, int read_only, int delete_when_closed) {
    if (handle != platform::invalid_file) return 0;
    return opened(platform::open_file(file_name, read_only != 0), file_name, delete_when_closed);
}

int kel_fstream::attach(platform::file_handle open_handle, int owns) {
    if (handle != platform::invalid_file) return 0;
    reset_fields();
    handle = open_handle;
    owns_handle = owns;
    path.reset();
    return 1;
}

int kel_fstream::close_and_delete() {
    if (handle == platform::invalid_file) return 0;
    if (path) {
        delete_on_close = 1;
        return close();
    }
    if (owns_handle != 0) platform::close_file(handle);
    reset_fields();
    return 0;
}

platform::file_handle kel_fstream::detach() {
    const platform::file_handle former = handle;
    path.reset();
    reset_fields();
    return former;
}

void kel_fstream::reset_fields() {
    handle = platform::invalid_file;
    owns_handle = 1;
    delete_on_close = 0;
}

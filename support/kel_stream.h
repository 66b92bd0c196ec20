// A stream of bytes with a position.
#pragma once

#include <cstdint>

enum seek_origin : int { seek_start = 0, seek_current = 1, seek_end = 2 };

constexpr uint32_t stream_closed = 0xFFFFFFFF; // what size and tell of a closed stream return

class kel_stream {
  public:
    kel_stream() = default;
    kel_stream(const kel_stream &) = delete;
    kel_stream &operator=(const kel_stream &) = delete;

    // One request of element_size x count bytes; the bytes transferred. Throws kel_exception when the stream
    // is closed or the transfer fails; a short transfer is no failure.
    virtual uint32_t read(void *buffer, uint32_t element_size, uint32_t count) = 0;
    virtual uint32_t write(const void *buffer, uint32_t element_size, uint32_t count) = 0;
    virtual int seek(int origin, int32_t offset) = 0; // seek_origin; 1 moved, 0 not
    virtual void rewind() = 0;
    virtual uint32_t tell() = 0;
    virtual uint32_t size() = 0;
    virtual int close() = 0; // always 1

  protected:
    ~kel_stream() = default;
};

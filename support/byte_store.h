// Bytes that grow at their end, without exceptions: what does not fit into memory is refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

class byte_store {
  public:
    const uint8_t *data() const { return bytes.get(); }
    size_t size() const { return used; }
    void clear() { used = 0; }

    bool put(uint8_t byte) {
        if (used == capacity && !grow(used + 1)) return false;
        bytes[used++] = byte;
        return true;
    }

    // Room for so many bytes in all; false: there is no memory, and nothing has changed.
    bool reserve(size_t size) { return size <= capacity || grow(size); }

    bool assign(const uint8_t *from, size_t count) {
        if (!reserve(count)) return false;
        if (count != 0) std::memcpy(bytes.get(), from, count);
        used = count;
        return true;
    }

  private:
    bool grow(size_t least) {
        size_t wanted = capacity == 0 ? 4096 : 2 * capacity;
        if (wanted < least) wanted = least;
        std::unique_ptr<uint8_t[]> larger(new (std::nothrow) uint8_t[wanted]);
        if (larger == nullptr) return false;
        if (used != 0) std::memcpy(larger.get(), bytes.get(), used);
        bytes = std::move(larger);
        capacity = wanted;
        return true;
    }

    std::unique_ptr<uint8_t[]> bytes;
    size_t used = 0, capacity = 0;
};

// Memory for the pixels of a surface, beginning on a cache line.
//
// The composer writes 32 bytes at a time. Where every second write crosses a cache line (operator new only
// promises 16 bytes), a frame takes half as long again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace platform {

template <class T> struct cache_line_allocator {
    using value_type = T;
    static constexpr std::align_val_t cache_line{64};

    cache_line_allocator() = default;
    template <class U> cache_line_allocator(const cache_line_allocator<U> &) noexcept {}
    T *allocate(size_t count) { return static_cast<T *>(::operator new(count * sizeof(T), cache_line)); }
    void deallocate(T *memory, size_t) noexcept { ::operator delete(memory, cache_line); }
    bool operator==(const cache_line_allocator &) const noexcept { return true; }
};

using pixel_memory = std::vector<uint32_t, cache_line_allocator<uint32_t>>;

} // namespace platform

// A value that one thread writes and others read without a lock.
//
// Every access is a relaxed atomic one: a plain move on x86-64, and no data race for the language or for
// ThreadSanitizer. The wrapper has no constructors, so records made of it stay trivially copyable and can
// be zeroed as a whole. Compound operations are a load and a store: they are for the one writing thread,
// not for several. Copying a `shared` from a `shared` (record copies) is a plain copy, for moments when
// nobody else looks.
#pragma once

#include <type_traits>

template <class T> struct shared {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 8);
    T value;

    T load() const noexcept {
        T v;
        __atomic_load(&value, &v, __ATOMIC_RELAXED);
        return v;
    }
    void store(T v) noexcept { __atomic_store(&value, &v, __ATOMIC_RELAXED); }

    operator T() const noexcept { return load(); }
    T operator=(T v) noexcept {
        store(v);
        return v;
    }
    T operator|=(T v) noexcept { return *this = static_cast<T>(load() | v); }
    T operator&=(T v) noexcept { return *this = static_cast<T>(load() & v); }
    T operator^=(T v) noexcept { return *this = static_cast<T>(load() ^ v); }
    T operator+=(T v) noexcept { return *this = static_cast<T>(load() + v); }
    T operator-=(T v) noexcept { return *this = static_cast<T>(load() - v); }
};

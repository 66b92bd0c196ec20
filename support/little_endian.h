// Whole numbers as bytes, the low byte first, whatever the host's order is.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

template <class T> T little_endian_of(T value) {
    if constexpr (std::endian::native == std::endian::little || sizeof(T) == 1) {
        return value;
    } else {
        uint8_t bytes[sizeof(T)];
        std::memcpy(bytes, &value, sizeof value);
        for (size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
}

template <class T> T get_little_endian(const uint8_t *bytes) {
    static_assert(std::is_integral_v<T>);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return little_endian_of(value);
}

template <class T> void put_little_endian(uint8_t *bytes, T value) {
    static_assert(std::is_integral_v<T>);
    value = little_endian_of(value);
    std::memcpy(bytes, &value, sizeof value);
}

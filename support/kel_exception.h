// The one exception of the support library.
#pragma once

#include <cstdint>

// A category and a code: 350 and 2 (stream not open), 150 (a read failed), 151 (a write failed).
struct kel_exception {
    int32_t category;
    int32_t code;
};

constexpr int32_t stream_category = 350;
constexpr int32_t stream_not_open = 2;
constexpr int32_t stream_read_failed = 150;
constexpr int32_t stream_write_failed = 151;

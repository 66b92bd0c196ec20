// A checksum of bytes, the same on every host and fast enough for a whole machine in each snapshot (four
// words at a time). It tells images apart and finds damage; it is no protection against forgery.
#pragma once

#include <cstddef>
#include <cstdint>

uint64_t checksum64(const uint8_t *bytes, size_t size);

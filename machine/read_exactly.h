// Reading of files whose size is known.
#pragma once

#include <cstdint>

class kel_fstream;

// True when all `bytes` came; false when the file ends before that or a transfer fails.
bool read_exactly(kel_fstream &file, uint8_t *buffer, uint32_t bytes);

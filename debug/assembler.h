// One line of assembler to bytes: every instruction that the disassembler writes, DB and DW.
#pragma once

#include "debug/symbols.h"
#include <cstdint>
#include <string>
#include <vector>

// Throws debug_error. `address` is where the bytes will stand.
std::vector<uint8_t> assemble(const std::string &line, uint16_t address, const symbol_table &symbols);

// Which memory is seen at an address: the machine's map, by names that a person types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

enum class memory_bank : uint8_t { any, main, nbasic, ext, ram, blue, red, green, open };

// What the processor reads at the address now; `open` where nothing answers.
memory_bank bank_at(uint16_t address);

// Where a byte that the processor writes there now lands: in the RAM, whatever lies over it, or in a plane.
memory_bank bank_written(uint16_t address);
const uint8_t &byte_written(uint16_t address);
// The place in RAM that the processor reaches at the address, through the window at 0x8000, too; for reads of
// bank `ram` and for writes that do not go to a plane.
uint16_t ram_behind(uint16_t address);

std::optional<memory_bank> bank_named(const std::string &name);
const char *bank_name(memory_bank bank);

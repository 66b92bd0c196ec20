// Which memory is seen at an address: the machine's map, by names that a person types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

enum class memory_bank : uint8_t { any, main, nbasic, ext, ram, blue, red, green, open };

// What the processor reads at the address now; `open` where nothing answers.
memory_bank bank_at(uint16_t address);

std::optional<memory_bank> bank_named(const std::string &name);
const char *bank_name(memory_bank bank);

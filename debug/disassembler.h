// Bytes to instructions, as cpu/z80_cpu runs them.
#pragma once

#include "debug/instruction_set.h"
#include <cstdint>
#include <functional>
#include <string>

struct disassembled {
    std::string text; // what an assembler turns into the same bytes; DB where no mnemonic would
    std::string note; // what the processor does with it, where the text does not say that; or empty
    uint8_t length;   // bytes, 1-4
    instruction_kind kind;
    uint8_t bytes[4];
};

// A name for an address that an instruction mentions; empty for none.
using address_names = std::function<std::string(uint16_t address)>;

// `byte_at` reads memory; addresses wrap at 0xFFFF.
disassembled disassemble(uint16_t address, const std::function<uint8_t(uint16_t)> &byte_at,
                         const address_names &name_of = nullptr);

// What an instruction does to the flow, by its bytes.
enum class flow : uint8_t { on, jump, call, restart, returns, repeats, halt };
flow flow_of(const uint8_t bytes[4]);
// Its bytes, 1-4.
uint8_t instruction_length(const uint8_t bytes[4]);

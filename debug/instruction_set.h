// The instructions of cpu/z80_cpu as text with places for operands, one table for the disassembler and the
// assembler, so that the two cannot disagree.
//
// Places: `n` a byte, `nn` a word, `e` the target of a relative jump, `d` a displacement, as in LD (IX+d),n.
#pragma once

#include <array>
#include <cstdint>
#include <string>

enum class instruction_kind : uint8_t {
    documented,
    undocumented,  // runs, but no data book lists it
    another_form,  // runs as `text` says, but assemblers write that in other bytes
    unimplemented, // stops the processor: block I/O
    undefined,     // stops the processor
};

struct instruction_form {
    std::string text; // empty where it is undefined
    instruction_kind kind = instruction_kind::undefined;
};

enum class opcode_page : uint8_t { plain, cb, ed, dd, fd, ddcb, fdcb };
constexpr int opcode_pages = 7;

using instruction_page = std::array<instruction_form, 256>;
const std::array<instruction_page, opcode_pages> &instruction_set();

// Bytes in front of the opcode's own, without displacement: none, CB, ED, DD, FD; DD CB, FD CB.
std::string page_prefix(opcode_page page);

#include "machine/memory_dump.h"

#include "machine/kiv_machine.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint16_t dump_base = 0x8000;
constexpr uint32_t routine_offset = 0x7F3D;
constexpr uint32_t stack_offset = 0x7F3E;
constexpr uint32_t sp_offset = 0x7F4B;
constexpr uint32_t pc_offset = 0x7F4E;
constexpr uint32_t registers_offset = 0x7F52;
constexpr uint16_t routine_address = dump_base + routine_offset;

// Pops the registers, loads SP, jumps: entered at its RET with SP behind it.
constexpr uint8_t restore_routine[] = {
    0xC9,                   // FF3D RET               to FF40
    0x50, 0xFF,             // FF3E the reader's SP
    0xC1, 0xD1, 0xE1, 0xF1, // FF40 POP BC, DE, HL, AF
    0x08, 0xD9,             // FF44 EX AF,AF'; EXX
    0xC1, 0xD1, 0xE1, 0xF1, // FF46 POP BC, DE, HL, AF
    0x31, 0x00, 0x00,       // FF4A LD SP,saved SP
    0xC3, 0x00, 0x00,       // FF4D JP saved PC
    0x40, 0xFF,             // FF50 what the RET pops
};

constexpr uint8_t routine_steps = 13; // instructions

constexpr int saved_registers[] = {reg_bc_alt, reg_de_alt, reg_hl_alt, reg_af_alt,
                                   reg_bc,     reg_de,     reg_hl,     reg_af};

void put_word(uint8_t *dump, uint32_t offset, uint16_t value) {
    dump[offset] = static_cast<uint8_t>(value);
    dump[offset + 1] = static_cast<uint8_t>(value >> 8);
}

// Whether the CPU would find the routine as written here, with any saved SP and PC. A file of another origin
// may hold anything there.
bool routine_in_memory() {
    for (uint32_t i = 0; i < sizeof restore_routine; ++i) {
        const uint32_t offset = routine_offset + i;
        if (offset - sp_offset < 2 || offset - pc_offset < 2) continue;
        uint32_t wait = 0;
        if (mem_read(static_cast<uint16_t>(dump_base + offset), &wait) != restore_routine[i]) return false;
    }
    return true;
}

// An interrupt inside the routine would push over the registers that are still to be popped. The file does
// not say whether interrupts were enabled: a program that was saved runs with them, unless it was saved in a
// handler.
void protect_routine(z80_cpu &cpu) {
    const bool dropped = z80_hold_interrupts(cpu, routine_steps);
    if (dropped && machine.usart_byte_ready != 0)
        machine.interrupt_pending |= 1; // the deck waits for its read
}

} // namespace

void memory_dump_make(uint8_t *dump, const z80_cpu &cpu) {
    std::fill_n(dump, dump_size, uint8_t{0});
    std::memcpy(dump, machine.ram + dump_base, dump_minimum);
    std::memcpy(dump + routine_offset, restore_routine, sizeof restore_routine);
    put_word(dump, sp_offset, cpu.SP);
    put_word(dump, pc_offset, cpu.PC);
    uint32_t offset = registers_offset;
    for (const int index : saved_registers) {
        put_word(dump, offset, z80_register(cpu, index));
        offset += 2;
    }
}

bool memory_dump_apply(const uint8_t *dump, size_t size, z80_cpu &cpu) {
    if (size < dump_minimum) return false;
    const auto count = static_cast<uint32_t>(std::min<size_t>(size, dump_maximum));
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t wait = 0;
        mem_write(static_cast<uint16_t>(dump_base + i), dump[i], &wait);
    }
    cpu.PC = routine_address;
    cpu.SP = static_cast<uint16_t>(dump[stack_offset] | dump[stack_offset + 1] << 8);
    if (routine_in_memory()) protect_routine(cpu);
    return true;
}

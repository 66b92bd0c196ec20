// The DD and FD groups: one switch for IX and IY, `index` is the register meant. The mnemonics say IX for
// both.
//
// Only what concerns the index register is defined. Anything else after the prefix, a second prefix included,
// stops the CPU as undefined; nothing falls back to the unprefixed instruction.
#include "cpu/z80_operations.h"

namespace {

[[gnu::always_inline]] inline uint8_t read_indexed(z80_cpu &cpu, auto &pc, uint16_t index) {
    return read8(cpu, displaced(index, fetch8(cpu, pc)));
}

[[gnu::always_inline]] inline void write_indexed(z80_cpu &cpu, auto &pc, uint16_t index, uint8_t value) {
    write8(cpu, displaced(index, fetch8(cpu, pc)), value);
}

[[gnu::always_inline]] inline void store_operand_indexed(z80_cpu &cpu, auto &pc, uint16_t index) {
    const uint16_t address = displaced(index, fetch8(cpu, pc));
    write8(cpu, address, fetch8(cpu, pc));
}

[[gnu::always_inline]] inline void increment_indexed(z80_cpu &cpu, auto &pc, uint16_t index) {
    const uint16_t address = displaced(index, fetch8(cpu, pc));
    write8(cpu, address, inc8(cpu, read8(cpu, address)));
}

[[gnu::always_inline]] inline void decrement_indexed(z80_cpu &cpu, auto &pc, uint16_t index) {
    const uint16_t address = displaced(index, fetch8(cpu, pc));
    write8(cpu, address, dec8(cpu, read8(cpu, address)));
}

} // namespace

// clang-format off
template <class code> bool exec_index(z80_cpu &cpu, code from, uint16_t &index) {
    code pc = from.behind(1);
    uint32_t cycles = 0;
    switch (fetch_opcode(cpu, pc)) {
    // ---- 0x00 ----------------------------------------------------------------------
    case 0x09: add16(cpu, index, cpu.BC);                    cycles = 15; break; // ADD IX,BC

    case 0x19: add16(cpu, index, cpu.DE);                    cycles = 15; break; // ADD IX,DE

    case 0x21: index = fetch16(cpu, pc);                     cycles = 14; break; // LD IX,nn
    case 0x22: write16(cpu, fetch16(cpu, pc), index);        cycles = 20; break; // LD (nn),IX
    case 0x23: inc16(index);                                 cycles = 10; break; // INC IX
    case 0x24: set_hi(index, inc8(cpu, hi(index)));          cycles = 8;  break; // INC IXH
    case 0x25: set_hi(index, dec8(cpu, hi(index)));          cycles = 8;  break; // DEC IXH
    case 0x26: set_hi(index, fetch8(cpu, pc));               cycles = 11; break; // LD IXH,n

    case 0x29: add16(cpu, index, index);                     cycles = 15; break; // ADD IX,IX
    case 0x2A: index = read16(cpu, fetch16(cpu, pc));        cycles = 20; break; // LD IX,(nn)
    case 0x2B: dec16(index);                                 cycles = 10; break; // DEC IX
    case 0x2C: set_lo(index, inc8(cpu, lo(index)));          cycles = 8;  break; // INC IXL
    case 0x2D: set_lo(index, dec8(cpu, lo(index)));          cycles = 8;  break; // DEC IXL
    case 0x2E: set_lo(index, fetch8(cpu, pc));               cycles = 11; break; // LD IXL,n

    case 0x34: increment_indexed(cpu, pc, index);            cycles = 23; break; // INC (IX+d)
    case 0x35: decrement_indexed(cpu, pc, index);            cycles = 23; break; // DEC (IX+d)
    case 0x36: store_operand_indexed(cpu, pc, index);        cycles = 19; break; // LD (IX+d),n

    case 0x39: add16(cpu, index, cpu.SP);                    cycles = 15; break; // ADD IX,SP

    // ---- 0x40 ----------------------------------------------------------------------
    case 0x44: set_hi(cpu.BC, hi(index));                    cycles = 8;  break; // LD B,IXH
    case 0x45: set_hi(cpu.BC, lo(index));                    cycles = 8;  break; // LD B,IXL
    case 0x46: set_hi(cpu.BC, read_indexed(cpu, pc, index)); cycles = 19; break; // LD B,(IX+d)

    case 0x4C: set_lo(cpu.BC, hi(index));                    cycles = 8;  break; // LD C,IXH
    case 0x4D: set_lo(cpu.BC, lo(index));                    cycles = 8;  break; // LD C,IXL
    case 0x4E: set_lo(cpu.BC, read_indexed(cpu, pc, index)); cycles = 19; break; // LD C,(IX+d)

    case 0x54: set_hi(cpu.DE, hi(index));                    cycles = 8;  break; // LD D,IXH
    case 0x55: set_hi(cpu.DE, lo(index));                    cycles = 8;  break; // LD D,IXL
    case 0x56: set_hi(cpu.DE, read_indexed(cpu, pc, index)); cycles = 19; break; // LD D,(IX+d)

    case 0x5C: set_lo(cpu.DE, hi(index));                    cycles = 8;  break; // LD E,IXH
    case 0x5D: set_lo(cpu.DE, lo(index));                    cycles = 8;  break; // LD E,IXL
    case 0x5E: set_lo(cpu.DE, read_indexed(cpu, pc, index)); cycles = 19; break; // LD E,(IX+d)

    case 0x60: set_hi(index, hi(cpu.BC));                    cycles = 8;  break; // LD IXH,B
    case 0x61: set_hi(index, lo(cpu.BC));                    cycles = 8;  break; // LD IXH,C
    case 0x62: set_hi(index, hi(cpu.DE));                    cycles = 8;  break; // LD IXH,D
    case 0x63: set_hi(index, lo(cpu.DE));                    cycles = 8;  break; // LD IXH,E
    case 0x64:                                               cycles = 8;  break; // LD IXH,IXH
    case 0x65: set_hi(index, lo(index));                     cycles = 8;  break; // LD IXH,IXL
    case 0x66: set_hi(cpu.HL, read_indexed(cpu, pc, index)); cycles = 19; break; // LD H,(IX+d): the real H
    case 0x67: set_hi(index, hi(cpu.AF));                    cycles = 8;  break; // LD IXH,A

    case 0x68: set_lo(index, hi(cpu.BC));                    cycles = 8;  break; // LD IXL,B
    case 0x69: set_lo(index, lo(cpu.BC));                    cycles = 8;  break; // LD IXL,C
    case 0x6A: set_lo(index, hi(cpu.DE));                    cycles = 8;  break; // LD IXL,D
    case 0x6B: set_lo(index, lo(cpu.DE));                    cycles = 8;  break; // LD IXL,E
    case 0x6C: set_lo(index, hi(index));                     cycles = 8;  break; // LD IXL,IXH
    case 0x6D:                                               cycles = 8;  break; // LD IXL,IXL
    case 0x6E: set_lo(cpu.HL, read_indexed(cpu, pc, index)); cycles = 19; break; // LD L,(IX+d): the real L
    case 0x6F: set_lo(index, hi(cpu.AF));                    cycles = 8;  break; // LD IXL,A

    case 0x70: write_indexed(cpu, pc, index, hi(cpu.BC));    cycles = 19; break; // LD (IX+d),B
    case 0x71: write_indexed(cpu, pc, index, lo(cpu.BC));    cycles = 19; break; // LD (IX+d),C
    case 0x72: write_indexed(cpu, pc, index, hi(cpu.DE));    cycles = 19; break; // LD (IX+d),D
    case 0x73: write_indexed(cpu, pc, index, lo(cpu.DE));    cycles = 19; break; // LD (IX+d),E
    case 0x74: write_indexed(cpu, pc, index, hi(cpu.HL));    cycles = 19; break; // LD (IX+d),H: the real H
    case 0x75: write_indexed(cpu, pc, index, lo(cpu.HL));    cycles = 19; break; // LD (IX+d),L: the real L
    case 0x77: write_indexed(cpu, pc, index, hi(cpu.AF));    cycles = 19; break; // LD (IX+d),A

    case 0x7C: set_hi(cpu.AF, hi(index));                    cycles = 8;  break; // LD A,IXH
    case 0x7D: set_hi(cpu.AF, lo(index));                    cycles = 8;  break; // LD A,IXL
    case 0x7E: set_hi(cpu.AF, read_indexed(cpu, pc, index)); cycles = 19; break; // LD A,(IX+d)

    // ---- 0x80 ----------------------------------------------------------------------
    case 0x84: add8(cpu, hi(index));                         cycles = 8;  break; // ADD A,IXH
    case 0x85: add8(cpu, lo(index));                         cycles = 8;  break; // ADD A,IXL
    case 0x86: add8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // ADD A,(IX+d)

    case 0x8C: adc8(cpu, hi(index));                         cycles = 8;  break; // ADC A,IXH
    case 0x8D: adc8(cpu, lo(index));                         cycles = 8;  break; // ADC A,IXL
    case 0x8E: adc8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // ADC A,(IX+d)

    case 0x94: sub8(cpu, hi(index));                         cycles = 8;  break; // SUB IXH
    case 0x95: sub8(cpu, lo(index));                         cycles = 8;  break; // SUB IXL
    case 0x96: sub8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // SUB (IX+d)

    case 0x9C: sbc8(cpu, hi(index));                         cycles = 8;  break; // SBC A,IXH
    case 0x9D: sbc8(cpu, lo(index));                         cycles = 8;  break; // SBC A,IXL
    case 0x9E: sbc8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // SBC A,(IX+d)

    case 0xA4: and8(cpu, hi(index));                         cycles = 8;  break; // AND IXH
    case 0xA5: and8(cpu, lo(index));                         cycles = 8;  break; // AND IXL
    case 0xA6: and8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // AND (IX+d)

    case 0xAC: xor8(cpu, hi(index));                         cycles = 8;  break; // XOR IXH
    case 0xAD: xor8(cpu, lo(index));                         cycles = 8;  break; // XOR IXL
    case 0xAE: xor8(cpu, read_indexed(cpu, pc, index));      cycles = 19; break; // XOR (IX+d)

    case 0xB4: or8(cpu, hi(index));                          cycles = 8;  break; // OR IXH
    case 0xB5: or8(cpu, lo(index));                          cycles = 8;  break; // OR IXL
    case 0xB6: or8(cpu, read_indexed(cpu, pc, index));       cycles = 19; break; // OR (IX+d)

    case 0xBC: cp8(cpu, hi(index));                          cycles = 8;  break; // CP IXH
    case 0xBD: cp8(cpu, lo(index));                          cycles = 8;  break; // CP IXL
    case 0xBE: cp8(cpu, read_indexed(cpu, pc, index));       cycles = 19; break; // CP (IX+d)

    // ---- 0xC0 ----------------------------------------------------------------------
    case 0xCB: return exec_index_cb(cpu, pc, index);                             // DDCB group

    case 0xE1: index = pop16(cpu);                           cycles = 14; break; // POP IX
    case 0xE3: exchange_stack(cpu, index);                   cycles = 23; break; // EX (SP),IX
    case 0xE5: push16(cpu, index);                           cycles = 15; break; // PUSH IX

    case 0xE9: pc = index;                                   cycles = 8;  break; // JP (IX)

    case 0xF9: cpu.SP = index;                               cycles = 10; break; // LD SP,IX

    default:   return stop(cpu, pc, stop_undefined, undefined_cycles, 2);
    }
    return finish(cpu, pc, cycles, 2);
}
// clang-format on

template bool exec_index(z80_cpu &, memory_pc, uint16_t &);
template bool exec_index(z80_cpu &, injecting_pc, uint16_t &);

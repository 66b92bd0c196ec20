// The DDCB and FDCB groups: rotates, shifts and single bits of (IX+d) or (IY+d). The mnemonics say IX for
// both.
//
// The operation byte comes last, after the displacement and after the operand has been read; neither is an
// M1 cycle. A rotate or shift leaves its result in a register as well, unless the byte names (HL): the real
// H and L are meant. RES and SET leave no copy, whatever register the byte names.
#include "cpu/z80_operations.h"

namespace {

// Stores the byte and hands it on for the register.
[[gnu::always_inline]] inline uint8_t stored(z80_cpu &cpu, uint16_t address, uint8_t value) {
    write8(cpu, address, value);
    return value;
}

} // namespace

// clang-format off
template <class code> bool exec_index_cb(z80_cpu &cpu, code from, uint16_t &index) {
    code pc = from.behind(2);
    const uint16_t address = displaced(index, fetch8(cpu, pc));
    const uint8_t n = read8(cpu, address);
    uint32_t cycles = 0;
    switch (fetch8(cpu, pc)) {
    // ---- 0x00 ----------------------------------------------------------------------
    case 0x00: set_hi(cpu.BC, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),B
    case 0x01: set_lo(cpu.BC, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),C
    case 0x02: set_hi(cpu.DE, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),D
    case 0x03: set_lo(cpu.DE, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),E
    case 0x04: set_hi(cpu.HL, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),H
    case 0x05: set_lo(cpu.HL, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),L
    case 0x06: write8(cpu, address, rlc(cpu, n));                 cycles = 23; break; // RLC (IX+d)
    case 0x07: set_hi(cpu.AF, stored(cpu, address, rlc(cpu, n))); cycles = 23; break; // RLC (IX+d),A

    case 0x08: set_hi(cpu.BC, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),B
    case 0x09: set_lo(cpu.BC, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),C
    case 0x0A: set_hi(cpu.DE, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),D
    case 0x0B: set_lo(cpu.DE, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),E
    case 0x0C: set_hi(cpu.HL, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),H
    case 0x0D: set_lo(cpu.HL, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),L
    case 0x0E: write8(cpu, address, rrc(cpu, n));                 cycles = 23; break; // RRC (IX+d)
    case 0x0F: set_hi(cpu.AF, stored(cpu, address, rrc(cpu, n))); cycles = 23; break; // RRC (IX+d),A

    case 0x10: set_hi(cpu.BC, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),B
    case 0x11: set_lo(cpu.BC, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),C
    case 0x12: set_hi(cpu.DE, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),D
    case 0x13: set_lo(cpu.DE, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),E
    case 0x14: set_hi(cpu.HL, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),H
    case 0x15: set_lo(cpu.HL, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),L
    case 0x16: write8(cpu, address, rl(cpu, n));                  cycles = 23; break; // RL (IX+d)
    case 0x17: set_hi(cpu.AF, stored(cpu, address, rl(cpu, n)));  cycles = 23; break; // RL (IX+d),A

    case 0x18: set_hi(cpu.BC, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),B
    case 0x19: set_lo(cpu.BC, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),C
    case 0x1A: set_hi(cpu.DE, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),D
    case 0x1B: set_lo(cpu.DE, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),E
    case 0x1C: set_hi(cpu.HL, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),H
    case 0x1D: set_lo(cpu.HL, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),L
    case 0x1E: write8(cpu, address, rr(cpu, n));                  cycles = 23; break; // RR (IX+d)
    case 0x1F: set_hi(cpu.AF, stored(cpu, address, rr(cpu, n)));  cycles = 23; break; // RR (IX+d),A

    case 0x20: set_hi(cpu.BC, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),B
    case 0x21: set_lo(cpu.BC, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),C
    case 0x22: set_hi(cpu.DE, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),D
    case 0x23: set_lo(cpu.DE, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),E
    case 0x24: set_hi(cpu.HL, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),H
    case 0x25: set_lo(cpu.HL, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),L
    case 0x26: write8(cpu, address, sla(cpu, n));                 cycles = 23; break; // SLA (IX+d)
    case 0x27: set_hi(cpu.AF, stored(cpu, address, sla(cpu, n))); cycles = 23; break; // SLA (IX+d),A

    case 0x28: set_hi(cpu.BC, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),B
    case 0x29: set_lo(cpu.BC, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),C
    case 0x2A: set_hi(cpu.DE, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),D
    case 0x2B: set_lo(cpu.DE, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),E
    case 0x2C: set_hi(cpu.HL, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),H
    case 0x2D: set_lo(cpu.HL, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),L
    case 0x2E: write8(cpu, address, sra(cpu, n));                 cycles = 23; break; // SRA (IX+d)
    case 0x2F: set_hi(cpu.AF, stored(cpu, address, sra(cpu, n))); cycles = 23; break; // SRA (IX+d),A

    case 0x30: set_hi(cpu.BC, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),B
    case 0x31: set_lo(cpu.BC, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),C
    case 0x32: set_hi(cpu.DE, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),D
    case 0x33: set_lo(cpu.DE, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),E
    case 0x34: set_hi(cpu.HL, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),H
    case 0x35: set_lo(cpu.HL, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),L
    case 0x36: write8(cpu, address, sll(cpu, n));                 cycles = 23; break; // SLL (IX+d)
    case 0x37: set_hi(cpu.AF, stored(cpu, address, sll(cpu, n))); cycles = 23; break; // SLL (IX+d),A

    case 0x38: set_hi(cpu.BC, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),B
    case 0x39: set_lo(cpu.BC, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),C
    case 0x3A: set_hi(cpu.DE, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),D
    case 0x3B: set_lo(cpu.DE, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),E
    case 0x3C: set_hi(cpu.HL, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),H
    case 0x3D: set_lo(cpu.HL, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),L
    case 0x3E: write8(cpu, address, srl(cpu, n));                 cycles = 23; break; // SRL (IX+d)
    case 0x3F: set_hi(cpu.AF, stored(cpu, address, srl(cpu, n))); cycles = 23; break; // SRL (IX+d),A

    // ---- 0x40 ----------------------------------------------------------------------
    case 0x40: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x41: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x42: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x43: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x44: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x45: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x46: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)
    case 0x47: bit(cpu, 0, n);                                    cycles = 20; break; // BIT 0,(IX+d)

    case 0x48: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x49: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4A: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4B: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4C: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4D: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4E: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)
    case 0x4F: bit(cpu, 1, n);                                    cycles = 20; break; // BIT 1,(IX+d)

    case 0x50: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x51: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x52: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x53: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x54: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x55: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x56: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)
    case 0x57: bit(cpu, 2, n);                                    cycles = 20; break; // BIT 2,(IX+d)

    case 0x58: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x59: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5A: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5B: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5C: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5D: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5E: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)
    case 0x5F: bit(cpu, 3, n);                                    cycles = 20; break; // BIT 3,(IX+d)

    case 0x60: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x61: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x62: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x63: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x64: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x65: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x66: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)
    case 0x67: bit(cpu, 4, n);                                    cycles = 20; break; // BIT 4,(IX+d)

    case 0x68: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x69: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6A: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6B: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6C: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6D: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6E: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)
    case 0x6F: bit(cpu, 5, n);                                    cycles = 20; break; // BIT 5,(IX+d)

    case 0x70: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x71: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x72: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x73: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x74: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x75: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x76: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)
    case 0x77: bit(cpu, 6, n);                                    cycles = 20; break; // BIT 6,(IX+d)

    case 0x78: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x79: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7A: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7B: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7C: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7D: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7E: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)
    case 0x7F: bit(cpu, 7, n);                                    cycles = 20; break; // BIT 7,(IX+d)

    // ---- 0x80 ----------------------------------------------------------------------
    case 0x80: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x81: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x82: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x83: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x84: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x85: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x86: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)
    case 0x87: write8(cpu, address, res(0, n));                   cycles = 23; break; // RES 0,(IX+d)

    case 0x88: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x89: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8A: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8B: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8C: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8D: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8E: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)
    case 0x8F: write8(cpu, address, res(1, n));                   cycles = 23; break; // RES 1,(IX+d)

    case 0x90: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x91: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x92: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x93: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x94: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x95: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x96: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)
    case 0x97: write8(cpu, address, res(2, n));                   cycles = 23; break; // RES 2,(IX+d)

    case 0x98: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x99: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9A: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9B: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9C: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9D: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9E: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)
    case 0x9F: write8(cpu, address, res(3, n));                   cycles = 23; break; // RES 3,(IX+d)

    case 0xA0: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA1: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA2: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA3: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA4: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA5: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA6: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)
    case 0xA7: write8(cpu, address, res(4, n));                   cycles = 23; break; // RES 4,(IX+d)

    case 0xA8: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xA9: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAA: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAB: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAC: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAD: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAE: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)
    case 0xAF: write8(cpu, address, res(5, n));                   cycles = 23; break; // RES 5,(IX+d)

    case 0xB0: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB1: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB2: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB3: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB4: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB5: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB6: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)
    case 0xB7: write8(cpu, address, res(6, n));                   cycles = 23; break; // RES 6,(IX+d)

    case 0xB8: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xB9: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBA: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBB: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBC: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBD: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBE: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)
    case 0xBF: write8(cpu, address, res(7, n));                   cycles = 23; break; // RES 7,(IX+d)

    // ---- 0xC0 ----------------------------------------------------------------------
    case 0xC0: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC1: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC2: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC3: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC4: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC5: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC6: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)
    case 0xC7: write8(cpu, address, set(0, n));                   cycles = 23; break; // SET 0,(IX+d)

    case 0xC8: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xC9: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCA: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCB: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCC: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCD: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCE: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)
    case 0xCF: write8(cpu, address, set(1, n));                   cycles = 23; break; // SET 1,(IX+d)

    case 0xD0: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD1: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD2: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD3: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD4: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD5: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD6: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)
    case 0xD7: write8(cpu, address, set(2, n));                   cycles = 23; break; // SET 2,(IX+d)

    case 0xD8: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xD9: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDA: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDB: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDC: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDD: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDE: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)
    case 0xDF: write8(cpu, address, set(3, n));                   cycles = 23; break; // SET 3,(IX+d)

    case 0xE0: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE1: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE2: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE3: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE4: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE5: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE6: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)
    case 0xE7: write8(cpu, address, set(4, n));                   cycles = 23; break; // SET 4,(IX+d)

    case 0xE8: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xE9: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xEA: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xEB: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xEC: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xED: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xEE: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)
    case 0xEF: write8(cpu, address, set(5, n));                   cycles = 23; break; // SET 5,(IX+d)

    case 0xF0: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF1: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF2: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF3: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF4: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF5: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF6: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)
    case 0xF7: write8(cpu, address, set(6, n));                   cycles = 23; break; // SET 6,(IX+d)

    case 0xF8: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xF9: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFA: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFB: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFC: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFD: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFE: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    case 0xFF: write8(cpu, address, set(7, n));                   cycles = 23; break; // SET 7,(IX+d)
    }
    return finish(cpu, pc, cycles, 2);
}
// clang-format on

template bool exec_index_cb(z80_cpu &, memory_pc, uint16_t &);
template bool exec_index_cb(z80_cpu &, injecting_pc, uint16_t &);

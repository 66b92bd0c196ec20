// The CB group: rotates, shifts and single bits of a register or of (HL).
#include "cpu/z80_operations.h"

// clang-format off
template <class code> bool exec_cb(z80_cpu &cpu, code from) {
    code pc = from.behind(1);
    uint32_t cycles = 0;
    switch (fetch_opcode(cpu, pc)) {
    // ---- 0x00 ----------------------------------------------------------------------
    case 0x00: set_hi(cpu.BC, rlc(cpu, hi(cpu.BC)));              cycles = 8;  break; // RLC B
    case 0x01: set_lo(cpu.BC, rlc(cpu, lo(cpu.BC)));              cycles = 8;  break; // RLC C
    case 0x02: set_hi(cpu.DE, rlc(cpu, hi(cpu.DE)));              cycles = 8;  break; // RLC D
    case 0x03: set_lo(cpu.DE, rlc(cpu, lo(cpu.DE)));              cycles = 8;  break; // RLC E
    case 0x04: set_hi(cpu.HL, rlc(cpu, hi(cpu.HL)));              cycles = 8;  break; // RLC H
    case 0x05: set_lo(cpu.HL, rlc(cpu, lo(cpu.HL)));              cycles = 8;  break; // RLC L
    case 0x06: write8(cpu, cpu.HL, rlc(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // RLC (HL)
    case 0x07: set_hi(cpu.AF, rlc(cpu, hi(cpu.AF)));              cycles = 8;  break; // RLC A

    case 0x08: set_hi(cpu.BC, rrc(cpu, hi(cpu.BC)));              cycles = 8;  break; // RRC B
    case 0x09: set_lo(cpu.BC, rrc(cpu, lo(cpu.BC)));              cycles = 8;  break; // RRC C
    case 0x0A: set_hi(cpu.DE, rrc(cpu, hi(cpu.DE)));              cycles = 8;  break; // RRC D
    case 0x0B: set_lo(cpu.DE, rrc(cpu, lo(cpu.DE)));              cycles = 8;  break; // RRC E
    case 0x0C: set_hi(cpu.HL, rrc(cpu, hi(cpu.HL)));              cycles = 8;  break; // RRC H
    case 0x0D: set_lo(cpu.HL, rrc(cpu, lo(cpu.HL)));              cycles = 8;  break; // RRC L
    case 0x0E: write8(cpu, cpu.HL, rrc(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // RRC (HL)
    case 0x0F: set_hi(cpu.AF, rrc(cpu, hi(cpu.AF)));              cycles = 8;  break; // RRC A

    case 0x10: set_hi(cpu.BC, rl(cpu, hi(cpu.BC)));               cycles = 8;  break; // RL B
    case 0x11: set_lo(cpu.BC, rl(cpu, lo(cpu.BC)));               cycles = 8;  break; // RL C
    case 0x12: set_hi(cpu.DE, rl(cpu, hi(cpu.DE)));               cycles = 8;  break; // RL D
    case 0x13: set_lo(cpu.DE, rl(cpu, lo(cpu.DE)));               cycles = 8;  break; // RL E
    case 0x14: set_hi(cpu.HL, rl(cpu, hi(cpu.HL)));               cycles = 8;  break; // RL H
    case 0x15: set_lo(cpu.HL, rl(cpu, lo(cpu.HL)));               cycles = 8;  break; // RL L
    case 0x16: write8(cpu, cpu.HL, rl(cpu, read8(cpu, cpu.HL)));  cycles = 15; break; // RL (HL)
    case 0x17: set_hi(cpu.AF, rl(cpu, hi(cpu.AF)));               cycles = 8;  break; // RL A

    case 0x18: set_hi(cpu.BC, rr(cpu, hi(cpu.BC)));               cycles = 8;  break; // RR B
    case 0x19: set_lo(cpu.BC, rr(cpu, lo(cpu.BC)));               cycles = 8;  break; // RR C
    case 0x1A: set_hi(cpu.DE, rr(cpu, hi(cpu.DE)));               cycles = 8;  break; // RR D
    case 0x1B: set_lo(cpu.DE, rr(cpu, lo(cpu.DE)));               cycles = 8;  break; // RR E
    case 0x1C: set_hi(cpu.HL, rr(cpu, hi(cpu.HL)));               cycles = 8;  break; // RR H
    case 0x1D: set_lo(cpu.HL, rr(cpu, lo(cpu.HL)));               cycles = 8;  break; // RR L
    case 0x1E: write8(cpu, cpu.HL, rr(cpu, read8(cpu, cpu.HL)));  cycles = 15; break; // RR (HL)
    case 0x1F: set_hi(cpu.AF, rr(cpu, hi(cpu.AF)));               cycles = 8;  break; // RR A

    case 0x20: set_hi(cpu.BC, sla(cpu, hi(cpu.BC)));              cycles = 8;  break; // SLA B
    case 0x21: set_lo(cpu.BC, sla(cpu, lo(cpu.BC)));              cycles = 8;  break; // SLA C
    case 0x22: set_hi(cpu.DE, sla(cpu, hi(cpu.DE)));              cycles = 8;  break; // SLA D
    case 0x23: set_lo(cpu.DE, sla(cpu, lo(cpu.DE)));              cycles = 8;  break; // SLA E
    case 0x24: set_hi(cpu.HL, sla(cpu, hi(cpu.HL)));              cycles = 8;  break; // SLA H
    case 0x25: set_lo(cpu.HL, sla(cpu, lo(cpu.HL)));              cycles = 8;  break; // SLA L
    case 0x26: write8(cpu, cpu.HL, sla(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // SLA (HL)
    case 0x27: set_hi(cpu.AF, sla(cpu, hi(cpu.AF)));              cycles = 8;  break; // SLA A

    case 0x28: set_hi(cpu.BC, sra(cpu, hi(cpu.BC)));              cycles = 8;  break; // SRA B
    case 0x29: set_lo(cpu.BC, sra(cpu, lo(cpu.BC)));              cycles = 8;  break; // SRA C
    case 0x2A: set_hi(cpu.DE, sra(cpu, hi(cpu.DE)));              cycles = 8;  break; // SRA D
    case 0x2B: set_lo(cpu.DE, sra(cpu, lo(cpu.DE)));              cycles = 8;  break; // SRA E
    case 0x2C: set_hi(cpu.HL, sra(cpu, hi(cpu.HL)));              cycles = 8;  break; // SRA H
    case 0x2D: set_lo(cpu.HL, sra(cpu, lo(cpu.HL)));              cycles = 8;  break; // SRA L
    case 0x2E: write8(cpu, cpu.HL, sra(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // SRA (HL)
    case 0x2F: set_hi(cpu.AF, sra(cpu, hi(cpu.AF)));              cycles = 8;  break; // SRA A

    case 0x30: set_hi(cpu.BC, sll(cpu, hi(cpu.BC)));              cycles = 8;  break; // SLL B
    case 0x31: set_lo(cpu.BC, sll(cpu, lo(cpu.BC)));              cycles = 8;  break; // SLL C
    case 0x32: set_hi(cpu.DE, sll(cpu, hi(cpu.DE)));              cycles = 8;  break; // SLL D
    case 0x33: set_lo(cpu.DE, sll(cpu, lo(cpu.DE)));              cycles = 8;  break; // SLL E
    case 0x34: set_hi(cpu.HL, sll(cpu, hi(cpu.HL)));              cycles = 8;  break; // SLL H
    case 0x35: set_lo(cpu.HL, sll(cpu, lo(cpu.HL)));              cycles = 8;  break; // SLL L
    case 0x36: write8(cpu, cpu.HL, sll(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // SLL (HL)
    case 0x37: set_hi(cpu.AF, sll(cpu, hi(cpu.AF)));              cycles = 8;  break; // SLL A

    case 0x38: set_hi(cpu.BC, srl(cpu, hi(cpu.BC)));              cycles = 8;  break; // SRL B
    case 0x39: set_lo(cpu.BC, srl(cpu, lo(cpu.BC)));              cycles = 8;  break; // SRL C
    case 0x3A: set_hi(cpu.DE, srl(cpu, hi(cpu.DE)));              cycles = 8;  break; // SRL D
    case 0x3B: set_lo(cpu.DE, srl(cpu, lo(cpu.DE)));              cycles = 8;  break; // SRL E
    case 0x3C: set_hi(cpu.HL, srl(cpu, hi(cpu.HL)));              cycles = 8;  break; // SRL H
    case 0x3D: set_lo(cpu.HL, srl(cpu, lo(cpu.HL)));              cycles = 8;  break; // SRL L
    case 0x3E: write8(cpu, cpu.HL, srl(cpu, read8(cpu, cpu.HL))); cycles = 15; break; // SRL (HL)
    case 0x3F: set_hi(cpu.AF, srl(cpu, hi(cpu.AF)));              cycles = 8;  break; // SRL A

    // ---- 0x40 ----------------------------------------------------------------------
    case 0x40: bit(cpu, 0, hi(cpu.BC));                           cycles = 8;  break; // BIT 0,B
    case 0x41: bit(cpu, 0, lo(cpu.BC));                           cycles = 8;  break; // BIT 0,C
    case 0x42: bit(cpu, 0, hi(cpu.DE));                           cycles = 8;  break; // BIT 0,D
    case 0x43: bit(cpu, 0, lo(cpu.DE));                           cycles = 8;  break; // BIT 0,E
    case 0x44: bit(cpu, 0, hi(cpu.HL));                           cycles = 8;  break; // BIT 0,H
    case 0x45: bit(cpu, 0, lo(cpu.HL));                           cycles = 8;  break; // BIT 0,L
    case 0x46: bit(cpu, 0, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 0,(HL)
    case 0x47: bit(cpu, 0, hi(cpu.AF));                           cycles = 8;  break; // BIT 0,A

    case 0x48: bit(cpu, 1, hi(cpu.BC));                           cycles = 8;  break; // BIT 1,B
    case 0x49: bit(cpu, 1, lo(cpu.BC));                           cycles = 8;  break; // BIT 1,C
    case 0x4A: bit(cpu, 1, hi(cpu.DE));                           cycles = 8;  break; // BIT 1,D
    case 0x4B: bit(cpu, 1, lo(cpu.DE));                           cycles = 8;  break; // BIT 1,E
    case 0x4C: bit(cpu, 1, hi(cpu.HL));                           cycles = 8;  break; // BIT 1,H
    case 0x4D: bit(cpu, 1, lo(cpu.HL));                           cycles = 8;  break; // BIT 1,L
    case 0x4E: bit(cpu, 1, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 1,(HL)
    case 0x4F: bit(cpu, 1, hi(cpu.AF));                           cycles = 8;  break; // BIT 1,A

    case 0x50: bit(cpu, 2, hi(cpu.BC));                           cycles = 8;  break; // BIT 2,B
    case 0x51: bit(cpu, 2, lo(cpu.BC));                           cycles = 8;  break; // BIT 2,C
    case 0x52: bit(cpu, 2, hi(cpu.DE));                           cycles = 8;  break; // BIT 2,D
    case 0x53: bit(cpu, 2, lo(cpu.DE));                           cycles = 8;  break; // BIT 2,E
    case 0x54: bit(cpu, 2, hi(cpu.HL));                           cycles = 8;  break; // BIT 2,H
    case 0x55: bit(cpu, 2, lo(cpu.HL));                           cycles = 8;  break; // BIT 2,L
    case 0x56: bit(cpu, 2, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 2,(HL)
    case 0x57: bit(cpu, 2, hi(cpu.AF));                           cycles = 8;  break; // BIT 2,A

    case 0x58: bit(cpu, 3, hi(cpu.BC));                           cycles = 8;  break; // BIT 3,B
    case 0x59: bit(cpu, 3, lo(cpu.BC));                           cycles = 8;  break; // BIT 3,C
    case 0x5A: bit(cpu, 3, hi(cpu.DE));                           cycles = 8;  break; // BIT 3,D
    case 0x5B: bit(cpu, 3, lo(cpu.DE));                           cycles = 8;  break; // BIT 3,E
    case 0x5C: bit(cpu, 3, hi(cpu.HL));                           cycles = 8;  break; // BIT 3,H
    case 0x5D: bit(cpu, 3, lo(cpu.HL));                           cycles = 8;  break; // BIT 3,L
    case 0x5E: bit(cpu, 3, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 3,(HL)
    case 0x5F: bit(cpu, 3, hi(cpu.AF));                           cycles = 8;  break; // BIT 3,A

    case 0x60: bit(cpu, 4, hi(cpu.BC));                           cycles = 8;  break; // BIT 4,B
    case 0x61: bit(cpu, 4, lo(cpu.BC));                           cycles = 8;  break; // BIT 4,C
    case 0x62: bit(cpu, 4, hi(cpu.DE));                           cycles = 8;  break; // BIT 4,D
    case 0x63: bit(cpu, 4, lo(cpu.DE));                           cycles = 8;  break; // BIT 4,E
    case 0x64: bit(cpu, 4, hi(cpu.HL));                           cycles = 8;  break; // BIT 4,H
    case 0x65: bit(cpu, 4, lo(cpu.HL));                           cycles = 8;  break; // BIT 4,L
    case 0x66: bit(cpu, 4, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 4,(HL)
    case 0x67: bit(cpu, 4, hi(cpu.AF));                           cycles = 8;  break; // BIT 4,A

    case 0x68: bit(cpu, 5, hi(cpu.BC));                           cycles = 8;  break; // BIT 5,B
    case 0x69: bit(cpu, 5, lo(cpu.BC));                           cycles = 8;  break; // BIT 5,C
    case 0x6A: bit(cpu, 5, hi(cpu.DE));                           cycles = 8;  break; // BIT 5,D
    case 0x6B: bit(cpu, 5, lo(cpu.DE));                           cycles = 8;  break; // BIT 5,E
    case 0x6C: bit(cpu, 5, hi(cpu.HL));                           cycles = 8;  break; // BIT 5,H
    case 0x6D: bit(cpu, 5, lo(cpu.HL));                           cycles = 8;  break; // BIT 5,L
    case 0x6E: bit(cpu, 5, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 5,(HL)
    case 0x6F: bit(cpu, 5, hi(cpu.AF));                           cycles = 8;  break; // BIT 5,A

    case 0x70: bit(cpu, 6, hi(cpu.BC));                           cycles = 8;  break; // BIT 6,B
    case 0x71: bit(cpu, 6, lo(cpu.BC));                           cycles = 8;  break; // BIT 6,C
    case 0x72: bit(cpu, 6, hi(cpu.DE));                           cycles = 8;  break; // BIT 6,D
    case 0x73: bit(cpu, 6, lo(cpu.DE));                           cycles = 8;  break; // BIT 6,E
    case 0x74: bit(cpu, 6, hi(cpu.HL));                           cycles = 8;  break; // BIT 6,H
    case 0x75: bit(cpu, 6, lo(cpu.HL));                           cycles = 8;  break; // BIT 6,L
    case 0x76: bit(cpu, 6, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 6,(HL)
    case 0x77: bit(cpu, 6, hi(cpu.AF));                           cycles = 8;  break; // BIT 6,A

    case 0x78: bit(cpu, 7, hi(cpu.BC));                           cycles = 8;  break; // BIT 7,B
    case 0x79: bit(cpu, 7, lo(cpu.BC));                           cycles = 8;  break; // BIT 7,C
    case 0x7A: bit(cpu, 7, hi(cpu.DE));                           cycles = 8;  break; // BIT 7,D
    case 0x7B: bit(cpu, 7, lo(cpu.DE));                           cycles = 8;  break; // BIT 7,E
    case 0x7C: bit(cpu, 7, hi(cpu.HL));                           cycles = 8;  break; // BIT 7,H
    case 0x7D: bit(cpu, 7, lo(cpu.HL));                           cycles = 8;  break; // BIT 7,L
    case 0x7E: bit(cpu, 7, read8(cpu, cpu.HL));                   cycles = 12; break; // BIT 7,(HL)
    case 0x7F: bit(cpu, 7, hi(cpu.AF));                           cycles = 8;  break; // BIT 7,A

    // ---- 0x80 ----------------------------------------------------------------------
    case 0x80: set_hi(cpu.BC, res(0, hi(cpu.BC)));                cycles = 8;  break; // RES 0,B
    case 0x81: set_lo(cpu.BC, res(0, lo(cpu.BC)));                cycles = 8;  break; // RES 0,C
    case 0x82: set_hi(cpu.DE, res(0, hi(cpu.DE)));                cycles = 8;  break; // RES 0,D
    case 0x83: set_lo(cpu.DE, res(0, lo(cpu.DE)));                cycles = 8;  break; // RES 0,E
    case 0x84: set_hi(cpu.HL, res(0, hi(cpu.HL)));                cycles = 8;  break; // RES 0,H
    case 0x85: set_lo(cpu.HL, res(0, lo(cpu.HL)));                cycles = 8;  break; // RES 0,L
    case 0x86: write8(cpu, cpu.HL, res(0, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 0,(HL)
    case 0x87: set_hi(cpu.AF, res(0, hi(cpu.AF)));                cycles = 8;  break; // RES 0,A

    case 0x88: set_hi(cpu.BC, res(1, hi(cpu.BC)));                cycles = 8;  break; // RES 1,B
    case 0x89: set_lo(cpu.BC, res(1, lo(cpu.BC)));                cycles = 8;  break; // RES 1,C
    case 0x8A: set_hi(cpu.DE, res(1, hi(cpu.DE)));                cycles = 8;  break; // RES 1,D
    case 0x8B: set_lo(cpu.DE, res(1, lo(cpu.DE)));                cycles = 8;  break; // RES 1,E
    case 0x8C: set_hi(cpu.HL, res(1, hi(cpu.HL)));                cycles = 8;  break; // RES 1,H
    case 0x8D: set_lo(cpu.HL, res(1, lo(cpu.HL)));                cycles = 8;  break; // RES 1,L
    case 0x8E: write8(cpu, cpu.HL, res(1, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 1,(HL)
    case 0x8F: set_hi(cpu.AF, res(1, hi(cpu.AF)));                cycles = 8;  break; // RES 1,A

    case 0x90: set_hi(cpu.BC, res(2, hi(cpu.BC)));                cycles = 8;  break; // RES 2,B
    case 0x91: set_lo(cpu.BC, res(2, lo(cpu.BC)));                cycles = 8;  break; // RES 2,C
    case 0x92: set_hi(cpu.DE, res(2, hi(cpu.DE)));                cycles = 8;  break; // RES 2,D
    case 0x93: set_lo(cpu.DE, res(2, lo(cpu.DE)));                cycles = 8;  break; // RES 2,E
    case 0x94: set_hi(cpu.HL, res(2, hi(cpu.HL)));                cycles = 8;  break; // RES 2,H
    case 0x95: set_lo(cpu.HL, res(2, lo(cpu.HL)));                cycles = 8;  break; // RES 2,L
    case 0x96: write8(cpu, cpu.HL, res(2, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 2,(HL)
    case 0x97: set_hi(cpu.AF, res(2, hi(cpu.AF)));                cycles = 8;  break; // RES 2,A

    case 0x98: set_hi(cpu.BC, res(3, hi(cpu.BC)));                cycles = 8;  break; // RES 3,B
    case 0x99: set_lo(cpu.BC, res(3, lo(cpu.BC)));                cycles = 8;  break; // RES 3,C
    case 0x9A: set_hi(cpu.DE, res(3, hi(cpu.DE)));                cycles = 8;  break; // RES 3,D
    case 0x9B: set_lo(cpu.DE, res(3, lo(cpu.DE)));                cycles = 8;  break; // RES 3,E
    case 0x9C: set_hi(cpu.HL, res(3, hi(cpu.HL)));                cycles = 8;  break; // RES 3,H
    case 0x9D: set_lo(cpu.HL, res(3, lo(cpu.HL)));                cycles = 8;  break; // RES 3,L
    case 0x9E: write8(cpu, cpu.HL, res(3, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 3,(HL)
    case 0x9F: set_hi(cpu.AF, res(3, hi(cpu.AF)));                cycles = 8;  break; // RES 3,A

    case 0xA0: set_hi(cpu.BC, res(4, hi(cpu.BC)));                cycles = 8;  break; // RES 4,B
    case 0xA1: set_lo(cpu.BC, res(4, lo(cpu.BC)));                cycles = 8;  break; // RES 4,C
    case 0xA2: set_hi(cpu.DE, res(4, hi(cpu.DE)));                cycles = 8;  break; // RES 4,D
    case 0xA3: set_lo(cpu.DE, res(4, lo(cpu.DE)));                cycles = 8;  break; // RES 4,E
    case 0xA4: set_hi(cpu.HL, res(4, hi(cpu.HL)));                cycles = 8;  break; // RES 4,H
    case 0xA5: set_lo(cpu.HL, res(4, lo(cpu.HL)));                cycles = 8;  break; // RES 4,L
    case 0xA6: write8(cpu, cpu.HL, res(4, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 4,(HL)
    case 0xA7: set_hi(cpu.AF, res(4, hi(cpu.AF)));                cycles = 8;  break; // RES 4,A

    case 0xA8: set_hi(cpu.BC, res(5, hi(cpu.BC)));                cycles = 8;  break; // RES 5,B
    case 0xA9: set_lo(cpu.BC, res(5, lo(cpu.BC)));                cycles = 8;  break; // RES 5,C
    case 0xAA: set_hi(cpu.DE, res(5, hi(cpu.DE)));                cycles = 8;  break; // RES 5,D
    case 0xAB: set_lo(cpu.DE, res(5, lo(cpu.DE)));                cycles = 8;  break; // RES 5,E
    case 0xAC: set_hi(cpu.HL, res(5, hi(cpu.HL)));                cycles = 8;  break; // RES 5,H
    case 0xAD: set_lo(cpu.HL, res(5, lo(cpu.HL)));                cycles = 8;  break; // RES 5,L
    case 0xAE: write8(cpu, cpu.HL, res(5, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 5,(HL)
    case 0xAF: set_hi(cpu.AF, res(5, hi(cpu.AF)));                cycles = 8;  break; // RES 5,A

    case 0xB0: set_hi(cpu.BC, res(6, hi(cpu.BC)));                cycles = 8;  break; // RES 6,B
    case 0xB1: set_lo(cpu.BC, res(6, lo(cpu.BC)));                cycles = 8;  break; // RES 6,C
    case 0xB2: set_hi(cpu.DE, res(6, hi(cpu.DE)));                cycles = 8;  break; // RES 6,D
    case 0xB3: set_lo(cpu.DE, res(6, lo(cpu.DE)));                cycles = 8;  break; // RES 6,E
    case 0xB4: set_hi(cpu.HL, res(6, hi(cpu.HL)));                cycles = 8;  break; // RES 6,H
    case 0xB5: set_lo(cpu.HL, res(6, lo(cpu.HL)));                cycles = 8;  break; // RES 6,L
    case 0xB6: write8(cpu, cpu.HL, res(6, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 6,(HL)
    case 0xB7: set_hi(cpu.AF, res(6, hi(cpu.AF)));                cycles = 8;  break; // RES 6,A

    case 0xB8: set_hi(cpu.BC, res(7, hi(cpu.BC)));                cycles = 8;  break; // RES 7,B
    case 0xB9: set_lo(cpu.BC, res(7, lo(cpu.BC)));                cycles = 8;  break; // RES 7,C
    case 0xBA: set_hi(cpu.DE, res(7, hi(cpu.DE)));                cycles = 8;  break; // RES 7,D
    case 0xBB: set_lo(cpu.DE, res(7, lo(cpu.DE)));                cycles = 8;  break; // RES 7,E
    case 0xBC: set_hi(cpu.HL, res(7, hi(cpu.HL)));                cycles = 8;  break; // RES 7,H
    case 0xBD: set_lo(cpu.HL, res(7, lo(cpu.HL)));                cycles = 8;  break; // RES 7,L
    case 0xBE: write8(cpu, cpu.HL, res(7, read8(cpu, cpu.HL)));   cycles = 15; break; // RES 7,(HL)
    case 0xBF: set_hi(cpu.AF, res(7, hi(cpu.AF)));                cycles = 8;  break; // RES 7,A

    // ---- 0xC0 ----------------------------------------------------------------------
    case 0xC0: set_hi(cpu.BC, set(0, hi(cpu.BC)));                cycles = 8;  break; // SET 0,B
    case 0xC1: set_lo(cpu.BC, set(0, lo(cpu.BC)));                cycles = 8;  break; // SET 0,C
    case 0xC2: set_hi(cpu.DE, set(0, hi(cpu.DE)));                cycles = 8;  break; // SET 0,D
    case 0xC3: set_lo(cpu.DE, set(0, lo(cpu.DE)));                cycles = 8;  break; // SET 0,E
    case 0xC4: set_hi(cpu.HL, set(0, hi(cpu.HL)));                cycles = 8;  break; // SET 0,H
    case 0xC5: set_lo(cpu.HL, set(0, lo(cpu.HL)));                cycles = 8;  break; // SET 0,L
    case 0xC6: write8(cpu, cpu.HL, set(0, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 0,(HL)
    case 0xC7: set_hi(cpu.AF, set(0, hi(cpu.AF)));                cycles = 8;  break; // SET 0,A

    case 0xC8: set_hi(cpu.BC, set(1, hi(cpu.BC)));                cycles = 8;  break; // SET 1,B
    case 0xC9: set_lo(cpu.BC, set(1, lo(cpu.BC)));                cycles = 8;  break; // SET 1,C
    case 0xCA: set_hi(cpu.DE, set(1, hi(cpu.DE)));                cycles = 8;  break; // SET 1,D
    case 0xCB: set_lo(cpu.DE, set(1, lo(cpu.DE)));                cycles = 8;  break; // SET 1,E
    case 0xCC: set_hi(cpu.HL, set(1, hi(cpu.HL)));                cycles = 8;  break; // SET 1,H
    case 0xCD: set_lo(cpu.HL, set(1, lo(cpu.HL)));                cycles = 8;  break; // SET 1,L
    case 0xCE: write8(cpu, cpu.HL, set(1, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 1,(HL)
    case 0xCF: set_hi(cpu.AF, set(1, hi(cpu.AF)));                cycles = 8;  break; // SET 1,A

    case 0xD0: set_hi(cpu.BC, set(2, hi(cpu.BC)));                cycles = 8;  break; // SET 2,B
    case 0xD1: set_lo(cpu.BC, set(2, lo(cpu.BC)));                cycles = 8;  break; // SET 2,C
    case 0xD2: set_hi(cpu.DE, set(2, hi(cpu.DE)));                cycles = 8;  break; // SET 2,D
    case 0xD3: set_lo(cpu.DE, set(2, lo(cpu.DE)));                cycles = 8;  break; // SET 2,E
    case 0xD4: set_hi(cpu.HL, set(2, hi(cpu.HL)));                cycles = 8;  break; // SET 2,H
    case 0xD5: set_lo(cpu.HL, set(2, lo(cpu.HL)));                cycles = 8;  break; // SET 2,L
    case 0xD6: write8(cpu, cpu.HL, set(2, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 2,(HL)
    case 0xD7: set_hi(cpu.AF, set(2, hi(cpu.AF)));                cycles = 8;  break; // SET 2,A

    case 0xD8: set_hi(cpu.BC, set(3, hi(cpu.BC)));                cycles = 8;  break; // SET 3,B
    case 0xD9: set_lo(cpu.BC, set(3, lo(cpu.BC)));                cycles = 8;  break; // SET 3,C
    case 0xDA: set_hi(cpu.DE, set(3, hi(cpu.DE)));                cycles = 8;  break; // SET 3,D
    case 0xDB: set_lo(cpu.DE, set(3, lo(cpu.DE)));                cycles = 8;  break; // SET 3,E
    case 0xDC: set_hi(cpu.HL, set(3, hi(cpu.HL)));                cycles = 8;  break; // SET 3,H
    case 0xDD: set_lo(cpu.HL, set(3, lo(cpu.HL)));                cycles = 8;  break; // SET 3,L
    case 0xDE: write8(cpu, cpu.HL, set(3, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 3,(HL)
    case 0xDF: set_hi(cpu.AF, set(3, hi(cpu.AF)));                cycles = 8;  break; // SET 3,A

    case 0xE0: set_hi(cpu.BC, set(4, hi(cpu.BC)));                cycles = 8;  break; // SET 4,B
    case 0xE1: set_lo(cpu.BC, set(4, lo(cpu.BC)));                cycles = 8;  break; // SET 4,C
    case 0xE2: set_hi(cpu.DE, set(4, hi(cpu.DE)));                cycles = 8;  break; // SET 4,D
    case 0xE3: set_lo(cpu.DE, set(4, lo(cpu.DE)));                cycles = 8;  break; // SET 4,E
    case 0xE4: set_hi(cpu.HL, set(4, hi(cpu.HL)));                cycles = 8;  break; // SET 4,H
    case 0xE5: set_lo(cpu.HL, set(4, lo(cpu.HL)));                cycles = 8;  break; // SET 4,L
    case 0xE6: write8(cpu, cpu.HL, set(4, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 4,(HL)
    case 0xE7: set_hi(cpu.AF, set(4, hi(cpu.AF)));                cycles = 8;  break; // SET 4,A

    case 0xE8: set_hi(cpu.BC, set(5, hi(cpu.BC)));                cycles = 8;  break; // SET 5,B
    case 0xE9: set_lo(cpu.BC, set(5, lo(cpu.BC)));                cycles = 8;  break; // SET 5,C
    case 0xEA: set_hi(cpu.DE, set(5, hi(cpu.DE)));                cycles = 8;  break; // SET 5,D
    case 0xEB: set_lo(cpu.DE, set(5, lo(cpu.DE)));                cycles = 8;  break; // SET 5,E
    case 0xEC: set_hi(cpu.HL, set(5, hi(cpu.HL)));                cycles = 8;  break; // SET 5,H
    case 0xED: set_lo(cpu.HL, set(5, lo(cpu.HL)));                cycles = 8;  break; // SET 5,L
    case 0xEE: write8(cpu, cpu.HL, set(5, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 5,(HL)
    case 0xEF: set_hi(cpu.AF, set(5, hi(cpu.AF)));                cycles = 8;  break; // SET 5,A

    case 0xF0: set_hi(cpu.BC, set(6, hi(cpu.BC)));                cycles = 8;  break; // SET 6,B
    case 0xF1: set_lo(cpu.BC, set(6, lo(cpu.BC)));                cycles = 8;  break; // SET 6,C
    case 0xF2: set_hi(cpu.DE, set(6, hi(cpu.DE)));                cycles = 8;  break; // SET 6,D
    case 0xF3: set_lo(cpu.DE, set(6, lo(cpu.DE)));                cycles = 8;  break; // SET 6,E
    case 0xF4: set_hi(cpu.HL, set(6, hi(cpu.HL)));                cycles = 8;  break; // SET 6,H
    case 0xF5: set_lo(cpu.HL, set(6, lo(cpu.HL)));                cycles = 8;  break; // SET 6,L
    case 0xF6: write8(cpu, cpu.HL, set(6, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 6,(HL)
    case 0xF7: set_hi(cpu.AF, set(6, hi(cpu.AF)));                cycles = 8;  break; // SET 6,A

    case 0xF8: set_hi(cpu.BC, set(7, hi(cpu.BC)));                cycles = 8;  break; // SET 7,B
    case 0xF9: set_lo(cpu.BC, set(7, lo(cpu.BC)));                cycles = 8;  break; // SET 7,C
    case 0xFA: set_hi(cpu.DE, set(7, hi(cpu.DE)));                cycles = 8;  break; // SET 7,D
    case 0xFB: set_lo(cpu.DE, set(7, lo(cpu.DE)));                cycles = 8;  break; // SET 7,E
    case 0xFC: set_hi(cpu.HL, set(7, hi(cpu.HL)));                cycles = 8;  break; // SET 7,H
    case 0xFD: set_lo(cpu.HL, set(7, lo(cpu.HL)));                cycles = 8;  break; // SET 7,L
    case 0xFE: write8(cpu, cpu.HL, set(7, read8(cpu, cpu.HL)));   cycles = 15; break; // SET 7,(HL)
    case 0xFF: set_hi(cpu.AF, set(7, hi(cpu.AF)));                cycles = 8;  break; // SET 7,A
    }
    return finish(cpu, pc, cycles, 2);
}
// clang-format on

template bool exec_cb(z80_cpu &, memory_pc);
template bool exec_cb(z80_cpu &, injecting_pc);

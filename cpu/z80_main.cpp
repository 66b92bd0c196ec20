// The unprefixed instructions, and the step that dispatches them.
#include "cpu/z80_operations.h"
#include "cpu/z80_step.h"
#include <utility>

namespace {

constexpr int any_opcode = -1;

// The opcode map. With `fixed` an opcode, that case alone is compiled.
// clang-format off
template <class code, int fixed> [[gnu::always_inline]] inline bool unprefixed(z80_cpu &cpu, code pc, int opcode) {
    uint32_t cycles = 0;
    switch (fixed == any_opcode ? opcode : fixed) {
    // ---- 0x00 ----------------------------------------------------------------------
    case 0x00:                                                       cycles = 4;  break; // NOP
    case 0x01: cpu.BC = fetch16(cpu, pc);                            cycles = 10; break; // LD BC,nn
    case 0x02: write8(cpu, cpu.BC, hi(cpu.AF));                      cycles = 7;  break; // LD (BC),A
    case 0x03: inc16(cpu.BC);                                        cycles = 6;  break; // INC BC
    case 0x04: set_hi(cpu.BC, inc8(cpu, hi(cpu.BC)));                cycles = 4;  break; // INC B
    case 0x05: set_hi(cpu.BC, dec8(cpu, hi(cpu.BC)));                cycles = 4;  break; // DEC B
    case 0x06: set_hi(cpu.BC, fetch8(cpu, pc));                      cycles = 7;  break; // LD B,n
    case 0x07: rlca(cpu);                                            cycles = 4;  break; // RLCA

    case 0x08: exchange(cpu.AF, cpu.AF_alt);                         cycles = 4;  break; // EX AF,AF'
    case 0x09: add16(cpu, cpu.HL, cpu.BC);                           cycles = 11; break; // ADD HL,BC
    case 0x0A: set_hi(cpu.AF, read8(cpu, cpu.BC));                   cycles = 7;  break; // LD A,(BC)
    case 0x0B: dec16(cpu.BC);                                        cycles = 6;  break; // DEC BC
    case 0x0C: set_lo(cpu.BC, inc8(cpu, lo(cpu.BC)));                cycles = 4;  break; // INC C
    case 0x0D: set_lo(cpu.BC, dec8(cpu, lo(cpu.BC)));                cycles = 4;  break; // DEC C
    case 0x0E: set_lo(cpu.BC, fetch8(cpu, pc));                      cycles = 7;  break; // LD C,n
    case 0x0F: rrca(cpu);                                            cycles = 4;  break; // RRCA

    case 0x10: cycles = djnz(cpu, pc);                               break;              // DJNZ e
    case 0x11: cpu.DE = fetch16(cpu, pc);                            cycles = 10; break; // LD DE,nn
    case 0x12: write8(cpu, cpu.DE, hi(cpu.AF));                      cycles = 7;  break; // LD (DE),A
    case 0x13: inc16(cpu.DE);                                        cycles = 6;  break; // INC DE
    case 0x14: set_hi(cpu.DE, inc8(cpu, hi(cpu.DE)));                cycles = 4;  break; // INC D
    case 0x15: set_hi(cpu.DE, dec8(cpu, hi(cpu.DE)));                cycles = 4;  break; // DEC D
    case 0x16: set_hi(cpu.DE, fetch8(cpu, pc));                      cycles = 7;  break; // LD D,n
    case 0x17: rla(cpu);                                             cycles = 4;  break; // RLA

    case 0x18: cycles = jump_relative_if(cpu, pc, true);             break;              // JR e
    case 0x19: add16(cpu, cpu.HL, cpu.DE);                           cycles = 11; break; // ADD HL,DE
    case 0x1A: set_hi(cpu.AF, read8(cpu, cpu.DE));                   cycles = 7;  break; // LD A,(DE)
    case 0x1B: dec16(cpu.DE);                                        cycles = 6;  break; // DEC DE
    case 0x1C: set_lo(cpu.DE, inc8(cpu, lo(cpu.DE)));                cycles = 4;  break; // INC E
    case 0x1D: set_lo(cpu.DE, dec8(cpu, lo(cpu.DE)));                cycles = 4;  break; // DEC E
    case 0x1E: set_lo(cpu.DE, fetch8(cpu, pc));                      cycles = 7;  break; // LD E,n
    case 0x1F: rra(cpu);                                             cycles = 4;  break; // RRA

    case 0x20: cycles = jump_relative_if(cpu, pc, !on(cpu, flag_z)); break;              // JR NZ,e
    case 0x21: cpu.HL = fetch16(cpu, pc);                            cycles = 10; break; // LD HL,nn
    case 0x22: write16(cpu, fetch16(cpu, pc), cpu.HL);               cycles = 16; break; // LD (nn),HL
    case 0x23: inc16(cpu.HL);                                        cycles = 6;  break; // INC HL
    case 0x24: set_hi(cpu.HL, inc8(cpu, hi(cpu.HL)));                cycles = 4;  break; // INC H
    case 0x25: set_hi(cpu.HL, dec8(cpu, hi(cpu.HL)));                cycles = 4;  break; // DEC H
    case 0x26: set_hi(cpu.HL, fetch8(cpu, pc));                      cycles = 7;  break; // LD H,n
    case 0x27: daa(cpu);                                             cycles = 4;  break; // DAA

    case 0x28: cycles = jump_relative_if(cpu, pc, on(cpu, flag_z));  break;              // JR Z,e
    case 0x29: add16(cpu, cpu.HL, cpu.HL);                           cycles = 11; break; // ADD HL,HL
    case 0x2A: cpu.HL = read16(cpu, fetch16(cpu, pc));               cycles = 16; break; // LD HL,(nn)
    case 0x2B: dec16(cpu.HL);                                        cycles = 6;  break; // DEC HL
    case 0x2C: set_lo(cpu.HL, inc8(cpu, lo(cpu.HL)));                cycles = 4;  break; // INC L
    case 0x2D: set_lo(cpu.HL, dec8(cpu, lo(cpu.HL)));                cycles = 4;  break; // DEC L
    case 0x2E: set_lo(cpu.HL, fetch8(cpu, pc));                      cycles = 7;  break; // LD L,n
    case 0x2F: cpl(cpu);                                             cycles = 4;  break; // CPL

    case 0x30: cycles = jump_relative_if(cpu, pc, !on(cpu, flag_c)); break;              // JR NC,e
    case 0x31: cpu.SP = fetch16(cpu, pc);                            cycles = 10; break; // LD SP,nn
    case 0x32: write8(cpu, fetch16(cpu, pc), hi(cpu.AF));            cycles = 13; break; // LD (nn),A
    case 0x33: inc16(cpu.SP);                                        cycles = 6;  break; // INC SP
    case 0x34: write8(cpu, cpu.HL, inc8(cpu, read8(cpu, cpu.HL)));   cycles = 11; break; // INC (HL)
    case 0x35: write8(cpu, cpu.HL, dec8(cpu, read8(cpu, cpu.HL)));   cycles = 11; break; // DEC (HL)
    case 0x36: write8(cpu, cpu.HL, fetch8(cpu, pc));                 cycles = 10; break; // LD (HL),n
    case 0x37: scf(cpu);                                             cycles = 4;  break; // SCF

    case 0x38: cycles = jump_relative_if(cpu, pc, on(cpu, flag_c));  break;              // JR C,e
    case 0x39: add16(cpu, cpu.HL, cpu.SP);                           cycles = 11; break; // ADD HL,SP
    case 0x3A: set_hi(cpu.AF, read8(cpu, fetch16(cpu, pc)));         cycles = 13; break; // LD A,(nn)
    case 0x3B: dec16(cpu.SP);                                        cycles = 6;  break; // DEC SP
    case 0x3C: set_hi(cpu.AF, inc8(cpu, hi(cpu.AF)));                cycles = 4;  break; // INC A
    case 0x3D: set_hi(cpu.AF, dec8(cpu, hi(cpu.AF)));                cycles = 4;  break; // DEC A
    case 0x3E: set_hi(cpu.AF, fetch8(cpu, pc));                      cycles = 7;  break; // LD A,n
    case 0x3F: ccf(cpu);                                             cycles = 4;  break; // CCF

    // ---- 0x40 ----------------------------------------------------------------------
    case 0x40:                                                       cycles = 4;  break; // LD B,B
    case 0x41: set_hi(cpu.BC, lo(cpu.BC));                           cycles = 4;  break; // LD B,C
    case 0x42: set_hi(cpu.BC, hi(cpu.DE));                           cycles = 4;  break; // LD B,D
    case 0x43: set_hi(cpu.BC, lo(cpu.DE));                           cycles = 4;  break; // LD B,E
    case 0x44: set_hi(cpu.BC, hi(cpu.HL));                           cycles = 4;  break; // LD B,H
    case 0x45: set_hi(cpu.BC, lo(cpu.HL));                           cycles = 4;  break; // LD B,L
    case 0x46: set_hi(cpu.BC, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD B,(HL)
    case 0x47: set_hi(cpu.BC, hi(cpu.AF));                           cycles = 4;  break; // LD B,A

    case 0x48: set_lo(cpu.BC, hi(cpu.BC));                           cycles = 4;  break; // LD C,B
    case 0x49:                                                       cycles = 4;  break; // LD C,C
    case 0x4A: set_lo(cpu.BC, hi(cpu.DE));                           cycles = 4;  break; // LD C,D
    case 0x4B: set_lo(cpu.BC, lo(cpu.DE));                           cycles = 4;  break; // LD C,E
    case 0x4C: set_lo(cpu.BC, hi(cpu.HL));                           cycles = 4;  break; // LD C,H
    case 0x4D: set_lo(cpu.BC, lo(cpu.HL));                           cycles = 4;  break; // LD C,L
    case 0x4E: set_lo(cpu.BC, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD C,(HL)
    case 0x4F: set_lo(cpu.BC, hi(cpu.AF));                           cycles = 4;  break; // LD C,A

    case 0x50: set_hi(cpu.DE, hi(cpu.BC));                           cycles = 4;  break; // LD D,B
    case 0x51: set_hi(cpu.DE, lo(cpu.BC));                           cycles = 4;  break; // LD D,C
    case 0x52:                                                       cycles = 4;  break; // LD D,D
    case 0x53: set_hi(cpu.DE, lo(cpu.DE));                           cycles = 4;  break; // LD D,E
    case 0x54: set_hi(cpu.DE, hi(cpu.HL));                           cycles = 4;  break; // LD D,H
    case 0x55: set_hi(cpu.DE, lo(cpu.HL));                           cycles = 4;  break; // LD D,L
    case 0x56: set_hi(cpu.DE, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD D,(HL)
    case 0x57: set_hi(cpu.DE, hi(cpu.AF));                           cycles = 4;  break; // LD D,A

    case 0x58: set_lo(cpu.DE, hi(cpu.BC));                           cycles = 4;  break; // LD E,B
    case 0x59: set_lo(cpu.DE, lo(cpu.BC));                           cycles = 4;  break; // LD E,C
    case 0x5A: set_lo(cpu.DE, hi(cpu.DE));                           cycles = 4;  break; // LD E,D
    case 0x5B:                                                       cycles = 4;  break; // LD E,E
    case 0x5C: set_lo(cpu.DE, hi(cpu.HL));                           cycles = 4;  break; // LD E,H
    case 0x5D: set_lo(cpu.DE, lo(cpu.HL));                           cycles = 4;  break; // LD E,L
    case 0x5E: set_lo(cpu.DE, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD E,(HL)
    case 0x5F: set_lo(cpu.DE, hi(cpu.AF));                           cycles = 4;  break; // LD E,A

    case 0x60: set_hi(cpu.HL, hi(cpu.BC));                           cycles = 4;  break; // LD H,B
    case 0x61: set_hi(cpu.HL, lo(cpu.BC));                           cycles = 4;  break; // LD H,C
    case 0x62: set_hi(cpu.HL, hi(cpu.DE));                           cycles = 4;  break; // LD H,D
    case 0x63: set_hi(cpu.HL, lo(cpu.DE));                           cycles = 4;  break; // LD H,E
    case 0x64:                                                       cycles = 4;  break; // LD H,H
    case 0x65: set_hi(cpu.HL, lo(cpu.HL));                           cycles = 4;  break; // LD H,L
    case 0x66: set_hi(cpu.HL, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD H,(HL)
    case 0x67: set_hi(cpu.HL, hi(cpu.AF));                           cycles = 4;  break; // LD H,A

    case 0x68: set_lo(cpu.HL, hi(cpu.BC));                           cycles = 4;  break; // LD L,B
    case 0x69: set_lo(cpu.HL, lo(cpu.BC));                           cycles = 4;  break; // LD L,C
    case 0x6A: set_lo(cpu.HL, hi(cpu.DE));                           cycles = 4;  break; // LD L,D
    case 0x6B: set_lo(cpu.HL, lo(cpu.DE));                           cycles = 4;  break; // LD L,E
    case 0x6C: set_lo(cpu.HL, hi(cpu.HL));                           cycles = 4;  break; // LD L,H
    case 0x6D:                                                       cycles = 4;  break; // LD L,L
    case 0x6E: set_lo(cpu.HL, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD L,(HL)
    case 0x6F: set_lo(cpu.HL, hi(cpu.AF));                           cycles = 4;  break; // LD L,A

    case 0x70: write8(cpu, cpu.HL, hi(cpu.BC));                      cycles = 7;  break; // LD (HL),B
    case 0x71: write8(cpu, cpu.HL, lo(cpu.BC));                      cycles = 7;  break; // LD (HL),C
    case 0x72: write8(cpu, cpu.HL, hi(cpu.DE));                      cycles = 7;  break; // LD (HL),D
    case 0x73: write8(cpu, cpu.HL, lo(cpu.DE));                      cycles = 7;  break; // LD (HL),E
    case 0x74: write8(cpu, cpu.HL, hi(cpu.HL));                      cycles = 7;  break; // LD (HL),H
    case 0x75: write8(cpu, cpu.HL, lo(cpu.HL));                      cycles = 7;  break; // LD (HL),L
    case 0x76: return stop(cpu, pc, stop_halt, 0, 1);                                         // HALT
    case 0x77: write8(cpu, cpu.HL, hi(cpu.AF));                      cycles = 7;  break; // LD (HL),A

    case 0x78: set_hi(cpu.AF, hi(cpu.BC));                           cycles = 4;  break; // LD A,B
    case 0x79: set_hi(cpu.AF, lo(cpu.BC));                           cycles = 4;  break; // LD A,C
    case 0x7A: set_hi(cpu.AF, hi(cpu.DE));                           cycles = 4;  break; // LD A,D
    case 0x7B: set_hi(cpu.AF, lo(cpu.DE));                           cycles = 4;  break; // LD A,E
    case 0x7C: set_hi(cpu.AF, hi(cpu.HL));                           cycles = 4;  break; // LD A,H
    case 0x7D: set_hi(cpu.AF, lo(cpu.HL));                           cycles = 4;  break; // LD A,L
    case 0x7E: set_hi(cpu.AF, read8(cpu, cpu.HL));                   cycles = 7;  break; // LD A,(HL)
    case 0x7F:                                                       cycles = 4;  break; // LD A,A

    // ---- 0x80 ----------------------------------------------------------------------
    case 0x80: add8(cpu, hi(cpu.BC));                                cycles = 4;  break; // ADD A,B
    case 0x81: add8(cpu, lo(cpu.BC));                                cycles = 4;  break; // ADD A,C
    case 0x82: add8(cpu, hi(cpu.DE));                                cycles = 4;  break; // ADD A,D
    case 0x83: add8(cpu, lo(cpu.DE));                                cycles = 4;  break; // ADD A,E
    case 0x84: add8(cpu, hi(cpu.HL));                                cycles = 4;  break; // ADD A,H
    case 0x85: add8(cpu, lo(cpu.HL));                                cycles = 4;  break; // ADD A,L
    case 0x86: add8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // ADD A,(HL)
    case 0x87: add8(cpu, hi(cpu.AF));                                cycles = 4;  break; // ADD A,A

    case 0x88: adc8(cpu, hi(cpu.BC));                                cycles = 4;  break; // ADC A,B
    case 0x89: adc8(cpu, lo(cpu.BC));                                cycles = 4;  break; // ADC A,C
    case 0x8A: adc8(cpu, hi(cpu.DE));                                cycles = 4;  break; // ADC A,D
    case 0x8B: adc8(cpu, lo(cpu.DE));                                cycles = 4;  break; // ADC A,E
    case 0x8C: adc8(cpu, hi(cpu.HL));                                cycles = 4;  break; // ADC A,H
    case 0x8D: adc8(cpu, lo(cpu.HL));                                cycles = 4;  break; // ADC A,L
    case 0x8E: adc8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // ADC A,(HL)
    case 0x8F: adc8(cpu, hi(cpu.AF));                                cycles = 4;  break; // ADC A,A

    case 0x90: sub8(cpu, hi(cpu.BC));                                cycles = 4;  break; // SUB B
    case 0x91: sub8(cpu, lo(cpu.BC));                                cycles = 4;  break; // SUB C
    case 0x92: sub8(cpu, hi(cpu.DE));                                cycles = 4;  break; // SUB D
    case 0x93: sub8(cpu, lo(cpu.DE));                                cycles = 4;  break; // SUB E
    case 0x94: sub8(cpu, hi(cpu.HL));                                cycles = 4;  break; // SUB H
    case 0x95: sub8(cpu, lo(cpu.HL));                                cycles = 4;  break; // SUB L
    case 0x96: sub8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // SUB (HL)
    case 0x97: sub8(cpu, hi(cpu.AF));                                cycles = 4;  break; // SUB A

    case 0x98: sbc8(cpu, hi(cpu.BC));                                cycles = 4;  break; // SBC A,B
    case 0x99: sbc8(cpu, lo(cpu.BC));                                cycles = 4;  break; // SBC A,C
    case 0x9A: sbc8(cpu, hi(cpu.DE));                                cycles = 4;  break; // SBC A,D
    case 0x9B: sbc8(cpu, lo(cpu.DE));                                cycles = 4;  break; // SBC A,E
    case 0x9C: sbc8(cpu, hi(cpu.HL));                                cycles = 4;  break; // SBC A,H
    case 0x9D: sbc8(cpu, lo(cpu.HL));                                cycles = 4;  break; // SBC A,L
    case 0x9E: sbc8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // SBC A,(HL)
    case 0x9F: sbc8(cpu, hi(cpu.AF));                                cycles = 4;  break; // SBC A,A

    case 0xA0: and8(cpu, hi(cpu.BC));                                cycles = 4;  break; // AND B
    case 0xA1: and8(cpu, lo(cpu.BC));                                cycles = 4;  break; // AND C
    case 0xA2: and8(cpu, hi(cpu.DE));                                cycles = 4;  break; // AND D
    case 0xA3: and8(cpu, lo(cpu.DE));                                cycles = 4;  break; // AND E
    case 0xA4: and8(cpu, hi(cpu.HL));                                cycles = 4;  break; // AND H
    case 0xA5: and8(cpu, lo(cpu.HL));                                cycles = 4;  break; // AND L
    case 0xA6: and8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // AND (HL)
    case 0xA7: and8(cpu, hi(cpu.AF));                                cycles = 4;  break; // AND A

    case 0xA8: xor8(cpu, hi(cpu.BC));                                cycles = 4;  break; // XOR B
    case 0xA9: xor8(cpu, lo(cpu.BC));                                cycles = 4;  break; // XOR C
    case 0xAA: xor8(cpu, hi(cpu.DE));                                cycles = 4;  break; // XOR D
    case 0xAB: xor8(cpu, lo(cpu.DE));                                cycles = 4;  break; // XOR E
    case 0xAC: xor8(cpu, hi(cpu.HL));                                cycles = 4;  break; // XOR H
    case 0xAD: xor8(cpu, lo(cpu.HL));                                cycles = 4;  break; // XOR L
    case 0xAE: xor8(cpu, read8(cpu, cpu.HL));                        cycles = 7;  break; // XOR (HL)
    case 0xAF: xor8(cpu, hi(cpu.AF));                                cycles = 4;  break; // XOR A

    case 0xB0: or8(cpu, hi(cpu.BC));                                 cycles = 4;  break; // OR B
    case 0xB1: or8(cpu, lo(cpu.BC));                                 cycles = 4;  break; // OR C
    case 0xB2: or8(cpu, hi(cpu.DE));                                 cycles = 4;  break; // OR D
    case 0xB3: or8(cpu, lo(cpu.DE));                                 cycles = 4;  break; // OR E
    case 0xB4: or8(cpu, hi(cpu.HL));                                 cycles = 4;  break; // OR H
    case 0xB5: or8(cpu, lo(cpu.HL));                                 cycles = 4;  break; // OR L
    case 0xB6: or8(cpu, read8(cpu, cpu.HL));                         cycles = 7;  break; // OR (HL)
    case 0xB7: or8(cpu, hi(cpu.AF));                                 cycles = 4;  break; // OR A

    case 0xB8: cp8(cpu, hi(cpu.BC));                                 cycles = 4;  break; // CP B
    case 0xB9: cp8(cpu, lo(cpu.BC));                                 cycles = 4;  break; // CP C
    case 0xBA: cp8(cpu, hi(cpu.DE));                                 cycles = 4;  break; // CP D
    case 0xBB: cp8(cpu, lo(cpu.DE));                                 cycles = 4;  break; // CP E
    case 0xBC: cp8(cpu, hi(cpu.HL));                                 cycles = 4;  break; // CP H
    case 0xBD: cp8(cpu, lo(cpu.HL));                                 cycles = 4;  break; // CP L
    case 0xBE: cp8(cpu, read8(cpu, cpu.HL));                         cycles = 7;  break; // CP (HL)
    case 0xBF: cp8(cpu, hi(cpu.AF));                                 cycles = 4;  break; // CP A

    // ---- 0xC0 ----------------------------------------------------------------------
    case 0xC0: cycles = return_if(cpu, pc, !on(cpu, flag_z));        break;              // RET NZ
    case 0xC1: cpu.BC = pop16(cpu);                                  cycles = 10; break; // POP BC
    case 0xC2: jump_if(cpu, pc, !on(cpu, flag_z));                   cycles = 10; break; // JP NZ,nn
    case 0xC3: jump_if(cpu, pc, true);                               cycles = 10; break; // JP nn
    case 0xC4: cycles = call_if(cpu, pc, !on(cpu, flag_z));          break;              // CALL NZ,nn
    case 0xC5: push16(cpu, cpu.BC);                                  cycles = 11; break; // PUSH BC
    case 0xC6: add8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // ADD A,n
    case 0xC7: call_to(cpu, pc, 0x0000);                             cycles = 11; break; // RST 0x00

    case 0xC8: cycles = return_if(cpu, pc, on(cpu, flag_z));         break;              // RET Z
    case 0xC9: pc = pop16(cpu);                                      cycles = 10; break; // RET
    case 0xCA: jump_if(cpu, pc, on(cpu, flag_z));                    cycles = 10; break; // JP Z,nn
    case 0xCB: return exec_cb(cpu, pc);                                                  // CB group
    case 0xCC: cycles = call_if(cpu, pc, on(cpu, flag_z));           break;              // CALL Z,nn
    case 0xCD: cycles = call_if(cpu, pc, true);                      break;              // CALL nn
    case 0xCE: adc8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // ADC A,n
    case 0xCF: call_to(cpu, pc, 0x0008);                             cycles = 11; break; // RST 0x08

    case 0xD0: cycles = return_if(cpu, pc, !on(cpu, flag_c));        break;              // RET NC
    case 0xD1: cpu.DE = pop16(cpu);                                  cycles = 10; break; // POP DE
    case 0xD2: jump_if(cpu, pc, !on(cpu, flag_c));                   cycles = 10; break; // JP NC,nn
    case 0xD3: output_n(cpu, pc);                                    cycles = 11; break; // OUT (n),A
    case 0xD4: cycles = call_if(cpu, pc, !on(cpu, flag_c));          break;              // CALL NC,nn
    case 0xD5: push16(cpu, cpu.DE);                                  cycles = 11; break; // PUSH DE
    case 0xD6: sub8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // SUB n
    case 0xD7: call_to(cpu, pc, 0x0010);                             cycles = 11; break; // RST 0x10

    case 0xD8: cycles = return_if(cpu, pc, on(cpu, flag_c));         break;              // RET C
    case 0xD9: exchange_sets(cpu);                                   cycles = 4;  break; // EXX
    case 0xDA: jump_if(cpu, pc, on(cpu, flag_c));                    cycles = 10; break; // JP C,nn
    case 0xDB: input_n(cpu, pc);                                     cycles = 11; break; // IN A,(n)
    case 0xDC: cycles = call_if(cpu, pc, on(cpu, flag_c));           break;              // CALL C,nn
    case 0xDD: return exec_index(cpu, pc, cpu.IX);                                       // DD group
    case 0xDE: sbc8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // SBC A,n
    case 0xDF: call_to(cpu, pc, 0x0018);                             cycles = 11; break; // RST 0x18

    case 0xE0: cycles = return_if(cpu, pc, !on(cpu, flag_pv));       break;              // RET PO
    case 0xE1: cpu.HL = pop16(cpu);                                  cycles = 10; break; // POP HL
    case 0xE2: jump_if(cpu, pc, !on(cpu, flag_pv));                  cycles = 10; break; // JP PO,nn
    case 0xE3: exchange_stack(cpu, cpu.HL);                          cycles = 19; break; // EX (SP),HL
    case 0xE4: cycles = call_if(cpu, pc, !on(cpu, flag_pv));         break;              // CALL PO,nn
    case 0xE5: push16(cpu, cpu.HL);                                  cycles = 11; break; // PUSH HL
    case 0xE6: and8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // AND n
    case 0xE7: call_to(cpu, pc, 0x0020);                             cycles = 11; break; // RST 0x20

    case 0xE8: cycles = return_if(cpu, pc, on(cpu, flag_pv));        break;              // RET PE
    case 0xE9: pc = cpu.HL;                                          cycles = 4;  break; // JP (HL)
    case 0xEA: jump_if(cpu, pc, on(cpu, flag_pv));                   cycles = 10; break; // JP PE,nn
    case 0xEB: exchange(cpu.DE, cpu.HL);                             cycles = 4;  break; // EX DE,HL
    case 0xEC: cycles = call_if(cpu, pc, on(cpu, flag_pv));          break;              // CALL PE,nn
    case 0xED: return exec_ed(cpu, pc);                                                  // ED group
    case 0xEE: xor8(cpu, fetch8(cpu, pc));                           cycles = 7;  break; // XOR n
    case 0xEF: call_to(cpu, pc, 0x0028);                             cycles = 11; break; // RST 0x28

    case 0xF0: cycles = return_if(cpu, pc, !on(cpu, flag_s));        break;              // RET P
    case 0xF1: cpu.AF = pop16(cpu);                                  cycles = 10; break; // POP AF
    case 0xF2: jump_if(cpu, pc, !on(cpu, flag_s));                   cycles = 10; break; // JP P,nn
    case 0xF3: enable_interrupts(cpu, 0);                            cycles = 4;  break; // DI
    case 0xF4: cycles = call_if(cpu, pc, !on(cpu, flag_s));          break;              // CALL P,nn
    case 0xF5: push16(cpu, cpu.AF);                                  cycles = 11; break; // PUSH AF
    case 0xF6: or8(cpu, fetch8(cpu, pc));                            cycles = 7;  break; // OR n
    case 0xF7: call_to(cpu, pc, 0x0030);                             cycles = 11; break; // RST 0x30

    case 0xF8: cycles = return_if(cpu, pc, on(cpu, flag_s));         break;              // RET M
    case 0xF9: cpu.SP = cpu.HL;                                      cycles = 6;  break; // LD SP,HL
    case 0xFA: jump_if(cpu, pc, on(cpu, flag_s));                    cycles = 10; break; // JP M,nn
    case 0xFB: enable_interrupts(cpu, 1);                            cycles = 4;  break; // EI
    case 0xFC: cycles = call_if(cpu, pc, on(cpu, flag_s));           break;              // CALL M,nn
    case 0xFD: return exec_index(cpu, pc, cpu.IY);                                       // FD group
    case 0xFE: cp8(cpu, fetch8(cpu, pc));                            cycles = 7;  break; // CP n
    case 0xFF: call_to(cpu, pc, 0x0038);                             cycles = 11; break; // RST 0x38
    }
    return finish(cpu, pc, cycles, 1);
}
// clang-format on

// The map taken apart: a function for every opcode, made of its case alone. Each saves the registers that it
// needs and no more, and returns from where it ends; one function with all the cases saves for the greediest
// of them and has one way out, to which every case jumps.
template <int opcode> bool unprefixed_alone(z80_cpu &cpu) {
    return unprefixed<memory_pc, opcode>(cpu, memory_pc{cpu, 1}, opcode);
}

template <int first, int... opcodes>
constexpr std::array<z80_instruction, 128> half_of_the_map(std::integer_sequence<int, opcodes...>) {
    return {unprefixed_alone<first + opcodes>...};
}

} // namespace

constexpr std::array<z80_instruction, 128> z80_lower_half =
    half_of_the_map<0x00>(std::make_integer_sequence<int, 128>());
constexpr std::array<z80_instruction, 128> z80_upper_half =
    half_of_the_map<0x80>(std::make_integer_sequence<int, 128>());

bool z80_step(z80_cpu &cpu) { return z80_step_inlined(cpu); }

bool z80_step_asking(z80_cpu &cpu) {
    memory_pc pc{cpu, 0};
    return z80_dispatch(cpu, fetch_opcode(cpu, pc));
}

bool z80_execute_injecting(z80_cpu &cpu) {
    injecting_pc pc{cpu, 0};
    const uint8_t opcode = fetch_opcode(cpu, pc);
    return unprefixed<injecting_pc, any_opcode>(cpu, pc, opcode);
}

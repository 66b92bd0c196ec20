// The ED group: words, ports, interrupt modes, nibbles and blocks.
//
// Defined is what the data book lists. The mirrors of NEG, RETN and IM, IN (C), OUT (C),0 and everything else
// stop the CPU as undefined; the block I/O instructions stop it as unimplemented.
#include "cpu/z80_operations.h"

// clang-format off
template <class code> bool exec_ed(z80_cpu &cpu, code from) {
    code pc = from.behind(1);
    uint32_t cycles = 0;
    switch (fetch_opcode(cpu, pc)) {
    // ---- 0x40 ----------------------------------------------------------------------
    case 0x40: set_hi(cpu.BC, input_bc(cpu, pc));               cycles = 12; break; // IN B,(C)
    case 0x41: output(cpu, pc, cpu.BC, hi(cpu.BC));             cycles = 12; break; // OUT (C),B
    case 0x42: sbc16(cpu, cpu.BC);                              cycles = 15; break; // SBC HL,BC
    case 0x43: write16(cpu, fetch16(cpu, pc), cpu.BC);          cycles = 20; break; // LD (nn),BC
    case 0x44: neg(cpu);                                        cycles = 8;  break; // NEG
    case 0x45: retn(cpu, pc);                                   cycles = 14; break; // RETN
    case 0x46: cpu.IM = 0;                                      cycles = 8;  break; // IM 0
    case 0x47: cpu.I = hi(cpu.AF);                              cycles = 9;  break; // LD I,A

    case 0x48: set_lo(cpu.BC, input_bc(cpu, pc));               cycles = 12; break; // IN C,(C)
    case 0x49: output(cpu, pc, cpu.BC, lo(cpu.BC));             cycles = 12; break; // OUT (C),C
    case 0x4A: adc16(cpu, cpu.BC);                              cycles = 15; break; // ADC HL,BC
    case 0x4B: cpu.BC = read16(cpu, fetch16(cpu, pc));          cycles = 20; break; // LD BC,(nn)
    case 0x4D: pc = pop16(cpu);                                 cycles = 14; break; // RETI
    case 0x4F:                                                  cycles = 9;  break; // LD R,A

    case 0x50: set_hi(cpu.DE, input_bc(cpu, pc));               cycles = 12; break; // IN D,(C)
    case 0x51: output(cpu, pc, cpu.BC, hi(cpu.DE));             cycles = 12; break; // OUT (C),D
    case 0x52: sbc16(cpu, cpu.DE);                              cycles = 15; break; // SBC HL,DE
    case 0x53: write16(cpu, fetch16(cpu, pc), cpu.DE);          cycles = 20; break; // LD (nn),DE
    case 0x56: cpu.IM = 1;                                      cycles = 8;  break; // IM 1
    case 0x57: load_a_special(cpu, cpu.I);                      cycles = 9;  break; // LD A,I

    case 0x58: set_lo(cpu.DE, input_bc(cpu, pc));               cycles = 12; break; // IN E,(C)
    case 0x59: output(cpu, pc, cpu.BC, lo(cpu.DE));             cycles = 12; break; // OUT (C),E
    case 0x5A: adc16(cpu, cpu.DE);                              cycles = 15; break; // ADC HL,DE
    case 0x5B: cpu.DE = read16(cpu, fetch16(cpu, pc));          cycles = 20; break; // LD DE,(nn)
    case 0x5E: cpu.IM = 2;                                      cycles = 8;  break; // IM 2
    case 0x5F: load_a_special(cpu, cpu.r_table[cpu.r_counter]); cycles = 9;  break; // LD A,R

    case 0x60: set_hi(cpu.HL, input_bc(cpu, pc));               cycles = 12; break; // IN H,(C)
    case 0x61: output(cpu, pc, cpu.BC, hi(cpu.HL));             cycles = 12; break; // OUT (C),H
    case 0x62: sbc16(cpu, cpu.HL);                              cycles = 15; break; // SBC HL,HL
    case 0x63: write16(cpu, fetch16(cpu, pc), cpu.HL);          cycles = 20; break; // LD (nn),HL
    case 0x67: rrd(cpu);                                        cycles = 18; break; // RRD

    case 0x68: set_lo(cpu.HL, input_bc(cpu, pc));               cycles = 12; break; // IN L,(C)
    case 0x69: output(cpu, pc, cpu.BC, lo(cpu.HL));             cycles = 12; break; // OUT (C),L
    case 0x6A: adc16(cpu, cpu.HL);                              cycles = 15; break; // ADC HL,HL
    case 0x6B: cpu.HL = read16(cpu, fetch16(cpu, pc));          cycles = 20; break; // LD HL,(nn)
    case 0x6F: rld(cpu);                                        cycles = 18; break; // RLD

    case 0x72: sbc16(cpu, cpu.SP);                              cycles = 15; break; // SBC HL,SP
    case 0x73: write16(cpu, fetch16(cpu, pc), cpu.SP);          cycles = 20; break; // LD (nn),SP

    case 0x78: set_hi(cpu.AF, input_bc(cpu, pc));               cycles = 12; break; // IN A,(C)
    case 0x79: output(cpu, pc, cpu.BC, hi(cpu.AF));             cycles = 12; break; // OUT (C),A
    case 0x7A: adc16(cpu, cpu.SP);                              cycles = 15; break; // ADC HL,SP
    case 0x7B: cpu.SP = read16(cpu, fetch16(cpu, pc));          cycles = 20; break; // LD SP,(nn)

    // ---- 0x80 ----------------------------------------------------------------------
    case 0xA0: block_load(cpu, 1);                              cycles = 16; break; // LDI
    case 0xA1: block_compare(cpu, 1);                           cycles = 16; break; // CPI
    case 0xA2: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // INI
    case 0xA3: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // OUTI

    case 0xA8: block_load(cpu, -1);                             cycles = 16; break; // LDD
    case 0xA9: block_compare(cpu, -1);                          cycles = 16; break; // CPD
    case 0xAA: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // IND
    case 0xAB: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // OUTD

    case 0xB0: cycles = block_load_repeat(cpu, pc, 1);          break;              // LDIR
    case 0xB1: cycles = block_compare_repeat(cpu, pc, 1);       break;              // CPIR
    case 0xB2: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // INIR
    case 0xB3: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // OTIR

    case 0xB8: cycles = block_load_repeat(cpu, pc, -1);         break;              // LDDR
    case 0xB9: cycles = block_compare_repeat(cpu, pc, -1);      break;              // CPDR
    case 0xBA: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // INDR
    case 0xBB: return stop(cpu, pc, stop_unimplemented, 0, 2);                           // OTDR

    default:   return stop(cpu, pc, stop_undefined, undefined_cycles, 2);
    }
    return finish(cpu, pc, cycles, 2);
}
// clang-format on

template bool exec_ed(z80_cpu &, memory_pc);
template bool exec_ed(z80_cpu &, injecting_pc);

// The Z80 interpreter: one instruction a call, its cost in T-states, no knowledge of the machine around it.
//
// Memory and ports are reached through four function pointers, and memory that needs nobody's attention
// through a table of pages, which is empty unless somebody hands one over. The record is plain data: it can
// be zeroed, copied and compared. There is one instance in the program, `main_cpu` of machine/kiv_machine.h;
// tests and tools make as many as they like.
//
// Not emulated: HALT as a wait (it stops the emulation), the delay of EI, block I/O (stops the CPU as
// unimplemented), bit 7 of R.
#pragma once

#include <atomic>
#include <cstdint>

enum z80_flag : uint8_t {
    flag_s = 0x80,
    flag_z = 0x40,
    flag_5 = 0x20,
    flag_h = 0x10,
    flag_3 = 0x08,
    flag_pv = 0x04,
    flag_n = 0x02,
    flag_c = 0x01,
};

// Why the CPU stopped (`stop_reason`).
enum z80_stop_reason : uint8_t {
    stop_none = 0,
    stop_halt = 1,
    stop_undefined = 2,
    stop_unimplemented = 3,
};

// `stop_flags`, bits 0-2: a stop code, kept until reset. Bit 5: `restore_steps` are counted. Bits 4, 6 and 7:
// an entry that the next step makes.
enum z80_stop_flag : uint8_t {
    stop_code_mask = 0x07,
    stop_code_instruction = 1,    // HALT, undefined or unimplemented: see stop_reason
    stop_code_inject_empty = 4,   // an operand was asked of an exhausted inject buffer
    stop_code_interrupt_mode = 5, // an interrupt arrived in a mode other than 0, 1, 2
    leaving_halt = 0x10,          // the entry ends a HALT that waits
    restoring = 0x20,             // see z80_hold_interrupts
    pending_interrupt = 0x40,     // maskable interrupt accepted
    pending_nmi = 0x80,           // NMI accepted
};

// Index of a register word, as z80_register() takes it.
enum z80_register_index {
    reg_bc,
    reg_de,
    reg_hl,
    reg_af,
    reg_bc_alt,
    reg_de_alt,
    reg_hl_alt,
    reg_af_alt,
    reg_ix,
    reg_iy,
    reg_pc,
    reg_sp,
    register_words
};

// Memory that the CPU reads and writes by itself: pages whose accesses nobody has to hear of. Other threads
// may read the bytes that it stores. Where a page is nullptr, mem_read or mem_write is called.
constexpr uint32_t z80_page_size = 0x400;
struct z80_pages {
    const uint8_t
        *fetch[0x10000 / z80_page_size]; // for opcodes, whatever waits the memory costs: none is charged
    const uint8_t
        *read[0x10000 / z80_page_size]; // the same where a read costs no wait, else nullptr: it costs one
    uint8_t *write[0x10000 / z80_page_size]; // where a write costs none
};
extern const z80_pages z80_no_pages; // every byte through the functions

struct z80_cpu {
    uint16_t BC, DE, HL, AF; // C, E, L, F are the low bytes
    uint16_t BC_alt, DE_alt, HL_alt, AF_alt;
    uint16_t IX, IY;
    uint16_t PC, SP;
    uint32_t step_cycles;   // T-states of the current step
    uint32_t m1_count;      // opcode fetches (M1 cycles) of the current step
    uint32_t wait_count;    // memory waits of the current step: bytes, and the first byte of words
    uint32_t wait_count2;   // the same, second byte of words
    uint32_t accept_cycles; // T-states of an interrupt accepted for the next step
    uint8_t I;
    uint8_t IM;              // 0, 1, 2
    uint8_t IFF1, IFF2;      // 0 or 1
    uint8_t stop_reason;     // z80_stop_reason
    uint16_t trace_pc;       // address of the instruction of the current step
    uint16_t vector_pc;      // entry address of an accepted interrupt
    uint8_t r_counter;       // +1 a step; index into r_table
    uint8_t stop_flags;      // z80_stop_flag
    uint8_t restore_steps;   // steps to go until interrupts are enabled, while `restoring`
    uint8_t r_table[256];    // what LD A,R returns; new random bytes at every reset
    uint8_t inject_active;   // 1: instruction bytes come from inject_bytes
    uint8_t inject_bytes[5]; // consumed from the end
    int16_t inject_count;    // bytes still to be taken
    uint32_t total_cycles;   // running sum of step_cycles, modulo 2^32

    // The CPU's own operations, stored by z80_install.
    bool (*z80_step)(z80_cpu &cpu);
    void (*z80_reset)(z80_cpu &cpu);
    uint32_t (*z80_interrupt)(z80_cpu &cpu, uint8_t level);
    void (*z80_nmi)(z80_cpu &cpu);

    // The machine's operations. A wait counter is incremented once for each wait state of the access.
    uint8_t (*mem_read)(uint16_t address, uint32_t *wait);
    void (*mem_write)(uint16_t address, uint8_t value, uint32_t *wait);
    uint8_t (*io_in)(uint16_t port); // the full 16-bit address on the bus
    void (*io_out)(uint16_t port, uint8_t value);

    const z80_pages *pages; // z80_no_pages after z80_install
};

// What happens at instructions that otherwise stop the CPU, as a person wants it; not part of the CPU's
// state. May be set while it runs.
struct z80_leniency {
    std::atomic<bool> halt_waits{false}; // HALT is executed again and again until an interrupt is accepted
    std::atomic<bool> undefined_runs{false}; // an undefined instruction does nothing
};
extern z80_leniency z80_lenient;

// Stores the machine's and the CPU's operations into their slots, without pages, then resets.
void z80_install(z80_cpu &cpu, uint8_t (*mem_read)(uint16_t, uint32_t *),
                 void (*mem_write)(uint16_t, uint8_t, uint32_t *), uint8_t (*io_in)(uint16_t),
                 void (*io_out)(uint16_t, uint8_t));

// Z80 reset: every register 0, interrupts off, IM 0; r_table is filled with new random bytes.
// total_cycles and the slots keep their values.
void z80_reset(z80_cpu &cpu);

// Fixes the seed from which every later z80_reset fills r_table, so that two runs give the same bytes.
// Without a call it is 1.
void z80_fix_seed(unsigned seed);

// From now on every z80_reset asks for its seed.
void z80_seed_from(unsigned (*source)());

// One step: enters an accepted interrupt, executes one instruction. True when the CPU has stopped.
bool z80_step(z80_cpu &cpu);

// A maskable interrupt request of the given level (0-2): 0 accepted (the next step enters it), 1 refused.
uint32_t z80_interrupt(z80_cpu &cpu, uint8_t level);

// A non-maskable interrupt request; never refused. Nothing in the machine raises one.
void z80_nmi(z80_cpu &cpu);

// No maskable interrupt for so many steps (1-255), whatever the program does; then interrupts are enabled.
// True when an interrupt that was accepted and not yet entered was dropped.
bool z80_hold_interrupts(z80_cpu &cpu, uint8_t steps);

// The register word of an index of z80_register_index; 0 for any other index.
uint16_t z80_register(const z80_cpu &cpu, int index);

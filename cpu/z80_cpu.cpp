// The record's own operations: install, reset, step, interrupt requests and their entry, the inject buffer.
#include "cpu/z80_cpu.h"

#include "cpu/z80_operations.h"
#include <cstddef>
#include <cstring>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<z80_cpu> && std::is_standard_layout_v<z80_cpu>);

namespace {

unsigned fixed_seed = 1;
unsigned (*seed_source)() = nullptr;

// The generator of Park and Miller with the multiplier of 1993: the same bytes on every host.
struct minimal_standard {
    static constexpr uint64_t modulus = 2147483647, multiplier = 48271;
    uint64_t state;

    explicit minimal_standard(unsigned seed) : state(seed % modulus != 0 ? seed % modulus : 1) {}
    uint64_t next() { return state = state * multiplier % modulus; }
};

// T-states of an entry beyond those of the first instruction executed there.
constexpr uint32_t im0_accept_cycles = 2;
constexpr uint32_t im1_accept_cycles = 13;
constexpr uint32_t im2_accept_cycles = 19;
constexpr uint32_t nmi_accept_cycles = 11;

constexpr uint16_t im1_entry = 0x0038;
constexpr uint16_t nmi_entry = 0x0066;

} // namespace

const z80_pages z80_no_pages{};

void z80_install(z80_cpu &cpu, uint8_t (*mem_read)(uint16_t, uint32_t *),
                 void (*mem_write)(uint16_t, uint8_t, uint32_t *), uint8_t (*io_in)(uint16_t),
                 void (*io_out)(uint16_t, uint8_t)) {
    cpu.mem_read = mem_read;
    cpu.mem_write = mem_write;
    cpu.io_in = io_in;
    cpu.io_out = io_out;
    cpu.pages = &z80_no_pages;
    cpu.z80_step = z80_step;
    cpu.z80_reset = z80_reset;
    cpu.z80_interrupt = z80_interrupt;
    cpu.z80_nmi = z80_nmi;
    z80_reset(cpu);
}

void z80_fix_seed(unsigned seed) {
    seed_source = nullptr;
    fixed_seed = seed;
}

void z80_seed_from(unsigned (*source)()) { seed_source = source; }

void z80_reset(z80_cpu &cpu) {
    minimal_standard random(seed_source != nullptr ? seed_source() : fixed_seed);
    for (uint8_t &byte : cpu.r_table) byte = static_cast<uint8_t>(random.next());
    std::memset(&cpu, 0, offsetof(z80_cpu, stop_flags)); // BC through r_counter
    cpu.stop_flags = 0;
    cpu.restore_steps = 0;
    cpu.inject_active = 0;
    cpu.inject_count = 0;
}

z80_leniency z80_lenient;

namespace {

// The program will go on behind the HALT that it waits at. Asked at the request, between two steps: PC stands
// on the instruction that was executed last, if that is a HALT. One that is only the next is still to come.
void leave_halt(z80_cpu &cpu) {
    constexpr uint8_t halt = 0x76;
    uint32_t not_charged = 0;
    if (z80_lenient.halt_waits.load(std::memory_order_relaxed) && cpu.PC == cpu.trace_pc &&
        cpu.mem_read(cpu.PC, &not_charged) == halt)
        cpu.stop_flags |= leaving_halt;
}

} // namespace

// Enters an NMI, or an interrupt in mode 1 or 2; in mode 0 the instruction comes out of the inject buffer.
// Inlined into z80_step, as link-time optimisation likes to do, it would cost every step a stack frame.
[[gnu::cold, gnu::noinline]] bool z80_step_entering(z80_cpu &cpu) {
    if (cpu.stop_flags & leaving_halt) ++cpu.PC;
    const bool vectored = (cpu.stop_flags & pending_interrupt) && cpu.IM != 0;
    if (vectored || (cpu.stop_flags & pending_nmi)) {
        push16(cpu, cpu.PC);
        cpu.PC = cpu.vector_pc;
        cpu.trace_pc = cpu.vector_pc;
    }
    z80_execute_injecting(cpu);
    if (cpu.stop_flags & (pending_interrupt | pending_nmi)) {
        cpu.stop_flags &= stop_code_mask | restoring;
        cpu.step_cycles += cpu.accept_cycles;
        cpu.total_cycles += cpu.accept_cycles;
        cpu.accept_cycles = 0;
    }
    if ((cpu.stop_flags & restoring) && --cpu.restore_steps == 0) {
        cpu.stop_flags &= static_cast<uint8_t>(~restoring);
        cpu.IFF1 = cpu.IFF2 = 1;
    }
    return (cpu.stop_flags & stop_code_mask) != 0;
}

bool z80_hold_interrupts(z80_cpu &cpu, uint8_t steps) {
    const bool dropped = (cpu.stop_flags & pending_interrupt) != 0;
    cpu.stop_flags = static_cast<uint8_t>((cpu.stop_flags & stop_code_mask) | restoring);
    cpu.restore_steps = steps;
    cpu.IFF1 = cpu.IFF2 = 0;
    cpu.inject_active = 0;
    cpu.inject_count = 0;
    cpu.accept_cycles = 0;
    return dropped;
}

uint32_t z80_interrupt(z80_cpu &cpu, uint8_t level) {
    if (cpu.IFF1 != 1) return 1;
    cpu.stop_flags |= pending_interrupt;
    leave_halt(cpu);
    cpu.IFF1 = 0;
    cpu.IFF2 = 0;
    switch (cpu.IM) {
    case 0:
        cpu.inject_bytes[0] = level;
        cpu.inject_count = 1;
        cpu.inject_active = 1;
        cpu.accept_cycles = im0_accept_cycles;
        return 0;
    case 1:
        cpu.vector_pc = im1_entry;
        cpu.accept_cycles = im1_accept_cycles;
        return 0;
    case 2:
        // The next step clears the wait counters before anybody charges them: the vector costs no waits.
        cpu.accept_cycles = im2_accept_cycles;
        cpu.vector_pc = read16(cpu, static_cast<uint16_t>(cpu.I * 256 + 2 * level));
        return 0;
    default: cpu.stop_flags = stop_code_interrupt_mode; return 1;
    }
}

void z80_nmi(z80_cpu &cpu) {
    cpu.IFF2 = cpu.IFF1;
    cpu.IFF1 = 0;
    cpu.vector_pc = nmi_entry;
    cpu.accept_cycles = nmi_accept_cycles;
    cpu.stop_flags |= pending_nmi;
    leave_halt(cpu);
}

[[gnu::noinline]] uint8_t z80_ask_opcode(z80_cpu &cpu, uint16_t address) {
    uint32_t not_charged = 0;
    return cpu.mem_read(address, &not_charged);
}

[[gnu::noinline]] uint8_t z80_ask8(z80_cpu &cpu, uint16_t address) {
    return read_memory(cpu, address, &cpu.wait_count);
}

[[gnu::noinline]] void z80_tell8(z80_cpu &cpu, uint16_t address, uint8_t value) {
    cpu.mem_write(address, value, &cpu.wait_count);
}

[[gnu::noinline]] uint16_t z80_ask16(z80_cpu &cpu, uint16_t address) {
    const unsigned low = read_memory(cpu, address, &cpu.wait_count);
    const unsigned high = read_memory(cpu, static_cast<uint16_t>(address + 1), &cpu.wait_count2);
    return word_of(high, low);
}

[[gnu::noinline]] void z80_tell16(z80_cpu &cpu, uint16_t address, uint16_t value) {
    write_memory(cpu, address, lo(value), &cpu.wait_count);
    write_memory(cpu, static_cast<uint16_t>(address + 1), hi(value), &cpu.wait_count2);
}

[[gnu::noinline]] void z80_tell_push(z80_cpu &cpu, uint16_t value) {
    write_memory(cpu, static_cast<uint16_t>(cpu.SP + 1), hi(value), &cpu.wait_count);
    write_memory(cpu, cpu.SP, lo(value), &cpu.wait_count2);
}

[[gnu::cold]] uint8_t z80_injected8(z80_cpu &cpu) {
    if (cpu.inject_count < 1) {
        set_stop_code(cpu, stop_code_inject_empty);
        return 0;
    }
    cpu.inject_count = static_cast<int16_t>(cpu.inject_count - 1);
    cpu.inject_active = cpu.inject_count != 0;
    return cpu.inject_bytes[cpu.inject_count];
}

[[gnu::cold]] uint16_t z80_injected16(z80_cpu &cpu) {
    if (cpu.inject_count < 2) {
        set_stop_code(cpu, stop_code_inject_empty);
        return 0;
    }
    const uint8_t low = z80_injected8(cpu);
    return word_of(z80_injected8(cpu), low);
}

uint16_t z80_register(const z80_cpu &cpu, int index) {
    const uint16_t *const words[register_words] = {&cpu.BC,     &cpu.DE,     &cpu.HL,     &cpu.AF,
                                                   &cpu.BC_alt, &cpu.DE_alt, &cpu.HL_alt, &cpu.AF_alt,
                                                   &cpu.IX,     &cpu.IY,     &cpu.PC,     &cpu.SP};
    return index >= 0 && index < register_words ? *words[index] : 0;
}

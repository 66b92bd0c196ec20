// The Z80 alone: emulated T-states per second of the host, one core, one z80_step call an instruction; memory
// through the record's function pointers, or as pages.
#include "mixed_program.h"

#include "cpu/z80_cpu.h"
#include "machine/kiv_machine.h"
#include <benchmark/benchmark.h>
#include <cstring>

namespace {

z80_cpu cpu;
uint8_t flat[0x10000];

uint8_t flat_read(uint16_t address, uint32_t *) { return flat[address]; }
void flat_write(uint16_t address, uint8_t value, uint32_t *) { flat[address] = value; }
uint8_t no_in(uint16_t) { return 0xFF; }
void no_out(uint16_t, uint8_t) {}

// An iteration is a million T-states of the program; waits are not counted.
void run(benchmark::State &state) {
    constexpr uint32_t portion = 1'000'000;
    uint64_t total = 0, steps = 0;
    cpu.PC = mixed_program_origin;
    for (auto _ : state) {
        uint32_t cycles = 0;
        while (cycles < portion) {
            if (cpu.z80_step(cpu)) {
                state.SkipWithError("the CPU stopped");
                return;
            }
            cycles += cpu.step_cycles;
            ++steps;
        }
        total += cycles;
    }
    state.counters["T-states/s"] =
        benchmark::Counter(static_cast<double>(total), benchmark::Counter::kIsRate);
    state.counters["steps/s"] = benchmark::Counter(static_cast<double>(steps), benchmark::Counter::kIsRate);
    state.counters["T-states/step"] = static_cast<double>(total) / static_cast<double>(steps);
}

void flat_functions(benchmark::State &state) {
    std::memcpy(flat + mixed_program_origin, mixed_program, sizeof mixed_program);
    z80_install(cpu, flat_read, flat_write, no_in, no_out);
    run(state);
}
BENCHMARK(flat_functions);

// The same memory as pages.
void flat_memory(benchmark::State &state) {
    static z80_pages pages;
    for (uint32_t i = 0; i < 0x10000 / z80_page_size; ++i)
        pages.fetch[i] = pages.read[i] = pages.write[i] = flat + i * z80_page_size;
    std::memcpy(flat + mixed_program_origin, mixed_program, sizeof mixed_program);
    z80_install(cpu, flat_read, flat_write, no_in, no_out);
    cpu.pages = &pages;
    run(state);
}
BENCHMARK(flat_memory);

void machine_memory(benchmark::State &state) {
    machine_init(
        machine, [] {}, [] {});
    std::memcpy(machine.ram + mixed_program_origin, mixed_program, sizeof mixed_program);
    z80_install(cpu, mem_read, mem_write, no_in, no_out);
    run(state);
}
BENCHMARK(machine_memory);

} // namespace

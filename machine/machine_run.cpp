#include "machine/machine_run.h"
#include "machine/run_block.h"

#include "cpu/z80_step.h"
#include <algorithm>

namespace {

// The batch under way: passes whose devices have nothing to do. They have not been moved on yet.
struct {
    uint32_t
        room; // a pass that takes the sum to this, or past it, is finished the plain way and ends the batch
    uint32_t elapsed; // T-states charged for the passes, but for those that were paid
    uint32_t last;    // of these, the last pass's
} batch;

// Moves the devices on to where the processor is, and ends the batch after the pass that is running.
void pay_devices() {
    batch.room = 0;
    if (batch.elapsed == 0) return;
    machine_step_skip(batch.elapsed);
    timing_skip(batch.elapsed, batch.last);
    machine.advance_sound(batch.elapsed);
    run_state.cycles += batch.elapsed;
    batch.elapsed = 0;
}

// What a port does depends on all devices, and all devices may depend on what it does.
uint8_t paying_in(uint16_t port) {
    pay_devices();
    return io_in(port);
}

// Ports that choose what memory is seen. Software switches them all the time, and no device asks.
bool maps_memory(uint8_t port) {
    return (port >= ports::select_blue && port <= ports::select_ram) || port == ports::window_page ||
           port == ports::expansion || port == ports::window_next;
}

void paying_out(uint16_t port, uint8_t value) {
    if (maps_memory(static_cast<uint8_t>(port))) {
        io_out(port, value);
        memory_pages(); // the table in main_cpu.pages
        return;
    }
    pay_devices();
    io_out(port, value);
}

bool slots_hold_own_functions() {
    return main_cpu.z80_step == z80_step && main_cpu.mem_read == mem_read &&
           main_cpu.mem_write == mem_write && main_cpu.io_in == io_in && main_cpu.io_out == io_out &&
           machine.machine_step == machine_step && machine.timing_tick == timing_tick &&
           machine.interrupt_service == interrupt_service && machine.cassette_step == cassette_step;
}

// What the CPU has in its slots while batches run.
struct batch_slots {
    batch_slots() {
        main_cpu.io_in = paying_in;
        main_cpu.io_out = paying_out;
    }
    ~batch_slots() {
        main_cpu.io_in = io_in;
        main_cpu.io_out = io_out;
        main_cpu.pages = &z80_no_pages;
    }
};

enum class batch_end { last_pass, stopped, dma_idle };

// Passes until one must be finished the plain way. With the DMA busy, until it has been idle.
template <bool dma_busy> batch_end run_processor_on(uint32_t &iteration, bool charge_waits) {
    // A request waits for the program to enable interrupts, and then is served in that very pass.
    const bool request_waits = machine.interrupt_pending != 0 && main_cpu.IFF1 == 0;
    const bool fetching = dma_busy && timing_fetches();
    for (;; ++iteration) {
        if (dma_busy ? !run_processor(z80_step_inlined, iteration, charge_waits) : z80_step_inlined(main_cpu))
            return batch_end::stopped;
        const uint32_t charged = dma_busy ? main_cpu.step_cycles : charge_step(charge_waits);
        if (batch.elapsed + charged >= batch.room || (request_waits && main_cpu.IFF1 != 0))
            return batch_end::last_pass;
        batch.elapsed += charged;
        batch.last = charged;
        if (fetching) timing_fetch();
        if (dma_busy && (machine.dma_stall | machine.dma_remaining) == 0) {
            ++iteration;
            return batch_end::dma_idle;
        }
    }
}

// Passes up to the next event, or to a port access, or to `cycles`; the last one the plain way.
pass_outcome run_batch(uint32_t cycles, bool charge_waits) {
    uint32_t iteration = run_state.pass_counter;
    batch = {std::min({cycles, machine_step_room(main_cpu), timing_room()}), 0, 0};
    main_cpu.pages = &memory_pages();
    batch_end end = batch_end::dma_idle;
    if (machine.dma_stall != 0 || (timing_fetches() && machine.dma_remaining != 0))
        end = run_processor_on<true>(iteration, charge_waits);
    if (end == batch_end::dma_idle) end = run_processor_on<false>(iteration, charge_waits);
    run_state.pass_counter = iteration;
    pay_devices();
    if (end == batch_end::stopped) return pass_outcome::stopped;
    ++run_state.pass_counter;
    const pass_outcome outcome = run_devices();
    run_state.cycles += main_cpu.step_cycles;
    return outcome;
}

pass_outcome run_pass(bool charge_waits) {
    const pass_outcome outcome = machine_pass(run_state.pass_counter, charge_waits);
    if (outcome == pass_outcome::stopped) return outcome;
    ++run_state.pass_counter;
    run_state.cycles += main_cpu.step_cycles;
    return outcome;
}

} // namespace

run_result run_passes(uint32_t cycles, bool charge_waits) {
    const uint64_t start = run_state.cycles;
    run_result result{pass_outcome::nothing, 0};
    const auto run = [&](auto passes) {
        do {
            result.outcome = passes(cycles - result.cycles);
            result.cycles = static_cast<uint32_t>(run_state.cycles - start);
        } while (result.outcome == pass_outcome::nothing && result.cycles < cycles);
    };
    if (slots_hold_own_functions()) {
        const batch_slots slots;
        run([&](uint32_t left) { return run_batch(left, charge_waits); });
    } else {
        run([&](uint32_t) { return run_pass(charge_waits); });
    }
    return result;
}

#include "machine/machine_pass.h"
#include "machine/memory_dump.h"
#include "machine/run_block.h"
#include "machine/tape_files.h"
#include "tests/fuzz/fuzz_targets.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

void nothing() {}

// A machine with its display, at power-on, drawing into a frame of its own.
void power_on() {
    static std::vector<uint32_t> frame(frame_width * frame_height);
    z80_fix_seed(1);
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(machine, nothing, nothing);
    run_state.clock_counter = 0;
    set_frame_geometry(frame_width, frame_height, frame_width);
    machine.select_scanline_colours(0);
    geometry.frame_pixels = frame.data();
}

// Runs until `frames` pictures were composed, the CPU stopped, or `passes` passes were made.
void run_frames(int frames, uint32_t passes) {
    for (uint32_t i = 0; i < passes && frames > 0; ++i) {
        const pass_outcome outcome = machine_pass(i, true);
        if (outcome == pass_outcome::stopped) return;
        if (outcome != pass_outcome::frame) continue;
        compose_frame(frames % 2 != 0 ? pixels_rgb32 : pixels_indexed8);
        --frames;
    }
}

} // namespace

int fuzz_tape(const uint8_t *data, size_t size) {
    const std::string file = put_input("tape.cmt", data, size);
    power_on();
    if (!cassette_load_tape(file)) return 0;
    // The whole tape and a little more, polled; then records straight into memory; then fed by the deck.
    for (size_t i = 0; i < std::min<size_t>(size, 4096) + 3; ++i) io_in(0x20);
    machine.tape_position = 0;
    io_out(0xF0, 255);
    io_out(0xF0, 0);
    io_out(0x21, 0x4E);
    io_out(0x21, 0x14);
    io_out(0x30, 0x08);
    io_out(0xE6, 0x04);
    machine.cassette_set_stopped(1);
    for (int i = 0; i < 20; ++i) {
        main_cpu.step_cycles = cassette_byte_cycles;
        machine.machine_step(machine, main_cpu);
        if (i % 3 != 0) io_in(0x20);
        io_in(0x21);
    }
    return 0;
}

int fuzz_dump(const uint8_t *data, size_t size) {
    const std::string file = put_input("dump.kiv", data, size);
    power_on();
    io_out(0x31, 0x33);
    if (!memory_dump_load(file, main_cpu)) return 0;
    run_frames(10, 200'000);
    memory_dump_save(file, main_cpu);
    return 0;
}

int fuzz_program(const uint8_t *data, size_t size) {
    power_on();
    // Port writes first: pairs of port and value, up to a quarter of the input.
    const size_t writes = size / 8;
    for (size_t i = 0; i < writes; ++i) io_out(data[2 * i], data[2 * i + 1]);
    // The rest is the program, at 0x0000 in RAM mode and again where text and planes lie.
    const uint8_t *program = data + 2 * writes;
    const size_t length = std::min<size_t>(size - 2 * writes, 0x2000);
    for (size_t i = 0; i < length; ++i) {
        uint32_t wait = 0;
        mem_write(static_cast<uint16_t>(i), program[i], &wait);
        mem_write(static_cast<uint16_t>(0xF000 + i), program[i], &wait);
    }
    io_out(0x31, static_cast<uint8_t>((size & 8) | 0x02));
    io_out(0x51, 0x20);
    io_out(0x68, 0xE4);
    run_frames(3, 60'000);
    // Whatever the program did, pictures can still be made.
    machine.crtc_status = 0;
    machine.port31 |= port31_graphics_on;
    compose_frame(pixels_rgb32);
    compose_frame(pixels_indexed8);
    return 0;
}

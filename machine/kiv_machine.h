// The emulated machine: one flat record of device blocks, each defined beside its device's code.
//
// There is one machine and one CPU in the process, at fixed addresses. The record is trivially copyable:
// a machine can be zeroed, copied and compared. Devices are reached through the slots only.
#pragma once

#include "cpu/z80_cpu.h"
#include "display/crt_controller.h"
#include "display/cursor.h"
#include "display/dma_controller.h"
#include "display/frame_composer.h"
#include "display/video_timing.h"
#include "machine/calendar_clock.h"
#include "machine/cassette.h"
#include "machine/host_callbacks.h"
#include "machine/interrupt_controller.h"
#include "machine/keyboard.h"
#include "machine/memory_map.h"
#include "machine/pcg8100.h"
#include "machine/system_ports.h"
#include "machine/usart.h"
#include <cstdint>

constexpr uint32_t default_clock_hz = 3993600;
constexpr uint32_t default_slice_ms = 20;

struct cpu_clock_block {
    uint32_t clock_hz;         // 3993600
    uint32_t slice_ms;         // 20
    uint32_t cycles_per_slice; // T-states: 79872
};

struct settings_block {
    uint32_t interlace;       // 1: odd lines at half brightness
    shared<uint8_t> boot_rom; // 1 Zun-BASIC, 0 N-BASIC (DIP switch of port 0x30)
};

struct machine_slots {
    // After every pass: interrupts, cassette and 1/600 s clock move on by the T-states in cpu.step_cycles.
    void (*machine_step)(kiv_machine &m, z80_cpu &cpu);
    // The reset key: RAM and devices as at power-on. ROMs, graphic planes, glyphs, PCG-8100, settings and
    // tape stay; the palette becomes 0-7.
    void (*machine_reset)(kiv_machine &m);
    void (*reset_system_ports)(kiv_machine &m);
    void (*init_ram)(kiv_machine &m);
    void (*reset_keyboard)(kiv_machine &m);
    void (*set_cpu_clock)(kiv_machine &m, uint32_t clock_hz, uint32_t slice_ms);
};

struct video_callback_block {
    void (*video_lock)();   // serialises writes to text and graphic VRAM
    void (*video_unlock)(); // against the render thread's reads
};

struct kiv_machine : memory_areas,
                     key_matrix_block,
                     pcg_switch_block,
                     palette_block,
                     system_port_block,
                     calendar_block,
                     cassette_block,
                     usart_block,
                     crt_controller_block,
                     cursor_block,
                     video_timing_block,
                     dma_controller_block,
                     display_block,
                     pcg8100_block,
                     interrupt_block,
                     renderer_block,
                     host_callback_block,
                     cpu_clock_block,
                     settings_block,
                     machine_slots,
                     video_callback_block,
                     tape_output_block {};

extern kiv_machine machine; // the machine
extern z80_cpu main_cpu;    // its processor

// Power-on: zeroes the record, stores every slot, runs every device's init. Two callbacks that do nothing
// serve where no other thread draws.
void machine_init(kiv_machine &m, void (*video_lock)(), void (*video_unlock)());

// Power-on pattern of RAM; both 32 KB halves hold the same.
void init_ram(kiv_machine &m);

// The 1/600 s clock counts T-states in a counter that outlives resets. Tests and reproducible runs start
// it from zero.
void machine_restart_clock_counter();

// What the slot holds.
void machine_step(kiv_machine &m, z80_cpu &cpu);

// T-states that may pass before machine_step has something to do, while no port is accessed and the CPU does
// not enable its interrupts; 0: it may have after the next pass.
uint32_t machine_step_room(const z80_cpu &cpu);
// As that many T-states of steps within the room.
void machine_step_skip(uint32_t cycles);

// Stores one byte into RAM so that the render thread may read it at any time.
inline void ram_store(uint16_t address, uint8_t value) {
    __atomic_store_n(&machine.ram[address], value, __ATOMIC_RELAXED);
}

#include "machine/kiv_machine.h"
#include "machine/run_block.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<kiv_machine>);

kiv_machine machine;
z80_cpu main_cpu;
run_block run_state = {0, 0, 0, {1}, 0, 0, 0, {calendar_of_host, {1981, 12, 1, 0, 0, 0}, 0, 0}};

namespace {

constexpr uint32_t clock_interrupt_cycles = default_clock_hz / 600; // 6656

void set_cpu_clock(kiv_machine &m, uint32_t clock_hz, uint32_t slice_ms) {
    m.clock_hz = clock_hz;
    m.slice_ms = slice_ms;
    m.cycles_per_slice =
        static_cast<uint32_t>(std::floor(static_cast<double>(clock_hz) * slice_ms / 1000 + 0.5));
}

void machine_reset(kiv_machine &m) {
    m.reset_system_ports(m);
    m.init_ram(m);
    m.reset_keyboard(m);
    m.calendar_reset();
    m.crtc_reset();
    m.cursor_reset();
    m.timing_reset();
    m.dma_reset();
    m.interrupt_reset();
    m.usart_reset();
    m.cassette_reset();
    for (uint8_t i = 0; i < 8; ++i) m.palette[i] = i;
}

void store_slots(kiv_machine &m, void (*video_lock)(), void (*video_unlock)()) {
    m.video_lock = video_lock;
    m.video_unlock = video_unlock;
    m.machine_step = machine_step;
    m.machine_reset = machine_reset;
    m.reset_system_ports = reset_system_ports;
    m.init_ram = init_ram;
    m.reset_keyboard = reset_keyboard;
    m.set_cpu_clock = set_cpu_clock;
    m.display_init = display_init;
    m.calendar_init = calendar_init;
    m.crtc_init = crtc_init;
    m.cursor_init = cursor_init;
    m.timing_init = timing_init;
    m.dma_init = dma_init;
    m.interrupt_init = interrupt_init;
    m.usart_init = usart_init;
    m.cassette_init = cassette_init;
    m.renderer_init = renderer_init;
    m.host_callbacks_init = host_callbacks_init;
    m.pcg_port = pcg_port;
}

} // namespace

void machine_step(kiv_machine &m, z80_cpu &cpu) {
    // The two tests spare nearly every pass the calls, which would find nothing to do.
    if (m.interrupt_pending != 0) m.interrupt_service(cpu);
    if ((m.portE6 & mask_usart) != 0) m.cassette_step(cpu);
    run_state.clock_counter += cpu.step_cycles;
    if (run_state.clock_counter > clock_interrupt_cycles) {
        run_state.clock_counter = 0; // the excess is dropped, as the machine's divider is restarted
        m.interrupt_request_clock(cpu);
    }
}

uint32_t machine_step_room(const z80_cpu &cpu) {
    if (run_state.clock_counter > clock_interrupt_cycles || !interrupts_quiet(cpu)) return 0;
    return std::min(clock_interrupt_cycles + 1 - run_state.clock_counter, cassette_room());
}

void machine_step_skip(uint32_t cycles) {
    cassette_skip(cycles);
    run_state.clock_counter += cycles;
}

void machine_init(kiv_machine &m, void (*video_lock)(), void (*video_unlock)()) {
    cassette_eject(m);
    std::memset(static_cast<void *>(&m), 0, sizeof m);
    store_slots(m, video_lock, video_unlock);
    m.boot_rom = uint8_t{1};
    m.reset_system_ports(m);
    m.init_ram(m);
    m.reset_keyboard(m);
    m.display_init();
    m.calendar_init();
    m.crtc_init();
    m.cursor_init();
    m.timing_init();
    m.dma_init();
    m.interrupt_init();
    m.usart_init();
    m.cassette_init();
    m.renderer_init();
    m.host_callbacks_init();
    m.select_attr_decoder(1);
    m.set_cpu_clock(m, default_clock_hz, default_slice_ms);
}

void init_ram(kiv_machine &m) {
    constexpr uint32_t half = ram_size / 2, run = 0x2000;
    for (uint32_t i = 0; i < half; ++i) {
        const bool ones = i < run ? i % 2 != 0 : i < 2 * run ? i % 2 == 0 : i / 64 % 2 == 0;
        const auto value = static_cast<uint8_t>(ones ? 0xFF : 0x00);
        __atomic_store_n(&m.ram[i], value, __ATOMIC_RELAXED);
        __atomic_store_n(&m.ram[i + half], value, __ATOMIC_RELAXED);
    }
}

void run_state_init() { run_state = {0, 0, 0, {1}, 0, 0, 0, run_state.calendar}; }

void machine_restart_clock_counter() { run_state.clock_counter = 0; }

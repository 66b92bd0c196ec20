#include "machine/kiv_machine.h"

namespace {

constexpr uint8_t portE4_every_level = 0x08;

// What became of a request.
enum offer_result : uint32_t {
    offer_accepted = 0,
    offer_refused = 1, // the CPU's interrupts are disabled
    offer_below_threshold = 2,
    offer_masked = 3,
};

// What the controller alone says to a request; what it lets through is the CPU's to accept.
offer_result let_through(uint8_t mask_bit, uint8_t level) {
    if ((machine.portE6 & mask_bit) == 0) return offer_masked;
    if ((machine.portE4 & portE4_every_level) == 0 && (machine.portE4 & 7) <= level)
        return offer_below_threshold;
    return offer_accepted;
}

uint32_t offer(z80_cpu &cpu, uint8_t mask_bit, uint8_t level) {
    const offer_result result = let_through(mask_bit, level);
    return result == offer_accepted ? cpu.z80_interrupt(cpu, level) : result;
}

void set_pending(uint8_t level) { machine.interrupt_pending |= static_cast<uint16_t>(1u << level); }
void clear_pending(uint8_t level) { machine.interrupt_pending &= static_cast<uint16_t>(~(1u << level)); }
bool is_pending(uint8_t level) { return (machine.interrupt_pending >> level & 1) != 0; }

// A received byte waits until the CPU takes it, masked or not.
void request_usart(z80_cpu &cpu) {
    if (offer(cpu, mask_usart, 0) != offer_accepted) set_pending(0);
}

// Retrace and clock wait only for a CPU that has its interrupts disabled.
void request_timed(z80_cpu &cpu, uint8_t mask_bit, uint8_t level) {
    if (!is_pending(level) && offer(cpu, mask_bit, level) == offer_refused) set_pending(level);
}

void request_vrtc(z80_cpu &cpu) { request_timed(cpu, mask_vrtc, 1); }
void request_clock(z80_cpu &cpu) { request_timed(cpu, mask_clock, 2); }

void service_timed(z80_cpu &cpu, uint8_t mask_bit, uint8_t level) {
    const uint32_t result = offer(cpu, mask_bit, level);
    if (result == offer_accepted || result == offer_masked) clear_pending(level);
}

void interrupt_reset() { machine.interrupt_pending = 0; }

} // namespace

void interrupt_service(z80_cpu &cpu) {
    if (is_pending(0)) {
        if (offer(cpu, mask_usart, 0) == offer_accepted) clear_pending(0);
    } else if (is_pending(1)) {
        service_timed(cpu, mask_vrtc, 1);
    } else if (is_pending(2)) {
        service_timed(cpu, mask_clock, 2);
    }
}

bool interrupts_quiet(const z80_cpu &cpu) {
    if ((machine.interrupt_pending & 7) == 0) return true;
    const uint8_t level = is_pending(0) ? 0 : is_pending(1) ? 1 : 2;
    constexpr uint8_t masks[] = {mask_usart, mask_vrtc, mask_clock};
    switch (let_through(masks[level], level)) {
    case offer_masked: return level == 0; // others are dropped
    case offer_below_threshold: return true;
    default: return cpu.IFF1 != 1;
    }
}

void interrupt_init() {
    machine.interrupt_reset = interrupt_reset;
    machine.interrupt_service = interrupt_service;
    machine.interrupt_request_usart = request_usart;
    machine.interrupt_request_vrtc = request_vrtc;
    machine.interrupt_request_clock = request_clock;
    interrupt_reset();
}

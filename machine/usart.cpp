#include "machine/kiv_machine.h"

namespace {

enum usart_command : uint8_t { receive_enable = 0x04, error_reset = 0x10, internal_reset = 0x40 };
enum usart_status : uint8_t { status_ready = 0x85, status_receiver_ready = 0x02, status_overrun = 0x10 };

bool receive_interrupt_on() { return (machine.portE6 & mask_usart) != 0; }

void usart_reset() {
    machine.usart_expect_mode = 1;
    machine.usart_receiver_on = machine.usart_received = 0;
    machine.usart_byte_ready = machine.usart_overrun = 0;
}

void usart_command_write() {
    if (machine.usart_expect_mode != 0) {
        machine.usart_expect_mode = 0;
        return;
    }
    const uint8_t command = machine.port21;
    if (command & internal_reset) {
        usart_reset();
        return;
    }
    machine.usart_receiver_on = (command & receive_enable) != 0;
    if (command & error_reset) {
        machine.usart_discard_next = 1;
        machine.usart_overrun = 0;
    }
}

// Polled reads take the next tape byte on demand, so the receiver is always ready then.
uint8_t usart_status_read() {
    uint8_t status = status_ready;
    if (machine.usart_overrun) status |= status_overrun;
    if (machine.usart_receiver_on && (!receive_interrupt_on() || machine.usart_byte_ready))
        status |= status_receiver_ready;
    return status;
}

uint8_t usart_data_read() {
    const bool discard = machine.usart_discard_next != 0;
    machine.usart_discard_next = 0;
    if (!receive_interrupt_on()) return discard ? uint8_t{0xFF} : machine.cassette_next_byte();
    if (machine.usart_byte_ready == 0) return 0xFF;
    machine.usart_byte_ready = 0;
    return machine.usart_received;
}

void usart_receive(z80_cpu &cpu, uint8_t byte) {
    machine.usart_received = byte;
    if (machine.usart_byte_ready) machine.usart_overrun = 1;
    machine.usart_byte_ready = 1;
    machine.interrupt_request_usart(cpu);
}

} // namespace

void usart_init() {
    machine.usart_reset = usart_reset;
    machine.usart_command_write = usart_command_write;
    machine.usart_status_read = usart_status_read;
    machine.usart_receive = usart_receive;
    machine.usart_data_read = usart_data_read;
    machine.usart_data_write = cassette_output;
    usart_reset();
}

// The 8251-type USART as the cassette interface uses it.
//   port 0x20 R  data       (exactly 0x20)
//   port 0x21 R  status     (exactly 0x21)
//   ports 0x20-0x2E even W  data: appended to the tape output file
//   ports 0x21-0x2F odd  W  mode, then commands
// Not emulated: baud rates, parity, framing, the modem lines, the transmitter's timing (always ready).
#pragma once

#include <cstdint>

struct z80_cpu;

struct usart_block {
    uint8_t usart_expect_mode;  // 1: the next command byte is the mode instruction
    uint8_t usart_discard_next; // 1: the next polled data read returns 0xFF
    uint8_t usart_receiver_on;  // command bit 2: 0 or 1
    uint8_t usart_received;     // the byte received last
    uint8_t usart_byte_ready;   // 1: not read yet
    uint8_t usart_overrun;      // 1: a byte was lost; until error reset
    void (*usart_init)();
    void (*usart_reset)();
    void (*usart_command_write)(); // reads the port 0x21 latch
    uint8_t (*usart_status_read)();
    void (*usart_receive)(z80_cpu &cpu, uint8_t byte);
    uint8_t (*usart_data_read)();
    void (*usart_data_write)(uint8_t byte);
};

void usart_init();

// The cassette deck and its tape image.
//   port 0x30 W  bit 3 motor on, bit 5 receiver path (the deck feeds only while it is 0)
//   port 0xF0 W  fast load: machine-language records of the image go straight into memory
// With the receive interrupt enabled the deck feeds one byte every 33280 T-states (120 bytes a second);
// polled reads take bytes on demand. A tape image is a plain byte sequence; at its end it starts over.
#pragma once

#include "support/shared.h"
#include <cstdint>
#include <memory>

struct z80_cpu;

constexpr int32_t cassette_byte_cycles = 33280; // 3993600 / 120
constexpr uint32_t tape_path_size = 512;

enum cassette_flag : uint8_t {
    cassette_stopped = 0x01, // an open-file command was cancelled or failed
    cassette_motor_off = 0x04,
    cassette_port30_bit5 = 0x08,
};

struct cassette_block {
    uint8_t *tape_image;            // none: nullptr
    uint32_t tape_size;             // bytes
    shared<uint32_t> tape_position; // next byte to read
    int32_t cassette_countdown;     // T-states to the next fed byte
    shared<uint8_t> cassette_flags; // cassette_flag
    void (*cassette_init)();
    void (*cassette_reset)();
    void (*cassette_port30)();                 // reads the port 0x30 latch
    void (*cassette_set_stopped)(uint32_t ok); // 1 clears the stopped flag, anything else sets it
    void (*cassette_step)(z80_cpu &cpu);
    void (*cassette_fast_load)(uint8_t value);
    uint8_t (*cassette_next_byte)();
};

struct tape_output_block {
    char tape_out_path[tape_path_size]; // empty: written bytes are dropped
};

void cassette_init();

// What the slot holds.
void cassette_step(z80_cpu &cpu);

// T-states that may pass before cassette_step feeds a byte, while no port is accessed; UINT32_MAX: for ever.
uint32_t cassette_room();
// As that many T-states of steps within the room.
void cassette_skip(uint32_t cycles);

// The deck takes the tape, rewound. Of `tape` the first `size` bytes count; it is never null. False: there is
// no memory to index it, and the old tape stays. Only while the CPU is parked; so are the next two.
bool cassette_insert(std::unique_ptr<uint8_t[]> tape, uint32_t size);

// Gives the tape image back; the deck is then without a tape.
void cassette_eject(struct kiv_machine &m);

// Of the tape in the deck; 0 without one.
uint64_t cassette_tape_checksum();

// Who takes the bytes that the machine writes; at first nobody.
struct cassette_recorder {
    void (*put)(uint8_t byte);
    void (*flush)(); // at every slice end and at every pause: what was collected goes to its place
};
// The one before is told.
cassette_recorder cassette_record_with(const cassette_recorder &recorder);

// The machine writes a byte to its cassette.
void cassette_output(uint8_t byte);
void cassette_flush_output();

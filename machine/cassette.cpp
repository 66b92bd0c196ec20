#include "machine/kiv_machine.h"
#include "support/checksum.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr uint8_t record_mark = 0x3A;
constexpr uint8_t port30_motor = 0x08;
constexpr uint8_t port30_bit5 = 0x20;
constexpr uint8_t flags_after_reset = cassette_stopped | cassette_motor_off | cassette_port30_bit5;

cassette_recorder recorder = {[](uint8_t) {}, [] {}};

// Owns the image that the record points to: a record that was copied and put back never frees it twice.
std::unique_ptr<uint8_t[]> image;
uint64_t image_checksum = 0; // 0: not asked for yet

// Where the record marks are. A program may ask for fast loads again and again; were each a scan, the run
// loop would be in megabytes of tape when a pause is asked for. Of each step of the tape the index holds the
// first mark at or behind its start, one for each remainder of the position by 4: see find_record.
class mark_index {
  public:
    static constexpr uint32_t none = UINT32_MAX;

    void clear() { first_marks.reset(); }
    bool build(const uint8_t *new_tape, uint32_t new_size); // false: there is no memory for it
    uint32_t any_from(uint32_t position) const;             // the first mark at or behind it
    uint32_t fourth_from(uint32_t position) const;          // of the marks at position, position + 4, ...

  private:
    static constexpr uint32_t step = 1024; // bytes
    uint32_t step_end(uint32_t position) const {
        return position / step == size / step ? size : (position / step + 1) * step;
    }

    const uint8_t *tape = nullptr;
    uint32_t size = 0;
    std::unique_ptr<std::array<uint32_t, 4>[]> first_marks;
};

bool mark_index::build(const uint8_t *new_tape, uint32_t new_size) {
    const uint32_t steps = new_size / step + 1;
    tape = new_tape;
    size = new_size;
    first_marks.reset(new (std::nothrow) std::array<uint32_t, 4>[steps + 1]);
    if (first_marks == nullptr) return false;
    first_marks[steps] = {none, none, none, none};
    for (uint32_t n = steps; n-- > 0;) {
        auto &marks = first_marks[n] = first_marks[n + 1];
        const uint32_t start = n * step, end = step_end(start);
        if (start == end || std::memchr(tape + start, record_mark, end - start) == nullptr) continue;
        for (uint32_t i = end; i-- > start;)
            if (tape[i] == record_mark) marks[i % 4] = i;
    }
    return true;
}

uint32_t mark_index::any_from(uint32_t position) const {
    const uint32_t end = step_end(position);
    if (const void *found = std::memchr(tape + position, record_mark, end - position))
        return static_cast<uint32_t>(static_cast<const uint8_t *>(found) - tape);
    const auto &marks = first_marks[position / step + 1];
    return *std::min_element(marks.begin(), marks.end());
}

uint32_t mark_index::fourth_from(uint32_t position) const {
    const uint32_t end = step_end(position);
    for (uint32_t i = position; i < end; i += 4)
        if (tape[i] == record_mark) return i;
    return first_marks[position / step + 1][position % 4];
}

mark_index marks;

void cassette_reset() {
    machine.cassette_countdown = cassette_byte_cycles;
    machine.cassette_flags = flags_after_reset;
}

void cassette_port30() {
    if (machine.port30 & port30_motor) {
        machine.cassette_flags &= static_cast<uint8_t>(~cassette_motor_off);
    } else {
        machine.cassette_flags |= uint8_t{cassette_motor_off};
        machine.cassette_countdown = cassette_byte_cycles;
    }
    machine.cassette_flags &= static_cast<uint8_t>(~cassette_port30_bit5);
    if (machine.port30 & port30_bit5) machine.cassette_flags |= cassette_port30_bit5;
}

void cassette_set_stopped(uint32_t ok) {
    machine.cassette_flags &= static_cast<uint8_t>(~cassette_stopped);
    if (ok != 1) machine.cassette_flags |= cassette_stopped;
}

// The tape's byte at the read position; none at its end.
bool next_byte(uint8_t &byte) {
    const uint32_t position = machine.tape_position;
    if (position >= machine.tape_size) return false;
    byte = machine.tape_image[position];
    machine.tape_position = position + 1;
    return true;
}

uint8_t cassette_next_byte() {
    uint8_t byte;
    if (machine.tape_image == nullptr) return 0xFF;
    if (next_byte(byte)) return byte;
    machine.tape_position = 0;
    return next_byte(byte) ? byte : uint8_t{0xFF}; // an empty tape
}

// Finds ":" address high, low, check ":" and leaves the position behind it, or at the end of the tape. A byte
// other than the second ":" is followed by a new address, so from the first mark on only every fourth byte
// can be the second.
bool find_record(uint16_t &address) {
    const uint32_t from = machine.tape_position;
    if (from >= machine.tape_size) return false;
    machine.tape_position = machine.tape_size;
    const uint32_t first = marks.any_from(from);
    if (first == mark_index::none || machine.tape_size - first <= 4) return false;
    const uint32_t second = marks.fourth_from(first + 4);
    if (second == mark_index::none) return false;
    address = static_cast<uint16_t>(machine.tape_image[second - 3] * 0x100 + machine.tape_image[second - 2]);
    machine.tape_position = second + 1;
    return true;
}

// One addressed record: its data block goes through the memory map as the program would write it.
void load_record() {
    uint16_t address;
    uint8_t length, byte;
    if (!find_record(address) || !next_byte(length) || length == 0) return;
    for (; length != 0 && next_byte(byte); --length) {
        uint32_t wait = 0;
        mem_write(address++, byte, &wait);
    }
    if (length == 0) next_byte(byte); // the check byte
}

void cassette_fast_load(uint8_t value) {
    if (machine.tape_image == nullptr) return;
    for (int runs = std::max<int>(value, 1); runs > 0; --runs) load_record();
}

// The deck counts down to the next byte of its tape.
bool feeding() {
    return (machine.portE6 & mask_usart) != 0 && (machine.interrupt_pending & 1) == 0 &&
           machine.cassette_flags == 0;
}

constexpr int32_t countdown_floor = INT32_MIN / 2;

} // namespace

// Feeds one byte when its time has come and the last one was read; until then the countdown goes below 0
// and the byte follows on the first step after the read.
void cassette_step(z80_cpu &cpu) {
    if (!feeding()) return;
    cassette_skip(cpu.step_cycles);
    if (machine.cassette_countdown > 0 || machine.usart_byte_ready != 0) return;
    machine.cassette_countdown = cassette_byte_cycles;
    machine.usart_receive(cpu, machine.cassette_next_byte());
}

uint32_t cassette_room() {
    if (!feeding()) return UINT32_MAX;
    const int32_t countdown = machine.cassette_countdown;
    if (machine.usart_byte_ready == 0) return countdown > 0 ? static_cast<uint32_t>(countdown) : 0;
    return countdown > countdown_floor ? static_cast<uint32_t>(countdown - countdown_floor) : UINT32_MAX;
}

void cassette_skip(uint32_t cycles) {
    if (feeding() && machine.cassette_countdown > countdown_floor)
        machine.cassette_countdown -= static_cast<int32_t>(cycles);
}

void cassette_init() {
    machine.cassette_reset = cassette_reset;
    machine.cassette_port30 = cassette_port30;
    machine.cassette_set_stopped = cassette_set_stopped;
    machine.cassette_step = cassette_step;
    machine.cassette_fast_load = cassette_fast_load;
    machine.cassette_next_byte = cassette_next_byte;
    cassette_reset();
}

bool cassette_insert(std::unique_ptr<uint8_t[]> tape, uint32_t size) {
    mark_index its_marks;
    if (!its_marks.build(tape.get(), size)) return false;
    image = std::move(tape);
    image_checksum = 0;
    marks = std::move(its_marks);
    machine.tape_image = image.get();
    machine.tape_size = size;
    machine.tape_position = 0;
    return true;
}

void cassette_eject(kiv_machine &m) {
    image.reset();
    image_checksum = 0;
    marks.clear();
    m.tape_image = nullptr;
    m.tape_size = m.tape_position = 0;
}

uint64_t cassette_tape_checksum() {
    if (machine.tape_image == nullptr) return 0;
    if (image_checksum == 0) image_checksum = checksum64(machine.tape_image, machine.tape_size);
    return image_checksum;
}

cassette_recorder cassette_record_with(const cassette_recorder &with) {
    return std::exchange(recorder, with);
}

void cassette_output(uint8_t byte) { recorder.put(byte); }
void cassette_flush_output() { recorder.flush(); }

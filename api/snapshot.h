// Snapshots: all that decides the machine's future as one block of bytes, the same on every host. The form is
// told in docs/snapshot-format.md.
//
// Written and read by whoever drives the machine, between two passes: the library on its caller's thread, the
// program while the CPU thread is parked.
#pragma once

#include "sound/sound_slices.h"
#include "support/byte_store.h"
#include <cstddef>
#include <cstdint>

struct resampler_block;

// What belongs to a snapshot besides machine, main_cpu and run_state.
struct snapshot_parts {
    sound_block &sound;
    byte_store *tape_output = nullptr;    // what the machine wrote and nobody has taken yet; null: nothing
    resampler_block *resampler = nullptr; // null: not in it
    bool keeps_keys = false;              // reading: the keyboard stays as it is
};

enum class tape_in_snapshot { whole, checksum_only };

enum class snapshot_fault {
    none,
    no_snapshot, // the bytes are none
    version,     // another version of the form
    damaged,     // cut off, or bytes changed
    other_roms,  // made with other ROM images than the ones in the machine
    other_tape,  // made without its tape, and another one lies in the deck
    no_memory,   // for its tape
};

// One line for a person.
const char *snapshot_fault_text(snapshot_fault fault);

// The bytes of a snapshot taken now.
size_t snapshot_size(const snapshot_parts &parts, tape_in_snapshot tape);
// No snapshot with this tape in the deck is larger while the tape output holds at most `tape_output` bytes.
size_t snapshot_limit(tape_in_snapshot tape, size_t tape_output);
// Writes snapshot_size bytes.
void snapshot_write(const snapshot_parts &parts, tape_in_snapshot tape, uint8_t *bytes);

// Appends a section of the caller's own to a snapshot of `size` bytes, behind which there is room for the
// body and snapshot_section_head bytes; readers pass over it. `tag`: four characters.
constexpr size_t snapshot_section_head = 12;
void snapshot_append(uint8_t *bytes, size_t size, const char *tag, const uint8_t *body, size_t body_size);
// The body of a section, where it stands in the snapshot; nullptr: none, or no snapshot. Its checksum is not
// looked at.
const uint8_t *snapshot_section(const uint8_t *bytes, size_t size, const char *tag, size_t &body_size);

// The checksum of the tape in the deck when the snapshot was taken; 0: there was none, or it is no snapshot.
uint64_t snapshot_tape(const uint8_t *bytes, size_t size);

// Puts a snapshot into the machine. After any fault everything is as it was.
[[nodiscard]] snapshot_fault snapshot_read(const snapshot_parts &parts, const uint8_t *bytes, size_t size);

// To be called when a ROM image or the font has changed: their checksums are kept.
void snapshot_roms_changed();

// Writes the checksum of a snapshot whose bytes were changed, for tests and for tools that edit one. False:
// it has no header.
bool snapshot_seal(uint8_t *bytes, size_t size);

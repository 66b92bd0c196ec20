// A machine behind the flat interface, with programs of the tests' own in its ROM.
#pragma once

#include "api/kiv.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using bytes = std::vector<uint8_t>;

// A ROM that copies itself to 0xA000, where no bank switch hides it, and there writes and reads ports at
// random, without an end: the numbers from 0x1000 on say which. Interrupts of all three levels are taken.
inline bytes storm_rom(uint32_t seed) {
    bytes rom(0x8000, 0);
    const bytes start = {
        0xF3,                   // 0000        di
        0x31, 0x00, 0xBF,       // 0001        ld sp,0BF00h
        0x21, 0x40, 0x00,       // 0004        ld hl,storm
        0x11, 0x00, 0xA0,       // 0007        ld de,0A000h
        0x01, 0x80, 0x00,       // 000A        ld bc,80h
        0xED, 0xB0,             // 000D        ldir
        0x21, 0x00, 0x10,       // 000F        ld hl,1000h
        0x11, 0x00, 0x84,       // 0012        ld de,8400h
        0x01, 0x00, 0x14,       // 0015        ld bc,1400h
        0xED, 0xB0,             // 0018        ldir
        0x21, 0x60, 0xA0,       // 001A        ld hl,0A060h    the interrupts' table: one entry a level
        0x22, 0x00, 0xA1,       // 001D        ld (0A100h),hl
        0x22, 0x02, 0xA1,       // 0020        ld (0A102h),hl
        0x22, 0x04, 0xA1,       // 0023        ld (0A104h),hl
        0x3E, 0xA1, 0xED, 0x47, // 0026        ld a,0A1h; ld i,a
        0xED, 0x5E, 0xFB,       // 002A        im 2; ei
        0xC3, 0x00, 0xA0,       // 002D        jp 0A000h
    };
    const bytes storm = {
        0x21, 0x00, 0x84,             // A000        ld hl,8400h
        0x4E, 0x23, 0x7E, 0x23,       // A003 next:  ld c,(hl); inc hl; ld a,(hl); inc hl
        0xED, 0x79,                   // A007        out (c),a
        0x7E, 0xE6, 0x1F, 0x47,       // A009        ld a,(hl); and 1Fh; ld b,a
        0x10, 0xFE,                   // A00D wait:  djnz wait
        0xED, 0x78,                   // A00F        in a,(c)
        0x32, 0x00, 0xC1,             // A011        ld (0C100h),a
        0xDB, 0x20, 0x32, 0xD0, 0xF3, // A014        in a,(20h); ld (0F3D0h),a
        0xED, 0x5F, 0x32, 0xD1, 0xF3, // A019        ld a,r; ld (0F3D1h),a
        0x7C, 0xFE, 0x97, 0x38, 0xE0, // A01E        ld a,h; cp 97h; jr c,next
        0x18, 0xDB,                   // A023        jr 0A000h
    };
    const bytes handler = {0xF5, 0xDB, 0x20, 0xF1, 0xFB, 0xC9}; // A060 push af; in a,(20h); pop af; ei; ret
    std::copy(start.begin(), start.end(), rom.begin());
    std::copy(storm.begin(), storm.end(), rom.begin() + 0x40);
    std::copy(handler.begin(), handler.end(), rom.begin() + 0xA0);
    std::mt19937 random(seed);
    constexpr uint8_t ports[] = {0x00, 0x01, 0x02, 0x03, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x20, 0x21, 0x30,
                                 0x31, 0x40, 0x50, 0x50, 0x50, 0x51, 0x53, 0x54, 0x5B, 0x5C, 0x5D, 0x5F,
                                 0x60, 0x64, 0x65, 0x68, 0x70, 0x71, 0x78, 0xE4, 0xE6, 0xF0};
    for (size_t i = 0x1000; i < 0x2400; i += 2) {
        rom[i] = ports[random() % std::size(ports)];
        rom[i + 1] = static_cast<uint8_t>(random());
        if (rom[i] == 0x51 && random() % 2 != 0) rom[i + 1] = 0x20; // START DISPLAY
        if (rom[i] == 0x68 && random() % 2 != 0) rom[i + 1] = 0xC4;
    }
    return rom;
}

inline void put_rom(int socket, const bytes &image) {
    ASSERT_EQ(kiv_rom(socket, image.data(), image.size()), KIV_OK) << kiv_error_text();
}

// Records for the fast load, into main RAM and planes, with other bytes between them.
inline bytes some_tape() {
    bytes tape;
    std::mt19937 random(5);
    for (int record = 0; record < 40; ++record) {
        for (int i = 0; i < 7; ++i) tape.push_back(static_cast<uint8_t>(random() % 0x30));
        const bytes head = {0x3A, static_cast<uint8_t>(0xC2 + record % 32), 0x00, 0x00, 0x3A, 0x40};
        tape.insert(tape.end(), head.begin(), head.end());
        for (int i = 0; i < 0x41; ++i) tape.push_back(static_cast<uint8_t>(random()));
    }
    return tape;
}

// All that a person could see or hear of `runs` runs, and what the machine wrote to its cassette.
inline bytes seen_and_heard(int runs) {
    bytes all;
    const auto add = [&all](const void *from, size_t size) {
        all.resize(all.size() + size);
        if (size != 0) std::memcpy(all.data() + all.size() - size, from, size);
    };
    for (int i = 0; i < runs; ++i) {
        const auto ended_by = static_cast<uint8_t>(kiv_run_frame());
        add(&ended_by, 1);
        add(kiv_pixels(), 4 * KIV_WIDTH * KIV_HEIGHT);
        add(kiv_samples(), 2 * size_t{kiv_sample_count()});
        add(kiv_resampled(), 2 * size_t{kiv_resampled_count()});
        add(kiv_tape_output(), kiv_tape_output_size());
        kiv_tape_output_clear();
    }
    return all;
}

inline bytes snapshot(int what = KIV_SNAPSHOT_WHOLE) {
    bytes taken(kiv_snapshot_size(what));
    EXPECT_EQ(kiv_snapshot_save(what, taken.data(), taken.size()), taken.size());
    return taken;
}

inline kiv_result load(const bytes &taken) { return kiv_snapshot_load(taken.data(), taken.size()); }

// A snapshot brings back all that decides the future: what follows a load is equal to the byte to what
// followed the save.
#include "tests/api/machine_at_hand.h"

#include "api/snapshot.h"
#include "machine/kiv_machine.h"
#include "tests/temporary_folder.h"

#include <cstring>
#include <functional>

namespace {

void boot_storm(uint32_t seed) {
    put_rom(KIV_ROM_MAIN, storm_rom(seed));
    put_rom(KIV_ROM_NBASIC, {0xC7});
    const kiv_date date = {1982, 12, 31, 23, 59, 59};
    ASSERT_EQ(kiv_calendar_start(&date), KIV_OK);
    ASSERT_EQ(kiv_boot(), KIV_OK) << kiv_error_text();
    const bytes tape = some_tape();
    ASSERT_EQ(kiv_tape_insert(tape.data(), tape.size()), KIV_OK);
    kiv_tape_record(1);
    ASSERT_EQ(kiv_set_sample_rate(44100), KIV_OK);
}

// The demonstration, its screen up and its tune playing.
void boot_demonstration() {
    const std::string folder = KIV_FIRMWARE_DIR "/";
    const auto image = [&](const char *name) {
        const std::string text = get_file(folder + name);
        return bytes(text.begin(), text.end());
    };
    put_rom(KIV_ROM_MAIN, image("8801-zun.rom"));
    put_rom(KIV_ROM_NBASIC, image("8801-kiv.rom"));
    put_rom(KIV_ROM_EXT, image("8801-4th.rom"));
    ASSERT_EQ(kiv_boot(), KIV_OK);
    for (int i = 0; i < 100; ++i) kiv_run_frame();
    kiv_key('A', 1);
}

// What happens between a save and its load, to leave nothing of the machine as it was.
const std::pair<const char *, void (*)()> disturbances[] = {
    {"nothing but time", [] {}},
    {"keys, ports, memory, settings",
     [] {
         for (uint32_t row = 0; row < 12; ++row) kiv_matrix_key(row, row % 8, 1);
         for (int port = 0; port < 256; ++port)
             kiv_port_out(static_cast<uint16_t>(port), static_cast<uint8_t>(0x5A ^ port));
         for (uint32_t i = 0; i < 0x10000; i += 3) kiv_poke(KIV_AREA_RAM, i, static_cast<uint8_t>(i));
         for (int area = KIV_AREA_BLUE; area <= KIV_AREA_GREEN; ++area) kiv_poke(area, 77, 0xEE);
         for (uint32_t i = 0; const char *key = kiv_setting_key(i); ++i) kiv_set_setting(key, i % 2 != 0);
         kiv_set_setting("halt_waits", 0); // in no snapshot: the choice of whoever runs the machine
         for (int i = 0; i < KIV_REGISTERS; ++i) kiv_set_register(i, 0x1234);
         std::memset(main_cpu.inject_bytes, 0x76, sizeof main_cpu.inject_bytes);
         seen_and_heard(3);
     }},
    {"a key in the middle of being typed",
     [] {
         kiv_type("AQ");
         for (int i = 0; i < 2; ++i) kiv_run_frame();
     }},
    {"another boot, no tape", [] { kiv_boot(); }},
};

void settings_as_at_first() {
    const std::pair<const char *, int> values[] = {{"z80_no_wait", 0}, {"soft_volume", 1}, {"interlace", 0},
                                                   {"boot_rom", 1},    {"hires_crt", 1},   {"dma_load", 100},
                                                   {"halt_waits", 0},  {"steps_over", 0}};
    for (const auto &[key, value] : values) kiv_set_setting(key, value);
}

void expect_the_same_again(int runs, const std::string &what) {
    const bytes taken = snapshot(), bare = snapshot(KIV_SNAPSHOT_WITHOUT_TAPE);
    const auto record = std::make_unique<kiv_machine>(machine);
    const z80_cpu processor = main_cpu;
    EXPECT_LE(bare.size(), 400'000u);
    EXPECT_LE(taken.size(), kiv_snapshot_limit(KIV_SNAPSHOT_WHOLE));
    const bytes future = seen_and_heard(runs), after = snapshot();
    for (const auto &[name, disturb] : disturbances) {
        disturb();
        const bool has_tape = kiv_tape_inserted() != 0;
        ASSERT_EQ(load(taken), KIV_OK) << what << ": " << name << ": " << kiv_error_text();
        kiv_tape_record(1);
        EXPECT_EQ(std::memcmp(&processor, &main_cpu, sizeof main_cpu), 0) << what << ": " << name;
        if (has_tape) {
            EXPECT_EQ(std::memcmp(record.get(), &machine, sizeof machine), 0) << what << ": " << name;
        }
        EXPECT_TRUE(snapshot() == taken) << what << ": " << name;
        EXPECT_TRUE(seen_and_heard(runs) == future) << what << ": " << name;
        EXPECT_TRUE(snapshot() == after) << what << ": " << name;
    }
    settings_as_at_first();
}

TEST(Snapshot, DemonstrationGoesOnTheSame) {
    boot_demonstration();
    expect_the_same_again(25, "demonstration");
    kiv_key('A', 0);
}

TEST(Snapshot, PortStormsGoOnTheSame) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        boot_storm(seed);
        kiv_set_setting("hires_crt", seed % 4 != 0);
        kiv_set_setting("z80_no_wait", seed % 3 == 0);
        for (uint32_t i = 0; i < seed; ++i) kiv_run_frame();
        kiv_run(seed * 4321); // in the middle of a frame and of a slice
        expect_the_same_again(8, "seed " + std::to_string(seed));
    }
}

// The deck feeds bytes by interrupts, and the program reads them when it likes.
TEST(Snapshot, TapeInTheMiddleGoesOnTheSame) {
    bytes rom = {
        0x31, 0x00, 0xF0,       // 0000 ld sp,0F000h
        0x3E, 0x08, 0xD3, 0x30, // 0003 ld a,8; out (30h),a     motor
        0xD3, 0xE4,             // 0007 out (0E4h),a            every level
        0x3E, 0x4E, 0xD3, 0x21, // 0009 ld a,4Eh; out (21h),a   mode
        0x3E, 0x14, 0xD3, 0x21, // 000D ld a,14h; out (21h),a   receiver on
        0x3E, 0x04, 0xD3, 0xE6, // 0011 ld a,4; out (0E6h),a
        0xED, 0x56, 0xFB,       // 0015 im 1; ei
        0x18, 0xFE,             // 0018 jr $
    };
    rom.resize(0x38);
    for (const int byte : {0xDB, 0x20, 0xD3, 0x20, 0xFB, 0xC9})
        rom.push_back(static_cast<uint8_t>(byte)); // in, out, ei, ret
    put_rom(KIV_ROM_MAIN, rom);
    ASSERT_EQ(kiv_boot(), KIV_OK);
    const bytes tape = some_tape();
    ASSERT_EQ(kiv_tape_insert(tape.data(), tape.size()), KIV_OK);
    kiv_tape_record(1);
    for (int i = 0; i < 30; ++i) kiv_run_frame();
    EXPECT_GT(kiv_tape_position(), 20u);
    EXPECT_EQ(kiv_tape_motor(), 1);
    expect_the_same_again(20, "tape");
}

// Frames that nobody looks at leave for the next ones what they would have left as pictures.
TEST(Snapshot, LookingAtPicturesChangesNothing) {
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        boot_storm(seed);
        const bytes start = snapshot();
        const auto frames = [](void (*look)()) {
            for (int i = 0; i < 20; ++i) {
                kiv_run_frame();
                look();
            }
        };
        frames([] {});
        const bytes pictures = seen_and_heard(1), unseen = snapshot();
        ASSERT_EQ(load(start), KIV_OK);
        kiv_tape_record(1);
        frames([] {
            kiv_pixels();
            kiv_text_screen(nullptr, 0);
            for (uint16_t port = 0; port < 0x100; ++port) kiv_port_peek(port);
            for (uint32_t address = 0; address < 0x10000; address += 0x101) kiv_peek(KIV_AREA_CPU, address);
        });
        EXPECT_TRUE(seen_and_heard(1) == pictures) << "seed " << seed;
        EXPECT_TRUE(snapshot() == unseen) << "seed " << seed;
    }
    // Attributes other than those of the frame that was shown: looking must not carry them into the next.
    boot_demonstration();
    std::mt19937 random(1);
    for (int n = 0; n < 16; ++n) {
        snapshot(); // the frame that is due counts as shown
        machine.select_attr_decoder(n % 2);
        machine.crtc_mono = static_cast<uint8_t>(n % 2);
        for (uint32_t i = 0; i < 0x10000; ++i) kiv_poke(KIV_AREA_RAM, i, static_cast<uint8_t>(random()));
        const bytes before = snapshot();
        kiv_text_screen(nullptr, 0);
        EXPECT_TRUE(snapshot() == before) << n;
        kiv_pixels();
        EXPECT_TRUE(snapshot() == before) << n;
    }
}

TEST(Snapshot, WhatIsNoneSaysWhyAndChangesNothing) {
    boot_storm(3);
    const bytes taken = snapshot(), bare = snapshot(KIV_SNAPSHOT_WITHOUT_TAPE);
    for (int i = 0; i < 5; ++i) kiv_run_frame();
    const bytes now = snapshot();
    const auto changed = [&](size_t at, uint8_t value) {
        bytes other = taken;
        other[at] = value;
        return other;
    };
    const struct {
        const char *what;
        bytes input;
        kiv_result result;
        const char *text;
    } cases[] = {
        {"nothing", {}, KIV_ERROR_NO_SNAPSHOT, "not a snapshot"},
        {"other bytes", bytes(5000, 'x'), KIV_ERROR_NO_SNAPSHOT, "not a snapshot"},
        {"another version", changed(8, 2), KIV_ERROR_VERSION, "version"},
        {"a byte more",
         [&] {
             auto b = taken;
             b.push_back(0);
             return b;
         }(),
         KIV_ERROR_DAMAGED, "damaged"},
        {"half of it", bytes(taken.begin(), taken.begin() + taken.size() / 2), KIV_ERROR_DAMAGED, "damaged"},
        {"a changed byte", changed(70'000, static_cast<uint8_t>(taken[70'000] ^ 1)), KIV_ERROR_DAMAGED,
         "damaged"},
        {"a changed count", changed(12, 200), KIV_ERROR_DAMAGED, "damaged"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(load(c.input), c.result) << c.what;
        EXPECT_NE(std::string(kiv_error_text()).find(c.text), std::string::npos)
            << c.what << kiv_error_text();
        EXPECT_TRUE(snapshot() == now) << c.what;
    }
    kiv_tape_eject();
    EXPECT_EQ(load(bare), KIV_ERROR_OTHER_TAPE);
    EXPECT_EQ(load(taken), KIV_OK) << "its tape is in it";
    EXPECT_EQ(load(bare), KIV_OK) << "and now lies in the deck";
    boot_storm(4);
    EXPECT_EQ(load(taken), KIV_ERROR_OTHER_ROMS);
    kiv_poke(KIV_AREA_FONT, 9, 0x55);
    EXPECT_EQ(load(snapshot()), KIV_OK) << "a patched font is the one in the machine";
}

// Every byte of every section but the big memories, spoilt and sealed again: refused, or a machine that runs.
TEST(Snapshot, SpoiltFieldsDoNoHarm) {
    boot_storm(7);
    for (int i = 0; i < 4; ++i) kiv_run_frame();
    const bytes taken = snapshot();
    const size_t memory_end = 32 + 44 + 12 + 0x10000 + 3 * 0x4000 + 0x800;
    std::mt19937 random(1);
    int refused = 0, taken_over = 0;
    for (size_t n = 24; n / 2 < taken.size(); n = n / 2 == 100 ? 2 * (memory_end - 8) : n + 1) {
        const size_t at = n / 2;
        bytes spoilt = taken;
        spoilt[at] = n % 2 != 0 ? 0x00 : random() % 2 != 0 ? 0xFF : static_cast<uint8_t>(random());
        ASSERT_TRUE(snapshot_seal(spoilt.data(), spoilt.size()));
        const bytes before = n % 128 == 0 ? snapshot() : bytes();
        if (load(spoilt) != KIV_OK) {
            ++refused;
            EXPECT_TRUE(before.empty() || snapshot() == before) << "offset " << at;
        } else {
            ++taken_over;
            EXPECT_LE(kiv_tape_position(), kiv_tape_size()) << "offset " << at;
            kiv_run(20'000);
        }
    }
    EXPECT_GT(refused, 20);
    EXPECT_GT(taken_over, 500);
}

} // namespace

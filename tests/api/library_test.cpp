// The flat interface as a front end uses it.
#include "tests/api/machine_at_hand.h"

#include "api/resampler.h"
#include "machine/calendar_clock.h"
#include "tests/common/test_rom.h"

#include <cmath>
#include <map>

namespace {

std::string text_screen() {
    std::string text(kiv_text_screen(nullptr, 0), '\0');
    kiv_text_screen(text.data(), text.size() + 1);
    return text;
}

void run(int frames) {
    for (; frames > 0; --frames) kiv_run_frame();
}

// The firmware of the tests: READY, and what is typed in the row below.
void boot_test_rom() {
    put_rom(KIV_ROM_MAIN, {std::begin(test_rom), std::end(test_rom)});
    ASSERT_EQ(kiv_boot(), KIV_OK) << kiv_error_text();
    run(20);
}

TEST(Library, BeforeTheBootEverythingSaysSo) { // the first test of the program
    std::vector<uint8_t> buffer(1 << 20);
    EXPECT_EQ(kiv_boot(), KIV_ERROR_ARGUMENT) << "no image";
    EXPECT_NE(std::string(kiv_error_text()).find("ROM image"), std::string::npos) << kiv_error_text();
    for (const kiv_result result :
         {kiv_run_frame(), kiv_reset(), kiv_type("A"), kiv_poke(KIV_AREA_RAM, 0, 1), kiv_tape_insert("", 1),
          kiv_dump_load(buffer.data(), buffer.size()), kiv_snapshot_load(buffer.data(), buffer.size())})
        EXPECT_EQ(result, KIV_ERROR_NOT_BOOTED);
    kiv_release_keys();
    EXPECT_EQ(kiv_pixels(), nullptr);
    EXPECT_EQ(kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, buffer.data(), buffer.size()), 0u);
    EXPECT_EQ(kiv_text_screen(nullptr, 0) + kiv_dump_save(buffer.data(), buffer.size()), 0u);
}

TEST(Library, WhatIsTypedArrivesAtTheMachinesPace) {
    boot_test_rom();
    EXPECT_EQ(kiv_type("AbC\tあ"), KIV_ERROR_CHARACTER);
    EXPECT_EQ(kiv_type_waiting(), 0u);
    ASSERT_EQ(kiv_type("AbC@"), KIV_OK);
    ASSERT_EQ(kiv_type_key('D', 1), KIV_OK);
    ASSERT_EQ(kiv_type_pause(20), KIV_OK);
    ASSERT_EQ(kiv_type("e"), KIV_OK);
    EXPECT_EQ(kiv_type_waiting(), 7u);
    run(5 * 8 + 15);
    EXPECT_EQ(text_screen().substr(0, 12), "READY\nAbC`D\n"); // the ROM makes '@' small
    run(40);
    EXPECT_EQ(text_screen().substr(0, 13), "READY\nAbC`De\n");
    EXPECT_EQ(kiv_type_waiting(), 0u);
    ASSERT_EQ(kiv_type("FGH"), KIV_OK);
    run(1);
    kiv_type_cancel();
    run(5); // a press is seen, however short it was
    for (uint32_t row = 0; row < 12; ++row) EXPECT_EQ(kiv_matrix_row(row), 0xFFu) << row;
    kiv_matrix_key(2, 1, 1); // A
    kiv_key(0x10, 1);        // SHIFT
    run(3);
    EXPECT_EQ(text_screen().substr(0, 15), "READY\nAbC`DeFA\n");
    const uint8_t secret_from_column_2[] = {2, 0x01};
    kiv_write(KIV_AREA_RAM, 0xF3C8 + 80, secret_from_column_2, 2);
    const bytes before = snapshot();
    EXPECT_EQ(text_screen().substr(0, 3), "RE\n") << "what the picture hides, the text hides";
    EXPECT_TRUE(snapshot() == before);
    kiv_poke(KIV_AREA_RAM, 0xF3C8 + 81, 0xF8); // semigraphics
    EXPECT_EQ(text_screen().substr(0, 11), "RE⠡⠤⡩");
    kiv_release_keys();
    EXPECT_EQ(kiv_matrix_row(2), 0xFFu);
    EXPECT_EQ(kiv_matrix_key(12, 0, 1), KIV_ERROR_ARGUMENT);
}

TEST(Library, RunsEndWithFramesLimitsAndStops) {
    boot_test_rom();
    EXPECT_EQ(kiv_frame_t_states(), 72120u);
    EXPECT_EQ(kiv_run_frame(), KIV_RUN_FRAME);
    const uint64_t frame = kiv_frames(), before = kiv_t_states();
    EXPECT_EQ(kiv_run(1), KIV_RUN_LIMIT);
    EXPECT_LE(kiv_t_states() - before, 30u);
    EXPECT_EQ(kiv_run(UINT32_MAX), KIV_RUN_FRAME);
    EXPECT_EQ(kiv_frames(), frame + 1);
    kiv_type("0"); // HALT at 00CDh
    int32_t ended_by = KIV_RUN_FRAME;
    for (int i = 0; i < 20 && ended_by == KIV_RUN_FRAME; ++i) ended_by = kiv_run_frame();
    for (int again = 0; again < 2; ++again, ended_by = kiv_run_frame()) {
        EXPECT_EQ(ended_by, KIV_RUN_STOPPED);
        EXPECT_EQ(kiv_stop_reason(), KIV_STOP_HALT);
        EXPECT_EQ(kiv_stop_address(), 0xCDu);
    }
    EXPECT_EQ(kiv_reset(), KIV_OK);
    EXPECT_EQ(kiv_stop_reason(), KIV_STOP_NONE);
    EXPECT_EQ(kiv_run_frame(), KIV_RUN_FRAME);

    // RESET with 25 rows, then with 20, for ever: the raster never comes to its end.
    put_rom(KIV_ROM_MAIN, {0x3E, 0x00, 0xD3, 0x51, 0xD3, 0x50, 0x3E, 0x18, 0xD3, 0x50, 0xAF,
                           0xD3, 0x51, 0xD3, 0x50, 0x3E, 0x13, 0xD3, 0x50, 0x18, 0xEB});
    ASSERT_EQ(kiv_boot(), KIV_OK);
    EXPECT_EQ(kiv_run_frame(), KIV_RUN_LIMIT);
    EXPECT_GE(kiv_t_states(), 798'720u);
    EXPECT_EQ(kiv_sample_count() % 1920, 0u);
    EXPECT_GE(kiv_sample_count(), 9 * 1920u);
}

TEST(Library, MemoryPortsAndRegistersAreSeenAndSet) {
    boot_test_rom();
    const std::map<int32_t, uint32_t> sizes = {{KIV_AREA_CPU, 0x10000},
                                               {KIV_AREA_RAM, 0x10000},
                                               {KIV_AREA_MAIN_ROM, 0x8000},
                                               {KIV_AREA_NBASIC_ROM, 0x8000},
                                               {KIV_AREA_EXT_ROM, 0x2000},
                                               {KIV_AREA_BLUE, 0x4000},
                                               {KIV_AREA_RED, 0x4000},
                                               {KIV_AREA_GREEN, 0x4000},
                                               {KIV_AREA_FONT, 0x1000},
                                               {KIV_AREA_PCG, 0x800},
                                               {10, 0},
                                               {-1, 0}};
    for (const auto &[area, size] : sizes) {
        EXPECT_EQ(kiv_area_size(area), size) << area;
        EXPECT_EQ(kiv_peek(area, size), -1) << area;
        EXPECT_EQ(kiv_poke(area, size, 1), KIV_ERROR_ARGUMENT) << area;
        if (size == 0) continue;
        EXPECT_EQ(kiv_poke(area, size - 1, static_cast<uint8_t>(area + 0x40)), KIV_OK) << area;
        EXPECT_EQ(kiv_peek(area, size - 1), area + 0x40) << area;
    }
    EXPECT_EQ(kiv_peek(KIV_AREA_CPU, 0), test_rom[0]);
    EXPECT_EQ(kiv_poke(KIV_AREA_CPU, 0, 0x99), KIV_OK) << "lands in the RAM below";
    EXPECT_EQ(kiv_peek(KIV_AREA_CPU, 0), test_rom[0]);
    EXPECT_EQ(kiv_peek(KIV_AREA_RAM, 0), 0x99);
    uint8_t three[3] = {};
    EXPECT_EQ(kiv_read(KIV_AREA_RAM, 0xFFFE, three, 3), KIV_ERROR_ARGUMENT);
    EXPECT_EQ(kiv_write(KIV_AREA_RAM, 0x9000, "abc", 3), KIV_OK);
    EXPECT_EQ(kiv_read(KIV_AREA_CPU, 0x9000, three, 3), KIV_OK);
    EXPECT_EQ(std::string(three, three + 3), "abc");

    const uint8_t tape[] = {0x11, 0x22, 0x33};
    ASSERT_EQ(kiv_tape_insert(tape, sizeof tape), KIV_OK);
    kiv_port_out(0x71, 0x00);
    const bytes before = snapshot();
    for (uint16_t port = 0; port < 256; ++port) kiv_port_peek(port);
    EXPECT_TRUE(snapshot() == before);
    EXPECT_EQ(kiv_port_peek(0x20), 0x11);
    EXPECT_EQ(kiv_port_in(0x20), 0x11);
    EXPECT_EQ(kiv_port_in(0x20), 0x22);
    EXPECT_EQ(kiv_tape_position(), 2u);
    EXPECT_EQ(kiv_tape_seek(0), KIV_OK);
    EXPECT_EQ(kiv_tape_seek(4), KIV_ERROR_ARGUMENT);
    kiv_port_out(0x20, 'x');
    EXPECT_EQ(kiv_tape_output_size(), 0u) << "nobody records";
    kiv_tape_record(1);
    kiv_port_out(0x20, 'y');
    EXPECT_EQ(kiv_tape_output_size(), 1u);

    for (int32_t index = 0; index < KIV_REGISTERS; ++index) {
        EXPECT_EQ(kiv_set_register(index, 0x1235 + 6u * static_cast<uint32_t>(index)), KIV_OK);
        EXPECT_NE(kiv_get_register(index), 0u) << index;
    }
    EXPECT_EQ(kiv_get_register(KIV_REG_IY), 0x1235u + 6 * KIV_REG_IY);
    EXPECT_EQ(kiv_set_register(KIV_REGISTERS, 1), KIV_ERROR_ARGUMENT);
}

TEST(Library, NoBufferIsAnErrorWithAText) {
    boot_test_rom();
    const auto says = [](kiv_result result, kiv_result wanted, const char *text) {
        EXPECT_EQ(result, wanted) << text;
        EXPECT_NE(std::string(kiv_error_text()).find(text), std::string::npos) << kiv_error_text();
    };
    says(kiv_read(KIV_AREA_RAM, 0, nullptr, 1), KIV_ERROR_ARGUMENT, "no buffer");
    says(kiv_dump_load(nullptr, KIV_DUMP_SIZE), KIV_ERROR_SIZE, "memory dump");
    says(kiv_write(KIV_AREA_CPU, 0, nullptr, 9), KIV_ERROR_ARGUMENT, "no buffer");
    says(kiv_snapshot_load(nullptr, 200'000), KIV_ERROR_NO_SNAPSHOT, "not a snapshot");
    says(kiv_get_setting("boot_rom", nullptr), KIV_ERROR_ARGUMENT, "boot_rom");
    EXPECT_EQ(kiv_dump_save(nullptr, KIV_DUMP_SIZE) + kiv_snapshot_save(0, nullptr, 200'000), 0u);
    EXPECT_EQ(kiv_text_screen(nullptr, 100), kiv_text_screen(nullptr, 0));
}

TEST(Library, SettingsReachTheMachine) {
    boot_test_rom();
    for (uint32_t i = 0; const char *key = kiv_setting_key(i); ++i) {
        int32_t was = 0, now = 0;
        ASSERT_EQ(kiv_get_setting(key, &was), KIV_OK);
        EXPECT_EQ(kiv_set_setting(key, was == 0), KIV_OK);
        EXPECT_EQ(kiv_get_setting(key, &now), KIV_OK);
        EXPECT_EQ(now, was == 0) << key;
        kiv_set_setting(key, was);
    }
    EXPECT_EQ(kiv_set_setting("volume", 1), KIV_ERROR_ARGUMENT);
    kiv_set_setting("hires_crt", 0);
    EXPECT_EQ(kiv_frame_t_states(), 250u * 200 + 13994);
    kiv_set_setting("hires_crt", 1);
}

TEST(Library, PicturesGoWhereTheyAreWanted) {
    boot_test_rom();
    std::vector<uint32_t> wide(700 * 400, 0x12345678);
    std::vector<uint8_t> indices(640 * 400);
    const uint32_t *const own = kiv_pixels();
    ASSERT_EQ(kiv_draw(wide.data(), 700 * 4), KIV_OK);
    ASSERT_EQ(kiv_draw_indexed(indices.data(), 640), KIV_OK);
    for (size_t y = 0; y < 400; ++y) {
        ASSERT_TRUE(
            std::equal(own + 640 * y, own + 640 * (y + 1), wide.begin() + static_cast<ptrdiff_t>(700 * y)));
        ASSERT_EQ(wide[700 * y + 640], 0x12345678u);
        for (size_t x = 0; x < 640; ++x) ASSERT_EQ(kiv_palette()[indices[640 * y + x]], own[640 * y + x]);
    }
    EXPECT_EQ(std::count(own, own + 640 * 400, 0xFFFFFFu) > 50, true) << "READY in white";
    EXPECT_EQ(kiv_draw(wide.data(), 639 * 4), KIV_ERROR_ARGUMENT);
    EXPECT_EQ(kiv_draw(wide.data(), 641 * 4 + 2), KIV_ERROR_ARGUMENT);
}

// Loudest sample of a sine wave after a while.
double through(double rate, double frequency) {
    resampler converter;
    converter.set_rate(rate);
    double loudest = 0;
    uint64_t n = 0, made = 0;
    for (int block = 0; block < 20; ++block) {
        int16_t in[1000], out[2100];
        for (int16_t &sample : in)
            sample = static_cast<int16_t>(10000 *
                                          std::sin(2 * M_PI * frequency * static_cast<double>(n++) / 96000));
        const uint32_t count = converter.run(in, 1000, out);
        EXPECT_LE(count, converter.most_output(1000));
        for (uint32_t i = 0; i < count && block > 1; ++i) loudest = std::max(loudest, std::fabs(out[i]));
        made += count;
    }
    EXPECT_NEAR(static_cast<double>(made), 20000 * rate / 96000, 1.01) << rate;
    return loudest;
}

TEST(Library, ResamplingKeepsWhatIsHeardAndDropsWhatWouldFold) {
    for (const double rate : {22050.0, 44100.0, 48000.0, 96000.0, 192000.0}) {
        EXPECT_NEAR(through(rate, 1000), 10000, 150) << rate;
        EXPECT_NEAR(through(rate, 0.3 * std::min(rate, 96000.0)), 10000, 600) << rate;
        if (rate <= 48000) {
            EXPECT_LT(through(rate, rate - 3000), 40) << rate << " would be heard at 3 kHz";
        }
    }
    EXPECT_EQ(kiv_set_sample_rate(7999), KIV_ERROR_ARGUMENT);
    EXPECT_EQ(kiv_set_sample_rate(std::nan("")), KIV_ERROR_ARGUMENT);
    EXPECT_EQ(kiv_set_sample_rate(44100.5), KIV_OK);
}

TEST(Library, ARunningCalendarKnowsItsMonths) {
    const struct {
        calendar_time from;
        uint64_t seconds;
        calendar_time to;
    } cases[] = {
        {{1982, 12, 31, 23, 59, 59}, 1, {1983, 1, 1, 0, 0, 0}},
        {{1984, 2, 28, 12, 0, 0}, 86400, {1984, 2, 29, 12, 0, 0}},
        {{1900, 2, 28, 12, 0, 0}, 86400, {1900, 3, 1, 12, 0, 0}},
        {{1981, 1, 1, 0, 0, 0}, 365 * 86400 + 3661, {1982, 1, 1, 1, 1, 1}},
    };
    for (const auto &c : cases) {
        const calendar_time t = calendar_after(c.from, c.seconds);
        const int got[] = {t.year, t.month, t.day, t.hour, t.minute, t.second};
        const int wanted[] = {c.to.year, c.to.month, c.to.day, c.to.hour, c.to.minute, c.to.second};
        EXPECT_TRUE(std::equal(got, got + 6, wanted)) << c.from.year << " + " << c.seconds;
    }
    put_rom(KIV_ROM_MAIN, {0x18, 0xFE}); // jr $
    const kiv_date date = {1982, 12, 31, 23, 59, 58};
    ASSERT_EQ(kiv_calendar_start(&date), KIV_OK);
    ASSERT_EQ(kiv_boot(), KIV_OK);
    run(200); // 3.6 s: a new year, and a second
    kiv_reset();
    for (int bit = 0, wanted = 0x01; bit < 8;
         ++bit, wanted >>= 1) { // seconds, as the register is shifted out
        if (bit == 0) {
            kiv_port_out(0x10, 2); // time set: shows the first bit
            kiv_port_out(0x40, 2);
            kiv_port_out(0x40, 0);
            kiv_port_out(0x10, 1); // shift
            kiv_port_out(0x40, 2);
            kiv_port_out(0x40, 0);
        }
        EXPECT_EQ(kiv_port_in(0x40) >> 4 & 1, wanted & 1) << bit;
        kiv_port_out(0x40, 4);
        kiv_port_out(0x40, 0);
    }
    const kiv_date none = {1982, 13, 1, 0, 0, 0};
    EXPECT_EQ(kiv_calendar_fix(&none), KIV_ERROR_ARGUMENT);
}

} // namespace

// Backwards: the machine comes to stand exactly where it was.
#include "tests/debug/debugged_machine.h"

namespace {

bytes state() { return snapshot(KIV_SNAPSHOT_WITHOUT_TAPE); }

const std::vector<std::string> nested = {
    "LD SP,$BF00",  "main:",  "INC A",       "CALL sub", "behind:", "LD BC,40", "LD HL,$9100", "LD DE,$9200",
    "block:",       "LDIR",   "past_block:", "JP main",  "sub:",    "PUSH HL",  "CALL leaf",   "in_sub:",
    "LD ($9000),A", "POP HL", "RET",         "leaf:",    "INC B",   "RET"};

struct History : DebuggedMachine {
    History() { driver.keep_history({}); }
};

TEST_F(History, StepsBackThroughTheSameStates) {
    for (const bool interrupted : {false, true}) {
        if (interrupted) {
            boot_rom(storm_rom(7));
            ASSERT_EQ(kiv_tape_insert(some_tape().data(), some_tape().size()), KIV_OK);
            driver.changed();
        } else {
            boot(nested);
        }
        driver.go_on();
        while (kiv_frames() < 12) {
            driver.run_slice(50000);
            const auto frames = static_cast<uint32_t>(kiv_frames());
            kiv_key(0x41 + frames % 26, static_cast<int32_t>(frames % 2));
            if (frames == 5) {
                ASSERT_EQ(kiv_type("Hello\n"), KIV_OK);
            }
        }
        std::vector<bytes> states;
        for (int i = 0; i < 400; ++i) {
            states.push_back(state());
            step(aim_kind::into);
        }
        for (size_t i = states.size(); i-- > 0;) {
            driver.back(aim_kind::into);
            ASSERT_TRUE(state() == states[i]) << "step " << i << " of " << interrupted;
        }
        // And forwards again.
        for (const bytes &s : states) {
            ASSERT_TRUE(state() == s);
            step(aim_kind::into);
        }
    }
}

TEST_F(History, GoesBackAcrossKeysAndChanges) {
    boot_rom(storm_rom(3));
    std::vector<std::pair<uint64_t, bytes>> states;
    for (int i = 0; i < 60; ++i) {
        driver.go_on();
        driver.run_slice(static_cast<uint64_t>(20000 + 3000 * i));
        step(aim_kind::into);
        if (i % 7 == 3) kiv_key('A' + static_cast<uint32_t>(i), 1);
        if (i % 7 == 5) kiv_key('A' + static_cast<uint32_t>(i - 2), 0);
        if (i == 20) {
            ASSERT_EQ(kiv_type("10 PRINT\n"), KIV_OK);
        }
        const uint8_t byte = static_cast<uint8_t>(i);
        if (i % 10 == 0) {
            ASSERT_EQ(driver.write(KIV_AREA_RAM, 0xB000, &byte, 1), KIV_OK);
        }
        if (i % 10 == 4) driver.set_register(KIV_REG_HL, static_cast<uint32_t>(0x8400 + 2 * i));
        if (i % 10 == 8) driver.port_out(0x54, byte);
        states.emplace_back(kiv_t_states(), state());
    }
    for (size_t i = states.size(); i-- > 0;) {
        if (i % 3 == 1) continue;
        driver.back_to(states[i].first);
        ASSERT_EQ(kiv_t_states(), states[i].first);
        ASSERT_TRUE(state() == states[i].second) << i;
    }
    driver.back_to(0);
    EXPECT_EQ(kiv_t_states(), 0u);
}

TEST_F(History, KeysThatWaitToBeTypedStillDoAfterwards) {
    boot({"LD SP,$BF00", "main:", "IN A,($02)", "LD ($9000),A", "JP main"});
    ASSERT_EQ(kiv_type("ABC"), KIV_OK);
    driver.add({.kind = stop_kind::memory, .first = 0x9000, .last = 0x9000, .condition = "value==0xFD"});
    ASSERT_EQ(go().kind, stop_kind::memory);
    driver.back(aim_kind::frame);
    driver.back(aim_kind::frame);
    EXPECT_EQ(kiv_type_waiting(), 3u);
    ASSERT_EQ(go().kind, stop_kind::memory);
    driver.remove_all();
    driver.add({.kind = stop_kind::memory, .first = 0x9000, .last = 0x9000, .condition = "value==0xF7"});
    EXPECT_EQ(go().kind, stop_kind::memory) << "the last of them, too";
}

TEST_F(History, GoesBackOverCallsOutOfThemAndToStops) {
    boot(nested);
    break_at("in_sub");
    for (int i = 0; i < 3; ++i) ASSERT_EQ(go().pc, at("in_sub"));
    EXPECT_EQ(driver.back(aim_kind::over).pc, at("sub") + 1) << "leaf as a whole";
    EXPECT_EQ(driver.back(aim_kind::out).pc, at("main") + 1);
    EXPECT_EQ(reg(KIV_REG_AF) >> 8, 3u);
    EXPECT_EQ(driver.back(aim_kind::over).pc, at("main"));
    EXPECT_EQ(driver.back(aim_kind::over).pc, at("past_block"));
    EXPECT_EQ(driver.back(aim_kind::over).pc, at("block"));
    EXPECT_EQ(reg(KIV_REG_BC), 40u) << "all of its bytes";
    EXPECT_EQ(driver.back(aim_kind::none).pc, at("in_sub"));
    EXPECT_EQ(reg(KIV_REG_AF) >> 8, 2u);
    driver.remove_all();
    driver.add({.kind = stop_kind::memory, .first = 0x9000, .last = 0x9000});
    stop_report r = driver.back(aim_kind::none);
    EXPECT_EQ(r.pc, at("in_sub"));
    EXPECT_EQ(r.value, 1);
    EXPECT_NE(kiv_peek(KIV_AREA_CPU, 0x9000), 1) << "undone";
    EXPECT_EQ(driver.back(aim_kind::none).kind, stop_kind::beginning);
    EXPECT_EQ(pc(), 0);
    EXPECT_EQ(driver.back(aim_kind::into).kind, stop_kind::beginning);
}

TEST_F(History, BackwardsStopsWhereForwardsDid) {
    const stop_point points[] = {
        {.kind = stop_kind::address, .first = 0xA01E, .last = 0xA01E, .condition = "L & 8"},
        {.kind = stop_kind::port, .first = 0x40, .last = 0x5F, .access = access_write},
        {.kind = stop_kind::interrupt, .first = 0, .last = 2},
        {.kind = stop_kind::raster, .first = 77, .last = 77},
        {.kind = stop_kind::condition, .condition = "B==3 && C==0x40"},
        {.kind = stop_kind::frame},
    };
    for (const stop_point &point : points) {
        boot_rom(storm_rom(11));
        driver.remove_all();
        driver.add(point);
        std::vector<uint64_t> forwards;
        while (forwards.size() < 30) {
            const stop_report r = go();
            ASSERT_EQ(r.kind, point.kind);
            forwards.push_back(kiv_t_states());
        }
        const int kind = static_cast<int>(point.kind);
        // An access is undone first; elsewhere the machine stands at the last one.
        for (size_t i = forwards.size() - (point.kind == stop_kind::port ? 0 : 1); i-- > 1;) {
            const stop_report r = driver.back(aim_kind::none);
            ASSERT_EQ(r.kind, point.kind) << kind << " " << i;
            // Frames are told of between steps, accesses before they are made.
            ASSERT_LE(kiv_t_states(), forwards[i] + (point.kind == stop_kind::frame ? 200 : 0)) << kind;
            ASSERT_GT(kiv_t_states(), forwards[i - 1]) << kind << " " << i;
        }
    }
}

TEST_F(History, AProcessorThatHasStoppedRunsAgain) {
    boot({"LD A,1", "HALT"});
    ASSERT_EQ(go().kind, stop_kind::processor);
    EXPECT_EQ(driver.back(aim_kind::into).pc, 2);
    EXPECT_EQ(kiv_stop_reason(), KIV_STOP_NONE);
    EXPECT_EQ(driver.back(aim_kind::into).pc, 0);
    driver.set_register(KIV_REG_PC, 2);
    EXPECT_EQ(go().kind, stop_kind::processor);
    // Set going again by a reset, and run again across it.
    const uint64_t first_stop = kiv_t_states();
    ASSERT_EQ(kiv_reset(), KIV_OK);
    driver.changed();
    ASSERT_EQ(go().kind, stop_kind::processor);
    ASSERT_GT(kiv_t_states(), first_stop);
    EXPECT_EQ(driver.back(aim_kind::into).pc, 2);
    EXPECT_EQ(driver.back(aim_kind::into).pc, 0);
    EXPECT_EQ(kiv_t_states(), first_stop);
}

TEST_F(History, ForgetsWhatIsTooOldAndWhatOtherRomsMade) {
    boot(nested);
    driver.keep_history({.bytes = size_t{64} << 20, .t_states = 720000});
    while (kiv_frames() < 40) driver.run_slice(72000);
    EXPECT_EQ(driver.back_to(0).kind, stop_kind::beginning);
    EXPECT_GT(kiv_frames(), 25u);
    const uint8_t nop = 0;
    ASSERT_EQ(driver.write(KIV_AREA_MAIN_ROM, 0x7000, &nop, 1), KIV_OK);
    const uint64_t now = kiv_t_states();
    EXPECT_EQ(driver.back(aim_kind::into).kind, stop_kind::beginning);
    EXPECT_EQ(kiv_t_states(), now);
}

} // namespace

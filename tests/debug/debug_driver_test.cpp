// The debug driver stops where it is told to, and the machine does not notice it.
#include "tests/debug/debugged_machine.h"

namespace {

// Interrupts of the vertical blank and of the clock in mode 2, through a table at 0x8400.
const std::vector<std::string> with_interrupts = {"DI",
                                                  "LD SP,$BF00",
                                                  "LD HL,handler",
                                                  "LD ($8400),HL",
                                                  "LD ($8402),HL",
                                                  "LD ($8404),HL",
                                                  "LD A,$84",
                                                  "LD I,A",
                                                  "IM 2",
                                                  "LD A,3",
                                                  "OUT ($E6),A",
                                                  "LD A,$08",
                                                  "OUT ($E4),A",
                                                  "LD A,0",
                                                  "EI",
                                                  "main:",
                                                  "INC A",
                                                  "LD ($9000),A",
                                                  "CALL sub",
                                                  "behind:",
                                                  "LD BC,3",
                                                  "LD HL,$9100",
                                                  "LD DE,$9200",
                                                  "block:",
                                                  "LDIR",
                                                  "past_block:",
                                                  "OUT ($54),A",
                                                  "IN A,($40)",
                                                  "LD A,($9000)",
                                                  "JP main",
                                                  "sub:",
                                                  "PUSH HL",
                                                  "CALL leaf",
                                                  "POP HL",
                                                  "RET",
                                                  "leaf:",
                                                  "INC B",
                                                  "RET",
                                                  "handler:",
                                                  "PUSH AF",
                                                  "LD A,($9001)",
                                                  "INC A",
                                                  "LD ($9001),A",
                                                  "POP AF",
                                                  "EI",
                                                  "RET"};

TEST_F(DebuggedMachine, StopsAtWhatItIsTold) {
    const auto range = [](stop_kind kind, uint16_t first, uint16_t last, uint8_t access = access_write) {
        return stop_point{.kind = kind, .first = first, .last = last, .access = access};
    };
    const auto only_if = [](stop_point p, const char *condition, uint64_t ignore = 0) {
        p.condition = condition;
        p.ignore = ignore;
        return p;
    };
    const auto in_bank = [](stop_point p, memory_bank bank) {
        p.bank = bank;
        return p;
    };
    boot(with_interrupts);
    const uint16_t main = at("main"), sub = at("sub"), handler = at("handler");
    const struct {
        const char *what;
        stop_point point;
        std::function<bool(const stop_report &)> is_right;
    } cases[] = {
        {"an address", range(stop_kind::address, sub, sub),
         [&](auto &r) { return r.pc == sub && kiv_peek(KIV_AREA_CPU, 0x9000) == 1; }},
        {"an address of a bank that is not there",
         in_bank(range(stop_kind::address, sub, sub), memory_bank::nbasic),
         [](auto &r) { return r.kind == stop_kind::running; }},
        {"an interrupt's routine, though PC is elsewhere", range(stop_kind::address, handler, handler),
         [&](auto &r) { return r.pc == handler && reg(KIV_REG_PC) != handler; }},
        {"a write", range(stop_kind::memory, 0x9000, 0x9000),
         [&](auto &r) {
             return r.address == 0x9000 && r.value == 1 && r.by == main + 1 && r.pc == main + 4 &&
                    r.access == access_write;
         }},
        {"a write of a value", only_if(range(stop_kind::memory, 0x9000, 0x9000), "value==5"),
         [](auto &r) { return r.value == 5 && r.before == 4; }},
        {"the last byte of a range", range(stop_kind::memory, 0x91F0, 0x9202),
         [](auto &r) { return r.address == 0x9200 && kiv_get_register(KIV_REG_BC) == 2; }},
        {"a read", range(stop_kind::memory, 0x9102, 0x9102, access_read),
         [&](auto &r) { return r.address == 0x9102 && r.by == at("block") && r.pc == r.by + 2; }},
        {"no read of an instruction that is fetched",
         range(stop_kind::memory, main, static_cast<uint16_t>(main + 20), access_read),
         [](auto &r) { return r.kind == stop_kind::running; }},
        {"an OUT", range(stop_kind::port, 0x54, 0x5B),
         [&](auto &r) { return (r.address & 0xFF) == 0x54 && r.by == at("past_block"); }},
        {"an IN", range(stop_kind::port, 0x40, 0x40, access_read),
         [&](auto &r) { return r.by == at("past_block") + 2 && r.access == access_read; }},
        {"an interrupt of a level", range(stop_kind::interrupt, 1, 1),
         [&](auto &r) { return r.address == 1 && r.pc == handler; }},
        {"a raster line", range(stop_kind::raster, 100, 100),
         [](auto &r) { return r.address == 100 && kiv_t_states() / 161 == 100; }},
        {"the vertical blank", range(stop_kind::raster, 400, 400),
         [](auto &r) { return r.address == 400 && kiv_frames() == 0; }},
        {"a frame", {.kind = stop_kind::frame, .count = 7}, [](auto &) { return kiv_frames() == 7; }},
        {"T-states",
         {.kind = stop_kind::t_states, .count = 12345},
         [](auto &) { return kiv_t_states() >= 12345 && kiv_t_states() < 12345 + 40; }},
        {"a condition", only_if({.kind = stop_kind::condition}, "[$9000]==9 && B==1"),
         [](auto &) { return kiv_get_register(KIV_REG_BC) >> 8 == 1; }},
        {"the tenth time", only_if(range(stop_kind::address, sub, sub), "A>2", 9),
         [](auto &) { return kiv_peek(KIV_AREA_CPU, 0x9000) == 12; }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        boot(with_interrupts);
        driver.remove_all();
        const uint32_t id = driver.add(c.point);
        const stop_report r = go();
        EXPECT_TRUE(c.is_right(r)) << describe(r) << " at " << r.pc;
        if (r.kind != stop_kind::running) {
            EXPECT_EQ(r.kind, c.point.kind);
            EXPECT_EQ(r.id, id);
        }
    }
}

TEST_F(DebuggedMachine, StopsInFrontOfWhatStopsTheProcessorAndBehind) {
    const struct {
        const char *line;
        stop_kind kind;
        int32_t reason;
    } cases[] = {{"HALT", stop_kind::halt, KIV_STOP_HALT},
                 {"DB $ED,$FF", stop_kind::undefined, KIV_STOP_UNDEFINED},
                 {"INIR", stop_kind::undefined, KIV_STOP_UNIMPLEMENTED}};
    for (const auto &c : cases) {
        boot({"NOP", "NOP", c.line});
        driver.remove_all();
        driver.add({.kind = c.kind});
        stop_report r = go();
        EXPECT_EQ(r.kind, c.kind) << c.line;
        EXPECT_EQ(r.pc, 2);
        EXPECT_EQ(kiv_stop_reason(), KIV_STOP_NONE);
        r = go();
        EXPECT_EQ(r.kind, stop_kind::processor) << c.line;
        EXPECT_EQ(kiv_stop_reason(), c.reason);
        EXPECT_EQ(r.pc, 2);
    }
}

TEST_F(DebuggedMachine, Steps) {
    boot(with_interrupts);
    break_at("main");
    ASSERT_EQ(go().pc, at("main"));
    step(aim_kind::into);
    EXPECT_EQ(step(aim_kind::into).pc, at("main") + 4);
    EXPECT_EQ(step(aim_kind::over).pc, at("behind"));
    driver.aim(aim_kind::address, at("block"));
    ASSERT_EQ(driver.run().pc, at("block"));
    EXPECT_EQ(step(aim_kind::into).pc, at("block")) << "one byte of three";
    EXPECT_EQ(step(aim_kind::over).pc, at("past_block"));
    driver.aim(aim_kind::address, at("leaf"));
    while (driver.run().pc != at("leaf")) driver.aim(aim_kind::address, at("leaf")); // main's breakpoint
    EXPECT_EQ(step(aim_kind::out).pc, at("sub") + 4);
    EXPECT_EQ(step(aim_kind::out).pc, at("behind"));
    const uint64_t frames = kiv_frames();
    driver.remove_all();
    step(aim_kind::frame);
    EXPECT_EQ(kiv_frames(), frames + 1);
    // An interrupt's routine is one step over, wherever it comes.
    driver.add({.kind = stop_kind::interrupt, .first = 0, .last = 2});
    for (int i = 0; i < 20; ++i) {
        const stop_report r = go();
        ASSERT_EQ(r.pc, at("handler"));
        EXPECT_EQ(step(aim_kind::over).pc, r.by);
    }
    go();
    EXPECT_EQ(step(aim_kind::into).pc, at("handler") + 1);
    EXPECT_EQ(step(aim_kind::out).kind, stop_kind::aim);
    EXPECT_LT(pc(), at("handler"));
}

TEST_F(DebuggedMachine, LogPointsSayTheirLineAndGoOn) {
    boot(with_interrupts);
    std::vector<std::string> said;
    driver.on_log = [&](const std::string &line) { said.push_back(line); };
    stop_point log{.kind = stop_kind::address, .first = at("sub"), .last = at("sub")};
    log.log = "A is {A}, twice {A*2}";
    log.condition = "A!=2";
    driver.add(log);
    driver.add({.kind = stop_kind::memory, .first = 0x9000, .last = 0x9000, .condition = "value==4"});
    go();
    EXPECT_EQ(said, (std::vector<std::string>{"A is 1, twice 2", "A is 3, twice 6"}));
    EXPECT_THROW(driver.add({.kind = stop_kind::address, .log = "{A"}), debug_error);
    EXPECT_THROW(driver.add({.kind = stop_kind::address, .condition = "nobody==1"}), debug_error);
    EXPECT_THROW(driver.add({.kind = stop_kind::memory, .first = 2, .last = 1}), debug_error);
    EXPECT_EQ(driver.points().size(), 2u);
}

TEST_F(DebuggedMachine, DoesNotNoticeTheDriver) {
    for (const uint32_t seed : {1u, 2u, 3u}) {
        boot_rom(storm_rom(seed));
        const bytes start = snapshot();
        for (int i = 0; i < 30; ++i) kiv_run_frame();
        const bytes alone = snapshot();
        ASSERT_EQ(load(start), KIV_OK);
        driver.forget_history();
        driver.remove_all();
        driver.keep_history({});
        driver.add({.kind = stop_kind::address, .first = 0xA000, .last = 0xA012});
        driver.add({.kind = stop_kind::memory, .first = 0xC000, .last = 0xFFFF, .access = 3});
        driver.add({.kind = stop_kind::port, .first = 0x30, .last = 0x40, .access = 3});
        driver.add({.kind = stop_kind::raster, .first = 10, .last = 20});
        driver.add({.kind = stop_kind::frame, .count = 30});
        int stops = 0;
        for (stop_report r; r.kind != stop_kind::frame; ++stops) {
            driver.go_on();
            r = driver.run_slice(static_cast<uint64_t>(1 + stops % 50000));
        }
        EXPECT_GT(stops, 10000);
        EXPECT_TRUE(snapshot() == alone) << "seed " << seed;
    }
}

} // namespace

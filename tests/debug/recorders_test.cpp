// What recorders write down of programs whose course is known.
#include "debug/memory_faults.h"
#include "debug/recorders.h"
#include "machine/kiv_machine.h"
#include "tests/debug/debugged_machine.h"

#include <numeric>
#include <regex>
#include <set>

namespace {

struct Recorders : DebuggedMachine {
    void run_to(const std::string &name) {
        driver.aim(aim_kind::address, at(name));
        ASSERT_EQ(driver.run_slice(8000000).kind, stop_kind::aim);
    }
};

const std::vector<std::string> routines = {"LD SP,$BF00", "LD B,3",  "again:",  "CALL outer", "DJNZ again",
                                           "stay:",       "JP stay", "outer:",  "CALL inner", "CALL inner",
                                           "RET",         "inner:",  "PUSH HL", "POP HL",     "RET"};

TEST_F(Recorders, AProfileAddsUp) {
    boot(routines);
    profile p(driver.symbols), looked_at(driver.symbols);
    driver.listen(p);
    driver.listen(looked_at);
    run_to("inner");
    EXPECT_EQ(looked_at.by_routine().back().times, 1u) << "that of inner, which has not begun";
    run_to("stay");
    const uint64_t t_states = kiv_t_states();
    driver.aim(aim_kind::into);
    driver.run();
    driver.unlisten(p);
    driver.unlisten(looked_at);
    const std::string text = p.callgrind();
    EXPECT_EQ(looked_at.callgrind(), text) << "looking changes nothing";
    const auto by_routine = p.by_routine(), by_address = p.by_address();
    EXPECT_EQ(by_routine[0].routine, "inner") << "the most expensive first";
    EXPECT_EQ(std::accumulate(by_address.begin(), by_address.end(), uint64_t{0},
                              [](uint64_t sum, auto &c) { return sum + c.own; }),
              t_states);
    // The costs of all lines are the machine's time; those of calls are what the lines within cost.
    uint64_t own = 0, inner = 0, calls_of_inner = 0, inclusive_of_inner = 0;
    std::string routine;
    const std::regex cost("0x[0-9A-F]+ \\d+ (\\d+) (\\d+)"), call("calls=(\\d+) .*");
    bool is_call = false;
    std::string callee;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        std::smatch m;
        if (line.starts_with("fn=")) routine = line.substr(3);
        if (line.starts_with("cfn=")) callee = line.substr(4);
        if (std::regex_match(line, m, call)) {
            is_call = true;
            if (callee == "inner") calls_of_inner += std::stoul(m[1]);
        } else if (std::regex_match(line, m, cost)) {
            const uint64_t n = std::stoul(m[1]);
            if (is_call && callee == "inner") inclusive_of_inner += n;
            if (!is_call) own += n;
            if (!is_call && routine == "inner") inner += n;
            is_call = false;
        }
    }
    EXPECT_EQ(own, t_states);
    EXPECT_EQ(calls_of_inner, 6u);
    EXPECT_EQ(inner, 6u * (12 + 11 + 11));
    EXPECT_EQ(inclusive_of_inner, inner);
    EXPECT_NE(p.table(3).find("$0014 inner"), std::string::npos) << p.table(3);
}

TEST_F(Recorders, AProgramStartedByHandIsARoutineOfItsOwn) {
    boot(routines);
    profile p(driver.symbols);
    driver.listen(p);
    run_to("again");
    driver.set_register(KIV_REG_PC, at("inner"));
    driver.aim(aim_kind::address, static_cast<uint16_t>(at("inner") + 2));
    driver.run();
    driver.unlisten(p);
    const std::string table = p.table(5);
    EXPECT_TRUE(std::regex_search(table, std::regex(" 19 +[\\d.]+ +19 +1  \\$0000"))) << table;
    EXPECT_TRUE(std::regex_search(table, std::regex(" 12 +[\\d.]+ +12 +1  \\$.... inner"))) << table;
}

TEST_F(Recorders, InterruptsAreNotChargedToWhatTheyInterrupt) {
    boot({"LD SP,$BF00", "LD HL,handler", "LD ($8404),HL", "LD A,$84",    "LD I,A",   "IM 2",
          "LD A,1",      "OUT ($E6),A",   "LD A,8",        "OUT ($E4),A", "EI",       "CALL work",
          "done:",       "JP done",       "work:",         "LD BC,$3000", "more:",    "DEC BC",
          "LD A,B",      "OR C",          "JR NZ,more",    "RET",         "handler:", "PUSH BC",
          "LD B,200",    "slow:",         "DJNZ slow",     "POP BC",      "EI",       "RET"});
    profile p(driver.symbols);
    driver.listen(p);
    run_to("done");
    driver.unlisten(p);
    const std::string table = p.table(5);
    std::smatch m;
    ASSERT_TRUE(std::regex_search(table, m, std::regex("(\\d+) +[\\d.]+ +(\\d+) +(\\d+)  \\$.... handler")));
    EXPECT_GT(std::stoul(m[3]), 50u) << table;
    EXPECT_EQ(m[1], m[2]);
    ASSERT_TRUE(std::regex_search(table, m, std::regex("(\\d+) +[\\d.]+ +(\\d+) +1  \\$.... work")));
    EXPECT_EQ(m[1], m[2]) << "without the interrupts' time\n" << table;
}

TEST_F(Recorders, CoverageIsOfInstructionsOfListings) {
    boot(routines);
    ASSERT_EQ(
        driver.symbols.add_listing("0000:3100BF\tLD SP, BF00\n0003:0603\tLD B, 03\n0005:CD0D00\tCALL outer\n"
                                   "0013:C9\tRET\n0030:00\tNOP\n0031:4142\tDEFB of 2 bytes\n",
                                   "a.lst"),
        6u);
    coverage c(driver.symbols);
    driver.listen(c);
    run_to("stay");
    driver.unlisten(c);
    EXPECT_EQ(c.lcov(), "TN:\nSF:a.lst\nDA:1,1\nDA:2,1\nDA:3,3\nDA:4,3\nDA:5,0\nLF:5\nLH:4\nend_of_record\n");
    EXPECT_EQ(c.summary(), "4 of 5 lines, 80.0 %");
}

TEST_F(Recorders, FaultsOfProgramsAreTold) {
    // Each runs from 0x9000 on, in RAM, with a stack; the one fault that it makes, and none for the like of
    // it.
    const struct {
        const char *kind;
        std::vector<std::string> program;
        size_t faults;
    } cases[] = {
        {"unwritten", {"LD A,($A000)", "LD A,($A000)"}, 2}, // two instructions
        {"unwritten", {"LD HL,$A000", "LD (HL),A", "LD A,(HL)", "PUSH HL", "POP DE", "LD A,($0100)"}, 0},
        {"unwritten", {"JP $A000"}, 2}, // what it finds there, and one more
        {"under-rom", {"LD ($1234),A", "LD ($8500),A"}, 1},
        {"under-rom", {"LD A,2", "OUT ($31),A", "LD ($1234),A"}, 0},
        {"stack", {"LD SP,$D000", "OUT ($5C),A", "PUSH HL", "OUT ($5F),A", "PUSH HL"}, 1},
        {"stack", {"OUT ($5C),A", "LD ($C000),A", "PUSH HL", "OUT ($5F),A"}, 0},
        {"interrupts", {"EI", "DI", "LD BC,$4000", "DEC BC", "LD A,B", "OR C", "JR NZ,$9005"}, 1},
        {"interrupts", {"DI", "LD BC,$4000", "DEC BC", "LD A,B", "OR C", "JR NZ,$9004"}, 0},
        {"text", {"LD HL,$F300", "LD DE,$F301", "LD BC,3000", "LDIR"}, 1},
        {"text", {"LD HL,$F300", "LD DE,$F301", "LD BC,2999", "LDIR"}, 0},
        {"port", {"OUT ($99),A", "OUT ($54),A"}, 1},
    };
    for (const auto &c : cases) {
        boot({"LD SP,$BF00", "LD HL,$0100", "LD DE,$9000", "LD BC,$80", "LDIR", "LD A,$00", "OUT ($64),A",
              "LD A,$F3", "OUT ($64),A", "LD A,$B7", "OUT ($65),A", "LD A,$8B", "OUT ($65),A", "LD A,$84",
              "OUT ($68),A", "XOR A", "JP $9000"});
        bytes program;
        for (const std::string &line : c.program) {
            const auto at = static_cast<uint16_t>(0x9000 + program.size());
            const bytes code = assemble(line, at, driver.symbols);
            program.insert(program.end(), code.begin(), code.end());
        }
        program.push_back(0x76); // HALT
        ASSERT_EQ(kiv_write(KIV_AREA_MAIN_ROM, 0x100, program.data(), program.size()), KIV_OK);
        std::vector<std::string> told;
        memory_faults faults(driver.symbols, *fault_named(c.kind), false,
                             [&](const std::string &line) { told.push_back(line); });
        driver.listen(faults);
        stop_report r;
        for (int i = 0; i < 3 && r.kind != stop_kind::processor; ++i) r = go();
        driver.unlisten(faults);
        EXPECT_EQ(told.size(), c.faults) << c.kind << " " << c.program[0] << (told.empty() ? "" : told[0]);
        for (const std::string &line : told)
            EXPECT_TRUE(line.starts_with(std::string("fault: ") + c.kind + ": ")) << line;
    }
}

// The list of ports is the port map's: what is not in it changes nothing.
TEST_F(Recorders, PortsThatNothingTakesChangeNothing) {
    boot({"NOP"});
    for (unsigned port = 0; port < 256; ++port) {
        if (port_takes_writes(static_cast<uint8_t>(port))) continue;
        const bytes before = snapshot();
        kiv_port_out(static_cast<uint16_t>(port), 0x5A);
        EXPECT_TRUE(snapshot() == before) << port;
    }
    int changing = 0;
    for (unsigned port = 0x40; port < 256; ++port) {
        const bytes before = snapshot();
        kiv_port_out(static_cast<uint16_t>(port), 0x5B);
        kiv_port_out(static_cast<uint16_t>(port), 0xA4);
        changing += snapshot() != before;
        if (snapshot() != before) {
            EXPECT_TRUE(port_takes_writes(static_cast<uint8_t>(port))) << port;
        }
    }
    EXPECT_GT(changing, 20);
}

} // namespace

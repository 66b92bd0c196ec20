// What the stub says to packets as the protocol's description has them, with a program of the test's own.
#include "debug/wire/gdb_stub.h"
#include "tests/debug/debugged_machine.h"

namespace {

struct Wire : DebuggedMachine {
    gdb_stub stub{driver};

    void SetUp() override {
        boot({"DI", "LD SP,$C000", "LD HL,$9000", "loop:", "INC A", "LD (HL),A", "CALL sub", "JR loop",
              "sub:", "LD B,A", "RET"});
        stub.attach();
    }

    // What the stub sends until it says no more, with the machine run as it wants.
    std::string told(const std::string &bytes) {
        stub.receive(bytes);
        for (int i = 0; i < 100 && (stub.runs() || stub.waits()); ++i) {
            if (stub.runs()) stub.has_stopped(driver.run_slice(20000));
            if (stub.waits()) stub.receive({});
        }
        return std::exchange(stub.output(), {});
    }
    // The data of the answer to a packet.
    std::string ask(const std::string &data) {
        const std::string all = told(packet_of(data));
        packet_reader reader;
        reader.take(all);
        std::string last = "no answer";
        while (const auto event = reader.next()) last = event->data;
        return last;
    }
};

std::string little(uint16_t value) {
    return hex_of(std::string{static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)});
}

TEST_F(Wire, PacketsAreFramedAndAcknowledged) {
    struct {
        const char *said, *answer;
    } const sessions[] = {
        {"$qC#b4", "+$QC1#c5"},
        {"garbage+++$qC#b4", "+$QC1#c5"},
        {"$qC#b5", "-"}, // the sum is wrong
        {"$qC#xy", "-"},
        {"$qThreadEx$qC#b4", "+$QC1#c5"}, // cut off, then whole
        {"$q", ""},                       // half of it, and the rest
        {"C#b4", "+$QC1#c5"},
        {"-", "$QC1#c5"},    // it is wanted again
        {"$}Q#ce", "+$#00"}, // an escape: q, which is not known
        {"$#00", "+$#00"},
        {"$vMustReplyEmpty#3a", "+$#00"},
        {"$qC#b4$qAttached#8f", "+$QC1#c5+$1#31"}, // two at once
        {"$QStartNoAckMode#b0", "+$OK#9a"},
        {"+$qC#b4", "$QC1#c5"},
        {"$qC#00", "$QC1#c5"}, // the wire is said to be good now
    };
    for (const auto &s : sessions) EXPECT_EQ(told(s.said), s.answer) << s.said;
}

TEST_F(Wire, EachKindOfClientGetsItsRegisters) {
    driver.set_register(KIV_REG_IX, 0x1234);
    driver.set_register(KIV_REG_AF_ALT, 0xAB5D);
    driver.set_register(KIV_REG_SP, 0x8765);
    driver.set_register(KIV_REG_I, 0xF3);
    // One that says nothing of itself: AF BC DE HL AF' BC' DE' HL' IX IY SP PC.
    EXPECT_EQ(ask("qSupported").find("PacketSize="), 0u);
    EXPECT_EQ(ask("p8"), "3412");
    EXPECT_EQ(ask("p4"), "5dab");
    EXPECT_EQ(ask("pa"), "6587");
    EXPECT_EQ(ask("pc"), "E01") << "it does not know of I and R";
    EXPECT_EQ(ask("g").size(), 12u * 4);
    const std::string small = ask("qXfer:features:read:target.xml:00,FFFF");
    EXPECT_LT(small.size(), 1023u);
    EXPECT_NE(small.find("<architecture>z80</architecture>"), std::string::npos);
    EXPECT_EQ(ask("?"), "T050a:6587;0b:0000;thread:1;");
    // gdb: AF BC DE HL SP PC IX IY AF' BC' DE' HL' IR, and ours behind them.
    stub.attach();
    EXPECT_NE(ask("qSupported:swbreak+;hwbreak+").find("ReverseStep"), 0u);
    EXPECT_EQ(ask("p4"), "6587");
    EXPECT_EQ(ask("p6"), "3412");
    EXPECT_EQ(ask("p8"), "5dab");
    EXPECT_EQ(ask("pc").substr(2), "f3");
    EXPECT_EQ(ask("g").size(), 13u * 4 + 3 * 2 + 16);
    // Read in pieces the description is the same.
    const std::string whole = ask("qXfer:features:read:target.xml:0,fff").substr(1);
    std::string pieces;
    for (char more = 'm'; more == 'm';) {
        char place[64];
        std::snprintf(place, sizeof place, "qXfer:features:read:target.xml:%zx,3b", pieces.size());
        const std::string piece = ask(place);
        more = piece[0];
        pieces += piece.substr(1);
    }
    EXPECT_EQ(pieces, whole);
    for (const char *name : {"af", "hl'", "ir"})
        EXPECT_NE(whole.find("name=\"" + std::string(name) + "\""), std::string::npos) << name;
}

TEST_F(Wire, RegistersAreWritten) {
    ask("qSupported:xmlRegisters=z80");
    EXPECT_EQ(ask("P4=cdab"), "OK");
    EXPECT_EQ(reg(KIV_REG_SP), 0xABCDu);
    EXPECT_EQ(ask("Pc=4281"), "OK");
    EXPECT_EQ(reg(KIV_REG_I), 0x81u);
    EXPECT_EQ(reg(KIV_REG_R) & 0x7F, 0x42u);
    std::string all = ask("g");
    all.replace(3 * 4, 4, "efbe"); // HL
    all.replace(5 * 4, 4, little(at("sub")));
    EXPECT_EQ(ask("G" + all), "OK");
    EXPECT_EQ(ask("g"), all);
    EXPECT_EQ(reg(KIV_REG_HL), 0xBEEFu);
    EXPECT_EQ(pc(), at("sub"));
    for (const char *bad : {"P4", "P4=", "P4=1", "Pff=0000", "P=0000", "Gxx", "G1", "p", "pq"})
        EXPECT_EQ(ask(bad)[0], 'E') << bad;
}

TEST_F(Wire, MemoryIsReadAndWritten) {
    struct {
        std::string asked, answer;
    } const asked[] = {
        {"M9000,3:414243", "OK"},
        {"m9000,3", "414243"},
        {"m9000,0", "E01"},
        {"X9001,2:" + std::string("#\x7D", 2), "OK"},
        {"m9000,3", "41237d"},
        {"X9000,0:", "OK"},     // does it know the packet?
        {"m19000,3", "41237d"}, // the RAM, whatever lies over it
        {"mffff,2", "00f3"},    // addresses go round
        {"m0,1", "f3"},
        {"M9100,9:" + hex_of("123456789"), "OK"},
        {"qCRC:9100,9", "C376e6e7"}, // the check value of this sum
        {"qCRC:fff8,9", "E02"},
        {"qCRC:9100", "E01"},
        {"M0,1:99", "OK"}, // as the processor writes: under the ROM
        {"m0,1", "f3"},
        {"m10000,1", "99"},
        {"M50000,2:aa55", "OK"}, // the blue plane
        {"m50000,2", "aa55"},
        {"m53fff,8", "00"}, // up to the area's end
        {"m54000,1", "E02"},
        {"ma0000,1", "E02"},
        {"M9000,2:41", "E01"},
        {"M9000,1:4", "E01"},
        {"Mffff,2:4142", "E02"},
        {"m9000", "E01"},
        {"m", "E01"},
        {"m9000,1x", "E01"},
        {"m11112222333344445,1", "E01"},
        {"Mffffffffffffffff,1:00", "E02"},
    };
    for (const auto &a : asked) EXPECT_EQ(ask(a.asked), a.answer) << a.asked;
    EXPECT_EQ(told(packet_of("m0,ffffff")).size(), 0x20000u + 5) << "no more than there is";
}

TEST_F(Wire, BreakpointsStepsAndWatchpoints) {
    const std::string loop = little(at("loop")), sub = little(at("sub"));
    char address[8];
    std::snprintf(address, sizeof address, "%x", at("sub"));
    const auto stopped = [](const std::string &why, const std::string &sp, const std::string &pc_) {
        return "T05" + why + "0a:" + sp + ";0b:" + pc_ + ";thread:1;";
    };
    EXPECT_EQ(ask("s"), stopped("", "0000", "0100"));
    EXPECT_EQ(ask("vCont;s:1"), stopped("", "00c0", "0400"));
    EXPECT_EQ(ask(std::string("Z0,") + address + ",0"), "OK");
    EXPECT_EQ(ask(std::string("Z0,") + address + ",0"), "OK") << "twice is once";
    EXPECT_EQ(driver.points().size(), 1u);
    EXPECT_EQ(ask("c"), stopped("", "febf", sub));
    EXPECT_EQ(ask("Z2,9000,1"), "OK");
    EXPECT_EQ(ask(std::string("z0,") + address + ",0"), "OK");
    EXPECT_EQ(ask(std::string("z0,") + address + ",0"), "OK");
    EXPECT_EQ(ask("c").substr(0, 16), "T05watch:9000;0a");
    EXPECT_EQ(ask("?").substr(0, 16), "T05watch:9000;0a") << "the last stop";
    EXPECT_EQ(ask("z2,9000,1"), "OK");
    // Past the call as a whole; the way of z88dk's debugger.
    EXPECT_EQ(ask("i3"), stopped("", "00c0", little(static_cast<uint16_t>(at("sub") - 2))));
    EXPECT_EQ(ask("s"), stopped("", "00c0", loop));
    // Of an area, by its address there.
    EXPECT_EQ(ask("Z4,19000,1"), "OK");
    EXPECT_EQ(ask("c").substr(0, 17), "T05awatch:19000;0");
    EXPECT_EQ(ask("z4,19000,1"), "OK");
    EXPECT_EQ(ask("Z3,9000,1"), "OK");
    EXPECT_EQ(ask("P0b=" + sub), "OK");
    EXPECT_EQ(ask("z3,9000,1"), "OK");
    // From an address.
    EXPECT_EQ(ask("s1"), stopped("", "00c0", "0400"));
    // As long as it stays within a range.
    const auto within = [&](unsigned end) {
        char packet[24];
        std::snprintf(packet, sizeof packet, "vCont;r4,%x:1", end);
        return ask(packet);
    };
    EXPECT_EQ(within(at("loop")), stopped("", "00c0", loop));
    const auto second = static_cast<uint16_t>(at("loop") + 2); // two instructions of a byte in front of it
    EXPECT_EQ(within(second), stopped("", "00c0", little(second)));
    EXPECT_EQ(within(at("sub")), stopped("", "febf", sub));
    EXPECT_EQ(ask("vCont;r0,0"), stopped("", "febf", little(static_cast<uint16_t>(at("sub") + 1))));
    for (const char *bad : {"Z0", "Z0,", "Z0,1", "Z2,fffe,4", "Z0,1,1;X1,00", "Z0,b0000,1", "vCont;",
                            "vCont;q", "vCont;r", "vCont;r1", "vCont;r1,10001", "sxx", "c10000"})
        EXPECT_EQ(ask(bad)[0], 'E') << bad;
    EXPECT_EQ(ask("Z7,0,1"), "");
    EXPECT_TRUE(driver.points().empty());
    ask("Z1,1234,1");
    stub.detach();
    EXPECT_TRUE(driver.points().empty()) << "they go with their client";
}

TEST_F(Wire, BackwardsToTheBeginningAndNoFurther) {
    EXPECT_EQ(ask("bs"), "E03") << "no history is kept";
    driver.keep_history({});
    EXPECT_NE(ask("qSupported:").find("PacketSize"), std::string::npos);
    for (int i = 0; i < 9; ++i) ask("s");
    const std::string there = ask("g");
    ask("s");
    EXPECT_EQ(ask("bs").substr(0, 3), "T05");
    EXPECT_EQ(ask("g"), there);
    EXPECT_EQ(ask("Z2,9000,1"), "OK");
    EXPECT_EQ(ask("bc").substr(0, 14), "T05watch:9000;");
    EXPECT_EQ(ask("bc").substr(0, 20), "T05replaylog:begin;0");
    EXPECT_EQ(ask("bx"), "");
}

TEST_F(Wire, AnInterruptStopsAndWhatCameWithItIsAnsweredApart) {
    const auto packet = [](const char *data) { return packet_of(data); };
    stub.receive(packet("c"));
    EXPECT_EQ(std::exchange(stub.output(), {}), "+");
    EXPECT_EQ(driver.run_slice(1000).kind, stop_kind::running);
    EXPECT_TRUE(stub.runs());
    stub.receive("\x03" + packet("pb"));
    EXPECT_FALSE(stub.runs());
    EXPECT_EQ(std::exchange(stub.output(), {}).substr(0, 4), "$T02");
    EXPECT_TRUE(stub.waits());
    stub.receive({});
    EXPECT_EQ(stub.output().substr(0, 2), "+$");
    stub.output().clear();
    // Too late: it counts for the next run, by the protocol.
    EXPECT_EQ(told("\x03"), "");
    const uint64_t before = kiv_t_states();
    EXPECT_EQ(ask("c").substr(0, 3), "T02");
    EXPECT_EQ(kiv_t_states(), before);
    // Packets wait while the machine runs; an interrupt overtakes them.
    stub.receive(packet("c") + packet("qC") + "\x03");
    EXPECT_FALSE(stub.runs());
    stub.receive({});
    EXPECT_NE(stub.output().find("$QC1#c5"), std::string::npos);
}

TEST_F(Wire, TheProcessorsEndLogLinesAndTheMonitorAreTold) {
    boot({"LD SP,$C000", "HALT"});
    ask("qSupported:swbreak+");
    stub.monitor = [](const std::string &line) { return line == "hush" ? "" : "you said " + line; };
    EXPECT_EQ(ask("qRcmd," + hex_of("x")), hex_of("you said x"));
    EXPECT_EQ(ask("qRcmd," + hex_of("hush")), "OK");
    EXPECT_EQ(ask("qRcmd,1"), "E01");
    driver.on_log = [this](const std::string &line) { stub.say(line); };
    driver.add({.kind = stop_kind::address, .first = 3, .last = 3, .log = "SP is {SP}"});
    const std::string all = told(packet_of("c"));
    EXPECT_NE(all.find("$O" + hex_of("SP is 49152\n")), std::string::npos) << all;
    EXPECT_NE(all.find("$O" + hex_of("the processor has stopped: HALT\n")), std::string::npos) << all;
    EXPECT_NE(all.find("$T0504:00c0;05:0300;"), std::string::npos) << all;
    EXPECT_EQ(ask("c").substr(0, 3), "T05") << "it does not go on, and says so";
}

TEST_F(Wire, ClientsTakeLeaveInTheirWays) {
    struct {
        const char *packet, *answer;
    } const ways[] = {{"D", "OK"}, {"vKill;1", "OK"}, {"k", "no answer"}};
    for (const auto &way : ways) {
        stub.attach();
        EXPECT_EQ(ask(way.packet), way.answer);
        EXPECT_TRUE(stub.leaves()) << way.packet;
    }
    stub.attach();
    stub.receive(packet_of("c"));
    stub.output().clear();
    stub.has_ended(3);
    EXPECT_EQ(stub.output(), packet_of("W03"));
    stub.attach();
    EXPECT_EQ(told("$" + std::string(longest_packet + 9, 'x') + "#00"),
              "+" + packet_of("E.the packet is too long"));
    EXPECT_EQ(ask("qC"), "QC1");
    std::string flood = packet_of("c");
    for (int i = 0; i < 1000; ++i) flood += packet_of("qC");
    stub.receive(flood);
    EXPECT_TRUE(stub.leaves()) << "who never waits is sent away";
}

// As the Z80 debugger of VS Code and z88dk's send them, by their sources: they acknowledge nothing, look the
// registers up at fixed places or by the description, and take PC out of the stop's answer.
TEST_F(Wire, SessionsOfOtherClients) {
    char address[8];
    std::snprintf(address, sizeof address, "%x", at("sub"));
    const std::string at_sub = address, pc_of_sub = ";0b:" + little(at("sub")) + ";";
    struct {
        std::string said, within;
    } const sessions[] = {
        {packet_of("qXfer:features:read:target.xml:00,FFFF"), "<architecture>z80</architecture>"},
        {packet_of("Pb=0100"), "OK"},
        {packet_of("g"), "$" + hex_of(std::string(20, '\0'))}, // all 0, SP and PC at the end
        {packet_of("M9100,4:01020304"), "OK"},
        {packet_of("Z0," + at_sub + ",0"), "OK"},
        {packet_of("Z1," + at_sub + ",0"), "OK"},
        {packet_of("c"), pc_of_sub},
        {packet_of("z1," + at_sub + ",0"), "OK"},
        {packet_of("Z3,9000,2"), "OK"},
        {packet_of("c"), pc_of_sub}, // the other breakpoint is still there
        {packet_of("z3,9000,2"), "OK"},
        {packet_of("m8ffc,20"), "$"},
        // z88dk's
        {packet_of("qSupported"), "qXfer:features:read+"},
        {packet_of("qXfer:features:read:target.xml:0,3fff"), "name=\"hl'\""},
        {packet_of("?"), "$T05"},
        {packet_of("s"), "$T05"},
        {packet_of("G" + hex_of(std::string(24, '\x11'))), "OK"},
        {packet_of("g"), "$" + hex_of(std::string(24, '\x11')) + "#"},
        {packet_of("i1"), "$T05"},
    };
    for (const auto &s : sessions) EXPECT_NE(told(s.said).find(s.within), std::string::npos) << s.said;
    EXPECT_EQ(reg(KIV_REG_I), 0u) << "setting all that it knows leaves what it does not know";
}

} // namespace

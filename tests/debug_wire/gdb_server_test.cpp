// The server on sockets of this host: who may come, who is sent away, what the machine does meanwhile.
#include "debug/wire/gdb_server.h"
#include "tests/debug/debugged_machine.h"

namespace {

struct Server : DebuggedMachine {
    gdb_server server{driver};

    void SetUp() override {
        boot({"loop:", "INC A", "JR loop"});
        server.open(parse_gdb_place("0"));
        ASSERT_NE(server.port(), 0);
    }
    platform::wire visit() const { return platform::wire::connect("127.0.0.1", server.port()); }
    void turns(int count = 4) {
        for (int i = 0; i < count; ++i) ASSERT_TRUE(server.turn(20000));
    }
    // What has come to the visitor when `wanted` stands in it, or after many turns.
    std::string heard(platform::wire &visitor, const std::string &wanted) {
        std::string all;
        char bytes[4096];
        for (int i = 0; i < 50 && all.find(wanted) == std::string::npos; ++i) {
            server.turn(20000);
            const int64_t got = visitor.read(bytes, sizeof bytes);
            if (got < 0) return all + "<gone>";
            all.append(bytes, static_cast<size_t>(got));
        }
        return all;
    }
    static void say(platform::wire &visitor, const std::string &bytes) {
        ASSERT_EQ(visitor.write(bytes.data(), bytes.size()), static_cast<int64_t>(bytes.size()));
    }
};

TEST_F(Server, ASecondClientIsRefusedWithAWordAndANewOneMayComeLater) {
    turns(1);
    EXPECT_EQ(kiv_t_states(), 0u) << "it waits";
    platform::wire first = visit();
    say(first, packet_of("qC"));
    EXPECT_EQ(heard(first, "QC1#c5"), "+$QC1#c5");
    platform::wire second = visit();
    say(second, packet_of("qSupported"));
    EXPECT_NE(heard(second, "attached").find("E.another debugger is attached"), std::string::npos);
    EXPECT_NE(heard(second, "<gone>").find("<gone>"), std::string::npos);
    say(first, packet_of("Z0,1,1") + packet_of("qC"));
    EXPECT_NE(heard(first, "QC1").find("OK"), std::string::npos) << "the first one stays";
    EXPECT_EQ(driver.points().size(), 1u);
    first.close(); // without a word
    turns();
    EXPECT_TRUE(driver.points().empty());
    platform::wire third = visit();
    say(third, packet_of("D"));
    EXPECT_NE(heard(third, "<gone>").find("$OK#9a"), std::string::npos);
    EXPECT_NE(visit().is_open(), false);
}

TEST_F(Server, AMachineThatRunsStopsForAClientAndRunsOnAfterIt) {
    server.runs_alone = true;
    turns();
    const uint64_t before = kiv_t_states();
    EXPECT_GT(before, 0u);
    platform::wire client = visit();
    say(client, packet_of("?"));
    EXPECT_NE(heard(client, "thread").find("T05"), std::string::npos);
    const uint64_t stands = kiv_t_states();
    turns(2);
    EXPECT_EQ(kiv_t_states(), stands);
    say(client, packet_of("c"));
    turns();
    EXPECT_GT(kiv_t_states(), stands);
    say(client, "\x03");
    EXPECT_NE(heard(client, "T02").find("T02"), std::string::npos);
    client.close();
    turns();
    const uint64_t after = kiv_t_states();
    turns();
    EXPECT_GT(kiv_t_states(), after);
}

TEST_F(Server, HalfPacketsAndTheRunsEnd) {
    platform::wire client = visit();
    for (const char c : packet_of("m0,3")) {
        say(client, std::string(1, c));
        turns(1);
    }
    EXPECT_NE(heard(client, "3c18fd").find("$3c18fd#"), std::string::npos);
    server.is_over = [] { return kiv_t_states() > 100000; };
    say(client, packet_of("c"));
    for (int i = 0; i < 100 && server.turn(20000); ++i) {
    }
    server.end(0);
    EXPECT_NE(heard(client, "W00").find("$W00#b7"), std::string::npos);
    EXPECT_FALSE(visit().is_open()) << "nobody is there any more";
}

TEST_F(Server, ALongWayBackIsGivenUpWhenTheClientSaysSo) {
    driver.keep_history({});
    platform::wire client = visit();
    say(client, packet_of("c"));
    turns(100);
    say(client, "\x03");
    EXPECT_NE(heard(client, "T02").find("T02"), std::string::npos);
    const uint64_t before = kiv_t_states();
    say(client, packet_of("bc") + "\x03");
    EXPECT_NE(heard(client, "T02").find("T02"), std::string::npos);
    EXPECT_EQ(kiv_t_states(), before) << "it stands where it stood";
    say(client, packet_of("bc"));
    EXPECT_NE(heard(client, "begin").find("replaylog:begin"), std::string::npos);
}

TEST(GdbPlace, IsReadAndComplainedAbout) {
    EXPECT_TRUE(parse_gdb_place("-").standard_streams);
    EXPECT_TRUE(parse_gdb_place("stdio").standard_streams);
    EXPECT_EQ(parse_gdb_place("2159").address, "") << "this computer alone";
    EXPECT_EQ(parse_gdb_place("0.0.0.0:1").address, "0.0.0.0");
    EXPECT_EQ(parse_gdb_place("[::1]:65535").address, "::1");
    for (const char *bad : {"", ":", ":1", "x", "65536", "1.2.3.4:", "::1:5", "-1", "99999999999", "a:b"})
        EXPECT_THROW(parse_gdb_place(bad), debug_error) << bad;
}

} // namespace

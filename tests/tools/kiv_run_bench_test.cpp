// kiv-run as a test bench: the real program with a program of the machine, and what it says of it.
#include "tests/common/test_rom.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sys/wait.h>

namespace {

// At $9000: counts at $9100 from 0 to 5, writes "OK" to the text screen's RAM place $A000, tells port 0x99.
const std::string start = "load p.bin $9000\nset PC=$9000\nset SP=$BF00\n";
const unsigned char program[] = {
    0x21, 0x00, 0x91, // 9000 LD HL,$9100
    0x36, 0x00,       // 9003 LD (HL),0
    0x34,             // 9005 INC (HL)
    0x7E,             // 9006 LD A,(HL)
    0xFE, 0x05,       // 9007 CP 5
    0x20, 0xFA,       // 9009 JR NZ,$9005
    0x3E, 0x2A,       // 900B LD A,42
    0xD3, 0x99,       // 900D OUT ($99),A
    0x18, 0xFE,       // 900F JR $900F
};

struct KivRunBench : testing::Test {
    temporary_folder folder;
    int code = 0;

    KivRunBench() {
        write_test_roms(folder.path);
        put_file(folder / "p.bin", std::string(reinterpret_cast<const char *>(program), sizeof program));
        put_file(folder / "start.kivdbg", start);
        put_file(folder / "p.lst", "9000:210091\tLD HL, 9100\n9005:34\tINC (HL)\n9020:00\tNOP\n");
        put_file(folder / "p.sym", "begin EQU 09000H\nlast EQU 0900FH\ncount EQU 09100H\n");
    }
    // What it says on both outputs; `input` is its standard input.
    std::string run(const std::string &arguments, const std::string &input = "") {
        put_file(folder / "in.txt", input);
        const std::string command =
            "cd '" + folder.path + "' && '" KIV_RUN "' " + arguments + " <in.txt >out.txt 2>err.txt";
        const int status = std::system(command.c_str());
        code = WIFEXITED(status) ? WEXITSTATUS(status) : -status;
        return get_file(folder / "out.txt") +
               std::regex_replace(get_file(folder / "err.txt"), std::regex("(DMA|CRTC) -.*\n"), "");
    }
};

TEST_F(KivRunBench, EndsAndJudgesAsItIsTold) {
    const struct {
        const char *arguments;
        int code;
        const char *said; // a part, as a pattern
    } cases[] = {
        {"--script start.kivdbg --exit-port 0x99", 42, ""},
        {"--script start.kivdbg --exit-port 153 --expect-memory '$9100=5'", 42, ""},
        {"--script start.kivdbg --until '[$9100]==3' --expect-memory '$9100=3'", 0, ""},
        {"--script start.kivdbg --symbols p.sym --until 'PC==last' --expect-memory 'count=5,1'", 2,
         "--expect-memory count=5,1: \\$9101 is"},
        {"--script start.kivdbg --until '[$9100]==9' --frames 20", 2,
         "--until \\[\\$9100\\]==9: did not come"},
        {"--frames 20 --exit-port 0x98", 2, "the run ended before the program did"},
        {"--frames 20 --expect-text 'no such text'", 2, "expected on the screen: no such text"},
        {"--script start.kivdbg --frames 3 --expect-memory 'ram:$9100=5'", 0, ""},
        {"--script bad.kivdbg", 2, "expected: 1==2\nbad.kivdbg:2: expect 1==2"},
        {"--script quit.kivdbg --frames 5", 9, ""},
        {"--script start.kivdbg --frames 3 --faults report", 2,
         "fault: port: \\$900D writes \\$2A to port \\$99"},
        {"--script start.kivdbg --frames 3 --faults stop,port", 2, "1 fault"},
        {"--script start.kivdbg --frames 3 --faults report,stack", 0, ""},
        // What cannot be is told before anything runs.
        {"--until 'A=='", 1, "A=="},
        {"--until", 1, "its value is missing"},
        {"--exit-port 256", 1, "a port from 0 to 255"},
        {"--exit-text x", 1, "TEXT=CODE"},
        {"--faults maybe", 1, "report or stop"},
        {"--faults stop,odd", 1, "known are"},
        {"--expect-memory 12", 1, "ADDRESS=BYTES"},
        {"--expect-memory 'blue:$4000=1'", 1, "\\$4000 bytes"},
        {"--symbols none.sym", 1, "none.sym: No such file"},
        {"--symbols p.bin", 1, "no symbol file"},
        {"--listing p.sym", 1, "no listing"},
        {"--script none", 1, "none: No such file"},
        {"--replay-input p.sym", 1, "p.sym: line 1: no record of input"},
        {"--replay-input bad.input", 1, "bad.input: line 3: a row of 0-11"},
        {"--debug --json", 1, "one of them's"},
        {"--trace none/t --frames 1", 1, "none/t: No such file"},
    };
    put_file(folder / "bad.kivdbg", "echo x\nexpect 1==2\necho y\n");
    put_file(folder / "quit.kivdbg", "frames 2\nquit 9\n");
    put_file(folder / "bad.input", "kiv input 1\n# x\n5 12 1 down\n");
    for (const auto &c : cases) {
        const std::string said = run(c.arguments);
        EXPECT_EQ(code, c.code) << c.arguments << "\n" << said;
        EXPECT_TRUE(std::regex_search(said, std::regex(c.said))) << c.arguments << "\n" << said;
    }
}

TEST_F(KivRunBench, LeavesTraceProfileAndCoverage) {
    run("--script start.kivdbg --exit-port 0x99 --symbols p.sym --listing p.lst --trace t --profile p "
        "--coverage c");
    EXPECT_EQ(code, 42);
    const std::string trace = get_file(folder / "t");
    EXPECT_NE(trace.find("begin:\n9000  11 210091   LD HL,count "), std::string::npos)
        << trace.substr(0, 400);
    EXPECT_TRUE(trace.find("900D  -- D399     OUT ($99),A") != std::string::npos);
    EXPECT_NE(get_file(folder / "p").find("0x9005 2 60 5\n"), std::string::npos);
    EXPECT_EQ(get_file(folder / "c"), "TN:\nSF:p.lst\nDA:1,1\nDA:2,5\nDA:3,0\nLF:3\nLH:2\nend_of_record\n");
}

TEST_F(KivRunBench, ATerminalsCommandsComeFromItsInput) {
    const std::string said = run("--debug", start + "break $900D\ngo\nback 3\n\np [$9100]\nquit 3\n");
    EXPECT_EQ(code, 3);
    EXPECT_NE(said.find("breakpoint (1)\n900D D399"), std::string::npos) << said;
    EXPECT_NE(said.find("4 $4 %"), std::string::npos) << said;
    run("--debug", "nonsense\n");
    EXPECT_EQ(code, 2) << "a wrong line, and nobody saw it";
    // Asked to end, it does not take up the next line.
    put_file(folder / "ended.sh", "timeout --preserve-status -k 100 1 '" KIV_RUN "' --debug\nexit $?\n");
    put_file(folder / "in.txt", "go\ngo\ngo\n");
    const int status =
        std::system(("cd '" + folder.path + "' && sh ended.sh <in.txt >out.txt 2>err.txt").c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_NE(get_file(folder / "err.txt").find("interrupted after"), std::string::npos);
}

TEST_F(KivRunBench, KeysAreWrittenDownAndStruckAgain) {
    const std::string same = "--seed 1 --date 1982-11-01T12:00:00 --frames 200 --save-state ";
    run(same + "a --type 'AB\\n' --type-at 20 --record-input keys");
    ASSERT_EQ(code, 0);
    const std::string keys = get_file(folder / "keys");
    EXPECT_TRUE(
        std::regex_match(keys, std::regex("kiv input 1\n# frame row bit\n(\\d+ \\d+ \\d (down|up)\n){10}")))
        << keys;
    EXPECT_NE(run("--frames 200 --replay-input keys --record-input again"), "x");
    EXPECT_EQ(get_file(folder / "again"), keys);
}

TEST_F(KivRunBench, AnswersEveryCallOfTheLibrary) {
    if (run("--json --frames 1").find("built without") != std::string::npos)
        GTEST_SKIP() << "nlohmann/json.hpp is NOT INSTALLED: --json was not tested";
    std::ifstream file(KIV_SOURCE_DIR "/api/kiv.h");
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    std::set<std::string> wanted, known;
    const std::regex name("KIV_API[^;(]*?(kiv_[a-z0-9_]+)\\(");
    for (std::sregex_iterator at(header.begin(), header.end(), name), end; at != end; ++at)
        wanted.insert((*at)[1]);
    ASSERT_GT(wanted.size(), 60u);
    const std::string listed = run("--json", "{\"call\":\"calls\"}\n");
    const std::regex quoted("\"(kiv_[a-z0-9_]+)\"");
    for (std::sregex_iterator at(listed.begin(), listed.end(), quoted), end; at != end; ++at)
        known.insert((*at)[1]);
    EXPECT_EQ(known, wanted);
}

TEST_F(KivRunBench, AnswersRequests) {
    if (run("--json --frames 1").find("built without") != std::string::npos) GTEST_SKIP();
    const struct {
        const char *request, *answer;
    } lines[] = {
        {R"({"id":1,"call":"kiv_frames"})", R"({"id":1,"result":0})"},
        {R"({"call":"kiv_run_frame","args":[]})", R"({"result":0})"},
        {R"({"call":"kiv_write","args":[1,36864,"AAECAw=="]})", R"({"result":0})"},
        {R"({"call":"kiv_read","args":[1,36865,3]})", R"({"result":"AQID"})"},
        {R"({"call":"kiv_read","args":[1,36865,4]})", R"({"result":"AQIDAA=="})"},
        {R"({"call":"kiv_peek","args":[0,36867]})", R"({"result":3})"},
        {R"({"call":"kiv_set_register","args":[0,4660]})", R"({"result":0})"},
        {R"({"call":"kiv_get_register","args":[0]})", R"({"result":4660})"},
        {R"({"console":"print BC"})", R"({"good":true,"output":["4660 $1234"]})"},
        {R"({"console":"print"})", R"({"good":false,"output":["a value is missing"]})"},
        {R"({"call":"kiv_get_setting","args":["boot_rom"]})", R"({"result":1})"},
        {R"({"call":"kiv_setting_key","args":[99]})", R"({"result":null})"},
        {R"({"call":"kiv_tape_insert","args":["AQ=="]})", R"({"result":0})"},
        {R"({"call":"kiv_tape_data"})", R"({"result":"AQ=="})"},
        // What is wrong is answered, too.
        {R"({"call":"kiv_get_setting","args":["none"]})", R"({"code":-2,"error":"no such setting: none"})"},
        {R"({"call":"kiv_peek","args":[0]})", R"({"code":-2,"error":"argument 2 is missing"})"},
        {R"({"call":"kiv_peek","args":[0,-1]})", R"({"code":-2,"error":"argument 2 is out of its range"})"},
        {R"({"call":"kiv_peek","args":[0,"x"]})",
         R"({"code":-2,"error":"argument 2: a whole number is wanted"})"},
        {R"({"call":"kiv_poke","args":[1,65536,0]})", "leave the area"},
        {R"({"call":"kiv_write","args":[1,0,"A"]})", R"({"code":-2,"error":"no base64"})"},
        {R"({"call":"kiv_snapshot_load","args":["AAAA"]})", R"("code":-10)"},
        {R"({"call":"nothing","id":"x"})", R"({"code":-2,"error":"nothing: no such call","id":"x"})"},
        {R"({"call":7})", R"({"code":-2,"error":"call or console is wanted"})"},
        {R"({"call":"kiv_frames","args":3})", R"({"code":-2,"error":"args: a list is wanted"})"},
        {R"([1])", R"({"code":-2,"error":"a request is an object"})"},
        {R"({"call":)", R"({"code":-2,"error":"no JSON"})"},
    };
    std::string input;
    for (const auto &l : lines) input += std::string(l.request) + "\n";
    std::string said = run("--json --seed 1", input);
    EXPECT_EQ(code, 0);
    for (const auto &l : lines) {
        const std::string line = said.substr(0, said.find('\n'));
        said.erase(0, line.size() + 1);
        EXPECT_NE(line.find(l.answer), std::string::npos) << l.request << "\n" << line;
    }
}

// The packets' sums are of the protocol's description, not of the server.
TEST_F(KivRunBench, ADebuggerOnTheStandardStreams) {
    const auto packet = [](const std::string &data) {
        unsigned sum = 0;
        for (const char c : data) sum += static_cast<unsigned char>(c);
        char text[8];
        std::snprintf(text, sizeof text, "#%02x", sum & 0xFF);
        return "$" + data + text;
    };
    const std::string where = "7072696e74205043"; // print PC
    const std::string said = run("--gdb - --script start.kivdbg",
                                 packet("pb") + packet("m9000,3") + packet("qRcmd," + where) + packet("s"));
    EXPECT_EQ(code, 0) << said;
    for (const std::string &answer :
         {packet("0090"), packet("210091"), packet("T050a:00bf;0b:0390;thread:1;")})
        EXPECT_NE(said.find("+" + answer), std::string::npos) << answer << " in " << said;
    EXPECT_NE(said.find("2439303030"), std::string::npos) << "the console says $9000: " << said;
    for (const char *wrong :
         {"--gdb x", "--gdb - --text", "--gdb 0 --json", "--gdb-alone run", "--gdb 192.0.2.1:0"}) {
        run(wrong);
        EXPECT_EQ(code, 1) << wrong;
    }
}

} // namespace

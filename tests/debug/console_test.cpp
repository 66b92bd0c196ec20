// The command language: what a person types, and what comes back.
#include "debug/console.h"
#include "debug/devices_text.h"
#include "machine/kiv_machine.h"
#include "tests/debug/debugged_machine.h"

#include <fstream>
#include <regex>
#include <set>

namespace {

const std::vector<std::string> counting = {"LD SP,$BF00", "main:",     "LD HL,$9000",  "INC (HL)",
                                           "CALL sub",    "behind:",   "OUT ($99),A",  "JP main",
                                           "sub:",        "LD A,(HL)", "LD ($9100),A", "RET"};

struct Console : DebuggedMachine {
    std::map<std::string, std::string> files;
    std::string said;
    debug_console console{driver, host()};

    Console() {
        driver.keep_history({});
        boot(counting);
    }
    console_host host() {
        console_host h;
        h.print = [this](const std::string &line) { said += line + "\n"; };
        h.read_file = [this](const std::string &path) {
            if (!files.contains(path)) throw debug_error(path + ": No such file or directory");
            return files[path];
        };
        h.write_file = [this](const std::string &path, std::string_view bytes) { files[path] = bytes; };
        h.grow_file = [this](const std::string &path) -> text_sink {
            files[path].clear();
            return [this, path](const std::string &text) { files[path] += text; };
        };
        return h;
    }
    std::string say(const std::string &line) {
        said.clear();
        console.execute(line);
        return said;
    }
};

TEST_F(Console, AnswersWhatIsTyped) {
    const struct {
        const char *line, *answer; // a part of it, as a pattern
    } lines[] = {
        {"break sub if [$9000]==3", "1 at \\$000F if \\[\\$9000\\]==3\n"},
        {"go", "breakpoint \\(1\\)\nsub:\n000F 7E +LD A,\\(HL\\)\nA=02 .* HL=9000 .* SP=BEFE\n"},
        {"p [HL]*2 + 1", "^7 \\$7 %00000111\n"},
        {"step 2", "0013 C9 +RET"},
        {"print w[SP] == behind", "^1 "},
        {"stack 1", "^BEFE  000A  returns to behind\n"},
        {"calls", "1  behind\n"},
        {"out", "^behind:\n000A"},
        {"back 1", "0013 C9"},
        {"back-out", "0007 CD0F00 +CALL sub"},
        {"back-over", "0006 34 +INC"},
        {"over", "main.4:"},
        {"set [$9000]=$41", "^$"},
        {"set A=$12", "^$"},
        {"set w[$9002]=$1234", "^$"},
        {"mem $9000 4", "^9000  41 .. 34 12 .*A.4\\.\n$"},
        {"mem ram:$9002 1", "9002  34"},
        {"regs", "A=12 .*\n.*PC=0007"},
        {"poke $9010 1,2,\"AB\" %11", "^$"},
        {"find $9000..$9fff \"AB\" 3", "^\\$9012\n$"},
        {"fill $9020,5 1 2", "^$"},
        {"mem $9020 6", "01 02 01 02 01 "},
        {"asm $9030 LD HL,main", "9030 210300 +LD HL,main\nnext: \\$9033"},
        {"dis $9030 1", "  9030 210300 +LD HL,main"},
        {"save part $9020,3", "^$"},
        {"load part ram:$9040", "3 bytes at \\$9040"},
        {"print [$9041]", "^2 "},
        {"watch $9100 w if value>$42 ignore 1 log wrote {value}",
         "2 memory \\$9100 w if value>\\$42 ignore 1"},
        {"frame", "wrote 68\nwrote 69\n"},
        {"points", "1 at .*, [0-9] hits\n2 memory .* hits"},
        {"disable 1", "^$"},
        {"delete 2", "^$"},
        {"points", "^1 at \\$000F if \\[\\$9000\\]==3, [0-9] hits, off\n$"},
        {"break port $90..$99 w once", "port \\$90\\.\\.\\$99 w once"},
        {"go", "port \\$99 written: \\$.. by \\$000A"},
        {"break irq 1 in main log x", "interrupt 1 in main log x"},
        {"break line 10", "line 10"},
        {"break frame 3", "frame 3"},
        {"break time 100", "time 100"},
        {"break if A==1", "if A==1"},
        {"delete all", "^$"},
        {"until A==$80", "the condition holds"},
        {"where", "frame: [0-9]+"},
        {"devices interrupts", "level 1 +VRTC, masked"},
        {"devices", "palette"},
        {"display A+1", "A\\+1 = 129"},
        {"step", "A\\+1 = 129"},
        {"undisplay", "^$"},
        {"last 2", "^0.*\n0.*\n$"},
        {"history", "s back to T-state 0"},
        {"in $31", "port \\$31: \\$EB"},
        {"out-port $54 7", "^$"},
        {"devices palette", "port 54 +7 white"},
        {"names su", "^\\$000F sub\n$"},
        {"repeat 2 echo hello", "^hello\nhello\n$"},
        {"if A==1 : echo yes", "^$"},
        {"if A==$80 : echo yes", "^yes\n$"},
        {"expect A==$80", "^$"},
        {"key 2 1 down", "^$"},
        {"in 2", "\\$FD"},
        {"back-to 0", "0000 3100BF"},
        {"back", "the history begins here"},
        {"setting halt_waits 1", "^$"},
        {"setting", "halt_waits 1"},
        {"setting halt_waits 0", "^$"},
        {"help break", "break WHAT"},
        // What is wrong is told.
        {"nonsense", "nonsense: no such command"},
        {"break", "what to stop at is missing"},
        {"break 70000", "from 0 to \\$FFFF is wanted"},
        {"break sub if", "a condition is missing"},
        {"break sub with", "with is not understood"},
        {"break irq 7", "from 0 to \\$2"},
        {"watch 5..4", "from 0"},
        {"delete 77", "no stop point 77"},
        {"set Q=1", "no such register"},
        {"set A", "set NAME=VALUE"},
        {"print 1+", "."},
        {"mem nowhere:0", "no such memory"},
        {"mem blue:$4000", "\\$4000 bytes"},
        {"asm 0 FROB A", "."},
        {"load none 0", "No such file"},
        {"load part $FFFF", "."},
        {"expect A==99", "expected: A==99"},
        {"expect-text Kiv", "expected on the screen: Kiv"},
        {"symbols part", "no symbol file"},
        {"step x", "."},
        {"source none", "No such file"},
        {"faults odd", "no such fault"},
        {"picture a.png", "no pictures"},
    };
    for (const auto &l : lines) {
        const std::string answer = say(l.line);
        EXPECT_TRUE(std::regex_search(answer, std::regex(l.answer))) << l.line << ":\n" << answer;
    }
    EXPECT_EQ(console.failures, 23);
    EXPECT_FALSE(console.execute("quit 7"));
    EXPECT_EQ(console.exit_code, 7);
}

TEST_F(Console, ScriptsEndWhereALineIsWrong) {
    files["good"] = "# a remark\nbreak sub once\ngo\nexpect PC==sub\n";
    files["bad"] = "echo one\nexpect A==77\necho two\n";
    EXPECT_TRUE(console.run_script("good"));
    said.clear();
    EXPECT_FALSE(console.run_script("bad"));
    EXPECT_EQ(said, "one\nexpected: A==77\nbad:2: expect A==77\n");
    files["self"] = "source self\n";
    said.clear();
    EXPECT_FALSE(console.run_script("self"));
    EXPECT_NE(said.find("too deep"), std::string::npos);
}

TEST_F(Console, CompletesCommandsAndSymbols) {
    EXPECT_EQ(console.complete("back-f"), std::vector<std::string>{"back-frame"});
    EXPECT_EQ(console.complete("break su"), std::vector<std::string>{"sub"});
    EXPECT_EQ(console.complete("print [be"), std::vector<std::string>{"behind"});
    EXPECT_TRUE(console.complete("zzz").empty());
    EXPECT_GT(console.complete("").size(), 50u);
}

TEST_F(Console, RefusesToRunWhereItMayNot) {
    console.may_run = false;
    EXPECT_EQ(say("step"), "step: not from here\n");
    EXPECT_EQ(say("echo x"), "x\n");
}

TEST_F(Console, TheManualNamesEveryCommand) {
    std::ifstream file(KIV_SOURCE_DIR "/docs/debugger.md");
    const std::string manual{std::istreambuf_iterator<char>(file), {}};
    for (const std::string &name : console.complete(""))
        EXPECT_TRUE(std::regex_search(manual, std::regex("`" + name + "[ `]"))) << name;
}

TEST_F(Console, DevicesSayTheSameInJapanese) {
    const std::regex number("[0-9]+"), english("[a-z]{3,}"),
        name("main|nbasic|ext|ram|crtc|dma|pcg|usart|kHz");
    const auto all = [](const std::string &text, const std::regex &what) {
        std::vector<std::string> found;
        for (std::sregex_iterator at(text.begin(), text.end(), what); at != std::sregex_iterator(); ++at)
            found.push_back(at->str());
        return found;
    };
    for (const int flags : {0, 1, 0xFF}) { // every word that depends on one
        const auto on = static_cast<uint8_t>(flags & 1), bits = static_cast<uint8_t>(flags);
        for (auto *flag : {&machine.crtc_burst, &machine.usart_expect_mode, &machine.usart_byte_ready,
                           &machine.usart_overrun})
            *flag = on;
        machine.crtc_mono = on;
        machine.crtc_reverse = on;
        machine.crtc_attr_mono = on;
        machine.crtc_attr_transparent = on;
        machine.crtc_attr_special = on;
        machine.vrtc = on;
        machine.pcg_glyphs_on = on;
        machine.portE4 = machine.portE6 = bits;
        machine.port31 = bits;
        machine.interrupt_pending = bits;
        const auto ours = devices_now(), theirs = devices_now(japanese_words);
        for (size_t d = 0; d < ours.size(); ++d)
            for (size_t i = 0; i < ours[d].lines.size(); ++i) {
                const std::string a = ours[d].lines[i].first + ": " + ours[d].lines[i].second,
                                  b = std::string(theirs[d].name) + theirs[d].lines[i].first + ": " +
                                      theirs[d].lines[i].second;
                EXPECT_EQ(all(a, number), all(b, number)) << a << " / " << b;
                for (const std::string &word : all(b, english))
                    EXPECT_TRUE(std::regex_match(word, name)) << b;
            }
    }
}

TEST_F(Console, TracesEveryInstructionWithItsTime) {
    say("trace t.txt");
    say("step 5");
    say("trace off");
    EXPECT_EQ(files["t.txt"], "0000  11 3100BF   LD SP,$BF00            A=00 F=szhpnc BC=0000 DE=0000 "
                              "HL=0000 IX=0000 IY=0000 SP=0000\n"
                              "main:\n"
                              "0003  11 210090   LD HL,$9000            A=00 F=szhpnc BC=0000 DE=0000 "
                              "HL=0000 IX=0000 IY=0000 SP=BF00\n"
                              "0006  12 34       INC (HL)               A=00 F=szhpnc BC=0000 DE=0000 "
                              "HL=9000 IX=0000 IY=0000 SP=BF00\n"
                              "0007  18 CD0F00   CALL sub               A=00 F=szhpnc BC=0000 DE=0000 "
                              "HL=9000 IX=0000 IY=0000 SP=BF00\n"
                              "sub:\n"
                              "000F  -- 7E       LD A,(HL)              A=00 F=szhpnc BC=0000 DE=0000 "
                              "HL=9000 IX=0000 IY=0000 SP=BEFE\n");
}

} // namespace

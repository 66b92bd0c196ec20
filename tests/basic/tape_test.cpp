// Programs on tapes: their names, texts without leader and line end, and what BASIC says against them.
#include "basic_machine.h"

#include <fstream>
#include <iterator>

namespace {

struct BasicTape : BasicMachine {
    // What the screen shows from the first line typed on.
    static std::string answer(const std::string &tape, const std::string &typed) {
        EXPECT_EQ(kiv_tape_insert(tape.data(), tape.size()), KIV_OK);
        type("CLS\n");
        type(typed);
        std::string text;
        for (const std::string &line : lines_of(screen())) text += line + '\n';
        return text.substr(text.find('\n') + 1); // behind the Ok of CLS
    }
};

TEST_F(BasicTape, IsReadAsItIs) {
    const std::string x180(180, 'X'), x230(230, 'X');
    const std::string two =
        listing_tape("10 PRINT 1\n", "a/one.bas") + listing_tape("10 PRINT 2\n", "Two.txt");
    const std::string damaged_sum = two.substr(0, two.size() - 1) + "?";
    const struct {
        const char *what;
        std::string tape, typed, answer;
    } cases[] = {
        {"by name, in small letters", two, "CLOAD \"two\"\nRUN\n",
         "CLOAD \"two\"\nSkip:ONE\nFound:TWO\nOk\nRUN\n 2\nOk\n"},
        {"the next one", two, "CLOAD\nCLOAD\nLIST\n",
         "CLOAD\nFound:ONE\nOk\nCLOAD\nFound:TWO\nOk\nLIST\n10 PRINT 2\nOk\n"},
        {"round to the first again", two, "CLOAD \"TWO\"\nCLOAD? \"ONE\"\n",
         "CLOAD \"TWO\"\nSkip:ONE\nFound:TWO\nOk\nCLOAD? \"ONE\"\nFound:ONE\nDifferent in 10\nOk\n"},
        {"by LOAD", two, "LOAD \"TWO\"\nLIST\nLOAD\nLIST\n",
         "LOAD \"TWO\"\nSkip:ONE\nFound:TWO\nOk\nLIST\n10 PRINT 2\nOk\nLOAD\nFound:ONE\nOk\nLIST\n10 PRINT "
         "1\n"
         "Ok\n"},
        {"damaged", damaged_sum, "CLOAD \"TWO\"\n",
         "CLOAD \"TWO\"\nSkip:ONE\nFound:TWO\nTape read error\nOk\n"},
        {"one line, no line end", "10 PRINT 1", "CLOAD\nCLOAD?\nMERGE\nCLOAD?\nLIST\n",
         "CLOAD\nOk\nCLOAD?\nOk\nMERGE\nOk\nCLOAD?\nOk\nLIST\n10 PRINT 1\nOk\n"},
        {"one line with a blank before it", " 10 PRINT 1,2", "CLOAD\nCLOAD?\nLIST\n",
         "CLOAD\nOk\nCLOAD?\nOk\nLIST\n10 PRINT 1,2\nOk\n"},
        {"one long line, no line end", "10 A$=\"" + x180 + "\"", "CLOAD\nCLOAD?\nRUN\nPRINT LEN(A$)\n",
         "CLOAD\nOk\nCLOAD?\nOk\nRUN\nOk\nPRINT LEN(A$)\n 180\nOk\n"},
        {"a long last line without its end",
         "10 A=1:REM a first line that is not short either\r\n20 A$=\"" + x230 + "\"",
         "CLOAD\nCLOAD?\nRUN\nPRINT LEN(A$)\n", "CLOAD\nOk\nCLOAD?\nOk\nRUN\nOk\nPRINT LEN(A$)\n 230\nOk\n"},
        {"a line that is too long", "10 A=1\n20 REM" + x230 + x230 + "\n", "CLOAD\nLIST\n",
         "CLOAD\nLine buffer overflow in 20\nOk\nLIST\n10 A=1\nOk\n"},
        {"a line that cannot be read", "10 A=1\n20 A=\xB1\n30 A=3\n", "CLOAD\nLIST\n",
         "CLOAD\nSyntax error in 20\nOk\nLIST\n10 A=1\nOk\n"},
        {"a line without a number", "HELLO\n10 A=1\n", "CLOAD\nLIST\n",
         "CLOAD\nSkip:HELLO\nOk\nLIST\n10 A=1\nOk\n"},
        {"asked for by a program", "20 PRINT \"MERGED\"\n30 A=\xB1\n", "10 MERGE\nRUN\nLIST\n",
         "10 MERGE\nRUN\nSyntax error in 30\nOk\nLIST\n10 MERGE\n20 PRINT \"MERGED\"\nOk\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        EXPECT_EQ(answer(c.tape, c.typed), c.answer);
    }
}

// What BSAVE writes BLOAD reads, to memory that CLEAR has set aside, and R starts it.
TEST_F(BasicTape, HoldsMachineCodeToo) {
    type("10 CLEAR ,&HE000\n20 FOR I=0 TO 5:READ A:POKE &HE000+I,A:NEXT\n"
         "30 DATA 62,77,50,0,225,201\nRUN\n"); // ld a,77; ld (0e100h),a; ret
    kiv_tape_record(1);
    kiv_tape_output_clear();
    type("BSAVE \"CODE\",&HE000,6,&HE000\n");
    const std::string tape(reinterpret_cast<const char *>(kiv_tape_output()), kiv_tape_output_size());
    type("POKE &HE000,0\n");
    EXPECT_EQ(
        answer(tape, "BLOAD \"CODE\",R\nPRINT PEEK(&HE100);PEEK(&HE005)\nCLEAR ,&HF000\nBLOAD\n"),
        "BLOAD \"CODE\",R\nFound:CODE\nOk\nPRINT PEEK(&HE100);PEEK(&HE005)\n 77  201\nOk\nCLEAR ,&HF000\n"
        "Ok\nBLOAD\nFound:CODE\nIllegal function call\nOk\n");
}

// The tape that the build makes of programs/.
TEST_F(BasicTape, HoldsEveryProgramUnderItsName) {
    std::ifstream in(KIV_PROGRAMS_TAPE, std::ios::binary);
    const std::string tape(std::istreambuf_iterator<char>(in), {});
    for (const char *name :
         {"TUNE", "CLOCK", "MANDELBROT", "LANDER", "SNAKE", "ORCHARD", "PLOTTER", "MAZE", "LOOPS"}) {
        SCOPED_TRACE(name);
        SetUp();
        const std::string shown = answer(tape, "CLOAD\"" + std::string(name) + "\"\nLIST -10\n");
        EXPECT_NE(shown.find("Found:" + std::string(name) + "\nOk\n"), shown.npos) << shown;
        EXPECT_NE(shown.find("10 REM *** " + std::string(name) + " ***"), shown.npos) << shown;
    }
}

} // namespace

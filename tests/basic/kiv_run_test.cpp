// Listings through kiv-run as a person runs it: in, run, out again, and what is said about those that are
// wrong.
#include "tests/temporary_folder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;

struct KivRunBasic : testing::Test {
    temporary_folder folder;

    int run(const std::string &arguments) const {
        const int status =
            std::system(("cd '" + folder.path + "' && '" KIV_RUN "' --roms '" KIV_FIRMWARE_DIR "' " +
                         arguments + " >out.txt 2>err.txt")
                            .c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -status;
    }
    // Without the machine's own diagnostics.
    std::string complaint() const {
        const std::string err = get_file(folder / "err.txt");
        const size_t at = err.find("kiv-run:");
        return at == err.npos ? "" : err.substr(at, err.find('\n', at) - at);
    }
};

TEST_F(KivRunBasic, GivesEveryProgramBackAsItWas) {
    int programs = 0;
    for (const auto &file : fs::directory_iterator(KIV_SOURCE_DIR "/programs")) {
        if (file.path().extension() != ".bas") continue;
        ++programs;
        EXPECT_EQ(run("--bas '" + file.path().string() + "' --list back.bas"), 0) << complaint();
        EXPECT_EQ(get_file(folder / "back.bas"), get_file(file.path())) << file.path();
    }
    EXPECT_GE(programs, 9);
}

TEST_F(KivRunBasic, RunsListingsToTheirEndAndTellsWhatIsWrong) {
    const std::string long_silence = "10 FOR I=1 TO 30000:NEXT\n20 J=J+1:IF J<10 THEN 10\n30 PRINT J\n";
    const struct {
        const char *what;
        std::string listing;
        const char *arguments, *complaint, *shown, *listed;
    } cases[] = {
        {"one line without its end", "10 PRINT 6*7", "--run", "", "RUN\n 42\nOk\n", "10 PRINT 6*7\n"},
        {"no end of the last line", "10 PRINT 1\r\n20 PRINT 2", "--run", "", "RUN\n 1\n 2\nOk\n",
         "10 PRINT 1\n20 PRINT 2\n"},
        {"nothing", "\n\n", "--run", "", "RUN\nOk\n", ""},
        {"a minute and more without a sign", long_silence, "--run", "", "RUN\n 10\nOk\n", nullptr},
        {"the line of function keys", "10 KEY ON:PRINT 1", "--run", "", "RUN\n 1\nOk\n", nullptr},
        {"a question", "10 INPUT A:PRINT A*2", "--run", "", "RUN\n?\n", nullptr},
        {"an answer typed", "10 INPUT A:PRINT A*2", "--run --type '\\p\\p4\\n'", "", "RUN\n? 4\n 8\nOk\n",
         nullptr},
        {"an error while it runs", "10 PRINT 1/0", "--run", "",
         "RUN\nDivision by zero in 10\nOk\n10 PRINT 1/0\n", nullptr},
        {"no number", "10 A=1\n\nHELLO\n", "--run", "kiv-run: it.bas: line 3: no line number", nullptr,
         nullptr},
        {"a high number", "70000 A=1\n", "", "kiv-run: it.bas: line 1: the line number is above 65529",
         nullptr, nullptr},
        {"what BASIC does not take", "10 A=1\n20 A=ｱ\n30 A=3\n", "--run",
         "kiv-run: it.bas: Syntax error in 20", nullptr, nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        put_file(folder / "it.bas", c.listing);
        fs::remove(folder / "back.bas");
        const int code = run("--bas it.bas --text --list back.bas " + std::string(c.arguments));
        EXPECT_EQ(code, *c.complaint == '\0' ? 0 : 1);
        EXPECT_EQ(complaint(), c.complaint);
        if (c.shown != nullptr) {
            const std::string text = get_file(folder / "out.txt");
            EXPECT_EQ(text.substr(text.find("RUN\n"), std::string(c.shown).size()), c.shown) << text;
        }
        if (c.listed != nullptr) {
            EXPECT_EQ(get_file(folder / "back.bas"), c.listed);
        }
        EXPECT_EQ(fs::exists(folder / "back.bas"), code == 0);
    }
}

// A program that never ends is cut where --seconds says.
TEST_F(KivRunBasic, SecondsEndARun) {
    put_file(folder / "it.bas", "10 PRINT \"GOES ON\":I=I+1\n20 GOTO 20");
    EXPECT_EQ(run("--bas it.bas --run --seconds 8 --text --stats"), 0) << complaint();
    EXPECT_NE(get_file(folder / "out.txt").find("\nGOES ON\n"), std::string::npos);
    EXPECT_NE(get_file(folder / "err.txt").find(" 8.000 s of the machine's time"), std::string::npos);
}

} // namespace

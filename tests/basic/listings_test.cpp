// Programs of the kind that magazines printed, and those of programs/: loaded from the deck, run, answered as
// a player would, and what the screen shows at the end. KIV_WRITE_EXPECTED=1 writes what is shown in place of
// what is expected.
#include "basic_machine.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

struct listing {
    const char *name;
    const char *typed; // after RUN
};

const listing listings[] = {
    {"animal", "Y\nN\nN\nEAGLE\nDOES IT HUNT\nY\nY\nN\nY\nY\nN\n"},
    {"bounce", ".1,30,.8\n"},
    {"calendar", "1984\n"},
    {"cave", "M\n2\nM\n3\nX\nS\n4\n"},
    {"change", "3.37,20\n"},
    {"digits", "123\n456\n789\n048\n1234\n150\n"},
    {"graph", ""},
    {"guess", "100\n50\n75\n25\n12\n6\n3\n9\n"},
    {"hangman", "E\nA\nR\nO\nT\nI\nN\nS\n"},
    {"hanoi", "4\n"},
    {"harvest", "0\n2000\n1000\n-50\n2000\n900\n0\n2000\n900\n0\n2000\n900\n0\n2000\n900\n"},
    {"hurkle", "5,5\n2,7\n8,1\n0,9\n3,3\n"},
    {"life", ""},
    {"nim", "2\n3\n1\n5\n3\n3\n2\n"},
    {"odd", ""},
    {"pictures", ""},
    {"reverse", "4\n9\n12\n3\n0\n"},
    {"rocks", "3\n1\n2\n3\n"},
    {"sieve", ""},
    {"sinewave", ""},
    {"slots", "10\n20\n150\n30\n0\n"},
    {"square", ""},
    {"tictac", "1\n9\n1\n2\n7\n"},
    {"verse", ""},
};

std::string read_file(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

const std::filesystem::path folder = KIV_SOURCE_DIR "/tests/basic";

struct BasicListings : BasicMachine {};

TEST_F(BasicListings, RunUnchangedAndShowWhatTheyShould) {
    for (const listing &l : listings) {
        SCOPED_TRACE(l.name);
        SetUp();
        load(read_file(folder / "listings" / (l.name + std::string(".bas"))), l.name);
        type("CLS\nRUN\n");
        type(l.typed);
        const auto expected = folder / "expected" / (l.name + std::string(".txt"));
        if (std::getenv("KIV_WRITE_EXPECTED") != nullptr) std::ofstream(expected) << screen();
        EXPECT_EQ(screen(), read_file(expected));
    }
}

// What goes to the tape and comes back is the same text, for every program there is.
TEST_F(BasicListings, TextSurvivesTheTape) {
    int programs = 0;
    for (const char *where : {"/programs", "/tests/basic/listings"})
        for (const auto &file : std::filesystem::directory_iterator(KIV_SOURCE_DIR + std::string(where))) {
            if (file.path().extension() != ".bas") continue;
            ++programs;
            SCOPED_TRACE(file.path().filename());
            const auto save = [] {
                kiv_tape_record(1);
                kiv_tape_output_clear();
                type("CSAVE \"IT\"\n");
                const std::string tape(reinterpret_cast<const char *>(kiv_tape_output()),
                                       kiv_tape_output_size());
                return listing_of_tape(tape).value_or("nothing on the tape");
            };
            SetUp();
            load(read_file(file.path()), file.path());
            const std::string first = save();
            EXPECT_EQ(lines_of(first).size(), lines_of(read_file(file.path())).size());
            type("NEW\n");
            load(first, "second");
            EXPECT_EQ(save(), first);
        }
    EXPECT_GT(programs, 25);
}

} // namespace

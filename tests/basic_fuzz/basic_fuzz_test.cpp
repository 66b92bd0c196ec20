// A short run of the same lines every time; tests/fuzz/run makes long ones.
#include "tests/fuzz/basic/basic_fuzz.h"

#include <gtest/gtest.h>

TEST(BasicFuzz, RandomLinesAlwaysComeBackToOk) {
    const basic_fuzz_result result = fuzz_basic(2000, 1);
    EXPECT_EQ(result.lines, 2000u);
    EXPECT_GT(result.tapes, 50u);
    for (const basic_fault &fault : result.faults) ADD_FAILURE() << fault.what << '\n' << fault.lines;
}

// What long runs found.
TEST(BasicFuzz, FoundLinesStayMended) {
    const std::vector<std::string> found[] = {
        {"20 '" + std::string(240, 'X') + "\x0B", "EDIT 20",
         "PRINT 1:PRINT 2"},                            // the cursor went home meanwhile
        {"PRINTX:" + std::string(240, 'C'), "PRINT 1"}, // letters with which many words begin
    };
    for (const auto &lines : found)
        for (const basic_fault &fault : replay_basic(lines).faults)
            ADD_FAILURE() << fault.what << '\n' << fault.lines;
}

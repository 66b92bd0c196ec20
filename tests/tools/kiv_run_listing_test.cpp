// Listings as tapes of the machine, and back.
#include "tools/kiv_run_listing.h"
#include "tools/kiv_run_options.h"

#include <gtest/gtest.h>

namespace {

TEST(KivRunListing, TextBecomesTheMachinesCharactersAndComesBack) {
    const struct {
        const char *what, *utf8, *back;
    } cases[] = {
        {"line ends", "10 CLS\r\n20 END\n30 STOP\r40 RUN", "10 CLS\n20 END\n30 STOP\n40 RUN\n"},
        {"a mark of the byte order, a tab",
         "\xEF\xBB\xBF"
         "10\tCLS\n",
         "10      CLS\n"},
        {"the machine's own", "10 ?\"ｱﾞ═♠円╲\"\n", "10 ?\"ｱﾞ═♠円╲\"\n"},
        {"full-width", "１０　ＰＲＩＮＴ“ガポー、あゔ”\n", "10 PRINT\"ｶﾞﾎﾟｰ､ｱｳﾞ\"\n"},
        {"the yen key", "10 A=7¥2\n20 A=7\\2\n", "10 A=7\\2\n20 A=7\\2\n"},
        {"codes without a character", "10 ?\"\uE001\uE0F8\"\n", "10 ?\"\uE001\uE0F8\"\n"},
        {"what stands behind an end of text",
         "10 CLS\n\x1A"
         "20 END\n",
         "10 CLS\n"},
        {"nothing", "", ""},
    };
    for (const auto &c : cases) EXPECT_EQ(listing_of_tape(listing_tape(c.utf8, "x.bas")), c.back) << c.what;
}

TEST(KivRunListing, WhatTheMachineCannotTakeIsToldWithItsLine) {
    const struct {
        std::string utf8, message;
    } cases[] = {
        {"10 CLS\n20 ?\"漢\"\n", "x.bas: line 2: the machine does not have the character U+6F22"},
        {"10 CLS\n CLS", "x.bas: line 2: no line number"},
        {"65529 CLS\n65530 CLS", "x.bas: line 2: the line number is above 65529"},
        {"10 \x81\n", "x.bas: line 1: the machine does not have the character U+FFFD"},
        {"\n" + std::string(256, '1'), "x.bas: line 2: longer than 255 characters"},
    };
    for (const auto &c : cases) try {
            listing_tape(c.utf8, "x.bas");
            ADD_FAILURE() << c.message;
        } catch (const run_failure &failure) {
            EXPECT_EQ(failure.what(), c.message);
        }
}

TEST(KivRunListing, TheTapeBearsTheFilesName) {
    const std::pair<const char *, const char *> cases[] = {
        {"snake.bas", "SNAKE"},
        {"some/where/Two.Parts.bas", "TWO.PARTS"},
        {"as-long-as-a-name-may-be.bas", "AS-LONG-AS-A-NAM"},
        {"かえる漢.txt", "\xB6\xB4\xD9_"},
        {"a\"b", "A_B"}};
    for (const auto &[file, name] : cases)
        EXPECT_EQ(listing_tape("", file), listing_tape("", "x").replace(25, 1, name)) << file;
}

TEST(KivRunListing, DamagedAndForeignTapesHoldNoListing) {
    const std::string tape = listing_tape("10 CLS\n", "x.bas");
    for (size_t size = 0; size < tape.size(); ++size)
        EXPECT_EQ(listing_of_tape(tape.substr(0, size)), std::nullopt) << size << " bytes";
    std::string damaged = tape;
    ++damaged[damaged.find("CLS")];
    EXPECT_EQ(listing_of_tape(damaged), std::nullopt);
    EXPECT_EQ(listing_of_tape(tape + damaged), std::nullopt) << "the last one counts";
    EXPECT_EQ(listing_of_tape(damaged + tape), "10 CLS\n");
    EXPECT_EQ(listing_of_tape("10 CLS\n"), std::nullopt);
}

} // namespace

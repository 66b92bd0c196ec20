#include "platform/profile.h"
#include "tests/temporary_folder.h"
#include <climits>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace platform;

TEST(Profile, ReadsIntegersAsAPersonWritesThem) {
    struct {
        const char *label, *text;
        int expected; // -77: the fallback
    } const cases[] = {
        {"plain, no line end", "[Default]\nkey=+12", 12},
        {"CRLF", "[Default]\r\nkey=12\r\n", 12},
        {"case", "[DEFAULT]\nKeY=12\n", 12},
        {"blanks", "  [ Default ]  \n\t key \t=  12  \n", 12},
        {"byte order mark", "\xEF\xBB\xBF[Default]\nkey=12\n", 12},
        {"negative", "[Default]\nkey=-4\n", -4},
        {"digits lead", "[Default]\nkey=12abc\n", 12},
        {"comment behind", "[Default]\nkey=12 ; twelve\n", 12},
        {"quotes", "[Default]\nkey=\"12\"\n", 12},
        {"no digits", "[Default]\nkey=abc\n", 0},
        {"empty value", "[Default]\nkey=\n", 0},
        {"two equals signs", "[Default]\nkey=1=2\n", 1},
        {"too large", "[Default]\nkey=99999999999999999999999999\n", INT_MAX},
        {"too small", "[Default]\nkey=-99999999999999999999999999\n", INT_MIN},
        {"first of two", "[Default]\nkey=1\nkey=2\n", 1},
        {"commented out", "[Default]\n;key=1\n", -77},
        {"other section", "[Other]\nkey=1\n[Default]\nother=2\n", -77},
        {"before any section", "key=1\n[Default]\n", -77},
        {"section not closed", "[Default\nkey=1\n", -77},
        {"longer name", "[Default]\nkeys=1\n", -77},
        {"empty file", "", -77},
    };
    temporary_folder folder;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        put_file(folder / "KIV.INI", c.text);
        EXPECT_EQ(profile_int(folder / "KIV.INI", "Default", "key", -77), c.expected);
    }
    put_file(folder / "KIV.INI", std::string("[Default]\nkey=1\0002\nb=3\n", 22));
    EXPECT_EQ(profile_int(folder / "KIV.INI", "Default", "b", -77), 3);
    EXPECT_EQ(profile_int(folder / "missing", "Default", "key", -77), -77);
    EXPECT_EQ(profile_int(folder.path, "Default", "key", -77), -77);
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(profile_int(folder / "fifo", "Default", "key", -77), -77);
    EXPECT_FALSE(write_profile(folder / "fifo", "Default", {{"key", "1"}}));
}

TEST(Profile, AWriteTouchesNothingButItsKeys) {
    struct {
        const char *label, *before, *after; // written: KEY=-9, new=5
    } const cases[] = {
        {"no file", nullptr, "[Default]\nKEY=-9\nnew=5\n"},
        {"empty file", "", "[Default]\nKEY=-9\nnew=5\n"},
        {"replaced in place, spelling kept", "[DEFAULT]\n; 日本語の説明\n Key = 12 ; 注\nother=7",
         "[DEFAULT]\n; 日本語の説明\n Key =-9 ; 注\nother=7\nnew=5\n"},
        {"CRLF and mark", "\xEF\xBB\xBF[Default]\r\nkey=1\r\n\r\n[Z]\r\nkey=2\r\n",
         "\xEF\xBB\xBF[Default]\r\nkey=-9\r\nnew=5\r\n\r\n[Z]\r\nkey=2\r\n"},
        {"another section", "junk\n[Z]\nkey=2", "junk\n[Z]\nkey=2\n\n[Default]\nKEY=-9\nnew=5\n"},
        {"a bare header at the end", "[Z]\n[Default]", "[Z]\n[Default]\nKEY=-9\nnew=5\n"},
        {"the section twice", "[Default]\na=1\n[Default]\nkey=2\n",
         "[Default]\na=1\nKEY=-9\nnew=5\n[Default]\nkey=2\n"},
    };
    temporary_folder folder;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        const std::string path = folder / "KIV.INI";
        std::filesystem::remove(path);
        if (c.before != nullptr) put_file(path, c.before);
        ASSERT_TRUE(write_profile(path, "Default", {{"KEY", "-9"}, {"new", "5"}}));
        EXPECT_EQ(get_file(path), c.after);
        EXPECT_EQ(profile_int(path, "Default", "key", 0), -9);
        EXPECT_EQ(profile_int(path, "Default", "new", 0), 5);
    }
    EXPECT_FALSE(write_profile(folder / "missing/KIV.INI", "Default", {{"key", "1"}}));
}

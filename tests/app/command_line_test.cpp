#include "app/command_line.h"
#include "app/user_folder.h"
#include "app/user_settings.h"
#include "tests/temporary_folder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

TEST(CommandLine, WhatIsTakenAndWhatIsRefused) {
    const temporary_folder folder;
    put_file(folder / "a.CMT", "tape");
    put_file(folder / "a.pdf", "text");
    const std::string tape = folder / "a.CMT", text = folder / "a.pdf", roms = folder.path;
    const struct {
        std::vector<std::string> words;
        std::string wrong; // part of the line; empty: nothing
        std::string result;
    } rows[] = {
        {{}, "", "0 '' '' 0 '' ''"},
        {{"--scale", "3", "--lang=en", "--fullscreen"}, "", "3 '' '' 1 'en' ''"},
        {{roms, tape}, "", "0 '" + roms + "' '" + tape + "' 0 '' ''"},
        {{"--settings", "x.ini", "--roms", "r"}, "", "0 'r' '' 0 '' 'x.ini'"},
        {{"--scale", "9"}, "--scale 9: not a number", ""},
        {{"--speed", "24"}, "--speed 24: not a number", ""},
        {{"--speed", "4x"}, "--speed 4x: not a number", ""},
        {{"--gdb", "127.0.0.1:2159"}, "", "0 '' '' 0 '' ''"},
        {{"--gdb", "99999"}, "--gdb 99999: a port", ""},
        {{"--gdb", "-"}, "--gdb -: a port is wanted", ""},
        {{"--scale"}, "--scale: a number is missing", ""},
        {{"--lang", "fr"}, "no such language", ""},
        {{"--fullscreen=1"}, "takes no value", ""},
        {{"--nosuch"}, "--nosuch: no such option", ""},
        {{"nowhere"}, "nowhere: no such file", ""},
        {{text}, "a.pdf: none of .cmt", ""},
        {{tape, tape}, "there is a tape already", ""},
        {{"--open-roms", roms}, "exclude each other", ""},
    };
    for (const auto &r : rows) {
        std::vector<const char *> argv{"kiv"};
        for (const auto &w : r.words) argv.push_back(w.c_str());
        program_options o;
        const std::string wrong = read_command_line(static_cast<int>(argv.size()), argv.data(), o);
        const std::string name = r.words.empty() ? "nothing" : r.words[0];
        EXPECT_EQ(wrong.empty(), r.wrong.empty()) << name << ": " << wrong;
        EXPECT_NE(wrong.find(r.wrong), std::string::npos) << name << ": " << wrong;
        if (!wrong.empty()) continue;
        EXPECT_EQ(std::to_string(o.scale) + " '" + o.roms + "' '" + o.tape + "' " +
                      (o.full_screen ? "1" : "0") + " '" + o.language + "' '" + o.settings + "'",
                  r.result);
    }
}

TEST(CommandLine, AUserFolderIsMadeAndFilesStayTheOnesMeant) {
    const temporary_folder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.path);
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    program_options o;
    o.tape = "a.cmt";
    EXPECT_EQ(enter_user_folder(o), "");
    EXPECT_TRUE(fs::equivalent(fs::current_path(), folder / "data/kiv"));
    EXPECT_EQ(o.tape, folder / "a.cmt");
    EXPECT_EQ(o.roms, "");

    put_file(folder / "file", "in the way");
    setenv("XDG_DATA_HOME", (folder / "file").c_str(), 1);
    EXPECT_NE(enter_user_folder(o), "");
    unsetenv("XDG_DATA_HOME");
    setenv("HOME", "/h", 1);
    EXPECT_EQ(user_folder(), "/h/.local/share/kiv");
    fs::current_path(before);
}

TEST(UserSettings, WhatIsWrittenIsReadAndNonsenseIsNot) {
    const temporary_folder folder;
    const std::string path = folder / "deep/er/kiv.ini";
    user_settings s = default_user_settings();
    s.values[user_look] = 2;
    s.values[user_messages] = 0;
    s.window_place = "AdnQywADAAA=";
    s.rom_folder = "/a folder/ロム";
    for (int i = 0; i < 12; ++i) add_recent(s, "/tapes/" + std::to_string(i % 10) + ".cmt");
    ASSERT_TRUE(write_user_settings(path, s));
    const user_settings read = read_user_settings(path);
    EXPECT_EQ(read.values, s.values);
    EXPECT_EQ(read.window_place, s.window_place);
    EXPECT_EQ(read.rom_folder, s.rom_folder);
    ASSERT_EQ(read.recent.size(), most_recent_files);
    EXPECT_EQ(read.recent[0], "/tapes/1.cmt") << "the newest first, each once";
    EXPECT_EQ(read.recent[2], "/tapes/9.cmt");

    put_file(path, "[Kiv]\nlook=7\nmessages=-1\nlanguage=x\n");
    EXPECT_EQ(read_user_settings(path).values, default_user_settings().values);
    EXPECT_FALSE(write_user_settings(path + "/none/kiv.ini", s));
    setenv("XDG_CONFIG_HOME", "/c", 1);
    EXPECT_EQ(user_settings_path(), "/c/kiv/kiv.ini");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("HOME", "/h", 1);
    EXPECT_EQ(user_settings_path(), "/h/.config/kiv/kiv.ini");
}

} // namespace

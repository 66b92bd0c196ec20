// kiv-run as a person runs it: the real program, files in a folder of its own.
#include "tests/common/test_rom.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <png.h>
#include <regex>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;

struct outcome {
    int code;
    std::string out, err;
};

class KivRun : public testing::Test {
  protected:
    KivRun() { write_test_roms(folder.path); }

    // Runs it in the folder; the arguments as a shell reads them.
    outcome run(const std::string &arguments) const {
        const std::string command =
            "cd '" + folder.path + "' && '" KIV_RUN "' " + arguments + " >out.txt 2>err.txt";
        const int status = std::system(command.c_str());
        outcome o{WIFEXITED(status) ? WEXITSTATUS(status) : -status, get_file(folder / "out.txt"),
                  get_file(folder / "err.txt")};
        // Without the machine's own diagnostics, which the CRT controller prints while it is set up.
        o.err = std::regex_replace(o.err, std::regex("(DMA|CRTC) -.*\n"), "");
        return o;
    }

    void shell(const std::string &command) const {
        ASSERT_NE(std::system(("cd '" + folder.path + "'; " + command).c_str()), -1);
    }

    // Everything in the folder besides the ROMs and what the test itself redirected.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(folder.path)) {
            const std::string name = entry.path().filename().string();
            if (!name.ends_with(".rom") && name != "out.txt" && name != "err.txt") names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    temporary_folder folder;
};

std::string first_line(const std::string &text, int n = 0) {
    size_t at = 0;
    for (; n > 0; --n) at = text.find('\n', at) + 1;
    return text.substr(at, text.find('\n', at) - at);
}

template <class T> T number_at(const std::string &bytes, size_t at) {
    T n;
    std::memcpy(&n, &bytes.at(at + sizeof n - 1) - (sizeof n - 1), sizeof n);
    return n;
}

TEST_F(KivRun, WhatIsWrongWithAListingIsTold) {
    put_file(folder / "kanji.bas", "10 REM 漢\n");
    const struct {
        const char *arguments, *message;
    } cases[] = {
        {"--bas none.bas", "kiv-run: none.bas: No such file or directory"},
        {"--bas kanji.bas", "kiv-run: kanji.bas: line 1: the machine does not have the character U+6F22"},
        {"--bas kanji.bas --tape kanji.bas", "kiv-run: --bas and --tape: the deck holds one of them"},
        {"--run", "kiv-run: --run: --bas names the program"},
        {"--frames 5 --list out.bas",
         "kiv-run: out.bas: no program came out of the machine; is it Kiv BASIC?"}, // nor is any there
    };
    for (const auto &c : cases) {
        const outcome o = run(c.arguments);
        EXPECT_EQ(o.code, 1) << c.arguments;
        EXPECT_EQ(first_line(o.err), c.message) << c.arguments;
    }
    EXPECT_EQ(leftovers(), std::vector<std::string>{"kanji.bas"});
}

TEST_F(KivRun, ShowsTheTextScreenAndSeesEveryKeyTyped) {
    const outcome o = run(R"(--type 'ABCaabbcc@:22[[' --text)");
    EXPECT_EQ(o.code, 0) << o.err;
    EXPECT_EQ(o.err, "");
    EXPECT_EQ(first_line(o.out), "READY");
    // The ROM makes '@' and '[' small too: a backquote and a brace.
    EXPECT_EQ(first_line(o.out, 1), "ABCaabbcc`:22{{");
    EXPECT_EQ(std::count(o.out.begin(), o.out.end(), '\n'), 25);
}

TEST_F(KivRun, FixedDateAndSeedGiveTheSameBytes) {
    const std::string run_it =
        "--date 1982-11-01T12:34:56 --seed 7 --frames 90 --type 8a --type-at 20 --text --png ";
    const outcome a = run(run_it + "a.png --wav a.wav --save-dump a.kiv");
    const outcome b = run(run_it + "b.png --wav b.wav --save-dump b.kiv");
    ASSERT_EQ(a.code, 0) << a.err;
    EXPECT_EQ(a.out, b.out);
    for (const char *kind : {".png", ".wav", ".kiv"}) {
        const std::string bytes = get_file(folder / std::string("a").append(kind));
        EXPECT_FALSE(bytes.empty()) << kind;
        EXPECT_EQ(bytes, get_file(folder / std::string("b").append(kind))) << kind;
    }
    EXPECT_EQ(get_file(folder / "a.kiv").size(), 32612u);
}

TEST_F(KivRun, PicturesAreNumberedAndShowTheScreen) {
    ASSERT_EQ(run("--frames 25 --png shot.png --png-every 10").code, 0);
    EXPECT_EQ(leftovers(), (std::vector<std::string>{"shot-000010.png", "shot-000020.png", "shot.png"}));
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&image, (folder / "shot.png").c_str()));
    EXPECT_EQ(image.width, 640u);
    EXPECT_EQ(image.height, 400u);
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
    ASSERT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    // READY stands in the first 40 x 16 pixels, white on black, and nothing else does anywhere.
    size_t white_inside = 0, lit_outside = 0;
    for (uint32_t i = 0; i < 640 * 400; ++i) {
        const uint8_t *p = &pixels[3 * i];
        const bool inside = i % 640 < 40 && i / 640 < 16;
        white_inside += inside && p[0] == 0xFF && p[1] == 0xFF && p[2] == 0xFF;
        lit_outside += !inside && (p[0] | p[1] | p[2]) != 0;
    }
    EXPECT_GT(white_inside, 100u);
    EXPECT_EQ(lit_outside, 0u);
}

TEST_F(KivRun, WavHoldsEveryWholeSlice) {
    ASSERT_EQ(run("--seconds 1 --type 8 --type-at 5 --wav s.wav").code, 0);
    const std::string wav = get_file(folder / "s.wav");
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    const size_t bytes = number_at<uint32_t>(wav, 40);
    EXPECT_EQ(number_at<uint32_t>(wav, 4), bytes + 36);
    EXPECT_EQ(number_at<uint32_t>(wav, 24), 96000u);
    EXPECT_EQ(wav.size(), bytes + 44);
    // A slice ends with the instruction that crosses its end, so a second has 49 or 50 of them.
    EXPECT_EQ(bytes % 3840, 0u);
    EXPECT_GE(bytes / 3840, 49u);
    // The beeper is a square wave of 20 samples up and 20 down.
    const auto sample = [&wav](size_t i) { return number_at<int16_t>(wav, 44 + 2 * i); };
    const size_t last = bytes / 2 - 1;
    EXPECT_EQ(std::abs(sample(last)), 1000);
    for (size_t i = last - 200; i < last - 20; ++i) EXPECT_EQ(sample(i), -sample(i + 20)) << i;
}

TEST_F(KivRun, DumpAndTapeGoOutAndIn) {
    ASSERT_EQ(run("--type xyz99 --save-dump d.kiv --tape-out t.cmt").code, 0);
    EXPECT_EQ(get_file(folder / "t.cmt"), "HIHI");
    const outcome o = run("--load-dump d.kiv --tape t.cmt --type-at 10 --type w --text");
    EXPECT_EQ(o.code, 0) << o.err;
    EXPECT_EQ(first_line(o.out, 1), "xyzw");
}

// The first half, saved, and the second half from there leave what the whole run leaves.
TEST_F(KivRun, AStateGoesOnExactly) {
    const std::string fixed = "--date 1982-11-01T12:34:56 --seed 7 ";
    ASSERT_EQ(
        run(fixed + "--frames 120 --type abc8 --type-at 20 --text --png w.png --save-state w.state").code, 0);
    const std::string text = get_file(folder / "out.txt");
    ASSERT_EQ(run(fixed + "--frames 70 --type abc8 --type-at 20 --save-state half.state").code, 0);
    const outcome o =
        run(fixed + "--load-state half.state --frames 50 --text --png h.png --save-state h.state");
    EXPECT_EQ(o.code, 0) << o.err;
    EXPECT_EQ(o.out, text);
    EXPECT_EQ(get_file(folder / "h.png"), get_file(folder / "w.png"));
    EXPECT_EQ(get_file(folder / "h.state"), get_file(folder / "w.state"));
    put_file(folder / "8801-4th.rom", "other");
    EXPECT_NE(run("--load-state half.state").err.find("half.state: a snapshot made with other ROM"),
              std::string::npos);
}

TEST_F(KivRun, SettingsReachTheMachine) {
    put_file(folder / "s.ini", "[Default]\nhires_crt=0\nsoft_volume=3\n");
    ASSERT_EQ(run("--seconds 0.5 --type 8 --type-at 2 --wav s.wav --settings s.ini --stats").code, 0);
    const std::string wav = get_file(folder / "s.wav");
    EXPECT_EQ(std::abs(number_at<int16_t>(wav, wav.size() - 2)), 3000);
    // A 15 kHz monitor: 250 x 200 + 13994 T-states a frame, so 31 frames in half a second instead of 27.
    EXPECT_NE(get_file(folder / "err.txt").find(" 31 frames"), std::string::npos)
        << get_file(folder / "err.txt");
}

TEST_F(KivRun, AStoppedProcessorIsNamedAndShown) {
    const outcome halted = run("--type ab0 --text");
    EXPECT_EQ(halted.code, 1);
    EXPECT_NE(halted.err.find("the processor stopped at $00CD: HALT (76 "), std::string::npos) << halted.err;
    EXPECT_EQ(first_line(halted.out, 1), "ab");
    const outcome undefined = run("--type 1");
    EXPECT_NE(undefined.err.find("$00CE: undefined instruction (ED FF "), std::string::npos) << undefined.err;
    EXPECT_NE(undefined.err.find("; --undefined run goes on"), std::string::npos) << undefined.err;
    // Or it goes on: from the HALT at the next interrupt, which this ROM does not allow; past the other at
    // once.
    EXPECT_EQ(run("--halt wait --type 0").code, 0);
    EXPECT_EQ(first_line(run("--undefined run --type 1cd --text").out, 1), "cd");
}

// One line that names what and why, exit code 1, and nothing left behind.
TEST_F(KivRun, WhatFailsSaysWhyAndLeavesNothing) {
    put_file(folder / "too-long.rom", std::string(32769, 'x'));
    const struct {
        const char *arguments;
        std::vector<const char *> words;
        const char *before = ""; // a shell command
    } cases[] = {
        {"", {"8801-kiv.rom", "No such file"}, "rm 8801-kiv.rom"},
        {"", {"8801-zun.rom", "32769 bytes"}, "cp too-long.rom 8801-zun.rom"},
        {"", {"8801-4th.rom", "irectory"}, "rm 8801-4th.rom; mkdir 8801-4th.rom"},
        {"--halt run", {"--halt run: stop or wait is wanted"}},
        {"--roms nowhere", {"nowhere/8801-kiv.rom", "No such file"}},
        {"--frames 2 --png missing/f.png", {"missing/f.png", "No such file"}},
        {"--frames 2 --png /dev/null", {"/dev/null", "Not a regular file"}},
        {"--frames 2 --wav missing/f.wav", {"missing/f.wav", "No such file"}},
        {"--frames 2 --tape-out missing/f.cmt", {"missing/f.cmt", "No such file"}},
        {"--frames 2 --wav ok.wav --save-dump missing/d.kiv", {"missing/d.kiv", "No such file"}},
        {"--tape none.cmt", {"none.cmt", "No such file"}},
        {"--load-dump 8801-4th.rom", {"8801-4th.rom", "not a memory dump"}},
        {"--load-dump none.kiv", {"none.kiv", "No such file"}},
        {"--frames 10 --load-dump too-long.rom", {"too-long.rom", "before frame 60"}},
        {"--settings none.ini", {"none.ini", "No such file"}},
        {"--load-state none.state", {"none.state", "No such file"}},
        {"--load-state 8801-4th.rom", {"8801-4th.rom", "not a snapshot"}},
        {"--frames 2 --save-state missing/s.state", {"missing/s.state", "No such file"}},
        {"--frames 0", {"--frames 0"}},
        {"--frames 12x", {"--frames 12x"}},
        {"--frames -5", {"--frames -5"}},
        {"--frames 99999999999999999999", {"--frames 9999"}},
        {"--frames", {"--frames", "missing"}},
        {"--seconds nan", {"--seconds nan"}},
        {"--seconds 1e300", {"--seconds 1e300"}},
        {"--frames 1 --seconds 1", {"--frames and --seconds"}},
        {"--date 1982-02-29T00:00:00", {"--date 1982-02-29T00:00:00"}},
        {"--date '1982-01- 1T00:00:00'", {"--date"}},
        {"--seed 4294967296", {"--seed 4294967296"}},
        {"--png-every 5", {"--png-every"}},
        {"--type 'あ'", {"'あ'"}},
        {"--type '\\q'", {"\\q"}},
        {"--nonsense", {"--nonsense"}},
        {"stray", {"stray"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments);
        std::error_code ignored;
        fs::remove_all(folder / "8801-4th.rom", ignored);
        write_test_roms(folder.path);
        ASSERT_EQ(std::system(("cd '" + folder.path + "'; " + c.before).c_str()), 0);
        const outcome o = run(c.arguments);
        EXPECT_EQ(o.code, 1);
        EXPECT_EQ(o.out, "");
        EXPECT_EQ(o.err.find("kiv-run: "), 0u) << o.err;
        EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), 1) << o.err;
        for (const char *word : c.words)
            EXPECT_NE(o.err.find(word), std::string::npos) << word << " in " << o.err;
        EXPECT_EQ(leftovers(), std::vector<std::string>{}) << "left behind";
    }
}

// A full disk, an end from outside, two at once, a link, a mode, a file of the person's own.
TEST_F(KivRun, OutputsAreWrittenWholeOrNotAtAll) {
    put_file(folder / "8801-zun.rom", "\xD3\x20\x3C\x18\xFB"); // out (20h),a; inc a; jr 0: tape without end
    const std::string names[] = {"f.cmt", "f.wav", "f.png", "f.kiv", "f.txt"};
    const std::string options[] = {"--tape-out ", "--wav ", "--png ", "--save-dump ", "--trace "};
    put_file(folder / "f.cmt.part", "mine");
    for (int i = 0; i < 5; ++i) {
        put_file(folder / names[i], "old");
        fs::permissions(folder / names[i], fs::perms(0600));
        fs::create_symlink("new-" + names[i], folder / ("link-" + names[i]));
    }
    const std::vector<std::string> before = leftovers();
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(names[i]);
        const std::string option = options[i] + names[i];
        // ThreadSanitizer writes a temporary file of its own before main is reached, if it can.
        shell("{ (ulimit -f 0; TMPDIR=/dev/null '" KIV_RUN "' --frames 9 " + option +
              "); echo code $?; } 2>&1 | cat >err.txt");
        EXPECT_EQ(get_file(folder / "err.txt"), "kiv-run: " + names[i] + ": File too large\ncode 1\n");
        shell("'" KIV_RUN "' --seconds 1e6 " + option +
              " --wav w.wav 2>err.txt & until [ -e .w.wav.kiv-save ]; do "
              "sleep .02; done; kill " +
              (i % 2 ? "-HUP" : "") + " $!; wait $!");
        EXPECT_NE(get_file(folder / "err.txt").find("kiv-run: interrupted after"), std::string::npos);
        EXPECT_TRUE(get_file(folder / names[i]) == "old");
        EXPECT_EQ(leftovers(), before);
    }
    const auto all = [&](const std::string &prefix) {
        std::string list;
        for (int i = 0; i < 4; ++i) list += options[i] + prefix + names[i] + " ";
        return list;
    };
    shell("for n in 7 8 9; do '" KIV_RUN "' --frames ${n}0 " + all("") + "& done; wait");
    EXPECT_EQ(run("--frames 80 " + all("link-")).code, 0);
    for (const std::string &name : names) {
        EXPECT_EQ(fs::status(folder / name).permissions(), fs::perms(0600)) << name;
        EXPECT_TRUE(fs::is_symlink(folder / ("link-" + name))) << name;
    }
    const std::string tape = get_file(folder / "f.cmt");
    size_t good = 0;
    while (good < tape.size() && tape[good] == static_cast<char>(good)) ++good;
    EXPECT_EQ(good, tape.size()) << "mixed";
    EXPECT_GT(good, 100'000u);
    EXPECT_EQ(get_file(folder / "f.cmt.part"), "mine");
    EXPECT_EQ(leftovers().size(), before.size() + 4) << "the links' targets";
}

} // namespace

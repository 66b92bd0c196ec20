// The shell functions behind ./run and ./test, in a folder of their own.
#include "tests/temporary_folder.h"

#include <gtest/gtest.h>

namespace {

struct Scripts : testing::Test {
    // What the shell says in the folder, with the functions at hand.
    std::string shell(const std::string &commands) const {
        const std::string tools = KIV_SOURCE_DIR "/tools/";
        EXPECT_NE(std::system(("exec >'" + folder.path + "/said' 2>&1; set -eu; . '" + tools +
                               "dependencies.sh'; . '" + tools + "playground.sh'; cd '" + folder.path +
                               "'; " + commands)
                                  .c_str()),
                  -1);
        return get_file(folder / "said");
    }
    temporary_folder folder;
};

TEST_F(Scripts, ThePlaygroundKeepsARomImageThatIsNotOurs) {
    shell(
        "mkdir old new play; for r in zun kiv 4th; do echo old >old/8801-$r.rom; echo new >new/8801-$r.rom; "
        "done; "
        "put_roms old play; echo mine >play/8801-kiv.rom; echo mine >mine; ln -sf ../mine play/8801-4th.rom");
    const std::string said = shell("put_roms new play; put_roms new play");
    EXPECT_EQ(get_file(folder / "play/8801-zun.rom"), "new\n") << "ours, untouched";
    EXPECT_EQ(get_file(folder / "play/8801-kiv.rom"), "mine\n");
    EXPECT_EQ(get_file(folder / "mine"), "mine\n") << "behind a link";
    EXPECT_NE(said.find("play/8801-kiv.rom is not of Kiv's own set"), std::string::npos) << said;
    EXPECT_EQ(said.find("8801-zun.rom"), std::string::npos) << said;
    shell("rm play/8801-kiv.rom; put_roms new play");
    EXPECT_EQ(get_file(folder / "play/8801-kiv.rom"), "new\n");
}

TEST_F(Scripts, OnlyARomImageOfThePersonsIsOneOfTheirOwn) {
    EXPECT_EQ(shell("mkdir old empty play; for r in zun kiv 4th; do echo old >old/8801-$r.rom; done; "
                    "put_roms old play; for f in empty play; do own_roms $f || echo none in $f; done; "
                    "echo mine >play/8801-4th.rom; own_roms play && echo now; "
                    "ln -s nowhere empty/8801-zun.rom; own_roms empty && echo a link counts"),
              "none in empty\nnone in play\nnow\na link counts\n");
}

TEST_F(Scripts, AFolderThatWasMovedIsBuiltAnew) {
    std::filesystem::create_directory(folder / "a");
    put_file(folder / "a/CMakeLists.txt",
             "cmake_minimum_required(VERSION 3.25)\nproject(p LANGUAGES NONE)\n");
    put_file(folder / "a/CMakePresets.json",
             R"({"version": 6, "configurePresets": [{"name": "p", "generator": "Ninja",
                 "binaryDir": "${sourceDir}/build/${presetName}"}],
                 "buildPresets": [{"name": "p", "configurePreset": "p"}]})");
    EXPECT_EQ(shell("cd a; build p; cd ..; ln -s a link; cd link; build p; echo good"),
              "Building (p) ...\nBuilding (p) ...\ngood\n");
    const std::string said = shell("mv a b; cd b; build p; echo good");
    EXPECT_NE(said.find("was moved"), std::string::npos) << said;
    EXPECT_TRUE(said.ends_with("good\n")) << said;
}

} // namespace

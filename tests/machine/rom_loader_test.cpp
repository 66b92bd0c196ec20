// ROM images of every size and of none.
#include "machine/rom_loader.h"

#include "machine/kiv_machine.h"
#include "tests/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

class rom_loader : public testing::Test {
  protected:
    rom_loader() {
        machine_init(
            machine, [] {}, [] {});
        put(nbasic_rom_name, 0x8000, '\x11');
        put(main_rom_name, 0x8000, '\x22');
        put(ext_rom_name, 0x2000, '\x33');
    }
    void put(const char *name, size_t size, char value) {
        fs::remove_all(folder / name);
        put_file(folder / name, std::string(size, value));
    }
    std::string load() { return load_rom_images(folder.path); }
    temporary_folder folder;
};

TEST_F(rom_loader, EachFileFillsItsAreaFromTheStart) {
    put(nbasic_rom_name, 8192, '\x11');
    put(ext_rom_name, 0x8000, '\x33'); // four times its area: the rest is dropped
    const std::vector<uint8_t> ram_before(std::begin(machine.ram), std::end(machine.ram));
    EXPECT_EQ(load(), "");
    EXPECT_EQ(machine.nbasic_rom[0x1FFF], 0x11);
    EXPECT_EQ(machine.nbasic_rom[0x2000], 0x00);
    EXPECT_EQ(std::count(std::begin(machine.main_rom), std::end(machine.main_rom), 0x22), 0x8000);
    EXPECT_EQ(std::count(std::begin(machine.ext_rom), std::end(machine.ext_rom), 0x33), 0x2000);
    EXPECT_TRUE(std::equal(ram_before.begin(), ram_before.end(), machine.ram)) << "the area's neighbour";
    put(main_rom_name, 0, 0);
    EXPECT_EQ(load(), "") << "an empty file is a ROM";
}

TEST_F(rom_loader, TheFirstFailureEndsItAndNamesTheFile) {
    fs::remove(folder / nbasic_rom_name);
    EXPECT_EQ(load(), folder / nbasic_rom_name + ": No such file or directory");
    EXPECT_EQ(machine.main_rom[0], 0x00) << "the file after the missing one was read";

    put(nbasic_rom_name, 0x8001, '\x11');
    EXPECT_NE(load().find("8801-kiv.rom: 32769 bytes"), std::string::npos) << load();
    EXPECT_EQ(machine.nbasic_rom[0], 0x00);

    put(nbasic_rom_name, 0x8000, '\x11');
    fs::remove(folder / ext_rom_name);
    fs::create_directory(folder / ext_rom_name);
    EXPECT_NE(load().find("8801-4th.rom: "), std::string::npos) << load();
    EXPECT_EQ(machine.main_rom[0], 0x22);
    EXPECT_EQ(machine.ext_rom[0], 0x00);
}

} // namespace

// ROM images of every size and of none.
#include "machine_fixture.h"

#include "machine/rom_loader.h"

namespace {

using RomLoader = Machine;

TEST_F(RomLoader, FilesFillTheirAreasUpToTheFirstFailure) {
    write_file(main_rom_name, bytes(0x8000, 0x22));
    write_file(ext_rom_name, bytes(0x8000, 0x33)); // four times its area: the rest is dropped
    const auto expected = snapshot();
    const auto load = [&] {
        std::string error = load_rom_images(folder.path);
        EXPECT_EQ(std::memcmp(&machine, expected.get(), sizeof machine), 0) << error;
        return error;
    };
    EXPECT_EQ(load(), folder / nbasic_rom_name + ": No such file or directory");
    write_file(nbasic_rom_name, bytes(0x8001, 0x11));
    EXPECT_EQ(load(), folder / nbasic_rom_name + ": 32769 bytes, more than the 32768 of a ROM");
    write_file(nbasic_rom_name, bytes(0x2000, 0x11)); // the rest of its area stays 0
    std::memset(expected->nbasic_rom, 0x11, 0x2000);
    std::memset(expected->main_rom, 0x22, rom_size);
    std::memset(expected->ext_rom, 0x33, ext_rom_size);
    EXPECT_EQ(load(), "");
    write_file(main_rom_name, {});
    EXPECT_EQ(load(), "") << "an empty file is a ROM";
}

} // namespace

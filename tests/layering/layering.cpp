// The arrows of the house point downwards: every include is checked against the floors.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace fs = std::filesystem;

namespace {

using names = std::set<std::string>;

// Who may include whom, room by room. A room may always include itself, and where it knows the machine, the
// records that the machine is made of.
const std::map<std::string, names> rooms = {
    {"platform", {}},
    {"platform/desktop", {"platform"}},
    {"support", {"platform"}},
    {"cpu", {}},
    {"display records", {}},
    {"machine", {"display records", "cpu", "support"}},
    {"machine files", {"display records", "machine", "cpu", "support", "platform"}},
    {"display", {"display records", "machine", "cpu", "support"}},
    {"sound", {"display records", "display", "machine", "cpu", "support"}},
    {"presentation", {"display records", "sound", "display", "machine", "cpu", "support", "platform"}},
    {"z80_thread",
     {"display records", "presentation", "sound", "display", "machine", "cpu", "support", "platform"}},
    {"resources", {"platform"}},
    {"api", {"display records", "sound", "display", "machine", "cpu", "support", "resources"}},
    {"api files", {"api", "machine", "machine files", "support"}},
    {"debug", {"api", "display records", "display", "machine", "cpu", "support"}},
    {"debug/wire", {"debug", "api", "platform"}},
    {"app",
     {"api", "debug", "debug/wire", "display records", "z80_thread", "presentation", "sound", "display",
      "machine", "cpu", "support", "platform", "machine files", "platform/desktop", "resources",
      "translations"}},
    {"translations", {"platform"}},
    {"tools",
     {"api", "api files", "app", "debug", "debug/wire", "display records", "sound", "display", "machine",
      "cpu", "support", "platform"}},
    {"libretro", {"api"}},
    {"web", {"api"}},
};

// Files whose floor is not their folder's. Of the display's devices only the headers are records.
const std::map<std::string, std::string> special = {
    {"display/kiv_directx", "presentation"},
    {"sound/kiv_directx", "presentation"},
    {"display/kiv_render", "presentation"},
    {"display/overlay_font", "presentation"},
    {"cpu/z80_thread", "z80_thread"},
    {"api/kiv_rom_files", "api files"},
    {"machine/rom_loader", "machine files"},
    {"machine/read_exactly", "machine files"},
    {"machine/memory_dump_files", "machine files"},
    {"machine/tape_files", "machine files"},
    {"machine/host_clock", "machine files"},
    {"display/crt_controller.h", "display records"},
    {"display/cursor.h", "display records"},
    {"display/dma_controller.h", "display records"},
    {"display/video_timing.h", "display records"},
    {"display/frame_composer.h", "display records"},
};

// Depend on nothing, may be included anywhere.
const names anywhere = {"support/host_keys.h", "support/log.h", "support/shared.h"};

std::string room_of(const fs::path &file) {
    const fs::path folder = file.parent_path();
    for (const fs::path &name : {file, folder / file.stem()})
        if (const auto found = special.find(name.generic_string()); found != special.end())
            return found->second;
    return folder.generic_string();
}

TEST(Layering, IncludesPointDownwards) {
    const std::regex own("^\\s*#\\s*include\\s*\"([^\"]+)\""), host("^\\s*#\\s*include\\s*<(Q[A-Z]|SDL|qt)");
    const fs::path root = KIV_SOURCE_DIR;
    int files = 0;
    for (const char *top : {"platform", "support", "cpu", "machine", "display", "sound", "resources",
                            "translations", "api", "debug", "app", "tools", "libretro", "web"}) {
        for (const auto &entry : fs::recursive_directory_iterator(root / top)) {
            const fs::path file = fs::relative(entry.path(), root);
            if (file.extension() != ".h" && file.extension() != ".cpp") continue;
            ++files;
            const std::string room = room_of(file);
            ASSERT_TRUE(rooms.contains(room)) << "no floor is known for " << file;
            std::ifstream in(entry.path());
            for (std::string line; std::getline(in, line);) {
                std::smatch match;
                EXPECT_TRUE(room == "platform/desktop" || !std::regex_search(line, host))
                    << file << ": " << line;
                if (!std::regex_search(line, match, own) || anywhere.contains(match[1])) continue;
                const std::string target = room_of(match[1].str());
                EXPECT_TRUE(target == room || rooms.at(room).contains(target))
                    << file << " (" << room << "): " << line << " (" << target << ")";
            }
        }
    }
    EXPECT_GT(files, 40);
}

} // namespace

// The arrows of the house point downwards: every include is checked against the floors.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path root = KIV_SOURCE_DIR;

// Who may include whom, room by room. A room may always include itself.
const std::map<std::string, std::set<std::string>> rooms = {
    {"platform", {}},
    {"platform/headless", {"platform"}},
    {"platform/desktop", {"platform"}},
    {"support", {"platform"}},
    {"cpu", {}},
    {"machine", {"cpu", "support", "display records"}},
    {"display", {"machine", "cpu", "support"}},
    {"sound", {"display", "machine", "cpu", "support"}},
    {"presentation", {"sound", "display", "machine", "cpu", "support", "platform"}},
    {"z80_thread", {"presentation", "sound", "display", "machine", "cpu", "support", "platform"}},
    {"resources", {"platform"}},
    {"app",
     {"z80_thread", "presentation", "sound", "display", "machine", "cpu", "support", "platform",
      "platform/headless", "platform/desktop", "resources"}},
};

// Files whose floor is not their folder's.
const std::map<std::string, std::string> special = {
    {"display/kiv_directx", "presentation"},
    {"sound/kiv_directx", "presentation"},
    {"display/kiv_render", "presentation"},
    {"display/overlay_font", "presentation"},
    {"cpu/z80_thread", "z80_thread"},
    {"display/crt_controller", "display records"},
    {"display/cursor", "display records"},
    {"display/dma_controller", "display records"},
    {"display/video_timing", "display records"},
    {"display/frame_composer", "display records"},
};

// Depend on nothing, may be included anywhere.
const std::set<std::string> anywhere = {"app/kiv_assay.h", "support/shared.h"};

std::string room_of(const fs::path &file) {
    const std::string stem = (file.parent_path() / file.stem()).generic_string();
    const auto found = special.find(stem);
    // Only the headers of the display's devices are records; their code lives on its own floor.
    if (found != special.end() && (found->second != "display records" || file.extension() == ".h"))
        return found->second;
    return file.parent_path().generic_string();
}

std::vector<std::string> project_includes(const fs::path &file) {
    static const std::regex pattern("^\\s*#\\s*include\\s*\"([^\"]+)\"");
    std::vector<std::string> found;
    std::ifstream in(root / file);
    for (std::string line; std::getline(in, line);) {
        std::smatch match;
        if (std::regex_search(line, match, pattern)) found.push_back(match[1]);
    }
    return found;
}

TEST(Layering, IncludesPointDownwards) {
    int files = 0;
    for (const char *top :
         {"platform", "support", "cpu", "machine", "display", "sound", "resources", "app"}) {
        for (const auto &entry : fs::recursive_directory_iterator(root / top)) {
            const fs::path file = fs::relative(entry.path(), root);
            if (file.extension() != ".h" && file.extension() != ".cpp") continue;
            ++files;
            const std::string room = room_of(file);
            for (const std::string &include : project_includes(file)) {
                if (anywhere.count(include) != 0) continue;
                const std::string target = room_of(include);
                if (target == room) continue;
                // A device record stands on the floor of the machine that is made of it.
                if (room == "display records") {
                    ADD_FAILURE() << file << " is a record and includes " << include;
                    continue;
                }
                if (target == "display records" && room != "cpu" && room.rfind("platform", 0) != 0) continue;
                const auto allowed = rooms.find(room);
                ASSERT_NE(allowed, rooms.end()) << "no floor is known for " << file;
                EXPECT_EQ(allowed->second.count(target), 1u)
                    << file << " (" << room << ") includes " << include << " (" << target << ")";
            }
        }
    }
    EXPECT_GT(files, 40);
}

// Qt and SDL stay in platform/desktop and in the entry that chooses the host.
TEST(Layering, HostLibrariesStayBehindThePlatformLayer) {
    static const std::regex pattern("^\\s*#\\s*include\\s*<(Q[A-Z]|SDL|qt)");
    for (const char *top :
         {"platform", "support", "cpu", "machine", "display", "sound", "resources", "app"}) {
        for (const auto &entry : fs::recursive_directory_iterator(root / top)) {
            const fs::path file = fs::relative(entry.path(), root);
            if (file.extension() != ".h" && file.extension() != ".cpp") continue;
            if (room_of(file) == "platform/desktop") continue;
            std::ifstream in(root / file);
            for (std::string line; std::getline(in, line);)
                EXPECT_FALSE(std::regex_search(line, pattern)) << file << ": " << line;
        }
    }
}

} // namespace

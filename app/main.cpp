// The `kiv` program: the desktop host, and on it the program. What it reads and writes lies in the current
// directory.
#include "app/program.h"
#include "platform/desktop/desktop_host.h"
#include "platform/file.h"
#include "platform/resources.h"
#include "resources/resources.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr char usage[] =
    R"(kiv: a desktop emulator of the NEC PC-8801.

usage: kiv

Runs in the current directory, which holds the ROM images 8801-zun.rom, 8801-kiv.rom and 8801-4th.rom and,
from the first start on, the settings file KIV.INI. The window's menu has the keys and the settings.

  --help       this text
  --version    the version

KIV_TRACE=FILE in the environment collects the log lines in FILE; KIV_TRACE=- shows them.
Without a display, kiv-run runs the same machine.
)";

} // namespace

int main(int argc, char **argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (std::strcmp(argv[i], "--version") == 0) {
            std::puts("kiv " KIV_VERSION);
            return 0;
        }
        std::fprintf(stderr, "kiv: %s: no such option (--help lists them)\n", argv[i]);
        return 1;
    }
    if (const std::string missing = platform::desktop_host::missing(); !missing.empty()) {
        std::fprintf(stderr, "kiv: %s\n", missing.c_str());
        return 1;
    }
    platform::let_writes_fail();
    register_program_resources();
    platform::desktop_host host;
    const auto icon = platform::find_resource(platform::resource_type::icon, icon_resource_id);
    for (const icon_picture &p : icon_pictures(icon)) host.add_icon({p.pixels.data(), p.side, p.side});
    return run_program(host);
}

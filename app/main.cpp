// The `kiv` program: the desktop host, and on it the program. What it reads and writes lies in the current
// directory.
#include "app/program.h"
#include "app/user_folder.h"
#include "platform/desktop/desktop_host.h"
#include "platform/file.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "translations/translations.h"

#include <cstdio>
#include <string>

int main(int argc, char **argv) {
    program_options options;
    if (const std::string wrong = read_command_line(argc, argv, options); !wrong.empty()) {
        std::fprintf(stderr, "kiv: %s\n", wrong.c_str());
        return 1;
    }
    if (options.help || options.version) {
        std::fputs(options.help ? command_line_help : "kiv " KIV_VERSION "\n", stdout);
        return 0;
    }
    if (options.user_folder)
        if (const std::string wrong = enter_user_folder(options); !wrong.empty()) {
            std::fprintf(stderr, "kiv: %s\n", wrong.c_str());
            return 1;
        }
    if (const std::string missing = platform::desktop_host::missing(); !missing.empty()) {
        std::fprintf(stderr, "kiv: %s\n", missing.c_str());
        return 1;
    }
    platform::let_writes_fail();
    register_program_resources();
    register_translations();
    platform::desktop_host host;
    const auto icon = platform::find_resource(platform::resource_type::icon, icon_resource_id);
    for (const icon_picture &p : icon_pictures(icon)) host.add_icon({p.pixels.data(), p.side, p.side});
    return run_program(host, options);
}

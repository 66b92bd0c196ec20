#include "app/user_folder.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

std::string user_folder() {
    const char *data = std::getenv("XDG_DATA_HOME"), *home = std::getenv("HOME");
    if (data != nullptr && data[0] == '/') return std::string(data) + "/kiv";
    if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/share/kiv";
    return {};
}

std::string enter_user_folder(program_options &options) {
    const std::string folder = user_folder();
    if (folder.empty()) return "--user-folder: there is no home folder";
    std::error_code error;
    for (std::string *name : {&options.roms, &options.tape, &options.file, &options.settings})
        if (!name->empty()) *name = fs::absolute(*name, error).string();
    fs::create_directories(folder, error);
    if (!error) fs::current_path(folder, error);
    return error ? folder + ": " + error.message() : std::string();
}

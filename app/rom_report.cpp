#include "app/rom_report.h"

#include "machine/rom_loader.h"
#include "platform/file.h"
#include "platform/texts.h"
#include "support/kel_fstream.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char *names[] = {nbasic_rom_name, main_rom_name, ext_rom_name};
constexpr uintmax_t most_bytes = 32768;

fs::path folder_or_current(const std::string &folder) {
    std::error_code ignored;
    return folder.empty() ? fs::current_path(ignored) : fs::path(folder);
}

// Empty: nothing is wrong with it.
std::string fault_of(const fs::path &file, uintmax_t &size) {
    kel_fstream stream;
    if (!stream.open(file.c_str(), 1, 0)) return platform::last_file_error();
    stream.close();
    std::error_code error;
    size = fs::file_size(file, error);
    if (error) return error.message();
    if (size > most_bytes)
        return std::to_string(size) + platform::text(" バイト: 上限は ") + std::to_string(most_bytes);
    return {};
}

std::string state_of(const fs::path &file) {
    uintmax_t size = 0;
    const std::string fault = fault_of(file, size);
    return fault.empty() ? platform::text("問題なし") + " (" + std::to_string(size) + ")" : fault;
}

bool holds_all(const fs::path &folder) {
    std::error_code ignored;
    for (const char *name : names)
        if (!fs::is_regular_file(folder / name, ignored)) return false;
    return true;
}

} // namespace

std::string rom_report(const std::string &folder) {
    const fs::path where = folder_or_current(folder);
    std::string report = where.string() + ":";
    for (const char *name : names) report += "\n" + std::string(name) + ": " + state_of(where / name);
    return report;
}

std::string rom_fault(const std::string &folder) {
    for (const char *name : names) {
        const fs::path file = folder_or_current(folder) / name;
        uintmax_t size = 0;
        if (const std::string fault = fault_of(file, size); !fault.empty())
            return file.string() + ": " + fault;
    }
    return {};
}

bool any_rom_in(const std::string &folder) {
    std::error_code ignored;
    for (const char *name : names)
        if (fs::exists(folder_or_current(folder) / name, ignored)) return true;
    return false;
}

// Beside the program: in the tree that it was built in, or where it is installed.
std::string open_rom_folder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (error) return {};
    for (const char *folder : {"../firmware", "../share/kiv/roms"})
        if (holds_all(program / folder)) return (program / folder).lexically_normal().string();
    return {};
}

#include "app/command_line.h"

#include "debug/wire/gdb_line.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace fs = std::filesystem;

const char command_line_help[] =
    R"(kiv: a desktop emulator of the NEC PC-8801.

usage: kiv [options] [file or folder]

A folder holds the ROM images 8801-zun.rom, 8801-kiv.rom and 8801-4th.rom; without one they are looked for in the
current directory, which also holds, from the first start on, the machine's settings KIV.INI. A .cmt file is put
in as a tape, a .kst state or a .kiv memory dump is gone on with, a .bas or .txt file is typed.

  --roms FOLDER     take the ROM images from there
  --open-roms       start with the ROM set that comes with Kiv
  --user-folder     work in ~/.local/share/kiv instead of the current directory, as the desktop's menu does
  --tape FILE       put a tape image in
  --state FILE      go on with a saved state
  --fullscreen      start in full screen
  --scale N         a pixel of the machine takes N x N pixels of the screen, 1 to 8
  --speed N         per cent of the machine's own speed, 25 to 400
  --lang ja|en      the language of menus and messages
  --settings FILE   the machine's settings, in place of KIV.INI
  --gdb PORT        let a debugger of the GDB remote protocol in, at this TCP port of this computer's loopback
                    interface alone; at another interface only as ADDRESS:PORT; 0: a free port, which is told
  --version         the version
  --help            this text

Your own choices (window, language, look) are kept in ~/.config/kiv/kiv.ini.
KIV_TRACE=FILE in the environment collects the log lines in FILE; KIV_TRACE=- shows them.
Without a display, kiv-run runs the same machine.
)";

namespace {

std::string lower(std::string text) {
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// What a file or folder on the command line is for.
std::string take_file(const std::string &name, program_options &o) {
    std::error_code error;
    if (fs::is_directory(name, error)) {
        if (!o.roms.empty()) return name + ": there is a folder of ROM images already";
        o.roms = name;
        return {};
    }
    if (!fs::exists(name, error)) return name + ": no such file or folder";
    const std::string extension = lower(fs::path(name).extension());
    for (const char *known : {".kst", ".kiv", ".bas", ".txt"})
        if (extension == known) {
            if (!o.file.empty()) return name + ": one file to begin with is enough";
            o.file = name;
            return {};
        }
    if (extension != ".cmt") return name + ": none of .cmt, .kiv, .kst, .bas, .txt, and no folder";
    if (!o.tape.empty()) return name + ": there is a tape already";
    o.tape = name;
    return {};
}

struct option {
    const char *name;
    const char *value; // what it takes; null: nothing
    std::string (*take)(const std::string &value, program_options &o);
};

std::string taken() { return {}; }

const option all_options[] = {
    {"--help", nullptr, [](auto &, auto &o) { return o.help = true, taken(); }},
    {"-h", nullptr, [](auto &, auto &o) { return o.help = true, taken(); }},
    {"--version", nullptr, [](auto &, auto &o) { return o.version = true, taken(); }},
    {"--open-roms", nullptr, [](auto &, auto &o) { return o.open_roms = true, taken(); }},
    {"--user-folder", nullptr, [](auto &, auto &o) { return o.user_folder = true, taken(); }},
    {"--fullscreen", nullptr, [](auto &, auto &o) { return o.full_screen = true, taken(); }},
    {"--roms", "a folder", [](auto &v, auto &o) { return o.roms = v, taken(); }},
    {"--tape", "a file", [](auto &v, auto &o) { return o.tape = v, taken(); }},
    {"--state", "a file", [](auto &v, auto &o) { return o.file = v, taken(); }},
    {"--settings", "a file", [](auto &v, auto &o) { return o.settings = v, taken(); }},
    {"--lang", "ja or en",
     [](auto &v, auto &o) {
         if (v != "ja" && v != "en") return "--lang " + v + ": no such language (ja and en are)";
         return o.language = v, taken();
     }},
    {"--speed", "a number",
     [](auto &v, auto &o) {
         const bool number = v.size() <= 3 && std::all_of(v.begin(), v.end(), [](unsigned char c) {
                                 return std::isdigit(c) != 0;
                             });
         if (!number || std::stoi(v) < 25 || std::stoi(v) > 400)
             return "--speed " + v + ": not a number from 25 to 400";
         return o.speed = std::stoi(v), taken();
     }},
    {"--gdb", "a port",
     [](auto &v, auto &o) {
         try {
             if (!parse_gdb_place(v).standard_streams) return o.gdb = v, taken();
             return "--gdb " + v + ": a port is wanted (kiv-run --gdb has the standard streams)";
         } catch (const debug_error &error) {
             return "--gdb " + v + ": " + error.what();
         }
     }},
    {"--scale", "a number",
     [](auto &v, auto &o) {
         if (v.size() != 1 || v[0] < '1' || v[0] > '8') return "--scale " + v + ": not a number from 1 to 8";
         return o.scale = v[0] - '0', taken();
     }},
};

} // namespace

std::string read_command_line(int argc, const char *const *argv, program_options &o) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.empty() || word[0] != '-') {
            if (std::string wrong = take_file(word, o); !wrong.empty()) return wrong;
            continue;
        }
        const size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto *found = std::find_if(std::begin(all_options), std::end(all_options),
                                         [&](const option &each) { return name == each.name; });
        if (found == std::end(all_options)) return word + ": no such option (--help lists them)";
        std::string value;
        if (found->value != nullptr) {
            if (equals == std::string::npos && i + 1 == argc)
                return name + ": " + found->value + " is missing";
            value = equals == std::string::npos ? argv[++i] : word.substr(equals + 1);
            if (value.empty()) return name + ": " + found->value + " is missing";
        } else if (equals != std::string::npos) {
            return name + ": takes no value";
        }
        if (std::string wrong = found->take(value, o); !wrong.empty()) return wrong;
    }
    if (o.open_roms && !o.roms.empty()) return "--open-roms and a folder of ROM images exclude each other";
    return {};
}

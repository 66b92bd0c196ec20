// The command line of `kiv`.
#pragma once

#include <string>

struct program_options {
    bool help = false, version = false;
    std::string roms;         // folder of ROM images; empty: the current directory
    bool open_roms = false;   // the ROM set that comes with Kiv
    bool user_folder = false; // work in a folder of the person's own
    std::string tape;         // tape image to put in
    std::string file;         // a state, a dump or a program to begin with
    bool full_screen = false;
    int scale = 0;        // screen pixels to a pixel of the machine; 0: as the person left the window
    int speed = 0;        // per cent of the machine's; 0: its own
    std::string language; // "ja", "en"; empty: as set
    std::string gdb;      // PORT or ADDRESS:PORT where a debugger may come; empty: nowhere
    std::string settings; // the machine's settings file; empty: KIV.INI in the current directory
};

// Fills `options`. What is wrong with the command line, as a line for the person; empty: nothing.
std::string read_command_line(int argc, const char *const *argv, program_options &options);

extern const char command_line_help[];

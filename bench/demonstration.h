// Boots the machine with a ROM set and starts the demonstration of ours, as a person does.
#pragma once

#include "machine/keyboard.h"
#include "machine/kiv_machine.h"
#include "machine/rom_loader.h"

#include <cstdio>
#include <string>

// The machine with the ROM images of a folder, reset; false, said on the standard error stream, without them.
// The two functions hold and let go of the text window and the planes.
inline bool boot_rom_set(const std::string &folder, const sound_listener &sound, void (*lock)(),
                         void (*unlock)()) {
    host_callbacks_listen(sound);
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(machine, lock, unlock);
    if (const std::string error = load_rom_images(folder); !error.empty()) {
        std::fprintf(stderr, "no ROM set: %s\n", error.c_str());
        return false;
    }
    machine.boot_rom = 1;
    machine.init_ram(machine);
    return true;
}

// Types DEMO and RETURN; `run_frames(n)` lets the machine run for n frames.
template <class Run> void start_demonstration(Run run_frames) {
    run_frames(30); // the title
    for (const uint32_t key : {0x44, 0x45, 0x4D, 0x4F, 0x0D}) {
        key_press(key);
        run_frames(3);
        key_release(key);
        run_frames(3);
    }
}

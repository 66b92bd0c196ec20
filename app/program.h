// The program from its start to its exit code, and its four long-lived objects.
#pragma once

#include "app/command_line.h"
#include "platform/host.h"

class kiv_assay;
class kiv_form;
class kiv_directx;
class z80_thread;

constexpr char program_title[] = "Zun - Velmora";

// The objects, each reached through its one pointer; null before run_program has made them and after it has
// destroyed them. Created in this order; destroyed kiv_directx, z80_thread, kiv_form, kiv_assay.
struct program_objects {
    kiv_assay *assay;
    kiv_form *form;
    kiv_directx *directx;
    z80_thread *cpu_thread;
};
extern program_objects program;

// Runs the whole program on a host, on its window thread; the resources are registered before. The exit
// code: 0 after a normal close, 1 for a second copy or a failed start.
int run_program(platform::host &host, const program_options &options = {});

// A message that the person must see: an OK box with the stop icon and no owner.
void show_failure(platform::host &host, const char *text);

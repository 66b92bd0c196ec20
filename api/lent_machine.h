// A machine that somebody else has booted and drives, lent to the flat interface: the program with the window
// lends its own to the debugger.
#pragma once

#include "sound/sound_slices.h"

class machine_owner {
  public:
    virtual sound_slices &sound() = 0;
    // A slice has ended. True: the owner closes it as soon as the run returns; false: it is rendered for
    // nobody, as in a past that is run again.
    virtual bool takes_slice() = 0;

  protected:
    ~machine_owner() = default;
};

// Pictures, the tape's output and what is typed by the owner stay the owner's. Null: the machine is taken
// back. For whoever drives the machine, between two passes.
void kiv_lend(machine_owner *owner);

// The folder of a person's own machine, for a start that has no other place: a menu, a file manager.
#pragma once

#include "app/command_line.h"
#include <string>

// ~/.local/share/kiv (XDG); empty without a home folder.
std::string user_folder();

// Makes it, when it is missing, the current directory; files named in `options` stay the ones that were
// meant. Why that is not possible, as a line for the person; empty: done.
std::string enter_user_folder(program_options &options);

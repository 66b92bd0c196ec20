// The tapes that the front end knows of, as its disk control sees them: a list, one of them in the deck.
#pragma once

#include <libretro.h>
#include <string>

// Registers the list with the front end.
void announce_tapes(retro_environment_t environment);

// Begins the list anew with the given content; false when it cannot be read.
bool tapes_begin(const retro_game_info &content);
void tapes_clear();

// Loads a snapshot that was made with one of the listed tapes, whichever it is. False: kiv_error_text tells.
bool load_with_its_tape(const void *snapshot, size_t size);

// The core's options, in English and in Japanese, and what they set.
#pragma once

#include <libretro.h>

// Tells the front end of the options, in the newest way that it knows.
void announce_options(retro_environment_t environment);

// The value of an option as the person has set it, or null.
const char *option_value(retro_environment_t environment, const char *key);
bool option_is(retro_environment_t environment, const char *key, const char *value);

// Hands those that concern the machine to it: some at once, some from the next reset on.
void apply_options(retro_environment_t environment);

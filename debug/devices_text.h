// The devices of the machine in words, with their bits decoded: for the console and for whoever shows them.
#pragma once

#include "debug/debug_words.h"
#include <string>
#include <utility>
#include <vector>

struct device_text {
    const char *name;                                       // "crtc"
    std::vector<std::pair<std::string, std::string>> lines; // what, and what it is now
};

// All of them, as they are now. Looking changes nothing.
std::vector<device_text> devices_now(debug_words words = nullptr);

// What the debugger says to a person, in the person's language. The console's is English.
#pragma once

#include <cstdio>
#include <string>

// `english`, a text or the format of one, in another language; `english` itself where there is no other. Null
// for such a function: English.
using debug_words = const char *(*)(const char *english);

const char *japanese_words(const char *english);

struct debug_teller {
    debug_words words = nullptr;
    const char *say(const char *english) const { return words != nullptr ? words(english) : english; }
    const char *on_off(bool on) const { return say(on ? "on" : "off"); }
    template <class... Values> std::string text_of(const char *format, Values... values) const {
        char text[256];
        std::snprintf(text, sizeof text, say(format), values...);
        return text;
    }
};

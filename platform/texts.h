// Texts that a person reads. The sources carry them in Japanese; where another language is chosen, the host
// translates them.
#pragma once

#include <string>

namespace platform {

// Of the desktop: Japanese where its locale is Japanese, C or POSIX, else English.
enum class language { of_desktop, japanese, english };

// `japanese` in the chosen language, UTF-8; as it is where there is no translation. Window thread.
std::string text(const char *japanese);

bool texts_are_japanese(); // likewise

// Null: none, the texts stay Japanese.
using text_translator = std::string (*)(const char *japanese);
void set_text_translator(text_translator translate);

} // namespace platform

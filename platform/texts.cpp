#include "platform/texts.h"

namespace platform {

namespace {

text_translator translator = nullptr;

} // namespace

std::string text(const char *japanese) { return translator != nullptr ? translator(japanese) : japanese; }

bool texts_are_japanese() { return translator == nullptr; }

void set_text_translator(text_translator translate) { translator = translate; }

} // namespace platform

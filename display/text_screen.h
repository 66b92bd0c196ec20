// The text screen in characters that people and programs read.
#pragma once

#include <cstddef>

// The text as a frame composed now would show it, in UTF-8: a line a row, each with its line end, without
// blanks at the end of a row. Semigraphic cells appear as the Braille pattern of the same dots. Writes what
// fits into `size` bytes with a 0 behind it and returns the length of the whole text; 0 while the text layer
// is off. The machine stays as it is.
size_t text_screen_utf8(char *buffer, size_t size);

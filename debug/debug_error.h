// What is wrong with something that a person wrote: one line, for that person.
#pragma once

#include <stdexcept>

struct debug_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

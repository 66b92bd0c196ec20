// Profile (INI) files: sections in square brackets, one "key=value" a line. Sections and keys are
// case-insensitive; comments and unknown keys survive a write.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace platform {

// The key's value as an integer: leading digits after an optional sign, else 0; `fallback` when the key or
// the file is missing. Saturates at the bounds of int.
int profile_int(const std::string &path, const std::string &section, const std::string &key, int fallback);

// The key's value as it stands, without blanks and quotes around it; empty when the key or the file is
// missing.
std::string profile_string(const std::string &path, const std::string &section, const std::string &key);

// Sets keys of one section, in order, in one atomic rewrite of the file. False when it cannot be written;
// the file is then as it was.
bool write_profile(const std::string &path, const std::string &section,
                   const std::vector<std::pair<std::string, std::string>> &values);

} // namespace platform

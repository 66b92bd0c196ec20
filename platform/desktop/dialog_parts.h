// What the dialogs share.
#pragma once

#include "platform/texts.h"
#include <QtCore/QString>
#include <string>

class QLayout;

namespace platform {

// In the chosen language.
inline QString translated(const char *japanese) { return QString::fromStdString(text(japanese)); }

inline QString text_of(const std::string &text) { return QString::fromStdString(text); }

// The icon with the program's two lines beside it.
QLayout *program_lines(const std::string &program, const std::string &copyright);

} // namespace platform

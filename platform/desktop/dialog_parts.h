// What the dialogs share.
#pragma once

#include "platform/texts.h"
#include <QtCore/QString>
#include <string>

class QLayout;
class QSize;
class QWidget;

namespace platform {

// In the chosen language.
inline QString translated(const char *japanese) { return QString::fromStdString(text(japanese)); }

inline QString text_of(const std::string &text) { return QString::fromStdString(text); }

// `wanted`, or what the desktop has room for beside a window's frame.
QSize within_desktop(const QWidget &window, const QSize &wanted);

// The icon with the program's two lines beside it.
QLayout *program_lines(const std::string &program, const std::string &copyright);

} // namespace platform

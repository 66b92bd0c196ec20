// The one dialog that is both about box and key reference.
#pragma once

#include "platform/host.h"

// 33 lines, each ended by CR LF; 1232 bytes in Shift-JIS.
extern const char help_text[];
// What those lines lack.
extern const char help_more[];

// What the help dialog shows.
platform::help_dialog make_help_dialog();

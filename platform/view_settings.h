// How a window shows the machine's picture.
#pragma once

namespace platform {

// What of a picture tube is shown: nothing, the dark lines between its raster lines, or a soft glowing
// picture behind a mask, too.
enum class crt_look { none, scan_lines, tube };

struct view_settings {
    crt_look look = crt_look::none;
    bool four_thirds = false;   // as the monitor, whose pixels are taller than wide; else square pixels
    bool whole_factors = false; // enlarged by whole numbers only, black around
};

} // namespace platform

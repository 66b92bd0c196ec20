// Enlarges the machine's picture to a screen area: whole pixels of the machine stay sharp, and where a pixel
// of the screen lies on the edge of two of them it takes its share of both. A frame costs what has changed
// since the last one: rows that are the same are not touched again.
//
// No Qt in here. One thread.
#pragma once

#include "platform/view_settings.h"
#include <cstdint>
#include <vector>

namespace platform {

struct row_span {
    int first, end; // rows, `end` outside
};

class picture_scaler {
  public:
    // Sizes in pixels, each at least 1. Forgets the last frame.
    void set_up(int source_width, int source_height, int width, int height, crt_look look);
    // Takes a frame (0x00RRGGBB, rows without gaps). The rows of the area that it has changed.
    const std::vector<row_span> &show(const uint32_t *frame);
    const uint32_t *pixels() const { return area.data(); } // width x height, 0xFFRRGGBB

  private:
    // The source pixels that lie under one of the area, with weights that add up to 256.
    struct coverage {
        int first, count;
        int weights; // index of the first one
    };
    static std::vector<coverage> cover(int source, int target, std::vector<int> &weights);
    void scale_row(int source_row);
    void write_row(int row);
    void plan_look(crt_look look);

    int source_width = 0, source_height = 0, width = 0, height = 0;
    crt_look look = crt_look::none;
    std::vector<coverage> columns, rows;
    std::vector<int> column_weights, row_weights;
    std::vector<uint16_t> row_gain; // of 256
    std::vector<uint16_t> mask;     // a byte's gain of 256, along a row; tube only
    std::vector<uint32_t> last;     // the frame as it was shown
    std::vector<uint32_t> scaled;   // every source row at the area's width
    std::vector<uint32_t> area;
    std::vector<uint32_t> soft; // a source row with its glow
    std::vector<row_span> changed;
    bool nothing_shown = true;
};

} // namespace platform

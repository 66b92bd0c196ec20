// The picture that a machine state stands for, one pixel at a time and straight from the rules.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

class picture_oracle {
  public:
    // 640 x 400 pixels of the machine as it stands, in frame order. Like the machine, the oracle keeps what
    // flows from row to row and from frame to frame.
    std::vector<uint32_t> picture(bool rgb, bool interlace);

  private:
    struct cell {
        int colour = 7; // 0-7, host order
        bool upper = false, under = false, semigraphic = false, reverse = false, secret = false;
        uint8_t code = 0;
    };
    // What holds at a place of a row: the last colour and the last character attribute.
    struct holding {
        uint8_t colour = 0; // the attribute byte it came from, 0 at power-on
        uint8_t character = 0;
        bool character_mono = true; // decoded as monochrome
        bool hidden = false;        // blinking, in the dark phase
    };
    std::array<cell, 80> cells(int row);
    static bool lit(const cell &c, int line, int bit, bool rows25);
    std::array<holding, 25> carried{};
};

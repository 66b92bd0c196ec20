// The keys of the host as virtual-key codes: the one list that the window, the program and the machine's
// keyboard share. Letters and digits of the main block are their own characters, 'A' to 'Z' and '0' to '9';
// the others are named after what a Japanese keyboard has printed on them. Depends on nothing.
#pragma once

#include <cstdint>

enum host_key : uint32_t {
    vk_none = 0,
    vk_back = 0x08,
    vk_tab = 0x09,
    vk_return = 0x0D,
    vk_shift = 0x10,
    vk_control = 0x11,
    vk_menu = 0x12, // Alt
    vk_pause = 0x13,
    vk_escape = 0x1B,
    vk_henkan = 0x1C,
    vk_muhenkan = 0x1D,
    vk_space = 0x20,
    vk_end = 0x23,
    vk_home = 0x24,
    vk_left = 0x25,
    vk_up = 0x26,
    vk_right = 0x27,
    vk_down = 0x28,
    vk_print = 0x2C,
    vk_insert = 0x2D,
    vk_delete = 0x2E,
    vk_left_logo = 0x5B,
    vk_right_logo = 0x5C,
    vk_numpad0 = 0x60, // to 9, in a row
    vk_multiply = 0x6A,
    vk_add = 0x6B,
    vk_separator = 0x6C, // the ten-key's comma
    vk_subtract = 0x6D,
    vk_decimal = 0x6E,
    vk_divide = 0x6F,
    vk_f1 = 0x70,
    vk_f2,
    vk_f3,
    vk_f4,
    vk_f5,
    vk_f6,
    vk_f7,
    vk_f8,
    vk_f9,
    vk_f10,
    vk_f11,
    vk_f12,
    vk_num_lock = 0x90,
    vk_scroll_lock = 0x91,
    vk_left_control = 0xA2,
    vk_right_control = 0xA3,
    vk_colon = 0xBA,
    vk_semicolon = 0xBB,
    vk_comma = 0xBC,
    vk_minus = 0xBD,
    vk_period = 0xBE,
    vk_slash = 0xBF,
    vk_at = 0xC0,
    vk_left_bracket = 0xDB,
    vk_yen = 0xDC,
    vk_right_bracket = 0xDD,
    vk_caret = 0xDE,
    vk_underscore = 0xE2, // ro
    vk_kana = 0xF0,

    // Keys of the machine by their place, row * 8 + bit, for those that no key of the original's host stood
    // for.
    vk_matrix = 0x100,
    vk_pad_equals = vk_matrix + 12,
    vk_pad_comma = vk_matrix + 13,
    vk_stop = vk_matrix + 72,
    vk_help = vk_matrix + 83,
    vk_copy = vk_matrix + 84,
    vk_pad_minus = vk_matrix + 85,
    vk_pad_divide = vk_matrix + 86,
    vk_caps = vk_matrix + 87,
};

#include "platform/desktop/key_map.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

struct key_entry {
    uint8_t evdev;
    uint32_t virtual_key;
};

// By place: the key right of P is "@" as on a Japanese keyboard, although a US keyboard has "[" printed on
// it.
//
// Keys that only some keyboards have, and what stands in for them:
//   yen                 ` (the key left of 1)
//   ro ( _ )            the extra key of ISO keyboards left of Z; Page Up
//   muhenkan (GRPH)     right Alt
//   henkan (kana)       the menu key; Page Down; Caps Lock, which sends 0xF0 on Japanese keyboards, too
//   both                eisu and kana beside the space bar of other Japanese keyboards
//   COPY, CAPS          Print Screen, Num Lock
constexpr key_entry entries[] = {
    {1, vk_escape}, // Esc
    {2, '1'},
    {3, '2'},
    {4, '3'},
    {5, '4'},
    {6, '5'},
    {7, '6'},
    {8, '7'},
    {9, '8'},
    {10, '9'},
    {11, '0'},
    {12, vk_minus}, // -
    {13, vk_caret}, // ^   (US: =)
    {14, vk_back},
    {15, vk_tab}, // Backspace, Tab
    {16, 'Q'},
    {17, 'W'},
    {18, 'E'},
    {19, 'R'},
    {20, 'T'},
    {21, 'Y'},
    {22, 'U'},
    {23, 'I'},
    {24, 'O'},
    {25, 'P'},
    {26, vk_at},           // @   (US: [)
    {27, vk_left_bracket}, // [   (US: ])
    {28, vk_return},
    {29, vk_control}, // Return, left Ctrl
    {30, 'A'},
    {31, 'S'},
    {32, 'D'},
    {33, 'F'},
    {34, 'G'},
    {35, 'H'},
    {36, 'J'},
    {37, 'K'},
    {38, 'L'},
    {39, vk_semicolon},     // ;
    {40, vk_colon},         // :   (US: ')
    {41, vk_yen},           // stand-in for yen
    {42, vk_shift},         // left Shift
    {43, vk_right_bracket}, // ]   (US: \ above Return)
    {44, 'Z'},
    {45, 'X'},
    {46, 'C'},
    {47, 'V'},
    {48, 'B'},
    {49, 'N'},
    {50, 'M'},
    {51, vk_comma},
    {52, vk_period},
    {53, vk_slash},    // , . /
    {54, vk_shift},    // right Shift
    {55, vk_multiply}, // keypad *
    {56, vk_menu},     // left Alt
    {57, vk_space},
    {58, vk_kana}, // space, Caps Lock (eisu)
    {59, vk_f1},
    {60, vk_f2},
    {61, vk_f3},
    {62, vk_f4},
    {63, vk_f5},
    {64, vk_f6},
    {65, vk_f7},
    {66, vk_f8},
    {67, vk_f9},
    {68, vk_f10}, // F1 to F10
    {69, vk_caps},
    {70, vk_scroll_lock}, // Num Lock, Scroll Lock
    {71, vk_numpad0 + 7},
    {72, vk_numpad0 + 8},
    {73, vk_numpad0 + 9},
    {74, vk_pad_minus}, // keypad 7 8 9 -
    {75, vk_numpad0 + 4},
    {76, vk_numpad0 + 5},
    {77, vk_numpad0 + 6},
    {78, vk_add}, // keypad 4 5 6 +
    {79, vk_numpad0 + 1},
    {80, vk_numpad0 + 2},
    {81, vk_numpad0 + 3},
    {82, vk_numpad0},
    {83, vk_decimal},    // keypad 1 2 3 0 .
    {86, vk_underscore}, // ISO key left of Z: ro
    {87, vk_f11},
    {88, vk_f12},        // F11 F12
    {89, vk_underscore}, // ro
    {90, vk_kana},
    {91, vk_kana},      // katakana, hiragana
    {92, vk_henkan},    // henkan
    {93, vk_kana},      // kana
    {94, vk_muhenkan},  // muhenkan
    {95, vk_pad_comma}, // keypad , (Japanese)
    {96, vk_return},
    {97, vk_control},
    {98, vk_pad_divide}, // Enter, right Ctrl, keypad /
    {99, vk_copy},       // Print Screen
    {100, vk_muhenkan},  // right Alt
    {102, vk_home},
    {103, vk_up},
    {104, vk_underscore}, // Home, up, Page Up
    {105, vk_left},
    {106, vk_right},
    {107, vk_end},
    {108, vk_down},
    {109, vk_henkan}, // left, right, End, down, Page Down
    {110, vk_insert},
    {111, vk_delete},     // Insert, Delete
    {117, vk_pad_equals}, // keypad =
    {119, vk_pause},      // Pause
    {121, vk_pad_comma},  // keypad ,
    {122, vk_henkan},
    {123, vk_muhenkan}, // kana, eisu beside the space bar
    {124, vk_yen},      // yen
    {125, vk_left_logo},
    {126, vk_right_logo},
    {127, vk_henkan}, // left and right logo key, menu
};

constexpr auto table = [] {
    std::array<uint16_t, 128> t{};
    for (const key_entry e : entries) t[e.evdev] = static_cast<uint16_t>(e.virtual_key);
    return t;
}();

} // namespace

uint32_t virtual_key_of_evdev(uint32_t code) { return code < table.size() ? table[code] : 0; }

uint32_t virtual_key_with_alt(uint32_t code) {
    constexpr key_entry with_alt[] = {
        {14, vk_stop},       {12, vk_pad_minus}, {13, vk_pad_equals}, {51, vk_pad_comma},
        {53, vk_pad_divide}, {58, vk_caps},      {87, vk_help},       {88, vk_copy}, // Caps Lock, F11, F12
    };
    for (const key_entry e : with_alt)
        if (e.evdev == code) return e.virtual_key;
    return 0;
}

bool key_tracker::press(uint32_t id, uint32_t virtual_key) { return held.emplace(id, virtual_key).second; }

uint32_t key_tracker::release(uint32_t id) {
    const auto found = held.find(id);
    if (found == held.end()) return 0;
    const uint32_t virtual_key = found->second;
    held.erase(found);
    return is_held(virtual_key) ? 0 : virtual_key;
}

std::vector<uint32_t> key_tracker::release_all() {
    std::vector<uint32_t> keys;
    for (const auto &[id, virtual_key] : held)
        if (!is_command(virtual_key) && std::find(keys.begin(), keys.end(), virtual_key) == keys.end())
            keys.push_back(virtual_key);
    held.clear();
    return keys;
}

std::vector<uint32_t> key_tracker::release_from(uint32_t first_id) {
    std::vector<uint32_t> keys;
    for (auto key = held.lower_bound(first_id); key != held.end();) {
        if (key->second == vk_shift || key->second == vk_control || is_command(key->second)) {
            ++key;
            continue;
        }
        keys.push_back(key->second);
        key = held.erase(key);
    }
    return keys;
}

bool key_tracker::is_held(uint32_t virtual_key) const {
    return std::any_of(held.begin(), held.end(), [=](const auto &key) { return key.second == virtual_key; });
}

} // namespace platform

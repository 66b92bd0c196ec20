#include "platform/desktop/key_map.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

struct key_entry {
    uint8_t evdev, virtual_key;
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
constexpr key_entry entries[] = {
    {1, 0x1B}, // Esc
    {2, '1'},    {3, '2'},    {4, '3'},    {5, '4'},    {6, '5'},    {7, '6'},
    {8, '7'},    {9, '8'},    {10, '9'},   {11, '0'},   {12, 0xBD}, // -
    {13, 0xDE},                                                     // ^   (US: =)
    {14, 0x08},  {15, 0x09},                                        // Backspace, Tab
    {16, 'Q'},   {17, 'W'},   {18, 'E'},   {19, 'R'},   {20, 'T'},   {21, 'Y'},
    {22, 'U'},   {23, 'I'},   {24, 'O'},   {25, 'P'},   {26, 0xC0}, // @   (US: [)
    {27, 0xDB},                                                     // [   (US: ])
    {28, 0x0D},  {29, 0x11},                                        // Return, left Ctrl
    {30, 'A'},   {31, 'S'},   {32, 'D'},   {33, 'F'},   {34, 'G'},   {35, 'H'},
    {36, 'J'},   {37, 'K'},   {38, 'L'},   {39, 0xBB}, // ;
    {40, 0xBA},                                        // :   (US: ')
    {41, 0xDC},                                        // stand-in for yen
    {42, 0x10},                                        // left Shift
    {43, 0xDD},                                        // ]   (US: \ above Return)
    {44, 'Z'},   {45, 'X'},   {46, 'C'},   {47, 'V'},   {48, 'B'},   {49, 'N'},
    {50, 'M'},   {51, 0xBC},  {52, 0xBE},  {53, 0xBF}, // , . /
    {54, 0x10},                                        // right Shift
    {55, 0x6A},                                        // keypad *
    {56, 0x12},                                        // left Alt
    {57, 0x20},  {58, 0xF0},                           // space, Caps Lock (eisu)
    {59, 0x70},  {60, 0x71},  {61, 0x72},  {62, 0x73},  {63, 0x74},  {64, 0x75},
    {65, 0x76},  {66, 0x77},  {67, 0x78},  {68, 0x79},               // F1 to F10
    {69, 0x90},  {70, 0x91},                                         // Num Lock, Scroll Lock
    {71, 0x67},  {72, 0x68},  {73, 0x69},  {74, 0x6D},               // keypad 7 8 9 -
    {75, 0x64},  {76, 0x65},  {77, 0x66},  {78, 0x6B},               // keypad 4 5 6 +
    {79, 0x61},  {80, 0x62},  {81, 0x63},  {82, 0x60},  {83, 0x6E},  // keypad 1 2 3 0 .
    {86, 0xE2},                                                      // ISO key left of Z: ro
    {87, 0x7A},  {88, 0x7B},                                         // F11 F12
    {89, 0xE2},                                                      // ro
    {90, 0xF0},  {91, 0xF0},                                         // katakana, hiragana
    {92, 0x1C},                                                      // henkan
    {93, 0xF0},                                                      // kana
    {94, 0x1D},                                                      // muhenkan
    {95, 0x6C},                                                      // keypad , (Japanese)
    {96, 0x0D},  {97, 0x11},  {98, 0x6F},                            // Enter, right Ctrl, keypad /
    {99, 0x2C},                                                      // Print Screen
    {100, 0x1D},                                                     // right Alt
    {102, 0x24}, {103, 0x26}, {104, 0xE2},                           // Home, up, Page Up
    {105, 0x25}, {106, 0x27}, {107, 0x23}, {108, 0x28}, {109, 0x1C}, // left, right, End, down, Page Down
    {110, 0x2D}, {111, 0x2E},                                        // Insert, Delete
    {119, 0x13},                                                     // Pause
    {121, 0x6C},                                                     // keypad ,
    {122, 0x1C}, {123, 0x1D},                                        // kana, eisu beside the space bar
    {124, 0xDC},                                                     // yen
    {125, 0x5B}, {126, 0x5C}, {127, 0x1C},                           // left and right logo key, menu
};

constexpr auto table = [] {
    std::array<uint8_t, 128> t{};
    for (const key_entry e : entries) t[e.evdev] = e.virtual_key;
    return t;
}();

} // namespace

uint32_t virtual_key_of_evdev(uint32_t code) { return code < table.size() ? table[code] : 0; }

bool is_command_key(uint32_t virtual_key) {
    return (virtual_key >= vk_f6 && virtual_key <= vk_f12) || virtual_key == vk_pause ||
           virtual_key == vk_end;
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
        if (!is_command_key(virtual_key) && std::find(keys.begin(), keys.end(), virtual_key) == keys.end())
            keys.push_back(virtual_key);
    held.clear();
    return keys;
}

std::vector<uint32_t> key_tracker::release_from(uint32_t first_id) {
    std::vector<uint32_t> keys;
    for (auto key = held.lower_bound(first_id); key != held.end();) {
        if (key->second == vk_shift || key->second == vk_control || is_command_key(key->second)) {
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

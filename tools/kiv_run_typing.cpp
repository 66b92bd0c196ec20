#include "tools/kiv_run_typing.h"

#include "machine/keyboard.h"
#include "tools/kiv_run_options.h"

#include <cstring>
#include <optional>
#include <utility>

namespace {

constexpr uint64_t shift_lead = 1; // frames that shift is down before its key, and after
constexpr uint64_t key_down = 3;   // frames a key is held
constexpr uint64_t key_gap = 3;    // frames to the next key
constexpr uint64_t pause_frames = 28;

constexpr uint32_t vk_shift = 0x10;
constexpr uint32_t vk_return = 0x0D;

struct stroke {
    uint32_t virtual_key;
    bool shifted;
};

// The keys of a Japanese keyboard, with the character that each types alone and with shift. '_' has a key of
// its own, which types it with shift.
constexpr struct {
    char plain, with_shift;
    uint32_t virtual_key;
} mark_keys[] = {
    {'1', '!', '1'},  {'2', '"', '2'},  {'3', '#', '3'},   {'4', '$', '4'},      {'5', '%', '5'},
    {'6', '&', '6'},  {'7', '\'', '7'}, {'8', '(', '8'},   {'9', ')', '9'},      {'0', 0, '0'},
    {'-', '=', 0xBD}, {'^', '~', 0xDE}, {'\\', '|', 0xDC}, {'@', '`', 0xC0},     {'[', '{', 0xDB},
    {';', '+', 0xBB}, {':', '*', 0xBA}, {']', '}', 0xDD},  {',', '<', 0xBC},     {'.', '>', 0xBE},
    {'/', '?', 0xBF}, {0, '_', 0xE2},   {' ', 0, 0x20},    {'\n', 0, vk_return},
};

std::optional<stroke> stroke_of(char c) {
    if (c >= 'a' && c <= 'z') return stroke{static_cast<uint32_t>(c - 'a' + 'A'), false};
    if (c >= 'A' && c <= 'Z') return stroke{static_cast<uint32_t>(c), true};
    for (const auto &key : mark_keys) {
        if (c != 0 && c == key.plain) return stroke{key.virtual_key, false};
        if (c != 0 && c == key.with_shift) return stroke{key.virtual_key, true};
    }
    return std::nullopt;
}

constexpr std::pair<char, uint32_t> escape_keys[] = {
    {'n', vk_return}, {'e', 0x1B}, {'t', 0x09}, {'b', 0x08},
    {'u', 0x26},      {'d', 0x28}, {'l', 0x25}, {'r', 0x27},
};

// The whole UTF-8 character at `at`, for a message.
std::string character_at(const std::string &text, size_t at) {
    size_t end = at + 1;
    while (end < text.size() && (static_cast<uint8_t>(text[end]) & 0xC0) == 0x80) ++end;
    return text.substr(at, end - at);
}

} // namespace

void typist::add_key(uint32_t virtual_key, bool shifted) {
    if (shifted) {
        actions.push_back({now, vk_shift, true});
        now += shift_lead;
    }
    actions.push_back({now, virtual_key, true});
    now += key_down;
    actions.push_back({now, virtual_key, false});
    if (shifted) {
        now += shift_lead;
        actions.push_back({now, vk_shift, false});
    }
    now += key_gap;
}

typist::typist(const std::string &text, uint64_t first_frame) : now(first_frame) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "¥") == 0) { // the yen sign, as UTF-8, lies on the backslash's key
            add_key(0xDC, false);
            ++i;
            continue;
        }
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] != '\\') {
            const char escape = text[++i];
            if (escape == 'p') {
                now += pause_frames;
                continue;
            }
            if (escape == 'f' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '5') {
                add_key(0x70 + static_cast<uint32_t>(text[++i] - '1'), false);
                continue;
            }
            uint32_t key = 0;
            for (const auto &[letter, virtual_key] : escape_keys)
                if (letter == escape) key = virtual_key;
            if (key == 0) throw run_failure("--type: \\" + character_at(text, i) + " stands for no key");
            add_key(key, false);
            continue;
        }
        if (text[i] == '\\' && i + 1 < text.size()) ++i; // a doubled backslash is one
        const std::optional<stroke> found = stroke_of(text[i]);
        if (!found) throw run_failure("--type: no key types '" + character_at(text, i) + "'");
        add_key(found->virtual_key, found->shifted);
    }
}

void typist::at_frame(uint64_t frame) {
    for (; next < actions.size() && actions[next].frame <= frame; ++next) {
        const action &a = actions[next];
        if (a.press)
            key_press(a.virtual_key);
        else
            key_release(a.virtual_key);
    }
}

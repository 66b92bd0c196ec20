#include "api/typing.h"

#include "machine/keyboard.h"
#include <cstring>

namespace {

constexpr uint32_t shift_lead = 1; // frames that shift is down before its key, and after
constexpr uint32_t key_down_frames = 3;
constexpr uint32_t key_gap = 3; // frames to the next key

constexpr uint8_t vk_shift = 0x10;

enum entry_kind : uint8_t { plain_key, shifted_key, pause_entry };

// The keys of a Japanese keyboard, with the character that each types alone and with shift. '_' has a key of
// its own, which types it with shift.
constexpr struct {
    char plain, with_shift;
    uint8_t virtual_key;
} mark_keys[] = {
    {'1', '!', '1'},  {'2', '"', '2'},  {'3', '#', '3'},   {'4', '$', '4'},  {'5', '%', '5'},
    {'6', '&', '6'},  {'7', '\'', '7'}, {'8', '(', '8'},   {'9', ')', '9'},  {'0', 0, '0'},
    {'-', '=', 0xBD}, {'^', '~', 0xDE}, {'\\', '|', 0xDC}, {'@', '`', 0xC0}, {'[', '{', 0xDB},
    {';', '+', 0xBB}, {':', '*', 0xBA}, {']', '}', 0xDD},  {',', '<', 0xBC}, {'.', '>', 0xBE},
    {'/', '?', 0xBF}, {0, '_', 0xE2},   {' ', 0, 0x20},    {'\n', 0, 0x0D},  {'\r', 0, 0x0D},
    {'\t', 0, 0x09},  {0x1B, 0, 0x1B},
};

constexpr uint32_t yen_sign = 0xA5; // on the backslash's key

} // namespace

bool stroke_of(uint32_t character, key_stroke &stroke) {
    if (character == yen_sign) character = '\\';
    if (character == 0 || character >= 0x80) return false;
    const char c = static_cast<char>(character);
    if (c >= 'a' && c <= 'z') {
        stroke = {static_cast<uint8_t>(c - 'a' + 'A'), false};
        return true;
    }
    if (c >= 'A' && c <= 'Z') {
        stroke = {static_cast<uint8_t>(c), true};
        return true;
    }
    for (const auto &key : mark_keys) {
        if (c != key.plain && c != key.with_shift) continue;
        stroke = {key.virtual_key, c != key.plain};
        return true;
    }
    return false;
}

uint32_t next_character(const char *&text) {
    const auto byte = [&text] { return static_cast<uint8_t>(*text); };
    if (byte() == 0) return 0;
    uint32_t character = byte();
    ++text;
    int more = character >= 0xF0 ? 3 : character >= 0xE0 ? 2 : character >= 0xC0 ? 1 : 0;
    if (more != 0) character &= 0x3Fu >> more;
    for (; more > 0 && (byte() & 0xC0) == 0x80; --more, ++text) character = character << 6 | (byte() & 0x3F);
    return character;
}

uint32_t stroke_held_frames(bool shifted) { return key_down_frames + (shifted ? 2 * shift_lead : 0); }
uint32_t stroke_frames(bool shifted) { return stroke_held_frames(shifted) + key_gap; }

bool typist::put(uint8_t kind, uint8_t virtual_key, uint32_t frames) {
    if (waiting() == 0) {
        queue.clear();
        done = 0;
        due = this_frame;
    }
    return queue.reserve(queue.size() + entry_size) && queue.put(kind) && queue.put(virtual_key) &&
           queue.put(static_cast<uint8_t>(frames)) && queue.put(static_cast<uint8_t>(frames >> 8));
}

bool typist::add(const key_stroke &stroke) {
    return put(stroke.shifted ? shifted_key : plain_key, stroke.virtual_key, 0);
}

bool typist::add_pause(uint32_t frames) { return put(pause_entry, 0, frames < 0xFFFF ? frames : 0xFFFF); }

void typist::act() {
    const bool shifted = entry()[0] == shifted_key;
    switch (now) {
    case stage::idle:
        if (entry()[0] == pause_entry) {
            due += entry()[2] + 0x100u * entry()[3];
            now = stage::over;
        } else {
            now = shifted ? stage::shift_down : stage::key_down;
        }
        break;
    case stage::shift_down:
        key_press(vk_shift);
        due += shift_lead;
        now = stage::key_down;
        break;
    case stage::key_down:
        key_press(entry()[1]);
        due += key_down_frames;
        now = stage::key_up;
        break;
    case stage::key_up:
        key_release(entry()[1]);
        due += shifted ? shift_lead : key_gap;
        now = shifted ? stage::shift_up : stage::over;
        break;
    case stage::shift_up:
        key_release(vk_shift);
        due += key_gap;
        now = stage::over;
        break;
    case stage::over:
        done += entry_size;
        now = stage::idle;
        break;
    }
}

void typist::at_frame(uint64_t frame) {
    this_frame = frame;
    while (waiting() != 0 && due <= frame) act();
}

void typist::cancel() {
    if (waiting() != 0) {
        if (now == stage::key_up) key_release(entry()[1]);
        const bool shift_is_down = now == stage::key_down || now == stage::key_up || now == stage::shift_up;
        if (shift_is_down && entry()[0] == shifted_key) key_release(vk_shift);
    }
    forget();
}

void typist::forget() {
    queue.clear();
    done = 0;
    now = stage::idle;
}

size_t typist::saved_size() const { return saved_head + queue.size() - done; }

void typist::save(uint8_t *bytes) const {
    bytes[0] = static_cast<uint8_t>(now);
    std::memcpy(bytes + 1, &this_frame, sizeof this_frame);
    std::memcpy(bytes + 1 + sizeof this_frame, &due, sizeof due);
    if (queue.size() != done) std::memcpy(bytes + saved_head, queue.data() + done, queue.size() - done);
}

bool typist::load(const uint8_t *bytes, size_t size) {
    if (size < saved_head || (size - saved_head) % entry_size != 0 ||
        bytes[0] > static_cast<uint8_t>(stage::over) || !queue.assign(bytes + saved_head, size - saved_head))
        return false;
    done = 0;
    now = static_cast<stage>(bytes[0]);
    std::memcpy(&this_frame, bytes + 1, sizeof this_frame);
    std::memcpy(&due, bytes + 1 + sizeof this_frame, sizeof due);
    return true;
}

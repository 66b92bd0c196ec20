#include "app/character_keys.h"

#include "api/typing.h"
#include "machine/keyboard.h"
#include "support/host_keys.h"

void character_keys::shift(bool down) {
    if (down == machine_shift) return;
    machine_shift = down;
    down ? key_press(vk_shift) : key_release(vk_shift);
}

void character_keys::press(uint32_t virtual_key, uint32_t character) {
    key_stroke stroke{};
    if (virtual_key == vk_shift) {
        host_shift = true;
        if (decides == 0) shift(true);
    } else if (character > ' ' && stroke_of(character, stroke)) {
        const bool shift_changes = stroke.shifted != machine_shift;
        shift(stroke.shifted);
        decides = virtual_key;
        held[virtual_key] = stroke.virtual_key;
        shift_changes ? key_press_later(stroke.virtual_key) : key_press(stroke.virtual_key);
    } else {
        key_press(virtual_key);
    }
}

void character_keys::release(uint32_t virtual_key) {
    if (virtual_key == vk_shift) {
        host_shift = false;
        if (decides == 0) shift(false);
        return;
    }
    const auto found = held.find(virtual_key);
    key_release(found == held.end() ? virtual_key : found->second);
    if (found != held.end()) held.erase(found);
    if (decides != virtual_key) return;
    decides = 0;
    shift(host_shift);
}

void character_keys::forget() { *this = {}; }

#include "machine/kiv_machine.h"
#include "support/host_keys.h"

#include <array>

namespace {

constexpr uint8_t no_key = 0xFF;

constexpr uint8_t key(int row, int bit) { return static_cast<uint8_t>(row * 8 + bit); }

// The matrix ends within row 11: what lies behind is no key, no_key included.
constexpr uint8_t matrix_keys = key(11, 2);

constexpr std::array<uint8_t, 256> standard_keys() {
    std::array<uint8_t, 256> index{};
    const auto run = [&index](size_t first, size_t count, uint8_t first_key) {
        for (size_t i = 0; i < count; ++i) index[first + i] = static_cast<uint8_t>(first_key + i);
    };
    index.fill(no_key);
    run(vk_numpad0, 10, key(0, 0));                                                   // ten-key 0-9
    index[vk_multiply] = key(1, 2);                                                   // ten-key *
    index[vk_add] = key(1, 3);                                                        // ten-key +
    index[vk_decimal] = key(1, 6);                                                    // ten-key .
    index[vk_return] = key(1, 7);                                                     // return
    index[vk_at] = key(2, 0);                                                         // @
    run('A', 26, key(2, 1));                                                          // A-Z
    run(vk_left_bracket, 4, key(5, 3));                                               // [ yen ] ^
    index[vk_minus] = key(5, 7);                                                      // -
    run('0', 10, key(6, 0));                                                          // 0-9
    run(vk_colon, 3, key(7, 2));                                                      // : ; ,
    run(vk_period, 2, key(7, 5));                                                     // . /
    index[vk_underscore] = key(7, 7);                                                 // _
    index[vk_home] = key(8, 0);                                                       // HOME CLR
    index[vk_up] = key(8, 1);                                                         // up
    index[vk_right] = key(8, 2);                                                      // right
    index[vk_insert] = index[vk_delete] = key(8, 3);                                  // INS DEL
    index[vk_muhenkan] = key(8, 4);                                                   // GRPH
    index[vk_henkan] = index[vk_kana] = key(8, 5);                                    // kana
    index[vk_shift] = key(8, 6);                                                      // SHIFT
    index[vk_control] = index[vk_left_control] = index[vk_right_control] = key(8, 7); // CTRL
    index[vk_back] = key(9, 0);                                                       // STOP
    run(vk_f1, 5, key(9, 1));                                                         // F1-F5
    index[vk_space] = key(9, 6);                                                      // space
    index[vk_escape] = key(9, 7);                                                     // ESC
    index[vk_tab] = key(10, 0);                                                       // TAB
    index[vk_down] = key(10, 1);                                                      // down
    index[vk_left] = key(10, 2);                                                      // left
    return index;
}

// Virtual-key code to key index, or no_key. Four entries follow map_cursor_keys.
std::array<uint8_t, 256> virtual_keys = standard_keys();

constexpr uint8_t caps_key = key(10, 7);

uint8_t key_of(uint32_t virtual_key) {
    if (virtual_key < virtual_keys.size()) return virtual_keys[virtual_key];
    const uint32_t place = virtual_key - vk_matrix;
    return place < key(11, 0) ? static_cast<uint8_t>(place) : no_key;
}

// A key that is pressed during one frame is down at the two retraces that follow, and is released as the
// third begins, before a program looks there. A second press waits until the release was seen at two,
// likewise.
constexpr uint32_t retraces_down = 3, retraces_up = 2;

bool is_past(uint32_t due, uint32_t now) { return static_cast<int32_t>(now - due) >= 0; }

// Two threads change bits of the same byte.
void change_matrix(uint8_t index, bool down) {
    const auto bit = static_cast<uint8_t>(1u << index % 8);
    uint8_t &row = machine.key_matrix[index / 8 % key_rows].value;
    if (down)
        __atomic_fetch_and(&row, static_cast<uint8_t>(~bit), __ATOMIC_RELAXED);
    else
        __atomic_fetch_or(&row, bit, __ATOMIC_RELAXED);
}

bool held = false;

key_change &change_number(uint32_t n) { return machine.key_changes[n % key_changes_size]; }

uint32_t changes_made() { return __atomic_load_n(&machine.key_changes_made.value, __ATOMIC_ACQUIRE); }

// The last change of this key that waits; none: nullptr.
const key_change *waiting_change(uint8_t index) {
    const uint32_t made = changes_made();
    for (uint32_t n = machine.key_changes_asked; n != made; --n)
        if (change_number(n - 1).key == index) return &change_number(n - 1);
    return nullptr;
}

// After whatever waits already. With more waiting than a person could have typed, presses are lost and
// releases come early.
void wait_with_change(uint8_t index, bool down, uint32_t due) {
    const uint32_t made = changes_made(), asked = machine.key_changes_asked;
    if (asked - made >= (down ? key_changes_size / 4 : key_changes_size)) return;
    if (asked != made && is_past(due, change_number(asked - 1).due)) due = change_number(asked - 1).due;
    if (down) machine.key_pressed_at[index] = due - 1; // as if in the frame before
    key_change &change = change_number(asked);
    change.due = due;
    change.key = index;
    change.down = uint8_t{down};
    __atomic_store_n(&machine.key_changes_asked.value, asked + 1, __ATOMIC_RELEASE);
}

} // namespace

void key_press(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    if (index >= matrix_keys) return;
    if (index == caps_key) return change_matrix(index, !is_key_held(index));
    if (const key_change *last = waiting_change(index)) {
        if (last->down == 0) wait_with_change(index, true, last->due + retraces_up);
        return;
    }
    // Behind a release that waits, say of SHIFT: the letter after it would else come out shifted.
    if (machine.key_changes_asked != changes_made())
        return wait_with_change(index, true, machine.key_retraces);
    machine.key_pressed_at[index] = machine.key_retraces.load();
    change_matrix(index, true);
}

void key_press_later(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    if (index >= matrix_keys || index == caps_key || waiting_change(index) != nullptr)
        return key_press(virtual_key);
    wait_with_change(index, true, machine.key_retraces + 1);
}

void key_release(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    if (index >= matrix_keys || index == caps_key) return;
    const uint32_t due = machine.key_pressed_at[index] + retraces_down;
    if (machine.key_changes_asked == changes_made() && is_past(due, machine.key_retraces))
        change_matrix(index, false);
    else
        wait_with_change(index, false, due);
}

void keyboard_hold(bool on) { held = on; }

void keyboard_retrace() {
    if (held) return;
    const uint32_t now = machine.key_retraces = machine.key_retraces + 1;
    const uint32_t asked = __atomic_load_n(&machine.key_changes_asked.value, __ATOMIC_ACQUIRE);
    uint32_t made = machine.key_changes_made;
    for (; made != asked && is_past(change_number(made).due, now); ++made)
        change_matrix(change_number(made).key, change_number(made).down != 0);
    __atomic_store_n(&machine.key_changes_made.value, made, __ATOMIC_RELEASE);
}

bool is_key_held(uint32_t place) {
    return place < key_rows * 8 && (machine.key_matrix[place / 8] >> place % 8 & 1) == 0;
}

uint8_t key_place(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    return index < matrix_keys ? index : no_key;
}

void map_cursor_keys(bool tenkeyless) {
    virtual_keys[vk_left] = tenkeyless ? key(0, 4) : key(10, 2);
    virtual_keys[vk_up] = tenkeyless ? key(1, 0) : key(8, 1);
    virtual_keys[vk_right] = tenkeyless ? key(0, 6) : key(8, 2);
    virtual_keys[vk_down] = tenkeyless ? key(0, 2) : key(10, 1);
}

void map_back_key(bool deletes) { virtual_keys[vk_back] = deletes ? key(8, 3) : key(9, 0); }

void reset_keyboard(kiv_machine &m) {
    // Put there whole: rows of zeroes in between would be every key, for a program that looks just then.
    key_matrix_block nothing{};
    for (auto &row : nothing.key_matrix) row = uint8_t{0xFF};
    static_cast<key_matrix_block &>(m) = nothing;
}

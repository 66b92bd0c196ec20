// Keys: which of them reach the listener, and as what.
#include "platform/desktop/desktop_window_parts.h"

#include "platform/desktop/qt_keys.h"
#include <QtGui/QGuiApplication>

namespace platform {

namespace {

constexpr uint32_t evdev_offset = 8; // native scan codes are the kernel's key codes plus this
constexpr uint32_t left_alt_scan = 56 + evdev_offset, right_alt_scan = 100 + evdev_offset;
constexpr uint32_t no_scan_code = 0x10000; // ids of keys without one start here
constexpr uint64_t auto_repeat = 1 << 30;

} // namespace

void desktop_window::disable_input_method() { view->setAttribute(Qt::WA_InputMethodEnabled, false); }

// During a key message as of that key, as pressing and letting go may both be past when it is handled.
bool desktop_window::shift_down() const {
    if (in_key_event) return key_event_shift;
    return (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) != 0;
}

void desktop_window::release_held_keys() {
    for (const uint32_t key : keys.release_all()) send(wm_key_up, key, 0);
}

// What a key event says, before anything is made of it.
struct desktop_window::key_stroke {
    uint32_t scan;
    uint32_t virtual_key;
    uint32_t id;   // what tells this key from others while it is held
    uint64_t sign; // what the layout makes of it, as wm_key_down has it
    bool is_alt;   // the left one, which belongs to the desktop
    bool with_alt; // held with the desktop's Alt
    bool repeated;
};

desktop_window::key_stroke desktop_window::read_key(const QKeyEvent &e) const {
    key_stroke k{};
    k.scan = e.nativeScanCode();
    k.virtual_key = k.scan >= evdev_offset
                        ? virtual_key_of_evdev(k.scan - evdev_offset)
                        : virtual_key_of_qt(e.key(), (e.modifiers() & Qt::KeypadModifier) != 0);
    k.id = k.scan != 0 ? k.scan : no_scan_code + k.virtual_key;
    k.is_alt = k.scan == left_alt_scan || (k.scan == 0 && k.virtual_key == vk_menu);
    // The right Alt stands in for a key of the machine.
    k.with_alt = (e.modifiers() & Qt::AltModifier) != 0 && !keys.is_id_held(right_alt_scan) &&
                 k.scan != right_alt_scan && !k.is_alt;
    k.repeated = e.isAutoRepeat();
    k.sign = sign_of(e);
    if (k.with_alt && k.scan >= evdev_offset)
        if (const uint32_t key = virtual_key_with_alt(k.scan - evdev_offset); key != 0) {
            k.virtual_key = key;
            k.sign = 0;
            k.with_alt = false;
        }
    return k;
}

// What the layout prints, in the form of wm_key_down. Of the ten-key the place counts; with Ctrl the letter
// does.
uint64_t desktop_window::sign_of(const QKeyEvent &e) {
    if (e.nativeScanCode() == right_alt_scan && e.key() == Qt::Key_AltGr) return key_of_layout;
    if ((e.modifiers() & Qt::KeypadModifier) != 0) return 0;
    if ((e.modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) != 0)
        return e.key() >= Qt::Key_A && e.key() <= Qt::Key_Z
                   ? static_cast<uint64_t>(e.key() - Qt::Key_A + 'a') << key_sign_shift
                   : 0;
    const QList<uint> text = e.text().toUcs4();
    return text.size() == 1 && text[0] > ' ' && text[0] != 0x7F ? uint64_t{text[0]} << key_sign_shift : 0;
}

// True: dealt with.
bool desktop_window::key_event(QKeyEvent &e) {
    const key_stroke k = read_key(e);
    if (e.type() == QEvent::ShortcutOverride) {
        // Else Alt alone would open the menu and stick there, and keys would be taken for shortcuts.
        if (k.with_alt) return false;
        e.accept();
        return true;
    }
    e.accept();
    if (k.is_alt || k.virtual_key == 0) return true;
    in_key_event = true;
    key_event_shift = (e.modifiers() & Qt::ShiftModifier) != 0;
    if (e.type() == QEvent::KeyPress)
        key_pressed(k);
    else if (!k.repeated)
        key_released(k);
    in_key_event = false;
    return true;
}

void desktop_window::key_pressed(const key_stroke &k) {
    if (k.with_alt) {
        if (k.virtual_key == vk_f4 && !k.repeated) post(wm_close, 0, 0);
    } else if (k.virtual_key == vk_f10) {
        if (!k.repeated) open_menu();
    } else if (!k.repeated) {
        send(wm_key_down, k.virtual_key, (keys.press(k.id, k.virtual_key) ? 0 : auto_repeat) | k.sign);
    } else if (keys.is_id_held(k.id)) {
        send(wm_key_down, k.virtual_key, auto_repeat);
    }
}

void desktop_window::key_released(const key_stroke &k) {
    if (k.scan == 0 && !keys.is_id_held(k.id)) {
        // Pressed as one sign and let go as another, as Shift changed in between.
        for (const uint32_t key : keys.release_from(no_scan_code)) send(wm_key_up, key, 0);
        return;
    }
    const uint32_t released = keys.release(k.id);
    if (released != 0 && !(k.with_alt && listener.is_command_key(released))) send(wm_key_up, released, 0);
}

} // namespace platform

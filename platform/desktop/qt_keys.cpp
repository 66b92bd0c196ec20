#include "platform/desktop/qt_keys.h"

#include "support/host_keys.h"
#include <QtCore/qnamespace.h>

namespace platform {

uint32_t virtual_key_of_qt(int key, bool keypad) {
    if (keypad) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9) return vk_numpad0 + static_cast<uint32_t>(key - Qt::Key_0);
        switch (key) {
        case Qt::Key_Insert: return vk_numpad0;
        case Qt::Key_End: return vk_numpad0 + 1;
        case Qt::Key_Down: return vk_numpad0 + 2;
        case Qt::Key_PageDown: return vk_numpad0 + 3;
        case Qt::Key_Left: return vk_numpad0 + 4;
        case Qt::Key_Clear: return vk_numpad0 + 5;
        case Qt::Key_Right: return vk_numpad0 + 6;
        case Qt::Key_Home: return vk_numpad0 + 7;
        case Qt::Key_Up: return vk_numpad0 + 8;
        case Qt::Key_PageUp: return vk_numpad0 + 9;
        case Qt::Key_Asterisk: return vk_multiply;
        case Qt::Key_Plus: return vk_add;
        case Qt::Key_Comma: return vk_pad_comma;
        case Qt::Key_Minus: return vk_pad_minus;
        case Qt::Key_Equal: return vk_pad_equals;
        case Qt::Key_Delete:
        case Qt::Key_Period: return vk_decimal;
        case Qt::Key_Slash: return vk_pad_divide;
        default: break;
        }
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<uint32_t>(key);
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<uint32_t>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12) return vk_f1 + static_cast<uint32_t>(key - Qt::Key_F1);
    switch (key) {
    case Qt::Key_Escape: return vk_escape;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return vk_tab;
    case Qt::Key_Backspace: return vk_back;
    case Qt::Key_Return:
    case Qt::Key_Enter: return vk_return;
    case Qt::Key_Space: return vk_space;
    case Qt::Key_Insert: return vk_insert;
    case Qt::Key_Delete: return vk_delete;
    case Qt::Key_Pause: return vk_pause;
    case Qt::Key_Home: return vk_home;
    case Qt::Key_End: return vk_end;
    case Qt::Key_Left: return vk_left;
    case Qt::Key_Up: return vk_up;
    case Qt::Key_Right: return vk_right;
    case Qt::Key_Down: return vk_down;
    case Qt::Key_PageUp: return vk_underscore;
    case Qt::Key_PageDown: return vk_henkan;
    case Qt::Key_Shift: return vk_shift;
    case Qt::Key_Control: return vk_control;
    case Qt::Key_Alt: return vk_menu;
    case Qt::Key_AltGr:
    case Qt::Key_Muhenkan:
    case Qt::Key_Eisu_toggle: return vk_muhenkan;
    case Qt::Key_Menu:
    case Qt::Key_Henkan: return vk_henkan;
    case Qt::Key_Kana_Lock:
    case Qt::Key_Katakana:
    case Qt::Key_Hiragana:
    case Qt::Key_Hiragana_Katakana:
    case Qt::Key_CapsLock: return vk_kana;
    case Qt::Key_ScrollLock: return vk_scroll_lock;
    case Qt::Key_Help: return vk_help;
    case Qt::Key_Print: return vk_copy;
    case Qt::Key_NumLock: return vk_caps;
    case Qt::Key_Exclam: return '1';
    case Qt::Key_QuoteDbl: return '2';
    case Qt::Key_NumberSign: return '3';
    case Qt::Key_Dollar: return '4';
    case Qt::Key_Percent: return '5';
    case Qt::Key_Ampersand: return '6';
    case Qt::Key_Apostrophe: return '7';
    case Qt::Key_ParenLeft: return '8';
    case Qt::Key_ParenRight: return '9';
    case Qt::Key_Minus:
    case Qt::Key_Equal: return vk_minus;
    case Qt::Key_AsciiCircum:
    case Qt::Key_AsciiTilde: return vk_caret;
    case Qt::Key_yen:
    case Qt::Key_Backslash:
    case Qt::Key_Bar: return vk_yen;
    case Qt::Key_At:
    case Qt::Key_QuoteLeft: return vk_at;
    case Qt::Key_BracketLeft:
    case Qt::Key_BraceLeft: return vk_left_bracket;
    case Qt::Key_BracketRight:
    case Qt::Key_BraceRight: return vk_right_bracket;
    case Qt::Key_Semicolon:
    case Qt::Key_Plus: return vk_semicolon;
    case Qt::Key_Colon:
    case Qt::Key_Asterisk: return vk_colon;
    case Qt::Key_Comma:
    case Qt::Key_Less: return vk_comma;
    case Qt::Key_Period:
    case Qt::Key_Greater: return vk_period;
    case Qt::Key_Slash:
    case Qt::Key_Question: return vk_slash;
    case Qt::Key_Underscore: return vk_underscore;
    default: return 0;
    }
}

} // namespace platform

#include "platform/desktop/qt_keys.h"

#include <QtCore/qnamespace.h>

namespace platform {

uint32_t virtual_key_of_qt(int key, bool keypad) {
    if (keypad) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9) return 0x60 + static_cast<uint32_t>(key - Qt::Key_0);
        switch (key) {
        case Qt::Key_Insert: return 0x60;
        case Qt::Key_End: return 0x61;
        case Qt::Key_Down: return 0x62;
        case Qt::Key_PageDown: return 0x63;
        case Qt::Key_Left: return 0x64;
        case Qt::Key_Clear: return 0x65;
        case Qt::Key_Right: return 0x66;
        case Qt::Key_Home: return 0x67;
        case Qt::Key_Up: return 0x68;
        case Qt::Key_PageUp: return 0x69;
        case Qt::Key_Asterisk: return 0x6A;
        case Qt::Key_Plus: return 0x6B;
        case Qt::Key_Comma: return 0x6C;
        case Qt::Key_Minus: return 0x6D;
        case Qt::Key_Delete:
        case Qt::Key_Period: return 0x6E;
        case Qt::Key_Slash: return 0x6F;
        default: break;
        }
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<uint32_t>(key);
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<uint32_t>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12) return 0x70 + static_cast<uint32_t>(key - Qt::Key_F1);
    switch (key) {
    case Qt::Key_Escape: return 0x1B;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return 0x09;
    case Qt::Key_Backspace: return 0x08;
    case Qt::Key_Return:
    case Qt::Key_Enter: return 0x0D;
    case Qt::Key_Space: return 0x20;
    case Qt::Key_Insert: return 0x2D;
    case Qt::Key_Delete: return 0x2E;
    case Qt::Key_Pause: return 0x13;
    case Qt::Key_Home: return 0x24;
    case Qt::Key_End: return 0x23;
    case Qt::Key_Left: return 0x25;
    case Qt::Key_Up: return 0x26;
    case Qt::Key_Right: return 0x27;
    case Qt::Key_Down: return 0x28;
    case Qt::Key_PageUp: return 0xE2;
    case Qt::Key_PageDown: return 0x1C;
    case Qt::Key_Shift: return 0x10;
    case Qt::Key_Control: return 0x11;
    case Qt::Key_Alt: return 0x12;
    case Qt::Key_AltGr:
    case Qt::Key_Muhenkan:
    case Qt::Key_Eisu_toggle: return 0x1D;
    case Qt::Key_Menu:
    case Qt::Key_Henkan: return 0x1C;
    case Qt::Key_Kana_Lock:
    case Qt::Key_Katakana:
    case Qt::Key_Hiragana:
    case Qt::Key_Hiragana_Katakana:
    case Qt::Key_CapsLock: return 0xF0;
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
    case Qt::Key_Equal: return 0xBD;
    case Qt::Key_AsciiCircum:
    case Qt::Key_AsciiTilde: return 0xDE;
    case Qt::Key_yen:
    case Qt::Key_Backslash:
    case Qt::Key_Bar: return 0xDC;
    case Qt::Key_At:
    case Qt::Key_QuoteLeft: return 0xC0;
    case Qt::Key_BracketLeft:
    case Qt::Key_BraceLeft: return 0xDB;
    case Qt::Key_BracketRight:
    case Qt::Key_BraceRight: return 0xDD;
    case Qt::Key_Semicolon:
    case Qt::Key_Plus: return 0xBB;
    case Qt::Key_Colon:
    case Qt::Key_Asterisk: return 0xBA;
    case Qt::Key_Comma:
    case Qt::Key_Less: return 0xBC;
    case Qt::Key_Period:
    case Qt::Key_Greater: return 0xBE;
    case Qt::Key_Slash:
    case Qt::Key_Question: return 0xBF;
    case Qt::Key_Underscore: return 0xE2;
    default: return 0;
    }
}

} // namespace platform

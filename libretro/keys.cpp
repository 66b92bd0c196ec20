#include "libretro/keys.h"

#include <libretro.h>

namespace {

struct key_pair {
    unsigned retro;
    uint32_t virtual_key;
};

// Keys whose codes do not follow from their characters. The front end says what a key of the US layout
// prints; the machine's keyboard is Japanese, so the signs go by their place, as everywhere in Kiv.
constexpr key_pair special_keys[] = {
    {RETROK_BACKSPACE, 0x2E}, // INS DEL: what a person means; STOP is Pause
    {RETROK_DELETE, 0x2E},       {RETROK_INSERT, 0x2D},      {RETROK_PAUSE, 0x08}, // STOP
    {RETROK_BREAK, 0x08},        {RETROK_TAB, 0x09},         {RETROK_RETURN, 0x0D},
    {RETROK_KP_ENTER, 0x0D},     {RETROK_ESCAPE, 0x1B},      {RETROK_SPACE, 0x20},
    {RETROK_HOME, 0x24},         {RETROK_LEFT, 0x25},        {RETROK_UP, 0x26},
    {RETROK_RIGHT, 0x27},        {RETROK_DOWN, 0x28},        {RETROK_LSHIFT, 0x10},
    {RETROK_RSHIFT, 0x10},       {RETROK_LCTRL, 0x11},       {RETROK_RCTRL, 0x11},
    {RETROK_RALT, 0x1D},                                                            // GRPH
    {RETROK_MENU, 0x1C},                                                            // kana
    {RETROK_CAPSLOCK, 0x1C},     {RETROK_MINUS, 0xBD},       {RETROK_EQUALS, 0xDE}, // ^
    {RETROK_LEFTBRACKET, 0xC0},                                                     // @
    {RETROK_RIGHTBRACKET, 0xDB},                                                    // [
    {RETROK_BACKSLASH, 0xDD},                                                       // ]
    {RETROK_BACKQUOTE, 0xDC},                                                       // yen
    {RETROK_SEMICOLON, 0xBB},                                                       // ;
    {RETROK_QUOTE, 0xBA},                                                           // :
    {RETROK_COMMA, 0xBC},        {RETROK_PERIOD, 0xBE},      {RETROK_SLASH, 0xBF},
    {RETROK_OEM_102, 0xE2}, // _
    {RETROK_PAGEUP, 0xE2},       {RETROK_KP_MULTIPLY, 0x6A}, {RETROK_KP_PLUS, 0x6B},
    {RETROK_KP_PERIOD, 0x6E},
};

} // namespace

uint32_t virtual_key_of(unsigned retro_key) {
    if (retro_key >= RETROK_a && retro_key <= RETROK_z) return retro_key - RETROK_a + 'A';
    if (retro_key >= RETROK_0 && retro_key <= RETROK_9) return retro_key;
    if (retro_key >= RETROK_KP0 && retro_key <= RETROK_KP9) return retro_key - RETROK_KP0 + 0x60;
    if (retro_key >= RETROK_F1 && retro_key <= RETROK_F5) return retro_key - RETROK_F1 + 0x70;
    for (const key_pair &k : special_keys)
        if (k.retro == retro_key) return k.virtual_key;
    return no_virtual_key;
}

uint32_t virtual_key_of_button(unsigned button) {
    switch (button) {
    case RETRO_DEVICE_ID_JOYPAD_UP: return 0x26;
    case RETRO_DEVICE_ID_JOYPAD_DOWN: return 0x28;
    case RETRO_DEVICE_ID_JOYPAD_LEFT: return 0x25;
    case RETRO_DEVICE_ID_JOYPAD_RIGHT: return 0x27;
    case RETRO_DEVICE_ID_JOYPAD_B: return 0x20; // space
    case RETRO_DEVICE_ID_JOYPAD_A: return 0x0D; // return
    case RETRO_DEVICE_ID_JOYPAD_Y: return 'Z';
    case RETRO_DEVICE_ID_JOYPAD_X: return 'X';
    case RETRO_DEVICE_ID_JOYPAD_L: return 0x10;      // SHIFT
    case RETRO_DEVICE_ID_JOYPAD_R: return 0x11;      // CTRL
    case RETRO_DEVICE_ID_JOYPAD_SELECT: return 0x1B; // ESC
    case RETRO_DEVICE_ID_JOYPAD_START: return 0x70;  // F1
    default: return no_virtual_key;
    }
}

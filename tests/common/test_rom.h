// A small firmware for tests, with the ROM images made of it.
//
// It sets up an 80 x 25 text screen that says READY, switches the beeper off, and then looks at the keyboard:
// what is typed appears in row 1, letters small unless shift is held. Four digits are commands instead:
//   0  HALT (at 00CD)           1  an undefined instruction (at 00CE)
//   8  the beeper on            9  the bytes "HI" to the cassette
#pragma once

#include "tests/temporary_folder.h"
#include <cstdint>
#include <string>

// clang-format off
constexpr uint8_t test_rom[] = {
    // Text VRAM at F3C8; E000 characters typed, E010 the key rows as last seen.
    0xF3, 0x31, 0x00, 0xF0, 0xAF, 0xD3, 0x40,       // 0000        di; ld sp,0F000h; xor a; out (40h),a
    0xD3, 0x51, 0x21, 0xE0, 0x00, 0x06, 0x05,       // 0007        out (51h),a; ld hl,crtc; ld b,5
    0x7E, 0xD3, 0x50, 0x23, 0x10, 0xFA,             // 000E param: ld a,(hl); out (50h),a; inc hl; djnz param
    0x3E, 0x01, 0xD3, 0x30, 0xAF, 0xD3, 0x68,       // 0014        ld a,1; out (30h),a; xor a; out (68h),a
    0x3E, 0xC8, 0xD3, 0x64, 0x3E, 0xF3,             // 001B        ld a,0C8h; out (64h),a; ld a,0F3h
    0xD3, 0x64, 0x3E, 0xB7, 0xD3, 0x65,             // 0021        out (64h),a; ld a,0B7h; out (65h),a
    0x3E, 0x8B, 0xD3, 0x65, 0x3E, 0x84,             // 0027        ld a,8Bh; out (65h),a; ld a,84h
    0xD3, 0x68, 0x3E, 0x80, 0xD3, 0x51,             // 002D        out (68h),a; ld a,80h; out (51h),a
    0x3E, 0x20, 0xD3, 0x51,                         // 0033        ld a,20h; out (51h),a
    // blank rows: 80 blanks, then attribute pairs that make the row white and plain whatever stands above
    0x21, 0xC8, 0xF3, 0x0E, 0x19,                   // 0037        ld hl,vram; ld c,25
    0x06, 0x50,                                     // 003C row:   ld b,80
    0x36, 0x20, 0x23, 0x10, 0xFB,                   // 003E blank: ld (hl),20h; inc hl; djnz blank
    0x36, 0x00, 0x23, 0x36, 0xE8, 0x23,             // 0043        ld (hl),0; inc hl; ld (hl),0E8h; inc hl
    0x06, 0x13,                                     // 0049        ld b,19
    0x36, 0x01, 0x23, 0x36, 0x00, 0x23,             // 004B pair:  ld (hl),1; inc hl; ld (hl),0; inc hl
    0x10, 0xF8,                                     // 0051        djnz pair
    0x0D, 0x20, 0xE6,                               // 0053        dec c; jr nz,row
    0x21, 0xE5, 0x00, 0x11, 0xC8, 0xF3,             // 0056        ld hl,text; ld de,vram
    0x01, 0x05, 0x00, 0xED, 0xB0,                   // 005C        ld bc,textend-text; ldir
    // nothing typed, nothing held
    0xAF, 0x32, 0x00, 0xE0, 0x21, 0x10, 0xE0,       // 0061        xor a; ld (pos),a; ld hl,rows
    0x06, 0x0C,                                     // 0068        ld b,12
    0x36, 0xFF, 0x23, 0x10, 0xFB,                   // 006A held:  ld (hl),0FFh; inc hl; djnz held
    // rows 2-7: letters, marks and digits
    0x0E, 0x02, 0x21, 0x12, 0xE0,                   // 006F scan:  ld c,2; ld hl,rows+2
    0xED, 0x78, 0x56, 0x77, 0x2F, 0xA2,             // 0074 line:  in a,(c); ld d,(hl); ld (hl),a; cpl; and d
    0x5F, 0x79, 0x07, 0x07, 0x07, 0x57,             // 007A        ld e,a; ld a,c; rlca; rlca; rlca; ld d,a
    0xCB, 0x3B, 0x30, 0x03,                         // 0080 key:   srl e; jr nc,up
    0xCD, 0x95, 0x00,                               // 0084        call typed
    0x14, 0x7B, 0xB7, 0x20, 0xF4,                   // 0087 up:    inc d; ld a,e; or a; jr nz,key
    0x23, 0x0C, 0x79, 0xFE, 0x08, 0x20, 0xE1,       // 008C        inc hl; inc c; ld a,c; cp 8; jr nz,line
    0x18, 0xDA,                                     // 0093        jr scan
    0xE5, 0x7A, 0xFE, 0x30, 0x28, 0x32,             // 0095 typed: push hl; ld a,d; cp 30h; jr z,stop
    0xFE, 0x31, 0x28, 0x2F,                         // 009B        cp 31h; jr z,undef
    0xFE, 0x39, 0x28, 0x2D,                         // 009F        cp 39h; jr z,tape
    0xFE, 0x38, 0x28, 0x33,                         // 00A3        cp 38h; jr z,beep
    0x30, 0x10,                                     // 00A7        jr nc,show
    0xFE, 0x30, 0x30, 0x0C,                         // 00A9        cp 30h; jr nc,show
    0xC6, 0x30, 0x47, 0xDB, 0x08, 0xE6, 0x40,       // 00AD        add a,30h; ld b,a; in a,(8); and 40h
    0x78, 0x28, 0x02,                               // 00B4        ld a,b; jr z,show
    0xC6, 0x20,                                     // 00B7        add a,20h
    0x47, 0x3A, 0x00, 0xE0, 0x6F, 0x3C,             // 00B9 show:  ld b,a; ld a,(pos); ld l,a; inc a
    0x32, 0x00, 0xE0, 0x26, 0x00, 0xD5,             // 00BF        ld (pos),a; ld h,0; push de
    0x11, 0x40, 0xF4, 0x19, 0xD1,                   // 00C5        ld de,vram+120; add hl,de; pop de
    0x70, 0xE1, 0xC9,                               // 00CA        ld (hl),b; pop hl; ret
    0x76,                                           // 00CD stop:  halt
    0xED, 0xFF,                                     // 00CE undef: db 0EDh,0FFh
    0x3E, 0x48, 0xD3, 0x20, 0x3E, 0x49,             // 00D0 tape:  ld a,'H'; out (20h),a; ld a,'I'
    0xD3, 0x20, 0xE1, 0xC9,                         // 00D6        out (20h),a; pop hl; ret
    0x3E, 0x20, 0xD3, 0x40, 0xE1, 0xC9,             // 00DA beep:  ld a,20h; out (40h),a; pop hl; ret
    0xCE, 0x98, 0x0F, 0x58, 0x13,                   // 00E0 crtc:  db 0CEh,98h,0Fh,58h,13h
    0x52, 0x45, 0x41, 0x44, 0x59,                   // 00E5 text:  db "READY"
};
// clang-format on

// The three ROM images: the firmware as Zun-BASIC, and nothing to run in the others.
inline void write_test_roms(const std::string &folder) {
    put_file(folder + "/8801-zun.rom", {std::begin(test_rom), std::end(test_rom)});
    put_file(folder + "/8801-kiv.rom", std::string(8192, '\x76'));
    put_file(folder + "/8801-4th.rom", std::string(8192, '\x34'));
}

// A small firmware for tests, with the ROM images made of it.
//
// It sets up an 80 x 25 text screen that says READY, switches the beeper off, and then looks at the keyboard:
// what is typed appears in row 1, letters small unless shift is held. Four digits are commands instead:
//   0  HALT (at 00CD)           1  an undefined instruction (at 00CE)
//   8  the beeper on          9  the bytes "HI" to the cassette
#pragma once

#include "tests/temporary_folder.h"
#include <cstdint>
#include <string>

// clang-format off
constexpr uint8_t test_rom[] = {
    // Text VRAM at F3C8; E000 characters typed, E010 the key rows as last seen.
    0xF3,                    // 0000        di
    0x31, 0x00, 0xF0,        // 0001        ld sp,0F000h
    0xAF,                    // 0004        xor a
    0xD3, 0x40,              // 0005        out (40h),a
    0xD3, 0x51,              // 0007        out (51h),a
    0x21, 0xE0, 0x00,        // 0009        ld hl,crtc
    0x06, 0x05,              // 000C        ld b,5
    0x7E,                    // 000E param: ld a,(hl)
    0xD3, 0x50,              // 000F        out (50h),a
    0x23,                    // 0011        inc hl
    0x10, 0xFA,              // 0012        djnz param
    0x3E, 0x01,              // 0014        ld a,1
    0xD3, 0x30,              // 0016        out (30h),a
    0xAF,                    // 0018        xor a
    0xD3, 0x68,              // 0019        out (68h),a
    0x3E, 0xC8,              // 001B        ld a,0C8h
    0xD3, 0x64,              // 001D        out (64h),a
    0x3E, 0xF3,              // 001F        ld a,0F3h
    0xD3, 0x64,              // 0021        out (64h),a
    0x3E, 0xB7,              // 0023        ld a,0B7h
    0xD3, 0x65,              // 0025        out (65h),a
    0x3E, 0x8B,              // 0027        ld a,8Bh
    0xD3, 0x65,              // 0029        out (65h),a
    0x3E, 0x84,              // 002B        ld a,84h
    0xD3, 0x68,              // 002D        out (68h),a
    0x3E, 0x80,              // 002F        ld a,80h
    0xD3, 0x51,              // 0031        out (51h),a
    0x3E, 0x20,              // 0033        ld a,20h
    0xD3, 0x51,              // 0035        out (51h),a
    // blank rows: 80 blanks, then attribute pairs that make the row white and plain, whatever the one above was
    0x21, 0xC8, 0xF3,        // 0037        ld hl,vram
    0x0E, 0x19,              // 003A        ld c,25
    0x06, 0x50,              // 003C row:   ld b,80
    0x36, 0x20,              // 003E blank: ld (hl),20h
    0x23,                    // 0040        inc hl
    0x10, 0xFB,              // 0041        djnz blank
    0x36, 0x00,              // 0043        ld (hl),0
    0x23,                    // 0045        inc hl
    0x36, 0xE8,              // 0046        ld (hl),0E8h
    0x23,                    // 0048        inc hl
    0x06, 0x13,              // 0049        ld b,19
    0x36, 0x01,              // 004B pair:  ld (hl),1
    0x23,                    // 004D        inc hl
    0x36, 0x00,              // 004E        ld (hl),0
    0x23,                    // 0050        inc hl
    0x10, 0xF8,              // 0051        djnz pair
    0x0D,                    // 0053        dec c
    0x20, 0xE6,              // 0054        jr nz,row
    0x21, 0xE5, 0x00,        // 0056        ld hl,text
    0x11, 0xC8, 0xF3,        // 0059        ld de,vram
    0x01, 0x05, 0x00,        // 005C        ld bc,textend-text
    0xED, 0xB0,              // 005F        ldir
    // nothing typed, nothing held
    0xAF,                    // 0061        xor a
    0x32, 0x00, 0xE0,        // 0062        ld (pos),a
    0x21, 0x10, 0xE0,        // 0065        ld hl,rows
    0x06, 0x0C,              // 0068        ld b,12
    0x36, 0xFF,              // 006A held:  ld (hl),0FFh
    0x23,                    // 006C        inc hl
    0x10, 0xFB,              // 006D        djnz held
    // rows 2-7: letters, marks and digits
    0x0E, 0x02,              // 006F scan:  ld c,2
    0x21, 0x12, 0xE0,        // 0071        ld hl,rows+2
    0xED, 0x78,              // 0074 line:  in a,(c)
    0x56,                    // 0076        ld d,(hl)
    0x77,                    // 0077        ld (hl),a
    0x2F,                    // 0078        cpl
    0xA2,                    // 0079        and d
    0x5F,                    // 007A        ld e,a
    0x79,                    // 007B        ld a,c
    0x07,                    // 007C        rlca
    0x07,                    // 007D        rlca
    0x07,                    // 007E        rlca
    0x57,                    // 007F        ld d,a
    0xCB, 0x3B,              // 0080 key:   srl e
    0x30, 0x03,              // 0082        jr nc,up
    0xCD, 0x95, 0x00,        // 0084        call typed
    0x14,                    // 0087 up:    inc d
    0x7B,                    // 0088        ld a,e
    0xB7,                    // 0089        or a
    0x20, 0xF4,              // 008A        jr nz,key
    0x23,                    // 008C        inc hl
    0x0C,                    // 008D        inc c
    0x79,                    // 008E        ld a,c
    0xFE, 0x08,              // 008F        cp 8
    0x20, 0xE1,              // 0091        jr nz,line
    0x18, 0xDA,              // 0093        jr scan
    0xE5,                    // 0095 typed: push hl
    0x7A,                    // 0096        ld a,d
    0xFE, 0x30,              // 0097        cp 30h
    0x28, 0x32,              // 0099        jr z,stop
    0xFE, 0x31,              // 009B        cp 31h
    0x28, 0x2F,              // 009D        jr z,undef
    0xFE, 0x39,              // 009F        cp 39h
    0x28, 0x2D,              // 00A1        jr z,tape
    0xFE, 0x38,              // 00A3        cp 38h
    0x28, 0x33,              // 00A5        jr z,beep
    0x30, 0x10,              // 00A7        jr nc,show
    0xFE, 0x30,              // 00A9        cp 30h
    0x30, 0x0C,              // 00AB        jr nc,show
    0xC6, 0x30,              // 00AD        add a,30h
    0x47,                    // 00AF        ld b,a
    0xDB, 0x08,              // 00B0        in a,(8)
    0xE6, 0x40,              // 00B2        and 40h
    0x78,                    // 00B4        ld a,b
    0x28, 0x02,              // 00B5        jr z,show
    0xC6, 0x20,              // 00B7        add a,20h
    0x47,                    // 00B9 show:  ld b,a
    0x3A, 0x00, 0xE0,        // 00BA        ld a,(pos)
    0x6F,                    // 00BD        ld l,a
    0x3C,                    // 00BE        inc a
    0x32, 0x00, 0xE0,        // 00BF        ld (pos),a
    0x26, 0x00,              // 00C2        ld h,0
    0xD5,                    // 00C4        push de
    0x11, 0x40, 0xF4,        // 00C5        ld de,vram+120
    0x19,                    // 00C8        add hl,de
    0xD1,                    // 00C9        pop de
    0x70,                    // 00CA        ld (hl),b
    0xE1,                    // 00CB        pop hl
    0xC9,                    // 00CC        ret
    0x76,                    // 00CD stop:  halt
    0xED, 0xFF,              // 00CE undef: db 0EDh,0FFh
    0x3E, 0x48,              // 00D0 tape:  ld a,'H'
    0xD3, 0x20,              // 00D2        out (20h),a
    0x3E, 0x49,              // 00D4        ld a,'I'
    0xD3, 0x20,              // 00D6        out (20h),a
    0xE1,                    // 00D8        pop hl
    0xC9,                    // 00D9        ret
    0x3E, 0x20,              // 00DA beep:  ld a,20h
    0xD3, 0x40,              // 00DC        out (40h),a
    0xE1,                    // 00DE        pop hl
    0xC9,                    // 00DF        ret
    0xCE, 0x98, 0x0F, 0x58, 0x13, // 00E0 crtc:  db 0CEh,98h,0Fh,58h,13h
    0x52, 0x45, 0x41, 0x44, 0x59, // 00E5 text:  db "READY"
};
// clang-format on

// The three ROM images: the firmware as Zun-BASIC, and nothing to run in the others.
inline void write_test_roms(const std::string &folder) {
    put_file(folder + "/8801-zun.rom", {std::begin(test_rom), std::end(test_rom)});
    put_file(folder + "/8801-kiv.rom", std::string(8192, '\x76'));
    put_file(folder + "/8801-4th.rom", std::string(8192, '\x34'));
}

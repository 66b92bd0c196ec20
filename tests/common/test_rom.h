// A small firmware for tests, with the ROM images made of it.
//
// It sets up an 80 x 25 text screen that says READY, switches the beeper off, and then looks at the keyboard:
// what is typed appears in row 1, letters small unless shift is held. Four digits are commands instead:
//   0  HALT           1  an undefined instruction
//   8  the beeper on  9  the bytes "HI" to the cassette
#pragma once

#include "tests/temporary_folder.h"
#include <cstdint>
#include <string>

constexpr uint16_t test_rom_halt = 0x00D5;      // address of its HALT
constexpr uint16_t test_rom_undefined = 0x00D6; // address of its undefined instruction

// clang-format off
constexpr uint8_t test_rom[] = {
    // Text VRAM at F3C8; E000 characters typed, E001 shift, E010 the key rows as last seen.
    0xF3,                    // 0000        di
    0x31, 0x00, 0xF0,        // 0001        ld sp,0F000h
    0xAF,                    // 0004        xor a
    0xD3, 0x40,              // 0005        out (40h),a
    0xD3, 0x51,              // 0007        out (51h),a
    0x21, 0xE8, 0x00,        // 0009        ld hl,crtc
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
    // blank rows: 80 blanks, then attribute pairs of which the first makes the row white
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
    0x36, 0x50,              // 004B pair:  ld (hl),80
    0x23,                    // 004D        inc hl
    0x36, 0xE8,              // 004E        ld (hl),0E8h
    0x23,                    // 0050        inc hl
    0x10, 0xF8,              // 0051        djnz pair
    0x0D,                    // 0053        dec c
    0x20, 0xE6,              // 0054        jr nz,row
    0x21, 0xED, 0x00,        // 0056        ld hl,text
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
    0xDB, 0x08,              // 006F scan:  in a,(8)
    0x2F,                    // 0071        cpl
    0xE6, 0x40,              // 0072        and 40h
    0x32, 0x01, 0xE0,        // 0074        ld (shift),a
    0x0E, 0x02,              // 0077        ld c,2
    0x21, 0x12, 0xE0,        // 0079        ld hl,rows+2
    0xED, 0x78,              // 007C line:  in a,(c)
    0x56,                    // 007E        ld d,(hl)
    0x77,                    // 007F        ld (hl),a
    0x2F,                    // 0080        cpl
    0xA2,                    // 0081        and d
    0x5F,                    // 0082        ld e,a
    0x79,                    // 0083        ld a,c
    0x07,                    // 0084        rlca
    0x07,                    // 0085        rlca
    0x07,                    // 0086        rlca
    0x57,                    // 0087        ld d,a
    0xCB, 0x3B,              // 0088 key:   srl e
    0x30, 0x03,              // 008A        jr nc,up
    0xCD, 0x9D, 0x00,        // 008C        call typed
    0x14,                    // 008F up:    inc d
    0x7B,                    // 0090        ld a,e
    0xB7,                    // 0091        or a
    0x20, 0xF4,              // 0092        jr nz,key
    0x23,                    // 0094        inc hl
    0x0C,                    // 0095        inc c
    0x79,                    // 0096        ld a,c
    0xFE, 0x08,              // 0097        cp 8
    0x20, 0xE1,              // 0099        jr nz,line
    0x18, 0xD2,              // 009B        jr scan
    0xE5,                    // 009D typed: push hl
    0x7A,                    // 009E        ld a,d
    0xFE, 0x30,              // 009F        cp 30h
    0x28, 0x32,              // 00A1        jr z,stop
    0xFE, 0x31,              // 00A3        cp 31h
    0x28, 0x2F,              // 00A5        jr z,undef
    0xFE, 0x39,              // 00A7        cp 39h
    0x28, 0x2D,              // 00A9        jr z,tape
    0xFE, 0x38,              // 00AB        cp 38h
    0x28, 0x33,              // 00AD        jr z,beep
    0x30, 0x10,              // 00AF        jr nc,show
    0xFE, 0x30,              // 00B1        cp 30h
    0x30, 0x0C,              // 00B3        jr nc,show
    0xC6, 0x30,              // 00B5        add a,30h
    0x47,                    // 00B7        ld b,a
    0x3A, 0x01, 0xE0,        // 00B8        ld a,(shift)
    0xB7,                    // 00BB        or a
    0x78,                    // 00BC        ld a,b
    0x20, 0x02,              // 00BD        jr nz,show
    0xC6, 0x20,              // 00BF        add a,20h
    0x47,                    // 00C1 show:  ld b,a
    0x3A, 0x00, 0xE0,        // 00C2        ld a,(pos)
    0x6F,                    // 00C5        ld l,a
    0x3C,                    // 00C6        inc a
    0x32, 0x00, 0xE0,        // 00C7        ld (pos),a
    0x26, 0x00,              // 00CA        ld h,0
    0xD5,                    // 00CC        push de
    0x11, 0x40, 0xF4,        // 00CD        ld de,vram+120
    0x19,                    // 00D0        add hl,de
    0xD1,                    // 00D1        pop de
    0x70,                    // 00D2        ld (hl),b
    0xE1,                    // 00D3        pop hl
    0xC9,                    // 00D4        ret
    0x76,                    // 00D5 stop:  halt
    0xED, 0xFF,              // 00D6 undef: db 0EDh,0FFh
    0x3E, 0x48,              // 00D8 tape:  ld a,'H'
    0xD3, 0x20,              // 00DA        out (20h),a
    0x3E, 0x49,              // 00DC        ld a,'I'
    0xD3, 0x20,              // 00DE        out (20h),a
    0xE1,                    // 00E0        pop hl
    0xC9,                    // 00E1        ret
    0x3E, 0x20,              // 00E2 beep:  ld a,20h
    0xD3, 0x40,              // 00E4        out (40h),a
    0xE1,                    // 00E6        pop hl
    0xC9,                    // 00E7        ret
    0xCE, 0x98, 0x0F, 0x58, 0x13, // 00E8 crtc:  db 0CEh,98h,0Fh,58h,13h
    0x52, 0x45, 0x41, 0x44, 0x59, // 00ED text:  db "READY"
};
// clang-format on

// The three ROM images: the firmware as Zun-BASIC, and nothing to run in the others.
inline void write_test_roms(const std::string &folder) {
    put_file(folder + "/8801-zun.rom", {std::begin(test_rom), std::end(test_rom)});
    put_file(folder + "/8801-kiv.rom", std::string(8192, '\x76'));
    put_file(folder + "/8801-4th.rom", std::string(8192, '\x34'));
}

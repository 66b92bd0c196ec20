; 8801-kiv.rom: the ROM that stands in for the main one when the switch asks for N-BASIC. A plain screen in
; green, and a place to type.

        INCLUDE "ports.inc"
        INCLUDE "memory.inc"
        INCLUDE "characters.inc"

ROM_MODE        EQU MODE_31_START + NBASIC_ROM
INK             EQU GREEN
INK_2           EQU GREEN

        ORG 0000h
start:  DI
        LD SP,STACK
        XOR A
        OUT (SYSTEM),A
        JP main

        DEFS 0038h - $
        EI                      ; IM 1 is not used
        RETI
        DEFS 0066h - $
        RETN                    ; nothing raises an NMI

        DEFS VECTORS - $
        DEFW interrupt_usart
        DEFW interrupt_vrtc
        DEFW interrupt_clock

        DEFS CODE - $

main:   CALL machine_init
        LD HL,text_frames
        CALL screen_frames
        LD HL,36 * 256 + 1
        LD (screen_row),HL
        LD HL,logo
        LD DE,logo_colours
        CALL logo_show
        LD HL,text
        CALL screen_list
        CALL screen_show
        LD HL,32 * 256 + 7
        LD (calendar_row),HL
        LD A,0FFh
        LD (calendar_shown),A
        LD BC,11 * 256 + 12
        LD DE,10 * 256 + 56
        CALL input_init
        CALL sound_beep
_loop:  CALL wait_frame
        LD A,(frames)
        AND 7
        CALL Z,calendar_show
        CALL input_key
        OR A
        CALL NZ,sound_beep      ; function keys do nothing here
        JR _loop

logo_colours:
        DEFB GREEN,GREEN,GREEN
logo:
        DEFB 11100000b,00111000b,00000000b,00000000b,00000000b
        DEFB 11110000b,00111000b,00000000b,00000000b,00000000b
        DEFB 11111000b,00111000b,00000000b,00000000b,00000000b
        DEFB 11111100b,00111000b,00000000b,00000000b,00000000b
        DEFB 11101110b,00111000b,00000000b,00000000b,00000000b
        DEFB 11100111b,00111000b,00000000b,00000000b,00000000b
        DEFB 11100011b,10111000b,00000000b,00000000b,00000000b
        DEFB 11100001b,11111000b,00000000b,00000000b,00000000b
        DEFB 11100000b,11111000b,00000000b,00000000b,00000000b
        DEFB 11100000b,01111000b,00000000b,00000000b,00000000b
        DEFB 11100000b,00111000b,00000000b,00000000b,00000000b
        DEFB 11100000b,00111000b,00000000b,00000000b,00000000b
text_frames:
        DEFB 10,10,58,10,GREEN
        DEFB " Type here ",T_END
        DEFB 0FFh
text:   DEFB T_INK,GREEN,T_AT,5,32,"N-BASIC ROM, 32 KB"
        DEFB T_AT,23,19,"RETURN next line   HOME clear   DEL delete"
        DEFB T_END

        INCLUDE "boot.asm"
        INCLUDE "interrupts.asm"
        INCLUDE "screen.asm"
        INCLUDE "keyboard.asm"
        INCLUDE "calendar.asm"
        INCLUDE "sound.asm"
        INCLUDE "graphics.asm"
        INCLUDE "input.asm"
        INCLUDE "logo.asm"

        DEFS 8000h - $

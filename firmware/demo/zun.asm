; 8801-zun.rom: the machine's first ROM. Starts the machine, shows what it can do, and lets one type.

        INCLUDE "ports.inc"
        INCLUDE "memory.inc"
        INCLUDE "characters.inc"

ROM_MODE        EQU MODE_31_START
INK             EQU WHITE       ; what is typed, and the clock
INK_2           EQU CYAN

        ORG 0000h
start:  DI
        LD SP,STACK
        XOR A
        OUT (SYSTEM),A          ; the beeper sounds from power-on until told not to
        IN A,(DIP_1)
        AND DIP_ZUN
        JP NZ,zun
        JP nbasic

        DEFS 0038h - $
        EI                      ; IM 1 is not used
        RETI
        DEFS 0066h - $
        RETN                    ; nothing raises an NMI

        DEFS VECTORS - $
        DEFW interrupt_usart
        DEFW interrupt_vrtc
        DEFW interrupt_clock

        DEFS SERVICES - $
        JP graphics_span

        DEFS CODE - $

; The switch asks for N-BASIC. Its ROM takes the place of this one, so the change is made from RAM.
nbasic: LD HL,nbasic_switch
        LD DE,SWITCH_CODE
        LD BC,nbasic_switch_end - nbasic_switch
        LDIR
        JP SWITCH_CODE
nbasic_switch:
        LD A,MODE_31_START + NBASIC_ROM
        OUT (MODE_31),A
        JP 0000h
nbasic_switch_end:

zun:    CALL machine_init
        CALL expansion_init
        CALL demo_screen
        CALL sound_beep
        LD DE,MELODY
        LD A,1
        CALL expansion_call
        LD A,(expansion_found)
        OR A
        CALL NZ,sound_play
        XOR A
        CALL expansion_call     ; the picture, drawn while one looks and the tune plays
main:   CALL wait_frame
        CALL demo_frame
        CALL input_key
        CALL demo_key
        JR main

        INCLUDE "boot.asm"
        INCLUDE "interrupts.asm"
        INCLUDE "screen.asm"
        INCLUDE "keyboard.asm"
        INCLUDE "calendar.asm"
        INCLUDE "sound.asm"
        INCLUDE "graphics.asm"
        INCLUDE "input.asm"
        INCLUDE "logo.asm"
        INCLUDE "demo.asm"

        DEFS EXPANSION_START - $ ; where another ROM may appear stands no code
        DEFS 8000h - $

; From power-on to Ok.

start:  DI
        LD SP,STACK
        XOR A
        OUT (SYSTEM),A          ; the beeper sounds from power-on until told not to
        IF NBASIC
        JP cold_start
        ELSE
        IN A,(DIP_1)
        AND DIP_ZUN
        JP NZ,cold_start
        JP nbasic
        ENDIF

        DEFS 0038h - $
        PUSH AF                 ; RST 38h: a breakpoint of the monitor
        JP monitor_trap
        DEFS 0066h - $
        RETN                    ; nothing raises an NMI

        DEFS VECTORS - $
        DEFW interrupt_usart
        DEFW interrupt_vrtc
        DEFW interrupt_clock

        DEFS CODE - $

module_start:
        IF NBASIC = 0
; The switch asks for N-BASIC. Its ROM takes the place of this one, so the change is made from RAM.
nbasic: LD HL,nbasic_switch
        LD DE,FLOAT_RAM
        LD BC,nbasic_switch_end - nbasic_switch
        LDIR
        JP FLOAT_RAM
nbasic_switch:
        LD A,MODE_31_START + NBASIC_ROM
        OUT (MODE_31),A
        JP 0000h
nbasic_switch_end:
        ENDIF

cold_start:
        LD HL,FLOAT_RAM         ; RAM comes up with a pattern
        LD DE,FLOAT_RAM + 1
        LD BC,LINE_TEXT - FLOAT_RAM - 1
        LD (HL),0
        LDIR
        XOR A
        DEC A
        LD (page_borrowed),A
        LD HL,DATA_TOP
        LD (memory_top),HL
        LD HL,TOKENS
        LD (line_pointer),HL
        LD HL,0
        LD (TOKENS + 4),HL
        LD (TOKENS + 6),HL
        CALL program_clear
        IF NBASIC = 0
        CALL far_init
        ENDIF
        CALL devices_init
        JP title_show           ; ends with JP ready

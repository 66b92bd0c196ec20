; The devices from power-on to a machine that can be written on.
;
;   devices_init    variables, interrupts, console, keyboard, graphics; ends with interrupts on. In: SP set,
;                   interrupts off
;   sound_init      silence
;   sound_beep      a short beep; keeps BC, DE, HL
;   system_set, system_clear  bits A of the system port; keep BC, DE, HL; end with interrupts on
;
; The 1/600 s clock runs only while something sounds: it costs time.

        IF NBASIC
ROM_MODE        EQU MODE_31_START + NBASIC_ROM
        ELSE
ROM_MODE        EQU MODE_31_START
        ENDIF

devices_init:
        XOR A
        LD (system_latch),A
        OUT (SYSTEM),A          ; the beeper sounds from power-on until told not to
        OUT (SELECT_RAM),A
        LD A,ROM_MODE
        LD (mode_31),A
        CALL interrupts_init
        CALL sound_init
        CALL keyboard_init
        CALL console_init
        JP interrupts_start

BEEP_TICKS      EQU 60          ; 1/600 s that a beep lasts

sound_init:
        LD A,PCG_SQUARE_0
        OUT (PCG_MODE),A
        LD A,PCG_SQUARE_1
        OUT (PCG_MODE),A
        LD A,PCG_SQUARE_2
        OUT (PCG_MODE),A
        XOR A
        LD (pcg_latch),A
        OUT (PCG_CONTROL),A
        RET

; Interrupts change these bits as well, so it happens in one piece.
system_set:
        PUSH HL
        LD HL,system_latch
        DI
        OR (HL)
        LD (HL),A
        OUT (SYSTEM),A
        EI
        POP HL
        RET
system_clear:
        PUSH HL
        LD HL,system_latch
        CPL
        DI
        AND (HL)
        LD (HL),A
        OUT (SYSTEM),A
        EI
        POP HL
        RET

sound_beep:
        LD A,BEEP_TICKS
        LD (beep_left),A
        LD A,BEEP
        CALL system_set
        JP clock_on

; Called 600 times a second. Uses AF, BC, DE, HL.
sound_tick:
        LD HL,beep_left
        LD A,(HL)
        OR A
        RET Z
        DEC (HL)
        RET NZ
        LD A,(system_latch)
        AND 0FFh - BEEP
        LD (system_latch),A
        OUT (SYSTEM),A
        LD A,(interrupt_mask)
        AND 0FFh - MASK_CLOCK
        LD (interrupt_mask),A
        OUT (INTERRUPT_MASK),A
        RET

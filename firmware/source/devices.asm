; The devices from power-on to a machine that can be written on.
;
;   devices_init    variables, interrupts, console, keyboard, graphics; ends with interrupts on. In: SP set,
;                   interrupts off
;   sound_init      silence
;   sound_stop      the same, and nothing waits; keeps BC, DE, HL
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
        CALL gfx_init
        JP interrupts_start

BEEP_TICKS      EQU 60          ; 1/600 s that a beep lasts
PLAY_GAP        EQU 4           ; 1/600 s of silence before the next note

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
        LD HL,play_channels + PLAY_OCTAVE
        LD DE,PLAY_RECORD - 2
        LD B,3
_channel:
        LD (HL),4               ; octave, length, tempo
        INC HL
        LD (HL),4
        INC HL
        LD (HL),120
        ADD HL,DE
        DJNZ _channel
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

; Silence; no note waits. Keeps BC, DE, HL.
sound_stop:
        PUSH HL
        DI
        LD A,(system_latch)
        AND 0FFh - BEEP
        LD (system_latch),A
        OUT (SYSTEM),A
        XOR A
        LD (beep_left),A
        LD (play_hold),A
        LD (pcg_latch),A
        OUT (PCG_CONTROL),A
        PUSH DE
        PUSH BC
        LD HL,play_channels
        LD DE,PLAY_RECORD - 3
        LD B,3
_channel:
        LD (HL),A               ; PLAY_LEFT
        INC HL
        LD (HL),A
        INC HL
        LD C,(HL)
        INC HL
        LD (HL),C               ; PLAY_TAIL = PLAY_HEAD
        ADD HL,DE
        DJNZ _channel
        POP BC
        POP DE
        POP HL
        EI
        RET

; HL = record of channel C. Keeps BC, DE.
play_record:
        LD HL,play_channels
        LD A,C
        ADD A,A
        ADD A,A
        ADD A,A
        SUB C                   ; 7 bytes each
        ADD A,L
        LD L,A
        RET NC
        INC H
        RET

; Called 600 times a second. Uses AF, BC, DE, HL.
sound_tick:
        LD HL,beep_left
        LD A,(HL)
        LD D,A                  ; D: not 0 when something needs the clock
        OR A
        JR Z,_notes
        DEC (HL)
        JR NZ,_notes
        LD A,(system_latch)
        AND 0FFh - BEEP
        LD (system_latch),A
        OUT (SYSTEM),A
_notes: LD C,2
_channel:
        PUSH DE
        CALL play_tick
        POP DE
        OR D
        LD D,A
        DEC C
        JP P,_channel
        LD A,D
        OR A
        RET NZ
        LD A,(interrupt_mask)   ; all is said
        AND 0FFh - MASK_CLOCK
        LD (interrupt_mask),A
        OUT (INTERRUPT_MASK),A
        RET

; One tick of channel C. A = 0 when it has nothing to do. Keeps C.
play_tick:
        CALL play_record
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD A,D
        OR E
        JR Z,_idle
        DEC DE
        LD (HL),D
        DEC HL
        LD (HL),E
        INC HL
        LD A,D
        OR A
        RET NZ
        LD A,E
        CP PLAY_GAP
        JR Z,_gap
        OR A
        RET NZ
        CALL play_next          ; the note is over
        OR A
        RET NZ
_gap:   LD DE,0
        CALL tone_set
        LD A,1
        RET
_idle:  LD A,(play_hold)
        OR A
        JR Z,play_next
        INC HL                  ; held, but it has to go on later
        LD A,(HL)
        INC HL
        SUB (HL)
        RET

; HL at PLAY_LEFT + 1: the next note, if one waits. A = 0: none. Keeps C.
play_next:
        INC HL
        LD A,(HL)               ; head
        INC HL
        SUB (HL)                ; tail
        RET Z
        LD A,(HL)
        LD E,A
        ADD A,4
        LD (HL),A
        DEC HL
        DEC HL
        LD A,C
        ADD A,PLAY_WINDOW / 256
        LD D,A                  ; DE the note
        IF NBASIC
        CALL _take
        ELSE
        IN A,(WINDOW_PAGE)
        PUSH AF
        LD A,PLAY_QUEUE / 256
        OUT (WINDOW_PAGE),A
        CALL _take
        POP AF
        OUT (WINDOW_PAGE),A
        ENDIF
        LD D,H
        LD E,L
        CALL tone_set
        LD A,1
        RET
; HL = the divisor at DE; its length goes to PLAY_LEFT.
_take:  EX DE,HL
        LD A,(HL)
        INC L
        PUSH AF
        LD B,(HL)
        INC L
        LD A,(HL)
        INC L
        PUSH AF
        LD A,(HL)
        LD (DE),A
        DEC DE
        POP AF
        LD (DE),A
        POP AF
        LD L,A
        LD H,B
        RET

; Channel C sounds with divisor DE; 0: falls silent. For when interrupts are off. Uses AF, B, HL.
tone_set:
        LD HL,_gates
        LD B,0
        ADD HL,BC
        LD B,(HL)               ; its gate
        LD A,D
        OR E
        LD A,(pcg_latch)
        JR Z,_silent
        PUSH BC
        LD L,A
        LD A,C
        ADD A,PCG_COUNTER_0
        LD C,A
        OUT (C),E
        OUT (C),D
        LD A,L
        POP BC
        OR B
        JR _set
_silent:
        OR B
        XOR B
_set:   LD (pcg_latch),A
        OUT (PCG_CONTROL),A
        RET
_gates: DEFB PCG_GATE_0,PCG_GATE_1,PCG_GATE_2

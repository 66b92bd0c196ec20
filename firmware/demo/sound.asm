; The beeper, and a player for tunes of two voices on the PCG-8100's tone counters.

BEEP_TICKS      EQU 36          ; 1/600 s that a beep lasts
NOTE_GAP        EQU 6           ; 1/600 s of silence before the next note

sound_init:
        LD A,PCG_SQUARE_0
        OUT (PCG_MODE),A
        LD A,PCG_SQUARE_1
        OUT (PCG_MODE),A
        XOR A
        LD (pcg_latch),A
        OUT (PCG_CONTROL),A
        RET

; Sets, or clears, bits A of the system port. Interrupts may do so as well, so it happens in one piece.
; Keeps BC, DE, HL.
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
; Writes A to the system port; for when interrupts are off.
system_write:
        LD (system_latch),A
        OUT (SYSTEM),A
        RET

; A short beep. The clock ends it.
sound_beep:
        LD A,BEEP_TICKS
        LD (beep_left),A
        LD A,BEEP
        JR system_set

; Starts the tune at MELODY: notes of divisor of voice 0, divisor of voice 1 (words, 0: silent) and length in
; 1/600 s (byte, 0: the end).
sound_play:
        LD HL,MELODY
        LD (melody_next),HL
        LD A,1
        LD (melody_left),A
        RET

; Called 600 times a second. Uses AF, DE, HL.
sound_tick:
        LD HL,beep_left
        LD A,(HL)
        OR A
        JR Z,_melody
        DEC (HL)
        JR NZ,_melody
        LD A,(system_latch)
        AND 0FFh - BEEP
        CALL system_write
_melody:
        LD HL,melody_left
        LD A,(HL)
        OR A
        RET Z
        DEC (HL)
        JR Z,_note
        LD A,(HL)
        CP NOTE_GAP
        RET NZ
        LD E,0
        JR pcg_gates
_note:  LD HL,(melody_next)
        LD E,0                  ; the gates
        LD A,(HL)
        INC HL
        OUT (PCG_COUNTER_0),A
        LD D,A
        LD A,(HL)
        INC HL
        OUT (PCG_COUNTER_0),A
        OR D
        JR Z,_rest_0
        SET 3,E                 ; PCG_GATE_0
_rest_0:
        LD A,(HL)
        INC HL
        OUT (PCG_COUNTER_1),A
        LD D,A
        LD A,(HL)
        INC HL
        OUT (PCG_COUNTER_1),A
        OR D
        JR Z,_rest_1
        SET 6,E                 ; PCG_GATE_1
_rest_1:
        LD A,(HL)
        INC HL
        LD (melody_left),A
        OR A
        JR NZ,_sounds
        LD E,0                  ; the end
_sounds:
        LD (melody_next),HL
; Gates E open, the others shut.
pcg_gates:
        LD A,E
        LD (pcg_latch),A
        OUT (PCG_CONTROL),A
        RET

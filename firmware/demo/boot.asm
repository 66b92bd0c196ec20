; From power-on to a machine whose devices run: no screen contents, no program yet.

; Devices in a known state, variables zero, interrupts running. In: SP set, interrupts off.
machine_init:
        LD HL,WORK
        LD DE,WORK + 1
        LD BC,WORK_END - WORK - 1
        LD (HL),0
        LDIR
        XOR A
        OUT (INTERRUPT_MASK),A
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        OUT (SELECT_RAM),A
        XOR A
        CALL system_write
        CALL sound_init
        CALL screen_init
        CALL graphics_init
        CALL keyboard_init
        JP interrupts_start

; Looks for the expansion ROM by its first bytes; keeps what it found.
expansion_init:
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        LD HL,EXPANSION_START
        LD DE,expansion_mark
        LD B,4
_compare:
        LD A,(DE)
        CP (HL)
        JR NZ,_missing
        INC HL
        INC DE
        DJNZ _compare
        LD A,1
        LD (expansion_found),A
_missing:
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        RET
expansion_mark:
        DEFB "KIV4"

; Calls entry A (0 or 1) of the expansion ROM; HL, DE and BC reach it. Does nothing when there is none.
; Interrupts go on meanwhile: their code and the stack lie outside the window.
expansion_call:
        PUSH AF
        LD A,(expansion_found)
        OR A
        JR NZ,_there
        POP AF
        RET
_there:
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        POP AF
        OR A
        JR NZ,_second
        CALL EXPANSION_START + 4
        JR _back
_second:
        CALL EXPANSION_START + 7
_back:
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        RET

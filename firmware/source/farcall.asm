; Calls into the expansion ROM from code below 6000h.
;   far_call    A = number of an entry (FAR_...). BC, DE, HL reach it; AF, BC, DE, HL come back from it.
;               What stood at 6000h before stands there again afterwards, so far calls may nest. Not for interrupts.
; A handler in the expansion ROM is called through a stub below:  do_circle: LD A,FAR_CIRCLE / JP far_call
; (it begins with CALL this_char where it wants A = (HL) and Z). To add one: a FAR_... here and a JP at the same place
; of far_table.asm.

FAR_MONITOR     EQU 0
FAR_DEMO        EQU 1
FAR_STOPPED     EQU 2           ; a breakpoint of the monitor
FAR_LOGO        EQU 3           ; large letters for the title
FAR_INIT        EQU 4           ; graphics: planes.asm
FAR_CLEAR       EQU 5
FAR_PSET        EQU 6
FAR_POINT       EQU 7
FAR_LINE        EQU 8
FAR_FILL        EQU 9
FAR_PAINT       EQU 10
FAR_CIRCLE      EQU 11

        IF NBASIC
far_call:
        LD E,ERR_UNAVAILABLE
        JP error
        ELSE
far_call:
        LD (far_hl),HL
        LD L,A
        ADD A,A
        ADD A,L
        ADD A,EXPANSION_TABLE AND 0FFh
        LD L,A
        LD H,EXPANSION_TABLE / 256
        LD (far_entry),HL
        LD A,(far_found)
        OR A
        LD E,ERR_UNAVAILABLE
        JP Z,error
        IN A,(EXPANSION)
        PUSH AF                 ; what stands there now
        LD HL,_back
        PUSH HL
        LD HL,(far_entry)
        PUSH HL
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        LD HL,(far_hl)
        RET                     ; to the entry
_back:  LD (far_hl),HL
        POP HL
        PUSH AF
        LD A,H
        OUT (EXPANSION),A
        POP AF
        LD HL,(far_hl)
        RET

; Looks for the expansion ROM by its mark.
far_init:
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        LD HL,EXPANSION_START
        LD DE,far_mark
        LD B,8
_compare:
        LD A,(DE)
        CP (HL)
        JR NZ,_end
        INC HL
        INC DE
        DJNZ _compare
        LD A,1
        LD (far_found),A
_end:   LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        RET
far_mark:
        DEFB "KIVBASIC"
        ENDIF

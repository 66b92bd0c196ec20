; RENUM [new[,old[,step]]]: the lines from old on get the numbers new, new + step ...; whatever names them follows.
; Between edit and run all references are numbers (edit_begin). Nothing is changed when the numbers would not fit.

RENUM_LAST      EQU 65529       ; highest line number

do_renum:
        LD DE,10
        LD (renum_new),DE
        LD (renum_step),DE
        LD DE,0
        LD (renum_old),DE
        CALL this_char
        JR Z,_read
        CP ","
        JR Z,_old
        CALL edit_line_number
        LD (renum_new),DE
        JR Z,_read
_old:   CALL expect
        DEFB ","
        CP ","
        JR Z,_step
        CALL edit_line_number
        LD (renum_old),DE
        JR Z,_read
_step:  CALL expect
        DEFB ","
        CALL edit_line_number
        LD (renum_step),DE
        JP NZ,syntax_error
_read:  LD HL,(renum_step)
        LD A,H
        OR L
        JP Z,illegal_call
        CALL edit_begin
        CALL renum_check

        CALL renum_first        ; references
_line:  JR C,_numbers
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD (renum_line),DE
_token: LD A,(HL)
        OR A
        JR Z,_next
        CP TOK_LINENO
        CALL Z,renum_reference
        CALL token_skip
        JR _token
_next:  CALL line_follow
        JR _line

_numbers:
        CALL renum_first
_number:
        JR C,_done
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        PUSH HL
        CALL renum_passed
        POP HL
        DEC HL
        JR C,_before
        LD (HL),E
        INC HL
        LD (HL),D
        DEC HL
_before:
        DEC HL
        DEC HL
        CALL renum_next
        JR _number
_done:  JP ready

; HL = the first line, page set; carry: there is none. The count of new numbers begins.
renum_first:
        LD HL,(renum_new)
        LD (renum_value),HL
        LD DE,PROGRAM_START
        CALL place_to_text
        LD A,(HL)
        INC HL
        OR (HL)
        DEC HL
        RET NZ
        SCF
        RET

; A line of number DE: its new number in DE, or carry: it lies before them. Uses AF, HL.
renum_passed:
        LD HL,(renum_old)
        EX DE,HL
        OR A
        SBC HL,DE
        RET C
        LD DE,(renum_step)
        LD HL,(renum_value)
        PUSH HL
        ADD HL,DE
        LD (renum_value),HL
        POP DE
        OR A
        RET

; Illegal function call unless all new numbers are in order and none is too high.
renum_check:
        CALL renum_first
        RET C
_line:  PUSH HL
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD HL,(renum_old)
        EX DE,HL
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_before
        LD HL,(renum_value)     ; its new number
        LD DE,RENUM_LAST + 1
        OR A
        SBC HL,DE
        JP NC,illegal_call
        ADD HL,DE
        LD DE,(renum_step)
        ADD HL,DE
        JR NC,_fits
        LD HL,0FFFFh            ; no other may follow
_fits:  LD (renum_value),HL
        JR _next
_before:
        LD DE,(renum_new)       ; it keeps its number, which must be the smaller
        OR A
        SBC HL,DE
        JP NC,illegal_call
_next:  POP HL
        CALL renum_next
        JR NC,_line
        RET

; HL at the number of a line in the program: it becomes the new one. One that is not there stays, and is told.
; Keeps HL and the page.
renum_reference:
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD (renum_wanted),DE
        CALL renum_first
        JR C,_missing
_line:  PUSH HL
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD HL,(renum_wanted)
        OR A
        SBC HL,DE
        PUSH AF
        CALL renum_passed
        JR NC,_changes
        LD DE,(renum_wanted)
_changes:
        POP AF
        POP HL
        JR Z,_found
        CALL renum_next
        JR NC,_line
_missing:
        LD HL,renum_undefined
        CALL console_text
        LD HL,(renum_wanted)
        CALL number_out
        LD HL,text_in
        CALL console_text
        LD HL,(renum_line)
        CALL number_out
        CALL console_newline
        LD DE,(renum_wanted)
_found: POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        PUSH HL
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
renum_undefined:
        DEFB "Undefined line ",0

; HL at a line: at the next, page set. Carry: there is none.
renum_next:
        LD C,(HL)
        INC HL
        LD B,(HL)
        DEC HL
        ADD HL,BC
        DEC HL
        JP line_follow

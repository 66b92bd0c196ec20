; Control flow: FOR NEXT WHILE WEND GOSUB RETURN GOTO ON IF END STOP CONT RUN RESUME, ON ERROR, DEF FN.
;
; Frames grow down from FRAMES; (frame_top) is the newest. All begin with a type and end with a place: page, text
; pointer, line pointer. A place is where the program goes on.
;   FRAME_INTEGER   variable, step, limit (2 bytes each), place
;   FRAME_FLOAT     variable, step, limit (5 bytes each), place
;   FRAME_GOSUB, FRAME_WHILE    place
;   frames_clear    none left
;   place_go        HL at a place: HL = its text pointer, page and line set
;   place_put       the place HL to (DE), which moves on; HL is kept
;   line_target     HL at a line number's token: DE = the line's address, HL behind it

FRAME_NONE      EQU 0
FRAME_GOSUB     EQU 1
FRAME_INTEGER   EQU 2
FRAME_FLOAT     EQU 3
FRAME_WHILE     EQU 4
PLACE           EQU 5
INTEGER_SIZE    EQU 7 + PLACE
FLOAT_SIZE      EQU 13 + PLACE
GOSUB_SIZE      EQU 1 + PLACE

frames_clear:
        LD HL,FRAMES - 1
        LD (HL),FRAME_NONE
        LD (frame_top),HL
        RET

place_go:
        LD A,(HL)
        OUT (WINDOW_PAGE),A
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,(HL)
        LD (line_pointer),A
        INC HL
        LD A,(HL)
        LD (line_pointer + 1),A
        EX DE,HL
        RET

place_put:
        IN A,(WINDOW_PAGE)
        LD (DE),A
        INC DE
        LD A,L
        LD (DE),A
        INC DE
        LD A,H
        LD (DE),A
        INC DE
        LD A,(line_pointer)
        LD (DE),A
        INC DE
        LD A,(line_pointer + 1)
        LD (DE),A
        INC DE
        RET

; A new frame of C bytes: DE = its start, now the newest. HL is kept.
frame_new:
        PUSH HL
        LD HL,(frame_top)
        LD B,0
        OR A
        SBC HL,BC
        LD A,H
        CP FRAMES_LIMIT / 256
        LD E,ERR_MEMORY
        JP C,error
        LD (frame_top),HL
        EX DE,HL
        POP HL
        RET

; HL = frame, A = its type: HL = the frame before it. Z: there is none.
frame_before:
        LD C,GOSUB_SIZE
        CP FRAME_INTEGER
        JR C,_gosub
        LD C,INTEGER_SIZE
        JR Z,_size
        LD C,FLOAT_SIZE
        CP FRAME_FLOAT
        JR Z,_size
        LD C,GOSUB_SIZE
_gosub: OR A
        RET Z
_size:  LD B,0
        ADD HL,BC
        LD A,H                  ; NZ
        OR A
        RET

; ---- Lines as targets

line_target:
        LD A,(HL)
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        CP TOK_LINENO_AT
        RET Z
        CP TOK_LINENO
        JP NZ,syntax_error
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        CALL find_line
        JR NZ,_missing
        CALL text_to_place
        POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        DEC HL                  ; found once and for all
        LD (HL),D
        DEC HL
        LD (HL),E
        DEC HL
        LD (HL),TOK_LINENO_AT
        LD A,TOK_LINENO_AT
        LD (lines_resolved),A
        INC HL
        INC HL
        INC HL
        RET
_missing:
        POP AF
        OUT (WINDOW_PAGE),A
        LD E,ERR_LINE
        JP error

; ---- GOTO GOSUB RETURN

do_goto:
        CALL line_target
        POP BC
        JP goto_line

do_gosub:
        CALL line_target
gosub_line:                     ; DE = line, HL where RETURN goes on
        PUSH DE
        LD C,GOSUB_SIZE
        CALL frame_new
        LD A,FRAME_GOSUB
        LD (DE),A
        INC DE
        CALL place_put
        POP DE
        POP BC
        JP goto_line

do_return:
        PUSH AF
        PUSH HL
        LD HL,(frame_top)
_look:  LD A,(HL)
        CP FRAME_GOSUB
        JR Z,_found
        CALL frame_before
        JR NZ,_look
        LD E,ERR_RETURN
        JP error
_found: LD BC,GOSUB_SIZE
        EX DE,HL
        LD H,B
        LD L,C
        ADD HL,DE
        LD (frame_top),HL
        POP HL
        POP AF
        JR NZ,_line
        EX DE,HL
        INC HL
        CALL place_go
        LD A,(HL)               ; an event came before a statement
        CP ":"
        RET Z
        OR A
        RET Z
        POP BC
        JP statement
_line:  JR do_goto

; ---- IF

do_if:  CALL evaluate
        LD A,B
        OR A
        JR NZ,_float
        LD A,D
        OR E
        JR Z,_false
_true:  LD A,(HL)
        CP TOK_GOTO
        JR Z,_goto
        CP TOK_THEN
        JP NZ,syntax_error
        INC HL
        LD A,(HL)
        CP TOK_LINENO_AT + 1
        JR C,_line
_statement:
        POP BC
        JP statement_again      ; RESUME asks the condition again
_goto:  INC HL
        LD A,(HL)
_line:  OR A
        RET Z
        CALL line_target
        POP BC
        JP goto_line
_float: JP M,type_mismatch
        JR _true
; To the ELSE of this IF, or to the end of the line.
_false: LD A,(HL)
        CP TOK_THEN
        JR Z,_skip
        CP TOK_GOTO
        JP NZ,syntax_error
_skip:  LD B,1
_next:  LD A,(HL)
        CP 22h
        JR C,_low
        JR Z,_token
        CP TOK_FIRST
        JR C,_plain
        CP TOK_ELSE
        JR Z,_else
        CP TOK_IF
        JR Z,_if
        CP TOK_DATA
        JR Z,_token
        CP TOK_REM
        JR Z,_token
        CP TOK_QUOTE
        JR Z,_token
        CP TOK_FUNCTION
        JR Z,_token
_plain: INC HL
        JR _next
_low:   OR A
        RET Z                   ; the end of the line
_token: CALL token_skip
        JR _next
_if:    INC B
        JR _plain
_else:  DJNZ _plain
        INC HL
        LD A,(HL)
        CP TOK_LINENO_AT + 1
        JR C,_line
        JR _statement

; REM, and ELSE reached from above: the rest of the line is not for us.
do_rem:
do_else:
line_rest:
        LD HL,(line_pointer)
        LD E,(HL)
        INC HL
        LD D,(HL)
        ADD HL,DE
        DEC HL
        DEC HL                  ; the 0
        RET

; ---- ON n GOTO/GOSUB, ON ERROR GOTO, ON STOP

do_on:  LD A,(HL)
        CP TOK_ERROR
        JR Z,on_error
        CP TOK_STOP
        JP Z,on_stop
        CP TOK_KEY
        JP Z,on_key
        CALL eval_integer
        BIT 7,D
        JP NZ,illegal_call
        LD A,D
        OR A
        JR Z,_byte
        LD E,0                  ; beyond all
_byte:  LD B,E
        LD A,(HL)
        LD C,A
        CP TOK_GOTO
        JR Z,_list
        CP TOK_GOSUB
        JP NZ,syntax_error
_list:  INC HL
        LD A,B
        OR A
        JR Z,_none
_skip:  DEC B
        JR Z,_here
        INC HL
        INC HL
        INC HL
        LD A,(HL)
        CP ","
        RET NZ                  ; fewer than n
        INC HL
        JR _skip
_here:  PUSH BC
        CALL line_target
        POP BC
        LD A,C
        CP TOK_GOTO
        JR NZ,_gosub
        POP BC
        JP goto_line
_gosub: LD A,(HL)               ; behind the list RETURN goes on
        CP ","
        JP NZ,gosub_line
        INC HL
        INC HL
        INC HL
        INC HL
        JR _gosub
_none:  INC HL
        INC HL
        INC HL
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JR _none

on_error:
        INC HL
        CALL expect
        DEFB TOK_GOTO
        PUSH HL
        LD A,(HL)
        INC HL
        CP TOK_LINENO
        JR NZ,_line
        LD A,(HL)
        INC HL
        OR (HL)
        JR NZ,_line
        POP HL
        INC HL
        INC HL
        INC HL
        PUSH HL
        LD HL,0
        LD (error_target),HL
        LD A,(error_handling)
        OR A
        POP HL
        RET Z
        XOR A                   ; inside a handler: the error as if there were none
        LD (error_handling),A
        LD HL,resume_place
        CALL place_go
        JP error_resumed
_line:  POP HL
        CALL line_target
        INC DE
        LD (error_target),DE
        RET

; ON STOP GOSUB line; STOP ON/OFF in do_stop.
on_stop:
        INC HL
        CALL expect
        DEFB TOK_GOSUB
        CALL line_target
        INC DE
        LD (stop_target),DE
        RET

; ON KEY GOSUB line[,line...]: a line may be left out.
on_key: INC HL
        CALL expect
        DEFB TOK_GOSUB
        LD BC,key_targets
_key:   LD A,(HL)
        CP TOK_LINENO
        JR Z,_line
        CP TOK_LINENO_AT
        JR NZ,_none
_line:  PUSH BC
        CALL line_target
        POP BC
        INC DE
        LD A,E
        LD (BC),A
        INC BC
        LD A,D
        LD (BC),A
        DEC BC
_none:  INC BC
        INC BC
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        LD A,C
        CP key_traps AND 255
        JR NZ,_key
        JP syntax_error

; A key was caught: its GOSUB before the line at HL. Else HL is kept.
key_event:
        PUSH HL
        LD HL,trace_flag
        RES 7,(HL)
        CALL line_direct
        JR Z,_none
        LD HL,key_traps
        LD DE,key_targets
        LD B,KEY_TEXTS
_key:   LD A,(HL)
        CP 81h
        JR Z,_caught
_next:  INC HL
        INC DE
        INC DE
        DJNZ _key
_none:  POP HL
        RET
_caught:
        RES KEY_TRAP_CAUGHT,(HL)
        EX DE,HL
        LD C,(HL)
        INC HL
        LD A,(HL)
        DEC HL
        EX DE,HL
        OR C
        JR Z,_next              ; no line
        LD HL,trace_flag        ; there may be more
        SET 7,(HL)
        EX DE,HL
        INC HL
        LD D,(HL)
        LD E,C
        DEC DE
        POP HL
        LD SP,STACK
        PUSH HL                 ; in place of a return address
        JP gosub_line

; ---- RESUME [0 | NEXT | line]

do_resume:
        LD A,(error_handling)
        OR A
        LD E,ERR_NO_ERROR
        JP Z,error
        XOR A
        LD (error_handling),A
        CALL this_char
        JR Z,_again
        CP TOK_NEXT
        JR Z,_next
        LD A,(HL)
        CP TOK_LINENO
        JR NZ,_line
        INC HL
        LD A,(HL)
        INC HL
        OR (HL)
        DEC HL
        DEC HL
        JR Z,_again
_line:  JP do_goto
_next:  LD HL,resume_place
        CALL place_go
        JP skip_statement
_again: LD HL,resume_place
        CALL place_go
        POP BC
        JP statement

; ---- FOR

do_for: LD A,(HL)
        CP TOK_VAR
        JP NZ,syntax_error
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,(HL)
        CP TOK_EQUAL
        JP NZ,syntax_error
        INC HL
        PUSH DE
        CALL let_number
        CALL expect
        DEFB TOK_TO
        CALL evaluate
        LD IX,for_limit
        CALL value_put
        LD DE,1
        LD B,D
        LD A,(HL)
        CP TOK_STEP
        JR NZ,_step
        INC HL
        CALL evaluate
_step:  LD IX,for_step
        CALL value_put
        POP DE
        PUSH HL
        CALL for_forget
        LD A,(DE)               ; all three integers?
        LD HL,for_limit
        OR (HL)
        LD HL,for_step
        OR (HL)
        JR NZ,_float
        LD HL,(for_limit + 1)
        INC DE
        LD A,(for_step + 2)
        OR A
        EX DE,HL                ; DE limit, HL at the variable's value
        JP M,_down
        LD A,E                  ; limit - value
        SUB (HL)
        INC HL
        LD A,D
        SBC A,(HL)
        JR _compared
_down:  LD A,(HL)
        SUB E
        INC HL
        LD A,(HL)
        SBC A,D
_compared:
        JP PO,_sign
        XOR 80h
_sign:  JP M,for_skip
        DEC HL
        DEC HL
        EX DE,HL                ; DE variable, HL limit
        EX (SP),HL
        PUSH DE
        LD C,INTEGER_SIZE
        CALL frame_new
        LD A,FRAME_INTEGER
        LD (DE),A
        INC DE
        POP BC
        EX DE,HL
        LD (HL),C
        INC HL
        LD (HL),B
        INC HL
        LD BC,(for_step + 1)
        LD (HL),C
        INC HL
        LD (HL),B
        INC HL
        POP BC
        LD (HL),C
        INC HL
        LD (HL),B
        INC HL
        EX DE,HL
        JP place_put
_float: PUSH DE
        EX DE,HL
        CALL fac_load
        CALL for_passed
        POP DE
        JP C,for_skip
        POP HL
        PUSH DE
        LD C,FLOAT_SIZE
        CALL frame_new
        LD A,FRAME_FLOAT
        LD (DE),A
        INC DE
        POP BC
        PUSH HL
        LD A,C
        LD (DE),A
        INC DE
        LD A,B
        LD (DE),A
        INC DE
        LD HL,for_step
        CALL fac_copy
        LD HL,for_limit
        CALL fac_copy
        POP HL
        JP place_put

; The number B, DE, FAC to (IX). HL is kept.
value_put:
        LD A,B
        OR A
        JR NZ,_float
        LD (IX + 0),A
        LD (IX + 1),E
        LD (IX + 2),D
        RET
_float: JP M,type_mismatch
        PUSH HL
        PUSH IX
        POP DE
        LD HL,FAC
        CALL fac_copy
        POP HL
        RET

; Carry: FAC is past for_limit in the direction of for_step.
for_passed:
        LD HL,for_limit
        CALL float_compare      ; limit with value
        RET Z                   ; equal: no carry
        PUSH AF
        LD A,(for_step)
        OR A
        LD HL,for_step + 2
        JR Z,_sign
        LD HL,for_step + 4
_sign:  POP AF
        BIT 7,(HL)
        RET Z                   ; upward: carry when the limit is smaller
        CCF
        RET

; The loop of variable DE, if it is open in this subroutine, is left; those begun within it stay, for it may have been
; jumped out of long ago. DE is kept.
for_forget:
        LD HL,(frame_top)
_look:  LD A,(HL)
        CP FRAME_INTEGER
        RET C
        CP FRAME_WHILE
        JR Z,_on
        INC HL
        LD C,A
        LD A,(HL)
        INC HL
        CP E
        JR NZ,_other
        LD A,(HL)
        CP D
        JR Z,_found
_other: LD A,C
        DEC HL
        DEC HL
_on:    CALL frame_before
        JR _look
_found: DEC HL
        DEC HL
        PUSH DE
        LD D,H
        LD E,L
        LD A,C
        CALL frame_before
        PUSH HL
        LD HL,(frame_top)
        EX DE,HL
        OR A
        SBC HL,DE
        LD B,H                  ; bytes of newer ones, which move up
        LD C,L
        ADD HL,DE
        POP DE
        LD A,B
        OR C
        JR Z,_moved
        DEC HL
        DEC DE
        LDDR
        INC DE
_moved: LD (frame_top),DE
        POP DE
        RET

; The loop is not run at all: on behind its NEXT. Text pointer on the stack.
for_skip:
        POP HL
        LD DE,scan_place
        CALL place_put
        LD DE,0100h + ERR_FOR   ; D: loops open
_next:  CALL scan_token
        CP TOK_FOR
        JR NZ,_no_for
        INC D
_no_for:
        CP TOK_NEXT
        JR NZ,_next
_variable:
        LD A,(HL)
        CP TOK_VAR
        JR NZ,_close
        INC HL
        INC HL
        INC HL
_close: DEC D
        JR Z,_found
        LD A,(HL)
        CP ","
        JR NZ,_next
        INC HL
        JR _variable
_found: LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JR next_variable

; Moves on over one token, into following lines, too: A = it, HL behind it. At the end of the program error E, of the
; statement at scan_place. DE is kept.
scan_token:
        LD A,(HL)
        OR A
        JR Z,_line
        PUSH AF
        CALL token_skip
        POP AF
        RET
_line:  CALL line_follow
        JR C,_none
        LD (line_pointer),HL
        INC HL
        INC HL
        INC HL
        INC HL
        JR scan_token
_none:  PUSH DE
        LD HL,scan_place
        CALL place_go
        POP DE
        JP error

; ---- NEXT

do_next:
        JP Z,next_newest
next_variable:
        LD A,(HL)
        CP TOK_VAR
        JP NZ,syntax_error
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH HL
        LD HL,(frame_top)
next_look:
        LD A,(HL)
        CP FRAME_INTEGER
        JR NZ,next_no_integer
        INC HL
        LD A,(HL)
        INC HL
        CP E
        JR NZ,next_inner
        LD A,(HL)
        CP D
        JR NZ,next_inner
        INC HL
next_integer:                   ; DE variable, HL frame's step
        LD A,(DE)
        OR A
        JP NZ,next_mixed        ; the loop made a float of it
        LD C,(HL)
        INC HL
        LD B,(HL)
        INC HL
        PUSH HL
        EX DE,HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        EX DE,HL
        ADC HL,BC               ; carry is clear
        EX DE,HL                ; DE value, HL its high byte
        JP PE,next_over
        LD (HL),D
        DEC HL
        LD (HL),E
        POP HL
        BIT 7,B
        JR NZ,next_down
        LD A,(HL)
        SUB E
        INC HL
        LD A,(HL)
        SBC A,D
        JP PE,next_flip
        JP M,next_done
next_loop:
        INC HL
        LD A,(HL)
        OUT (WINDOW_PAGE),A
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD (line_pointer),HL
        EX DE,HL
        POP DE
        LD A,(stop_flag)
        OR A
        RET Z
        JP stop_pressed_at
next_flip:
        JP M,next_loop
        JR next_done
next_down:
        LD A,E
        SUB (HL)
        INC HL
        LD A,D
        SBC A,(HL)
        JP PE,next_flip
        JP P,next_loop
        JR next_done
next_inner:
        DEC HL
        DEC HL
        LD A,FRAME_INTEGER
next_no_integer:
        CP FRAME_FLOAT
        JR NZ,_other
        INC HL
        LD A,(HL)
        INC HL
        CP E
        JR NZ,_no_float
        LD A,(HL)
        CP D
        JR Z,next_float
_no_float:
        DEC HL
        DEC HL
        LD A,FRAME_FLOAT
_other: CP FRAME_GOSUB + 1
        JR C,next_without
        CALL frame_before
        LD (frame_top),HL       ; inner loops are left
        JP next_look
next_newest:
        PUSH HL
        LD HL,(frame_top)
        LD A,(HL)
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        CP FRAME_FLOAT
        JR Z,next_float
        INC HL
        CP FRAME_INTEGER
        JP Z,next_integer
        DEC HL
        DEC HL
        DEC HL
        CP FRAME_WHILE
        JR NZ,next_without
        CALL frame_before
        LD (frame_top),HL
        POP HL
        JR next_newest
next_without:
        LD E,ERR_NEXT
        JP error

; HL at the limit's last byte: the loop ends, the frame goes.
next_done:
        LD BC,PLACE + 1
        ADD HL,BC
next_gone:
        LD (frame_top),HL
        POP HL
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JP next_variable

; The integer would pass 32767: the loop is over, the variable goes on as a float where it may.
next_over:
        POP HL                  ; limit
        DEC HL
        DEC HL
; The frame holds integers, the variable a float (HL at the step), or the sum does not fit.
next_mixed:
        DEC HL
        DEC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH HL
        XOR A
        LD (for_step),A
        LD (for_limit),A
        LD C,(HL)
        INC HL
        LD B,(HL)
        INC HL
        LD (for_step + 1),BC
        LD C,(HL)
        INC HL
        LD B,(HL)
        LD (for_limit + 1),BC
        CALL next_step
        POP HL                  ; at the step
        INC HL
        INC HL
        INC HL
        JR C,next_done
        JP next_loop
; HL behind the variable's low byte in the frame, DE the variable.
next_float:
        INC HL
        PUSH DE
        LD DE,for_step
        CALL fac_copy
        LD DE,for_limit
        CALL fac_copy
        POP DE
        DEC HL
        PUSH HL
        CALL next_step
        POP HL
        JR C,next_done
        JP next_loop

; Variable DE one step on; carry: past its limit.
next_step:
        PUSH DE
        EX DE,HL
        CALL fac_load
        LD HL,for_step
        CALL float_add
        POP DE
        PUSH DE
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        AND TYPE_VALUE
        JR NZ,_store
        CALL float_to_integer
        CALL integer_to_fac
_store: POP HL
        CALL fac_store
        JP for_passed

; ---- WHILE WEND

do_while:
        PUSH HL                 ; the condition
        CALL while_condition
        JR Z,_skip
        EX (SP),HL
        LD C,GOSUB_SIZE
        CALL frame_new
        LD A,FRAME_WHILE
        LD (DE),A
        INC DE
        CALL place_put
        POP HL
        RET
_skip:  POP DE
        LD DE,scan_place
        CALL place_put
        LD DE,0100h + ERR_WHILE
_next:  CALL scan_token
        CP TOK_WHILE
        JR NZ,_no_while
        INC D
_no_while:
        CP TOK_WEND
        JR NZ,_next
        DEC D
        JR NZ,_next
        RET

do_wend:
        PUSH HL
        LD HL,(frame_top)
_look:  LD A,(HL)
        CP FRAME_WHILE
        JR Z,_found
        CP FRAME_INTEGER
        JR C,_without
        CALL frame_before
        LD (frame_top),HL
        JR _look
_without:
        LD E,ERR_WEND
        JP error
_found: INC HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        LD DE,(line_pointer)
        PUSH DE
        CALL place_go
        CALL while_condition
        JR Z,_end
        POP DE
        POP DE
        POP DE
        LD A,(stop_flag)
        OR A
        RET Z
        JR stop_pressed_at
_end:   POP DE
        LD (line_pointer),DE
        POP AF
        OUT (WINDOW_PAGE),A
        LD HL,(frame_top)
        LD BC,GOSUB_SIZE
        ADD HL,BC
        LD (frame_top),HL
        POP HL
        RET
while_condition:                ; Z: false
        CALL evaluate
        LD A,B
        OR A
        JP M,type_mismatch
        RET NZ
        LD A,D
        OR E
        RET

; ---- END STOP CONT RUN NEW CLEAR

do_end: CALL line_direct
        LD DE,cont_place
        CALL NZ,place_put       ; CONT goes on behind it
        JP ready
program_over:
        LD A,(error_handling)
        OR A
        JP Z,ready
        LD HL,TOKENS            ; no line is to blame
        LD (line_pointer),HL
        LD E,ERR_RESUME
        JP error

do_stop:
        LD A,(HL)
        CP TOK_ON
        JR Z,_switch
        CP TOK_OFF
        JR Z,_switch
        OR A
        JR Z,stop_here
        CP ":"
        JP NZ,syntax_error
        JR stop_here
_switch:
        SUB TOK_ON              ; 0: on
        LD (stop_off),A
        INC HL
        RET
; The running program stops and can go on at HL.
stop_here:
        CALL line_direct
        LD DE,cont_place
        CALL NZ,place_put
        JP break_message

; STOP was pressed: before the statement at HL.
stop_pressed_at:
        LD A,(HL)
        CP ":"
        JR NZ,stop_pressed
        INC HL
stop_pressed:
        XOR A
        LD (stop_flag),A
        LD DE,(stop_target)
        LD A,D
        OR E
        JR Z,_break
        LD A,(stop_off)
        OR A
        JR NZ,_break
        DEC DE
        LD SP,STACK
        PUSH HL                 ; in place of a return address
        JP gosub_line
_break: JR stop_here

do_cont:
        LD HL,cont_place
        LD A,(HL)
        INC A
        LD E,ERR_CONTINUE
        JP Z,error
        CALL place_go
        LD A,0FFh
        LD (cont_place),A
        POP BC
        LD A,(HL)
        CP ":"
        JP Z,statement_end
        OR A
        JP Z,statement_end
        JP statement

do_run: JR Z,_first
        LD A,(HL)
        CP 22h
        JR Z,do_load_run
        CALL line_target
        PUSH DE
        CALL run_reset
        POP DE
        POP BC
        JP goto_line
_first: CALL run_reset
        POP BC
program_run:
        LD DE,PROGRAM_START
        JP goto_line
do_load_run:
        LD A,1
        LD (run_after),A
        JP do_load
; A program has been loaded.
load_done:
        LD A,(run_after)
        OR A
        JP Z,ready
        CALL run_reset
        LD SP,STACK
        JR program_run

; As at the start of a program: no values, frames, handlers, data from the first line, names without a suffix single.
run_reset:
        CALL types_reset
variables_reset:
        CALL variables_clear
        CALL frames_clear
        LD HL,key_targets
        LD DE,key_targets + 1
        LD BC,key_traps_end - key_targets - 1
        LD (HL),0
        LDIR
        LD HL,0
        LD (error_target),HL
        LD (stop_target),HL
        LD (data_pointer),HL
        LD A,H
        LD (error_handling),A
        LD (option_base),A
        LD (stop_off),A
        DEC A
        LD (cont_place),A
        RET

types_reset:
        LD HL,def_types
        LD BC,26 * 256 + 0
_type:  LD A,(HL)
        LD (HL),1
        DEC A
        OR C
        LD C,A
        INC HL
        DJNZ _type
        OR A
        RET Z
        JP types_apply

do_new: JP NZ,syntax_error    ; NEWS is no reason to lose a program
        CALL program_clear
        JP ready

; CLEAR [ignored] [,top of memory + 1]
do_clear:
        JR Z,_plain
        LD A,(HL)
        CP ","
        CALL NZ,eval_number     ; room for strings: it is not divided off here
        LD A,(HL)
        CP ","
        JR NZ,_plain
        INC HL
        CALL eval_word
        PUSH HL
        CALL memory_move
        POP HL
_plain: PUSH HL
        CALL types_reset
        CALL variables_reset
        POP HL
        RET

; ---- Functions of one's own

; DEF FNname[(parameters)] = expression; DEF USR[n] = address
do_def: LD A,(HL)
        CP TOK_FUNCTION
        JR Z,def_usr
        CP TOK_FN
        JP NZ,syntax_error
        CALL line_direct        ; it must stay where it is
        LD E,ERR_DIRECT
        JP Z,error
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH HL
        IN A,(WINDOW_PAGE)
        EX DE,HL
        LD (HL),A
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        LD DE,(line_pointer)
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
skip_statement:
_skip:  LD A,(HL)
        OR A
        RET Z
        CP ":"
        RET Z
        CALL token_skip
        JR _skip
def_usr:
        INC HL
        LD A,(HL)
        INC HL
        CP FN_USR
        JP NZ,syntax_error
        CALL usr_slot
        PUSH DE
        CALL expect
        DEFB TOK_EQUAL
        CALL eval_word
        EX (SP),HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET

; HL behind USR: DE = where the address of the function stands, HL behind its digit.
usr_slot:
        LD A,(HL)
        SUB TOK_DIGIT
        CP 10
        JR C,_digit
        XOR A
        JR _slot
_digit: INC HL
_slot:  ADD A,A
        PUSH HL
        LD E,A
        LD D,0
        LD HL,usr_address
        ADD HL,DE
        EX DE,HL
        POP HL
        RET

; Z: the running line is the direct one.
line_direct:
        PUSH HL
        LD HL,(line_pointer)
        LD A,H
        SUB TOKENS / 256
        POP HL
        RET

; A call: HL behind TOK_FN. All arguments are evaluated first and lie on the stack, 6 bytes each: value, type; a
; string's value is its temporary. Then they are exchanged with the values of the parameters, the expression is
; evaluated in its own line, and they are exchanged back.
FN_RECORD       EQU 6

fn_call:
        PUSH BC
        CALL check_stack
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH DE
        LD B,0
        LD A,(HL)
        CP "("
        JR NZ,_ready
_argument:
        INC HL
        PUSH BC
        CALL evaluate
        LD A,B
        POP BC
        INC B
        OR A
        JR Z,_integer
        JP M,_string
        LD D,A
        LD A,(FAC + 4)
        LD E,A
        PUSH DE
        LD DE,(FAC + 2)
        PUSH DE
        LD DE,(FAC)
        JR _last
_integer:
        PUSH AF
        LD A,D
        LD D,E
        LD E,A
        PUSH DE                 ; high byte lowest
        LD E,0
        JR _last
_string:
        CALL temp_own
        LD A,80h
        PUSH AF
        PUSH DE
_last:  PUSH DE
        LD A,(HL)
        CP ","
        JR Z,_argument
        CP ")"
        JP NZ,syntax_error
        INC HL
_ready: PUSH HL
        IN A,(WINDOW_PAGE)
        LD D,A
        LD A,(page_borrowed)
        LD E,A
        PUSH DE
        INC A
        LD A,D
        JR NZ,_nested
        LD (page_borrowed),A
_nested:
        PUSH BC
        CALL fn_exchange
        CALL expect
        DEFB TOK_EQUAL
        CALL evaluate
        BIT 7,B
        CALL NZ,temp_own        ; a parameter's own string
        LD A,B
        POP BC
        PUSH BC
        LD C,A
        LD (fn_value),DE
        LD A,C
        LD (fn_value_type),A
        CALL fn_exchange
        POP BC
        POP DE
        LD A,D
        OUT (WINDOW_PAGE),A
        LD A,E
        LD (page_borrowed),A
        POP HL
        INC B
_drop:  DEC B                   ; the arguments go, the last one first
        JR Z,_dropped
        POP DE
        POP DE
        POP AF
        AND 80h
        JR Z,_drop
        LD A,(fn_value_type)
        OR A
        JP P,_free
        PUSH HL
        EX DE,HL
        LD DE,(fn_value)
        PUSH BC
        CALL string_settle
        POP BC
        LD (fn_value),DE
        POP HL
        JR _drop
_free:  CALL temp_free
        JR _drop
_dropped:
        POP DE                  ; the function's own type
        PUSH HL
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD C,(HL)
        POP HL
        LD DE,(fn_value)
        LD A,(fn_value_type)
        LD B,A
        LD A,C
        AND TYPE_VALUE
        CP TYPE_STRING
        JR Z,_text
        BIT 7,B
        JP NZ,type_mismatch
        OR A
        CALL Z,value_to_integer
        JP primary_end
_text:  BIT 7,B
        JP Z,type_mismatch
        JP primary_end

; DE = a descriptor: a temporary of that string, made unless it is the newest one. BC, HL are kept.
temp_own:
        CALL temp_newest
        RET Z
        PUSH HL
        PUSH BC
        LD A,(DE)
        PUSH DE
        CALL string_new
        EX (SP),HL              ; HL source, stack: room
        INC HL
        LD C,(HL)
        INC HL
        LD H,(HL)
        LD L,C
        POP BC
        PUSH DE
        LD D,B
        LD E,C
        CALL copy_text
        POP DE
        POP BC
        POP HL
        RET

; Stack: return address, count in B, page, text, arguments, symbol. Exchanges parameters and arguments; HL = text
; behind the parameters, the definition's page set. B = count.
fn_exchange:
        LD HL,8
        ADD HL,SP
        LD A,B
        ADD A,A
        ADD A,B
        ADD A,A
        LD E,A
        LD D,0
        ADD HL,DE
        LD (fn_record),HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD A,(HL)
        OUT (WINDOW_PAGE),A
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        OR H
        LD E,ERR_FUNCTION
        JP Z,error
        LD A,(HL)
        CP "("
        JR NZ,_done
_parameter:
        INC HL
        CALL variable_name
        DEC B
        JP M,syntax_error
        PUSH HL
        PUSH BC
        LD HL,(fn_record)
        LD BC,0 - FN_RECORD
        ADD HL,BC
        LD (fn_record),HL
        PUSH HL
        POP IX
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        AND TYPE_VALUE
        CP TYPE_STRING
        JR Z,_string
        BIT 7,(IX + 5)
        JP NZ,type_mismatch
        PUSH IX
        POP HL
        LD B,5
        CALL bytes_swap
        JR _next
_string:
        BIT 7,(IX + 5)
        JP Z,type_mismatch
        LD L,(IX + 2)
        LD H,(IX + 3)
        PUSH HL
        PUSH DE
        LD B,3
        CALL bytes_swap
        POP HL
        CALL string_owned
        POP HL
        CALL string_owned
_next:  POP BC
        POP HL
        LD A,(HL)
        CP ","
        JR Z,_parameter
        CALL arg_close
_done:  LD A,B
        OR A
        RET Z
        JP syntax_error

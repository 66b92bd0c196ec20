; AUTO, DELETE, EDIT: the program by line numbers.
;
;   do_auto         [line[,step]]: gives the numbers; an empty line or STOP ends it
;   do_delete       line, line-line, line- or -line
;   do_edit         line: shows it with the cursor in it
;   do_tron do_troff do_option
;   edit_line_number  HL at a line number or a step: DE = it, HL behind it, A and Z as this_char
;   edit_take_line  LINE_TEXT, a numbered line, into the program; carry: it has no number

edit_line_number:
        LD A,(HL)
        CP TOK_LINENO
        JR Z,_named
        CP TOK_LINENO_AT
        JR Z,_named
        CALL eval_word
        JP this_char
_named: CALL line_named
        JP this_char

do_auto:
        LD DE,TOKENS            ; the line that asked for it may go; errors name the one that is entered
        LD (line_pointer),DE
        LD DE,10
        LD (auto_line),DE
        LD (auto_step),DE
        CALL this_char
        JR Z,_next
        CP ","
        JR Z,_step
        CALL edit_line_number
        LD (auto_line),DE
        JR Z,_next
_step:  CALL expect
        DEFB ","
        CALL edit_line_number
        LD (auto_step),DE
        JP NZ,syntax_error
        LD A,D
        OR E
        JP Z,illegal_call
_next:  LD HL,(auto_line)
        LD DE,RENUM_LAST + 1
        OR A
        SBC HL,DE
        JR NC,_end
        CALL console_fresh
        LD HL,(auto_line)
        CALL number_out
        LD DE,(auto_line)
        CALL find_line
        LD A," "
        JR NZ,_free
        LD A,"*"                ; the line is there
_free:  CALL console_out
        CALL console_line
        JR C,_end
        CALL edit_star
        JR Z,_end
        CALL edit_take_line
        JR C,_end
        LD DE,(auto_step)
        LD HL,(TOKENS + 2)      ; the number may have been changed
        ADD HL,DE
        LD (auto_line),HL
        JR NC,_next
_end:   JP ready
; The star behind the number becomes a blank. Z: nothing else follows, and a line that is there stays.
edit_star:
        LD HL,LINE_TEXT - 1
_digit: INC HL
        LD A,(HL)
        CP "0"
        JR C,_behind
        CP "9" + 1
        JR C,_digit
_behind:
        CP "*"
        JR NZ,_blank
        LD (HL)," "
_blank: LD A,(HL)
        INC HL
        CP " "
        JR Z,_blank
        OR A
        RET

; The line in LINE_TEXT into the program. Carry: it has no number.
edit_take_line:
        LD HL,LINE_TEXT
        CALL enter_line
        CCF
        RET

do_delete:
        CALL this_char
        LD E,ERR_OPERAND
        JP Z,error
        CALL line_range
        LD (edit_from),BC
        LD (edit_to),DE
        CALL this_char
        JP NZ,syntax_error
        CALL edit_begin
        LD DE,(edit_from)
        CALL find_line
        JR Z,_line
        LD DE,(edit_from)       ; one line only: it must be there
        LD HL,(edit_to)
        OR A
        SBC HL,DE
        LD E,ERR_LINE
        JP Z,error
_next:  LD DE,(edit_from)
        CALL find_line
_line:  LD A,(HL)
        INC HL
        OR (HL)
        JP Z,ready              ; the end of the program
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        DEC HL
        DEC HL
        DEC HL
        PUSH HL
        LD HL,(edit_to)
        OR A
        SBC HL,DE
        POP HL
        JP C,ready
        CALL line_remove
        JR _next

; The line and the cursor behind its number.
do_edit:
        CALL this_char
        LD E,ERR_OPERAND
        JP Z,error
        CALL edit_line_number
        JP NZ,syntax_error
        CALL find_line
        LD E,ERR_LINE
        JP NZ,error
        CALL list_line
        CALL console_fresh
        LD HL,LINE_TEXT
        CALL console_text
        LD HL,LINE_TEXT
        LD DE,0                 ; E column behind the number, D characters
_number:
        LD A,(HL)
        INC HL
        INC E
        CP " "
        JR NZ,_number
        LD D,E
_count: LD A,(HL)
        INC HL
        INC D
        OR A
        JR NZ,_count
        DEC D
        LD A,(screen_columns)   ; rows above the one the cursor is in
        LD B,A
        LD A,(cursor_row)
        LD C,A
        LD A,D
        DEC A
_row:   SUB B
        JR C,_first
        INC C
        DEC C
        JR Z,_first             ; control codes in a remark may have led up
        DEC C
        JR _row
_first: LD D,C
        CALL console_locate
        JP direct_mode

; Small statements that find no room below.
do_tron:
        LD A,1
        JR trace_set
do_troff:
        XOR A
trace_set:
        LD (trace_flag),A
        RET

; OPTION BASE 0 or 1: both are taken, element 0 is always there.
do_option:
        CALL expect
        DEFB TOK_BASE
        CALL eval_byte
        CP 2
        JP NC,illegal_call
        LD (option_base),A
        RET

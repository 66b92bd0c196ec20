; INPUT, LINE INPUT, READ, DATA, RESTORE.

; INPUT ["prompt" ;|,] variable, ...
do_input:
        LD (input_start),HL
_again: LD HL,(input_start)
        CALL input_prompt
        JR Z,_asked
        LD A,"?"
        CALL console_out
        LD A," "
        CALL console_out
_asked: CALL input_text
        LD A,","
        LD (item_end),A
_next:  CALL target_variable
        PUSH HL
        LD HL,(input_pointer)
        CALL item_read
        LD (input_pointer),HL
        POP HL
        JR C,_wrong
        CALL store_value
        LD A,(HL)
        CP ","
        JR NZ,_last
        INC HL
        PUSH HL
        LD HL,(input_pointer)
        LD A,(HL)
        CP ","
        INC HL
        LD (input_pointer),HL
        POP HL
        JR Z,_next
_wrong: LD HL,text_redo
        CALL console_text
        CALL console_newline
        JR _again
_last:  PUSH HL
        LD HL,(input_pointer)
        LD A,(HL)
        POP HL
        OR A
        JR NZ,_wrong            ; more than asked for
        RET

; The text that stands first, with ; or , behind it. Z: no question mark is wanted. HL behind it.
input_prompt:
        LD A,(HL)
        CP 22h
        JR NZ,_none
        CALL evaluate
        CALL value_to_string
        CALL print_string
        LD A,(HL)
        INC HL
        CP ","
        RET Z
        CP ";"
        JP NZ,syntax_error
_none:  OR 1
        RET

; A line from the keyboard: input_pointer at it. HL is kept. STOP stops the program.
input_text:
        PUSH HL
        CALL console_input
        LD (input_pointer),HL
        POP HL
        RET NC
        LD HL,(statement_pointer)
        JP stop_here

; LINE INPUT ["prompt" ;|,] string variable
line_input:
        INC HL
        CALL input_prompt
        CALL target_variable
        LD A,(target_kind)
        CP KIND_STRING
        JP NZ,type_mismatch
        CALL input_text
        PUSH HL
        LD HL,(input_pointer)
        LD D,H
        LD E,L
        LD B,0
_count: LD A,(HL)
        OR A
        JR Z,_end
        INC HL
        INC B
        JR NZ,_count
        DEC B
_end:   POP HL
        CALL result_string
        JP store_value

; One item of INPUT or DATA at HL, of the kind of the target, ended by ",", 0 or (item_end): value B, DE, FAC; HL at
; its end. Carry: it is no number.
item_read:
        CALL skip_blanks
        LD A,(target_kind)
        CP KIND_STRING
        JR Z,_string
        CALL number_parse
        JR NC,_number
        CALL item_over
        SCF
        RET NZ
_number:
        CALL skip_blanks
        CALL item_over
        SCF
        RET NZ
        CALL result_fac
        OR A
        RET
_string:
        LD B,0
        LD A,(HL)
        CP 22h
        JR Z,_quoted
        LD D,H
        LD E,L
_count: CALL item_over
        JR Z,_trim
        INC HL
        INC B
        JR _count
_trim:  INC B                   ; blanks at the end are not meant
        PUSH HL
_blank: DEC B
        JR Z,_trimmed
        DEC HL
        LD A,(HL)
        CP " "
        JR Z,_blank
_trimmed:
        POP HL
_value: CALL result_string
        OR A
        RET
_quoted:
        INC HL
        LD D,H
        LD E,L
_letter:
        LD A,(HL)
        OR A
        JR Z,_value
        INC HL
        CP 22h
        JR Z,_closed
        INC B
        JR _letter
_closed:
        CALL result_string
        CALL skip_blanks
        CALL item_over
        SCF
        RET NZ
        OR A
        RET

; Z: HL is at the end of an item. A.
item_over:
        LD A,(HL)
        OR A
        RET Z
        CP ","
        RET Z
        PUSH HL
        LD HL,item_end
        CP (HL)
        POP HL
        RET

skip_blanks:
        LD A,(HL)
        CP " "
        RET NZ
        INC HL
        JR skip_blanks

text_redo:
        DEFB "?Redo from start",0

; ---- READ variable, ...

do_read:
        CALL target_variable
        PUSH HL
        IN A,(WINDOW_PAGE)
        LD (page_borrowed),A
        LD A,":"
        LD (item_end),A
        CALL data_find
        CALL item_read
        JR C,_wrong
        LD (data_pointer),HL
        IN A,(WINDOW_PAGE)
        LD (data_page),A
        LD A,(page_borrowed)
        OUT (WINDOW_PAGE),A
        LD A,0FFh
        LD (page_borrowed),A
        POP HL
        CALL store_value
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JR do_read
_wrong: LD DE,(error_target)    ; caught, it is an error of READ, which RESUME can go back to
        LD A,D
        OR E
        JP NZ,syntax_error
        EX DE,HL
        LD HL,(data_line)       ; else the DATA line is to blame
        LD (line_pointer),HL
        LD (statement_pointer),HL
        DEC A
        LD (page_borrowed),A
        EX DE,HL
        JP syntax_error

; HL = the next item, page set.
data_find:
        LD HL,(data_pointer)
        LD A,H
        OR A
        JR NZ,_on
        LD DE,PROGRAM_START
        CALL place_to_text
        LD A,(HL)
        INC HL
        OR (HL)
        JR Z,_none
        DEC HL
        LD (data_line),HL
        INC HL
        INC HL
        INC HL
        INC HL
        JR _token
_on:    LD A,(data_page)
        OUT (WINDOW_PAGE),A
        LD A,(HL)
        CP ","
        JR Z,_item
_token: LD A,(HL)
        OR A
        JR Z,_line
        CP TOK_DATA
        JR Z,_item
        CALL token_skip
        JR _token
_item:  INC HL
        RET
_line:  CALL line_follow
        JR C,_none
        LD (data_line),HL
        INC HL
        INC HL
        INC HL
        INC HL
        JR _token
_none:  LD E,ERR_DATA
        JP error

do_data:
        DEC HL
        JP token_skip

; RESTORE [line]
do_restore:
        JR Z,_first
        CALL line_target
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        CALL place_to_text
        LD (data_line),HL
        INC HL
        INC HL
        INC HL
        INC HL
        LD (data_pointer),HL
        IN A,(WINDOW_PAGE)
        LD (data_page),A
        POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        RET
_first: PUSH HL
        LD HL,0
        LD (data_pointer),HL
        POP HL
        RET

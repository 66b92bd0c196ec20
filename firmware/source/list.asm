; Tokens to text.
;
;   list_line       HL = header of a line: LINE_TEXT = its number and text, ended by 0; DE = the 0. The page is kept.
;                   (list_mark) = where in LINE_TEXT the last token came out that begins at (list_at) or before
;   do_list         LIST [first][-[last]]
; What does not fit LINE_TEXT is cut.

LIST_OPEN       EQU 0           ; list_last: nothing that touches a letter
LIST_NAME       EQU 1           ; a letter, digit, parenthesis or quotation mark
LIST_WORD       EQU 2           ; a word that wants a blank behind it

list_line:
        PUSH HL
        CALL header_number
        CALL number_word
        LD DE,LINE_TEXT
_digit: LD A,(HL)
        INC HL
        OR A
        JR Z,_numbered
        CALL list_put
        JR _digit
_numbered:
        POP HL
        INC HL
        INC HL
        INC HL
        INC HL
        LD A,LIST_OPEN
        LD (list_last),A
        LD A," "
        CALL list_put
list_token:
        CALL list_note
        LD A,(HL)
        OR A
        JR Z,_end
        LD BC,list_token
        PUSH BC
        INC HL
        CP " "
        JP C,list_low
        CP TOK_IMP
        JP NC,list_operator
        CP TOK_FIRST
        JP NC,list_word
        CP ":"
        JR Z,_colon
        CP 22h
        JR Z,_string
        CP ","
        JR Z,_tight
        CP ";"
        JR Z,_tight
        CP "@"
        JR Z,_tight
        CP ")"
        JR Z,_close
        CALL list_space_word
        CALL list_put
        LD B,LIST_OPEN
        JR _set
_close: LD B,LIST_NAME
        JR _put
_tight: LD B,LIST_OPEN
_put:   CALL list_put
_set:   LD A,B
        LD (list_last),A
        RET
_end:   LD A,(list_counts)
        OR A
        RET NZ
        LD (DE),A
        RET
_colon: LD B,A
        LD A,(HL)
        CP TOK_ELSE
        RET Z
        CP TOK_QUOTE
        RET Z
        LD A,B
        JR _tight
_string:
        CALL list_space_word
_letter:
        CALL list_put
        LD A,(HL)
        OR A
        JR Z,_close_end
        INC HL
        CP 22h
        JR NZ,_letter
        JR _close
_close_end:
        LD A,LIST_NAME
        LD (list_last),A
        RET

; Notes where the text stands unless HL is beyond (list_at). Uses AF, BC.
list_note:
        LD BC,(list_at)
        LD A,C
        SUB L
        LD A,B
        SBC A,H
        RET C
        LD (list_mark),DE
        RET

; A into the text, if there is room. All are kept.
list_put:
        PUSH AF
        LD A,(list_counts)
        OR A
        JR NZ,_count
        LD A,E
        CP 0FEh
        JR NC,_full
        POP AF
        LD (DE),A
        INC DE
        RET
_count: INC DE
_full:  POP AF
        RET

; Line buffer overflow when the line in TOKENS would not be listed whole.
list_check:
        LD A,1
        LD (list_counts),A
        LD HL,TOKENS
        CALL list_line
        XOR A
        LD (list_counts),A
        LD HL,LINE_TEXT + 0FEh
        SBC HL,DE
        RET NC
        LD E,ERR_BUFFER
        JP error

; A blank behind a word. All are kept.
list_space_word:
        PUSH AF
        LD A,(list_last)
        CP LIST_WORD
        JR list_space
; A blank behind a word or a name.
list_space_name:
        PUSH AF
        LD A,(list_last)
        OR A
        JR Z,list_no_space
        XOR A
list_space:
        LD A," "
        CALL Z,list_put
list_no_space:
        POP AF
        RET

list_rest:                      ; as it stands, to the end of the line
        LD A,(HL)
        OR A
        RET Z
        INC HL
        CALL list_put
        JR list_rest

list_operator:
        CP TOK_EQUAL
        JR C,_word
        CP TOK_MOD
        JR Z,_mod
        CALL list_space_word
        PUSH HL
        LD HL,_signs
        SUB TOK_EQUAL
        ADD A,A
        LD C,A
        LD B,0
        ADD HL,BC
        LD A,(HL)
        CALL list_put
        INC HL
        LD A,(HL)
        POP HL
        OR A
        CALL NZ,list_put
        XOR A
        LD (list_last),A
        RET
_mod:   LD BC,w_mod
        JP list_name_of
_word:  SUB TOK_IMP
        LD BC,word_operators
        JP list_indexed
_signs: DEFB "=",0,"<",0,">",0,"<=",">=","<>","+",0,"-",0,0,0,5Ch,0,"*",0,"/",0,"^",0

list_word:
        CP TOK_FUNCTION
        JP Z,list_function
        CP TOK_THEN
        JR NC,_inner
        CP TOK_QUOTE
        JR Z,_quote
        LD B,A
        CP TOK_REM
        JR Z,_rem
        CP TOK_DATA
        JR Z,_data
        SUB TOK_FIRST
        LD BC,word_statements
        JR list_indexed
_rem:   SUB TOK_FIRST
        LD BC,word_statements
        CALL list_indexed
        JR list_rest
_data:  SUB TOK_FIRST
        LD BC,word_statements
        CALL list_indexed
        LD A," "
        CALL list_put
_item:  CALL list_note
        LD A,(HL)
        OR A
        RET Z
        CP ":"
        JR Z,_data_end
        INC HL
        CALL list_put
        CP 22h
        JR NZ,_item
_quoted:
        LD A,(HL)
        OR A
        RET Z
        INC HL
        CALL list_put
        CP 22h
        JR NZ,_quoted
        JR _item
_data_end:
        XOR A
        LD (list_last),A
        RET
_quote: CALL list_space_name
        LD A,"'"
        CALL list_put
        JP list_rest
_inner: SUB TOK_THEN
        LD BC,word_inner
; Word A of the table BC.
list_indexed:
        PUSH HL
        ADD A,A
        LD L,A
        LD H,0
        ADD HL,BC
        LD C,(HL)
        INC HL
        LD B,(HL)
        POP HL
list_name_of:
        CALL list_space_name
        PUSH HL
        CALL list_name
        LD B,LIST_WORD
        CP TOK_TAB
        JR Z,_tight
        CP TOK_SPC
        JR NZ,_set
_tight: LD B,LIST_NAME
_set:   LD A,B
        LD (list_last),A
        POP HL
        RET
list_function:
        LD A,(HL)
        INC HL
        CALL list_space_name
        PUSH HL
        ADD A,A
        LD L,A
        LD H,0
        LD BC,word_functions
        ADD HL,BC
        LD C,(HL)
        INC HL
        LD B,(HL)
        CALL list_name
        LD A,LIST_NAME
        LD (list_last),A
        POP HL
        RET
; The word BC: A = what follows it, its token.
list_name:
        LD HL,words_by_letter   ; its first letter is where it stands
        PUSH DE
        LD A,"A" - 1
_letter:
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        INC A
        EX DE,HL
        OR A
        SBC HL,BC
        EX DE,HL
        JR C,_letter
        JR Z,_found
        DEC A
_found: CP "Z" + 1
        JR C,_first
        LD A,"Z"
_first: POP DE
        CALL list_put
        LD H,B
        LD L,C
_rest:  LD A,(HL)
        INC HL
        LD B,A
        AND 7Fh
        CALL list_put
        BIT 7,B
        JR Z,_rest
        LD A,(HL)
        RET

; Constants, names, line numbers.
list_low:
        CP TOK_DIGIT
        JR NC,_digit
        CP TOK_VAR
        JP NC,_symbol
        CALL list_space_name
        CP TOK_SPELT
        JR Z,_spelt
        CP TOK_FLOAT
        JR Z,_float
        LD C,(HL)
        INC HL
        LD B,0
        CP TOK_BYTE
        JR Z,_word
        LD B,(HL)
        INC HL
        CP TOK_LINENO_AT
        JR NZ,_word
        PUSH HL                 ; the line says its number
        PUSH DE
        IN A,(WINDOW_PAGE)
        PUSH AF
        LD D,B
        LD E,C
        CALL place_to_text
        INC HL
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        POP AF
        OUT (WINDOW_PAGE),A
        POP DE
        POP HL
_word:  PUSH HL
        PUSH DE
        LD H,B
        LD L,C
        CALL number_word
        JR _text
_digit: ADD A,"0" - TOK_DIGIT
        CALL list_space_name
        CALL list_put
        JR _name
_float: PUSH DE
        CALL fac_load
        POP DE
        PUSH HL
        PUSH DE
        CALL number_print
        INC HL
_text:  POP DE
_copy:  LD A,(HL)
        INC HL
        OR A
        JR Z,_copied
        CALL list_put
        JR _copy
_copied:
        POP HL
_name:  LD A,LIST_NAME
        LD (list_last),A
        RET
_spelt: LD BC,5
        ADD HL,BC
        LD B,(HL)
        INC HL
_spell: LD A,(HL)
        INC HL
        CALL list_put
        DJNZ _spell
        JR _name
_symbol:
        CALL list_space_name
        LD C,A
        LD A,(HL)
        INC HL
        PUSH HL
        LD H,(HL)
        LD L,A
        LD A,C
        CP TOK_FN
        JR NZ,_variable
        LD A,"F"
        CALL list_put
        LD A,"N"
        CALL list_put
_variable:
        PUSH BC
        LD BC,SYMBOL_TYPE
        ADD HL,BC
        LD C,(HL)
        INC HL
        INC HL
        INC HL
        LD B,(HL)
_sign:  INC HL
        LD A,(HL)
        CALL list_put
        DJNZ _sign
        BIT 4,C
        JR Z,_unsigned
        LD A,C
        AND TYPE_VALUE
        LD C,A
        LD HL,_suffixes
        ADD HL,BC               ; B is 0
        LD A,(HL)
        CALL list_put
_unsigned:
        POP BC
        POP HL
        INC HL
        LD A,C
        CP TOK_ARRAY
        JR Z,_element
        CP TOK_ARRAY_STRING
        JR NZ,_name
_element:
        LD A,"("
        CALL list_put
        XOR A
        LD (list_last),A
        RET
_suffixes:
        DEFB "%!#$"

; ---- LIST [first][-[last]]

do_list:
        CALL line_range         ; BC first, DE last
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        PUSH DE
        LD D,B
        LD E,C
        CALL find_line
_line:  POP DE
        LD A,(HL)
        INC HL
        OR (HL)
        JR Z,_end
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        DEC HL
        DEC HL
        DEC HL
        EX DE,HL
        OR A
        SBC HL,BC
        ADD HL,BC
        EX DE,HL
        JR C,_end
        PUSH DE
        PUSH HL
        CALL list_line
        LD HL,LINE_TEXT
        CALL console_text
        CALL console_newline
        POP HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        DEC HL
        ADD HL,BC
        CALL window_settle
        LD A,(stop_flag)
        OR A
        JR Z,_line
        POP DE                  ; the flag stays: a program that lists is to break as well
_end:   POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        RET

; [first][-[last]] at HL: BC, DE; all lines without. HL behind it.
line_range:
        LD BC,0
        LD DE,0FFFFh
        CALL this_char
        RET Z
        CP TOK_MINUS
        JR Z,_last
        CALL line_named
        LD B,D
        LD C,E
        LD A,(HL)
        CP TOK_MINUS
        RET NZ
_last:  INC HL
        LD DE,0FFFFh
        LD A,(HL)
        CP TOK_LINENO
        RET C
        CP TOK_LINENO_AT + 1
        RET NC
; HL at a line number: DE = it, whether there is such a line or not. BC is kept.
line_named:
        LD A,(HL)
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        CP TOK_LINENO
        RET Z
        CP TOK_LINENO_AT
        JP NZ,syntax_error
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        CALL place_to_text
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        RET

; Text to tokens.
;
;   crunch          HL = a line of text ended by 0, in RAM, without a line number: TOKENS = header, tokens, 0, end mark.
;                   The header's number is left as it is. Makes symbols as it goes.
;                   Words need blanks where letters meet, but a line that is nothing else is read as if they stood there:
;                   see crunch_joined.
;   line_number     HL at text: NC, DE = line number, HL behind it and one blank; or carry: no number there (0-65529)

LINES_NONE      EQU 0           ; crunch_lines: numbers are numbers
LINES_NEXT      EQU 1           ; the next number is a line
LINES_ALL       EQU 2           ; so are those behind commas and minus signs

CRUNCH_ROOM     EQU 24          ; what one step may add at most, but for text that is checked by the character

line_number:
        CALL skip_blanks
        LD A,(HL)
        SUB "0"
        CP 10
        CCF
        RET C
        LD DE,0
_digit: LD A,(HL)
        SUB "0"
        CP 10
        JR NC,_end
        INC HL
        PUSH HL
        PUSH AF
        LD HL,0 - 6553
        ADD HL,DE
        JR C,_large
        LD H,D
        LD L,E
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        POP AF
        LD E,A
        LD D,0
        ADD HL,DE
        EX DE,HL
        POP HL
        JR _digit
_large: POP AF
        POP HL
        JP syntax_error
_end:   LD A,(HL)
        CP " "
        JR NZ,_done
        INC HL
_done:  OR A
        RET

crunch: LD DE,TOKENS + 4
        XOR A                   ; LINES_NONE
        LD (crunch_lines),A
        LD (crunch_dense),A
        INC A
        LD (crunch_start),A
_next:  PUSH HL
        LD HL,0 - (TOKENS_END - CRUNCH_ROOM)
        ADD HL,DE
        POP HL
        JR C,crunch_full
        LD A,(HL)
        OR A
        JR Z,_end
        INC HL
        CP " " + 1
        JR C,_next              ; control codes are blanks, too
        LD BC,_next
        PUSH BC
        CP 22h
        JP Z,crunch_string
        CP "0"
        JR C,crunch_sign
        CP "9" + 1
        JP C,crunch_number
        CP "A"
        JR C,crunch_sign
        CP "Z" + 1
        JP C,crunch_word
        CP "a"
        JR C,crunch_sign
        CP "z" + 1
        JP C,crunch_word
        JR crunch_sign
_end:   XOR A
        LD (DE),A
        INC DE
        LD (DE),A
        INC DE
        LD (DE),A
        DEC DE
        LD HL,0 - TOKENS
        ADD HL,DE
        LD (TOKENS),HL
        RET

; A into the line.
crunch_put:
        LD (DE),A
        INC DE
        RET

crunch_full:
        LD E,ERR_BUFFER
        JP error

; A = a character that is no letter, digit or quotation mark.
crunch_sign:
        CP 80h
        JP NC,syntax_error
        CP "."
        JP Z,crunch_number
        CP "&"
        JP Z,crunch_number
        CP "?"
        LD C,TOK_PRINT
        JR Z,_arithmetic
        CP "'"
        JR Z,_quote
        CP ":"
        JR Z,_colon
        PUSH HL
        LD HL,_signs
        LD B,9
_look:  CP (HL)
        INC HL
        LD C,(HL)
        INC HL
        JR Z,_operator
        DJNZ _look
        POP HL
        CP ","
        JR Z,_plain
        LD C,A
        XOR A
        LD (crunch_lines),A
        LD A,C
_plain: LD C,A
        XOR A
        LD (crunch_start),A
        LD A,C
        JR crunch_put
_colon: LD C,A
        LD A,1
        LD (crunch_start),A
        LD A,LINES_NONE
        LD (crunch_lines),A
        LD A,C
        JR crunch_put
_quote: LD A,(crunch_start)
        OR A
        LD A,":"
        CALL Z,crunch_put
        LD A,TOK_QUOTE
        CALL crunch_put
        JR crunch_rest
_operator:
        POP HL
        LD A,C
        CP TOK_MINUS
        JR Z,_word              ; LIST 10-20
        CP TOK_EQUAL
        JR C,_arithmetic
        CP TOK_GREATER + 1
        JR NC,_arithmetic
        CALL _pair
_arithmetic:
        XOR A
        LD (crunch_lines),A
_word:  XOR A
        LD (crunch_start),A
        LD A,C
        JR crunch_put
; C one of = < >: with the one that may follow, <= >= <>.
_pair:  PUSH HL
        CALL skip_blanks
        LD A,(HL)
        INC HL
        LD B,C
        CP "="
        LD C,TOK_EQUAL
        JR Z,_both
        CP "<"
        LD C,TOK_LESS
        JR Z,_both
        CP ">"
        LD C,TOK_GREATER
        JR Z,_both
_alone: LD C,B
        POP HL
        RET
_both:  LD A,B
        CP C
        JR Z,_alone
        PUSH HL
        ADD A,C
        LD HL,_pairs - ((TOK_EQUAL + TOK_LESS) AND 0FFh)
        ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  LD C,(HL)
        POP HL
        POP AF
        RET
_pairs: DEFB TOK_LESS_EQUAL,TOK_GREATER_EQUAL,TOK_UNEQUAL
_signs: DEFB "+",TOK_PLUS,"-",TOK_MINUS,"*",TOK_TIMES,"/",TOK_DIVIDE,"^",TOK_POWER,5Ch,TOK_INTDIV
        DEFB "=",TOK_EQUAL,"<",TOK_LESS,">",TOK_GREATER

; The rest of the line as it stands.
crunch_rest:
        LD A,(HL)
        OR A
        RET Z
        INC HL
        CALL crunch_text
        JR crunch_rest
crunch_text:
        LD (DE),A
        INC DE
        LD A,D
        CP TOKENS_END / 256 - 1
        RET C
        LD A,E
        CP 0F0h
        RET C
        JP crunch_full

crunch_string:
        CALL crunch_text
        XOR A
        LD (crunch_start),A
        LD (crunch_lines),A
_next:  LD A,(HL)
        OR A
        RET Z
        INC HL
        CP 22h
        JR Z,crunch_text
        CALL crunch_text
        JR _next

; DATA: up to the ":" outside quotation marks.
crunch_data:
        CALL skip_blanks
_next:  LD A,(HL)
        OR A
        RET Z
        CP ":"
        RET Z
        INC HL
        CP 22h
        JR Z,_string
        CALL crunch_text
        JR _next
_string:
        CALL crunch_string
        JR _next

; ---- Numbers. HL behind the first character.
crunch_number:
        DEC HL
        XOR A
        LD (crunch_start),A
        LD A,(crunch_lines)
        OR A
        JR Z,_number
        LD A,(HL)
        CP "9" + 1
        JR NC,_number
        CP "0"
        JR C,_number
        PUSH DE
        CALL line_number
        POP BC
        EX DE,HL
        PUSH DE
        LD D,B
        LD E,C
        LD A,TOK_LINENO
        CALL crunch_word_put
        POP HL
        LD A,(crunch_lines)
        CP LINES_ALL
        RET Z
        XOR A
        LD (crunch_lines),A
        RET
_number:
        PUSH DE
        PUSH HL                 ; its text
        CALL number_parse
        JR NC,_parsed
        JP syntax_error
_parsed:
        POP BC
        POP DE
        PUSH HL                 ; behind it
        LD (name_start),BC
        OR A
        SBC HL,BC
        LD A,L
        LD (name_length),A
        CALL _as_printed
        JR NZ,_spelt
        LD A,(FAC)
        OR A
        JR NZ,_float
        LD HL,(FAC + 1)
        LD A,H
        OR A
        JR NZ,_word
        LD A,L
        CP 10
        JR NC,_byte
        ADD A,TOK_DIGIT
        CALL crunch_put
        POP HL
        RET
_byte:  LD A,TOK_BYTE
        CALL crunch_put
        LD A,L
        CALL crunch_put
        POP HL
        RET
_word:  LD A,TOK_WORD
        CALL crunch_word_put
        POP HL
        RET
_float: LD A,TOK_FLOAT
        CALL _value
        POP HL
        RET
_spelt: LD A,TOK_SPELT
        CALL _value
        LD A,(name_length)
        CALL crunch_put
        LD B,A
        LD HL,(name_start)
_letter:
        LD A,(HL)
        CALL upper
        INC HL
        CALL crunch_text
        DJNZ _letter
        POP HL
        RET
_value: LD (DE),A
        INC DE
        LD HL,FAC
        JP fac_copy
; Z: the number in FAC is printed as it was typed. DE, FAC are kept.
_as_printed:
        PUSH DE
        LD HL,val_text
        CALL fac_store
        CALL number_print
        INC HL                  ; not the blank
        LD A,(name_length)
        LD B,A
        LD DE,(name_start)
_same:  LD A,(DE)
        CALL upper
        CP (HL)
        JR NZ,_differs
        INC HL
        INC DE
        DJNZ _same
        LD A,(HL)
        OR A
_differs:
        PUSH AF
        LD HL,val_text
        CALL fac_load
        POP AF
        POP DE
        RET

; A and the word HL into the line.
crunch_word_put:
        LD (DE),A
        INC DE
        LD A,L
        LD (DE),A
        INC DE
        LD A,H
        LD (DE),A
        INC DE
        RET

; ---- Words. HL behind the first letter.
crunch_word:
        DEC HL
        LD (name_start),HL
        LD B,0                  ; letters
_letters:
        LD A,(HL)
        CALL upper
        SUB "A"
        CP 26
        JR NC,_counted
        INC HL
        INC B
        JR _letters
_counted:
        LD A,(HL)
        CP "$"
        JR NZ,_plain
        INC B
        CALL word_find
        DEC B
        JR NC,_found_dollar
_plain: CALL word_find
        JR NC,_found
        CALL crunch_go
        CALL C,crunch_joined
        JP C,crunch_name
        JR _found
_found_dollar:
        INC HL
_found: CP TOK_FUNCTION
        JR NZ,_statement
        CALL crunch_put
        LD A,C
        CALL crunch_put
        XOR A
        LD (crunch_start),A
        LD (crunch_lines),A
        RET
_statement:
        LD C,A
        CP TOK_ELSE
        JR NZ,_no_else
        LD A,(crunch_start)
        OR A
        LD A,":"
        CALL Z,crunch_put
_no_else:
        LD A,C
        CALL crunch_put
        PUSH HL
        LD HL,_line_words
        LD B,_line_words_end - _line_words
        LD A,LINES_ALL
        LD (crunch_lines),A
        LD A,C
_look:  CP (HL)
        INC HL
        JR Z,_lines
        DJNZ _look
        XOR A
        LD (crunch_lines),A
_lines: POP HL
        LD A,C
        CP TOK_THEN
        JR Z,_next_only
        CP TOK_ELSE
        JR Z,_next_only
        XOR A
        LD (crunch_start),A
        LD A,C
        CP TOK_REM
        JP Z,crunch_rest
        CP TOK_DATA
        JP Z,crunch_data
        RET
_next_only:
        LD A,LINES_NEXT
        LD (crunch_lines),A
        LD (crunch_start),A
        RET
_line_words:
        DEFB TOK_GOTO,TOK_GOSUB,TOK_THEN,TOK_ELSE,TOK_RESTORE,TOK_RUN,TOK_RESUME,TOK_LIST,TOK_DELETE,TOK_EDIT
        DEFB TOK_RETURN
_line_words_end:

; Letters that are no word. Listings of the time often do without blanks: FORI=1TO9:PRINTA. Where a statement begins
; with such letters, they begin with a statement's word, and what follows does not assign to them (or could not, for
; there is TO behind FOR, THEN or GOTO behind IF), no other meaning is left. From there on to the end of the line words
; count wherever they stand, and names end before them; elsewhere FORI and TOTAL are names.
; B letters at (name_start), HL behind them. NC: A = token, C as word_find, HL behind the word. Carry: a name, whose
; letters end at (crunch_letters), the low byte of an address. DE is kept.
crunch_joined:
        LD A,L
        LD (crunch_letters),A
        LD A,(crunch_dense)
        OR A
        JR NZ,_words
        LD A,(crunch_start)
        SUB 1
        RET C
        CALL joined_word
        RET C
        CP TOK_LAST + 1
        CCF
        RET C
        CALL joined_assigns
        RET C
        LD HL,crunch_dense
        INC (HL)
        JR _behind
_words: PUSH BC
        CALL joined_word
        JR NC,_first
        POP BC
        PUSH DE
        LD DE,(name_start)
        PUSH DE
_inside:
        DEC B
        JR Z,_none
        LD HL,name_start
        INC (HL)
        PUSH BC
        CALL joined_word
        POP BC
        JR C,_inside
        LD A,(name_start)
        LD (crunch_letters),A
_none:  POP DE
        LD (name_start),DE
        POP DE
        SCF
        RET
_first: POP HL
_behind:
        PUSH AF
        LD HL,(name_start)
        LD A,L
        ADD A,B
        LD L,A
        POP AF
        OR A
        RET

; The longest word that B letters at (name_start) begin with: NC, A, C as word_find, B its letters. Carry: there is none.
; HL, DE are kept.
joined_word:
        LD A,B
        CP 10
        JR C,_shorter
        LD B,9                  ; no word is longer than RANDOMIZE
_shorter:
        CALL word_find
        RET NC
        DEC B
        JR NZ,_shorter
        RET

; HL behind the letters that begin a statement, the first of them the word A. Carry: the statement assigns to them.
; A, BC, DE are kept.
joined_assigns:
        PUSH AF
        PUSH BC
        LD B,A
_name:  LD A,(HL)               ; digits and letters, the mark of a type
        INC HL
        CP "A"
        JR NC,_name
        CP "0"
        JR C,_mark
        CP "9" + 1
        JR C,_name
_mark:  CP "."
        JR Z,_name
        CP "!"
        JR Z,_name
        CP "#"
        JR C,_behind
        CP "%" + 1
        JR C,_name
_behind:
        DEC HL
        LD C,0
        CALL skip_blanks
        CP "("
        JR NZ,_equal
_index: LD A,(HL)
        INC HL
        OR A
        JR Z,_no
        CP "("
        JR NZ,_close
        INC C
_close: CP ")"
        JR NZ,_index
        DEC C
        JR NZ,_index
        CALL skip_blanks
_equal: CP "="
        JR NZ,_no
        LD A,B
        CP TOK_IF
        JR Z,_if
        CP TOK_FOR
        JR NZ,_yes
_letters:                       ; C of them were passed behind B: another character, or the word
        LD C,0
_for:   INC HL
_to:    PUSH BC
        LD BC,word_to
        CALL text_same
        POP BC
        JR Z,_limit
        LD A,(HL)
        CP " "
        JR Z,_for
        OR A
        JR Z,_yes
        CP ":"
        JR Z,_yes
        CALL upper
        INC C
        SUB "A"
        CP 26
        JR C,_for
        LD B,(HL)
        JR _letters
_limit: LD A,C                  ; TO: behind an operand, a letter or what ends with none?
        LD C,2
        DEC A
        JR Z,_no
        INC A
        JR NZ,_to
        LD A,B
        CP ")"
        JR Z,_no
        SUB "0"
        CP 10
        JR NC,_to
_no:    POP BC
        POP AF
        OR A
        RET
_if:    LD BC,word_then
        CALL text_same
        JR Z,_no
        LD BC,word_goto
        CALL text_same
        JR Z,_no
        LD A,(HL)
        INC HL
        OR A
        JR NZ,_if
_yes:   POP BC
        POP AF
        SCF
        RET
word_then:
        DEFB "THEN",0
word_goto:
        DEFB "GO"
word_to:
        DEFB "TO",0

; GO TO, GO SUB: NC, A = token, HL behind it. Carry: it is neither. HL, B, DE are kept then.
crunch_go:
        LD A,B
        CP 2
        SCF
        RET NZ
        PUSH BC
        PUSH HL
        LD HL,(name_start)
        LD BC,word_go
        CALL text_same
        JR NZ,_neither
        CALL skip_blanks
        LD BC,word_to
        CALL text_same
        LD A,TOK_GOTO
        JR Z,_is
        LD BC,word_sub
        CALL text_same
        LD A,TOK_GOSUB
        JR Z,_is
_neither:
        POP HL
        POP BC
        SCF
        RET
_is:    POP BC
        POP BC
        OR A
        RET
; Z: the text BC, ended by 0, is at HL, which moves behind it; else HL is kept. DE is kept.
text_same:
        PUSH HL
_letter:
        LD A,(BC)
        OR A
        JR Z,_end
        PUSH BC
        LD C,A
        LD A,(HL)
        CALL upper
        CP C
        POP BC
        INC HL
        INC BC
        JR Z,_letter
        POP HL
        RET
_end:   POP BC
        RET
word_go:
        DEFB "GO",0
word_sub:
        DEFB "SUB",0

; The word of B characters at (name_start): NC, A = token, C = the function's when it is TOK_FUNCTION. Carry: it is
; none. HL, DE, B are kept.
word_find:
        PUSH HL
        PUSH DE
        LD HL,(name_start)
        LD A,(HL)
        CALL upper
        SUB "A"
        ADD A,A
        LD E,A
        LD D,0
        INC HL
        PUSH HL
        LD HL,words_by_letter
        ADD HL,DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        POP HL                  ; HL second letter, DE words
_word:  LD A,(DE)
        OR A
        JR Z,_none
        PUSH HL
        LD C,B
_letter:
        DEC C
        JR Z,_short
        LD A,(HL)
        CALL upper
        INC HL
        PUSH BC
        LD C,A
        LD A,(DE)
        INC DE
        XOR C
        POP BC
        JR Z,_letter
        CP 80h
        JR NZ,_unlike
        DEC C                   ; the word's last: ours, too?
        JR NZ,_over
        POP HL
        LD A,(DE)
        INC DE
        CP TOK_FUNCTION
        JR NZ,_ready
        LD A,(DE)
        LD C,A
        LD A,TOK_FUNCTION
_ready: POP DE
        POP HL
        OR A
        RET
_unlike:
        DEC DE
_short: LD A,(DE)               ; on to the word's end
        INC DE
        RLA
        JR NC,_short
_over:  POP HL
        LD A,(DE)
        INC DE
        CP TOK_FUNCTION
        JR NZ,_word
        INC DE
        JR _word
_none:  POP DE
        POP HL
        SCF
        RET

; A name: letters, digits, points; %, !, # or $; a parenthesis makes it an array. HL behind its first letters, DE as
; always.
crunch_name:
        XOR A
        LD (crunch_start),A
        LD (crunch_lines),A
        LD HL,(name_start)
        LD C,0                  ; type bits
        LD A,(HL)
        CALL upper
        CP "F"
        JR NZ,_scan
        INC HL
        LD A,(HL)
        CALL upper
        CP "N"
        DEC HL
        JR NZ,_scan
        LD C,TYPE_FUNCTION
        INC HL
        INC HL
        LD A,(HL)
        CP " "                  ; FN A is FNA
        JR NZ,_function
        XOR A                   ; its letters are not those that met others
        LD (crunch_letters),A
        CALL skip_blanks
_function:
        LD (name_start),HL
        LD A,(HL)
        CALL upper
        SUB "A"
        CP 26
        JP NC,syntax_error
_scan:  LD B,1                  ; the first letter is always one of the name
        INC HL
_count: LD A,(HL)
        CALL upper
        CP "."
        JR Z,_more
        CP "0"
        JR C,_end
        CP "9" + 1
        JR C,_more
        CP "A"
        JR C,_end
        CP "Z" + 1
        JR NC,_end
        LD A,(crunch_dense)
        OR A
        JR Z,_more
        LD A,(crunch_letters)   ; from here on no letter is one of the name
        DEC A
        CP L
        JR C,_end
_more:  INC HL
        INC B
        JR _count
_end:   LD A,B
        LD (name_length),A
        LD A,(HL)
        LD B,TYPE_SUFFIX + 0
        CP "%"
        JR Z,_suffix
        INC B
        CP "!"
        JR Z,_suffix
        INC B
        CP "#"
        JR Z,_suffix
        INC B
        CP "$"
        JR Z,_suffix
        PUSH HL                 ; none: by its first letter
        LD HL,(name_start)
        LD A,(HL)
        CALL upper
        SUB "A"
        ADD A,def_types AND 0FFh
        LD L,A
        LD H,def_types / 256
        JR NC,_page
        INC H
_page:  LD B,(HL)
        POP HL
        JR _typed
_suffix:
        INC HL
_typed: LD A,B
        OR C
        LD B,A
        BIT 3,B
        JR NZ,_no_array
        PUSH HL
        CALL skip_blanks
        LD A,(HL)
        INC HL
        CP "("
        JR Z,_array
        POP HL
        JR _no_array
_array: SET 2,B
        POP AF
_no_array:
        LD A,B
        LD (name_type),A
        AND TYPE_SUFFIX
        LD A,TYPE_ARRAY + TYPE_FUNCTION + TYPE_SUFFIX
        JR Z,_mask
        LD A,TYPE_VALUE + TYPE_ARRAY + TYPE_FUNCTION + TYPE_SUFFIX
_mask:  LD (name_mask),A
        PUSH HL
        PUSH DE
        CALL symbol_find
        POP HL
        EX DE,HL
        LD A,(name_type)
        LD C,TOK_FN
        BIT 3,A
        JR NZ,_put
        LD C,TOK_VAR
        BIT 2,A
        JR Z,_scalar
        LD C,TOK_ARRAY
_scalar:
        AND TYPE_VALUE
        CP TYPE_STRING
        JR NZ,_put
        INC C
_put:   LD A,C
        CALL crunch_word_put
        POP HL
        RET

; Symbols and assignment.
;
; A symbol, from its address up: value (5 bytes), type, link to the next symbol of its chain, length of the name, name.
; Tokens hold its address; it moves only with CLEAR. Value: a number as in FAC; a string's length and address; an
; array's block, 0: none yet; of a function page, address and line of its definition.
; Symbols grow down from (memory_top).
;
;   symbol_find     finds the symbol of (name_start), (name_length), (name_type), or makes it: DE
;   variables_clear all values gone, symbols stay
;   symbols_clear   no symbols
;   variable_ref    HL at a variable's token: DE = address of its value, A = kind, HL behind it
;   store_value     value B, DE, FAC to (target_address) of kind (target_kind)
;   do_let, do_swap, do_defint ...

TYPE_VALUE      EQU 003h        ; bits of the type byte: 0 integer, 1 single, 2 double, 3 string
TYPE_STRING     EQU 003h
TYPE_ARRAY      EQU 004h
TYPE_FUNCTION   EQU 008h
TYPE_SUFFIX     EQU 010h        ; the name says its type; else its first letter does
SYMBOL_TYPE     EQU 5
SYMBOL_LINK     EQU 6
SYMBOL_NAME     EQU 8           ; length, then the name
SYMBOL_HEAD     EQU 9

KIND_INTEGER    EQU 0           ; 5 bytes, an integer only
KIND_NUMBER     EQU 1           ; 5 bytes
KIND_STRING     EQU 2           ; a descriptor
KIND_WORD       EQU 3           ; 2 bytes: element of an array of integers

; ---- Symbols

symbols_clear:
        LD HL,SYMBOL_HEADS
        LD B,64
_head:  LD (HL),0
        INC HL
        DJNZ _head
        LD HL,(memory_top)
        LD (symbols_low),HL
        LD HL,def_types
        LD B,26
_type:  LD (HL),1
        INC HL
        DJNZ _type
        RET

; A = letter in either case: in upper case. Digits and others stay.
upper:  CP "a"
        RET C
        CP "z" + 1
        RET NC
        SUB 20h
        RET

symbol_chain:                   ; HL = head of the chain for the name at hand
        LD HL,(name_start)
        LD A,(HL)
        CALL upper
        LD E,A
        LD A,(name_length)
        DEC A
        ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  LD A,(HL)
        CALL upper
        ADD A,A
        ADD A,E
        AND 01Fh
        ADD A,A
        ADD A,SYMBOL_HEADS AND 0FFh
        LD L,A
        LD H,SYMBOL_HEADS / 256
        RET

symbol_find:
        CALL symbol_chain
        PUSH HL
_next:  LD E,(HL)
        INC HL
        LD D,(HL)
        LD A,D
        OR A
        JR Z,_new
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(name_type)
        XOR (HL)
        LD B,A
        LD A,(name_mask)
        AND B
        INC HL                  ; at the link
        JR NZ,_next
        PUSH HL
        INC HL
        INC HL
        LD A,(name_length)
        CP (HL)
        JR NZ,_differs
        LD B,A
        PUSH DE
        LD DE,(name_start)
_same:  INC HL
        LD A,(DE)
        CALL upper
        CP (HL)
        INC DE
        JR NZ,_unlike
        DJNZ _same
        POP DE
        POP HL
        POP HL
        RET
_unlike:
        POP DE
_differs:
        POP HL
        JR _next
; Not there: below all others, strings make room.
_new:   LD A,(name_length)
        ADD A,SYMBOL_HEAD
        LD C,A
        LD B,0
        CALL heap_shift         ; symbols_low lower by BC
        LD HL,(symbols_low)
        LD D,H
        LD E,L
        LD B,SYMBOL_TYPE
_value: LD (HL),0
        INC HL
        DJNZ _value
        LD A,(name_type)
        LD (HL),A
        INC HL
        POP BC                  ; the head: new ones come first
        LD A,(BC)
        LD (HL),A
        LD A,E
        LD (BC),A
        INC HL
        INC BC
        LD A,(BC)
        LD (HL),A
        LD A,D
        LD (BC),A
        INC HL
        LD A,(name_length)
        LD (HL),A
        LD B,A
        PUSH DE
        LD DE,(name_start)
_letter:
        INC HL
        LD A,(DE)
        CALL upper
        LD (HL),A
        INC DE
        DJNZ _letter
        POP DE
        RET

; Every symbol's value becomes nothing; strings and arrays go.
variables_clear:
        LD HL,(symbols_low)
        LD (heap_low),HL
        LD HL,(arrays_base)
        LD (arrays_end),HL
        LD HL,temps
        LD (temp_top),HL
        LD HL,(symbols_low)
_next:  CALL symbols_over
        RET Z
        LD B,SYMBOL_TYPE
_value: LD (HL),0
        INC HL
        DJNZ _value
        LD DE,SYMBOL_NAME - SYMBOL_TYPE
        ADD HL,DE
        LD E,(HL)
        INC HL
        ADD HL,DE
        JR _next

; Z: HL is the end of the symbols.
symbols_over:
        LD DE,(memory_top)
        OR A
        SBC HL,DE
        ADD HL,DE
        RET

; ---- Variables as targets

variable_ref:
        LD A,(HL)
        CP TOK_VAR
        JP C,syntax_error
        CP TOK_ARRAY_STRING + 1
        JP NC,syntax_error
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        CP TOK_VAR_STRING
        JR Z,_string
        CP TOK_VAR
        JP NZ,array_element_next
        PUSH HL
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        POP HL
        AND TYPE_VALUE
        RET Z
        LD A,KIND_NUMBER
        RET
_string:
        LD A,KIND_STRING
        RET

; HL at a variable: its target noted.
target_variable:
        CALL variable_ref
        LD (target_address),DE
        LD (target_kind),A
        RET

; The value B, DE, FAC into the target.
store_value:
        LD A,(target_kind)
        CP KIND_STRING
        JR Z,_string
        BIT 7,B
        JP NZ,type_mismatch
        CP KIND_NUMBER
        JR Z,_number
        PUSH AF
        CALL value_to_integer
        POP AF
        CP KIND_WORD
        JR Z,_word
_number:
        PUSH HL
        LD HL,(target_address)
        LD A,B
        OR A
        JR NZ,_float
        LD (HL),A
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
_float: EX DE,HL
        LD HL,FAC
        LDI
        LDI
        LDI
        LDI
        LDI
        POP HL
        RET
_word:  PUSH HL
        LD HL,(target_address)
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
_string:
        BIT 7,B
        JP Z,type_mismatch
        PUSH HL
        LD HL,(target_address)
        CALL string_assign
        POP HL
        RET

; ---- LET

; The commonest statement: HL at TOK_VAR.
let_variable:
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,(HL)
        CP TOK_EQUAL
        JP NZ,syntax_error
        INC HL
let_number:                     ; DE = symbol, HL at the expression
        PUSH DE
        CALL evaluate
        LD A,B
        OR A
        JR NZ,_other
        EX (SP),HL
        LD (HL),A
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
_other: JP M,type_mismatch
        POP DE
        PUSH HL
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        AND TYPE_VALUE
        JR Z,_integer
        LD HL,FAC
        LDI
        LDI
        LDI
        LDI
        LDI
        POP HL
        RET
_integer:
        PUSH DE
        CALL float_to_integer
        POP DE
        EX DE,HL
        LD (HL),0
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET

do_let: CALL variable_ref
        PUSH DE
        PUSH AF
        LD A,(HL)
        CP TOK_EQUAL
        JP NZ,syntax_error
        INC HL
        CALL evaluate
        POP AF
        LD (target_kind),A
        EX (SP),HL
        LD (target_address),HL
        POP HL
        JP store_value

; ---- SWAP a,b

do_swap:
        CALL variable_ref
        PUSH DE
        PUSH AF
        LD A,(HL)
        CP ","
        JP NZ,syntax_error
        INC HL
        CALL variable_ref
        POP BC
        CP B
        JP NZ,type_mismatch
        EX (SP),HL              ; HL, DE: the two values; text on the stack
        LD B,5
        CP KIND_WORD
        JR C,_five
        LD B,2
_five:  CP KIND_STRING
        JR NZ,_numbers
        LD B,3
        PUSH HL
        PUSH DE
        CALL bytes_swap
        POP HL
        CALL string_owned       ; the strings learn whose they are now
        POP HL
        CALL string_owned
        POP HL
        RET
_numbers:
        CALL bytes_swap
        POP HL
        RET
; B bytes of HL and DE change places.
bytes_swap:
        LD A,(DE)
        LD C,(HL)
        LD (HL),A
        LD A,C
        LD (DE),A
        INC HL
        INC DE
        DJNZ bytes_swap
        RET

; ---- DEFINT A-C,X

do_defint:
        LD C,0
        JR def_type
do_defsng:
        LD C,1
        JR def_type
do_defdbl:
        LD C,2
        JR def_type
do_defstr:
        LD C,3
def_type:
        CALL _letter
        LD D,A
        LD E,A
        LD A,(HL)
        CP TOK_MINUS
        JR NZ,_range
        INC HL
        CALL _letter
        LD E,A
        CP D
        JP C,syntax_error
_range: PUSH HL
        LD A,E
        SUB D
        INC A
        LD B,A
        LD E,D
        LD D,0
        LD HL,def_types
        ADD HL,DE
_set:   LD (HL),C
        INC HL
        DJNZ _set
        POP HL
        LD A,(HL)
        CP ","
        INC HL
        JR Z,def_type
        DEC HL
        JP types_apply
; A letter stands there as the variable of that name: A = 0-25.
_letter:
        LD A,(HL)
        CP TOK_VAR
        JR Z,_symbol
        CP TOK_VAR_STRING
        JP NZ,syntax_error
_symbol:
        INC HL
        LD A,(HL)
        INC HL
        PUSH HL
        LD H,(HL)
        LD L,A
        PUSH DE
        LD DE,SYMBOL_NAME + 1
        ADD HL,DE
        POP DE
        LD A,(HL)
        POP HL
        INC HL
        SUB "A"
        RET

; Names without a suffix take the type that def_types gives them, values lost where it changes; tokens follow.
types_apply:
        PUSH HL
        LD C,0                  ; 1: a number became a string or the other way
        LD HL,(symbols_low)
_next:  CALL symbols_over
        JR Z,_tokens
        PUSH HL
        LD DE,SYMBOL_NAME + 1
        ADD HL,DE
        LD A,(HL)               ; first letter
        DEC HL
        LD B,(HL)               ; length
        DEC HL
        DEC HL
        DEC HL
        BIT 3,(HL)
        JR NZ,_keep
        BIT 4,(HL)
        JR NZ,_keep
        SUB "A"
        LD E,A
        LD D,0
        PUSH HL
        LD HL,def_types
        ADD HL,DE
        LD E,(HL)
        POP HL
        LD A,(HL)
        XOR E
        AND TYPE_VALUE
        JR Z,_keep
        LD D,A
        LD A,(HL)
        XOR D
        LD (HL),A
        AND TYPE_VALUE
        CP TYPE_STRING
        JR Z,_changed
        XOR D
        AND TYPE_VALUE
        CP TYPE_STRING
        JR Z,_changed
        BIT 2,(HL)
        JR NZ,_lost             ; another size of elements
        LD A,(HL)
        AND TYPE_VALUE
        JR NZ,_keep             ; single and double are one
        JR _lost
_changed:
        LD C,1
_lost:  POP HL
        PUSH HL
        LD E,5
_zero:  LD (HL),0
        INC HL
        DEC E
        JR NZ,_zero
_keep:  POP HL
        LD E,B
        LD D,0
        ADD HL,DE
        LD E,SYMBOL_HEAD
        ADD HL,DE
        JR _next
_tokens:
        BIT 0,C
        LD DE,token_type
        CALL NZ,tokens_walk
        POP HL
        RET

; For tokens_walk: HL at a token. A variable's token says whether its symbol is a string.
token_type:
        LD A,(HL)
        CP TOK_VAR
        RET C
        CP TOK_FN
        RET NC
        PUSH HL
        AND 0FEh
        LD C,A
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD DE,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        POP HL
        AND TYPE_VALUE
        CP TYPE_STRING
        LD A,C
        JR NZ,_set
        INC A
_set:   LD (HL),A
        RET

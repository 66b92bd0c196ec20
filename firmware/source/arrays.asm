; Arrays. A block: its size (2 bytes), its symbol (2), number of dimensions, elements of each (2 bytes each), elements:
; 5 bytes a number, 2 an integer, 3 a string; the first index runs fastest. Blocks lie one behind the other from
; (arrays_base) to (arrays_end). The symbol's value: dimensions (0: none yet), address of the elements, elements of the
; first dimension.
;
;   array_element       HL at a symbol's address behind an array's token: DE = address of the element, A = kind, HL
;                       behind the parenthesis
;   array_element_next  the same with DE = symbol, HL behind it
;   do_dim do_erase
; An array that was not dimensioned gets 11 elements in each dimension.

DIMENSIONS      EQU 8
BLOCK_SYMBOL    EQU 2
BLOCK_DIMS      EQU 4

array_element:
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
array_element_next:
        PUSH DE
        CALL check_stack
        CALL evaluate
        LD A,B
        OR A
        CALL NZ,value_to_integer
        LD A,(HL)
        CP ")"
        JR NZ,array_several
        INC HL
        EX (SP),HL
        LD A,(HL)
        DEC A
        JR NZ,_other
_one:   INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        INC HL
        LD A,E
        SUB (HL)
        INC HL
        LD A,D
        SBC A,(HL)
        JR NC,bad_subscript
        INC HL
        LD A,(HL)
        AND TYPE_VALUE
        JR Z,_word
        CP TYPE_STRING
        LD H,D
        LD L,E
        ADD HL,HL
        JR Z,_string
        ADD HL,HL
        ADD HL,DE
        ADD HL,BC
        EX DE,HL
        POP HL
        LD A,KIND_NUMBER
        RET
_string:
        ADD HL,DE
        ADD HL,BC
        EX DE,HL
        POP HL
        LD A,KIND_STRING
        RET
_word:  EX DE,HL
        ADD HL,HL
        ADD HL,BC
        EX DE,HL
        POP HL
        LD A,KIND_WORD
        RET
_other: INC A
        JR NZ,bad_subscript     ; it has more dimensions
        PUSH DE
        LD A,1
        CALL array_default
        POP DE
        JR _one

bad_subscript:
        LD E,ERR_SUBSCRIPT
        JP error

; HL = symbol: A dimensions of 11. HL is kept.
array_default:
        PUSH HL
        LD (dim_count),A
        LD B,A
        LD DE,11
        LD HL,dim_sizes
_size:  LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        DJNZ _size
        POP HL
        JP array_make

; Several indices: the first in DE, A = the character behind it, the symbol on the stack.
array_several:
        LD B,1
_more:  CP ","
        JP NZ,syntax_error
        INC HL
        LD A,B
        CP DIMENSIONS
        JR NC,bad_subscript
        PUSH DE
        PUSH BC
        CALL eval_integer
        POP BC
        INC B
        LD A,(HL)
        CP ")"
        JR NZ,_more
        INC HL
        LD (array_text),HL
        LD A,B
        DEC A
        ADD A,A
        LD L,A
        LD H,0
        ADD HL,SP
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD (array_symbol),HL
        LD A,(HL)
        OR A
        JR NZ,_there
        PUSH DE
        PUSH BC
        LD A,B
        CALL array_default
        POP BC
        POP DE
        LD A,(HL)
_there: CP B
        JR NZ,bad_subscript
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD (array_data),HL
        LD C,B
        LD B,0                  ; HL is behind the sizes, DE the last index
        CALL _within
_fold:  DEC C
        JR Z,_found
        DEC HL                  ; DE = DE * size of the dimension before + index
        DEC HL
        DEC HL
        DEC HL
        EX (SP),HL              ; index; HL kept on the stack
        LD (dim_size),HL
        POP HL
        PUSH BC
        PUSH HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        CALL multiply
        POP HL
        INC HL
        INC HL
        PUSH DE
        LD DE,(dim_size)
        CALL _within
        EX DE,HL
        POP BC
        ADD HL,BC
        EX DE,HL
        POP BC
        JR _fold
_found: POP HL                  ; the symbol
        LD BC,SYMBOL_TYPE
        ADD HL,BC
        LD A,(HL)
        CALL element_size
        PUSH AF
        CALL times_size
        LD HL,(array_data)
        ADD HL,DE
        EX DE,HL
        POP AF
        LD HL,(array_text)
        CP 3
        LD A,KIND_STRING
        RET Z
        LD A,KIND_WORD
        RET C
        LD A,KIND_NUMBER
        RET
; Subscript out of range unless DE is below the size that ends before HL. HL is kept.
_within:
        DEC HL
        DEC HL
        LD A,E
        SUB (HL)
        INC HL
        LD A,D
        SBC A,(HL)
        INC HL
        RET C
        JP bad_subscript

; A = type byte: A = bytes of an element.
element_size:
        AND TYPE_VALUE
        SUB 3
        JR Z,_string
        INC A
        INC A
        INC A
        LD A,5
        RET NZ
        LD A,2
        RET
_string:
        LD A,3
        RET

; DE = DE * A; carry when it passes 65535. Uses HL, B.
times_size:
        LD HL,0
        LD B,A
_add:   ADD HL,DE
        RET C
        DJNZ _add
        EX DE,HL
        RET

; HL = symbol, dim_count and dim_sizes tell the dimensions: the block is made. HL is kept.
array_make:
        PUSH HL
        LD (array_symbol),HL
        LD BC,SYMBOL_TYPE
        ADD HL,BC
        LD A,(HL)
        CALL element_size
        LD E,A
        LD D,0
        LD A,(dim_count)
        LD C,A
        LD HL,dim_sizes
_product:
        PUSH HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        PUSH BC
        CALL product
        POP BC
        POP HL
        JR C,_memory
        INC HL
        INC HL
        DEC C
        JR NZ,_product
        LD A,(dim_count)
        ADD A,A
        ADD A,BLOCK_DIMS + 1
        LD L,A
        LD H,0
        ADD HL,DE
        JR C,_memory
        LD B,H
        LD C,L                  ; the block's size
        CALL array_room
        LD HL,(arrays_end)
        PUSH HL
        PUSH BC
        LD D,H                  ; everything 0
        LD E,L
        INC DE
        LD (HL),0
        DEC BC
        LDIR
        LD (arrays_end),DE
        POP BC
        POP HL
        LD (HL),C
        INC HL
        LD (HL),B
        INC HL
        LD DE,(array_symbol)
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        LD A,(dim_count)
        LD (HL),A
        INC HL
        LD (DE),A
        ADD A,A
        LD C,A
        LD B,0
        EX DE,HL
        LD HL,dim_sizes
        LDIR
        LD HL,(array_symbol)    ; DE = the elements
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        LD DE,(dim_sizes)
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
_memory:
        LD E,ERR_MEMORY
        JP error

; DE = DE * HL, unsigned, carry when it passes 65535.
product:
        LD B,H
        LD C,L
        LD HL,0
        LD A,16
_bit:   ADD HL,HL
        RET C
        SLA C
        RL B
        JR NC,_next
        ADD HL,DE
        RET C
_next:  DEC A
        JR NZ,_bit
        EX DE,HL
        RET

; Out of memory unless BC bytes are free. BC is kept.
array_room:
        CALL _free
        RET NC
        PUSH BC
        CALL heap_collect
        POP BC
        CALL _free
        RET NC
        LD E,ERR_MEMORY
        JP error
_free:  LD HL,(heap_low)
        LD DE,(arrays_end)
        OR A
        SBC HL,DE
        RET C
        SBC HL,BC
        RET

; ---- DIM a(n,...),...

do_dim: LD A,(HL)
        CP TOK_ARRAY
        JR Z,_array
        CP TOK_ARRAY_STRING
        JR Z,_array
        CALL variable_ref       ; a plain variable is there anyway
        JR _more
_array: INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        PUSH DE
        LD A,(DE)
        OR A
        LD E,ERR_DUPLICATE
        JP NZ,error
        LD B,0
_size:  INC HL
        LD A,B
        CP DIMENSIONS
        JP NC,bad_subscript
        PUSH BC
        CALL eval_integer
        POP BC
        BIT 7,D
        JP NZ,illegal_call
        INC DE
        PUSH HL
        LD A,B
        ADD A,A
        LD L,A
        LD H,0
        PUSH DE
        LD DE,dim_sizes
        ADD HL,DE
        POP DE
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        INC B
        LD A,(HL)
        CP ","
        JR Z,_size
        CP ")"
        JP NZ,syntax_error
        INC HL
        LD A,B
        LD (dim_count),A
        EX (SP),HL
        CALL array_make
        POP HL
_more:  LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JR do_dim

; ---- ERASE a,...: the arrays of these names

do_erase:
        CALL variable_name      ; DE = symbol of the plain variable
        PUSH HL
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        OR TYPE_ARRAY
        CALL symbol_sibling
        LD A,(DE)
        OR A
        JP Z,illegal_call
        PUSH DE
        CALL array_erase
        POP HL
        LD (HL),0
        POP HL
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        JR do_erase

; HL at the token of a plain variable: DE = symbol, HL behind it.
variable_name:
        LD A,(HL)
        CP TOK_VAR
        JR Z,_plain
        CP TOK_VAR_STRING
        JP NZ,syntax_error
_plain: INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        RET

; DE = symbol: DE = the symbol of that name with type byte A.
symbol_sibling:
        LD (name_type),A
        AND TYPE_SUFFIX
        LD A,TYPE_ARRAY + TYPE_FUNCTION + TYPE_SUFFIX
        JR Z,_mask
        LD A,TYPE_VALUE + TYPE_ARRAY + TYPE_FUNCTION + TYPE_SUFFIX
_mask:  LD (name_mask),A
        LD HL,SYMBOL_NAME
        ADD HL,DE
        LD A,(HL)
        LD (name_length),A
        INC HL
        LD (name_start),HL
        JP symbol_find

; DE = symbol of an array: its block goes, those behind move down.
array_erase:
        EX DE,HL
        LD A,(HL)
        ADD A,A
        ADD A,BLOCK_DIMS + 1
        LD C,A
        LD B,0
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        OR A
        SBC HL,BC               ; the block
        LD C,(HL)
        INC HL
        LD B,(HL)               ; its size
        DEC HL
        CALL heap_forget
        PUSH BC
        PUSH HL
        LD D,H
        LD E,L
        ADD HL,BC
        PUSH HL                 ; what follows
        LD B,H
        LD C,L
        LD HL,(arrays_end)
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        POP HL
        LD A,B
        OR C
        JR Z,_moved
        LDIR
_moved: LD (arrays_end),DE
        POP HL                  ; the blocks that moved
        POP BC
_next:  LD DE,(arrays_end)
        OR A
        SBC HL,DE
        RET NC
        ADD HL,DE
        PUSH HL
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)               ; its symbol
        EX DE,HL
        INC HL
        LD A,(HL)
        SUB C
        LD (HL),A
        INC HL
        LD A,(HL)
        SBC A,B
        LD (HL),A
        POP HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        DEC HL
        ADD HL,DE
        JR _next

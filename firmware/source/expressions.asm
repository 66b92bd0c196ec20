; Expressions: evaluated as they are read, integers in registers.
;
; For others (all take HL as the text pointer and leave it behind the expression; AF, BC, DE change):
;   eval            any expression: value in FAC, A = 0 and Z a number; or NZ a string, DE = its descriptor
;   eval_number     a number in FAC
;   eval_integer    DE = -32768..32767, rounded
;   eval_word       DE = -32768..65535
;   eval_byte       A and E = 0..255
;   eval_string     B = length, DE = address of the text; good until the next evaluation
;
; Inside, a value has its type in B: 0 an integer in DE, 1 a float in FAC, 80h a string whose descriptor (length,
; address) DE points to. C is the weakest operator that still belongs to this level: the right operand of * is read
; with a C that lets only ^ through.
;
; Functions: a handler fn_... is entered with HL behind its name. It reads its arguments with
;   arg_number arg_integer arg_byte arg_word arg_string    "(" one argument ")": results as eval_...
; or with eval_... and expect, and ends by a jump to
;   result_integer  DE      result_word  DE, 0..65535      result_fac  a number in FAC
;   result_string   B = length, DE = address of the text, which must not lie among the strings
;   result_descriptor  DE = a descriptor
; with HL behind the last argument. AF, BC, DE, alternates and IX may change.

eval:   CALL evaluate
        LD A,B
        OR A
        JR Z,_integer
        DEC A
        RET Z                   ; a float, already there
        RET
_integer:
        LD (FAC),A
        LD (FAC + 1),DE
        RET

eval_number:
        CALL evaluate
value_to_fac:
        LD A,B
        OR A
        JR NZ,_fac
        LD (FAC),A
        LD (FAC + 1),DE
        RET
_fac:   RET P
type_mismatch:
        LD E,ERR_TYPE
        JP error

eval_integer:
        CALL evaluate
value_to_integer:
        LD A,B
        OR A
        RET Z
        JP M,type_mismatch
        PUSH HL
        CALL float_to_integer
        EX DE,HL
        POP HL
        LD B,0
        RET

eval_word:
        CALL evaluate
value_to_word:
        LD A,B
        OR A
        RET Z
        JP M,type_mismatch
        PUSH HL
        CALL float_to_word
        EX DE,HL
        POP HL
        LD B,0
        RET

eval_byte:
        CALL evaluate
value_to_byte:
        CALL value_to_integer
        LD A,D
        OR A
        LD A,E
        RET Z
illegal_call:
        LD E,ERR_CALL
        JP error

eval_string:
        CALL evaluate
value_to_string:
        BIT 7,B
        JR Z,type_mismatch
        CALL temp_free
        EX DE,HL
        LD B,(HL)
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL
        RET

; ---- Arguments and results of functions

arg_open:
        LD A,(HL)
        CP "("
        JP NZ,syntax_error
        INC HL
        RET
arg_close:
        LD A,(HL)
        CP ")"
        JP NZ,syntax_error
        INC HL
        RET
arg_number:
        CALL arg_open
        CALL eval_number
        JR arg_close
arg_integer:
        CALL arg_open
        CALL eval_integer
        JR arg_close
arg_word:
        CALL arg_open
        CALL eval_word
        JR arg_close
arg_byte:
        CALL arg_open
        CALL eval_byte
        CALL arg_close
        LD A,E
        RET
arg_string:
        CALL arg_open
        CALL eval_string
        JR arg_close

result_word:
        BIT 7,D
        JR Z,result_integer
        PUSH HL
        EX DE,HL
        CALL word_to_fac
        POP HL
result_fac:
        LD A,(FAC)
        OR A
        LD B,1
        RET NZ
        LD DE,(FAC + 1)
result_integer:
        LD B,0
        RET
result_string:
        PUSH HL
        PUSH DE
        LD A,B
        CALL string_new         ; DE = descriptor, HL = room, A = length
        EX (SP),HL
        POP BC                  ; BC = room, HL = text
        PUSH DE
        LD D,B
        LD E,C
        CALL copy_text
        POP DE
        POP HL
result_descriptor:
        LD B,80h
        RET

; A bytes from HL to DE.
copy_text:
        OR A
        RET Z
        LD C,A
        LD B,0
        LDIR
        RET

; ---- The machine's stack is bounded

check_stack:
        LD (stack_probe),SP
        LD A,(stack_probe + 1)
        CP STACK_LIMIT / 256
        RET NC
        LD E,ERR_FORMULA
        JP error

; ---- Levels

evaluate:
        LD C,TOK_IMP
evaluate_level:
        CALL primary
expression_on:
        LD A,(HL)
        CP C
        RET C
        INC HL
        PUSH BC                 ; the level we are in
        INC B
        DEC B
        JR NZ,_other
        PUSH DE
_operator:
        ADD A,A
        ADD A,A
        EX DE,HL
        LD L,A
        LD H,operator_table / 256
        LD C,(HL)
        INC L
        LD A,(HL)
        INC L
        LD H,(HL)
        LD L,A
        PUSH HL                 ; the operator's routine: what we return to with the right operand
        EX DE,HL
        INC C
        JR Z,_primary
        DEC C
        JP evaluate_level
_primary:
        JP primary              ; ^ : from left to right
_other: LD C,A
        JP P,_float
        PUSH DE
        JR _tag
_float: LD DE,(FAC)
        PUSH DE
        LD DE,(FAC + 2)
        PUSH DE
        LD A,(FAC + 4)
        PUSH AF
_tag:   PUSH BC                 ; type and operator of what lies there
        LD A,C
        ADD A,A
        ADD A,A
        EX DE,HL
        LD L,A
        LD H,operator_table / 256
        LD C,(HL)
        EX DE,HL
        LD DE,binary_other
        PUSH DE
        INC C
        JR Z,_primary
        DEC C
        JP evaluate_level

; ---- Operators whose left operand is an integer. Stack: left operand, level.

op_plus:
        INC B
        DEC B
        LD A,TOK_PLUS
        JP NZ,mixed
        EX (SP),HL
        OR A
        ADC HL,DE
        JP PE,_over
        EX DE,HL
        POP HL
        POP BC
        JP expression_on
_over:  OR A
        SBC HL,DE
        JP integers_by_float
op_minus:
        INC B
        DEC B
        LD A,TOK_MINUS
        JP NZ,mixed
        EX (SP),HL
        OR A
        SBC HL,DE
        JP PE,_over
        EX DE,HL
        POP HL
        POP BC
        JP expression_on
_over:  ADD HL,DE
        JP integers_by_float
op_times:
        INC B
        DEC B
        LD A,TOK_TIMES
        JP NZ,mixed
        EX (SP),HL
        PUSH HL
        PUSH DE
        CALL multiply
        JR C,_over
        POP HL
        POP HL
        POP HL
        POP BC
        JP expression_on
_over:  POP DE
        POP HL
        LD A,TOK_TIMES
        JP integers_by_float
op_divide:
        INC B
        DEC B
        LD A,TOK_DIVIDE
        JP NZ,mixed
        EX (SP),HL
        JP integers_by_float
op_power:
        INC B
        DEC B
        LD A,TOK_POWER
        JP NZ,mixed
        EX (SP),HL
        JP integers_by_float
op_equal:
        LD C,TOK_EQUAL
        JR op_relation
op_unequal:
        LD C,TOK_UNEQUAL
        JR op_relation
op_greater:
        LD C,TOK_GREATER
        JR op_relation
op_less_equal:
        LD C,TOK_LESS_EQUAL
        JR op_relation
op_greater_equal:
        LD C,TOK_GREATER_EQUAL
        JR op_relation
op_less:
        LD C,TOK_LESS
op_relation:
        INC B
        DEC B
        LD A,C
        JP NZ,mixed
        EX (SP),HL
        OR A
        SBC HL,DE
        LD A,2
        JR Z,relation
        JP PE,_over
        JP M,_less
        LD A,4
        JR relation
_over:  LD A,4
        JP M,relation
_less:  LD A,1
; A = 1 less, 2 equal, 4 greater; C = operator. Stack: text, level.
relation:
        LD HL,relation_masks - TOK_EQUAL
        LD B,0
        ADD HL,BC
        AND (HL)
        LD DE,0
        JR Z,_false
        DEC DE
_false: POP HL
        POP BC
        LD B,0
        JP expression_on

op_and: INC B
        DEC B
        LD A,TOK_AND
        JP NZ,mixed
        EX (SP),HL
        LD A,H
        AND D
        LD D,A
        LD A,L
        AND E
        LD E,A
        POP HL
        POP BC
        JP expression_on
op_or:  INC B
        DEC B
        LD A,TOK_OR
        JP NZ,mixed
        EX (SP),HL
        LD A,H
        OR D
        LD D,A
        LD A,L
        OR E
        LD E,A
        POP HL
        POP BC
        JP expression_on
op_xor: LD A,TOK_XOR
        JR op_word
op_eqv: LD A,TOK_EQV
        JR op_word
op_imp: LD A,TOK_IMP
        JR op_word
op_mod: LD A,TOK_MOD
        JR op_word
op_intdiv:
        LD A,TOK_INTDIV
op_word:
        INC B
        DEC B
        JP NZ,mixed
        EX (SP),HL
word_operator:                  ; A operator, HL left, DE right. Stack: text, level
        CALL word_operate
        POP HL
        POP BC
        LD B,0
        JP expression_on

; A = operator; HL, DE operands: DE = result.
word_operate:
        CP TOK_MOD
        JR NC,word_divide
        CP TOK_AND
        JR Z,word_and
        CP TOK_OR
        JR Z,word_or
        LD C,A
        CP TOK_IMP
        JR Z,word_imp
        LD A,H
        XOR D
        LD D,A
        LD A,L
        XOR E
        LD E,A
        LD A,C
        CP TOK_XOR
        RET Z
complement:
        LD A,D
        CPL
        LD D,A
        LD A,E
        CPL
        LD E,A
        RET
word_imp:
        EX DE,HL
        CALL complement
word_or:
        LD A,H
        OR D
        LD D,A
        LD A,L
        OR E
        LD E,A
        RET
word_and:
        LD A,H
        AND D
        LD D,A
        LD A,L
        AND E
        LD E,A
        RET
; Both cut toward zero; the remainder has the sign of the dividend.
word_divide:
        PUSH AF
        LD A,D
        OR E
        JR Z,word_zero
        LD A,H
        LD B,A                  ; sign of the remainder
        XOR D
        LD C,A                  ; and of the quotient
        PUSH BC
        CALL negative_hl
        EX DE,HL
        CALL negative_hl
        LD B,D
        LD C,E                  ; BC dividend, HL divisor
        EX DE,HL
        CALL divide             ; BC quotient, HL remainder
        POP DE                  ; signs: D remainder, E quotient
        POP AF
        CP TOK_MOD
        JR Z,word_remainder
        BIT 7,E
        LD D,B
        LD E,C
        RET Z
negate_de:
        XOR A
        SUB E
        LD E,A
        SBC A,A
        SUB D
        LD D,A
        RET
word_remainder:
        BIT 7,D
        EX DE,HL
        RET Z
        JR negate_de
word_zero:
        LD E,ERR_ZERO
        JP error

; HL = its absolute value.
negative_hl:
        BIT 7,H
        RET Z
        XOR A
        SUB L
        LD L,A
        SBC A,A
        SUB H
        LD H,A
        RET

; BC / DE, unsigned: BC = quotient, HL = remainder. A is used.
divide: LD HL,0
        LD A,16
_bit:   SLA C
        RL B
        ADC HL,HL
        SBC HL,DE
        JR C,_less
        INC C
        DEC A
        JR NZ,_bit
        RET
_less:  ADD HL,DE
        DEC A
        JR NZ,_bit
        RET

; HL * DE, signed: DE = product, or carry when it does not fit.
multiply:
        LD A,H
        XOR D
        PUSH AF
        CALL negative_hl
        EX DE,HL
        CALL negative_hl
        LD A,H
        OR A
        JR Z,_order
        EX DE,HL
        LD A,H
        OR A
        JR NZ,_over             ; both are 256 or more
_order: LD A,L                  ; A * DE
        LD HL,0
        OR A
        JR Z,_done
_bit:   RRA
        JR NC,_next
        ADD HL,DE
        JR C,_over
        BIT 7,H
        JR NZ,_over
_next:  OR A
        JR Z,_done
        SLA E
        RL D
        JR NC,_bit
_over:  POP AF
        SCF
        RET
_done:  EX DE,HL
        POP AF
        RLA
        JR NC,_end
        CALL negate_de
_end:   OR A
        RET

; ---- Everything else is done by floats.

; A = operator, right operand in B, DE, FAC (no integer). Stack: left integer, level.
mixed:  EX (SP),HL
        LD (left_operand + 1),HL
        LD HL,left_operand
        LD (HL),0
        BIT 7,B
        JP NZ,type_mismatch
        JR binary_float
; A = operator, HL, DE = integers. Stack: text, level.
integers_by_float:
        LD (left_operand + 1),HL
        LD HL,left_operand
        LD (HL),0
        LD (FAC + 1),DE
        LD HL,FAC
        LD (HL),0
; A = operator, operands in left_operand and FAC. Stack: text, level.
binary_float:
        CP TOK_PLUS
        JR C,binary_below
        SUB TOK_PLUS
        ADD A,A
        LD E,A
        LD D,0
        LD HL,float_operators
        ADD HL,DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD HL,binary_result
        PUSH HL
        PUSH DE
        LD HL,left_operand
        RET
binary_result:
        POP HL
        POP BC
        LD A,(FAC)
        LD B,1
        OR A
        JP NZ,expression_on
        LD B,A
        LD DE,(FAC + 1)
        JP expression_on
binary_below:
        CP TOK_EQUAL
        JR C,binary_word
        PUSH AF
        LD HL,left_operand
        CALL float_compare
        POP BC
        LD C,B
compared:                       ; C operator, Z and C as compared. Stack: text, level
        LD A,2
        JP Z,relation
        LD A,1
        JP C,relation
        LD A,4
        JP relation
binary_word:
        CALL float_words
        JP word_operator
; FAC and left_operand: HL left, DE right. A is kept.
float_words:
        PUSH AF
        CALL float_to_integer
        PUSH HL
        LD HL,left_operand
        CALL fac_load
        CALL float_to_integer
        POP DE
        POP AF
        RET
float_mod:
        LD A,TOK_MOD
        JR float_word_operate
float_intdiv:
        LD A,TOK_INTDIV
float_word_operate:
        CALL float_words
        CALL word_operate
        EX DE,HL
        JP integer_to_fac
float_operators:
        DEFW float_add, float_sub, float_mod, float_intdiv, float_mul, float_div, float_power
relation_masks:
        DEFB 2,1,4,3,6,5        ; = < > <= >= <>

; The right operand is there, the left one is no integer. Stack: type and operator, left operand, level.
binary_other:
        LD A,B
        POP BC
        BIT 7,B
        JR NZ,_strings
        OR A
        JP M,type_mismatch
        JR NZ,_right
        LD (FAC),A
        LD (FAC + 1),DE
_right: POP AF
        LD (left_operand + 4),A
        POP DE
        LD (left_operand + 2),DE
        POP DE
        LD (left_operand),DE
        LD A,C
        PUSH HL
        JP binary_float
_strings:
        OR A
        JP P,type_mismatch
        EX (SP),HL              ; HL left, DE right descriptor
        LD A,C
        CP TOK_PLUS
        JR Z,_join
        JP NC,type_mismatch
        CP TOK_EQUAL
        JP C,type_mismatch
        PUSH BC
        CALL string_compare
        POP BC
        JP compared
_join:  CALL string_join
        POP HL
        POP BC
        LD B,80h
        JP expression_on

        DEFS (0B4h - $) AND 0FFh
; Each operator: the weakest operator its right operand may hold (FFh: none at all), its routine.
operator_table_first:
operator_table  EQU operator_table_first - 0B4h
        DEFB TOK_EQV
        DEFW op_imp
        DEFB 0,TOK_XOR
        DEFW op_eqv
        DEFB 0,TOK_OR
        DEFW op_xor
        DEFB 0,TOK_AND
        DEFW op_or
        DEFB 0,TOK_EQUAL
        DEFW op_and
        DEFB 0,TOK_PLUS
        DEFW op_equal
        DEFB 0,TOK_PLUS
        DEFW op_less
        DEFB 0,TOK_PLUS
        DEFW op_greater
        DEFB 0,TOK_PLUS
        DEFW op_less_equal
        DEFB 0,TOK_PLUS
        DEFW op_greater_equal
        DEFB 0,TOK_PLUS
        DEFW op_unequal
        DEFB 0,TOK_MOD
        DEFW op_plus
        DEFB 0,TOK_MOD
        DEFW op_minus
        DEFB 0,TOK_INTDIV
        DEFW op_mod
        DEFB 0,TOK_TIMES
        DEFW op_intdiv
        DEFB 0,TOK_POWER
        DEFW op_times
        DEFB 0,TOK_POWER
        DEFW op_divide
        DEFB 0,0FFh
        DEFW op_power

; ---- Primaries: B, DE as above; C is kept.

primary:
        LD A,(HL)
        INC HL
        CP TOK_VAR
        JR NZ,primary_constant
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
primary_number:                 ; the number at DE
        LD A,(DE)
        OR A
        JR NZ,_float
        INC DE
        EX DE,HL
        LD B,(HL)
        INC HL
        LD H,(HL)
        LD L,B
        EX DE,HL
        LD B,A
        RET
_float: PUSH BC
        PUSH HL
        EX DE,HL
        LD DE,FAC
        LDI
        LDI
        LDI
        LDI
        LDI
        POP HL
        POP BC
        LD B,1
        RET
primary_constant:
        CP " "
        JR NC,primary_above
        SUB TOK_DIGIT
        JR C,_below
        CP 10
        JP NC,primary_bad
        LD E,A
        XOR A
        LD D,A
        LD B,A
        RET
_below: CP (TOK_BYTE - TOK_DIGIT) AND 0FFh
        JR NZ,_word
        LD E,(HL)
        INC HL
        XOR A
        LD D,A
        LD B,A
        RET
_word:  CP (TOK_WORD - TOK_DIGIT) AND 0FFh
        JR NZ,_array
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD B,0
        RET
_array: CP (TOK_ARRAY - TOK_DIGIT) AND 0FFh
        JR NZ,_string
        PUSH BC
        CALL array_element
        POP BC
        CP KIND_WORD
        JR NZ,primary_number
        EX DE,HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL
        LD B,0
        RET
_string:
        CP (TOK_VAR_STRING - TOK_DIGIT) AND 0FFh
        JR NZ,_string_element
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD B,80h
        RET
_string_element:
        CP (TOK_ARRAY_STRING - TOK_DIGIT) AND 0FFh
        JR NZ,_literal
        PUSH BC
        CALL array_element
        POP BC
        LD B,80h
        RET
_literal:
        CP (TOK_FLOAT - TOK_DIGIT) AND 0FFh
        JR Z,_five
        CP (TOK_FN - TOK_DIGIT) AND 0FFh
        JP Z,fn_call
        CP (TOK_SPELT - TOK_DIGIT) AND 0FFh
        JP NZ,primary_bad
_five:  PUSH BC
        LD DE,FAC
        LDI
        LDI
        LDI
        LDI
        LDI
        POP BC
        CP (TOK_SPELT - TOK_DIGIT) AND 0FFh
        JP NZ,result_fac
        LD E,(HL)               ; its spelling
        LD D,0
        ADD HL,DE
        INC HL
        JP result_fac

primary_above:
        CP "("
        JR Z,_parenthesis
        CP TOK_FUNCTION
        JR Z,primary_function
        CP 22h
        JP Z,string_literal
        CP TOK_MINUS
        JR Z,primary_negative
        CP TOK_NOT
        JR Z,primary_not
        CP TOK_PLUS
        JP Z,primary
        JP primary_bad
_parenthesis:
        PUSH BC
        CALL check_stack
        CALL evaluate
        LD A,(HL)
        CP ")"
        JP NZ,syntax_error
        INC HL
primary_end:                    ; the level back, the type stays
        LD A,B
        POP BC
        LD B,A
        RET
primary_negative:
        PUSH BC
        CALL check_stack
        LD C,TOK_POWER
        CALL evaluate_level
        LD A,B
        OR A
        JR NZ,primary_negative_float
        CALL negate_de
        LD A,D
        CP 80h
        JR NZ,primary_end
        LD A,E
        OR A
        JR NZ,primary_end
        CALL value_to_fac       ; 32768
primary_negative_float:
        JP M,type_mismatch
        PUSH HL
        CALL float_negate
        POP HL
        CALL result_fac
        JR primary_end
primary_not:
        PUSH BC
        CALL check_stack
        LD C,TOK_EQUAL
        CALL evaluate_level
        CALL value_to_integer
        CALL complement
        JR primary_end

primary_bad:
        DEC HL
        LD A,(HL)
        OR A
        JR Z,_missing
        CP ":"
        JP NZ,syntax_error
_missing:
        LD E,ERR_OPERAND
        JP error

; A function: HL at its second byte.
primary_function:
        PUSH BC
        CALL check_stack
        LD A,(HL)
        INC HL
        CP FN_END
        JP NC,syntax_error
        LD DE,primary_end
        PUSH DE
        CP FN_NUMERIC
        JR C,_numeric
        CALL _handler
        PUSH DE
        RET
_numeric:
        PUSH AF
        CALL arg_open
        CALL evaluate
        CALL arg_close
        POP AF
        CP FN_RND
        JR Z,_fac
        INC B
        DEC B
        JR NZ,_fac
        CP FN_INT               ; of an integer these are the integer
        RET Z
        CP FN_FIX
        JR C,_fac
        RET
_fac:   PUSH AF
        CALL value_to_fac
        POP AF
        CALL _handler
        PUSH HL
        LD HL,_back
        PUSH HL
        PUSH DE
        RET
_back:  POP HL
        JP result_fac
; DE = handler of function A.
_handler:
        PUSH HL
        ADD A,A
        LD E,A
        LD D,0
        LD HL,function_table
        ADD HL,DE
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX (SP),HL
        POP DE
        RET
value_same:
        RET
function_table:
        DEFW float_sgn, float_int, float_abs, float_sqr, float_rnd, float_log, float_exp, float_cos, float_sin
        DEFW float_tan, float_atn, float_fix, fac_cint, value_same, value_same
        DEFW fn_peek, fn_inp, fn_len, fn_val, fn_asc, fn_str, fn_chr, fn_hex, fn_oct, fn_space
        DEFW fn_left, fn_right, fn_mid, fn_string, fn_instr, fn_inkey, fn_input, fn_csrlin, fn_pos, fn_point
        DEFW fn_fre, fn_usr, fn_varptr, fn_err, fn_erl, fn_time, fn_date
function_table_end:
        IF function_table_end - function_table - 2 * (FN_END - 80h)
        .ERROR function_table and tokens.inc disagree
        ENDIF

fac_cint:
        CALL float_to_integer
        JP integer_to_fac

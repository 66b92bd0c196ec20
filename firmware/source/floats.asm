; Floats: arithmetic, comparison, conversion.
;
; A value is 5 bytes: +0 exponent; 0 is a 16-bit integer at +1, else value = 0.1mmm... x 2^(exponent - 128) with the
; mantissa lowest byte first at +1 and the sign in bit 7 of +4, where the mantissa's leading 1 would stand.
; Zero is the integer 0. FAC is the accumulator. Everything may destroy AF BC DE HL and their alternates; IX and
; IY are kept.
;
;   float_add float_sub float_mul float_div   (HL) op FAC -> FAC. Integers while they fit.
;   float_compare      (HL) with FAC: Z equal, C left smaller
;   float_negate float_abs float_sgn float_int float_fix   FAC -> FAC
;   float_to_integer   FAC, rounded, -32768..32767 -> HL
;   float_to_word      FAC, rounded, -32768..65535 -> HL
;   integer_to_fac     HL -> FAC      word_to_fac   HL, 0..65535 -> FAC
;   fac_load           (HL) -> FAC    fac_store     FAC -> (HL)
; Errors: Overflow, Division by zero. What is too small becomes 0.
;
; Unpacked, a float is BCDE (B highest, bit 7 set), guard bits in H, float_exponent (a word) and float_sign.
; A result is right to the nearest; of a product that needs all 64 bits the error is below 0.52 of the last bit.

; ---- Moving

fac_load:
        LD DE,FAC
        JR fac_copy
fac_store:
        LD DE,FAC
        EX DE,HL
fac_copy:
        LDI
        LDI
        LDI
        LDI
        LDI
        RET

word_to_fac:
        BIT 7,H
        JR Z,integer_to_fac
        EX DE,HL
        LD BC,0
        XOR A
        LD (float_sign),A
        JP float_from_long
integer_to_fac:
        XOR A
        LD (FAC),A
        LD (FAC + 1),HL
        RET

; ---- Addition and subtraction

float_sub:
        LD A,(FAC)
        OR (HL)
        JR NZ,_float
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD DE,(FAC + 1)
        SBC HL,DE               ; OR has cleared the carry
        JP PE,float_add_wide
        LD (FAC + 1),HL
        RET
_float: PUSH HL
        CALL float_negate
        POP HL

float_add:
        LD A,(FAC)
        OR (HL)
        JR NZ,_float
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD HL,(FAC + 1)
        ADC HL,DE               ; for the flag of overflow; OR has cleared the carry
        JP PE,float_add_wide
        LD (FAC + 1),HL
        RET
_float: CALL float_operands
        JP Z,_zero
        LD DE,FAC
        LD A,(DE)
        SUB (HL)
        JR NC,_order
        NEG
        EX DE,HL
_order: CP 34                   ; DE: the larger, HL: the smaller, A: bits between them
        JP NC,_larger
        EX AF,AF'
        LD BC,4
        ADD HL,BC
        EX DE,HL
        PUSH HL
        ADD HL,BC
        LD A,(HL)
        LD (float_sign),A
        EX DE,HL
        LD B,(HL)
        XOR B
        SET 7,B
        DEC HL
        LD C,(HL)
        DEC HL
        LD D,(HL)
        DEC HL
        LD E,(HL)
        LD H,0
        LD L,A                  ; bit 7: the signs differ
        EX AF,AF'
        JR _bytes
_byte:  LD H,E
        LD E,D
        LD D,C
        LD C,B
        LD B,0
_bytes: SUB 8
        JR NC,_byte
        ADD A,8
        JR Z,_aligned
        CP 5
        JR C,_bit
        INC H
        DEC H
        JR Z,_left
_bit:   SRL B
        RR C
        RR D
        RR E
        RR H
        DEC A
        JR NZ,_bit
        JR _aligned
_left:  LD H,E                  ; 5 to 7 bits: a byte, and 3 to 1 back
        LD E,D
        LD D,C
        LD C,B
        LD B,0
_back:  SLA H
        RL E
        RL D
        RL C
        RL B
        INC A
        CP 8
        JR NZ,_back
        XOR A
_aligned:
        LD (float_exponent + 1),A
        OR L
        JP M,_differ
        EX (SP),HL
        LD A,(HL)
        LD (float_exponent),A
        INC HL
        LD A,(HL)
        ADD A,E
        LD E,A
        INC HL
        LD A,(HL)
        ADC A,D
        LD D,A
        INC HL
        LD A,(HL)
        ADC A,C
        LD C,A
        INC HL
        LD A,(HL)
        SET 7,A
        ADC A,B
        LD B,A
        POP HL
        JP NC,float_round
        RR B
        RR C
        RR D
        RR E
        RR H
        LD A,(float_exponent)
        INC A
        JP Z,overflow
        LD (float_exponent),A
        JP float_round
_larger:
        EX DE,HL
        JP fac_load             ; onto itself, at worst
_zero:  LD A,(FAC)
        OR A
        RET NZ                  ; the left operand was the zero
        JP fac_load
_differ:
        XOR A
        SUB H
        LD H,A
        EX (SP),HL
        LD A,(HL)
        LD (float_exponent),A
        INC HL
        LD A,(HL)
        SBC A,E
        LD E,A
        INC HL
        LD A,(HL)
        SBC A,D
        LD D,A
        INC HL
        LD A,(HL)
        SBC A,C
        LD C,A
        INC HL
        LD A,(HL)
        SET 7,A
        SBC A,B
        LD B,A
        POP HL
        JP NC,float_normalise
        XOR A                   ; equal exponents, and the other was the larger
        SUB H
        LD H,A
        LD A,0
        SBC A,E
        LD E,A
        LD A,0
        SBC A,D
        LD D,A
        LD A,0
        SBC A,C
        LD C,A
        LD A,0
        SBC A,B
        LD B,A
        LD A,(float_sign)
        CPL
        LD (float_sign),A
        JP float_normalise

; A sum of integers that has overflown to HL: its sign is the opposite of what bit 15 says.
float_add_wide:
        LD A,H
        CPL
        LD (float_sign),A
        EX DE,HL
        LD BC,0
        ADD A,A
        JR NC,float_from_long
        LD H,B                  ; 65536 - DE, which may be 65536
        LD L,B
        OR A
        SBC HL,DE
        EX DE,HL
        JR C,float_from_long
        INC C

; BCDE, an unsigned number, with float_sign -> FAC, a float or 0.
float_from_long:
        LD HL,128 + 32
        LD (float_exponent),HL
        LD H,0

; ---- Results: BCDE, H, float_exponent, float_sign -> FAC

float_normalise:
        LD A,B
        OR A
        JP M,float_round
        JR NZ,_bits
        LD L,0                  ; bytes moved, times 8
_byte:  LD B,C
        LD C,D
        LD D,E
        LD E,H
        LD H,0
        LD A,L
        ADD A,8
        CP 40
        JP Z,float_zero
        LD L,A
        LD A,B
        OR A
        JR Z,_byte
        JP M,_done
        JR _shift
_bits:  LD L,0
_shift: SLA H
        RL E
        RL D
        RL C
        RL B
        INC L
        BIT 7,B
        JR Z,_shift
_done:  LD A,(float_exponent)
        SUB L
        LD (float_exponent),A
        JR NC,float_round
        LD A,(float_exponent + 1)
        DEC A
        LD (float_exponent + 1),A

float_round:
        BIT 7,H
        JR Z,float_pack
        INC E
        JR NZ,float_pack
        INC D
        JR NZ,float_pack
        INC C
        JR NZ,float_pack
        INC B
        JR NZ,float_pack
        LD B,80h
        LD HL,(float_exponent)
        INC HL
        LD (float_exponent),HL
float_pack:
        LD HL,(float_exponent)
        INC H
        DEC H
        JR NZ,_range
        INC L
        DEC L
        JR Z,float_zero
        LD A,L
        LD HL,FAC
        LD (HL),A
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        LD (HL),C
        INC HL
        LD A,(float_sign)
        OR 7Fh
        AND B
        LD (HL),A
        RET
_range: JP P,overflow
float_zero:
        LD HL,0
        JP integer_to_fac
overflow:
        LD E,ERR_OVERFLOW
        JP error

; ---- Operands

; Makes floats of (HL) and FAC, of which not both are integers 0; HL: the left one then.
; Z: one of them is zero. FAC is the one if its exponent is 0.
float_operands:
        LD A,(FAC)
        OR A
        JR NZ,_left
        PUSH HL
        LD HL,(FAC + 1)
        LD DE,FAC
        CALL float_from_integer
        POP HL
        RET Z
_left:  LD A,(HL)
        OR A
        RET NZ
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD DE,ARG
        CALL float_from_integer
        LD HL,ARG
        RET

; HL, an integer -> float at DE. Z: it is zero, and nothing is written.
float_from_integer:
        LD A,H
        OR L
        RET Z
        LD B,H                  ; the sign
        LD A,H
        OR A
        JP P,_positive
        XOR A
        SUB L
        LD L,A
        SBC A,A
        SUB H
        LD H,A
_positive:
        LD A,128 + 16 + 1
        INC H
        DEC H
        JR NZ,_shift
        LD H,L
        LD L,0
        LD A,128 + 8 + 1
_shift: DEC A
        ADD HL,HL
        JP NC,_shift            ; the leading 1 goes, the sign comes
        RL B
        RR H
        RR L
        EX DE,HL
        LD (HL),A
        INC HL
        LD (HL),0
        INC HL
        LD (HL),0
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        OR A
        RET

; ---- Multiplication

; A * DE -> A:HL, B 0 afterwards.
MUL_BIT MACRO
        LOCAL skip
        ADD HL,HL
        ADC A,A
        JR NC,skip
        ADD HL,DE
        ADC A,B
skip:
        ENDM

multiply_8_16:
        LD B,0
        LD H,B
        LD L,B
        ADD A,A
        JR NC,_rest
        LD H,D
        LD L,E
_rest:  MUL_BIT
        MUL_BIT
        MUL_BIT
        MUL_BIT
        MUL_BIT
        MUL_BIT
        MUL_BIT
        RET

float_mul:
        LD A,(FAC)
        OR (HL)
        JP Z,float_mul_integers
        CALL float_operands
        JP Z,float_zero
        LD DE,FAC
        LD A,(DE)               ; exponent: the sum, less 128, less 1 that comes back if bit 7 is set
        ADD A,(HL)
        LD C,A
        LD A,0
        ADC A,A
        LD B,A
        EX DE,HL
        LD HL,-129
        ADD HL,BC
        LD (float_exponent),HL
        EX DE,HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        LD HL,FAC + 4
        LD A,(HL)
        XOR B
        LD (float_sign),A
        SET 7,(HL)
        SET 7,B
        LD A,E
        OR A
        CALL Z,_exchange        ; rows of 0 cost nothing
        CALL multiply_mantissas
        BIT 7,B
        JR Z,_short
        LD HL,float_exponent
        INC (HL)
        JR NZ,_rounded
        INC HL
        INC (HL)
_rounded:
        LD H,A
        JP float_round
_short: ADD A,A                 ; below a half: one bit to the left
        RL E
        RL D
        RL C
        RL B
        JR _rounded
_exchange:
        LD HL,(FAC + 1)
        LD A,L
        OR A
        RET Z
        LD (FAC + 1),DE
        EX DE,HL
        LD HL,(FAC + 3)
        LD (FAC + 3),BC
        LD B,H
        LD C,L
        RET

; BCDE * the mantissa at FAC + 1 (with its leading 1) -> BCDE and guard bits in A. The first of the four rows leaves
; out what is below 1/100 of the last bit; of a product of 33 bits nothing is lost.
; Low halves stand in this set of registers, high ones in the other: DE is the left operand, BC the sum of the rows
; so far, its lowest byte already shifted out.
multiply_mantissas:
        PUSH BC
        EXX
        POP DE
        LD BC,0
        LD A,(FAC + 1)
        OR A
        JR Z,_first
        CALL multiply_8_16
        LD B,A
        LD C,H
        LD A,L
_first: EXX
        LD B,A
        LD C,0
        LD A,(FAC + 2)
        CALL multiply_row
        LD A,(FAC + 3)
        CALL multiply_row
        LD A,(FAC + 4)
        CALL multiply_row
        PUSH BC
        EXX
        POP DE
        RET

ROW_BIT MACRO
        LOCAL skip
        ADD HL,HL
        EXX
        ADC HL,HL
        EXX
        ADC A,A
        JR NC,skip
        ADD HL,DE
        EXX
        ADC HL,DE
        EXX
        ADC A,0
skip:
        ENDM

; A * DE + BC -> BC, shifted right by a byte, which is in A.
multiply_row:
        OR A
        JP Z,_nothing
        LD HL,0
        ADD A,A
        JR NC,_even
        LD H,D
        LD L,E
_even:  EXX
        LD HL,0
        JR NC,_odd
        LD H,D
        LD L,E
_odd:   EXX
        ROW_BIT
        ROW_BIT
        ROW_BIT
        ROW_BIT
        ROW_BIT
        ROW_BIT
        ROW_BIT
        ADD HL,BC
        EXX
        ADC HL,BC
        ADC A,0
        LD B,A
        LD C,H
        LD A,L
        EXX
        LD B,A
        LD C,H
        LD A,L
        RET
_nothing:
        LD L,C
        LD C,B
        EXX
        LD A,C
        LD C,B
        LD B,0
        EXX
        LD B,A
        LD A,L
        RET

; (HL) * FAC, both integers, A = 0.
float_mul_integers:
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD BC,(FAC + 1)
        CALL integer_signs
        LD A,D
        OR A
        JR NZ,_large
        LD A,E                  ; a byte times a word
        LD D,B
        LD E,C
        JR _byte
_large: LD A,B
        OR A
        JR NZ,_long
        LD A,C
_byte:  CALL multiply_8_16
        OR A
        JR Z,integer_result
        LD C,A
        EX DE,HL
        JP float_from_long
_long:  CALL multiply_8_16
        PUSH HL
        PUSH AF
        LD A,C
        CALL multiply_8_16
        LD E,L
        LD L,H
        LD H,A
        POP AF
        POP BC
        ADD HL,BC
        ADC A,0
        LD B,A
        LD C,H
        LD D,L
        JP float_from_long

; Magnitude HL with float_sign -> FAC, as an integer if it fits.
integer_result:
        LD A,(float_sign)
        ADD A,A
        BIT 7,H
        JR NZ,_wide
        JR NC,_store
        XOR A
        SUB L
        LD L,A
        SBC A,A
        SUB H
        LD H,A
_store: XOR A
        LD (FAC),A
        LD (FAC + 1),HL
        RET
_wide:  EX DE,HL
        LD BC,0
        JP NC,float_from_long
        LD HL,8000h
        OR A
        SBC HL,DE
        JP NZ,float_from_long
        EX DE,HL
        JR _store

; Integers DE and BC -> their magnitudes; float_sign that of their product.
integer_signs:
        LD A,B
        XOR D
        LD (float_sign),A
        BIT 7,D
        JR Z,_right
        XOR A
        SUB E
        LD E,A
        SBC A,A
        SUB D
        LD D,A
_right: BIT 7,B
        RET Z
        XOR A
        SUB C
        LD C,A
        SBC A,A
        SUB B
        LD B,A
        RET

; ---- Division

float_div:
        LD A,(FAC)
        OR (HL)
        JP Z,float_div_integers
float_div_floats:
        CALL float_operands
        JP Z,_zero
        PUSH HL
        LD C,(HL)               ; exponent: the difference, plus 128
        LD A,(FAC)
        LD E,A
        LD B,0
        LD D,B
        LD HL,128
        ADD HL,BC
        SBC HL,DE               ; the sum had no carry
        LD (float_exponent),HL
        POP HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        LD HL,FAC + 4
        LD A,(HL)
        XOR B
        LD (float_sign),A
        SET 7,(HL)
        SET 7,B
        PUSH DE                 ; high halves in this set of registers, low ones in the other
        EXX
        POP HL
        LD DE,(FAC + 1)
        LD A,D
        OR E
        EXX
        LD H,B
        LD L,C
        LD DE,(FAC + 3)
        OR E
        JR NZ,_divide
        LD A,D
        CP 80h
        JR NZ,_divide
        EXX                     ; a power of two
        PUSH HL
        EXX
        POP DE
        CALL _more
        LD H,0
        JP float_pack
_divide:
        XOR A
        EXX
        SBC HL,DE
        EXX
        SBC HL,DE
        JR C,_below
        CALL _more
        CALL divide_mantissas
        LD DE,(float_quotient)  ; 1.q: one place to the right, the last bit is the guard
        LD BC,(float_quotient + 2)
        LD H,0
        SCF
        RR B
        RR C
        RR D
        RR E
        RR H
        JP float_round
_below: EXX
        ADD HL,DE
        EXX
        ADC HL,DE
        CALL divide_mantissas
        EXX                     ; up, if twice the rest is at least the divisor
        ADD HL,HL
        EXX
        ADC HL,HL
        JR C,_rest
        EXX
        SBC HL,DE
        EXX
        SBC HL,DE
        CCF
_rest:  LD DE,(float_quotient)
        LD BC,(float_quotient + 2)
        LD H,0
        RR H
        JP float_round
_more:  LD A,(float_exponent)
        INC A
        LD (float_exponent),A
        RET NZ
        LD A,(float_exponent + 1)
        INC A
        LD (float_exponent + 1),A
        RET
_zero:  LD A,(FAC)
        OR A
        JP NZ,float_zero
division_by_zero:
        LD E,ERR_ZERO
        JP error

DIVIDE_BIT MACRO K
        LOCAL over,one,next
        EXX
        ADD HL,HL
        EXX
        ADC HL,HL
        JR C,over
        LD A,H                  ; mostly the highest byte decides
        CP D
        JR C,next
        EXX
        SBC HL,DE
        EXX
        SBC HL,DE
        JR NC,one
        EXX
        ADD HL,DE
        EXX
        ADC HL,DE
        JR next
over:   OR A
        EXX
        SBC HL,DE
        EXX
        SBC HL,DE
one:    SET K,C
next:
        ENDM

; HL:HL' * 2^32 / DE:DE' -> float_quotient, rest in HL:HL'. The dividend is smaller than the divisor, bit 31 of
; which is set.
divide_mantissas:
        CALL divide_byte
        LD (float_quotient + 3),A
        CALL divide_byte
        LD (float_quotient + 2),A
        CALL divide_byte
        LD (float_quotient + 1),A
        CALL divide_byte
        LD (float_quotient),A
        RET
divide_byte:
        LD C,0
        DIVIDE_BIT 7
        DIVIDE_BIT 6
        DIVIDE_BIT 5
        DIVIDE_BIT 4
        DIVIDE_BIT 3
        DIVIDE_BIT 2
        DIVIDE_BIT 1
        DIVIDE_BIT 0
        LD A,C
        RET

; (HL) / FAC, both integers, A = 0: as an integer if nothing is left over.
float_div_integers:
        PUSH HL
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        LD DE,(FAC + 1)
        LD A,D
        OR E
        JP Z,division_by_zero
        CALL integer_signs
        JR _halve
_two:   SRL B                   ; both even: the same with half of each
        RR C
        SRL D
        RR E
_halve: BIT 0,E
        JR NZ,_odd
        BIT 0,C
        JR Z,_two
        LD H,D
        LD L,E
        DEC HL
        LD A,H
        AND D
        JR NZ,_inexact
        LD A,L
        AND E
        JR NZ,_inexact
        POP HL                  ; an odd number by a power of two: the exponent goes down
_power: SRL D
        RR E
        INC A
        BIT 0,E
        JR Z,_power
        LD H,B
        LD L,C
        PUSH AF
        LD DE,FAC
        CALL float_from_integer
        LD HL,FAC + 4
        LD A,(float_sign)
        AND 80h
        OR (HL)
        LD (HL),A
        POP BC
        LD HL,FAC
        LD A,(HL)
        SUB B
        LD (HL),A
        RET
_odd:   LD A,D
        OR A
        JR NZ,_word
        LD A,E                  ; a divisor of 1 is what is left of a power of two
        DEC A
        JR Z,_whole
        LD H,B                  ; by a byte: the dividend moves out of HL, the quotient in
        LD L,C
        LD B,16
        INC H
        DEC H
        JR NZ,_start
        LD H,C
        LD L,0
        LD B,8
_start: XOR A
_byte:  ADD HL,HL
        RLA
        JR C,_take
        CP E
        JR C,_next
_take:  SUB E
        INC L
_next:  DJNZ _byte
        OR A
        JR NZ,_inexact
        POP DE
        JP integer_result
_word:  LD L,B                  ; by a word: the quotient is a byte
        LD H,0
        LD A,C
        LD B,8
_step:  ADD A,A
        ADC HL,HL
        SBC HL,DE
        JR NC,_one
        ADD HL,DE
        DJNZ _step
        JR _end
_one:   INC A
        DJNZ _step
_end:   LD E,A
        LD A,H
        OR L
        JR NZ,_inexact
        LD L,E
        LD H,A
        POP DE
        JP integer_result
_whole: POP DE
        LD H,B
        LD L,C
        JP integer_result
_inexact:
        POP HL
        JP float_div_floats

; ---- Comparison

float_compare:
        LD A,(FAC)
        OR (HL)
        JR NZ,_float
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD DE,(FAC + 1)
        LD A,H
        XOR D
        LD A,H
        JP M,_flags
        SBC HL,DE               ; XOR has cleared the carry
        RET
_float: CALL float_operands
        JR Z,_zero
        LD C,(HL)
        LD DE,4
        ADD HL,DE
        LD A,(FAC + 4)
        XOR (HL)
        LD A,(HL)
        JP M,_flags
        LD A,(FAC)
        LD B,A
        LD A,C
        CP B
        JR NZ,_magnitude
        LD DE,FAC + 4
        LD B,4
_byte:  LD A,(DE)
        LD C,A
        LD A,(HL)
        CP C
        JR NZ,_magnitude
        DEC HL
        DEC DE
        DJNZ _byte
        RET
_magnitude:
        SBC A,A
        LD HL,FAC + 4
        XOR (HL)
        JR _flags
_zero:  LD A,(FAC)
        OR A
        JR NZ,_left_zero
        LD BC,4
        ADD HL,BC
        LD A,(HL)
        JR _flags
_left_zero:
        LD A,(FAC + 4)
        CPL
_flags: ADD A,A                 ; bit 7: the left one is the smaller
        LD A,1
        INC A
        RET

; ---- Signs

float_abs:
        CALL fac_sign
        RET P
float_negate:
        LD A,(FAC)
        OR A
        JR Z,_integer
        LD HL,FAC + 4
        LD A,(HL)
        XOR 80h
        LD (HL),A
        RET
_integer:
        LD DE,(FAC + 1)
        LD H,A
        LD L,A
        SBC HL,DE
        LD (FAC + 1),HL
        RET PO
        JP word_to_fac          ; 32768

float_sgn:
        CALL fac_sign
        LD HL,-1
        JP M,integer_to_fac
        INC HL
        JR Z,_store
        INC HL
_store: JP integer_to_fac

; M: FAC is negative, Z: zero.
fac_sign:
        LD A,(FAC)
        OR A
        JR Z,_integer
        LD A,(FAC + 4)
        OR 1
        RET
_integer:
        LD HL,(FAC + 1)
        LD A,H
        OR A
        RET NZ
        OR L
        RET Z
        LD A,1
        OR A
        RET

; ---- Integer parts

float_fix:
        LD A,(FAC)
        OR A
        RET Z
        CP 128 + 32
        RET NC
        CALL float_split
        JR float_from_split
float_int:
        LD A,(FAC)
        OR A
        RET Z
        CP 128 + 32
        RET NC                  ; no room for a fraction
        CALL float_split
        LD A,(float_sign)
        OR A
        JP P,float_from_split
        LD A,H
        OR L
        CALL NZ,increment_long
float_from_split:
        EX DE,HL
        LD A,B
        OR C
        JP Z,integer_result
        EX DE,HL
        JP float_from_long

increment_long:
        INC E
        RET NZ
        INC D
        RET NZ
        INC C
        RET NZ
        INC B
        RET

; FAC, a float with exponent A below 160 -> BCDE its magnitude without the fraction, the fraction's first byte in H,
; L not 0 if more of it is set; float_sign.
float_split:
        LD HL,FAC + 4
        LD B,(HL)
        DEC HL
        LD C,(HL)
        DEC HL
        LD D,(HL)
        DEC HL
        LD E,(HL)
        LD L,A
        LD A,B
        LD (float_sign),A
        SET 7,B
        LD A,128 + 32
        SUB L
        LD HL,0
        CP 40
        JR C,_bytes
        LD B,H                  ; far below 1
        LD C,H
        LD D,H
        LD E,H
        INC L
        RET
_byte:  EX AF,AF'
        LD A,H
        OR L
        LD L,A
        EX AF,AF'
        LD H,E
        LD E,D
        LD D,C
        LD C,B
        LD B,0
_bytes: SUB 8
        JR NC,_byte
        ADD A,8
        RET Z
_bit:   SRL B
        RR C
        RR D
        RR E
        RR H
        JR NC,_clear
        SET 0,L
_clear: DEC A
        JR NZ,_bit
        RET

float_to_integer:
        LD A,(FAC)
        OR A
        JR NZ,_float
        LD HL,(FAC + 1)
        RET
_float: CALL float_rounded
        EX DE,HL
        LD A,(float_sign)
        ADD A,A
        JR C,_negative
        BIT 7,H
        RET Z
_overflow:
        JP overflow
_negative:
        LD A,H
        CP 80h
        JR C,_negate
        JR NZ,_overflow
        LD A,L
        OR A
        JR NZ,_overflow
_negate:
        XOR A
        SUB L
        LD L,A
        SBC A,A
        SUB H
        LD H,A
        RET

float_to_word:
        LD A,(FAC)
        CP 128 + 16
        JR NZ,float_to_integer
        LD A,(FAC + 4)
        OR A
        JP M,float_to_integer
        LD A,(FAC)
        CALL float_rounded
        EX DE,HL
        RET

; FAC, a float with exponent A -> DE its magnitude, rounded.
float_rounded:
        CP 128 + 17
        JR NC,_overflow
        CALL float_split
        BIT 7,H
        CALL NZ,increment_long
        LD A,C
        OR A
        RET Z
_overflow:
        JP overflow

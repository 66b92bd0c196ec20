; Functions of numbers: FAC -> FAC.
;
;   float_sqr float_sin float_cos float_tan float_atn float_exp float_log float_rnd
;   float_power     (HL) ^ FAC -> FAC
;   random_set      seeds float_rnd from HL
;   do_randomize    RANDOMIZE [number]: without one, from the retraces counted so far
; Errors: Illegal function call, Overflow, Division by zero. They may destroy everything but IY.
;
; Series run on fractions of 32 bits, BCDE, and stand as tables: number of steps (80h + : each term is subtracted from
; the next), coefficients from the last one on, 2^n that the result lacks. IX walks through them. Where the sign of the
; fraction chooses between adding and subtracting, the table begins behind the number of steps.
;
; A power is 2^(y log2 x). Of the up to seven bits before the point of y log2 x none may be lost behind it, so the
; logarithm has 48 bits. All functions are right to 2^-29.

; ---- Fractions

; sum of the terms at IX, in powers of the fraction at FAC + 1 -> BCDE. IX: at the last term less 1.
series:
        LD A,(IX + 0)
series_steps:                   ; A in place of the table's first byte
        LD (function_count),A
        CALL _term
        LD E,L
        LD D,H
_step:  CALL multiply_mantissas
        CALL _next
        ADD A,A                 ; carry: half of the last bit or more
        LD A,(function_count)
        BIT 7,A
        JR NZ,_subtract
        ADC HL,DE
        EX DE,HL
        LD L,(IX + 3)
        LD H,(IX + 4)
        ADC HL,BC
        JR _sum
_subtract:
        SBC HL,DE
        EX DE,HL
        LD L,(IX + 3)
        LD H,(IX + 4)
        SBC HL,BC
_sum:   LD B,H
        LD C,L
        LD HL,function_count
        DEC (HL)
        LD A,(HL)
        AND 7Fh
        JR NZ,_step
        RET
_next:  PUSH BC
        LD BC,4
        ADD IX,BC
        POP BC
        LD L,(IX + 1)
        LD H,(IX + 2)
        RET
_term:  LD L,(IX + 1)
        LD H,(IX + 2)
        LD C,(IX + 3)
        LD B,(IX + 4)
        RET

; FAC, a float, x * series(x^2) -> FAC: BCDE its mantissa, A its exponent - 128, at most 0; float_sign; IX: the series.
odd_series_fac:
        LD DE,(FAC + 1)
        LD BC,(FAC + 3)
        LD A,B
        LD (float_sign),A
        SET 7,B
        LD A,(FAC)
        SUB 128
odd_series:
        LD (function_power),A
        LD (function_value + 1),DE
        LD (function_value + 3),BC
        CALL fraction_store
        CALL multiply_mantissas
        LD A,(function_power)
        NEG
        CP 16
        JR C,_shift
        LD A,16
_shift: ADD A,A
        CALL fraction_right
        CALL fraction_store
        CALL series
        LD HL,function_value + 1
        LD A,(IX + 5)
        PUSH AF
        PUSH DE
        LD DE,FAC + 1
        PUSH BC
        LDI
        LDI
        LDI
        LDI
        POP BC
        POP DE
        CALL multiply_mantissas
        LD H,A
        POP AF
        LD L,A
        LD A,(function_power)
        ADD A,L
; A, signed, the exponent of BCDEH, with float_sign -> FAC
fraction_result:
        PUSH HL
        LD L,A
        ADD A,A
        SBC A,A
        LD H,A
        PUSH DE
        LD DE,128
        ADD HL,DE
        LD (float_exponent),HL
        POP DE
        POP HL
        JP float_normalise

fraction_store:
        LD (FAC + 1),DE
        LD (FAC + 3),BC
        RET

; BCDEH, shifted right by A.
fraction_right:
        CP 40
        JR C,_bytes
        LD A,39                 ; nothing is left
        JR _bytes
_byte:  LD H,E
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
        DEC A
        JR NZ,_bit
        RET

; The magnitude of FAC, a float, times the constant at IX, 48 bits, lowest first -> integer part in L, fraction in BCDEH;
; A: the exponent of the fraction, 0 or negative; carry: bit 8 of the integer part. A is on entry what the constant
; lacks.
fraction_of_product:
        LD L,A
        LD A,(FAC)
        XOR 80h
        ADD A,L
        JP PO,_known            ; a far exponent: nothing of the product is known
        LD A,127
_known: PUSH AF
        LD DE,(FAC + 1)
        LD BC,(FAC + 3)
        SET 7,B
        PUSH BC
        LD BC,0
        EXX
        POP DE
        LD BC,0
        EXX
        LD A,6
_row:   PUSH AF
        LD A,(IX + 0)
        INC IX
        CALL multiply_row
        LD H,A
        POP AF
        DEC A
        JR NZ,_row
        LD A,H
        PUSH BC
        EXX
        POP DE
        LD H,A
        LD L,0
        POP AF
        OR A
        RET M
        RET Z
_integer:
        SLA H
        RL E
        RL D
        RL C
        RL B
        RL L
        DEC A
        JR NZ,_integer
        RET

; 1 - BCDEH. Z: BCDEH is 0.
fraction_complement:
        XOR A
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
        OR C
        OR D
        OR E
        OR H
        RET

; FAC as a float. Z: it is 0.
fac_to_float:
        LD A,(FAC)
        OR A
        RET NZ
        LD HL,(FAC + 1)
        LD DE,FAC
        JP float_from_integer

; ---- SIN COS TAN: quarters of a turn, and sin(f * pi/2) of what is left

float_cos:
        CALL float_abs
        LD A,1
        JR sine
float_sin:
        XOR A
sine:   LD (function_quadrant),A
        CALL fac_to_float
        JR Z,_zero
        LD IX,two_over_pi
        XOR A
        CALL fraction_of_product
        LD (function_power),A
        LD A,(function_quadrant)
        ADD A,L
        LD L,A
        RRCA                    ; bit 1: the lower half of the circle
        RRCA
        PUSH HL
        LD HL,FAC + 4
        XOR (HL)
        POP HL
        LD (float_sign),A
        BIT 0,L
        JR Z,_even
        LD A,(function_power)
        NEG
        CALL fraction_right
        XOR A
        LD (function_power),A
        CALL fraction_complement
        JR Z,_one
_even:  LD A,B
        OR C
        OR D
        OR E
        OR H
        JP Z,float_zero
        LD A,(function_power)
_normal:
        BIT 7,B
        JR NZ,_series
        SLA H
        RL E
        RL D
        RL C
        RL B
        DEC A
        JR _normal
_series:
        LD IX,sine_terms
        JP odd_series
_zero:  LD A,(function_quadrant)
        LD L,A
        LD H,0
        JP integer_to_fac
_one:   LD HL,1
        LD A,(float_sign)
        OR A
        JP P,integer_to_fac
        LD HL,-1
        JP integer_to_fac

float_tan:
        LD HL,function_base
        CALL fac_store
        CALL float_cos
        LD HL,function_raise
        CALL fac_store
        LD HL,function_base
        CALL fac_load
        CALL float_sin
        LD HL,function_base
        CALL fac_store
        LD HL,function_raise
        CALL fac_load
        LD HL,function_base
        JP float_div

; ---- ATN

float_atn:
        CALL fac_to_float
        RET Z
        LD A,(FAC + 4)
        PUSH AF
        CALL float_abs
        LD HL,tan_3_8
        CALL float_compare
        JR C,_large
        LD HL,tan_1_8
        CALL float_compare
        JR C,_middle
        CALL _series
        JR _sign
_large: LD HL,float_one         ; pi/2 - atn(1/x)
        CALL float_div
        CALL _series
        LD HL,half_pi
        CALL float_sub
        JR _sign
_middle:
        CALL ratio_about_one    ; pi/4 + atn((x - 1)/(x + 1))
        CALL _series
        LD HL,quarter_pi
        CALL float_add
_sign:  POP AF
        OR A
        RET P
        JP float_negate
_series:
        LD A,(FAC)
        OR A
        RET Z
        LD IX,arctangent_terms
        JP odd_series_fac

; (x - 1)/(x + 1) for the float in FAC
ratio_about_one:
        LD HL,function_other
        CALL fac_store
        LD HL,float_one
        CALL float_add
        LD HL,number_long
        CALL fac_store
        LD HL,function_other
        CALL fac_load
        LD HL,float_minus_one
        CALL float_add
        LD HL,function_other
        CALL fac_store
        LD HL,number_long
        CALL fac_load
        LD HL,function_other
        JP float_div

; ---- EXP: a power of two, and 2^f of what is left, f between -1/2 and 1/2

float_exp:
        CALL fac_to_float
        JR Z,power_one
        LD A,(FAC)
        CP 128 + 8
        JR NC,power_far
        LD IX,half_log2_e
        LD A,1
; 2^(FAC x IX): FAC a float, IX a constant of 48 bits times 2^A; the product is below 2^9
power_of_two:
        CALL fraction_of_product
        JR C,power_far          ; it has 2^8 or more
        NEG
        CALL fraction_right
        LD A,(FAC + 4)
        BIT 7,B
        JR Z,_near
        CPL                     ; a half or more: down from the next power
        INC L
        JR Z,power_far
        PUSH AF
        CALL fraction_complement
        POP AF
_near:  AND 80h                 ; 80h: a factor below 1
        OR 7
        LD (function_power),A
        LD A,(FAC + 4)
        ADD A,A
        LD A,129
        JR C,_negative
        ADD A,L
        LD L,A
        LD A,0
        ADC A,A
        JR _exponent
_negative:
        SUB L
        LD L,A
        SBC A,A
_exponent:
        BIT 7,H
        LD H,A
        LD (float_exponent),HL
        CALL NZ,increment_long
        CALL fraction_store
        LD IX,exponential_terms - 1
        LD A,(function_power)
        CALL series_steps
        XOR A
        LD (float_sign),A
        LD H,A
        JP float_normalise
power_far:
        LD A,(FAC + 4)
        OR A
        JP M,float_zero
        JP overflow
power_one:
        LD HL,1
        JP integer_to_fac

; ---- LOG

float_log:
        CALL fac_to_float
        JP Z,illegal_call
        LD A,(FAC + 4)
        OR A
        JP M,illegal_call
        CALL logarithm
        JP Z,float_zero
        LD H,(IX + 1)
        LD E,(IX + 2)
        LD D,(IX + 3)
        LD C,(IX + 4)
        LD B,(IX + 5)
        CALL fraction_result
        LD HL,log_2
        JP float_mul

; The logarithm to the base 2 of FAC, a positive float: 48 bits at IX, lowest first, times 2^A; float_sign. Z: it is 0.
; x = 2^e (1 + z) 32/k, k from 16 to 32 such that |z| < 1/26. k times the mantissa has 38 bits, but z begins with four
; zeros, so nothing of it is lost. log2(1 + z) = z (c - z U(z)), c = log2(e). Near 1, where e and k bring nothing, this
; is all there is, to its own last bits.
logarithm:
        LD A,(FAC + 4)          ; k = 2048/(65 + 2j), rounded; j the five bits behind the leading 1
        RRCA
        AND 3Eh
        LD L,A
        ADD A,65
        LD C,A
        LD A,L
        RRCA
        ADD A,20h
        LD L,A
        LD H,2048 / 256
        LD B,0
        XOR A
        DEC A
_k:     INC A
        SBC HL,BC
        JR NC,_k
        PUSH AF
        LD DE,(FAC + 1)
        LD BC,0
        EXX
        LD DE,(FAC + 3)
        SET 7,D
        LD BC,0
        EXX
        CALL multiply_row
        LD E,A
        LD D,C
        LD C,B
        POP HL
        LD A,(FAC)
        SUB 129
        LD L,A
        LD A,H
        AND 0Fh                 ; 1 to 15: k - 16
        JR NZ,_kept
        BIT 4,H
        JR Z,_kept
        INC L                   ; 16: one more power of two
_kept:  LD H,A
        LD (logarithm_shift),HL
        EXX
        PUSH BC
        EXX
        POP HL
        LD B,L                  ; BCDE: how much k m is above or below 32
        LD A,H
        SUB 16
        LD (float_sign),A
        LD H,0
        CALL NZ,fraction_complement
        LD A,B
        OR C
        OR D
        OR E
        LD A,H
        JR Z,_sum
        PUSH BC
        PUSH DE
        CALL fraction_store
        LD IX,logarithm_terms - 1
        LD A,(float_sign)
        CPL
        AND 80h
        OR 5
        CALL series_steps
        CALL multiply_mantissas
        LD H,A
        LD A,5
        CALL fraction_right
        LD A,(float_sign)
        OR A
        CALL P,fraction_complement
        LD A,(half_log2_e + 1)
        ADD A,H
        LD (logarithm_sum + 1),A
        LD HL,(half_log2_e + 2)
        ADC HL,DE
        LD (logarithm_sum + 2),HL
        LD HL,(half_log2_e + 4)
        ADC HL,BC
        LD (logarithm_sum + 4),HL
        LD A,(half_log2_e)
        LD (logarithm_sum),A
        POP DE
        POP BC
        LD HL,128 - 4
        LD (float_exponent),HL
        LD H,0
        CALL float_normalise
        LD IX,logarithm_sum
        LD A,1
        CALL fraction_of_product
; BCDEH times 2^A, A not above 0, with float_sign, and what e and k bring
_sum:   LD (function_power),A
        LD A,H
        LD (logarithm_sum + 1),A
        LD (logarithm_sum + 2),DE
        LD (logarithm_sum + 4),BC
        XOR A
        LD (logarithm_sum),A
        LD (logarithm_sum + 6),A
        LD HL,(logarithm_shift)
        LD A,H
        OR L
        JR NZ,_far
        LD A,B
        OR C
        RET Z
        LD A,(function_power)
        ADD A,8
        LD B,A
        JR _normal
_far:   LD A,(function_power)
        OR A
        JR Z,_aligned
        LD B,A
_right: LD HL,logarithm_sum + 5
        LD C,6
        OR A
_down:  RR (HL)
        DEC HL
        DEC C
        JR NZ,_down
        INC B
        JR NZ,_right
_aligned:
        LD A,(float_sign)
        OR A
        CALL M,logarithm_negate
        LD HL,(logarithm_shift)
        PUSH HL
        LD A,H
        ADD A,A
        JR Z,_whole
        LD L,A
        ADD A,A
        ADD A,L
        ADD A,logarithm_zeroth AND 0FFh
        LD E,A
        LD A,logarithm_zeroth / 256
        ADC A,0
        LD D,A
        LD HL,logarithm_sum
        LD B,6
        OR A
_add:   LD A,(DE)
        ADC A,(HL)
        LD (HL),A
        INC DE
        INC HL
        DJNZ _add
_whole: POP DE
        LD HL,logarithm_sum + 6
        LD A,(HL)
        ADC A,E
        LD (HL),A
        LD (float_sign),A
        CALL M,logarithm_negate
        LD B,8
_normal:
        LD HL,logarithm_sum + 6
        BIT 7,(HL)
        LD IX,logarithm_sum + 1
        LD A,B
        RET NZ
        LD HL,logarithm_sum
        LD C,7
        OR A
_up:    RL (HL)
        INC HL
        DEC C
        JR NZ,_up
        DEC B
        JR _normal

logarithm_negate:
        LD HL,logarithm_sum
        LD B,7
        OR A
_byte:  LD A,0
        SBC A,(HL)
        LD (HL),A
        INC HL
        DJNZ _byte
        RET

; ---- SQR: eight bits by trial, then twice the mean of root and quotient

float_sqr:
        LD A,(FAC)
        PUSH AF
        CALL fac_to_float
        JR Z,_end
        LD A,(FAC + 4)
        OR A
        JP M,illegal_call
        LD HL,function_value
        CALL fac_store
        LD HL,(FAC + 3)
        SET 7,H
        LD A,(FAC)
        RRA
        JR NC,_even
        INC A
        SRL H
        RR L
_even:  ADD A,64                ; half the exponent
        LD (FAC),A
        LD A,L
        LD L,H
        LD DE,40h               ; D: the root, DE: what its next bit would take away
        LD H,D
        LD B,8
_bit:   OR A
        SBC HL,DE
        JR NC,_one
        ADD HL,DE
        OR A
        JR _next
_one:   SCF
_next:  RL D
        ADD A,A
        ADC HL,HL
        ADD A,A
        ADC HL,HL
        DJNZ _bit
        LD A,D
        AND 7Fh
        LD H,A
        LD L,80h
        LD (FAC + 3),HL
        LD H,B
        LD L,B
        LD (FAC + 1),HL
        CALL newton_step
        CALL newton_step
_end:   POP AF
        OR A
        RET NZ
; FAC without a fraction -> an integer, if it fits
float_shrink:
        LD A,(FAC)
        OR A
        RET Z
        CP 128 + 16
        RET NC
        LD HL,(FAC + 1)
        LD A,H
        OR L
        RET NZ
        LD A,(FAC)
        CALL float_split
        LD A,H
        OR L
        RET NZ
        JP float_from_split
newton_step:
        LD HL,function_other
        CALL fac_store
        LD HL,function_value
        CALL float_div
        LD HL,function_other
        CALL float_add
        LD HL,FAC
        DEC (HL)
        RET

; ---- Powers: small whole ones, and those of integers while they are exact, by multiplication; others by logarithms

float_power:
        LD DE,function_base
        CALL fac_copy
        LD HL,function_raise
        CALL fac_store
        CALL float_shrink
        LD A,(FAC)
        OR A
        JP NZ,_general
        LD DE,(FAC + 1)
        LD A,D
        ADD A,A
        SBC A,A
        LD C,A                  ; FFh: negative
        CP D
        JP NZ,_general
        XOR E
        JP M,_general
        SUB C
        JP Z,power_one
        LD (function_count),A
        CP 8
        JR C,_multiplied
        CP 32
        JR NC,_general
        LD A,(function_base)
        OR A
        JR NZ,_general
_multiplied:
        LD A,C
        LD (function_quadrant),A
        LD HL,function_base
        CALL fac_load
        LD A,(function_quadrant)
        OR A
        JR Z,_multiply
        CALL fac_to_float       ; 1/x^n, if x^n has an exponent
        LD A,(FAC)
        SUB 128
        JR NC,_large
        NEG
_large: LD E,A
        LD D,0
        LD A,(function_count)
        CALL multiply_8_16
        LD A,H
        OR A
        JR NZ,_general
        LD A,L
        CP 120
        JR NC,_general
        LD HL,function_base
        CALL fac_load
_multiply:
        LD A,(function_count)
        LD B,8
_first: DEC B
        ADD A,A
        JR NC,_first
        INC B
        JR _next
_square:
        PUSH BC
        PUSH AF
        LD HL,function_value
        CALL fac_store
        LD HL,function_value
        CALL float_mul
        POP AF
        ADD A,A
        PUSH AF
        LD HL,function_base
        CALL C,float_mul
        POP AF
        POP BC
_next:  DJNZ _square
        LD A,(function_count)
        CP 8
        JR C,_made
        LD A,(FAC)              ; more than 32 bits: each square has lost some
        CP 128 + 33
        JR NC,_general
_made:  LD A,(function_quadrant)
        OR A
        RET Z
        LD HL,integer_one
        JP float_div
_general:
        LD HL,function_base
        CALL fac_load
        CALL fac_sign
        JR Z,_nothing
        LD A,0
        JP P,_positive
        LD HL,function_raise
        CALL fac_load
        CALL _odd
        LD HL,function_base
        PUSH AF
        CALL fac_load
        CALL float_abs
        POP AF
_positive:
        PUSH AF
        CALL fac_to_float
        CALL logarithm
        JR Z,_one
        PUSH AF
        LD HL,function_raise
        CALL fac_load
        CALL fac_to_float
        LD HL,FAC + 4
        LD A,(float_sign)
        AND 80h
        XOR (HL)
        LD (HL),A
        POP BC
        LD A,(FAC)
        XOR 80h
        ADD A,B                 ; exponent of y log2 x
        JP PE,_extreme
        JP M,_near
        CP 10
        JR NC,_far
_near:  LD A,B
        CALL power_of_two
        JR _sign
_extreme:
        JP P,_one               ; below -128
_far:   CALL power_far
        JR _sign
_one:   CALL power_one
_sign:  POP AF
        OR A
        RET Z
        JP float_negate
_odd:   LD A,(FAC)              ; A: 1 if FAC is odd
        OR A
        LD DE,(FAC + 1)
        JR Z,_parity
        CP 128 + 32
        LD E,0
        JR NC,_parity
        CALL float_split
        LD A,H
        OR L
        JP NZ,illegal_call
_parity:
        LD A,E
        AND 1
        RET
_nothing:
        LD HL,function_raise
        CALL fac_load
        CALL fac_sign
        JP P,float_zero
        JP division_by_zero

; ---- RND: 32 bits, x ^= x << 8, x ^= x >> 9, x ^= x << 23, which comes round after 2^32 - 1

float_rnd:
        CALL fac_sign
        JR Z,_again
        CALL M,_seed
        CALL random_step
_again: LD DE,(random_seed)
        LD BC,(random_seed + 2)
        LD A,B
        OR C
        OR D
        OR E
        CALL Z,random_step      ; never set
        XOR A
        LD (float_sign),A
        LD H,A
        CALL fraction_result
        RET
_seed:  CALL fac_to_float
        LD HL,(FAC + 3)
        LD DE,(FAC)
        ADD HL,DE
        LD DE,(FAC + 1)
        ADD HL,DE
random_set:
        LD (random_seed),HL
        LD DE,9E37h
        ADD HL,DE
        LD (random_seed + 2),HL
        LD B,8
_stir:  PUSH BC
        CALL random_step
        POP BC
        DJNZ _stir
        RET
random_step:
        LD DE,(random_seed)
        LD BC,(random_seed + 2)
        LD A,B
        OR C
        OR D
        OR E
        JR NZ,_left
        LD DE,6A09h
        LD B,E
_left:  LD A,B
        XOR C
        LD B,A
        LD A,C
        XOR D
        LD C,A
        LD A,D
        XOR E
        LD D,A
        LD A,B
        SRL A
        LD H,A
        LD A,C
        RRA
        LD L,A
        LD A,D
        RRA
        XOR E
        LD E,A
        LD A,D
        XOR L
        LD D,A
        LD A,C
        XOR H
        LD C,A
        LD A,D
        RRA
        LD A,E
        RRA
        LD H,A
        SBC A,A
        AND 80h
        XOR C
        LD C,A
        LD A,H
        XOR B
        LD B,A
        LD (random_seed),DE
        LD (random_seed + 2),BC
        RET

do_randomize:
        JR NZ,_number
        PUSH HL
        LD HL,(frames)
        JR _set
_number:
        CALL eval_number
        PUSH HL
        CALL fac_to_float
        LD HL,(FAC + 3)
        LD DE,(FAC)
        ADD HL,DE
_set:   CALL random_set
        POP HL
        RET

; ---- Constants

integer_one:
        DEFB 0,1,0,0,0
float_one:
        DEFB 129,0,0,0,0
float_minus_one:
        DEFB 129,0,0,0,80h
log_2:  DEFB 128,0F8h,17h,72h,31h
half_pi:
        DEFB 129,0A2h,0DAh,0Fh,49h
quarter_pi:
        DEFB 128,0A2h,0DAh,0Fh,49h
tan_3_8:                        ; of pi: 1 + the root of 2
        DEFB 130,9Ah,79h,82h,1Ah
tan_1_8:
        DEFB 127,0D0h,0CCh,13h,54h
two_over_pi:
        DEFB 44h,4Eh,6Eh,83h,0F9h,0A2h
half_log2_e:
        DEFB 17h,5Ch,29h,3Bh,0AAh,0B8h
sine_terms:                     ; sin(f pi/2)/2f, error 2^-35
        DEFB 80h + 5
        DEFW 01CCAh,00000h
        DEFW 04050h,00005h
        DEFW 06897h,00099h
        DEFW 05E03h,00A33h
        DEFW 0F394h,052AEh
        DEFW 0DAA2h,0C90Fh
        DEFB 1
arctangent_terms:               ; atn(t)/2t, error 2^-40
        DEFB 80h + 7
        DEFW 0E1ECh,004D1h
        DEFW 04E1Bh,008EDh
        DEFW 0AE03h,00B82h
        DEFW 06179h,00E36h
        DEFW 00914h,01249h
        DEFW 09904h,01999h
        DEFW 0AAA9h,02AAAh
        DEFW 00000h,08000h
        DEFB 1
logarithm_terms:                ; log2(e) (z - log(1 + z))/z^2 in powers of 16z, error 2^-35
        DEFW 0034Eh,00000h
        DEFW 03DA7h,00000h
        DEFW 09DDBh,00004h
        DEFW 0551Ah,0005Ch
        DEFW 0C277h,007B1h
        DEFW 03B29h,0B8AAh
logarithm_zeroth EQU $ - 6      ; log2(32/k), k from 17 to 31
        DEFB 0EDh,036h,005h,009h,09Ch,0E9h
        DEFB 053h,008h,08Ch,0CBh,07Fh,0D4h
        DEFB 030h,0FBh,08Dh,0D2h,087h,0C0h
        DEFB 092h,0CBh,0D0h,01Eh,096h,0ADh
        DEFB 0A4h,083h,0DBh,015h,091h,09Bh
        DEFB 058h,034h,07Fh,0B0h,062h,08Ah
        DEFB 02Bh,04Eh,0F9h,0D7h,0F7h,079h
        DEFB 029h,004h,0C6h,0E5h,03Fh,06Ah
        DEFB 024h,097h,0A1h,03Dh,02Ch,05Bh
        DEFB 0BAh,0C3h,08Dh,0FBh,0AFh,04Ch
        DEFB 07Ch,00Ch,052h,0B1h,0BFh,03Eh
        DEFB 07Ah,07Fh,015h,030h,051h,031h
        DEFB 069h,056h,085h,05Bh,05Bh,024h
        DEFB 0BBh,0CFh,096h,004h,0D6h,017h
        DEFB 0ACh,0ECh,064h,0CAh,0B9h,00Bh
exponential_terms:              ; 2^f / 2, f from -1/2 to 1/2, error 2^-34
        DEFW 08053h,00000h
        DEFW 01100h,00005h
        DEFW 0B0F4h,0002Bh
        DEFW 02A1Bh,0013Bh
        DEFW 0C236h,0071Ah
        DEFW 0BE04h,01EBFh
        DEFW 00BFCh,058B9h
        DEFW 00000h,08000h

; Reading and printing numbers.
;
;   number_parse   HL at text -> FAC, HL behind the number: blanks, a sign, digits, point, exponent (E or D), one of
;                  % ! #; or &H, &O, & and digits. C: no number there; FAC is 0 then, HL as before. Error: Overflow.
;   number_print   FAC -> HL = text: blank or minus, the number in at most nine digits, 0
;   number_word    HL, 0..65535 -> HL = text, no blank before it
;   number_hex, number_octal   HL -> HL = text
;   number_decimal FAC -> number_digits, nine of them and a 0; A the power of ten of the first; float_sign. C: FAC
;                  is 0, and nothing is written. For PRINT USING.
; The text stands in number_text. All may destroy everything but IY.
;
; Both ways go over 64 bits, multiplied or divided by ten as often as it takes: DE HL, the highest word in DE, and
; DE' HL' below; bit 63 set; float_exponent. So the nine digits are right, ties away from zero, and what was printed
; reads back as the nearest float. Three digits beyond those that fill 32 bits still count.

number_power    EQU float_quotient      ; power of ten of the first digit
number_flags    EQU number_digits       ; of number_parse:
number_fraction EQU number_long         ; digits beyond 32 bits, in 1/65536 of the last one within
number_weight   EQU number_long + 2     ; what the next of them is worth
NUMBER_POINT    EQU 0
NUMBER_DIGIT    EQU 1
NUMBER_ROUNDED  EQU 2
NUMBER_MINUS    EQU 7

; ---- Ten times, a tenth

number_times_ten:
        PUSH DE                 ; by 5/4, and by 8
        PUSH HL
        EXX
        PUSH DE
        PUSH HL
        EXX
        OR A
        CALL number_right
        OR A
        CALL number_right
        EXX
        POP BC
        ADD HL,BC
        EX DE,HL
        POP BC
        ADC HL,BC
        EX DE,HL
        EXX
        POP BC
        ADC HL,BC
        EX DE,HL
        POP BC
        ADC HL,BC
        EX DE,HL
        LD A,3
        JR NC,_exponent
        CALL number_right
        LD A,4
_exponent:
        LD BC,(float_exponent)
        ADD A,C
        LD C,A
        JR NC,number_exponent
        INC B
number_exponent:
        LD (float_exponent),BC
        RET

number_right:                   ; with the carry, into the carry
        RR D
        RR E
        RR H
        RR L
        EXX
        RR D
        RR E
        RR H
        RR L
        EXX
        RET

number_tenth:                   ; a fifth of a half
        LD (number_wide + 6),DE
        LD (number_wide + 4),HL
        EXX
        LD (number_wide + 2),DE
        LD (number_wide),HL
        LD HL,number_wide + 7
        LD B,8
        XOR A
_byte:  LD C,(HL)
        LD D,8
_bit:   SLA C
        ADC A,A
        CP 5
        JR C,_next
        SUB 5
        INC C
_next:  DEC D
        JR NZ,_bit
        LD (HL),C
        DEC HL
        DJNZ _byte
        LD DE,(number_wide + 2)
        LD HL,(number_wide)
        EXX
        LD DE,(number_wide + 6)
        LD HL,(number_wide + 4)
        LD BC,(float_exponent)
        DEC BC
        CALL number_exponent

; Shifts to the left until bit 63 is set. Not for 0.
number_normalise:
        BIT 7,D
        RET NZ
        EXX
        ADD HL,HL
        EX DE,HL
        ADC HL,HL
        EX DE,HL
        EXX
        ADC HL,HL
        EX DE,HL
        ADC HL,HL
        EX DE,HL
        LD BC,(float_exponent)
        DEC BC
        CALL number_exponent
        JR number_normalise

; ---- Printing

number_print:
        LD A,(FAC)
        OR A
        JR NZ,_float
        LD HL,(FAC + 1)
        LD A,' '
        BIT 7,H
        JR Z,_positive
        EX DE,HL
        LD HL,0
        OR A
        SBC HL,DE
        LD A,'-'
_positive:
        PUSH AF
        CALL number_word
        POP AF
        DEC HL
        LD (HL),A
        RET
_float: CALL number_decimal
        LD C,A                  ; power of ten of the first digit
        LD HL,number_digits + NUMBER_DIGITS
        LD B,NUMBER_DIGITS + 1
_zeros: DEC HL
        DEC B                   ; digits without the zeros behind
        LD A,(HL)
        CP '0'
        JR Z,_zeros
        LD HL,number_digits
        LD DE,number_text
        LD A,(float_sign)
        ADD A,A
        LD A,' '
        JR NC,_sign
        LD A,'-'
_sign:  CALL _put
        LD A,C
        OR A
        JP M,_small
        CP NUMBER_DIGITS
        JR NC,_exponential
        INC A
        CALL _digits
_end:   XOR A
        LD (DE),A
        LD HL,number_text
        RET
_small: CP -4
        JR C,_exponential
        CP -2
        JR NC,_point            ; from .01 on always
        ADD A,NUMBER_DIGITS + 1 ; below, if nine places hold all digits
        CP B
        JR C,_exponential
_point: LD A,'.'
_zero:  CALL _put
        INC C
        LD A,'0'
        JR NZ,_zero
        LD A,B
        CALL _copy
        JR _end
_exponential:
        LD A,1
        CALL _digits
        LD A,'E'
        CALL _put
        LD A,C
        OR A
        LD C,'+'
        JP P,_power
        NEG
        LD C,'-'
_power: LD B,'0' - 1
_ten:   INC B
        SUB 10
        JR NC,_ten
        ADD A,'0' + 10
        PUSH AF
        LD A,C
        CALL _put
        LD A,B
        CALL _put
        POP AF
        CALL _put
        JR _end
_digits:                        ; A of them, then a point and the rest
        PUSH AF
        CALL _copy
        POP AF
        SUB B
        RET NC
        NEG
        PUSH AF
        LD A,'.'
        CALL _put
        POP AF
_copy:  EX AF,AF'
        LD A,(HL)
        INC HL
        CALL _put
        EX AF,AF'
        DEC A
        JR NZ,_copy
        RET
_put:   LD (DE),A
        INC DE
        RET

number_decimal:
        LD A,(FAC)
        OR A
        JR NZ,_float
        LD HL,(FAC + 1)
        LD DE,FAC
        CALL float_from_integer
        SCF
        RET Z
_float: LD A,8
        LD (number_power),A
        LD A,(FAC)
        LD L,A
        LD H,0
        LD (float_exponent),HL
        EXX
        LD HL,0
        LD D,H
        LD E,H
        EXX
        LD HL,(FAC + 1)
        LD DE,(FAC + 3)
        LD A,D
        LD (float_sign),A
        SET 7,D
_scale: LD A,(float_exponent)
        CP 128 + 27             ; 10^8 = 0.BEBC20h x 2^27
        JR C,_up
        JR NZ,_large
        LD A,H
        SUB 20h
        LD A,E
        SBC A,0BCh
        LD A,D
        SBC A,0BEh
        JR NC,_scaled
_up:    CALL number_times_ten
        LD A,(number_power)
        DEC A
        LD (number_power),A
        JR _scale
_large: CP 128 + 30             ; 10^9 = 0.EE6B28h x 2^30
        JR C,_scaled
        JR NZ,_down
        LD A,H
        SUB 28h
        LD A,E
        SBC A,6Bh
        LD A,D
        SBC A,0EEh
        JR C,_scaled
_down:  CALL number_tenth
        LD A,(number_power)
        INC A
        LD (number_power),A
        JR _scale
_scaled:
        LD A,(float_exponent)
        CPL
        ADD A,128 + 32 + 1      ; places right of the integer
_shift: SRL D
        RR E
        RR H
        RR L
        DEC A
        JR NZ,_shift
        LD A,0
        LD C,A
        LD B,A
        ADC HL,BC
        EX DE,HL
        ADC HL,BC
        EX DE,HL
        PUSH DE
        EXX
        POP HL
        LD DE,number_powers
        EXX
        LD DE,number_digits
        CALL _digit
        CP '9' + 1              ; rounded up to 10^9
        JR C,_digits
        LD A,(number_power)
        INC A
        LD (number_power),A
        DEC DE
        LD A,'1'
        LD (DE),A
        INC DE
_digits:
        CALL _digit
        LD A,E
        CP (number_digits + NUMBER_DIGITS) AND 255
        JR NZ,_digits
        XOR A
        LD (DE),A
        LD A,(number_power)
        RET
_digit: EXX
        LD A,(DE)
        LD C,A
        INC DE
        LD A,(DE)
        LD B,A
        INC DE
        LD A,(DE)
        INC DE
        EXX
        LD C,A
        EXX
        LD A,(DE)
        INC DE
        EXX
        LD B,A
        LD A,'0' - 1
_less:  INC A
        OR A
        SBC HL,BC
        EXX
        SBC HL,BC
        EXX
        JR NC,_less
        ADD HL,BC
        EXX
        ADC HL,BC
        EXX
        LD (DE),A
        INC DE
        RET
number_powers:                  ; of ten: high word, low word
        DEFW 05F5h,0E100h,0098h,9680h,000Fh,4240h,0001h,86A0h
        DEFW 0,10000,0,1000,0,100,0,10
number_one:
        DEFW 0,1

number_word:
        LD DE,number_text + 1
        LD BC,-10000
        CALL _digit
        LD BC,-1000
        CALL _digit
        LD BC,-100
        CALL _digit
        LD C,-10 AND 255
        CALL _digit
        LD A,L
        ADD A,'0'
        LD (DE),A
        INC DE
        XOR A
        LD (DE),A
        LD HL,number_text + 1
        JR number_skip_zeros
_digit: LD A,'0' - 1
_less:  INC A
        ADD HL,BC
        JR C,_less
        SBC HL,BC
        LD (DE),A
        INC DE
        RET

number_octal:
        LD BC,6 * 256 + 1       ; digits, bits of the first
        LD E,3                  ; and of the others
        JR number_bits
number_hex:
        LD BC,4 * 256 + 4
        LD E,C
number_bits:
        LD IX,number_text
_digit: XOR A
_bit:   ADD HL,HL
        ADC A,A
        DEC C
        JR NZ,_bit
        LD C,E
        CP 10
        JR C,_decimal
        ADD A,'A' - '0' - 10
_decimal:
        ADD A,'0'
        LD (IX + 0),A
        INC IX
        DJNZ _digit
        LD (IX + 0),B
        LD HL,number_text
number_skip_zeros:              ; but for the last digit
        LD A,(HL)
        CP '0'
        RET NZ
        INC HL
        LD A,(HL)
        OR A
        JR NZ,number_skip_zeros
        DEC HL
        RET

; ---- Reading

number_parse:
        PUSH HL
        LD BC,0                 ; B: flags of what was seen, C: power of ten
        LD A,(HL)
_blank: CP ' '
        JR NZ,_sign
        INC HL
        LD A,(HL)
        JR _blank
_sign:  CP '+'
        JR Z,_signed
        CP '-'
        JR NZ,_unsigned
        SET NUMBER_MINUS,B
_signed:
        INC HL
        LD A,(HL)
_unsigned:
        CP '&'
        JP Z,number_radix
        EXX
        LD HL,0
        LD D,H
        LD E,H
        EXX
_next:  LD A,(HL)
        CP '.'
        JR Z,_point
        SUB '0'
        CP 10
        JR NC,_mantissa_end
        INC HL
        SET NUMBER_DIGIT,B
        EXX
        LD C,A
        LD A,D
        CP 19h                  ; ten times as much stays below 2^32
        JR NC,_full
        CALL number_append
        EXX
        BIT NUMBER_POINT,B
        JR Z,_next
        LD A,C
        CP -100
        JR Z,_next
        DEC C
        JR _next
_full:  LD A,C
        EXX
        PUSH HL
        BIT NUMBER_ROUNDED,B
        JR NZ,_fraction
        SET NUMBER_ROUNDED,B
        LD HL,0
        LD (number_fraction),HL
        LD HL,number_weights
        LD (number_weight),HL
_fraction:
        PUSH BC
        LD B,A
        LD HL,(number_weight)
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,D
        OR E
        JR Z,_dropped           ; it would change nothing
        LD (number_weight),HL
        LD HL,(number_fraction)
        INC B
        JR _weigh
_add:   ADD HL,DE
_weigh: DJNZ _add
        LD (number_fraction),HL
_dropped:
        POP BC
        POP HL
        BIT NUMBER_POINT,B
        JR NZ,_next
        LD A,C
        CP 100
        JR Z,_next
        INC C
        JR _next
_point: BIT NUMBER_POINT,B
        JR NZ,_mantissa_end
        SET NUMBER_POINT,B
        INC HL
        JR _next
_mantissa_end:
        BIT NUMBER_DIGIT,B
        JP Z,number_missing
        CALL number_exponent_part
        LD A,(HL)
        CP '%'
        JR Z,_mark
        CP '!'
        JR Z,_mark
        CP '#'
        JR NZ,_read
_mark:  INC HL
_read:  EX (SP),HL              ; the end instead of the start
        LD A,B
        LD (number_flags),A
        LD A,C
        EXX                     ; DE HL: the digits; times 10^A
        LD B,A
        LD A,D
        OR E
        OR H
        OR L
        JP Z,number_is_zero
        LD A,(number_flags)
        BIT NUMBER_ROUNDED,A
        LD A,B
        JR NZ,_wide
_raise: OR A
        JP Z,_integer
        JP M,_lower
        LD A,D
        CP 19h
        JR NC,_wide
        PUSH BC
        LD C,0
        CALL number_append
        POP BC
        DEC B
        LD A,B
        JR _raise
_lower: CP -8                   ; up to 10^8: an exact divisor, one rounding
        JR C,_wide
        PUSH AF
        CALL number_from_long
        LD HL,number_long
        CALL fac_store
        POP AF
        NEG
        LD HL,number_one
        ADD A,A
        ADD A,A
        LD E,A
        LD D,0
        SBC HL,DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        CALL number_from_long
        LD HL,number_long
        CALL float_div
        JR number_signed
_wide:  PUSH BC
        LD BC,128 + 32
        CALL number_exponent
        EXX
        LD HL,0
        LD D,H
        LD E,H
        LD A,(number_flags)
        BIT NUMBER_ROUNDED,A
        JR Z,_whole
        LD DE,(number_fraction)
_whole: EXX
        CALL number_normalise
        POP AF                  ; the power
_power: OR A
        JR Z,_rounded
        PUSH AF
        JP M,_down
        CALL number_times_ten
        POP AF
        DEC A
        JR _power
_down:  CALL number_tenth
        POP AF
        INC A
        JR _power
_rounded:
        LD (float_sign),A
        LD B,D
        LD C,E
        EX DE,HL
        EXX
        LD A,D
        EXX
        LD H,A
        CALL float_round
        JR number_signed
_integer:
        CALL number_from_long
number_signed:
        LD A,(number_flags)
        BIT NUMBER_MINUS,A
        CALL NZ,float_negate
        POP HL
        OR A
        RET
number_is_zero:
        CALL float_zero
        POP HL
        OR A
        RET
number_from_long:
        XOR A                   ; DE HL -> FAC
        LD (float_sign),A
        LD B,D
        LD C,E
        EX DE,HL
        LD A,B
        OR C
        JP NZ,float_from_long
        EX DE,HL
        JP integer_result

number_missing:
        CALL float_zero
        POP HL
        SCF
        RET

number_weights:                 ; of the digits that found no room in 32 bits, in 1/65536
        DEFW 6554,655,66,0
number_append:                  ; DE HL * 10 + C
        PUSH BC
        PUSH DE
        LD B,H
        LD C,L
        CALL _twice
        CALL _twice
        ADD HL,BC
        EX DE,HL
        POP BC
        ADC HL,BC
        EX DE,HL
        CALL _twice
        POP BC
        LD B,0
        ADD HL,BC
        RET NC
        INC DE
        RET
_twice: ADD HL,HL
        EX DE,HL
        ADC HL,HL
        EX DE,HL
        RET

number_exponent_part:           ; (HL) may be an exponent: adds it to C
        LD A,(HL)
        AND 0DFh
        CP 'E'
        JR Z,_letter
        CP 'D'
        RET NZ
_letter:
        PUSH HL
        INC HL
        LD A,(HL)
        LD D,A
        CP '+'
        JR Z,_signed
        CP '-'
        JR NZ,_digits
_signed:
        INC HL
_digits:
        LD E,0
        CALL number_digit
        JR NC,_none             ; a letter of what follows
_more:  INC HL
        PUSH BC
        LD C,A
        LD A,E
        LD E,99
        CP 10
        JR NC,_clamped
        ADD A,A
        LD B,A
        ADD A,A
        ADD A,A
        ADD A,B
        ADD A,C
        LD E,A
_clamped:
        POP BC
        CALL number_digit
        JR C,_more
        POP AF
        LD A,D
        CP '-'
        LD A,E
        JR NZ,_add
        NEG
_add:   ADD A,C
        JP PO,_store
        SBC A,A                 ; beyond 127: the carry is the sign
        XOR 127
_store: LD C,A
        RET
_none:  POP HL
        RET
number_digit:                   ; C: (HL) is a digit, A its value
        LD A,(HL)
        SUB '0'
        CP 10
        RET

number_radix:
        LD A,B
        LD (number_flags),A
        LD BC,8 * 256 + 3       ; base and bits a digit
        INC HL
        LD A,(HL)
        AND 0DFh
        CP 'O'
        JR Z,_letter
        CP 'H'
        JR Z,_hexadecimal
        CALL _digit
        JP NC,number_missing
        JR _digits
_hexadecimal:
        LD BC,16 * 256 + 4
_letter:
        INC HL
_digits:
        LD DE,0
_next:  CALL _digit
        JR NC,_end
        INC HL
        PUSH BC
        EX DE,HL
_shift: ADD HL,HL
        JP C,overflow
        DEC C
        JR NZ,_shift
        EX DE,HL
        POP BC
        OR E
        LD E,A
        JR _next
_end:   EX (SP),HL
        EX DE,HL
        CALL integer_to_fac
        JP number_signed
_digit: CALL number_digit
        JR C,_value
        LD A,(HL)
        AND 0DFh
        SUB 'A' - 10
        CP 10
        CCF
        RET NC
_value: CP B
        RET

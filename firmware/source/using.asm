; PRINT USING format; item [;|, item ...]
;
;   print_using     the rest of PRINT: HL at the token USING; returns with HL at the end of the statement
;
; Fields of the format; anything else stands for itself, and _ makes the next character do so:
;   # digits   . point   , thousands, before the point   + sign, before or behind   - behind: minus or blank
;   ** stars for blanks, two places   $$ or \\ (yen) currency sign and a place   **$ both, three places
;   ^^^^ exponent
;   ! first character   & & or \ \ as many characters as from sign to sign   & or @ the whole string
; A number that is too long stands there in full, behind %. Items left over start the format again.
; The format lies in LINE_TEXT, where neither evaluation nor output comes.

USING_PLUS      EQU 0           ; using_flags: + before,
USING_STARS     EQU 1
USING_CURRENCY  EQU 2
USING_COMMA     EQU 3
USING_POINT     EQU 4
USING_EXPONENT  EQU 5
USING_PLUS_END  EQU 6           ; + behind,
USING_MINUS_END EQU 7           ; - behind
USING_BEHIND    EQU 0C0h        ; either
USING_APART     EQU 0C1h        ; any
USING_YEN       EQU 5Ch

print_using:
        CALL next_char
        CALL eval_string
        PUSH HL
        LD A,B
        OR A
        JP Z,illegal_call
        LD HL,LINE_TEXT
        LD (using_pointer),HL
        EX DE,HL
_copy:  LD A,(HL)
        LD (DE),A
        INC HL
        INC DE
        DJNZ _copy
        XOR A
        LD (DE),A
        LD (using_seen),A
        POP HL
        CALL expect
        DEFB ";"
        RET Z
_item:  PUSH HL
        CALL using_to_field
        POP HL
        CALL evaluate
        PUSH HL
        BIT 7,B
        JR NZ,_string
        CALL value_to_fac
        LD A,(using_kind)
        OR A
        JR NZ,_mismatch
        CALL using_number
        JR _next
_string:
        CALL value_to_string
        LD A,(using_kind)
        OR A
        JR Z,_mismatch
        CALL using_string
_next:  POP HL
        CALL this_char
        JR Z,_line
        CP ";"
        JR Z,_more
        CP ","
        JP NZ,syntax_error
_more:  CALL next_char
        JR NZ,_item
        JP using_rest           ; no new line
_line:  CALL using_rest
        JP console_newline
_mismatch:
        JP type_mismatch

; What stands behind the last field.
using_rest:
        PUSH HL
        CALL using_literals
        POP HL
        RET

; Puts out what stands before the next field and reads that, from the format's start if need be.
using_to_field:
        CALL using_literals
        RET C
        LD HL,using_seen
        LD A,(HL)
        LD (HL),0
        OR A
        JP Z,illegal_call       ; no field at all
        LD HL,LINE_TEXT
        LD (using_pointer),HL
        JR using_to_field

; Puts out characters from (using_pointer) up to a field, which is read: C; or to the end.
using_literals:
        LD HL,(using_pointer)
        LD A,(HL)
        OR A
        RET Z
        CALL using_field
        JR C,_field
        LD HL,(using_pointer)
        LD A,(HL)
        INC HL
        CP "_"
        JR NZ,_put
        LD A,(HL)
        OR A
        JR Z,_put
        INC HL
_put:   LD (using_pointer),HL
        CALL console_out
        JR using_literals
_field: LD (using_pointer),HL
        LD A,1
        LD (using_seen),A
        SCF
        RET

; C: a field begins at HL; it is read, HL is behind it.
using_field:
        LD BC,0                 ; B: places before the point, C: behind it
        LD E,C                  ; flags
        LD A,(HL)
        CP "!"
        JR Z,_first
        CP "@"
        JR Z,_all
        CP "&"
        JR Z,_width
        CP USING_YEN
        JR NZ,_number
        INC HL
        CP (HL)
        DEC HL
        JR NZ,_width
        INC HL                  ; yen yen: currency before digits, else two characters
        INC HL
        LD A,(HL)
        DEC HL
        DEC HL
        CP "#"
        JR Z,_number
        CP ","
        JR Z,_number
        CP "."
        JR Z,_number
        LD A,USING_YEN
_width: LD D,A                  ; D blanks D
        LD B,1
        PUSH HL
_blank: INC HL
        INC B
        LD A,(HL)
        CP " "
        JR Z,_blank
        CP D
        JR NZ,_alone
        POP DE
        INC HL
        JR _wide
_alone: POP HL
        LD A,D
        CP "&"
        JR Z,_all
        OR A
        RET
_first: INC HL
        LD B,1
_wide:  LD A,B
        LD (using_left),A
        LD A,1
        JR _kind
_all:   INC HL
        LD A,2
_kind:  LD (using_kind),A
        SCF
        RET
_number:
        LD A,(HL)
        CP "+"
        JR NZ,_stars
        SET USING_PLUS,E
        INC HL
_stars: LD A,(HL)
        CP "*"
        JR NZ,_currency
        INC HL
        CP (HL)
        JR NZ,_none
        INC HL
        SET USING_STARS,E
        LD B,2
        LD A,(HL)
        CP "$"
        JR Z,_sign
        CP USING_YEN
        JR Z,_sign
        JR _digits
_currency:
        CP "$"
        JR Z,_twice
        CP USING_YEN
        JR NZ,_digits
_twice: INC HL
        CP (HL)
        JR NZ,_none
        INC B
_sign:  INC HL
        SET USING_CURRENCY,E
        LD (using_currency),A
_digits:
        LD A,(HL)
        CP "#"
        JR Z,_place
        CP ","
        JR NZ,_point
        LD A,B
        OR A
        JR Z,_none
        SET USING_COMMA,E
_place: INC B
        INC HL
        JR _digits
_point: CP "."
        JR NZ,_exponent
        INC HL
        SET USING_POINT,E
_fraction:
        LD A,(HL)
        CP "#"
        JR NZ,_exponent
        INC C
        INC HL
        JR _fraction
_none:  OR A
        RET
_exponent:
        LD A,B
        OR C
        RET Z                   ; a point or sign alone
        LD A,B
        ADD A,C
        CP 25
        JP NC,illegal_call
        PUSH HL
        LD D,4
_caret: LD A,(HL)
        CP "^"
        JR NZ,_carets
        INC HL
        DEC D
        JR NZ,_caret
        SET USING_EXPONENT,E
        EX (SP),HL
_carets:
        POP HL
        BIT USING_PLUS,E
        JR NZ,_end
        LD A,(HL)
        CP "+"
        JR NZ,_minus
        SET USING_PLUS_END,E
        INC HL
_minus: CP "-"
        JR NZ,_end
        SET USING_MINUS_END,E
        INC HL
_end:   LD A,E
        LD (using_flags),A
        LD A,B
        LD (using_left),A
        LD A,C
        LD (using_right),A
        XOR A
        JP _kind

; B characters at DE, into the field.
using_string:
        LD A,(using_kind)
        CP 2
        LD C,B
        JR Z,_start
        LD A,(using_left)
        LD C,A
_start: INC C
        INC B
_next:  DEC C
        RET Z
        DEC B
        LD A," "
        JR Z,_blank
        LD A,(DE)
        INC DE
        JR _put
_blank: INC B
_put:   CALL console_out
        JR _next

; FAC, into the field.
using_number:
        CALL number_decimal
        JR NC,_digits
        LD HL,number_digits     ; 0
        LD DE,number_digits + 1
        LD BC,NUMBER_DIGITS - 1
        LD (HL),"0"
        LDIR
        XOR A
        LD (float_sign),A
        DEC A
_digits:
        LD (using_power),A
        LD A,(float_sign)
        LD (using_minus),A
        LD A,(using_flags)
        BIT USING_EXPONENT,A
        JP NZ,using_exponential
        LD A,(using_power)
        INC A
        LD HL,using_right
        ADD A,(HL)
        CALL using_round
        LD A,(using_power)      ; E: digits before the point
        INC A
        LD E,A
        JP P,_some
        LD E,0
_some:  LD A,E
        LD D,A                  ; D: places taken
        OR A
        JR Z,_below_one
        LD A,(using_flags)
        BIT USING_COMMA,A
        LD A,E
        JR Z,_sign
_comma: SUB 3
        JR Z,_sign
        JR C,_sign
        INC D
        JR _comma
_below_one:
        LD A,(using_left)
        OR A
        JR Z,_no_zero
        INC D
        LD A,1
_no_zero:
        LD (using_zero),A
        JR _taken
_sign:  XOR A
        LD (using_zero),A
_taken: CALL using_sign_apart
        JR NZ,_fits
        LD A,(using_minus)
        OR A
        JP P,_fits
        INC D
_fits:  LD A,(using_left)
        SUB D
        JR NC,_pad
        LD A,(using_zero)       ; the 0 may go, if digits follow
        OR A
        JR Z,_overflow
        LD A,(using_right)
        OR A
        JR Z,_overflow
        XOR A
        LD (using_zero),A
        DEC D
        JR _fits
_overflow:
        LD A,"%"
        CALL console_out
        JR _number
_pad:   JR Z,_number
        LD B,A
        CALL using_filler
        LD C,A
_fill:  LD A,C
        CALL console_out
        DJNZ _fill
_number:
        CALL using_lead
        LD A,(using_zero)
        OR A
        LD A,"0"
        CALL NZ,console_out
        LD C,0
        LD A,E
        OR A
        JR Z,_fraction
_whole: CALL using_digit
        DEC E
        JR Z,_fraction
        LD A,(using_flags)
        BIT USING_COMMA,A
        JR Z,_whole
        LD A,E
_threes:
        SUB 3
        JR Z,_thousands
        JR NC,_threes
        JR _whole
_thousands:
        LD A,","
        CALL console_out
        JR _whole
_fraction:
        LD A,(using_power)
        INC A
        LD C,A
        CALL using_fraction
        JP using_trail

; ^^^^
using_exponential:
        LD A,(using_left)
        LD E,A                  ; digits before the point
        CALL using_sign_apart
        JR NZ,_places
        LD A,E
        OR A
        JR Z,_places
        DEC E
_places:
        LD A,(using_right)
        OR E
        JR NZ,_round
        INC E
_round: LD A,(using_right)
        ADD A,E
        CALL using_round
        LD A,(number_digits)
        CP "0"
        LD B,0
        JR Z,_power
        LD A,(using_power)
        INC A
        SUB E
        LD B,A
_power: CALL using_sign_apart
        JR NZ,_lead
        LD A,(using_minus)
        OR A
        LD A,(using_left)
        JP M,_negative
        OR A
        CALL NZ,using_filler
        CALL NZ,console_out
        JR _lead
_negative:
        OR A
        LD A,"%"
        CALL Z,console_out
_lead:  CALL using_lead
        LD C,0
        INC E
        JR _next
_digit: CALL using_digit
_next:  DEC E
        JR NZ,_digit
        CALL using_fraction
        LD A,"E"
        CALL console_out
        LD A,B
        OR A
        LD C,"+"
        JP P,_sign
        NEG
        LD C,"-"
_sign:  LD B,"0" - 1
_tens:  INC B
        SUB 10
        JR NC,_tens
        ADD A,"0" + 10
        LD D,A
        LD A,C
        CALL console_out
        LD A,B
        CALL console_out
        LD A,D
        CALL console_out

using_trail:
        LD A,(using_flags)
        AND USING_BEHIND
        RET Z
        LD C," "
        JP M,_blank
        LD C,"+"
_blank: LD A,(using_minus)
        OR A
        LD A,C
        JP P,console_out
        LD A,"-"
        JP console_out

; NZ: the sign has a place of its own.
using_sign_apart:
        LD A,(using_flags)
        AND USING_APART
        RET

using_filler:
        LD A,(using_flags)
        BIT USING_STARS,A
        LD A," "
        JR Z,_blank
        LD A,"*"
_blank: INC A                   ; NZ
        DEC A
        RET

; Sign and currency before the number.
using_lead:
        LD A,(using_flags)
        AND USING_BEHIND
        JR NZ,_currency
        LD A,(using_minus)
        OR A
        LD A,"-"
        JP M,_put
        LD A,(using_flags)
        RRA
        JR NC,_currency
        LD A,"+"
_put:   CALL console_out
_currency:
        LD A,(using_flags)
        BIT USING_CURRENCY,A
        RET Z
        LD A,(using_currency)
        JP console_out

; The point and using_right digits from number C on.
using_fraction:
        LD A,(using_flags)
        BIT USING_POINT,A
        RET Z
        LD A,"."
        CALL console_out
        LD A,(using_right)
        LD E,A
        INC E
        JR _next
_digit: CALL using_digit
_next:  DEC E
        JR NZ,_digit
        RET

; Digit number C, which becomes the next; those beyond the known ones are 0.
using_digit:
        LD A,C
        INC C
        CP NUMBER_DIGITS
        JR NC,_zero
        LD HL,number_digits
        ADD A,L
        LD L,A
        LD A,(HL)
        JP console_out
_zero:  LD A,"0"
        JP console_out

; Rounds number_digits to A of them, the others become 0; using_power grows when a digit comes before them.
using_round:
        LD HL,number_digits
        OR A
        LD C,"0"
        JP M,_cut               ; far below the last place
        CP NUMBER_DIGITS
        RET NC
        LD B,A
        ADD A,L
        LD L,A
        LD C,(HL)
        PUSH HL
        CALL _cut
        POP HL
        LD A,C
        CP "5"
        RET C
        INC B
        JR _next
_nine:  LD (HL),"0"
_next:  DEC HL
        DJNZ _carry
        INC HL
        LD (HL),"1"
        LD HL,using_power
        INC (HL)
        RET
_carry: INC (HL)
        LD A,(HL)
        CP "9" + 1
        RET C
        JR _nine
_cut:   LD A,(HL)
        OR A
        RET Z
        LD (HL),"0"
        INC HL
        JR _cut

; The calendar clock: a chip on three wires that hands out date and time bit by bit. It has no year and cannot be
; set here; what a program sets is kept beside it until power-off.
;
;   calendar_get    calendar_bytes = seconds, minutes, hours, day (BCD), month in the high half of the fifth byte
;   fn_time         TIME$: "HH:MM:SS"
;   fn_date         DATE$: "YY/MM/DD"; the year is 00 until it is set
;   do_time_set     TIME$ = "HH:MM:SS": the clock goes on from there
;   do_date_set     DATE$ = "YY/MM/DD": stays so

calendar_get:
        LD A,CALENDAR_READ
        CALL calendar_command
        LD A,CALENDAR_SHIFT
        CALL calendar_command
        LD HL,calendar_bytes
        LD C,5
_byte:  LD B,8
_bit:   IN A,(STATUS)
        AND STATUS_CALENDAR
        SUB 1
        CCF                     ; carry: the bit
        RR (HL)                 ; the lowest bit comes first
        LD A,CALENDAR_CLOCK
        CALL system_set
        LD A,CALENDAR_CLOCK
        CALL system_clear       ; shifts
        DJNZ _bit
        INC HL
        DEC C
        JR NZ,_byte
        RET
calendar_command:
        OUT (CALENDAR),A
        LD A,CALENDAR_STROBE
        CALL system_set
        LD A,CALENDAR_STROBE
        JP system_clear

fn_time:
        PUSH HL
        CALL calendar_get
        LD HL,calendar_bytes    ; seconds, minutes, hours and what was set beside them
        LD DE,clock_offset
        LD B,3
        OR A
_part:  LD A,(DE)
        ADC A,(HL)
        DAA
        LD C,24h
        DEC B
        JR Z,_limit
        LD C,60h
_limit: INC B
        JR C,_over              ; past 99
        CP C
        CCF
        JR NC,_store
_over:  SUB C
        DAA
        SCF
_store: LD (HL),A
        INC HL
        INC DE
        DJNZ _part
        LD HL,calendar_text
        LD A,(calendar_bytes + 2)
        CALL calendar_digits
        LD (HL),":"
        INC HL
        LD A,(calendar_bytes + 1)
        CALL calendar_digits
        LD (HL),":"
        INC HL
        LD A,(calendar_bytes)
calendar_string:
        CALL calendar_digits
        POP HL
        LD DE,calendar_text
        LD B,8
        JP result_string

fn_date:
        PUSH HL
        LD A,(date_month)       ; 0: none was set
        OR A
        JR NZ,_set
        CALL calendar_get
        LD A,(calendar_bytes + 4)
        RRCA
        RRCA
        RRCA
        RRCA
        AND 00Fh
        ADD A,0
        DAA                     ; the month is binary
        LD B,A
        LD A,(calendar_bytes + 3)
        LD C,A
        JR _text
_set:   LD BC,(date_day)        ; and month
_text:  LD HL,calendar_text
        LD A,(date_year)
        CALL calendar_digits
        LD (HL),"/"
        INC HL
        LD A,B
        CALL calendar_digits
        LD (HL),"/"
        INC HL
        LD A,C
        JR calendar_string

; The BCD byte A as two digits at HL.
calendar_digits:
        PUSH AF
        RRCA
        RRCA
        RRCA
        RRCA
        CALL _digit
        POP AF
_digit: AND 00Fh
        ADD A,"0"
        LD (HL),A
        INC HL
        RET

do_time_set:
        LD C,":"
        CALL calendar_read      ; calendar_text = hours, minutes, seconds
        LD A,(calendar_text)
        CP 24h
        JR NC,calendar_bad
        LD A,(calendar_text + 1)
        CP 60h
        JR NC,calendar_bad
        LD A,(calendar_text + 2)
        CP 60h
        JR NC,calendar_bad
        PUSH HL
        CALL calendar_get
        LD HL,calendar_bytes    ; what is set less what the chip says
        LD DE,calendar_text + 2
        LD B,3
        OR A
_part:  LD A,(DE)
        SBC A,(HL)
        DAA
        JR NC,_store
        LD C,60h
        DEC B
        JR NZ,_limit
        LD C,24h
_limit: INC B
        ADD A,C
        DAA
        SCF
_store: LD (DE),A
        INC HL
        DEC DE
        DJNZ _part
        LD HL,clock_offset
        LD A,(calendar_text + 2)
        LD (HL),A
        INC HL
        LD A,(calendar_text + 1)
        LD (HL),A
        INC HL
        LD A,(calendar_text)
        LD (HL),A
        POP HL
        JP this_char

do_date_set:
        LD C,"/"
        CALL calendar_read      ; year, month, day
        LD A,(calendar_text + 1)
        DEC A
        CP 12h
        JR NC,calendar_bad
        LD A,(calendar_text + 2)
        DEC A
        CP 31h
        JR NC,calendar_bad
        LD A,(calendar_text)
        LD (date_year),A
        LD A,(calendar_text + 1)
        LD (date_month),A
        LD A,(calendar_text + 2)
        LD (date_day),A
        JP this_char
calendar_bad:
        LD E,ERR_CALL
        JP error

; HL at "=" and a string "aaCbbCcc": three BCD bytes in calendar_text.
calendar_read:
        PUSH BC
        CALL expect
        DEFB TOK_EQUAL
        CALL eval_string
        LD A,B
        POP BC
        CP 8
        JR NZ,calendar_bad
        PUSH HL
        LD HL,calendar_text
        CALL _two
        CALL _more
        CALL _more
        POP HL
        RET
_more:  LD A,(DE)
        INC DE
        CP C
        JR NZ,calendar_bad
_two:   CALL _digit
        RLCA
        RLCA
        RLCA
        RLCA
        LD B,A
        CALL _digit
        OR B
        LD (HL),A
        INC HL
        RET
_digit: LD A,(DE)
        INC DE
        SUB "0"
        CP 10
        JR NC,calendar_bad
        RET

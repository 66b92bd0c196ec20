; The calendar clock: a chip on three wires that hands out date and time bit by bit.

; Reads it into calendar_bytes: seconds, minutes, hours, day (BCD), month in the high half of the fifth byte.
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

; Runs the calendar command A.
calendar_command:
        OUT (CALENDAR),A
        LD A,CALENDAR_STROBE
        CALL system_set
        LD A,CALENDAR_STROBE
        JP system_clear

; Shows date and time at (calendar_row), (calendar_column) when the second has changed.
calendar_show:
        CALL calendar_get
        LD A,(calendar_bytes)
        LD HL,calendar_shown
        CP (HL)
        RET Z
        LD (HL),A
        LD HL,(calendar_row)
        LD (screen_row),HL
        LD A,INK
        LD (screen_colour),A
        LD A,(calendar_bytes + 4)
        RRCA
        RRCA
        RRCA
        RRCA
        AND 00Fh
        ADD A,0
        DAA                     ; the month is binary
        CALL screen_bcd
        LD A,CHAR_MONTH
        CALL calendar_unit
        LD A,(calendar_bytes + 3)
        CALL screen_bcd
        LD A,CHAR_DAY
        CALL calendar_unit
        LD A," "
        CALL screen_character
        LD A,(calendar_bytes + 2)
        CALL screen_bcd
        LD A,CHAR_HOUR
        CALL calendar_unit
        LD A,(calendar_bytes + 1)
        CALL screen_bcd
        LD A,CHAR_MINUTE
        CALL calendar_unit
        LD A,(calendar_bytes)
        CALL screen_bcd
        LD A,CHAR_SECOND
        CALL calendar_unit
        LD A,(calendar_row)
        JP screen_show_row

; The character A in another colour.
calendar_unit:
        LD HL,screen_colour
        LD (HL),INK_2
        CALL screen_character
        LD (HL),INK
        RET

; Large letters of 2 x 4 blocks: a picture of 40 x 12 dots as 20 x 3 semigraphic characters.

LOGO_WORK       EQU MELODY      ; the picture is rotated bit by bit, in RAM; no tune plays yet

; HL = picture, 12 lines of five bytes; shown at (screen_row), (screen_column) in the colours at DE, one for
; each of the three rows.
logo_show:
        PUSH DE
        LD DE,LOGO_WORK
        LD BC,12 * 5
        LDIR
        LD IX,LOGO_WORK
        POP HL
        LD B,3
_row:   LD A,(HL)
        OR SEMIGRAPHIC
        LD (screen_colour),A
        INC HL
        PUSH HL
        LD A,(screen_column)
        PUSH AF
        LD C,5
_byte:  PUSH BC
        LD B,4
_cell:  LD DE,0                 ; D dots of the left column, E of the right one, the top one lowest
        RLC (IX + 15)
        RL D
        RLC (IX + 15)
        RL E
        RLC (IX + 10)
        RL D
        RLC (IX + 10)
        RL E
        RLC (IX + 5)
        RL D
        RLC (IX + 5)
        RL E
        RLC (IX + 0)
        RL D
        RLC (IX + 0)
        RL E
        LD A,E
        RLCA
        RLCA
        RLCA
        RLCA
        OR D
        CALL screen_character
        DJNZ _cell
        INC IX
        POP BC
        DEC C
        JR NZ,_byte
        LD DE,15
        ADD IX,DE
        POP AF
        LD (screen_column),A
        LD HL,screen_row
        INC (HL)
        POP HL
        DJNZ _row
        RET

; The picture: a sun that sets behind mountains, over a plain of lines. 304 x 72 dots.

X0              EQU 320
Y0              EQU 48
WIDTH           EQU 304
HEIGHT          EQU 72
HORIZON         EQU 42          ; line of the picture
CENTRE          EQU X0 + WIDTH / 2

picture:
        CALL picture_sky
        CALL picture_stars
        CALL picture_sun
        CALL picture_mountains
        JP picture_plain

; Bands from night to dusk. Even and odd lines take different patterns, so that colours mix.
picture_sky:
        LD IX,sky_bands
        LD E,Y0
_band:  LD A,(IX + 0)
        OR A
        RET Z
        LD B,A
        PUSH IX
        POP HL
        INC HL
_line:  PUSH HL
        PUSH BC
        LD A,E
        RRA
        JR NC,_even
        INC HL
        INC HL
        INC HL
_even:  LD A,E
        PUSH DE
        CALL whole_line
        POP DE
        INC E
        POP BC
        POP HL
        DJNZ _line
        LD BC,7
        ADD IX,BC
        JR _band

; The line A of the screen across the whole picture, pattern at HL.
whole_line:
        LD BC,X0
        LD DE,X0 + WIDTH - 1
        JP span

picture_stars:
        LD IX,stars
        LD B,21
_star:  PUSH BC
        LD C,(IX + 0)
        LD B,(IX + 1)
        LD D,B
        LD E,C
        LD A,(IX + 2)
        LD HL,pattern_white
        CALL span
        LD BC,4
        ADD IX,BC
        POP BC
        DJNZ _star
        RET

; Half widths a line; where there is none, the sky shows through.
picture_sun:
        LD IX,sun_lines
        LD E,Y0 + 6
_line:  LD A,(IX + 0)
        OR A
        JR Z,_next
        PUSH DE
        LD C,A
        LD B,0
        LD HL,CENTRE
        ADD HL,BC
        PUSH HL
        LD HL,CENTRE - 1
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        LD HL,pattern_yellow
        LD A,E
        CP Y0 + 19
        JR C,_draw
        LD HL,pattern_orange_0
        RRA
        JR C,_odd
        LD HL,pattern_orange_1
_odd:   LD A,E
        CP Y0 + 31
        JR C,_draw
        LD HL,pattern_red
_draw:  LD A,E
        POP DE
        CALL span
        POP DE
_next:  INC IX
        INC E
        LD A,E
        CP Y0 + HORIZON
        JR NZ,_line
        RET

; Black, with a lit edge, from both sides.
picture_mountains:
        LD IX,mountain_lines
        LD E,Y0 + 22
_line:  PUSH DE
        LD A,E
        LD L,(IX + 0)
        LD H,0
        LD DE,X0
        ADD HL,DE
        PUSH HL
        EX DE,HL                ; DE the edge
        LD BC,X0
        LD HL,pattern_black
        PUSH AF
        CALL span
        POP AF
        POP DE
        LD B,D
        LD C,E
        INC DE
        INC DE
        LD HL,pattern_cyan
        PUSH AF
        CALL span
        POP AF

        LD C,(IX + 20)
        LD B,0
        LD HL,X0 + WIDTH - 1
        PUSH AF
        OR A
        SBC HL,BC
        POP AF
        PUSH HL
        LD B,H
        LD C,L
        LD DE,X0 + WIDTH - 1
        LD HL,pattern_black
        PUSH AF
        CALL span
        POP AF
        POP DE
        LD B,D
        LD C,E
        DEC BC
        DEC BC
        LD HL,pattern_cyan
        CALL span
        POP DE
        INC IX
        INC E
        LD A,E
        CP Y0 + HORIZON
        JR NZ,_line
        RET

; A bright horizon; level lines that grow apart; lines that run from the horizon towards the viewer.
picture_plain:
        LD E,Y0 + HORIZON
_clear: PUSH DE
        LD A,E
        LD HL,pattern_black
        CALL whole_line
        POP DE
        INC E
        LD A,E
        CP Y0 + HEIGHT
        JR NZ,_clear

        LD HL,level_lines
_level: LD A,(HL)
        OR A
        JR Z,_runs
        INC HL
        PUSH HL
        LD HL,pattern_magenta
        CALL whole_line
        POP HL
        JR _level

_runs:  LD DE,160               ; distance of neighbouring lines, 1/16 dot
        LD A,Y0 + HORIZON + 1
_line:  LD HL,0                 ; distance from the middle
_dot:   PUSH HL
        PUSH DE
        PUSH AF
        LD B,4
_whole: SRL H
        RR L
        DJNZ _whole
        PUSH HL
        LD BC,CENTRE
        ADD HL,BC
        LD B,H
        LD C,L
        CALL plain_dot
        POP BC
        LD HL,CENTRE
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        POP AF
        PUSH AF
        CALL plain_dot
        POP AF
        POP DE
        POP HL
        ADD HL,DE
        LD BC,WIDTH / 2 * 16
        PUSH HL
        OR A
        SBC HL,BC
        POP HL
        JR C,_dot
        LD HL,24
        ADD HL,DE
        EX DE,HL
        INC A
        CP Y0 + HEIGHT
        JR NZ,_line

        LD A,Y0 + HORIZON
        LD HL,pattern_white
        JP whole_line

; A dot of the plain at column BC, line A. Keeps A.
plain_dot:
        LD D,B
        LD E,C
        LD HL,pattern_magenta
        PUSH AF
        CALL span
        POP AF
        RET

; Lines, then blue, red, green of even lines and of odd lines.
sky_bands:
        DEFB 9,000h,000h,000h,000h,000h,000h
        DEFB 6,088h,000h,000h,000h,000h,000h
        DEFB 6,088h,000h,000h,022h,000h,000h
        DEFB 6,0AAh,000h,000h,055h,000h,000h
        DEFB 5,0FFh,000h,000h,055h,000h,000h
        DEFB 5,0FFh,088h,000h,0FFh,000h,000h
        DEFB 5,0FFh,0AAh,000h,0FFh,055h,000h
        DEFB 0
sun_lines:
        DEFB 15,21,26,30,33,36,39,41,43,45,47,48
        DEFB 50,51,53,54,55,56,57,0,58,59,59,0
        DEFB 60,61,0,0,61,61,0,0,61,61,0,0
mountain_lines:
        DEFB 8,13,17,22,25,27,30,37,44,46,48,50,57,63,70,73,76,85,94,103
        DEFB 14,22,30,32,34,36,42,49,56,62,64,66,68,76,84,92,97,102,108,113
level_lines:
        DEFB Y0 + 44, Y0 + 46, Y0 + 49, Y0 + 53, Y0 + 58, Y0 + 64, Y0 + 71, 0
stars:
        DEFW X0 + 9, Y0 + 3, X0 + 31, Y0 + 9, X0 + 52, Y0 + 2, X0 + 71, Y0 + 14
        DEFW X0 + 25, Y0 + 16, X0 + 88, Y0 + 6, X0 + 12, Y0 + 13, X0 + 104, Y0 + 10
        DEFW X0 + 201, Y0 + 4, X0 + 222, Y0 + 12, X0 + 240, Y0 + 3, X0 + 262, Y0 + 9
        DEFW X0 + 283, Y0 + 2, X0 + 296, Y0 + 14, X0 + 250, Y0 + 17, X0 + 275, Y0 + 18
        DEFW X0 + 44, Y0 + 20, X0 + 190, Y0 + 2, X0 + 120, Y0 + 1, X0 + 60, Y0 + 9
        DEFW X0 + 300, Y0 + 7

pattern_black:
        DEFB 000h,000h,000h
pattern_white:
        DEFB 0FFh,0FFh,0FFh
pattern_yellow:
        DEFB 000h,0FFh,0FFh
pattern_orange_0:
        DEFB 000h,0FFh,0AAh
pattern_orange_1:
        DEFB 000h,0FFh,055h
pattern_red:
        DEFB 000h,0FFh,000h
pattern_cyan:
        DEFB 0FFh,000h,0FFh
pattern_magenta:
        DEFB 0FFh,0FFh,000h

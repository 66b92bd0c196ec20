; DEMO: what the machine can do, on one screen: characters, attributes, semigraphics, a picture on three planes, a
; figure that walks, a tune, and a place to type. STOP goes back to BASIC; the program is not touched.
;
;   far_demo        the statement; HL is kept. Empties the planes.
;   far_logo        the three large letters at the top left, for the title

DEMO_RAM        EQU LINE_TEXT + 80h     ; the editor is not used meanwhile
demo_walker     EQU DEMO_RAM            ; column of the figure
demo_step       EQU demo_walker + 1     ; 1 or FFh
demo_row        EQU demo_step + 1       ; where typing goes on: row,
demo_column     EQU demo_row + 1        ; column,
demo_ink        EQU demo_column + 1     ; attribute
demo_reversed   EQU demo_ink + 1
demo_glyphs     EQU demo_reversed + 1
demo_frame_seen EQU demo_glyphs + 1
span_pattern    EQU demo_frame_seen + 1 ; demo_span: pattern,
span_address    EQU span_pattern + 2    ; first byte,
span_bytes      EQU span_address + 2    ; bytes after the first,
span_left       EQU span_bytes + 1      ; mask of the first byte,
span_right      EQU span_left + 1       ; and of the last

DEMO_COUNT_ROW  EQU 3
DEMO_WALK_ROW   EQU 19          ; where the figure walks, and between which columns
DEMO_WALK_FIRST EQU 40
DEMO_WALK_LAST  EQU 76
DEMO_TYPE_ROW   EQU 22
DEMO_TYPE_LEFT  EQU 3
DEMO_TYPE_RIGHT EQU 76
DEMO_HINT_ROW   EQU 24
DEMO_F1         EQU 014h        ; what the function keys give meanwhile: five codes in a row

; Attributes of cells
I_BLACK         EQU 000h
I_BLUE          EQU 020h
I_RED           EQU 040h
I_MAGENTA       EQU 060h
I_GREEN         EQU 080h
I_CYAN          EQU 0A0h
I_YELLOW        EQU 0C0h
I_WHITE         EQU 0E0h
I_SEMIGRAPHIC   EQU 010h
I_UNDER         EQU 008h
I_REVERSE       EQU 004h
I_BLINK         EQU 002h
I_SECRET        EQU 001h

; Lists
L_END           EQU 0
L_AT            EQU 1           ; row, column
L_INK           EQU 2           ; attribute
L_FRAME         EQU 3           ; row, column, inner width, inner height; the cursor ends behind its corner
L_FILL          EQU 4           ; how many, character
L_CODES         EQU 5           ; how many, first code: a run of consecutive codes
L_CELLS         EQU 6           ; how many, codes as they are

far_demo:
        PUSH HL
        LD A,(console_ink)
        PUSH AF
        LD A,(keys_shown)
        PUSH AF
        LD A,(mode_31)
        PUSH AF
        LD A,(screen_columns)
        LD E,A
        LD A,(screen_rows)
        LD D,A
        PUSH DE
        LD HL,key_texts         ; the function keys' texts, as far as they are lost
        LD B,5
        LD C,DEMO_F1
_keep:  LD E,(HL)
        LD (HL),C
        INC C
        INC HL
        LD D,(HL)
        LD (HL),0
        PUSH DE
        LD DE,KEY_TEXT - 1
        ADD HL,DE
        DJNZ _keep

        XOR A
        LD (keys_shown),A
        LD (cursor_shown),A
        LD (demo_reversed),A
        LD DE,25 * 256 + 80
        CALL console_width
        LD A,(mode_31)
        OR GRAPHICS_ON + COLOUR_GRAPHICS + LINES_200
        LD (mode_31),A
        OUT (MODE_31),A
        CALL demo_planes
        CALL demo_background
        LD A,TEXT_OFF           ; nobody sees characters that still wait for their attributes
        OUT (LAYERS),A
        LD HL,demo_screen
        CALL demo_list
        LD HL,demo_high
        CALL demo_list
        CALL demo_logo_cells
        IN A,(STATUS)
        AND STATUS_STANDARD
        LD HL,demo_standard
        CALL NZ,demo_list
        CALL row_flush
        XOR A
        OUT (LAYERS),A
        CALL glyphs_restore
        LD HL,demo_figures
        LD C,CHAR_PCG
_glyph: CALL glyph_define
        INC C
        LD A,C
        CP CHAR_PCG + 4
        JR NZ,_glyph
        LD A,PCG_GLYPHS_ON
        LD (demo_glyphs),A
        OUT (PCG_SWITCH),A
        LD HL,1 * 256 + DEMO_WALK_FIRST
        LD (demo_walker),HL
        LD HL,DEMO_TYPE_LEFT * 256 + DEMO_TYPE_ROW
        LD (demo_row),HL
        LD A,I_WHITE
        LD (demo_ink),A
        CALL demo_melody
        CALL picture            ; drawn while one looks

_frame: LD A,(frames)
        LD HL,demo_frame_seen
        CP (HL)
        JR Z,_frame
        LD (HL),A
        CALL demo_walk
        LD A,(demo_frame_seen)
        AND 3
        CALL Z,demo_count
        LD HL,_frame
        PUSH HL
        CALL demo_cursor
        LD A,(stop_flag)
        OR A
        JR NZ,_stop
        CALL key_poll
        RET Z
        CP CTRL_STOP
        JP NZ,demo_key
_stop:  POP HL
_drain: CALL key_poll           ; STOP is a key as well
        JR NZ,_drain
        LD (stop_flag),A
        LD A,CRTC_START
        OUT (CRTC_COMMAND),A    ; not reversed
        CALL sound_stop
        CALL demo_planes
        CALL glyphs_restore
        XOR A
        OUT (PCG_SWITCH),A
        LD (cursor_shown),A
        LD HL,key_texts + 4 * KEY_TEXT
        LD B,5
_back:  POP DE
        LD (HL),E
        INC HL
        LD (HL),D
        LD DE,-KEY_TEXT - 1
        ADD HL,DE
        DJNZ _back
        POP DE                  ; rows, columns
        POP AF
        LD (mode_31),A
        OUT (MODE_31),A
        POP AF
        LD (keys_shown),A
        POP AF
        LD (console_ink),A
        CALL console_width
        POP HL
        RET

far_logo:
        LD HL,0
        LD (cursor_row),HL
        JP demo_logo_cells

; ---- Lists of characters

; Shows the list at HL: characters and L_ codes up to L_END; HL ends behind it.
demo_list:
        LD A,(HL)
        INC HL
        OR A
        RET Z
        DEC A
        JR Z,_at
        DEC A
        JR Z,_ink
        DEC A
        JR Z,_frame
        DEC A
        JR Z,_fill
        DEC A
        JR Z,_codes
        DEC A
        JR Z,_cells
        ADD A,L_CELLS
        CALL demo_put
        JR demo_list
_at:    LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD (cursor_row),DE
        JR demo_list
_ink:   LD A,(HL)
        INC HL
        LD (console_ink),A
        JR demo_list
_frame: CALL demo_frame
        JR demo_list
_fill:  LD B,(HL)
        INC HL
_again: LD A,(HL)
        CALL demo_put
        DJNZ _again
        INC HL
        JR demo_list
_codes: LD B,(HL)
        INC HL
        LD C,(HL)
        INC HL
_code:  LD A,C
        CALL demo_put
        INC C
        DJNZ _code
        JR demo_list
_cells: LD B,(HL)
        INC HL
_cell:  LD A,(HL)
        INC HL
        CALL demo_put
        DJNZ _cell
        JR demo_list

; The frame at HL; HL ends behind it.
demo_frame:
        LD A,I_CYAN
        LD (console_ink),A
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD B,(HL)
        INC HL
        LD C,(HL)
        INC HL
        PUSH HL
        PUSH DE
        LD HL,CHAR_CORNER_1 * 256 + CHAR_CORNER_2
        CALL _edge
_side:  INC E
        LD (cursor_row),DE
        LD A,CHAR_DOWN
        CALL demo_put
        LD HL,cursor_column
        LD A,(HL)
        ADD A,B
        LD (HL),A
        LD A,CHAR_DOWN
        CALL demo_put
        DEC C
        JR NZ,_side
        INC E
        LD HL,CHAR_CORNER_3 * 256 + CHAR_CORNER_4
        CALL _edge
        POP DE
        INC D
        INC D
        LD (cursor_row),DE
        POP HL
        RET
_edge:  LD (cursor_row),DE
        PUSH BC
        LD A,H
        CALL demo_put
_across:
        LD A,CHAR_ACROSS
        CALL demo_put
        DJNZ _across
        LD A,L
        CALL demo_put
        POP BC
        RET

; The character A at the cursor, whatever its code. Keeps BC, DE, HL.
demo_put:
        PUSH HL
        PUSH DE
        PUSH BC
        CALL console_put
        POP BC
        POP DE
        POP HL
        RET

; The three rows of large letters, the cursor at the first.
demo_logo_cells:
        LD HL,demo_logo
        LD C,3
_row:   LD A,(HL)
        INC HL
        LD (console_ink),A
        LD B,20
        LD DE,(cursor_row)
_cell:  LD A,(HL)
        INC HL
        CALL demo_put
        DJNZ _cell
        INC E
        LD (cursor_row),DE
        DEC C
        JR NZ,_row
        RET

; ---- Once a frame

; The interrupts counted so far.
demo_count:
        LD HL,demo_count_at
        CALL demo_list
        LD HL,(frames)
        LD DE,10000
        CALL _digit
        LD DE,1000
        CALL _digit
        LD DE,100
        CALL _digit
        LD DE,10
        CALL _digit
        LD A,L
        ADD A,"0"
        JR demo_put
_digit: LD A,"0" - 1
_more:  INC A
        OR A
        SBC HL,DE
        JR NC,_more
        ADD HL,DE
        JR demo_put

; The figure takes a step: two glyphs for either of its two poses.
demo_walk:
        LD A,(frames)
        AND 7
        RET NZ
        LD HL,demo_walk_ink
        CALL demo_list
        CALL demo_walk_at
        LD A," "
        CALL demo_put
        LD A," "
        CALL demo_put
        LD HL,demo_step
        LD A,(demo_walker)
        ADD A,(HL)
        LD (demo_walker),A
        CP DEMO_WALK_FIRST
        JR Z,_turn
        CP DEMO_WALK_LAST
        JR NZ,_on
_turn:  XOR A
        SUB (HL)
        LD (HL),A
_on:    CALL demo_walk_at
        LD A,(demo_walker)
        AND 1
        ADD A,A
        ADD A,CHAR_PCG
        LD C,A
        CALL demo_put
        LD A,C
        INC A
        JP demo_put
demo_walk_at:
        LD A,(demo_walker)
        LD H,A
        LD L,DEMO_WALK_ROW
        LD (cursor_row),HL
        RET

; The cursor where typing goes on.
demo_cursor:
        LD HL,(demo_row)
        LD (cursor_row),HL
        LD A,1
        LD (cursor_shown),A
        RET

; The key A.
demo_key:
        CP CTRL_RETURN
        JR Z,demo_line
        CP 00Ch                 ; CLR
        JR Z,demo_clear
        CP " "
        JR C,demo_function
        LD C,A
        LD A,(demo_ink)
        LD (console_ink),A
        LD A,C
        CALL demo_put
        LD HL,demo_column
        LD A,(HL)
        INC (HL)
        CP DEMO_TYPE_RIGHT
        RET NZ
demo_line:
        LD HL,DEMO_TYPE_LEFT * 256 + DEMO_TYPE_ROW + 1
        LD A,(demo_row)
        CP L
        JR NZ,demo_second
demo_clear:
        LD HL,demo_typing
        CALL demo_list
        LD HL,DEMO_TYPE_LEFT * 256 + DEMO_TYPE_ROW
demo_second:
        LD (demo_row),HL
        RET
demo_function:
        SUB DEMO_F1
        JP Z,demo_melody
        DEC A
        JR Z,_ink
        DEC A
        JR Z,_reverse
        DEC A
        JR Z,_glyphs
        DEC A
        RET NZ
        JP picture
_ink:   LD A,(demo_ink)
        ADD A,I_BLUE            ; the next colour; not black, which nobody could read
        JR NC,_visible
        LD A,I_BLUE
_visible:
        LD (demo_ink),A
        LD HL,demo_ink_at
        CALL demo_list
        LD A,(demo_ink)
        LD (console_ink),A
        LD HL,demo_ink_name
        JP demo_list
_reverse:
        LD A,(demo_reversed)
        XOR 1
        LD (demo_reversed),A
        OR CRTC_START
        OUT (CRTC_COMMAND),A
        RET
_glyphs:
        LD A,(demo_glyphs)
        XOR PCG_GLYPHS_ON
        LD (demo_glyphs),A
        OUT (PCG_SWITCH),A
        RET

; ---- Glyphs

; Makes the eight bytes at HL the glyph of code C (80h-FFh); HL ends behind them. Keeps BC.
glyph_define:
        LD A,C
        ADD A,A                 ; drops the 80h
        LD E,A
        LD D,0
        EX DE,HL
        ADD HL,HL
        ADD HL,HL
        EX DE,HL
        LD B,8
_row:   LD A,(HL)
        INC HL
        OUT (PCG_DATA),A
        LD A,PCG_WRITE
        CALL glyph_row
        DJNZ _row
        RET
; Codes 80h-FFh as in the built-in font.
glyphs_restore:
        LD DE,0
_row:   LD A,PCG_WRITE + PCG_FROM_ROM
        CALL glyph_row
        LD A,D
        CP 4
        JR NZ,_row
        RET
; Row DE takes what A says; DE moves on. The control port also holds the gates of the tones.
glyph_row:
        PUSH BC
        LD C,A
        LD A,E
        DI
        OUT (PCG_ADDRESS),A
        LD A,(pcg_latch)
        OR C
        OR D
        OUT (PCG_CONTROL),A
        EI
        INC DE
        POP BC
        RET

; ---- Planes

; All three empty, the palette in order.
demo_planes:
        LD C,PALETTE            ; black after power-on
        XOR A
_entry: OUT (C),A
        INC C
        INC A
        CP 8
        JR NZ,_entry
        LD C,SELECT_BLUE
_plane: OUT (C),A
        LD HL,PLANE
        LD DE,PLANE + 1
        PUSH BC
        LD BC,PLANE_LINE * PLANE_LINES - 1
        LD (HL),0
        LDIR
        POP BC
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A
        RET

; Behind the title: lines of blue that thin out upwards, above a bright edge. Behind the black colour sample:
; something to see it by.
demo_background:
        LD HL,demo_lines
_line:  LD A,(HL)
        INC A
        JR Z,_sample
        DEC A
        INC HL
        PUSH HL
        LD BC,0
        LD DE,639
        CALL span
        POP HL
        INC HL
        INC HL
        INC HL
        JR _line
_sample:
        LD A,17 * 8
_again: PUSH AF
        LD HL,demo_sample
        LD BC,11 * 8
        LD DE,14 * 8 - 1
        CALL span
        POP AF
        INC A
        CP 18 * 8
        JR NZ,_again
        RET

; A level line: line A, from column BC to column DE (both drawn, BC <= DE < 640) in the pattern at HL, one
; byte a plane: blue, red, green. Uses AF, BC, DE, HL.
span:
        LD (span_pattern),HL
        PUSH DE
        LD L,A                  ; PLANE + 80 * line
        LD H,0
        LD D,H
        LD E,L
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD DE,PLANE
        ADD HL,DE
        LD A,C
        CALL span_mask
        LD (span_left),A
        CALL span_byte            ; BC / 8
        LD B,0
        ADD HL,BC
        LD (span_address),HL
        LD H,C
        POP BC
        LD A,C
        AND 7
        INC A
        CALL span_mask          ; columns right of the last one, inverted
        CPL
        LD L,A
        LD A,C
        AND 7
        CP 7
        JR NZ,_edge
        LD L,0FFh
_edge:  CALL span_byte
        LD A,C
        SUB H
        LD (span_bytes),A
        JR NZ,_wide
        LD A,(span_left)        ; one byte only
        AND L
        LD (span_left),A
_wide:  LD A,L
        LD (span_right),A

        LD C,SELECT_BLUE
_plane: OUT (C),A
        LD HL,(span_pattern)
        LD E,(HL)               ; the pattern of this plane
        INC HL
        LD (span_pattern),HL
        LD HL,(span_address)
        LD A,(span_left)
        CALL _merge
        LD A,(span_bytes)
        OR A
        JR Z,_next
        LD B,A
        JR _first
_fill:  LD (HL),E
_first: INC HL
        DJNZ _fill
        LD A,(span_right)
        CALL _merge
_next:  INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A
        RET
; The pixels of (HL) that are set in the mask A take the pattern E.
_merge: LD D,A
        LD A,(HL)
        XOR E
        CPL
        OR D
        CPL                     ; (old XOR pattern) AND NOT mask
        XOR E
        LD (HL),A
        RET

; A = mask of the columns from A (its low three bits) to the end of the byte.
span_mask:
        PUSH BC
        AND 7
        LD B,A
        LD A,0FFh
        JR Z,_done
_shift: SRL A
        DJNZ _shift
_done:  POP BC
        RET

; C = BC / 8 of a column BC. Keeps A.
span_byte:
        SRL B
        RR C
        SRL B
        RR C
        SRL C
        RET

; The picture: a sun that sets behind mountains, over a plain of lines. 304 x 72 dots.

PX              EQU 320
PY              EQU 48
PICTURE_WIDTH           EQU 304
PICTURE_HEIGHT          EQU 72
PICTURE_HORIZON         EQU 42          ; line of the picture
PICTURE_CENTRE          EQU PX + PICTURE_WIDTH / 2

picture:
        CALL picture_sky
        CALL picture_stars
        CALL picture_sun
        CALL picture_mountains
        JP picture_plain

; Bands from night to dusk. Even and odd lines take different patterns, so that colours mix.
picture_sky:
        LD IX,sky_bands
        LD E,PY
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
        LD BC,PX
        LD DE,PX + PICTURE_WIDTH - 1
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
        LD HL,picture_white
        CALL span
        LD BC,4
        ADD IX,BC
        POP BC
        DJNZ _star
        RET

; Half widths a line; where there is none, the sky shows through.
picture_sun:
        LD IX,sun_lines
        LD E,PY + 6
_line:  LD A,(IX + 0)
        OR A
        JR Z,_next
        PUSH DE
        LD C,A
        LD B,0
        LD HL,PICTURE_CENTRE
        ADD HL,BC
        PUSH HL
        LD HL,PICTURE_CENTRE - 1
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        LD HL,picture_yellow
        LD A,E
        CP PY + 19
        JR C,_draw
        LD HL,picture_orange_0
        RRA
        JR C,_odd
        LD HL,picture_orange_1
_odd:   LD A,E
        CP PY + 31
        JR C,_draw
        LD HL,picture_red
_draw:  LD A,E
        POP DE
        CALL span
        POP DE
_next:  INC IX
        INC E
        LD A,E
        CP PY + PICTURE_HORIZON
        JR NZ,_line
        RET

; Black, with a lit edge, from both sides.
picture_mountains:
        LD IX,mountain_lines
        LD E,PY + 22
_line:  PUSH DE
        LD A,E
        LD L,(IX + 0)
        LD H,0
        LD DE,PX
        ADD HL,DE
        PUSH HL
        EX DE,HL                ; DE the edge
        LD BC,PX
        LD HL,picture_black
        PUSH AF
        CALL span
        POP AF
        POP DE
        LD B,D
        LD C,E
        INC DE
        INC DE
        LD HL,picture_cyan
        PUSH AF
        CALL span
        POP AF

        LD C,(IX + 20)
        LD B,0
        LD HL,PX + PICTURE_WIDTH - 1
        PUSH AF
        OR A
        SBC HL,BC
        POP AF
        PUSH HL
        LD B,H
        LD C,L
        LD DE,PX + PICTURE_WIDTH - 1
        LD HL,picture_black
        PUSH AF
        CALL span
        POP AF
        POP DE
        LD B,D
        LD C,E
        DEC BC
        DEC BC
        LD HL,picture_cyan
        CALL span
        POP DE
        INC IX
        INC E
        LD A,E
        CP PY + PICTURE_HORIZON
        JR NZ,_line
        RET

; A bright horizon; level lines that grow apart; lines that run from the horizon towards the viewer.
picture_plain:
        LD E,PY + PICTURE_HORIZON
_clear: PUSH DE
        LD A,E
        LD HL,picture_black
        CALL whole_line
        POP DE
        INC E
        LD A,E
        CP PY + PICTURE_HEIGHT
        JR NZ,_clear

        LD HL,level_lines
_level: LD A,(HL)
        OR A
        JR Z,_runs
        INC HL
        PUSH HL
        LD HL,picture_magenta
        CALL whole_line
        POP HL
        JR _level

_runs:  LD DE,160               ; distance of neighbouring lines, 1/16 dot
        LD A,PY + PICTURE_HORIZON + 1
_line:  LD HL,0                 ; distance from the middle
_dot:   PUSH HL
        PUSH DE
        PUSH AF
        LD B,4
_whole: SRL H
        RR L
        DJNZ _whole
        PUSH HL
        LD BC,PICTURE_CENTRE
        ADD HL,BC
        LD B,H
        LD C,L
        CALL plain_dot
        POP BC
        LD HL,PICTURE_CENTRE
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
        LD BC,PICTURE_WIDTH / 2 * 16
        PUSH HL
        OR A
        SBC HL,BC
        POP HL
        JR C,_dot
        LD HL,24
        ADD HL,DE
        EX DE,HL
        INC A
        CP PY + PICTURE_HEIGHT
        JR NZ,_line

        LD A,PY + PICTURE_HORIZON
        LD HL,picture_white
        JP whole_line

; A dot of the plain at column BC, line A. Keeps A.
plain_dot:
        LD D,B
        LD E,C
        LD HL,picture_magenta
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
        DEFB PY + 44, PY + 46, PY + 49, PY + 53, PY + 58, PY + 64, PY + 71, 0
stars:
        DEFW PX + 9, PY + 3, PX + 31, PY + 9, PX + 52, PY + 2, PX + 71, PY + 14
        DEFW PX + 25, PY + 16, PX + 88, PY + 6, PX + 12, PY + 13, PX + 104, PY + 10
        DEFW PX + 201, PY + 4, PX + 222, PY + 12, PX + 240, PY + 3, PX + 262, PY + 9
        DEFW PX + 283, PY + 2, PX + 296, PY + 14, PX + 250, PY + 17, PX + 275, PY + 18
        DEFW PX + 44, PY + 20, PX + 190, PY + 2, PX + 120, PY + 1, PX + 60, PY + 9
        DEFW PX + 300, PY + 7

picture_black:
        DEFB 000h,000h,000h
picture_white:
        DEFB 0FFh,0FFh,0FFh
picture_yellow:
        DEFB 000h,0FFh,0FFh
picture_orange_0:
        DEFB 000h,0FFh,0AAh
picture_orange_1:
        DEFB 000h,0FFh,055h
picture_red:
        DEFB 000h,0FFh,000h
picture_cyan:
        DEFB 0FFh,000h,0FFh
picture_magenta:
        DEFB 0FFh,0FFh,000h

; ---- What is shown

demo_screen:
        DEFB L_FRAME,5,1,35,9,L_INK,I_YELLOW," Characters "
        DEFB L_FRAME,5,39,38,9,L_INK,I_YELLOW," Graphics "
        DEFB L_FRAME,16,1,35,3,L_INK,I_YELLOW," Attributes "
        DEFB L_FRAME,16,39,38,3,L_INK,I_YELLOW," Semigraphics and PCG "
        DEFB L_FRAME,21,1,76,2,L_INK,I_YELLOW," Type here; STOP goes back "
        DEFB L_AT,1,25,L_INK,I_WHITE,"Demonstration"
        DEFB L_AT,2,25,L_INK,I_CYAN,"Z80A 3.9936 MHz, RAM 64 KB, graphics 640 x 200 x 3"
        DEFB L_AT,6,5,"0123456789ABCDEF0123456789ABCDEF"
        DEFB L_AT,7,2,"00 ",L_INK,I_WHITE,L_CODES,32,000h
        DEFB L_AT,8,2,L_INK,I_CYAN,"20 ",L_INK,I_WHITE,L_CODES,32,020h
        DEFB L_AT,9,2,L_INK,I_CYAN,"40 ",L_INK,I_WHITE,L_CODES,32,040h
        DEFB L_AT,10,2,L_INK,I_CYAN,"60 ",L_INK,I_WHITE,L_CODES,32,060h
        DEFB L_AT,11,2,L_INK,I_CYAN,"80 ",L_INK,I_WHITE,L_CODES,32,080h
        DEFB L_AT,12,2,L_INK,I_CYAN,"A0 ",L_INK,I_WHITE,L_CODES,32,0A0h
        DEFB L_AT,13,2,L_INK,I_CYAN,"C0 ",L_INK,I_WHITE,L_CODES,32,0C0h
        DEFB L_AT,14,2,L_INK,I_CYAN,"E0 ",L_INK,I_WHITE,L_CODES,32,0E0h
        DEFB L_AT,17,3,"Colours",L_INK,I_BLACK," "
        DEFB L_INK,I_BLACK + I_REVERSE," 0 ",L_INK,I_BLUE + I_REVERSE," 1 ",L_INK,I_RED + I_REVERSE," 2 "
        DEFB L_INK,I_MAGENTA + I_REVERSE," 3 ",L_INK,I_GREEN + I_REVERSE," 4 ",L_INK,I_CYAN + I_REVERSE," 5 "
        DEFB L_INK,I_YELLOW + I_REVERSE," 6 ",L_INK,I_WHITE + I_REVERSE," 7 "
        DEFB L_AT,18,3," reverse ",L_INK,I_WHITE,"  ",L_INK,I_WHITE + I_BLINK,"blink",L_INK,I_WHITE,"  "
        DEFB L_INK,I_WHITE + I_UNDER,"under",L_INK,I_WHITE
        DEFB L_AT,19,4,"secret (",L_INK,I_WHITE + I_SECRET,"hidden",L_INK,I_WHITE,")  "
        DEFB L_INK,I_WHITE + I_BLINK + I_REVERSE," both "
        DEFB L_AT,17,40,L_INK,I_GREEN + I_SEMIGRAPHIC
        DEFB L_CELLS,19,000h,000h,000h,000h,080h,0C8h,0EEh,0FEh,0FFh,0FFh,0EFh,0EEh,08Ch,008h,000h,000h,000h,000h,000h
        DEFB L_CELLS,19,000h,000h,000h,000h,080h,0C8h,0EEh,0FEh,0FFh,0FFh,0EFh,0EEh,08Ch,008h,000h,000h,000h,000h,000h
        DEFB L_AT,18,40
        DEFB L_CELLS,19,088h,088h,0CCh,0FEh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0EFh,0CCh,088h,088h,000h
        DEFB L_CELLS,19,088h,088h,0CCh,0FEh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0FFh,0EFh,0CCh,088h,088h,000h
        DEFB L_AT,DEMO_HINT_ROW,3,L_INK,I_WHITE," F1 ",L_INK,I_CYAN,"melody "
        DEFB L_AT,DEMO_HINT_ROW,17,L_INK,I_WHITE," F2 "
demo_ink_name:
        DEFB "ink ",L_END
demo_ink_at:
        DEFB L_AT,DEMO_HINT_ROW,21,L_END
demo_high:
        DEFB L_AT,DEMO_HINT_ROW,28,L_INK,I_WHITE," F3 ",L_INK,I_CYAN,"reverse "
        DEFB L_AT,DEMO_HINT_ROW,43,L_INK,I_WHITE," F4 ",L_INK,I_CYAN,"PCG "
        DEFB L_AT,DEMO_HINT_ROW,54,L_INK,I_WHITE," F5 ",L_INK,I_CYAN,"picture "
        DEFB L_AT,DEMO_COUNT_ROW,25,"24 kHz monitor"
        DEFB L_AT,DEMO_COUNT_ROW,55,"VRTC"
demo_logo_place:
        DEFB L_AT,2,1,L_END
demo_standard:
        DEFB L_AT,DEMO_COUNT_ROW,25,L_INK,I_CYAN,"15",L_END
demo_count_at:
        DEFB L_AT,DEMO_COUNT_ROW,60,L_INK,I_WHITE,L_END
demo_walk_ink:
        DEFB L_INK,I_YELLOW,L_END
demo_typing:
        DEFB L_AT,DEMO_TYPE_ROW,2,L_INK,I_WHITE,L_FILL,76," "
        DEFB L_AT,DEMO_TYPE_ROW + 1,2,L_FILL,76," ",L_END

; Each row: its attribute, then its cells.
demo_logo:
        DEFB I_WHITE + I_SEMIGRAPHIC
        DEFB 0FFh,00Fh,000h,0C8h,07Eh,013h,000h,0F0h,0FFh,000h,070h,0FFh,008h,000h,000h,0F8h,07Fh,000h,000h,000h
        DEFB I_YELLOW + I_SEMIGRAPHIC
        DEFB 0FFh,06Fh,0F6h,099h,000h,000h,000h,0F0h,0FFh,000h,000h,071h,0EFh,008h,0E8h,07Fh,001h,000h,000h,000h
        DEFB I_RED + I_SEMIGRAPHIC
        DEFB 0FFh,00Fh,000h,031h,0E7h,08Ch,000h,0F0h,0FFh,000h,000h,000h,031h,0EFh,03Fh,001h,000h,000h,000h,000h

; Each line: its number, then the pattern of blue, red and green.
demo_lines:
        DEFB 7,080h,000h,000h   ; between the rows of text, then below them
        DEFB 15,088h,000h,000h
        DEFB 23,0AAh,000h,000h
        DEFB 31,0EEh,000h,000h
        DEFB 33,0FFh,000h,000h
        DEFB 34,0FFh,000h,000h
        DEFB 35,0FFh,088h,000h
        DEFB 36,0FFh,0AAh,000h
        DEFB 37,0FFh,0FFh,000h
        DEFB 0FFh
demo_sample:
        DEFB 0FFh,0AAh,000h

; Two poses of 16 x 8 dots, left half and right half.
demo_figures:
        DEFB 00001000b
        DEFB 00011111b
        DEFB 00111001b
        DEFB 01111111b
        DEFB 01011111b
        DEFB 01010000b
        DEFB 00001100b
        DEFB 00000000b
        DEFB 00010000b
        DEFB 11111000b
        DEFB 10011100b
        DEFB 11111110b
        DEFB 11111010b
        DEFB 00001010b
        DEFB 00110000b
        DEFB 00000000b
        DEFB 00001000b
        DEFB 01011111b
        DEFB 01111001b
        DEFB 01111111b
        DEFB 00011111b
        DEFB 00001000b
        DEFB 00011000b
        DEFB 00000000b
        DEFB 00010000b
        DEFB 11111010b
        DEFB 10011110b
        DEFB 11111110b
        DEFB 11111000b
        DEFB 00010000b
        DEFB 00011000b
        DEFB 00000000b

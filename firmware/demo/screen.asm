; The text screen: CRT controller, DMA, characters and attributes.
;
; The CRT controller fetches each row as 80 characters and 20 pairs of a column and an attribute, which
; holds from that column on. Programs want an attribute a cell, so colour and character attribute of every
; cell are kept in RAM, and screen_show_row makes the pairs of a row from them.

; 80 columns, 25 rows, colour; screen empty, cursor off, display started.
screen_init:
        LD A,COLUMNS_80
        OUT (MODE_30),A

        LD A,CRTC_RESET
        OUT (CRTC_COMMAND),A
        LD A,COLUMNS - 2        ; bit 7 clear: DMA in bursts, cheaper than character by character
        OUT (CRTC_PARAMETER),A
        LD A,040h + ROWS - 1    ; blinking every 32 frames
        OUT (CRTC_PARAMETER),A
        LD B,16 - 1             ; raster lines of a row on the 400-line monitor
        IN A,(STATUS)
        AND STATUS_STANDARD
        JR Z,_monitor
        LD B,8 - 1
_monitor:
        LD A,B
        OUT (CRTC_PARAMETER),A
        LD A,0BEh               ; retrace: 6 rows, 31 characters
        OUT (CRTC_PARAMETER),A
        LD A,040h + PAIRS - 1   ; colour attributes
        OUT (CRTC_PARAMETER),A

        LD A,DMA_AUTOLOAD + DMA_STOP + DMA_EXTENDED
        OUT (DMA_MODE),A
        LD A,TEXT AND 0FFh
        OUT (DMA_2_ADDRESS),A
        LD A,TEXT / 256
        OUT (DMA_2_ADDRESS),A
        LD A,0FFh AND (ROWS * ROW_BYTES - 1)
        OUT (DMA_2_COUNT),A
        LD A,DMA_TO_DEVICE + (ROWS * ROW_BYTES - 1) / 256
        OUT (DMA_2_COUNT),A

        CALL screen_clear
        CALL cursor_off
        LD A,DMA_AUTOLOAD + DMA_STOP + DMA_EXTENDED + DMA_CHANNEL_2
        OUT (DMA_MODE),A
        LD A,CRTC_START
        OUT (CRTC_COMMAND),A
        XOR A
        OUT (LAYERS),A
        RET

; Spaces in white everywhere, the next character at the top left.
screen_clear:
        LD HL,COLOURS
        LD DE,COLOURS + 1
        LD BC,ROWS * COLUMNS - 1
        LD (HL),WHITE
        LDIR
        LD HL,ATTRIBUTES
        LD DE,ATTRIBUTES + 1
        LD BC,ROWS * COLUMNS - 1
        LD (HL),ATTR_NORMAL
        LDIR
        LD HL,0
        LD (screen_row),HL      ; and column 0
        LD HL,ATTR_NORMAL * 256 + WHITE
        LD (screen_colour),HL
        LD C,0
_row:   LD E,0
        LD D,C
        CALL screen_address
        LD B,COLUMNS
_cell:  LD (HL)," "
        INC HL
        DJNZ _cell
        LD A,C
        CALL screen_show_row
        INC C
        LD A,C
        CP ROWS
        JR NZ,_row
        RET

; HL = address of the character at row D, column E. Keeps BC and DE.
screen_address:
        LD A,D
        LD HL,text_rows
        JR screen_look_up
; HL = address of the colour of the cell at row D, column E; its attribute is 800h further. Keeps BC, DE.
screen_cell:
        LD A,D
        LD HL,colour_rows
screen_look_up:
        ADD A,A
        ADD A,L
        LD L,A
        JR NC,_look
        INC H
_look:  LD A,(HL)
        INC HL
        LD H,(HL)
        ADD A,E
        LD L,A
        RET NC
        INC H
        RET

; Puts the character A into the cell (screen_row), (screen_column) in the current colour and attribute and
; moves on to the right. Keeps BC, DE, HL. The attributes show after screen_show_row.
screen_character:
        PUSH HL
        PUSH DE
        LD DE,(screen_row)
        LD H,D                  ; row and column lie the other way round in memory
        LD D,E
        LD E,H
        PUSH AF
        CALL screen_address
        POP AF
        LD (HL),A
        CALL screen_cell
        LD A,(screen_colour)
        LD (HL),A
        LD A,H
        ADD A,ATTRIBUTE_STEP
        LD H,A
        LD A,(screen_attribute)
        LD (HL),A
        LD HL,screen_column
        INC (HL)
        POP DE
        POP HL
        RET

; Shows the list at HL: characters and the T_ codes of characters.inc, up to T_END. HL ends behind it.
screen_list:
        LD A,(HL)
        INC HL
        OR A
        RET Z
        CP T_AT
        JR Z,_at
        CP T_INK
        JR Z,_ink
        CP T_ATTR
        JR Z,_attr
        CP T_FILL
        JR Z,_fill
        CP T_CODES
        JR Z,_codes
        CALL screen_character
        JR screen_list
_at:    LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD (screen_row),DE
        JR screen_list
_ink:   LD A,(HL)
        INC HL
        LD (screen_colour),A
        JR screen_list
_attr:  LD A,(HL)
        INC HL
        LD (screen_attribute),A
        JR screen_list
_fill:  LD B,(HL)
        INC HL
_again: LD A,(HL)
        CALL screen_character
        DJNZ _again
        INC HL
        JR screen_list
_codes: LD B,(HL)
        INC HL
        LD C,(HL)
        INC HL
_code:  LD A,C
        CALL screen_character
        INC C
        DJNZ _code
        JR screen_list

; Shows a list of frames at HL: row, column, inner width, inner height, colour, then a title up to T_END;
; ends with a row of FFh.
screen_frames:
        LD A,(HL)
        CP 0FFh
        RET Z
        LD E,A
        INC HL
        LD D,(HL)
        INC HL
        LD (screen_row),DE
        LD B,(HL)               ; width
        INC HL
        LD C,(HL)               ; height
        INC HL
        LD A,(HL)
        INC HL
        LD (screen_colour),A
        PUSH DE
        LD D,CHAR_CORNER_1
        LD E,CHAR_CORNER_2
        CALL frame_line
        POP DE
        PUSH BC
        PUSH DE
        LD A,(screen_colour)
        PUSH AF
        INC D
        INC D
        LD (screen_row),DE
        CALL screen_list        ; the title
        POP AF
        LD (screen_colour),A
        POP DE
        POP BC
_inside:
        INC E
        LD (screen_row),DE
        LD A,CHAR_DOWN
        CALL screen_character
        LD A,(screen_column)
        ADD A,B
        LD (screen_column),A
        LD A,CHAR_DOWN
        CALL screen_character
        DEC C
        JR NZ,_inside
        INC E
        LD (screen_row),DE
        LD D,CHAR_CORNER_3
        LD E,CHAR_CORNER_4
        CALL frame_line
        JR screen_frames
frame_line:
        PUSH BC
        LD A,D
        CALL screen_character
_across:
        LD A,CHAR_ACROSS
        CALL screen_character
        DJNZ _across
        LD A,E
        CALL screen_character
        POP BC
        RET

; Makes the attribute pairs of row A from its cells. Keeps BC, DE, HL.
; Of two pairs at one column the second is lost. So where colour and attribute change together, the attribute
; follows a column later: leave a space there. More than 20 changes do not fit; the rest of the row then keeps
; what was last. A row ends with normal attributes, for they flow into the next one.
screen_show_row:
        PUSH HL
        PUSH DE
        PUSH BC
        LD D,A
        LD E,COLUMNS
        CALL screen_address
        PUSH HL
        LD E,0
        CALL screen_cell
        POP DE                  ; DE pairs, HL cells
        LD BC,PAIRS * 256       ; B pairs left, C column
        EXX
        LD BC,0                 ; C' colour, B' attribute; a colour of 0 is none, so that column 0 sets one
        EXX
_cell:  LD A,(HL)
        EXX
        CP C
        EXX
        JR Z,_same
        EXX
        LD C,A
        EXX
        JR _pair
_same:  PUSH HL
        LD A,H
        ADD A,ATTRIBUTE_STEP
        LD H,A
        LD A,(HL)
        POP HL
        EXX
        CP B
        LD B,A
        EXX
        JR Z,_next
_pair:  EX DE,HL
        LD (HL),C
        INC HL
        LD (HL),A
        INC HL
        EX DE,HL
        DEC B
        JR Z,_full
_next:  INC HL
        INC C
        LD A,C
        CP COLUMNS
        JR NZ,_cell
        EX DE,HL
_rest:  LD (HL),COLUMNS         ; no more changes in this row
        INC HL
        LD (HL),0
        INC HL
        DJNZ _rest
_full:  POP BC
        POP DE
        POP HL
        RET

; Makes the attribute pairs of all rows.
screen_show:
        LD C,0
_row:   LD A,C
        CALL screen_show_row
        INC C
        LD A,C
        CP ROWS
        JR NZ,_row
        RET

; Shows the cursor at (cursor_row), (cursor_column).
cursor_show:
        LD A,CRTC_CURSOR_ON
cursor_set:
        OUT (CRTC_COMMAND),A
        LD A,(cursor_column)
        OUT (CRTC_PARAMETER),A
        LD A,(cursor_row)
        OUT (CRTC_PARAMETER),A
        RET
cursor_off:
        LD A,CRTC_CURSOR_OFF
        JR cursor_set

; Writes HL as five decimal digits at (screen_row), (screen_column).
screen_number:
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
        JP screen_character
_digit: LD A,"0" - 1
_count: INC A
        OR A
        SBC HL,DE
        JR NC,_count
        ADD HL,DE
        JP screen_character

; Writes the BCD byte A as two digits.
screen_bcd:
        PUSH AF
        RRCA
        RRCA
        RRCA
        RRCA
        CALL _half
        POP AF
_half:  AND 00Fh
        ADD A,"0"
        JP screen_character

text_rows:
        DEFW TEXT, TEXT + 120, TEXT + 240, TEXT + 360, TEXT + 480
        DEFW TEXT + 600, TEXT + 720, TEXT + 840, TEXT + 960, TEXT + 1080
        DEFW TEXT + 1200, TEXT + 1320, TEXT + 1440, TEXT + 1560, TEXT + 1680
        DEFW TEXT + 1800, TEXT + 1920, TEXT + 2040, TEXT + 2160, TEXT + 2280
        DEFW TEXT + 2400, TEXT + 2520, TEXT + 2640, TEXT + 2760, TEXT + 2880
colour_rows:
        DEFW COLOURS, COLOURS + 80, COLOURS + 160, COLOURS + 240, COLOURS + 320
        DEFW COLOURS + 400, COLOURS + 480, COLOURS + 560, COLOURS + 640, COLOURS + 720
        DEFW COLOURS + 800, COLOURS + 880, COLOURS + 960, COLOURS + 1040, COLOURS + 1120
        DEFW COLOURS + 1200, COLOURS + 1280, COLOURS + 1360, COLOURS + 1440, COLOURS + 1520
        DEFW COLOURS + 1600, COLOURS + 1680, COLOURS + 1760, COLOURS + 1840, COLOURS + 1920

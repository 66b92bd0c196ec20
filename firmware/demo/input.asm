; The typing area: a part of the screen with a cursor, into which the keyboard types.

; In: B, C first row and column; D, E rows and columns. Empty, the cursor at its top left.
input_init:
        LD A,B
        LD (input_top),A
        LD A,C
        LD (input_left),A
        LD A,D
        LD (input_rows),A
        LD A,E
        LD (input_columns),A
        LD A,INK
        LD (input_ink),A
        CALL input_clear
        JP cursor_show

; Takes the next key, if one waits, and does what it says. A = the CTRL_ code of a key that means nothing to
; typing (function keys), else 0.
input_key:
        CALL keyboard_key
        LD C,A
        LD A,0
        RET NC
        LD A,C
        CALL keyboard_character
        CALL input_do
        PUSH AF
        CALL cursor_show
        POP AF
        RET

; The character or CTRL_ code A. Result as input_key.
input_do:
        CP " "
        JR NC,input_character
        CP CTRL_RETURN
        JR Z,input_new_line
        CP CTRL_DELETE
        JP Z,input_delete
        CP CTRL_INSERT
        JP Z,input_insert
        CP CTRL_LEFT
        JP Z,input_to_left
        CP CTRL_RIGHT
        JP Z,input_to_right
        CP CTRL_UP
        JP Z,input_up
        CP CTRL_DOWN
        JP Z,input_down
        CP CTRL_HOME
        JP Z,input_clear
        CP CTRL_KANA
        JR Z,_kana
        CP CTRL_F1
        JR C,input_error
        CP CTRL_F5 + 1
        RET C                   ; the caller's
        JR input_error
_kana:  LD A,(key_kana)
        XOR 1
        LD (key_kana),A
        XOR A
        RET

; A key that does nothing here.
input_error:
        CALL sound_beep
        XOR A
        RET

; Types the character A.
input_character:
        LD HL,(cursor_row)
        LD (screen_row),HL
        LD HL,(input_ink)       ; and
        LD H,ATTR_NORMAL
        LD (screen_colour),HL
        CALL screen_character
        LD A,(cursor_row)
        CALL screen_show_row
        CALL input_last_column
        LD HL,cursor_column
        CP (HL)
        JR Z,input_new_line
        INC (HL)
        XOR A
        RET

; To the start of the next line; at the last one the area scrolls.
input_new_line:
        LD A,(input_left)
        LD (cursor_column),A
        CALL input_last_row
        LD HL,cursor_row
        CP (HL)
        JR Z,_scroll
        INC (HL)
        XOR A
        RET
_scroll:
        LD A,(input_top)
        LD D,A
_row:   CALL input_last_row
        CP D
        JR Z,_last
        LD A,(input_left)
        LD E,A
        CALL screen_cell
        LD BC,COLUMNS
        CALL input_copy_up
        CALL screen_address
        LD BC,ROW_BYTES
        CALL input_copy_up
        LD A,D
        CALL screen_show_row
        INC D
        JR _row
_last:  CALL input_clear_row
        XOR A
        RET
; Copies a line to HL from BC bytes further. Keeps DE.
input_copy_up:
        PUSH DE
        LD D,H
        LD E,L
        ADD HL,BC
        CALL input_line_length
        LDIR
        POP DE
        RET

; Deletes the character left of the cursor; the rest of the line moves up to it.
input_delete:
        LD HL,(cursor_row)
        PUSH HL
        CALL input_to_left
        POP DE
        LD HL,(cursor_row)
        OR A
        SBC HL,DE
        RET Z                   ; nothing left of it
        CALL input_rest
        JR Z,_end
_next:  INC HL                  ; characters
        LD A,(HL)
        DEC HL
        LD (HL),A
        INC HL
        EX DE,HL                ; colours
        INC HL
        LD A,(HL)
        DEC HL
        LD (HL),A
        INC HL
        EX DE,HL
        DJNZ _next
_end:   LD (HL)," "
        LD A,(cursor_row)
        CALL screen_show_row
        XOR A
        RET

; Makes room for a character at the cursor; the last one of the line is lost.
input_insert:
        CALL input_rest
        JR Z,_end
        LD C,B
        LD B,0
        ADD HL,BC
        EX DE,HL
        ADD HL,BC
        EX DE,HL
        LD B,C
_next:  DEC HL
        LD A,(HL)
        INC HL
        LD (HL),A
        DEC HL
        EX DE,HL
        DEC HL
        LD A,(HL)
        INC HL
        LD (HL),A
        DEC HL
        EX DE,HL
        DJNZ _next
_end:   LD (HL)," "
        LD A,(cursor_row)
        CALL screen_show_row
        XOR A
        RET

; HL, DE = character and colour at the cursor; B = cells right of it, Z when there are none.
input_rest:
        LD DE,(cursor_row)
        LD A,D
        LD D,E
        LD E,A
        CALL screen_cell
        PUSH HL
        CALL screen_address
        POP DE
        CALL input_last_column
        PUSH HL
        LD HL,cursor_column
        SUB (HL)
        POP HL
        LD B,A
        RET

input_to_left:
        LD HL,cursor_column
        LD A,(input_left)
        CP (HL)
        JR Z,_edge
        DEC (HL)
        XOR A
        RET
_edge:  LD A,(input_top)
        LD HL,cursor_row
        CP (HL)
        JP Z,input_error
        DEC (HL)
        CALL input_last_column
        LD (cursor_column),A
        XOR A
        RET

input_to_right:
        CALL input_last_column
        LD HL,cursor_column
        CP (HL)
        JR Z,_edge
        INC (HL)
        XOR A
        RET
_edge:  CALL input_last_row
        LD HL,cursor_row
        CP (HL)
        JP Z,input_error
        JP input_new_line

input_up:
        LD A,(input_top)
        LD HL,cursor_row
        CP (HL)
        JP Z,input_error
        DEC (HL)
        XOR A
        RET

input_down:
        CALL input_last_row
        LD HL,cursor_row
        CP (HL)
        JP Z,input_error
        INC (HL)
        XOR A
        RET

; Empties the area; the cursor goes to its top left.
input_clear:
        LD A,(input_left)
        LD (cursor_column),A
        LD A,(input_top)
        LD (cursor_row),A
        LD D,A
_row:   CALL input_clear_row
        CALL input_last_row
        SUB D                   ; 0 after the last one
        RET Z
        INC D
        JR _row

; Empties row D of the area. Keeps D.
input_clear_row:
        LD A,(input_left)
        LD E,A
        CALL screen_address
        PUSH HL
        CALL screen_cell
        CALL input_line_length
        LD B,C
_colour:
        LD (HL),INK
        INC HL
        DJNZ _colour
        POP HL
        LD B,C
_space: LD (HL)," "
        INC HL
        DJNZ _space
        LD A,D
        JP screen_show_row

; BC = cells of a line.
input_line_length:
        LD A,(input_columns)
        LD C,A
        LD B,0
        RET
; A = the last row, the last column. Keep BC, DE, HL.
input_last_row:
        PUSH HL
        LD HL,input_rows
        LD A,(input_top)
        JR input_sum
input_last_column:
        PUSH HL
        LD HL,input_columns
        LD A,(input_left)
input_sum:
        ADD A,(HL)
        DEC A
        POP HL
        RET

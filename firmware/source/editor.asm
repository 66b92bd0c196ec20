; The screen editor: the cursor goes anywhere, RETURN takes the line under it.
;
;   editor          L, H = row and column where input began, for console_input; L = FFh for console_line
;   console_line    waits for RETURN; line_text = the whole line under the cursor, ended by 0
;   console_input   the same for INPUT: what stands left of the cursor at the call, a prompt, is left out
;                   when RETURN is pressed in the line where it began
;   Both: HL = line_text; C set when STOP was pressed, the text is then empty. The cursor ends at the start of
;   the row below the line.
;
; A line is as long as its rows say: row_continued marks each row that goes on the one above. Blanks at its end
; do not count, and what is longer than LINE_LIMIT is cut.
;
; DEL deletes left of the cursor, SHIFT DEL (INS) switches between writing over and inserting, HOME and
; SHIFT HOME (CLR) go to the start of the window and empty it, TAB goes to the next eighth column, CTRL E
; deletes up to the line's end.

LINE_LIMIT      EQU 255

editor: LD (edit_row),HL
        XOR A
        LD (edit_insert),A
_next:  CALL key_wait
        CP CTRL_STOP
        JR Z,_stop
        CP CTRL_RETURN
        JP Z,editor_return
        LD HL,_next
        PUSH HL
        CP " "
        JP NC,editor_type
        LD HL,editor_keys
        LD B,editor_keys_count
_look:  CP (HL)
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        JR Z,_found
        DJNZ _look
        RET
_found: EX DE,HL
        JP (HL)
_stop:  CALL sound_stop
        CALL editor_line
        CALL editor_leave
        LD HL,line_text
        LD (HL),0
        XOR A
        LD (stop_flag),A
        SCF
        RET

editor_keys:
        DEFB CTRL_LEFT
        DEFW cursor_to_left
        DEFB CTRL_RIGHT
        DEFW cursor_to_right
        DEFB CTRL_UP
        DEFW cursor_to_up
        DEFB CTRL_DOWN
        DEFW cursor_to_down
        DEFB CTRL_DELETE
        DEFW editor_delete
        DEFB CTRL_INSERT
        DEFW editor_insert
        DEFB CTRL_HOME
        DEFW console_home
        DEFB 00Ch
        DEFW console_clear
        DEFB CTRL_TAB
        DEFW editor_tab
        DEFB 005h
        DEFW editor_erase
editor_keys_count EQU ($ - editor_keys) / 3

; Takes the line under the cursor.
editor_return:
        CALL editor_line
        XOR A
        LD (line_from),A
        LD A,(edit_row)         ; input began in this line: the text begins there
        LD D,A
        LD A,(edit_first)
        LD E,A
        LD A,D
        INC A
        JR Z,_whole
        LD A,(edit_last)
        CP D
        JR C,_whole
        LD A,D
        CP E
        JR C,_whole
        LD A,(edit_column)
        LD (line_from),A
        LD E,D
_whole: LD D,E                  ; first row
        LD BC,line_text
_row:   PUSH DE
        LD E,0
        CALL console_address    ; HL the row's characters
        POP DE
        CALL editor_cells
        LD A,(screen_columns)
        LD E,A
        LD A,(line_from)
        OR A
        JR Z,_char
        PUSH BC
        LD C,A
        LD B,0
        ADD HL,BC
        ADD IX,BC
        LD A,E
        SUB C
        LD E,A
        LD A,(screen_columns)
        CP 80
        JR Z,_skipped
        ADD HL,BC
        ADD IX,BC
_skipped:
        XOR A
        LD (line_from),A
        POP BC
        OR E
        JR Z,_below             ; it began behind the last column
_char:  LD A,C                  ; LINE_LIMIT characters are enough
        SUB line_text AND 0FFh
        INC A
        JR Z,_skip
        LD A,(edit_cells)
        OR A
        JR Z,_text
        DEC A
        JR NZ,_blank
        BIT 4,(IX + 0)          ; CELL_SEMIGRAPHIC
        JR Z,_text
_blank: LD A," "                ; a drawing is no text
        JR _store
_text:  LD A,(HL)
        OR A
        JR Z,_blank
_store: LD (BC),A
        INC BC
_skip:  INC HL
        INC IX
        LD A,(screen_columns)
        CP 80
        JR Z,_wide
        INC HL
        INC IX
_wide:  DEC E
        JR NZ,_char
_below: ; and
        IF NBASIC
        ELSE
        LD A,(edit_cells)
        DEC A
        CALL Z,cells_close
        ENDIF
        LD A,(edit_last)
        CP D
        JR Z,_trim
        INC D
        JR _row
_trim:  LD A,C                  ; blanks at the end
        CP line_text AND 0FFh
        JR NZ,_any
        LD A,B
        CP line_text / 256
        JR Z,_end
_any:   DEC BC
        LD A,(BC)
        CP " "
        JR Z,_trim
        INC BC
_end:   XOR A
        LD (BC),A
        CALL editor_leave
        LD HL,line_text
        OR A
        RET

; edit_cells = 0: row D is text; 1: IX points to its cells; else it is a drawing. Keeps BC, DE, HL.
editor_cells:
        PUSH HL
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(HL)
        CP ROW_MIXED
        JR Z,_mixed
        AND CELL_SEMIGRAPHIC
        JR _end
_mixed: CALL cells_open
        PUSH HL
        POP IX
        LD A,1
_end:   LD (edit_cells),A
        POP HL
        RET

; edit_first, edit_last = the rows of the line under the cursor. Uses AF, HL.
editor_line:
        LD A,(cursor_row)
        LD HL,row_continued
        ADD A,L
        LD L,A
        LD A,(cursor_row)
        PUSH HL
_up:    LD (edit_first),A
        INC (HL)                ; 0 in the first row of a line
        DEC (HL)
        JR Z,_first
        OR A
        JR Z,_first
        DEC A
        DEC HL
        JR _up
_first: POP HL
        LD A,(cursor_row)
_down:  LD (edit_last),A
        INC A
        INC HL
        PUSH HL
        LD HL,screen_rows
        CP (HL)
        POP HL
        RET Z
        INC (HL)
        DEC (HL)
        JR NZ,_down
        RET

; The cursor goes below the line.
editor_leave:
        LD A,0FFh
        LD (edit_row),A
        LD A,(edit_last)
        LD (cursor_row),A
        JP console_newline

; The character A where the cursor is.
editor_type:
        PUSH AF
        CALL editor_room
        JR C,_full
        LD A,(edit_insert)
        OR A
        CALL NZ,editor_open
        JR C,_full
        POP AF
        CALL console_put
        LD HL,(cursor_row)      ; at the row's end the cursor waits in the next one, if the line has one
        LD A,(screen_columns)
        CP H
        RET NZ
        LD A,(edit_last)
        CP L
        RET Z
        INC L
        LD H,0
        LD (cursor_row),HL
        RET
_full:  POP AF
        JP sound_beep

; The cursor behind the last cell of a row: takes it to the next row of the line, made if there is none.
; C: the line is full.
editor_room:
        CALL editor_line
        LD HL,(cursor_row)
        LD A,(screen_columns)
        CP H
        RET NZ                  ; carry clear: it is on a cell
        LD A,(edit_last)
        CP L
        CALL Z,editor_row
        RET C
        LD HL,(cursor_row)
        INC L
        LD H,0
        LD (cursor_row),HL
        OR A
        RET

; Adds an empty row to the line, below edit_last. C: it has as many as it may.
editor_row:
        LD HL,edit_first
        LD A,(edit_last)
        SUB (HL)
        INC A                   ; rows
        LD B,A
        LD A,(screen_columns)
        CP 80
        LD A,4                  ; as many as LINE_LIMIT needs
        JR Z,_wide
        LD A,7
_wide:  SCF
        CP B
        RET Z
        LD A,(window_bottom)
        LD HL,edit_last
        CP (HL)
        JR Z,_scroll
        LD A,(HL)
        INC A
        LD D,A
        CALL window_down
        JR _mark
_scroll:
        CALL window_up
        LD HL,cursor_row
        DEC (HL)
        LD HL,edit_first
        DEC (HL)
        LD HL,edit_last
        DEC (HL)
_mark:  LD HL,edit_last
        INC (HL)
        LD A,(HL)
        LD HL,row_continued
        ADD A,L
        LD L,A
        LD (HL),1
        OR A
        RET

; Makes room for a character at the cursor: the rest of the line moves on. C: the line is full.
editor_open:
        LD A,(edit_last)        ; a full last row: one more
        LD D,A
        CALL editor_last_cell
        LD A,(HL)
        CP " "
        JR Z,_room
        OR A
        CALL NZ,editor_row
        RET C
_room:  LD A,(edit_last)
        LD D,A
_row:   LD A,(cursor_row)
        CP D
        JR Z,_there
        CALL editor_last_cell   ; a whole row moves on by one; its first cell takes the last of the row above
        LD A,(screen_columns)
        DEC A
        CALL editor_shift
        DEC D
        PUSH HL
        CALL editor_last_cell
        LD A,(HL)
        POP HL
        LD (HL),A
        JR _row
_there: CALL editor_last_cell
        LD A,(cursor_column)
        LD B,A
        LD A,(screen_columns)
        DEC A
        SUB B
        CALL editor_shift
        LD (HL)," "
        OR A
        RET
; Moves A cells, the last of which goes to HL, on by one; HL ends at the cell that is free. Keeps DE.
editor_shift:
        OR A
        RET Z
        LD B,A
        CALL editor_step        ; BC = -1 or -2, A = cells
_cell:  PUSH AF
        PUSH HL
        ADD HL,BC
        LD A,(HL)
        EX (SP),HL
        LD (HL),A
        POP HL
        POP AF
        DEC A
        JR NZ,_cell
        RET
editor_step:
        LD A,(screen_columns)
        CP 80
        LD A,B
        LD BC,-1
        RET Z
        DEC BC
        RET
; HL = the last character of row D. Keeps BC, DE.
editor_last_cell:
        PUSH DE
        LD A,(screen_columns)
        CP 80
        LD E,79
        JR Z,_wide
        DEC E
_wide:  CALL console_address
        POP DE
        RET

; Deletes left of the cursor.
editor_delete:
        CALL editor_line
        LD HL,(cursor_row)
        LD A,H
        OR A
        JR NZ,_left
        LD A,(edit_first)
        CP L
        RET Z                   ; the start of the line
_left:  CALL cursor_to_left
; Deletes at the cursor: the rest of the line moves up.
editor_close:
        LD HL,(cursor_row)
        LD D,L
        LD A,H
        LD E,A
        LD A,(screen_columns)
        CP 80
        JR Z,_wide
        SLA E
_wide:  PUSH DE
        CALL console_address
        POP DE
        LD A,(cursor_column)
        LD B,A
_row:   LD A,(screen_columns)
        DEC A
        SUB B                   ; cells behind it in this row
        LD B,A
        CALL editor_step
        LD B,A
        LD A,C                  ; distance of cells
        NEG
        LD C,A
        LD A,B
        LD B,0
        OR A
        JR Z,_last
_cell:  PUSH AF
        PUSH HL
        ADD HL,BC
        LD A,(HL)
        EX (SP),HL
        LD (HL),A
        POP HL
        POP AF
        DEC A
        JR NZ,_cell
_last:  LD (HL)," "
        LD A,(edit_last)
        CP D
        RET Z
        INC D                   ; the next row's first cell moves up
        PUSH HL
        LD E,0
        CALL console_address
        LD A,(HL)
        EX (SP),HL
        LD (HL),A
        POP HL
        LD B,0
        JR _row

editor_insert:
        LD HL,edit_insert
        LD A,(HL)
        XOR 1
        LD (HL),A
        RET

editor_tab:
        LD HL,cursor_column
        LD A,(HL)
        OR 7
        INC A
        LD B,A
        LD A,(screen_columns)
        DEC A
        CP B
        JR C,_edge
        LD A,B
_edge:  LD (HL),A
        RET

; Deletes from the cursor to the line's end.
editor_erase:
        CALL editor_line
        LD HL,(cursor_row)
        LD D,L
        LD B,H
_row:   LD E,B
        LD A,(screen_columns)
        CP 80
        JR Z,_wide
        SLA E
_wide:  CALL console_address
        LD A,80
        SUB E
        JR Z,_next
        LD E,A
_cell:  LD (HL)," "
        INC HL
        DEC E
        JR NZ,_cell
_next:  LD B,0
        LD A,(edit_last)
        CP D
        RET Z
        INC D
        JR _row

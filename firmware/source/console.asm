; Console: what the screen shows, and where the next character goes.
;
;   console_init            80 x 25, colour, empty, display started
;   console_out             A: a character, or a control code: 07 beep, 08 left and delete, 09 tab, 0A down,
;                           0B home, 0C clear, 0D start of the row, 1C right, 1D left, 1E up, 1F down
;   console_text            HL: text ended by 0; HL ends behind it
;   console_newline         start of the next row; scrolls at the end of the window
;   console_fresh           the same, unless the cursor is at the start of a row
;   console_column, console_row   A = where the cursor is
;   console_locate          D row, E column: cursor there
;   console_clear           empties the window, cursor to its start
;   console_colour          A = colour 0-7, C = function bits (1 secret, 2 blink, 4 reverse, 8 underline)
;   console_width           D rows (25 or 20), E columns (80 or 40): sets the display, empties it
;   console_window          D first row, E last row: rows that scroll
;   console_mono            A 0: colours; 1: monochrome
;   console_line, console_input   the screen editor (editor.asm), from wherever the call comes
; All but console_out keep no register unless they say so; console_out and console_newline keep BC, DE, HL.
;
; The CRT controller fetches a row as 80 characters and 20 pairs of a column and an attribute that holds from
; there on. Nearly every row has one attribute in all its cells: row_attributes tells it. Rows of more than one
; keep an attribute a cell in CELLS. Their pairs are made anew when the next retrace comes, or another row needs
; it, so the order is always: characters, then attributes, and both before the picture is drawn.

ROW_MIXED       EQU 0FFh        ; in row_attributes: CELLS tells
INK_WHITE       EQU 0E0h        ; cell attributes
CELL_FUNCTION   EQU 00Fh        ; their bits that are no colour
CELL_SEMIGRAPHIC EQU 010h
CELL_UNDERLINE  EQU 008h
CELL_REVERSE    EQU 004h

; ---- The way to the editor, which lies where the expansion ROM may stand

console_input:
        LD HL,(cursor_row)
        JR console_edit
console_line:
        LD HL,000FFh
console_edit:
        IF NBASIC
        JP editor
        ELSE
        IN A,(EXPANSION)
        PUSH AF
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        CALL editor
        EX (SP),HL
        PUSH AF
        LD A,H
        OUT (EXPANSION),A
        POP AF
        POP HL
        RET
        ENDIF

; ---- Output

console_text:
        LD A,(HL)
        INC HL
        OR A
        RET Z
        CALL console_out
        JR console_text

console_out:
        PUSH HL
        PUSH DE
        PUSH BC
        CP " "
        JR C,_control
        CALL console_put
_end:   POP BC
        POP DE
        POP HL
        RET
_control:
        LD HL,_end
        PUSH HL
        CP 007h
        JP Z,sound_beep
        CP 00Bh
        JP Z,console_home
        CP 00Ch
        JP Z,console_clear
        CP 00Dh
        JR Z,_return
        CP 00Ah
        JP Z,console_down
        CP 009h
        JR Z,_tab
        CP 008h
        JR Z,_back
        SUB 01Ch
        JP Z,cursor_to_right
        DEC A
        JP Z,cursor_to_left
        DEC A
        JP Z,cursor_to_up
        DEC A
        JP Z,cursor_to_down
        RET
_return:
        XOR A
        LD (cursor_column),A
        RET
_tab:   LD A," "
        CALL console_put
        LD A,(cursor_column)
        AND 7
        JR NZ,_tab
        RET
_back:  CALL cursor_to_left
        LD A," "
        CALL console_put
        JP cursor_to_left

; The character A into the cell at the cursor, which moves on. Uses all.
console_put:
        LD C,A
        LD HL,(cursor_row)      ; L row, H column
        LD A,(screen_columns)
        CP H
        JR NZ,_fits
        PUSH BC
        CALL console_wrap
        POP BC
        LD HL,(cursor_row)
        LD A,(screen_columns)
_fits:  LD D,L
        LD E,H
        INC H
        LD (cursor_row),HL
        CP 80
        JR Z,_wide
        SLA E
_wide:  LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(console_ink)
        CP (HL)
        JR NZ,_mixed
        CALL console_address    ; all the row has this attribute
        LD (HL),C
        RET
_mixed: CALL row_flush_other
        CALL retrace_over       ; character and attribute show in the same picture
        CALL console_address
        LD (HL),C
        CALL console_paint
        EI
        RET

; Interrupts off, and the retrace, in which the picture is taken over, not going on. Keeps all but AF.
retrace_over:
        DI
        IN A,(STATUS)
        AND STATUS_VRTC
        RET Z
        EI
        JR retrace_over

; One row at a time waits for the retrace: makes the pairs of another than row D. Keeps all but AF.
row_flush_other:
        LD A,(dirty_row)
        CP D
        RET Z
        JR row_flush

; The cell at row D, column E of 80 takes the attribute console_ink.
console_paint:
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(console_ink)
        CP (HL)
        RET Z
; The same with the attribute A, HL at the row's entry in row_attributes.
cell_paint:
        LD C,A
        CALL row_flush_other
        CALL cells_open
        PUSH HL
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(HL)
        CP ROW_MIXED
        JR Z,_mixed
        EX (SP),HL
        PUSH HL
        LD B,80
_fill:  LD (HL),A
        INC HL
        DJNZ _fill
        POP HL
        EX (SP),HL
        LD (HL),ROW_MIXED
_mixed: POP HL
        LD B,0
        PUSH DE
        LD D,B
        ADD HL,DE
        POP DE
        LD A,(HL)
        CP C
        JR Z,_same
        LD (HL),C
        LD A,(screen_columns)
        CP 80
        JR Z,_narrow
        INC HL
        LD (HL),C
_narrow:
        LD A,D
        LD (dirty_row),A
_same:  ; and
        IF NBASIC
        RET
        ELSE
        JR cells_close
        ENDIF

; HL = where the cells of row D are read and written, until cells_close. Keeps BC, DE.
cells_open:
        IF NBASIC
        CALL cells_row
        RET
        ELSE
        IN A,(WINDOW_PAGE)
        LD (window_saved),A
        CALL cells_row
        LD A,H
        OUT (WINDOW_PAGE),A
        LD H,080h
        RET
cells_close:
        LD A,(window_saved)
        OUT (WINDOW_PAGE),A
        RET
        ENDIF
; HL = address of the cells of row D: CELLS + 80 * D. Keeps BC, DE.
cells_row:
        PUSH DE
        LD L,D
        LD H,0
        LD E,D
        LD D,H
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD DE,CELLS
        ADD HL,DE
        POP DE
        RET

; HL = address of the character at row D, column E of 80. Keeps BC, DE.
console_address:
        LD HL,console_rows
        LD A,D
        ADD A,A
        ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  LD A,(HL)
        INC HL
        LD H,(HL)
        ADD A,E
        LD L,A
        RET NC
        INC H
        RET

; ---- Attribute pairs

; Makes the pairs of the row that waits, if one does, between two retraces. Keeps BC, DE, HL.
row_flush:
        LD A,(dirty_row)
        CP 0FFh
        RET Z
        CALL retrace_over
        CALL row_flush_now
        EI
        RET
; The same in the retrace.
row_flush_now:
        LD A,(dirty_row)
        CP 0FFh
        RET Z
        PUSH HL
        PUSH DE
        PUSH BC
        LD D,A
        LD A,0FFh
        LD (dirty_row),A
        CALL row_pairs
        POP BC
        POP DE
        POP HL
        RET

; Makes the pairs of row D between two retraces. Keeps D.
row_encode:
        CALL retrace_over
        CALL row_pairs
        EI
        RET

; Makes the pairs of row D from its attributes, and those of the next row when what flows into it changes. With
; interrupts off; done before the picture is taken over. Uses AF, BC, DE, HL; keeps D.
row_pairs:
        LD E,80
        CALL console_address
        LD (pair_next),HL
        LD A,L
        ADD A,40
        LD (pair_limit),A
        LD HL,row_out           ; what flows in
        LD A,D
        DEC A
        JP P,_before
        LD A,24                 ; from the last row of the picture before
_before:
        ADD A,L
        LD L,A
        LD C,(HL)
        CALL pair_mask
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(HL)
        CP ROW_MIXED
        JR NZ,_uniform

        CALL cells_row
        IF NBASIC
        ELSE
        IN A,(WINDOW_PAGE)      ; the retrace may come here while another part uses the window
        PUSH AF
        LD A,H
        OUT (WINDOW_PAGE),A
        LD H,WINDOW / 256
        ENDIF
        LD A,L
        LD (pair_cells),A
        BIT 7,E
        JR Z,_mono
        LD A,(HL)               ; the first cell names its colour even when it is that of the row above
        XOR C
        AND CELL_FUNCTION
        JR NZ,_first
        LD A,(HL)
        XOR 080h                ; so let it differ
        XOR C
        AND 0F0h
        XOR C
        LD C,A
_first: LD A,C
        LD B,10
_eight: CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        CP (HL)
        CALL NZ,pair_add
        INC HL
        DJNZ _eight
        LD C,A
        JR _mixed
_mono:  LD B,0                  ; column
_cell:  LD A,(HL)
        AND E
        CP C
        LD C,A
        CALL NZ,pair_function
        INC HL
        INC B
        LD A,B
        CP 80
        JR NZ,_cell
_mixed: ; and
        IF NBASIC
        ELSE
        POP AF
        OUT (WINDOW_PAGE),A
        ENDIF
        JR _rest

_uniform:
        AND E
        LD L,A
        XOR C
        LD C,L
        LD B,0
        BIT 7,E
        JR Z,_function          ; monochrome
        AND CELL_FUNCTION
        JR Z,_colour
_function:
        LD A,L
        CALL pair_function
        INC B
        BIT 7,E
        JR Z,_rest
_colour:
        LD A,L
        CALL pair_colour
_rest:  LD HL,(pair_next)
        LD A,(pair_limit)
        LD B,A
_next:  LD A,L
        CP B
        JR Z,_full
        LD (HL),80              ; no more changes
        INC HL
        LD (HL),0
        INC HL
        JR _next
_full:  LD HL,row_out
        LD A,L
        ADD A,D
        LD L,A
        LD A,(HL)
        LD (HL),C
        XOR C
        AND CELL_FUNCTION
        RET Z
        LD A,D                  ; reverse, blinking and the like reach the next row, which must undo them
        CP 24
        RET Z
        PUSH DE
        INC D
        CALL row_pairs
        POP DE
        RET

; E = the bits of a cell's attribute that this mode shows; C, what flows in, is cut down to them.
pair_mask:
        LD E,0FFh
        LD A,(mode_30)
        AND MONOCHROME
        RET Z
        LD E,CELL_SEMIGRAPHIC + CELL_FUNCTION
        LD A,C
        AND E
        LD C,A
        RET

; The cell at HL wants another attribute than A, which holds there: one pair; A becomes what holds then. Of two
; pairs at one column the second would be lost, so when both halves change, one follows a column later: colour
; first, except where a function ends, for a space that is still reversed would be seen. Keeps BC, DE, HL.
pair_add:
        PUSH BC
        PUSH HL
        LD C,A
        LD A,(pair_cells)
        LD B,A
        LD A,L
        SUB B
        LD B,A                  ; column
        LD L,(HL)
        LD A,L
        XOR C
        LD H,A
        AND CELL_FUNCTION
        JR Z,_colour
        LD A,H
        AND 0F0h
        JR Z,_function
        LD A,C
        AND CELL_FUNCTION
        JR NZ,_function
        CALL pair_early
        JR NC,_colour
        LD A,L
        XOR C
        AND 0F0h
        XOR C
        LD C,A
_function:
        LD A,L
        CALL pair_function
        LD A,L
        XOR C
        AND CELL_FUNCTION
        JR _whole
_colour:
        LD A,L
        CALL pair_colour
        LD A,L
        XOR C
        AND 0F0h
_whole: XOR C
        POP HL
        POP BC
        RET

; Where both halves change, and a blank stands before: its colour is not seen, so the pair of the new colour, of
; cell attribute L, goes there, and C is set. Keeps BC, DE, HL.
pair_early:
        LD A,B
        OR A
        RET Z                   ; the first cell
        PUSH HL
        PUSH DE
        DEC A
        LD E,A
        CALL console_address
        LD A,(HL)
        CP " "
        JR NZ,_no
        LD HL,(pair_next)       ; no two pairs at one column; before the first one stands a character
        DEC HL
        DEC HL
        LD A,(HL)
        CP E
        JR Z,_no
        POP DE
        POP HL
        LD A,L
        DEC B
        CALL pair_colour
        INC B
        SCF
        RET
_no:    POP DE
        POP HL
        OR A
        RET

; Adds the pair of the colour, or of the function, of the cell attribute A at column B. Keep BC, DE, HL.
pair_colour:
        AND 0F0h
        OR 008h
        JR pair_store
pair_function:
        PUSH BC
        LD C,A
        AND 007h
        BIT 3,C
        JR Z,_plain
        OR ATTR_UNDER
_plain: BIT 7,E
        JR NZ,_colours
        BIT 4,C
        JR Z,_colours
        OR 080h                 ; monochrome: the semigraphic bit is here
_colours:
        POP BC
pair_store:
        PUSH HL
        LD H,A
        LD A,(pair_next)
        LD L,A
        LD A,(pair_limit)
        CP L
        JR Z,_full              ; more changes than the controller takes: the row keeps the last
        LD A,H
        LD HL,(pair_next)
        LD (HL),B
        INC HL
        LD (HL),A
        INC HL
        LD (pair_next),HL
_full:  POP HL
        RET

; ---- The cursor

console_column:
        LD A,(cursor_column)
        RET
console_row:
        LD A,(cursor_row)
        RET
; D row, E column.
console_locate:
        LD A,D
        LD D,E
        LD E,A
        LD (cursor_row),DE
        RET
console_fresh:
        LD A,(cursor_column)
        OR A
        RET Z
; To the start of the next row. Keeps BC, DE, HL.
console_newline:
        XOR A
        LD (cursor_column),A
        CALL console_down
        XOR A
; Marks the cursor's row as continued (A 1) or not (0). Keeps BC, DE, HL.
row_mark:
        PUSH HL
        PUSH AF
        LD HL,row_continued
        LD A,(cursor_row)
        ADD A,L
        LD L,A
        POP AF
        LD (HL),A
        POP HL
        RET
; The same because the line goes on there.
console_wrap:
        XOR A
        LD (cursor_column),A
        CALL console_down
        LD A,1
        JR row_mark

; A row down; at the end of the window that scrolls. Keeps BC, DE, HL.
console_down:
        PUSH HL
        LD HL,cursor_row
        LD A,(window_bottom)
        CP (HL)
        JR Z,_scroll
        LD A,(screen_rows)
        DEC A
        CP (HL)
        JR Z,_stay              ; below the window
        INC (HL)
_stay:  POP HL
        RET
_scroll:
        PUSH DE
        PUSH BC
        CALL window_up
        POP BC
        POP DE
        POP HL
        RET

cursor_to_right:
        LD HL,(cursor_row)
        INC H
        LD A,(screen_columns)
        CP H
        JR Z,_row
        JR C,_row
        LD (cursor_row),HL
        RET
_row:   LD A,(screen_rows)
        DEC A
        CP L
        RET Z
        LD A,(window_bottom)
        CP L
        RET Z
        INC L
        LD H,0
        LD (cursor_row),HL
        RET
cursor_to_left:
        LD HL,cursor_column
        LD A,(HL)
        OR A
        JR Z,_row
        DEC (HL)
        RET
_row:   LD HL,(cursor_row)
        LD A,(window_top)
        CP L
        RET Z
        LD A,L
        OR A
        RET Z
        DEC L
        LD A,(screen_columns)
        DEC A
        LD H,A
        LD (cursor_row),HL
        RET
cursor_to_up:
        LD HL,cursor_row
        LD A,(window_top)
        CP (HL)
        RET Z
        LD A,(HL)
        OR A
        RET Z
        DEC (HL)
        RET
cursor_to_down:
        LD HL,cursor_row
        LD A,(window_bottom)
        CP (HL)
        RET Z
        LD A,(screen_rows)
        DEC A
        CP (HL)
        RET Z
        INC (HL)
        RET

; In the retrace: the CRT controller's cursor follows. Uses AF, HL.
cursor_follow:
        LD HL,(cursor_row)
        LD A,(screen_columns)
        CP H
        JR NZ,_inside
        DEC H                   ; behind the last cell: shown on it
_inside:
        CP 80
        JR Z,_wide
        SLA H
_wide:  PUSH DE
        LD DE,(cursor_before)
        OR A
        SBC HL,DE
        ADD HL,DE
        POP DE
        LD A,(cursor_shown)
        JR NZ,_moved
        PUSH HL
        LD HL,cursor_before + 2
        CP (HL)
        POP HL
        RET Z
_moved: LD (cursor_before),HL
        LD (cursor_before + 2),A
        OR A
        LD A,CRTC_CURSOR_OFF
        JR Z,_off
        INC A
_off:   OUT (CRTC_COMMAND),A
        LD A,H
        OUT (CRTC_PARAMETER),A
        LD A,L
        OUT (CRTC_PARAMETER),A
        RET

; ---- Rows that move

; The window a row up; its last row is empty then.
window_up:
        CALL row_flush
        LD HL,edit_row
        LD A,(window_top)
        CP (HL)
        JR C,_moves
        LD (HL),0FFh            ; input began in a row that goes
        JR _rows
_moves: LD A,(HL)
        INC A
        JR Z,_rows
        LD A,(window_bottom)
        CP (HL)
        JR C,_rows
        DEC (HL)
_rows:  LD A,(window_top)
        LD D,A
_next:  LD A,(window_bottom)
        CP D
        JR Z,_last
        LD E,D
        INC E
        CALL row_copy
        INC D
        JR _next
_last:  CALL row_clear
; The rows of the window have moved: what flows into its first may be other than before. D is the last moved.
window_mend:
        LD A,(window_top)
        LD D,A
        CALL row_encode
        LD A,(window_bottom)
        CP 24
        RET Z
        INC A
        LD D,A
        JP row_encode

; Rows D to window_bottom a row down; row D is empty then.
window_down:
        CALL row_flush
        LD A,(window_bottom)
        CP D
        JR Z,_clear
        PUSH DE
        LD E,D
        LD D,A
_next:  PUSH DE
        LD E,D
        DEC E
        CALL row_copy
        POP DE
        DEC D
        LD A,D
        CP E
        JR NZ,_next
        POP DE
_clear: CALL row_clear
        PUSH DE
        CALL window_mend
        POP DE
        RET

; Copies row E over row D, between two retraces, so that its characters never show in other colours. Keeps DE.
row_copy:
        CALL retrace_over
        CALL row_move
        EI
        RET
row_move:
        PUSH DE
        LD C,E
        LD E,0
        CALL console_address
        PUSH HL
        LD D,C
        CALL console_address
        POP DE                  ; HL source, DE target
        LD BC,80
_char:  LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        LDI
        JP PE,_char
        POP BC
        PUSH HL                 ; pairs of the source,
        PUSH DE                 ; of the target
        LD D,B
        LD E,C
        LD HL,row_continued
        CALL _entry
        LD HL,row_out
        CALL _entry
        LD HL,row_attributes
        CALL _entry
        JR NZ,_cells
        CP ROW_MIXED
        JR Z,_cells
        POP BC                  ; one attribute in both rows: if the first pair is the same, all are
        POP HL
        PUSH HL
        PUSH BC
        INC HL
        INC BC
        LD A,(BC)
        CP (HL)
        JR NZ,_copy
        POP BC
        POP BC
        RET
_cells: CP ROW_MIXED
        JR NZ,_copy
        PUSH DE
        CALL cells_row
        PUSH HL
        LD D,E
        CALL cells_open
        POP DE
        LD BC,80
        LDIR
        IF NBASIC
        ELSE
        CALL cells_close
        ENDIF
        POP DE
_copy:  LD B,D
        LD C,E
        POP DE
        POP HL
        PUSH BC
        LD BC,40
        LDIR
        POP DE
        RET
; The entry of row E in the table HL goes to row D; A = it, Z when it was there already. Keeps DE.
_entry: LD B,L
        LD A,L
        ADD A,E
        LD L,A
        LD C,(HL)
        LD A,B
        ADD A,D
        LD L,A
        LD A,(HL)
        LD (HL),C
        CP C
        LD A,C
        RET

; Row D becomes spaces in the present colour. Keeps DE.
row_clear:
        CALL row_flush
        PUSH DE
        LD E,0
        CALL console_address
        LD B,80
_space: LD (HL)," "
        INC HL
        DJNZ _space
        LD HL,row_continued
        LD A,L
        ADD A,D
        LD L,A
        LD (HL),0
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(console_ink)
        AND 0E0h
        LD (HL),A
        CALL row_encode
        POP DE
        RET

console_clear:
        LD A,(window_top)
        LD D,A
_row:   CALL row_clear
        LD A,(window_bottom)
        CP D
        JR Z,console_home
        INC D
        JR _row
console_home:
        LD A,(window_top)
        LD L,A
        LD H,0
        LD (cursor_row),HL
        RET

; ---- Modes

; Colour A (0-7: bits blue, red, green), function bits C.
console_colour:
        RRCA
        RRCA
        RRCA
        AND 0E0h
        OR C
        LD (console_ink),A
        RET

console_init:
        LD A,INK_WHITE
        LD (console_ink),A
        LD A,0FFh
        LD (dirty_row),A
        LD (edit_row),A
        LD DE,25 * 256 + 80
; D rows, E columns. The display stops while it is set up.
console_width:
        LD A,D
        LD (screen_rows),A
        LD A,E
        LD (screen_columns),A
        DI
        LD A,DMA_AUTOLOAD + DMA_STOP + DMA_EXTENDED
        OUT (DMA_MODE),A        ; no text until it is written
        LD A,(mode_30)
        AND 0FFh - COLUMNS_80
        BIT 4,E                 ; 80, not 40
        JR Z,_narrow
        OR COLUMNS_80
_narrow:
        LD (mode_30),A
        OUT (MODE_30),A
        LD A,CRTC_RESET
        OUT (CRTC_COMMAND),A
        LD A,80 - 2             ; bit 7 clear: DMA in bursts, cheaper than character by character
        OUT (CRTC_PARAMETER),A
        LD A,D
        ADD A,040h - 1          ; blinking every 32 frames
        OUT (CRTC_PARAMETER),A
        LD B,8                  ; raster lines of a row
        LD A,D
        CP 25
        JR Z,_rows
        LD B,10
_rows:  IN A,(STATUS)
        AND STATUS_STANDARD
        LD A,B
        JR NZ,_monitor
        ADD A,A                 ; twice as many on the 400-line monitor
_monitor:
        DEC A
        OUT (CRTC_PARAMETER),A
        LD A,0BEh               ; retrace: 6 rows, 31 characters
        OUT (CRTC_PARAMETER),A
        LD A,040h + 20 - 1      ; colour attributes, 20 pairs
        OUT (CRTC_PARAMETER),A
        LD A,TEXT AND 0FFh
        OUT (DMA_2_ADDRESS),A
        LD A,TEXT / 256
        OUT (DMA_2_ADDRESS),A
        LD A,0FFh AND (25 * 120 - 1)
        OUT (DMA_2_COUNT),A
        LD A,DMA_TO_DEVICE + (25 * 120 - 1) / 256
        OUT (DMA_2_COUNT),A
        LD A,0FFh
        LD (dirty_row),A
        EI
        LD D,24                 ; all rows of the picture are fetched, whatever is shown
_row:   CALL row_clear
        DEC D
        JP P,_row
        LD A,(screen_rows)
        DEC A
        LD E,A
        LD A,(keys_shown)
        OR A
        JR Z,_whole
        DEC E
_whole: LD D,0
        CALL console_window
        CALL console_home
        CALL keys_show
        DI
        LD A,CRTC_START
        OUT (CRTC_COMMAND),A
        LD A,0FFh
        LD (cursor_before + 2),A ; the cursor is to be set again
        LD A,DMA_AUTOLOAD + DMA_STOP + DMA_EXTENDED + DMA_CHANNEL_2
        OUT (DMA_MODE),A
        EI
        XOR A
        OUT (LAYERS),A
        RET

; D first row, E last row of the window.
console_window:
        LD A,D
        LD D,E
        LD E,A
        LD (window_top),DE      ; and window_bottom
        RET

; A 0: colours; 1: monochrome.
console_mono:
        RRA
        LD A,(mode_30)
        RES 1,A                 ; MONOCHROME
        JR NC,_set
        OR MONOCHROME
_set:   LD (mode_30),A
        OUT (MODE_30),A
        CALL row_flush
        LD D,24
_row:   CALL row_encode
        DEC D
        JP P,_row
        RET

console_rows:
        DEFW TEXT, TEXT + 120, TEXT + 240, TEXT + 360, TEXT + 480
        DEFW TEXT + 600, TEXT + 720, TEXT + 840, TEXT + 960, TEXT + 1080
        DEFW TEXT + 1200, TEXT + 1320, TEXT + 1440, TEXT + 1560, TEXT + 1680
        DEFW TEXT + 1800, TEXT + 1920, TEXT + 2040, TEXT + 2160, TEXT + 2280
        DEFW TEXT + 2400, TEXT + 2520, TEXT + 2640, TEXT + 2760, TEXT + 2880

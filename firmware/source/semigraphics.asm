; Drawing in semigraphics, for the machine without planes: a cell is 2 x 4 dots of one colour. Operands as
; planes.asm. A cell of text that a dot falls into becomes one of dots; colour 0 takes dots away.
;
;   semi_dot, semi_point, semi_line, semi_fill, semi_paint

; C when gfx_x, gfx_y is outside; else D row and E column (of 80) of its cell, B its bit, HL the character.
semi_place:
        LD HL,(gfx_y)
        LD A,H
        OR A
        SCF
        RET NZ
        LD A,(screen_rows)
        ADD A,A
        ADD A,A
        DEC A
        CP L
        RET C
        LD A,L
        AND 3
        LD B,A
        LD A,L
        RRCA
        RRCA
        AND 03Fh
        LD D,A
        LD HL,(gfx_x)
        LD A,H
        OR A
        SCF
        RET NZ
        LD A,(screen_columns)
        ADD A,A
        DEC A
        CP L
        RET C
        SRL L
        LD E,L
        LD A,B
        JR NC,_left
        ADD A,4
_left:  INC A
        LD B,A
        XOR A
        SCF
_bit:   RLA
        DJNZ _bit
        LD B,A
        LD A,(screen_columns)
        CP 80
        JR Z,_wide
        SLA E
_wide:  CALL console_address
        OR A
        RET

; A = attribute of the cell D, E. Keeps BC, DE, HL.
semi_attribute:
        PUSH HL
        LD HL,row_attributes
        LD A,L
        ADD A,D
        LD L,A
        LD A,(HL)
        CP ROW_MIXED
        JR NZ,_end
        CALL cells_row
        PUSH DE
        LD D,0
        ADD HL,DE
        POP DE
        LD A,(HL)
_end:   POP HL
        RET

semi_dot:
        CALL semi_place
        RET C
        CALL semi_attribute
        AND CELL_SEMIGRAPHIC
        LD A,(HL)
        JR NZ,_dots
        XOR A                   ; it was text
_dots:  OR B
        LD C,A
        LD A,(gfx_ink)
        OR A
        JR NZ,_set
        LD A,C
        XOR B
        LD C,A
        CALL semi_attribute
        AND 0E0h
        JR _put
_set:   RRCA
        RRCA
        RRCA
_put:   OR CELL_SEMIGRAPHIC
        LD (HL),C
        LD B,A
        LD A,(console_ink)
        PUSH AF
        LD A,B
        LD (console_ink),A
        CALL console_paint
        POP AF
        LD (console_ink),A
        RET

; A = colour, 0 where no dot is, FFh outside.
semi_point:
        CALL semi_place
        LD A,0FFh
        RET C
        CALL semi_attribute
        LD C,A
        AND CELL_SEMIGRAPHIC
        RET Z
        LD A,(HL)
        AND B
        RET Z
        LD A,C
        RLCA
        RLCA
        RLCA
        AND 7
        RET

semi_line:
        CALL clip_line
        RET C
        LD HL,(gfx_x2)
        LD DE,(gfx_x)
        OR A
        SBC HL,DE
        JR NC,_right
        CALL clip_swap
        LD HL,(gfx_x2)
        LD DE,(gfx_x)
        OR A
        SBC HL,DE
_right: LD C,L                  ; level way
        LD A,(gfx_y2)
        LD B,1
        LD HL,gfx_y
        SUB (HL)
        JR NC,_down
        NEG
        LD B,0FFh
_down:  LD D,A                  ; upright way, B its direction
        LD E,C
        CP C
        JR C,_longer
        LD E,D
_longer:
        LD A,E
        SRL A
        LD H,A                  ; errors
        LD L,A
        INC E
_dot:   PUSH BC
        PUSH DE
        PUSH HL
        CALL semi_dot
        POP HL
        POP DE
        POP BC
        PUSH BC
        LD A,D
        CP C
        JR NC,_level
        LD A,C
_level: LD B,A                  ; the longer way
        LD A,H
        ADD A,C
        JR C,_x
        CP B
        JR C,_no_x
_x:     SUB B
        LD H,A
        LD A,(gfx_x)
        INC A
        LD (gfx_x),A
        JR _upright
_no_x:  LD H,A
_upright:
        LD A,L
        ADD A,D
        JR C,_y
        CP B
        JR C,_no_y
_y:     SUB B
        LD L,A
        POP BC
        LD A,(gfx_y)
        ADD A,B
        LD (gfx_y),A
        JR _next
_no_y:  LD L,A
        POP BC
_next:  DEC E
        JR NZ,_dot
        RET

semi_fill:
        LD HL,(gfx_x)
        LD DE,(gfx_x2)
        LD BC,GFX_WIDTH - 1
        CALL clip_order
        RET C
        LD (gfx_x2),DE
        PUSH HL
        LD HL,(gfx_y)
        LD DE,(gfx_y2)
        LD BC,GFX_HEIGHT - 1
        CALL clip_order
        POP BC                  ; C first column
        RET C
        LD (gfx_y2),DE
        LD (gfx_y),HL
_line:  LD A,C
        LD (gfx_x),A
        XOR A
        LD (gfx_x + 1),A
_dot:   PUSH BC
        CALL semi_dot
        POP BC
        LD HL,gfx_x
        LD A,(gfx_x2)
        CP (HL)
        JR Z,_end
        INC (HL)
        JR _dot
_end:   LD HL,gfx_y
        LD A,(gfx_y2)
        CP (HL)
        RET Z
        INC (HL)
        JR _line

; As plane_paint, dot by dot; a queued place is a column and a line.
semi_paint:
        LD HL,PAINT_QUEUE
        LD (paint_next),HL
        XOR A
        LD (paint_full),A
        CALL semi_place
        CCF
        RET NC
        CALL semi_put
_seed:  LD A,(stop_flag)
        OR A
        RET NZ
        LD HL,(paint_next)
        LD DE,PAINT_QUEUE
        OR A
        SBC HL,DE
        JR Z,_done
        ADD HL,DE
        DEC HL
        LD A,(HL)
        LD (gfx_y),A
        DEC HL
        LD A,(HL)
        LD (gfx_x),A
        LD (paint_next),HL
        CALL semi_free
        JR NC,_seed
_left:  LD HL,gfx_x             ; to the left end of the free dots
        DEC (HL)
        CALL semi_free
        JR C,_left
        LD HL,gfx_x
        INC (HL)
        XOR A
        LD (paint_run),A        ; bits: a run above, a run below
_dot:   CALL semi_dot
        LD HL,gfx_y
        DEC (HL)
        LD B,1
        CALL _look
        LD HL,gfx_y
        INC (HL)
        INC (HL)
        LD B,2
        CALL _look
        LD HL,gfx_y
        DEC (HL)
        LD HL,gfx_x
        INC (HL)
        CALL semi_free
        JR C,_dot
        JR _seed
_done:  LD A,(paint_full)
        RRA
        RET
; Queues the dot if a run of free ones, bit B of paint_run, begins here.
_look:  PUSH BC
        CALL semi_free
        POP BC
        LD HL,paint_run
        JR C,_free
        LD A,B
        CPL
        AND (HL)
        LD (HL),A
        RET
_free:  LD A,(HL)
        AND B
        RET NZ
        LD A,(HL)
        OR B
        LD (HL),A
; gfx_x, gfx_y into the queue.
semi_put:
        LD HL,(paint_next)
        LD BC,PAINT_QUEUE_END - 1
        OR A
        SBC HL,BC
        ADD HL,BC
        JR NC,_full
        LD A,(gfx_x)
        LD (HL),A
        INC HL
        LD A,(gfx_y)
        LD (HL),A
        INC HL
        LD (paint_next),HL
        RET
_full:  LD A,1
        LD (paint_full),A
        RET
; C: the dot is on the screen and neither paint nor border.
semi_free:
        CALL semi_point
        LD HL,gfx_ink
        CP (HL)
        JR Z,_no
        INC HL                  ; gfx_border
        CP (HL)
        JR Z,_no
        INC A
        RET Z                   ; outside; no carry
        SCF
        RET
_no:    OR A
        RET

; The three graphic planes of 640 x 200, in the expansion ROM. Operands stand in gfx_... (memory_devices.inc).
;
;   plane_init      planes empty, palette in order, graphics shown
;   plane_clear     planes empty
;   plane_pset      the dot gfx_x, gfx_y in gfx_ink; none outside the screen
;   plane_point     A = colour of the dot gfx_x, gfx_y; FFh outside
;   plane_line      from gfx_x, gfx_y to gfx_x2, gfx_y2, cut at the screen's edges; the operands change
;   plane_fill      the rectangle between those corners; the operands change
;   plane_paint     from gfx_x, gfx_y up to gfx_border in gfx_ink. C: more places waited than the queue holds
;
; A plane stands at C000h-FFFFh while selected; code, variables and stack lie below. It is drawn plane by plane, for
; selecting one costs as much as a dot.

GFX_WIDTH       EQU 640
GFX_HEIGHT      EQU PLANE_LINES
circle_dot      EQU plane_pset
        INCLUDE "clip.asm"
        INCLUDE "circle.asm"

plane_init:
        CALL plane_clear
        LD C,PALETTE            ; black after power-on
        XOR A
_entry: OUT (C),A
        INC C
        INC A
        CP 8
        JR NZ,_entry
        LD A,(mode_31)
        OR GRAPHICS_ON + COLOUR_GRAPHICS + LINES_200
        LD (mode_31),A
        OUT (MODE_31),A
        RET

; By the stack, two bytes at a time; interrupts wait for 1 ms at most.
plane_clear:
        LD C,SELECT_BLUE
_plane: LD HL,PLANE + PLANE_LINE * PLANE_LINES
        LD B,25
_piece: DI
        LD (gfx_stack),SP
        LD SP,HL
        OUT (C),A
        LD DE,0
        LD A,20                 ; 8 lines
_push:  PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        PUSH DE
        DEC A
        JP NZ,_push
        LD H,A
        LD L,A
        ADD HL,SP
        LD SP,(gfx_stack)
        OUT (SELECT_RAM),A
        EI
        DJNZ _piece
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        RET

; C when gfx_x, gfx_y is outside; else DE = gfx_x, A = gfx_y. Uses HL.
plane_inside:
        LD DE,(gfx_x)
        LD HL,639
        OR A
        SBC HL,DE               ; negative numbers are above, too
        RET C
        LD HL,(gfx_y)
        LD A,H
        OR A
        SCF
        RET NZ
        LD A,L
        CP PLANE_LINES
        CCF
        RET

; DE column, A line: HL = address, A = bit of the dot. Uses BC, DE.
plane_address:
        LD L,A
        LD H,0
        LD B,H
        LD C,L
        ADD HL,HL
        ADD HL,HL
        ADD HL,BC
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD A,E
        AND 7
        LD C,A
        LD A,E
        SRL D
        RRA
        SRL D
        RRA
        SRL A
        LD E,A
        LD D,PLANE / 256
        ADD HL,DE
        EX DE,HL
        LD HL,plane_bits
        ADD HL,BC
        LD A,(HL)
        EX DE,HL
        RET
plane_bits:
        DEFB 080h,040h,020h,010h,008h,004h,002h,001h

plane_pset:
        CALL plane_inside
        RET C
        CALL plane_address
        LD B,A
        LD A,(gfx_ink)
        LD D,A
        LD C,SELECT_BLUE
_plane: OUT (C),A
        LD A,(HL)
        OR B
        SRL D
        JR C,_set
        XOR B
_set:   LD (HL),A
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A
        RET

plane_point:
        CALL plane_inside
        LD A,0FFh
        RET C
        LD A,L
        CALL plane_address
        LD B,A
        OUT (SELECT_GREEN),A
        CALL _bit
        OUT (SELECT_RED),A
        CALL _bit
        OUT (SELECT_BLUE),A
        CALL _bit
        OUT (SELECT_RAM),A
        LD A,C
        AND 7
        RET
_bit:   LD A,(HL)
        AND B
        SUB 1
        CCF
        RL C
        RET

; ---- Lines

plane_line:
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
_right: LD (line_dx),HL
        LD DE,PLANE_LINE
        LD A,(gfx_y)
        LD C,A
        LD A,(gfx_y2)
        SUB C
        JP Z,plane_fill         ; a level line goes by bytes
        JR NC,_down
        NEG
        LD DE,-PLANE_LINE
_down:  LD (line_step),DE
        LD L,A
        LD H,0
        LD (line_dy),HL
        LD DE,(gfx_x)
        LD A,C
        CALL plane_address
        LD (line_address),HL
        LD (line_mask),A
        LD A,(gfx_ink)
        LD (line_ink),A
        LD C,SELECT_BLUE
_plane: PUSH BC
        OUT (C),A
        LD HL,(line_dx)
        LD DE,(line_dy)
        OR A
        SBC HL,DE
        ADD HL,DE
        PUSH AF                 ; C: steeper than 45 degrees
        JR NC,_flat
        EX DE,HL
_flat:  PUSH HL                 ; dots but one
        LD B,H
        LD C,L
        SRL H
        RR L
        LD A,L                  ; HL = -(half of them) - 1
        CPL
        LD L,A
        LD A,H
        CPL
        LD H,A
        EXX                     ; there: HL error, DE the shorter way, BC the longer one
        POP BC
        LD A,B
        INC A
        LD (line_count),A       ; rounds of B dots, the first of C + 1
        LD B,C
        INC B
        LD A,(line_mask)
        LD C,A
        LD HL,line_ink
        RR (HL)                 ; this plane's bit
        SBC A,A
        LD HL,(line_address)
        LD DE,(line_step)
        INC A
        JR Z,_set
        LD A,C
        CPL
        LD C,A
        POP AF
        JR C,_steep_clear

_flat_clear:
        LD A,(HL)
        AND C
        LD (HL),A
        RRC C
        JR C,_same_1
        INC HL
_same_1:
        EXX
        ADD HL,DE
        JR NC,_level_1
        OR A
        SBC HL,BC
        EXX
        ADD HL,DE
        DJNZ _flat_clear
        JR _more_1
_level_1:
        EXX
        DJNZ _flat_clear
_more_1:
        LD A,(line_count)
        DEC A
        LD (line_count),A
        JR NZ,_flat_clear
        JR _next
_steep_clear:
        LD A,(HL)
        AND C
        LD (HL),A
        ADD HL,DE
        EXX
        ADD HL,DE
        JR NC,_upright_1
        OR A
        SBC HL,BC
        EXX
        RRC C
        JR C,_step_1
        INC HL
_step_1:
        DJNZ _steep_clear
        JR _next
_upright_1:
        EXX
        DJNZ _steep_clear
        JR _next

_set:   POP AF
        JR C,_steep_set
_flat_set:
        LD A,(HL)
        OR C
        LD (HL),A
        RRC C
        JR NC,_same_2
        INC HL
_same_2:
        EXX
        ADD HL,DE
        JR NC,_level_2
        OR A
        SBC HL,BC
        EXX
        ADD HL,DE
        DJNZ _flat_set
        JR _more_2
_level_2:
        EXX
        DJNZ _flat_set
_more_2:
        LD A,(line_count)
        DEC A
        LD (line_count),A
        JR NZ,_flat_set
        JR _next
_steep_set:
        LD A,(HL)
        OR C
        LD (HL),A
        ADD HL,DE
        EXX
        ADD HL,DE
        JR NC,_upright_2
        OR A
        SBC HL,BC
        EXX
        RRC C
        JR NC,_step_2
        INC HL
_step_2:
        DJNZ _steep_set
        JR _next
_upright_2:
        EXX
        DJNZ _steep_set

_next:  POP BC
        INC C
        LD A,C
        CP SELECT_RAM
        JP NZ,_plane
        OUT (SELECT_RAM),A
        RET

; ---- Rectangles

plane_fill:
        LD HL,(gfx_x)
        LD DE,(gfx_x2)
        LD BC,639
        CALL clip_order
        RET C
        LD (gfx_x),HL
        LD (gfx_x2),DE
        LD HL,(gfx_y)
        LD DE,(gfx_y2)
        LD BC,PLANE_LINES - 1
        CALL clip_order
        RET C
        LD A,E
        SUB L
        INC A
        LD (line_count),A       ; lines
        LD A,L
        LD DE,(gfx_x)
        CALL plane_address
        LD (line_address),HL
        LD B,A                  ; bits from the first dot to the end of its byte: 2 * bit - 1
        ADD A,A
        DEC A
        LD (fill_left),A
        LD DE,(gfx_x2)
        LD A,E
        AND 7
        LD C,A
        LD B,0
        LD HL,plane_bits
        ADD HL,BC
        LD A,(HL)
        DEC A
        CPL                     ; bits up to the last dot
        LD C,A
        LD HL,(gfx_x)
        CALL plane_byte
        LD A,L
        EX DE,HL
        CALL plane_byte
        SUB L
        NEG                     ; bytes after the first
        JR NZ,_wide
        LD A,(fill_left)
        AND C
        LD (fill_left),A
        XOR A
_wide:  LD (fill_bytes),A
        LD A,C
        LD (fill_right),A

        LD A,(gfx_ink)
        LD (line_ink),A
        LD C,SELECT_BLUE
_plane: OUT (C),A
        PUSH BC
        LD HL,line_ink
        RR (HL)
        SBC A,A
        LD E,A                  ; 0 or FFh
        LD A,(line_count)
        LD D,A
        LD HL,(line_address)
_line:  PUSH HL
        LD A,(fill_left)
        CALL plane_merge
        LD A,(fill_bytes)
        OR A
        JR Z,_end
        DEC A
        INC HL
        JR Z,_last
        LD B,A
        SRL B
        SRL B
        AND 3
        JR Z,_fours
_one:   LD (HL),E
        INC HL
        DEC A
        JR NZ,_one
        INC B
        DEC B
        JR Z,_last
_fours: LD (HL),E
        INC HL
        LD (HL),E
        INC HL
        LD (HL),E
        INC HL
        LD (HL),E
        INC HL
        DJNZ _fours
_last:  LD A,(fill_right)
        CALL plane_merge
_end:   POP HL
        LD BC,PLANE_LINE
        ADD HL,BC
        DEC D
        JR NZ,_line
        POP BC
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A
        RET

; The dots of (HL) that are set in A take the bits of E. Uses AF, C.
plane_merge:
        LD C,A
        LD A,(HL)
        XOR E
        CPL
        OR C
        CPL                     ; (old XOR new) AND NOT mask
        XOR E
        LD (HL),A
        RET

; L = HL / 8. Keeps A.
plane_byte:
        SRL H
        RR L
        SRL H
        RR L
        SRL L
        RET

; ---- Painting

; Fills level spans. What waits in the queue is a run of free dots next to a span just filled, and the way on from
; there: the run is known to be free or, if another way round has been there, filled as a whole. So each line is
; looked at once, and the line one comes from only where the span reaches beyond the run.
plane_paint:
        CALL plane_inside
        CCF
        RET NC
        LD A,(gfx_ink)
        LD HL,paint_ink
        CALL plane_masks
        LD A,(gfx_border)
        LD HL,paint_border
        CALL plane_masks
        IN A,(WINDOW_PAGE)
        PUSH AF
        XOR A
        LD (paint_full),A
        INC A
        LD (paint_way),A        ; 1: down, FFh: up
        LD (paint_first),A
        LD HL,PAINT_QUEUE
        LD (paint_next),HL
        LD HL,(gfx_x)
        LD (paint_x1),HL
        LD (paint_x2),HL
        CALL paint_span
_run:   LD A,(stop_flag)
        OR A
        JR NZ,_stop
        LD HL,(paint_next)
        LD DE,PAINT_QUEUE
        OR A
        SBC HL,DE
        JR Z,_done
        CALL paint_take
        CALL paint_span
        JR _run
_done:  LD A,(paint_full)
        RRA
_stop:  POP BC
        PUSH AF
        LD A,B
        OUT (WINDOW_PAGE),A
        POP AF
        OUT (SELECT_RAM),A
        RET

; The span around the run paint_x1 to paint_x2 of line gfx_y, reached the way paint_way.
paint_span:
        LD DE,(paint_x1)
        PUSH DE
        POP IX
        CALL paint_look
        RET Z                   ; filled meanwhile
_left:  RLC B
        JR NC,_left_bit
        PUSH IX                 ; the byte before, if there is one
        POP DE
        LD A,D
        OR E
        JR Z,_left_end
        DEC HL
        CALL plane_free
        LD C,A
        INC A
        JR NZ,_left_bit
        LD DE,-8                ; all of it
        ADD IX,DE
        LD B,080h
        JR _left
_left_bit:
        LD A,C
        AND B
        JR Z,_left_end
        DEC IX
        JR _left
_left_end:
        LD (gfx_x),IX
        LD DE,(paint_x2)
        PUSH DE
        POP IX
        CALL paint_look
_right: RRC B
        JR NC,_right_bit
        INC HL
        PUSH IX
        POP DE
        PUSH HL
        LD HL,GFX_WIDTH - 1
        OR A
        SBC HL,DE
        POP HL
        JR Z,_right_end
        CALL plane_free
        LD C,A
        INC A
        JR NZ,_right_bit
        LD DE,8
        ADD IX,DE
        LD B,001h
        JR _right
_right_bit:
        LD A,C
        AND B
        JR Z,_right_end
        INC IX
        JR _right
_right_end:
        LD (gfx_x2),IX
        LD HL,(gfx_y)
        LD (gfx_y2),HL
        CALL plane_fill
        LD A,(paint_first)
        OR A
        JR Z,_known
        XOR A
        LD (paint_first),A
        LD HL,(gfx_x2)          ; nothing is known of the line behind
        LD (paint_x2),HL
        INC HL
        LD (paint_x1),HL
_known: LD HL,(gfx_x)
        LD (paint_from),HL
        LD HL,(gfx_x2)
        LD (paint_to),HL
        CALL paint_runs         ; ahead
        LD HL,paint_way         ; and behind: left and right of the run
        LD A,(HL)
        NEG
        LD (HL),A
        LD HL,(paint_x1)
        DEC HL
        LD (paint_to),HL
        CALL paint_runs
        LD HL,(paint_x2)
        INC HL
        LD (paint_from),HL
        LD HL,(gfx_x2)
        LD (paint_to),HL
; Queues the runs of free dots from paint_from to paint_to in the line next to gfx_y, the way paint_way.
paint_runs:
        LD HL,(paint_to)
        LD DE,(paint_from)
        OR A
        SBC HL,DE
        RET M                   ; none there
        INC HL
        LD A,(paint_way)
        LD B,A
        LD A,(gfx_y)
        ADD A,B
        CP GFX_HEIGHT
        RET NC
        LD (paint_line),A
        EXX                     ; HL' = dots left
        LD DE,(paint_from)
        CALL plane_address
        LD B,A
        XOR A
        LD (paint_run),A        ; 1: in a run
_byte:  CALL plane_free
        LD C,A
        BIT 7,B
        JR Z,_bit
        OR A
        JR Z,_whole
        INC A
        JR NZ,_bit
_whole: EXX                     ; eight dots alike, if as many are left
        LD DE,-8
        ADD HL,DE
        JR NC,_short
        LD A,(paint_run)
        EXX
        XOR C
        RRA
        LD DE,8
        CALL C,_change
        CALL paint_alike
        JR NZ,_byte
        JR _end
_short: LD DE,8
        ADD HL,DE
        EXX
_bit:   LD A,C
        AND B
        JR Z,_gap
        LD A,1
_gap:   LD DE,paint_run
        EX DE,HL
        CP (HL)
        EX DE,HL
        LD DE,0
        CALL NZ,_change
        EXX
        DEC HL
        LD A,H
        OR L
        EXX
        JR Z,_end
        RRC B
        JR NC,_bit
        INC HL
        JR _byte
_end:   LD A,(paint_run)
        RRA
        RET NC
        LD DE,0
; A run begins or ends where HL' + DE dots are left. Keeps BC, HL.
_change:
        PUSH HL
        PUSH DE
        EXX
        POP DE
        PUSH HL
        ADD HL,DE
        EX DE,HL
        LD HL,(paint_to)
        INC HL
        OR A
        SBC HL,DE
        EX DE,HL
        POP HL
        PUSH DE
        EXX
        POP DE
        LD HL,paint_run
        LD A,(HL)
        XOR 1
        LD (HL),A
        JR Z,_ends
        LD (paint_start),DE
        POP HL
        RET
_ends:  DEC DE
        PUSH BC
        CALL paint_put
        POP BC
        POP HL
        RET

; Past the byte at HL and those behind it that are the same in all planes, of the HL' / 8 that count. HL the first
; other one, B its first bit, HL' the dots left, Z when there are none.
paint_alike:
        EXX
        LD D,H                  ; at most 640
        LD A,L
        SRL D
        RRA
        SRL D
        RRA
        SRL A
        EXX
        INC HL
        LD (paint_bytes),A
        OR A
        JR Z,_none
        LD B,A
        DEC HL
        OUT (SELECT_BLUE),A
        LD D,(HL)
        OUT (SELECT_RED),A
        LD E,(HL)
        OUT (SELECT_GREEN),A
        LD C,(HL)
_next:  INC HL
        OUT (SELECT_BLUE),A
        LD A,(HL)
        CP D
        JR NZ,_other
        OUT (SELECT_RED),A
        LD A,(HL)
        CP E
        JR NZ,_other
        OUT (SELECT_GREEN),A
        LD A,(HL)
        CP C
        JR NZ,_other
        DJNZ _next
        INC HL
_other: LD A,(paint_bytes)
        SUB B
        EXX
        LD E,A
        LD D,0
        EX DE,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        EX DE,HL
        OR A
        SBC HL,DE
        EXX
_none:  LD B,080h
        EXX
        LD A,H
        OR L
        EXX
        RET

; Column DE of line gfx_y: HL address, B bit, C free dots of its byte, Z when it is none.
paint_look:
        LD A,(gfx_y)
        CALL plane_address
        LD B,A
        CALL plane_free
        LD C,A
        AND B
        RET

; The run paint_start to DE, line paint_line, way paint_way into the queue; what does not fit sets paint_full.
paint_put:
        LD HL,(paint_next)
        LD BC,PAINT_QUEUE_END - 4
        OR A
        SBC HL,BC
        ADD HL,BC
        JR NC,_full
        LD (HL),E
        INC HL
        LD A,(paint_way)
        AND 080h
        OR D
        LD (HL),A
        INC HL
        LD DE,(paint_start)
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        LD A,(paint_line)
        LD (HL),A
        INC HL
        LD (paint_next),HL
        RET
_full:  LD A,1
        LD (paint_full),A
        RET
; The last one out.
paint_take:
        LD HL,(paint_next)
        LD DE,-5
        ADD HL,DE
        LD (paint_next),HL
        LD A,H
        OUT (WINDOW_PAGE),A
        LD H,WINDOW / 256
        LD E,(HL)
        INC HL
        LD A,(HL)
        LD C,A
        AND 003h
        LD D,A
        LD (paint_x2),DE
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD (paint_x1),DE
        INC HL
        LD A,(HL)
        LD (gfx_y),A
        LD A,C
        RLA
        SBC A,A                 ; FFh: up
        OR 1
        LD (paint_way),A
        RET

; Three masks at HL, FFh for each bit of colour A.
plane_masks:
        LD B,3
        LD C,A
_mask:  SRL C
        SBC A,A
        LD (HL),A
        INC HL
        DJNZ _mask
        RET

; A = the dots of the byte at HL that are neither paint nor border. Keeps BC, HL.
plane_free:
        OUT (SELECT_BLUE),A
        LD A,(paint_ink)
        XOR (HL)
        LD D,A
        LD A,(paint_border)
        XOR (HL)
        LD E,A
        OUT (SELECT_RED),A
        LD A,(paint_ink + 1)
        XOR (HL)
        OR D
        LD D,A
        LD A,(paint_border + 1)
        XOR (HL)
        OR E
        LD E,A
        OUT (SELECT_GREEN),A
        LD A,(paint_ink + 2)
        XOR (HL)
        OR D
        LD D,A
        LD A,(paint_border + 2)
        XOR (HL)
        OR E
        AND D
        RET

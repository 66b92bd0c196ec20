; Lines and rectangles cut to the screen, GFX_WIDTH x GFX_HEIGHT dots. Operands and results: gfx_x, gfx_y, gfx_x2,
; gfx_y2.
;
;   clip_line       cuts the line; C when nothing of it is on the screen
;   clip_swap       its ends change places
;   clip_order      sorts HL and DE and cuts them to 0..BC; C when nothing is left

; The two ends change places.
clip_swap:
        LD HL,(gfx_x)
        LD DE,(gfx_x2)
        LD (gfx_x2),HL
        LD (gfx_x),DE
        LD HL,(gfx_y)
        LD DE,(gfx_y2)
        LD (gfx_y2),HL
        LD (gfx_y),DE
        RET

; Cuts the line to what is on the screen: C when nothing is. An end that lies outside moves to the edge by halving
; the way to the other end, which takes no products of large numbers.
clip_line:
        LD HL,(gfx_x2)
        LD DE,(gfx_y2)
        CALL clip_side
        LD C,A
        LD HL,(gfx_x)
        LD DE,(gfx_y)
        CALL clip_side
        LD B,A
        OR C
        RET Z
        LD A,B
        AND C
        SCF
        RET NZ                  ; both beyond the same edge
        LD A,B
        OR A
        JR NZ,_outside
        CALL clip_swap
        JR clip_line
_outside:
        NEG
        AND B
        LD C,A                  ; the edge
        LD HL,(gfx_x2)          ; the end that stays; it is needed again
        PUSH HL
        LD HL,(gfx_y2)
        PUSH HL
        LD B,17
_halve: LD HL,(gfx_x)
        LD DE,(gfx_x2)
        CALL clip_middle
        PUSH HL
        LD HL,(gfx_y)
        LD DE,(gfx_y2)
        CALL clip_middle
        EX DE,HL
        POP HL
        CALL clip_side
        AND C
        JR Z,_inner
        LD (gfx_x),HL
        LD (gfx_y),DE
        DJNZ _halve
        JR _found
_inner: LD (gfx_x2),HL
        LD (gfx_y2),DE
        DJNZ _halve
_found: LD HL,(gfx_x2)
        LD (gfx_x),HL
        LD HL,(gfx_y2)
        LD (gfx_y),HL
        POP HL
        LD (gfx_y2),HL
        POP HL
        LD (gfx_x2),HL
        JR clip_line

; A = edges beyond which x HL, y DE lies: bits 0 left, 1 right, 2 above, 3 below. Keeps BC, DE, HL.
clip_side:
        PUSH HL
        LD A,1
        BIT 7,H
        JR NZ,_y
        PUSH DE
        LD DE,-GFX_WIDTH
        ADD HL,DE
        POP DE
        LD A,0
        ADC A,A
        ADD A,A
_y:     LD L,A
        LD A,4
        BIT 7,D
        JR NZ,_end
        LD A,8
        INC D
        DEC D
        JR NZ,_end
        LD A,E
        CP GFX_HEIGHT
        CCF
        LD A,0
        JR NC,_end
        LD A,8
_end:   OR L
        POP HL
        RET

; HL = the middle of HL and DE.
clip_middle:
        LD A,H
        XOR 080h
        LD H,A
        LD A,D
        XOR 080h
        LD D,A
        ADD HL,DE
        RR H
        RR L
        LD A,H
        XOR 080h
        LD H,A
        RET

; Sorts HL and DE and cuts them to 0..BC; C when nothing is left.
clip_order:
        LD A,H                  ; signed: compare with the sign bits turned
        XOR 080h
        LD H,A
        LD A,D
        XOR 080h
        LD D,A
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_sorted
        EX DE,HL
_sorted:
        LD A,H
        XOR 080h
        LD H,A
        LD A,D
        XOR 080h
        LD D,A
        RLA
        RET C                   ; the larger one is negative
        BIT 7,H
        JR Z,_positive
        LD HL,0
_positive:
        PUSH HL
        LD H,B
        LD L,C
        OR A
        SBC HL,DE
        JR NC,_inside
        LD D,B
        LD E,C
_inside:
        POP HL
        LD A,C                  ; C: the smaller one is beyond
        SUB L
        LD A,B
        SBC A,H
        RET

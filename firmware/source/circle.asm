; Circles, ellipses and arcs, on planes and in semigraphics: circle_dot draws one dot.
;
;   circle_draw     centre gfx_cx, gfx_cy, radius gfx_radius (0..4095), colour gfx_ink. gfx_ratio: the shorter
;                   radius in 1/256 of the longer one; gfx_tall 1: the longer one stands. gfx_from and gfx_to:
;                   places where an arc begins and ends, counterclockwise; both alike: all around.
;
; A place on the circle: its eighth (0-7, counterclockwise from the right) times 4096, plus how far it is there:
; in even eighths the shorter leg, in odd ones 4095 less it. So places compare as plain numbers.

circle_draw:
        LD HL,(gfx_radius)
        LD (circle_x),HL
        EX DE,HL
        LD HL,1
        OR A
        SBC HL,DE
        LD (circle_d),HL
        LD HL,0
        LD (circle_y),HL
_step:  LD HL,(circle_x)
        CALL circle_wide
        LD (circle_x1),HL
        LD HL,(circle_y)
        CALL circle_high
        LD (circle_y1),HL
        LD HL,(circle_y)
        CALL circle_wide
        LD (circle_x2),HL
        LD HL,(circle_x)
        CALL circle_high
        LD (circle_y2),HL
        LD HL,circle_eighths
        LD B,0
_eighth:
        PUSH HL
        PUSH BC
        LD C,(HL)
        CALL circle_inside
        CALL NC,circle_put
        POP BC
        POP HL
        INC HL
        INC B
        BIT 3,B
        JR Z,_eighth
        LD DE,(circle_y)
        INC DE
        LD (circle_y),DE
        LD HL,(circle_d)
        ADD HL,DE
        ADD HL,DE
        INC HL                  ; + 2y + 1
        LD DE,(circle_x)
        LD A,(circle_d + 1)
        RLA
        JR C,_outer
        DEC DE
        LD (circle_x),DE
        OR A
        SBC HL,DE
        OR A
        SBC HL,DE               ; - 2x
_outer: LD (circle_d),HL
        LD HL,(circle_x)
        LD DE,(circle_y)
        OR A
        SBC HL,DE
        RET C
        LD A,(stop_flag)
        OR A
        RET NZ
        JP _step

; Bits: 0 the two legs change places, 1 left, 2 below.
circle_eighths:
        DEFB 0,1,3,2,6,7,5,4

; B eighth: NC when (circle_y) there belongs to the arc. Keeps BC.
circle_inside:
        LD HL,(gfx_from)
        LD DE,(gfx_to)
        OR A
        SBC HL,DE
        RET Z                   ; all around
        PUSH AF                 ; C: the arc does not pass the right end
        LD HL,(circle_y)
        LD A,B
        RRA
        JR NC,_even
        EX DE,HL
        LD HL,4095
        OR A
        SBC HL,DE
_even:  LD A,B
        RLCA
        RLCA
        RLCA
        RLCA
        OR H
        LD H,A                  ; the place
        LD DE,(gfx_from)
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_before
        EX DE,HL
        LD HL,(gfx_to)
        OR A
        SBC HL,DE               ; C: behind the end
        LD A,0
        ADC A,A                 ; 1: at or behind the start, and behind the end
        JR _decide
_before:
        EX DE,HL
        LD HL,(gfx_to)
        OR A
        SBC HL,DE
        LD A,1
        ADC A,A                 ; 2, or 3 when behind the end as well
_decide:
        LD L,A
        POP AF
        LD A,L
        JR NC,_round
        OR A
        RET Z
        SCF
        RET
_round: CP 3                    ; the arc passes the right end: only what is before and behind is left out
        SCF
        RET Z
        OR A
        RET

; C the bits of the eighth: that dot.
circle_put:
        LD HL,(circle_x1)
        LD DE,(circle_y1)
        BIT 0,C
        JR Z,_legs
        LD HL,(circle_x2)
        LD DE,(circle_y2)
_legs:  BIT 1,C
        CALL NZ,circle_negate
        PUSH DE
        LD DE,(gfx_cx)
        ADD HL,DE
        LD (gfx_x),HL
        POP HL
        BIT 2,C
        CALL Z,circle_negate
        LD DE,(gfx_cy)
        ADD HL,DE
        LD (gfx_y),HL
        JP circle_dot

circle_negate:
        XOR A
        SUB L
        LD L,A
        LD A,0
        SBC A,H
        LD H,A
        RET

; HL as the level, or the upright, way on the screen.
circle_wide:
        LD A,(gfx_tall)
        OR A
        RET Z
        JR circle_scale
circle_high:
        LD A,(gfx_tall)
        OR A
        RET NZ
circle_scale:
        LD A,(gfx_ratio + 1)
        OR A
        RET NZ                  ; 256: as it is
        EX DE,HL
        LD A,(gfx_ratio)
        LD HL,0
        LD BC,0800h
_bit:   ADD HL,HL
        RL C
        RLCA
        JR NC,_no
        ADD HL,DE
        JR NC,_no
        INC C
_no:    DJNZ _bit
        LD A,L
        RLA                     ; rounded
        LD L,H
        LD H,C
        RET NC
        INC HL
        RET

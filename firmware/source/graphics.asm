; Statements of graphics, above 6000h. With planes the drawing itself is in the expansion ROM (planes.asm); in
; N-BASIC it is done in semigraphics, 160 x 100 dots (semigraphics.asm).
;
;   do_pset, do_preset      PSET [STEP](x,y)[,c] or (x,y,c)
;   do_line_graphics        LINE [[STEP](x,y)]-[STEP](x,y)[,[c][,B or BF]]
;   do_circle               CIRCLE [STEP](x,y),r[,[c][,[start][,[end][,ratio]]]]
;   do_paint                PAINT [STEP](x,y)[,[c][,border]]
;   do_draw                 DRAW text$
;   gfx_clear               empties the graphics
;   gfx_init                the same at power-on, and shows them

        IF NBASIC
gfx_dot         EQU semi_dot
gfx_line        EQU semi_line
gfx_fill        EQU semi_fill
gfx_paint       EQU semi_paint
gfx_circle      EQU circle_draw
gfx_clear       EQU console_clear
circle_dot      EQU semi_dot
GFX_WIDTH       EQU 160
GFX_HEIGHT      EQU 100
gfx_init:
        LD A,7
        LD (gfx_default),A
        RET
        INCLUDE "semigraphics.asm"
        INCLUDE "clip.asm"
        INCLUDE "circle.asm"
        ELSE
gfx_init:
        LD A,7
        LD (gfx_default),A
        LD A,FAR_INIT
        JR gfx_if_there
gfx_clear:
        LD A,FAR_CLEAR
gfx_if_there:                   ; without the expansion ROM there is nothing to empty
        PUSH HL
        LD HL,far_found
        BIT 0,(HL)
        POP HL
        RET Z
        JP far_call
gfx_dot:
        LD A,FAR_PSET
        JP far_call
gfx_line:
        LD A,FAR_LINE
        JP far_call
gfx_fill:
        LD A,FAR_FILL
        JP far_call
gfx_paint:
        LD A,FAR_PAINT
        JP far_call
gfx_circle:
        LD A,FAR_CIRCLE
        JP far_call
        ENDIF

; ---- What the statements have in common

; The place at HL, perhaps with STEP: gfx_x, gfx_y and the last point; HL behind it, A = (HL).
gfx_place:
        CALL gfx_place_open
        JR gfx_close
; The same without the closing parenthesis: PSET may have a colour before it.
gfx_place_open:
        LD DE,0
        PUSH DE
        PUSH DE
        LD A,(HL)
        CP "@"
        CALL Z,next_char
        CP TOK_STEP
        JR NZ,_absolute
        POP DE
        POP DE
        LD DE,(gfx_last_y)
        PUSH DE
        LD DE,(gfx_last_x)
        PUSH DE
        CALL next_char
_absolute:
        CALL expect
        DEFB "("
        CALL eval_integer
        EX (SP),HL
        ADD HL,DE
        LD (gfx_x),HL
        LD (gfx_last_x),HL
        POP HL
        CALL expect
        DEFB ","
        CALL eval_integer
        EX (SP),HL
        ADD HL,DE
        LD (gfx_y),HL
        LD (gfx_last_y),HL
        POP HL
        JP this_char
gfx_close:
        CALL expect
        DEFB ")"
        RET

; A colour 0-7 or nothing, behind a comma or at the statement's end: gfx_ink = it or the present one.
gfx_colour:
        LD A,(gfx_default)
        LD (gfx_ink),A
gfx_colour_kept:
        CALL gfx_more
        RET C
gfx_ink_set:
        CP 8
        JR NC,gfx_bad
        LD (gfx_ink),A
        RET
gfx_bad:
        LD E,ERR_CALL
        JP error

; At a comma: the argument behind it as `argument` gives it. C: there is none, or it is left out.
gfx_more:
        CALL this_char
        SCF
        RET Z
        CP ","
        LD E,ERR_SYNTAX
        JP NZ,error
        CALL next_char
        JR Z,_none
        CP ","
        JR Z,_none
        CALL eval_byte
        OR A
        RET
_none:  SCF
        RET

; ---- PSET, PRESET, POINT

do_preset:
        XOR A
        JR gfx_dot_statement
do_pset:
        LD A,(gfx_default)
gfx_dot_statement:
        LD (gfx_ink),A
        CALL gfx_place_open
        CP ","
        CALL Z,gfx_colour_kept  ; (x,y,c)
        CALL gfx_close
        CALL gfx_colour_kept    ; (x,y),c
_draw:  PUSH HL
        CALL gfx_dot
        POP HL
        JP this_char

; ---- LINE

do_line_graphics:
        LD A,(HL)
        CP TOK_MINUS
        JR Z,_from_last
        CALL gfx_place
_from_last:
        LD DE,(gfx_last_x)
        LD (gfx_x2),DE
        LD DE,(gfx_last_y)
        LD (gfx_y2),DE
        CALL expect
        DEFB TOK_MINUS
        CALL gfx_place
        LD A,(gfx_default)
        LD (gfx_ink),A
        XOR A
        LD (gfx_shape),A
        CALL this_char
        JR Z,_draw
        CALL gfx_colour_kept
        CALL this_char
        JR Z,_draw
        CALL expect
        DEFB ","
        CALL gfx_letters
_draw:  PUSH HL
        LD A,(gfx_shape)
        DEC A
        JP M,_line
        JR Z,_box
        CALL gfx_fill
        JR _end
_line:  CALL gfx_line
        JR _end
_box:   CALL gfx_box
_end:   POP HL
        JP this_char

; B or BF: as characters, or as the name of a variable. gfx_shape = 1, 2.
gfx_letters:
        LD A,(HL)
        CP TOK_VAR
        JR Z,_symbol
        CALL _letters
        JP this_char
_symbol:
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH HL
        LD HL,SYMBOL_NAME
        ADD HL,DE
        LD A,(HL)
        INC HL
        CP 3
        JR NC,_bad
        CALL _letters
        POP HL
        JP this_char
_letters:
        LD A,(HL)
        AND 0DFh
        CP "B"
        JR NZ,_bad
        LD A,1
        LD (gfx_shape),A
        INC HL
        LD A,(HL)
        AND 0DFh
        CP "F"
        RET NZ
        INC HL
        LD A,2
        LD (gfx_shape),A
        RET
_bad:   LD E,ERR_SYNTAX
        JP error

; The four sides of the rectangle.
gfx_box:
        LD HL,(gfx_x)
        LD DE,(gfx_y)
        LD BC,(gfx_x2)
        PUSH HL
        PUSH DE
        PUSH BC
        LD HL,(gfx_y2)
        PUSH HL
        EX DE,HL                ; HL the first line, DE the second
        LD (gfx_y2),HL
        PUSH DE
        CALL gfx_fill           ; a level line is a rectangle of one
        POP DE
        POP HL
        POP BC
        POP DE
        POP IX
        PUSH IX
        PUSH DE
        PUSH BC
        PUSH HL
        LD (gfx_y),HL
        LD (gfx_y2),HL
        LD (gfx_x),IX
        LD (gfx_x2),BC
        CALL gfx_fill
        POP HL
        POP BC
        POP DE
        POP IX
        PUSH IX
        PUSH DE
        PUSH BC
        PUSH HL
        LD (gfx_y),DE
        LD (gfx_y2),HL
        LD (gfx_x),IX
        LD (gfx_x2),IX
        CALL gfx_fill
        POP HL
        POP BC
        POP DE
        POP IX
        LD (gfx_y),DE
        LD (gfx_y2),HL
        LD (gfx_x),BC
        LD (gfx_x2),BC
        JP gfx_fill

; ---- CIRCLE

do_circle:
        CALL gfx_place
        CALL expect
        DEFB ","
        CALL eval_integer
        LD (gfx_radius),DE
        LD A,D
        CP 4095 / 256 + 1
        JP NC,gfx_bad
        LD DE,(gfx_x)
        LD (gfx_cx),DE
        LD DE,(gfx_y)
        LD (gfx_cy),DE
        CALL gfx_colour
        XOR A
        LD (gfx_tall),A
        LD (gfx_rays),A
        LD DE,0
        LD (gfx_from),DE
        LD (gfx_to),DE
        IF NBASIC
        LD DE,256
        ELSE
        LD DE,128               ; dots are twice as high as wide
        ENDIF
        LD (gfx_ratio),DE
        CALL gfx_angle
        JR C,_no_start
        LD (gfx_from),DE
        JR NZ,_no_start
        LD A,1                  ; negative: a radius is drawn
        LD (gfx_rays),A
_no_start:
        CALL gfx_angle
        JR C,_no_end
        LD (gfx_to),DE
        JR NZ,_no_end
        LD A,(gfx_rays)
        OR 2
        LD (gfx_rays),A
_no_end:
        CALL gfx_flatness
        PUSH HL
        LD A,(gfx_rays)
        RRA
        LD HL,(gfx_from)
        CALL C,gfx_ray
        LD A,(gfx_rays)
        RRA
        RRA
        LD HL,(gfx_to)
        CALL C,gfx_ray
        CALL gfx_circle
        POP HL
        JP this_char

; At a comma: an angle: DE = its place on the circle, Z when it was negative. C: none.
gfx_angle:
        CALL this_char
        SCF
        RET Z
        CALL expect
        DEFB ","
        JR Z,_none
        CP ","
        JR Z,_none
        CALL eval_number
        PUSH HL
        LD A,(FAC)
        LD HL,FAC + 2           ; sign of an integer,
        OR A
        JR Z,_sign
        LD HL,FAC + 4           ; of a float
_sign:  LD A,(HL)
        AND 080h
        PUSH AF
        CALL NZ,float_negate
        LD HL,gfx_number
        CALL fac_store
        CALL float_cos
        CALL _leg
        LD (circle_x),HL
        LD HL,gfx_number
        CALL fac_load
        CALL float_sin
        CALL _leg
        LD (circle_y),HL
        CALL gfx_eighth
        POP AF
        POP HL
        XOR 080h                ; Z: it was negative; no carry
        RET
_none:  SCF
        RET
_leg:   LD HL,gfx_other         ; FAC times the radius, as an integer
        PUSH HL
        CALL fac_store
        LD HL,(gfx_radius)
        CALL integer_to_fac
        POP HL
        CALL float_mul
        JP float_to_integer

; DE = the place of the point circle_x, circle_y.
gfx_eighth:
        LD HL,(circle_x)
        LD A,H
        RLA
        SBC A,A
        AND 1
        LD C,A                  ; 1: left
        CALL gfx_absolute
        PUSH HL
        LD HL,(circle_y)
        LD A,H
        RLA
        SBC A,A
        AND 2
        OR C
        LD C,A                  ; + 2: below
        CALL gfx_absolute
        POP DE                  ; DE level, HL upright
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_flat
        JR Z,_flat
        EX DE,HL                ; HL the shorter leg
        SET 2,C
_flat:  LD B,0
        EX DE,HL
        LD HL,_eighths
        ADD HL,BC
        LD A,(HL)
        RRA
        JR NC,_even
        LD HL,4095
        OR A
        SBC HL,DE
        EX DE,HL
        LD HL,_eighths
        ADD HL,BC
_even:  LD A,(HL)
        RLCA
        RLCA
        RLCA
        RLCA
        OR D
        LD D,A
        RET
_eighths:
        DEFB 0,3,7,4,1,2,6,5    ; flat: right, left, below right, below left; steep: the same

; HL without its sign.
gfx_absolute:
        BIT 7,H
        RET Z
        JP gfx_negate

; At a comma: the ratio of the radii.
gfx_flatness:
        CALL this_char
        RET Z
        CALL expect
        DEFB ","
        CALL eval_number
        PUSH HL
        LD HL,gfx_number
        CALL fac_store
        LD HL,256
        CALL integer_to_fac
        LD HL,gfx_number
        CALL float_mul
        CALL float_to_integer   ; beyond 127: Overflow
        LD A,H
        OR A
        JP M,gfx_bad
        JR Z,_set               ; below 1: the upright radius is the shorter one
        DEC A
        OR L
        JR Z,_set
        LD A,1
        LD (gfx_tall),A
        LD HL,gfx_number
        PUSH HL
        LD HL,256
        CALL integer_to_fac
        LD HL,gfx_other
        CALL fac_store
        POP HL
        CALL fac_load
        LD HL,gfx_other
        CALL float_div
        CALL float_to_integer
_set:   LD (gfx_ratio),HL
        POP HL
        RET

; The radius to the place HL.
gfx_ray:
        LD A,H
        RRCA
        RRCA
        RRCA
        RRCA
        AND 7
        LD B,A
        LD A,H
        AND 00Fh
        LD H,A
        BIT 0,B
        JR Z,_even
        EX DE,HL
        LD HL,4095
        OR A
        SBC HL,DE
_even:  LD (circle_y),HL        ; the shorter leg; the longer one by the circle's equation
        LD A,B
        PUSH AF
        CALL gfx_long_leg
        LD (circle_x),HL
        POP AF
        LD HL,_bits
        LD E,A
        LD D,0
        ADD HL,DE
        LD C,(HL)
        PUSH BC
        LD HL,(circle_x)        ; the level and the upright way
        LD DE,(circle_y)
        BIT 0,C
        JR Z,_legs
        EX DE,HL
_legs:  PUSH DE
        BIT 1,C
        CALL NZ,gfx_negate
        CALL gfx_wide
        LD DE,(gfx_cx)
        ADD HL,DE
        LD (gfx_x2),HL
        POP HL
        POP BC
        BIT 2,C
        CALL Z,gfx_negate
        CALL gfx_high
        LD DE,(gfx_cy)
        ADD HL,DE
        LD (gfx_y2),HL
        LD HL,(gfx_cx)
        LD (gfx_x),HL
        LD HL,(gfx_cy)
        LD (gfx_y),HL
        JP gfx_line
_bits:  DEFB 0,1,3,2,6,7,5,4

; HL = the root of radius squared less circle_y squared.
gfx_long_leg:
        LD HL,(gfx_radius)
        CALL _square
        LD HL,gfx_other
        CALL fac_store
        LD HL,(circle_y)
        CALL _square
        LD HL,gfx_other
        CALL float_sub
        CALL float_sqr
        JP float_to_integer
_square:
        CALL integer_to_fac
        LD HL,gfx_number
        PUSH HL
        CALL fac_store
        POP HL
        JP float_mul
; HL by the ratio, if that way is the shorter one. Signs are kept.
gfx_wide:
        LD A,(gfx_tall)
        OR A
        RET Z
        JR gfx_scaled
gfx_high:
        LD A,(gfx_tall)
        OR A
        RET NZ
gfx_scaled:
        CALL integer_to_fac
        LD HL,gfx_number
        CALL fac_store
        LD HL,(gfx_ratio)
        CALL integer_to_fac
        LD HL,gfx_number
        CALL float_mul
        LD HL,gfx_other
        PUSH HL
        CALL fac_store
        LD HL,256
        CALL integer_to_fac
        POP HL
        CALL float_div
        JP float_to_integer

; ---- PAINT

do_paint:
        CALL gfx_place
        CALL gfx_colour
        LD A,(gfx_ink)
        LD (gfx_border),A
        CALL gfx_more
        JR C,_draw
        CP 8
        JP NC,gfx_bad
        LD (gfx_border),A
_draw:  PUSH HL
        CALL gfx_paint
        POP HL
        JP NC,this_char
        LD E,ERR_MEMORY
        JP error

; ---- DRAW

; Moves of a pen: U D L R up, down, left, right, E F G H aslant (up right, down right, down left, up left), each with
; a number; Mx,y to a place, M+x,y or M-x,y by a way; B before it: without drawing, N: and back again; Cn colour;
; Sn scale in quarters; An turned by n quarters of a circle. It starts at the last point.
do_draw:
        CALL eval_string
        PUSH HL
        LD (mml_text),DE
        LD A,B
        LD (mml_left),A
        LD A,(gfx_default)
        LD (gfx_ink),A
draw_move:
        XOR A
        LD (draw_how),A
draw_next:
        CALL mml_char
        JR NC,_command
        POP HL
        JP this_char
_command:
        LD HL,draw_how
        CP "B"
        JR NZ,_back
        SET 0,(HL)
        JR draw_next
_back:  CP "N"
        JR NZ,_colour
        SET 1,(HL)
        JR draw_next
_colour:
        CP "C"
        JR NZ,_scale
        CALL draw_number
        LD A,E
        CALL gfx_ink_set
        JR draw_next
_scale: CP "S"
        JR NZ,_angle
        CALL draw_number
        LD A,E
        LD (draw_scale),A
        JR draw_next
_angle: CP "A"
        JR NZ,_to
        CALL draw_number
        LD A,E
        CP 4
        JR NC,draw_bad
        LD (draw_angle),A
        JR draw_next
_to:    CP "M"
        JR NZ,_way
        CALL mml_char
        JP C,draw_bad
        PUSH AF
        CALL mml_back
        CALL draw_signed
        CALL mml_char
        CP ","
        JR NZ,draw_bad
        PUSH DE
        CALL draw_signed
        POP BC
        POP AF
        CP "+"
        JR Z,draw_by
        CP "-"
        JR Z,draw_by
        JR draw_to
_way:   LD HL,draw_ways
        LD B,8
_look:  CP (HL)
        INC HL
        JR Z,draw_found
        INC HL
        DJNZ _look
draw_bad:
        JP illegal_call
draw_ways:
        DEFB "U",0Ch,"D",04h,"L",03h,"R",01h,"E",0Dh,"F",05h,"G",07h,"H",0Fh
draw_found:
        LD A,(HL)               ; two bits each: 1 with, 3 against the axis
        PUSH AF
        CALL draw_number
        POP AF
        LD B,D
        LD C,E
        PUSH AF
        CALL draw_along         ; BC level
        POP AF
        RRA
        RRA
        PUSH BC
        LD B,D
        LD C,E
        CALL draw_along
        LD D,B
        LD E,C
        POP BC
; BC to the right, DE down, scaled and turned.
draw_by:
        CALL draw_scaled
        PUSH DE
        LD D,B
        LD E,C
        CALL draw_scaled
        LD B,D
        LD C,E
        POP DE
        LD A,(draw_angle)
        OR A
        JR Z,_turned
_turn:  PUSH AF                 ; x, y = y, -x
        LD HL,0
        OR A
        SBC HL,BC
        LD B,D
        LD C,E
        EX DE,HL
        POP AF
        DEC A
        JR NZ,_turn
_turned:
        LD HL,(gfx_last_x)
        ADD HL,BC
        LD B,H
        LD C,L
        LD HL,(gfx_last_y)
        ADD HL,DE
        EX DE,HL
; To BC, DE.
draw_to:
        LD HL,(gfx_last_x)
        LD (gfx_x),HL
        LD HL,(gfx_last_y)
        LD (gfx_y),HL
        LD (gfx_x2),BC
        LD (gfx_y2),DE
        LD A,(draw_how)
        BIT 1,A
        JR NZ,_stay
        LD (gfx_last_x),BC
        LD (gfx_last_y),DE
_stay:  RRA
        CALL NC,gfx_line
        JP draw_move

; BC times the low two bits of A: 0, 1, 3 for -1. Keeps AF, DE.
draw_along:
        BIT 0,A
        JR NZ,_sign
        LD BC,0
_sign:  BIT 1,A
        RET Z
        LD HL,0
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        RET
; DE times the scale. Keeps BC.
draw_scaled:
        LD A,(draw_scale)
        OR A
        RET Z
        PUSH BC
        BIT 7,D
        PUSH AF
        EX DE,HL
        CALL NZ,gfx_negate
        EX DE,HL
        LD B,A
        LD HL,0
_add:   ADD HL,DE
        DJNZ _add
        SRL H
        RR L
        SRL H
        RR L
        POP AF
        CALL NZ,gfx_negate
        EX DE,HL
        POP BC
        RET
; DE = a number with a sign, perhaps.
draw_signed:
        CALL mml_char
        JP C,draw_bad
        CP "+"
        JR Z,draw_needed
        CP "-"
        JR Z,_minus
        CALL mml_back
        JR draw_needed
_minus: CALL draw_needed
        EX DE,HL
        CALL gfx_negate
        EX DE,HL
        RET
draw_needed:
        CALL draw_number
        LD A,B
        OR A
        RET NZ
        JP draw_bad
; DE = the number at hand, 1 where there is none; B not 0: there was one.
draw_number:
        LD DE,0
        LD B,E
_digit: CALL mml_char
        JR C,_end
        SUB "0"
        CP 10
        JR NC,_back
        LD B,1
        LD H,D
        LD L,E
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        LD E,A
        LD D,0
        ADD HL,DE
        EX DE,HL
        JR _digit
_back:  CALL mml_back
_end:   LD A,B
        OR A
        RET NZ
        INC DE
        RET
; HL negative.
gfx_negate:
        PUSH AF
        XOR A
        SUB L
        LD L,A
        LD A,0
        SBC A,H
        LD H,A
        POP AF
        RET

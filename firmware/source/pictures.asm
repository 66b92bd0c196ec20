; Parts of the planes kept in arrays of numbers.
;
;   do_get          GET@ (x,y)-(x,y),array: the rectangle
;   do_put          PUT@ (x,y),array[,PSET, PRESET, AND, OR or XOR]: the array's picture with its top left corner there
; The array: an element or its name, for the first one. In its bytes: width and height in dots (2 bytes each); then for each
; line blue, red and green, a bit a dot from bit 7 on, in whole bytes. A picture must fit the array, and the screen.

        IF NBASIC
do_get:
do_put:
        LD E,ERR_UNAVAILABLE
        JP error
        ELSE

picture_at      EQU paint_next          ; PAINT is not at work meanwhile: the array's next byte,
picture_room    EQU picture_at + 2      ; bytes there
picture_width   EQU picture_room + 2    ; in dots
picture_height  EQU picture_width + 2
picture_bytes   EQU picture_height + 2  ; a line of one plane
picture_last    EQU picture_bytes + 1   ; dots of its last byte
picture_shift   EQU picture_last + 1    ; dots to the right of a byte's edge
picture_address EQU picture_shift + 1   ; on the plane
picture_how     EQU picture_address + 2 ; routine that joins old and new
        IF picture_how + 2 > paint_end
        .ERROR the variables of pictures are more than those of PAINT
        ENDIF
PICTURE_LINE    EQU LINE_TEXT           ; a line below C000h, and one byte
PICTURE_MASK    EQU LINE_TEXT + 60h     ; which of its dots count

do_get: CALL gfx_place
        LD DE,(gfx_x)
        LD (gfx_x2),DE
        LD DE,(gfx_y)
        LD (gfx_y2),DE
        CALL expect
        DEFB TOK_MINUS
        CALL gfx_place
        CALL picture_array
        PUSH HL
        LD HL,(gfx_x)
        LD DE,(gfx_x2)
        LD BC,639
        CALL picture_order
        LD (gfx_x),HL
        LD (picture_width),DE
        LD HL,(gfx_y)
        LD DE,(gfx_y2)
        LD C,PLANE_LINES - 1
        LD B,0
        CALL picture_order
        LD (gfx_y),HL
        LD (picture_height),DE
        CALL picture_begin
        LD HL,picture_width
        LD DE,(picture_at)
        LD BC,4
        LDIR
        LD (picture_at),DE
        LD HL,picture_take
        JP picture_lines

do_put: CALL gfx_place
        CALL picture_array
        LD DE,picture_xor
        JR Z,_how
        CALL expect
        DEFB ","
        LD DE,picture_hows
        LD B,5
_look:  LD A,(DE)
        CP (HL)
        INC DE
        JR Z,_found
        INC DE
        INC DE
        DJNZ _look
        JP syntax_error
_found: INC HL
        EX DE,HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL
_how:   LD (picture_how),DE
        CALL this_char
        PUSH HL
        LD A,(picture_room)
        LD B,A
        LD A,(picture_room + 1)
        OR A
        JR NZ,_head
        LD A,B
        CP 5
        JP C,picture_bad
_head:  LD HL,(picture_at)
        LD DE,picture_width
        LD BC,4
        LDIR
        LD (picture_at),HL
        LD HL,(gfx_x)
        LD DE,(picture_width)
        LD BC,639
        CALL picture_within
        LD HL,(gfx_y)
        LD DE,(picture_height)
        LD C,PLANE_LINES - 1
        LD B,0
        CALL picture_within
        CALL picture_begin
        LD HL,PICTURE_MASK
        LD A,(picture_bytes)
        LD B,A
_mask:  LD (HL),0FFh
        INC HL
        DJNZ _mask
        LD (HL),B
        DEC HL
        LD A,(picture_last)
        LD (HL),A
        LD HL,PICTURE_MASK
        CALL picture_right
        LD HL,picture_draw

; Every line, every plane through the routine HL: C = port of the plane. Ends the statement: the text pointer is on the
; stack.
picture_lines:
        LD A,(picture_height)
        LD B,A
_line:  LD C,SELECT_BLUE
_plane: PUSH BC
        PUSH HL
        LD DE,_back
        PUSH DE
        JP (HL)
_back:  POP HL
        POP BC
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        PUSH HL
        LD HL,(picture_address)
        LD DE,PLANE_LINE
        ADD HL,DE
        LD (picture_address),HL
        POP HL
        DJNZ _line
        POP HL
        JP this_char

; A line of the plane C to the array.
picture_take:
        LD HL,(picture_address)
        LD DE,PICTURE_LINE
        LD A,(picture_bytes)
        LD B,A
        OUT (C),A
_byte:  LD C,(HL)
        INC HL
        LD A,(picture_shift)
        OR A
        JR Z,_even
        PUSH BC
        LD B,A
        LD A,(HL)
_left:  ADD A,A
        RL C
        DJNZ _left
        LD A,C
        POP BC
        LD C,A
_even:  LD A,C
        LD (DE),A
        INC DE
        DJNZ _byte
        OUT (SELECT_RAM),A
        DEC DE
        LD A,(picture_last)
        LD L,A
        LD A,(DE)
        AND L
        LD (DE),A
        LD HL,PICTURE_LINE
        LD DE,(picture_at)
        LD BC,(picture_bytes)
        LD B,0
        LDIR
        LD (picture_at),DE
        RET

; A line of the array to the plane C.
picture_draw:
        LD HL,(picture_at)
        LD DE,PICTURE_LINE
        PUSH BC
        LD BC,(picture_bytes)
        LD B,0
        LDIR
        LD (picture_at),HL
        EX DE,HL
        LD (HL),B
        LD HL,PICTURE_LINE
        CALL picture_right
        LD IX,(picture_how)
        EXX
        LD HL,PICTURE_MASK
        EXX
        LD DE,PICTURE_LINE
        LD HL,(picture_address)
        LD A,(picture_bytes)
        POP BC
        LD B,A
        INC B
        OUT (C),A
_byte:  LD A,(DE)
        CALL _join
        XOR (HL)                ; what changes, and may
        EXX
        AND (HL)
        INC HL
        EXX
        XOR (HL)
        LD (HL),A
        INC HL
        INC DE
        DJNZ _byte
        OUT (SELECT_RAM),A
        RET
_join:  JP (IX)

picture_hows:
        DEFB TOK_PSET
        DEFW picture_pset
        DEFB TOK_PRESET
        DEFW picture_preset
        DEFB TOK_AND
        DEFW picture_and
        DEFB TOK_OR
        DEFW picture_or
        DEFB TOK_XOR
        DEFW picture_xor
picture_preset:
        CPL
picture_pset:
        RET
picture_and:
        AND (HL)
        RET
picture_or:
        OR (HL)
        RET
picture_xor:
        XOR (HL)
        RET

; picture_bytes and one more at HL, picture_shift dots to the right.
picture_right:
        LD A,(picture_shift)
        OR A
        RET Z
        LD C,A
_dot:   PUSH HL
        LD A,(picture_bytes)
        INC A
        LD B,A
        OR A
_byte:  RR (HL)
        INC HL
        DJNZ _byte
        POP HL
        DEC C
        JR NZ,_dot
        RET

; ", array" at HL: picture_at, picture_room; as this_char behind it.
picture_array:
        CALL expect
        DEFB ","
        CP TOK_ARRAY
        JR Z,_element
        CP TOK_VAR
        JP NZ,type_mismatch
        CALL variable_name
        PUSH HL
        LD HL,SYMBOL_TYPE
        ADD HL,DE
        LD A,(HL)
        OR TYPE_ARRAY
        CALL symbol_sibling
        EX DE,HL
        LD A,(HL)
        OR A
        JR Z,picture_bad
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        POP HL
        JR _there
_element:
        INC HL
        CALL array_element
_there: LD (picture_at),DE
        PUSH HL
        LD HL,(arrays_base)
_block: LD C,(HL)               ; the block that it lies in
        INC HL
        LD B,(HL)
        DEC HL
        ADD HL,BC
        PUSH HL
        SBC HL,DE
        JR Z,_next
        JR NC,_ends
_next:  POP HL
        JR _block
_ends:  LD (picture_room),HL
        POP HL
        POP HL
        JP this_char
picture_bad:
        JP illegal_call

; HL, DE in order, the larger up to BC: HL = the smaller, DE = how many from it to the other.
picture_order:
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_order
        EX DE,HL
_order: PUSH HL
        LD H,B
        LD L,C
        OR A
        SBC HL,DE
        JR C,picture_bad
        POP HL
        EX DE,HL
        OR A
        SBC HL,DE
        INC HL
        EX DE,HL
        RET
; DE dots from HL on lie between 0 and BC.
picture_within:
        PUSH DE
        EX DE,HL
        ADD HL,DE
        DEC HL
        CALL picture_order
        POP HL
        OR A
        SBC HL,DE
        RET Z
        JR picture_bad

; For a picture of picture_width, picture_height at gfx_x, gfx_y: what else is needed; it must fit the array.
picture_begin:
        LD HL,(picture_width)
        LD A,L
        DEC A
        CPL
        AND 7                   ; dots that its last byte lacks
        LD B,A
        LD A,0FFh
        INC B
        JR _test
_left:  ADD A,A
_test:  DJNZ _left
        LD (picture_last),A
        LD DE,7
        ADD HL,DE
        LD B,3
_eighth:
        SRL H
        RR L
        DJNZ _eighth
        LD A,L
        LD (picture_bytes),A
        LD D,H
        LD E,L
        ADD HL,HL
        ADD HL,DE
        EX DE,HL
        LD HL,4
        LD A,(picture_height)
        LD B,A
_line:  ADD HL,DE
        DJNZ _line
        LD DE,(picture_room)
        EX DE,HL
        OR A
        SBC HL,DE
        JR C,picture_bad
        LD HL,(gfx_y)
        LD D,H
        LD E,L
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD DE,(gfx_x)
        LD A,E
        AND 7
        LD (picture_shift),A
        LD B,3
_byte:  SRL D
        RR E
        DJNZ _byte
        ADD HL,DE
        LD DE,PLANE
        ADD HL,DE
        LD (picture_address),HL
        RET
        ENDIF

; The three graphic planes of 640 x 200, and the programmable glyphs.
;
; A plane is reached by bringing it to C000h-FFFFh, where otherwise RAM with the text is. While one is there,
; code and stack must lie below.

; Planes empty, palette in order, graphics shown. The first use of the planes.
graphics_init:
        LD C,SELECT_BLUE
_plane: OUT (C),A
        LD HL,PLANE
        LD DE,PLANE + 1
        PUSH BC
        LD BC,PLANE_LINE * PLANE_LINES - 1
        LD (HL),0
        LDIR
        POP BC
        INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A

        LD C,PALETTE            ; black after power-on
        XOR A
_entry: OUT (C),A
        INC C
        INC A
        CP 8
        JR NZ,_entry

        LD A,ROM_MODE + GRAPHICS_ON
        LD (mode_31),A
        OUT (MODE_31),A
        RET

; A level line: line A, from column BC to column DE (both drawn, BC <= DE < 640) in the pattern at HL, one
; byte a plane: blue, red, green. Uses AF, BC, DE, HL.
graphics_span:
        LD (span_pattern),HL
        PUSH DE
        LD L,A                  ; PLANE + 80 * line
        LD H,0
        LD D,H
        LD E,L
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD DE,PLANE
        ADD HL,DE
        LD A,C
        CALL mask_from
        LD (span_left),A
        CALL byte_of            ; BC / 8
        LD B,0
        ADD HL,BC
        LD (span_address),HL
        LD H,C
        POP BC
        LD A,C
        AND 7
        INC A
        CALL mask_from          ; columns right of the last one, inverted
        CPL
        LD L,A
        LD A,C
        AND 7
        CP 7
        JR NZ,_edge
        LD L,0FFh
_edge:  CALL byte_of
        LD A,C
        SUB H
        LD (span_bytes),A
        JR NZ,_wide
        LD A,(span_left)        ; one byte only
        AND L
        LD (span_left),A
_wide:  LD A,L
        LD (span_right),A

        LD C,SELECT_BLUE
_plane: OUT (C),A
        LD HL,(span_pattern)
        LD E,(HL)               ; the pattern of this plane
        INC HL
        LD (span_pattern),HL
        LD HL,(span_address)
        LD A,(span_left)
        CALL _merge
        LD A,(span_bytes)
        OR A
        JR Z,_next
        LD B,A
        JR _first
_fill:  LD (HL),E
_first: INC HL
        DJNZ _fill
        LD A,(span_right)
        CALL _merge
_next:  INC C
        LD A,C
        CP SELECT_RAM
        JR NZ,_plane
        OUT (SELECT_RAM),A
        RET
; The pixels of (HL) that are set in the mask A take the pattern E.
_merge: LD D,A
        LD A,(HL)
        XOR E
        CPL
        OR D
        CPL                     ; (old XOR pattern) AND NOT mask
        XOR E
        LD (HL),A
        RET

; A = mask of the columns from A (its low three bits) to the end of the byte.
mask_from:
        PUSH BC
        AND 7
        LD B,A
        LD A,0FFh
        JR Z,_done
_shift: SRL A
        DJNZ _shift
_done:  POP BC
        RET

; C = BC / 8 of a column BC. Keeps A.
byte_of:
        SRL B
        RR C
        SRL B
        RR C
        SRL C
        RET

; Makes the eight bytes at HL the glyph of code A (80h-FFh). Ends with interrupts on.
pcg_define:
        LD D,0                  ; DE = 8 * (code - 80h)
        ADD A,A                 ; drops the 80h
        LD E,A
        EX DE,HL
        ADD HL,HL
        ADD HL,HL
        EX DE,HL
        LD B,8
_row:   LD A,(HL)
        INC HL
        DI                      ; the control port also holds the gates that the tune opens and shuts
        OUT (PCG_DATA),A
        LD A,E
        OUT (PCG_ADDRESS),A
        LD A,(pcg_latch)
        OR PCG_WRITE
        OR D
        OUT (PCG_CONTROL),A
        EI
        INC E                   ; glyphs do not cross a page
        DJNZ _row
        RET

; Gives codes 80h-FFh the glyphs of the built-in font; they may hold another program's. Ends with
; interrupts on.
pcg_restore:
        LD DE,0
_byte:  DI
        LD A,E
        OUT (PCG_ADDRESS),A
        LD A,(pcg_latch)
        OR PCG_WRITE + PCG_FROM_ROM
        OR D
        OUT (PCG_CONTROL),A
        EI
        INC DE
        LD A,D
        CP 4
        JR NZ,_byte
        RET

; A 1: the screen shows the programmable glyphs; 0: the built-in font.
pcg_show:
        LD (pcg_shown),A
        OR A
        JR Z,_off
        LD A,PCG_GLYPHS_ON
_off:   OUT (PCG_SWITCH),A
        RET

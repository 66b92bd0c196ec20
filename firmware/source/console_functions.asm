; Functions of the screen and the keyboard. They stand below 6000h, for an expression in the expansion ROM's
; graphics may want them.

; INKEY$: the key that waits, or nothing.
fn_inkey:
        CALL key_poll
        LD B,0
        JR Z,_none
        LD (inkey_text),A
        INC B
_none:  LD DE,inkey_text
        JP result_string

; CSRLIN: the cursor's row.
fn_csrlin:
        LD A,(cursor_row)
        JP result_byte
; POS(x): the cursor's column.
fn_pos: CALL arg_integer
        LD A,(cursor_column)
        JP result_byte

; POINT(x,y): colour of the dot, -1 outside the screen. It may stand in a drawing's own operands, so those stay.
fn_point:
        CALL expect
        DEFB "("
        CALL eval_integer
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_integer
        PUSH DE
        CALL expect
        DEFB ")"
        POP BC
        POP DE
        PUSH HL
        LD HL,(gfx_x)
        PUSH HL
        LD HL,(gfx_y)
        PUSH HL
        LD (gfx_x),DE
        LD (gfx_y),BC
        IF NBASIC
        CALL semi_point
        ELSE
        LD A,FAR_POINT
        CALL far_call
        ENDIF
        POP HL
        LD (gfx_y),HL
        POP HL
        LD (gfx_x),HL
        POP HL
        LD E,A
        RLA
        SBC A,A
        LD D,A
        JP result_integer

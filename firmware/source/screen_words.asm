; Statements of the screen and the keyboard.
;
;   do_locate   LOCATE [x][,[y][,cursor]]
;   do_color    COLOR [text][,[function][,graphics]]; COLOR =(number,colour): palette
;   do_width    WIDTH columns[,rows]
;   do_console  CONSOLE [first][,[count][,[keys][,colour]]]
;   do_cls      CLS [1: text, 2: graphics, 3: both]
;   do_key      KEY number,text$; KEY LIST; KEY ON; KEY OFF
;   argument    the next of several arguments that may be left out: C: left out; else A, E = 0..255. HL ends
;               behind it and its comma.

argument:
        CALL this_char
        SCF
        RET Z
        CP ","
        JR Z,_none
        CALL eval_byte
        PUSH AF
        CALL this_char
        CP ","
        CALL Z,next_char
        POP AF
        OR A
        RET
_none:  CALL next_char
        SCF
        RET

do_locate:
        CALL argument
        JR C,_row
        LD A,(screen_columns)
        DEC A
        CP E
        JP C,illegal_call
        LD A,E
        LD (cursor_column),A
_row:   CALL argument
        JR C,_cursor
        LD A,(screen_rows)
        DEC A
        CP E
        JP C,illegal_call
        LD A,E
        LD (cursor_row),A
_cursor:
        CALL argument
        RET C
        OR A
        JR Z,_set
        LD A,1
_set:   LD (cursor_shown),A
        RET

do_color:
        LD A,(HL)
        CP TOK_EQUAL
        JR Z,_palette
        CALL argument
        JR C,_function
        CP 8
        JP NC,illegal_call
        RRCA
        RRCA
        RRCA
        LD D,A
        LD A,(console_ink)
        AND CELL_FUNCTION
        OR D
        LD (console_ink),A
_function:
        CALL argument
        JR C,_graphics
        CP CELL_FUNCTION + 1
        JP NC,illegal_call
        LD D,A
        LD A,(console_ink)
        AND 0E0h
        OR D
        LD (console_ink),A
_graphics:
        CALL argument
        RET C
        CP 8
        JP NC,illegal_call
        LD (gfx_default),A
        RET
_palette:
        CALL next_char
        CALL expect
        DEFB "("
        CALL eval_byte
        CP 8
        JP NC,illegal_call
        ADD A,PALETTE
        PUSH AF
        CALL expect
        DEFB ","
        CALL eval_byte
        CP 8
        JP NC,illegal_call
        CALL expect
        DEFB ")"
        POP AF
        LD C,A
        OUT (C),E
        JP this_char

do_width:
        LD DE,(screen_rows)     ; rows, columns
        LD B,D
        LD C,E
        PUSH BC
        CALL argument
        POP BC
        JR C,_rows
        LD B,E
_rows:  PUSH BC
        CALL argument
        POP BC
        JR C,_set
        LD C,E
_set:   LD A,B
        CP 80
        JR Z,_columns
        CP 40
_bad:   JP NZ,illegal_call
_columns:
        LD A,C
        CP 25
        JR Z,_good
        CP 20
        JR NZ,_bad
_good:  PUSH HL
        LD D,C
        LD E,B
        CALL console_width
        POP HL
        RET

do_console:
        LD DE,(window_top)      ; E first, D last
        LD B,E
        LD A,D
        SUB E
        INC A
        LD C,A                  ; B first row, C rows
        PUSH BC
        CALL argument
        POP BC
        JR C,_count
        LD B,E
_count: PUSH BC
        CALL argument
        POP BC
        JR C,_keys
        LD C,E
_keys:  LD A,C                  ; at least one row, all on the screen
        OR A
        JP Z,illegal_call
        LD A,B
        ADD A,C
        JP C,illegal_call
        LD E,A
        LD A,(screen_rows)
        CP E
        JP C,illegal_call
        PUSH BC
        CALL argument
        POP BC
        JR C,_window
        OR A
        JR Z,_off
        LD A,1
_off:   LD D,A
        LD A,(keys_shown)
        CP D
        JR Z,_window
        LD A,D
        LD (keys_shown),A
        OR A
        JR NZ,_window
        LD A,(screen_rows)      ; the line goes; if the window ended above it, it takes the row
        DEC A
        LD D,A
        PUSH HL
        PUSH BC
        CALL row_clear
        POP BC
        POP HL
        LD A,B
        ADD A,C
        CP D
        JR NZ,_window
        INC C
_window:
        LD A,B
        ADD A,C
        DEC A
        LD E,A                  ; last row
        LD D,B
        LD A,(keys_shown)
        OR A
        JR Z,_set
        LD A,(screen_rows)
        SUB 2
        CP E
        JR NC,_set
        LD E,A
        CP D
        JP C,illegal_call       ; nothing would be left
_set:   CALL console_window
        CALL keys_show
        LD DE,(window_top)
        LD A,(cursor_row)       ; the cursor stays above the line of keys
        CP D
        JR C,_inside
        LD A,D
        LD (cursor_row),A
_inside:
        CALL argument
        RET C
        PUSH HL
        SUB 1                   ; 0: monochrome
        SBC A,A
        AND 1
        CALL console_mono
        POP HL
        RET

do_cls: LD A,1
        JR Z,_given
        CALL eval_byte
        CP 4
        JP NC,illegal_call
_given: PUSH HL
        RRA
        PUSH AF
        CALL C,console_clear
        POP AF
        RRA
        CALL C,gfx_clear
        POP HL
        JP this_char

; KEY(n) ON, OFF, STOP: whether ON KEY hears of it.
key_trap:
        INC HL
        CALL eval_byte
        DEC A
        CP KEY_TEXTS
        JP NC,illegal_call
        PUSH AF
        CALL expect
        DEFB ")"
        LD B,1 << KEY_TRAP_STOP
        CP TOK_STOP
        JR Z,_known
        DEC B
        CP TOK_ON
        JR Z,_known
        DEC B
        CP TOK_OFF
        JP NZ,syntax_error
_known: INC HL
        POP AF
        PUSH HL
        LD HL,key_traps
        ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  LD A,B
        OR A
        JR Z,_set               ; what was pressed meanwhile is forgotten
        LD A,(HL)
        AND 1 << KEY_TRAP_CAUGHT
        OR B
_set:   LD (HL),A
        LD HL,trace_flag
        SET 7,(HL)
        POP HL
        JP this_char
do_key: CP TOK_LIST
        JR Z,_list
        CP TOK_ON
        JR Z,_on
        CP TOK_OFF
        JR Z,_off
        CP "("
        JR Z,key_trap
        CALL eval_byte
        DEC A
        CP KEY_TEXTS
        JP NC,illegal_call
        PUSH AF
        CALL expect
        DEFB ","
        CALL eval_string        ; B length, DE text
        POP AF
        PUSH HL
        CALL key_text
        LD A,B
        CP KEY_TEXT
        JR C,_fits
        LD B,KEY_TEXT - 1
_fits:  INC B
        JR _next
_char:  LD A,(DE)
        INC DE
        LD (HL),A
        INC HL
_next:  DJNZ _char
        LD (HL),0
        CALL keys_show
        POP HL
        JP this_char
_on:    LD A,1
        JR _show
_off:   XOR A
_show:  PUSH AF
        CALL next_char
        POP AF
        PUSH HL
        LD HL,key_switch
        OR A
        JR NZ,_switch
        LD HL,key_switch_off
_switch:
        CALL do_console
        POP HL
        JP this_char
_list:  CALL next_char
        PUSH HL
        XOR A
_line:  PUSH AF
        INC A
        CP 10
        LD B," "
        JR C,_digit
        LD B,"1"
        SUB 10
_digit: LD C,A
        LD A,B
        CALL console_out
        LD A,C
        ADD A,"0"
        CALL console_out
        LD A," "
        CALL console_out
        POP AF
        PUSH AF
        CALL key_text
_text:  LD A,(HL)
        INC HL
        OR A
        JR Z,_end
        CP " "
        JR NC,_visible
        LD A," "
_visible:
        CALL console_out
        JR _text
_end:   CALL console_newline
        POP AF
        INC A
        CP KEY_TEXTS
        JR NZ,_line
        POP HL
        JP this_char
; KEY ON and KEY OFF are arguments of CONSOLE.
key_switch:
        DEFB ",",",",TOK_DIGIT + 1,0
key_switch_off:
        DEFB ",",",",TOK_DIGIT,0

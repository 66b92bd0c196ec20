; PRINT, and the statements and functions that need little else.

; ---- PRINT [item [;|, item ...]]; TAB(n), SPC(n), USING

do_print:
        LD A,(HL)
        OR A
        JP Z,console_newline
        CP ":"
        JP Z,console_newline
print_item:
        LD A,(HL)
        CP ";"
        JR Z,_joined
        CP ","
        JR Z,_zone
        CP TOK_TAB
        JR Z,_tab
        CP TOK_SPC
        JP Z,_spc
        CP TOK_USING
        JP Z,print_using
        CALL evaluate
        BIT 7,B
        JR NZ,_string
        CALL value_to_fac
        PUSH HL
        CALL number_print
        CALL print_fit
        CALL console_text
        LD A," "
        CALL console_out
        POP HL
        JR _after
_string:
        CALL value_to_string
        CALL print_string
_after: CALL this_char
        JR NZ,print_item
        JP console_newline
_joined:
        CALL next_char
        RET Z
        JR print_item
_zone:  PUSH HL
        CALL console_column
        LD B,A
        LD A,(screen_columns)
        SUB 13
        LD C,A                  ; a zone that begins here or later is too narrow
        XOR A
_next:  ADD A,14
        CP B
        JR C,_next
        JR Z,_next
        CP C
        JR NC,_line
        CALL print_to_column
        JR _zoned
_line:  CALL console_newline
_zoned: POP HL
        JR _joined
_tab:   CALL next_char
        CALL arg_integer
        BIT 7,D
        JR Z,_column
        LD DE,0
_column:
        PUSH HL
        LD A,(screen_columns)
        LD C,A
        LD A,D
        OR A
        LD A,E
        JR NZ,_past
        CP C
        JR C,_in_row
_past:  LD A,C
        DEC A
_in_row:
        LD B,A
        PUSH BC
        CALL console_column
        POP BC
        CP B
        LD A,B
        JR Z,_tabbed
        JR C,_go
        CALL console_newline    ; it is behind us: in the next row
        LD A,B
_go:    CALL print_to_column
_tabbed:
        POP HL
        JR print_separated
_spc:   CALL next_char
        CALL arg_byte
        PUSH HL
        CALL print_blanks
        POP HL
; Behind TAB and SPC stands nothing of its own: a statement that ends there leaves the row open.
print_separated:
        CALL this_char
        RET Z
        CP ";"
        JP NZ,print_item
        CALL next_char
        RET Z
        JP print_item

; Blanks up to column A.
print_to_column:
        LD B,A
        PUSH BC
        CALL console_column
        POP BC
        LD C,A
        LD A,B
        SUB C
        RET C
print_blanks:
        OR A
        RET Z
        LD B,A
_blank: LD A," "
        CALL console_out
        DJNZ _blank
        RET

; B characters from DE. HL is kept.
print_string:
        INC B
        DEC B
        RET Z
_next:  LD A,(DE)
        INC DE
        CALL console_out
        DJNZ _next
        RET

; The number whose text HL points to begins a new row rather than wrap. HL is kept.
print_fit:
        PUSH HL
        LD B,0
_count: LD A,(HL)
        INC HL
        INC B
        OR A
        JR NZ,_count
        PUSH BC
        CALL console_column
        POP BC
        OR A
        JR Z,_fits
        ADD A,B
        LD B,A
        LD A,(screen_columns)
        INC A
        CP B
        CALL C,console_newline
_fits:  POP HL
        RET

; ---- Memory and ports

do_poke:
        CALL eval_word
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_byte
        POP DE
        LD (DE),A
        RET
fn_peek:
        CALL arg_word
        LD A,(DE)
result_byte:
        LD E,A
        LD D,0
        JP result_integer

do_out: CALL eval_word
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_byte
        POP BC
        OUT (C),A
        RET
fn_inp: CALL arg_word
        LD B,D
        LD C,E
        IN A,(C)
        JR result_byte

; WAIT port, mask [, invert]
do_wait:
        CALL eval_word
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_byte
        LD D,A
        LD E,0
        LD A,(HL)
        CP ","
        JR NZ,_wait
        INC HL
        PUSH DE
        CALL eval_byte
        POP DE
        LD E,A
_wait:  POP BC
_next:  LD A,(stop_flag)
        OR A
        RET NZ
        IN A,(C)
        XOR E
        AND D
        JR Z,_next
        RET

; USR[n](number): the routine gets it in FAC and as an integer in HL, and leaves its result in FAC.
fn_usr: CALL usr_slot
        PUSH DE
        CALL arg_number
        POP DE
        PUSH HL
        EX DE,HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD A,D
        OR E
        JP Z,illegal_call
        LD HL,_back
        PUSH HL
        PUSH DE
        LD HL,(FAC + 1)
        RET
_back:  POP HL
        JP result_fac

; VARPTR(variable): address of its value
fn_varptr:
        CALL arg_open
        CALL variable_ref
        CALL arg_close
        JP result_word

; FRE(1): bytes for program lines; FRE of anything else: for data, garbage collected.
fn_fre: CALL arg_open
        CALL evaluate
        CALL arg_close
        PUSH HL
        BIT 7,B
        JR NZ,_text
        CALL value_to_integer
        LD A,E
        DEC A
        OR D
        JR Z,_program
        JR _data
_text:  CALL temp_free
_data:  CALL heap_collect
        CALL data_free
        JR _end
_program:
        CALL program_free
_end:   EX DE,HL
        POP HL
        JP result_word
; HL = bytes free for data.
data_free:
        LD HL,(heap_low)
        LD DE,(arrays_end)
        OR A
        SBC HL,DE
        RET

fn_err: LD A,(error_number)
        JP result_byte
fn_erl: LD DE,(error_line)
        JP result_word

; ---- The rest

; [100] before line 100 runs. HL is kept.
trace_line:
        RLA
        CALL C,key_event
        LD A,(trace_flag)
        RRA
        RET NC
        PUSH HL
        CALL line_direct
        JR Z,_end
        LD A,"["
        CALL console_out
        LD HL,(line_pointer)
        CALL header_number
        CALL number_out
        LD A,"]"
        CALL console_out
_end:   POP HL
        RET

do_error:
        CALL eval_byte
        OR A
        JP Z,illegal_call
        JP error

; LINE INPUT, or LINE that draws
do_line:
        CP TOK_INPUT
        JP Z,line_input
        JP do_line_graphics

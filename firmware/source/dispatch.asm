; The statement loop and what all statements use.
;
; The text pointer HL points into a line in tokens: into the window, whose page is the line's (port 70h says which),
; or to TOKENS, where the direct line stands. Statement handlers are entered with HL at the first token behind their
; word, A = (HL), Z when the statement ends there; they return with HL at the ':' or 0.
;   next_char       HL on by one; A = (HL), Z at the end of the statement
;   this_char       the same without moving on
;   expect          CALL expect / DEFB c: Syntax error unless (HL) is c; then as next_char
;   statement_end   goes on behind a statement; HL as above
;   run_line        runs the line whose header HL points to
;   goto_line       runs the line at address DE
;   place_to_text   DE = address of a line: HL = its header through the window, page set
;   text_to_place   HL = text pointer: DE = its address
;   syntax_error    raises it
; The running line's header is at (line_pointer), its number FFFFh when it is the direct line.

WINDOW_HIGH     EQU WINDOW / 256

next_char:
        INC HL
this_char:
        LD A,(HL)
        CP ":"
        RET Z
        OR A
        RET

expect: LD A,(HL)
        EX (SP),HL
        CP (HL)
        INC HL
        EX (SP),HL
        JR Z,next_char
syntax_error:
        INC HL                  ; what HL is at is to blame, not what stands before it
        LD E,ERR_SYNTAX
        JP error

; ---- Where the program is seen

place_to_text:
        IF NBASIC
        EX DE,HL
        ELSE
        LD A,D
        OUT (WINDOW_PAGE),A
        LD H,WINDOW_HIGH
        LD L,E
        ENDIF
        RET

text_to_place:
        LD D,H
        LD E,L
        IF NBASIC = 0
        LD A,H
        SUB WINDOW_HIGH
        CP 4
        RET NC                  ; the direct line
        LD D,A
        IN A,(WINDOW_PAGE)
        ADD A,D
        LD D,A
        ENDIF
        RET

; ---- The loop

goto_line:
        CALL place_to_text
        JR run_line
; HL at the 0 of a line: on to the next.
line_end:
        INC HL
        IF NBASIC = 0
        LD A,H
        SUB WINDOW_HIGH
        JR Z,run_line
        CP 4
        JR NC,run_line          ; the direct line, an end mark follows
        LD B,A
        IN A,(WINDOW_PAGE)
        ADD A,B
        OUT (WINDOW_PAGE),A
        LD H,WINDOW_HIGH
        ENDIF
run_line:
        LD (line_pointer),HL
        LD A,(HL)
        INC HL
        OR (HL)
        JP Z,program_over
        INC HL
        INC HL
        INC HL
        LD A,(stop_flag)
        OR A
        JP NZ,stop_pressed
        LD A,(trace_flag)
        OR A
        CALL NZ,trace_line
statement:
        LD (statement_pointer),HL
statement_again:
        LD A,(HL)
        CP TOK_FIRST
        JR C,_implied
        CP TOK_LAST + 1
        JR NC,statement_function
        INC HL
        EX DE,HL
        ADD A,A
        LD L,A
        LD H,statement_table / 256
        LD A,(HL)
        INC L
        LD H,(HL)
        LD L,A
        LD BC,statement_end
        PUSH BC
        PUSH HL
        EX DE,HL
        LD A,(HL)
        CP ":"
        RET Z                   ; to the handler
        OR A
        RET
_implied:
        LD BC,statement_end
        PUSH BC
        CP TOK_VAR
        JP Z,let_variable
        CP TOK_VAR + 4
        JR NC,statement_none
        CP TOK_VAR
        JP NC,do_let
statement_none:
        OR A
        RET Z                   ; an empty line
        CP ":"
        RET Z
        JP syntax_error
statement_function:
        LD BC,statement_end
        PUSH BC
        CP TOK_FUNCTION
        JP Z,do_function
        JP syntax_error

statement_end:
        LD A,(HL)
        CP ":"
        JR NZ,_line
        INC HL
        JP statement
_line:  OR A
        JR Z,line_end
        JP syntax_error

; A word that is no statement.
do_nothing_known EQU syntax_error

        DEFS (0 - $) AND 0FFh
; The handlers, in the order of the tokens.
statement_table:
        DEFW do_end, do_for, do_next, do_data, do_input, do_dim, do_read, do_let
        DEFW do_goto, do_run, do_if, do_restore, do_gosub, do_return, do_rem, do_stop
        DEFW do_print, do_clear, do_list, do_new, do_on, do_wait, do_def, do_poke
        DEFW do_cont, do_out, do_line, do_width, do_else, do_tron, do_troff, do_swap
        DEFW do_erase, do_edit, do_error, do_resume, do_delete, do_auto, do_renum
        DEFW do_defstr, do_defint, do_defsng, do_defdbl, do_while, do_wend, do_randomize
        DEFW do_cls, do_locate, do_color, do_console, do_key, do_pset, do_preset, do_circle
        DEFW do_paint, do_draw, do_get, do_put, do_beep, do_sound, do_play, do_motor
        DEFW do_csave, do_cload, do_save, do_load, do_merge, do_mon, do_demo, do_help
        DEFW do_option, do_pcg, do_bsave, do_bload
        DEFW do_unavailable, do_unavailable, do_unavailable, do_unavailable, do_unavailable, do_unavailable
        DEFW do_rem
statement_table_end:
        IF statement_table_end - statement_table - 2 * (TOK_LAST - TOK_FIRST + 1)
        .ERROR statement_table and tokens.inc disagree
        ENDIF

; Printers and disks are not there.
do_unavailable:
        LD E,ERR_UNAVAILABLE
        JP error

; TIME$ = ..., DATE$ = ..., MID$(...) = ...
do_function:
        INC HL
        LD A,(HL)
        INC HL
        CP FN_MID_S
        JP Z,do_mid
        CP FN_TIME_S
        JP Z,do_time_set
        CP FN_DATE_S
        JP Z,do_date_set
        JP syntax_error

; The words of the language.
;
;   words_by_letter     where the words of each first letter are
;   word_statements word_inner word_operators word_functions
;                       each word in the order of the tokens
; A word: its letters behind the first, the last one with bit 7; then its token, or TOK_FUNCTION and FN_...; 0 ends
; a letter.

words_by_letter:
        DEFW words_a, words_b, words_c, words_d, words_e, words_f, words_g, words_h
        DEFW words_i, words_j, words_k, words_l, words_m, words_n, words_o, words_p
        DEFW words_q, words_r, words_s, words_t, words_u, words_v, words_w, words_x
        DEFW words_y, words_z
words_a:
w_abs:  DEFB "B","S" + 80h,TOK_FUNCTION,FN_ABS
w_and:  DEFB "N","D" + 80h,TOK_AND
w_asc:  DEFB "S","C" + 80h,TOK_FUNCTION,FN_ASC
w_atn:  DEFB "T","N" + 80h,TOK_FUNCTION,FN_ATN
w_auto: DEFB "UT","O" + 80h,TOK_AUTO
        DEFB 0
words_b:
w_base: DEFB "AS","E" + 80h,TOK_BASE
w_beep: DEFB "EE","P" + 80h,TOK_BEEP
w_bload:
        DEFB "LOA","D" + 80h,TOK_BLOAD
w_bsave:
        DEFB "SAV","E" + 80h,TOK_BSAVE
        DEFB 0
words_c:
w_cdbl: DEFB "DB","L" + 80h,TOK_FUNCTION,FN_CDBL
w_chr_s:
        DEFB "HR","$" + 80h,TOK_FUNCTION,FN_CHR_S
w_cint: DEFB "IN","T" + 80h,TOK_FUNCTION,FN_CINT
w_circle:
        DEFB "IRCL","E" + 80h,TOK_CIRCLE
w_clear:
        DEFB "LEA","R" + 80h,TOK_CLEAR
w_cload:
        DEFB "LOA","D" + 80h,TOK_CLOAD
w_close:
        DEFB "LOS","E" + 80h,TOK_CLOSE
w_cls:  DEFB "L","S" + 80h,TOK_CLS
w_color:
        DEFB "OLO","R" + 80h,TOK_COLOR
w_console:
        DEFB "ONSOL","E" + 80h,TOK_CONSOLE
w_cont: DEFB "ON","T" + 80h,TOK_CONT
w_cos:  DEFB "O","S" + 80h,TOK_FUNCTION,FN_COS
w_csave:
        DEFB "SAV","E" + 80h,TOK_CSAVE
w_csng: DEFB "SN","G" + 80h,TOK_FUNCTION,FN_CSNG
w_csrlin:
        DEFB "SRLI","N" + 80h,TOK_FUNCTION,FN_CSRLIN
        DEFB 0
words_d:
w_data: DEFB "AT","A" + 80h,TOK_DATA
w_date_s:
        DEFB "ATE","$" + 80h,TOK_FUNCTION,FN_DATE_S
w_def:  DEFB "E","F" + 80h,TOK_DEF
w_defdbl:
        DEFB "EFDB","L" + 80h,TOK_DEFDBL
w_defint:
        DEFB "EFIN","T" + 80h,TOK_DEFINT
w_defsng:
        DEFB "EFSN","G" + 80h,TOK_DEFSNG
w_defstr:
        DEFB "EFST","R" + 80h,TOK_DEFSTR
w_delete:
        DEFB "ELET","E" + 80h,TOK_DELETE
w_demo: DEFB "EM","O" + 80h,TOK_DEMO
w_dim:  DEFB "I","M" + 80h,TOK_DIM
w_draw: DEFB "RA","W" + 80h,TOK_DRAW
        DEFB 0
words_e:
w_edit: DEFB "DI","T" + 80h,TOK_EDIT
w_else: DEFB "LS","E" + 80h,TOK_ELSE
w_end:  DEFB "N","D" + 80h,TOK_END
w_eqv:  DEFB "Q","V" + 80h,TOK_EQV
w_erase:
        DEFB "RAS","E" + 80h,TOK_ERASE
w_erl:  DEFB "R","L" + 80h,TOK_FUNCTION,FN_ERL
w_err:  DEFB "R","R" + 80h,TOK_FUNCTION,FN_ERR
w_error:
        DEFB "RRO","R" + 80h,TOK_ERROR
w_exp:  DEFB "X","P" + 80h,TOK_FUNCTION,FN_EXP
        DEFB 0
words_f:
w_files:
        DEFB "ILE","S" + 80h,TOK_FILES
w_fix:  DEFB "I","X" + 80h,TOK_FUNCTION,FN_FIX
w_for:  DEFB "O","R" + 80h,TOK_FOR
w_fre:  DEFB "R","E" + 80h,TOK_FUNCTION,FN_FRE
        DEFB 0
words_g:
w_get:  DEFB "E","T" + 80h,TOK_GET
w_gosub:
        DEFB "OSU","B" + 80h,TOK_GOSUB
w_goto: DEFB "OT","O" + 80h,TOK_GOTO
        DEFB 0
words_h:
w_help: DEFB "EL","P" + 80h,TOK_HELP
w_hex_s:
        DEFB "EX","$" + 80h,TOK_FUNCTION,FN_HEX_S
        DEFB 0
words_i:
w_if:   DEFB "F" + 80h,TOK_IF
w_imp:  DEFB "M","P" + 80h,TOK_IMP
w_inkey_s:
        DEFB "NKEY","$" + 80h,TOK_FUNCTION,FN_INKEY_S
w_inp:  DEFB "N","P" + 80h,TOK_FUNCTION,FN_INP
w_input:
        DEFB "NPU","T" + 80h,TOK_INPUT
w_input_s:
        DEFB "NPUT","$" + 80h,TOK_FUNCTION,FN_INPUT_S
w_instr:
        DEFB "NST","R" + 80h,TOK_FUNCTION,FN_INSTR
w_int:  DEFB "N","T" + 80h,TOK_FUNCTION,FN_INT
        DEFB 0
words_j:
        DEFB 0
words_k:
w_key:  DEFB "E","Y" + 80h,TOK_KEY
w_kill: DEFB "IL","L" + 80h,TOK_KILL
        DEFB 0
words_l:
w_left_s:
        DEFB "EFT","$" + 80h,TOK_FUNCTION,FN_LEFT_S
w_len:  DEFB "E","N" + 80h,TOK_FUNCTION,FN_LEN
w_let:  DEFB "E","T" + 80h,TOK_LET
w_line: DEFB "IN","E" + 80h,TOK_LINE
w_list: DEFB "IS","T" + 80h,TOK_LIST
w_llist:
        DEFB "LIS","T" + 80h,TOK_LLIST
w_load: DEFB "OA","D" + 80h,TOK_LOAD
w_locate:
        DEFB "OCAT","E" + 80h,TOK_LOCATE
w_log:  DEFB "O","G" + 80h,TOK_FUNCTION,FN_LOG
w_lprint:
        DEFB "PRIN","T" + 80h,TOK_LPRINT
        DEFB 0
words_m:
w_merge:
        DEFB "ERG","E" + 80h,TOK_MERGE
w_mid_s:
        DEFB "ID","$" + 80h,TOK_FUNCTION,FN_MID_S
w_mod:  DEFB "O","D" + 80h,TOK_MOD
w_mon:  DEFB "O","N" + 80h,TOK_MON
w_motor:
        DEFB "OTO","R" + 80h,TOK_MOTOR
        DEFB 0
words_n:
w_new:  DEFB "E","W" + 80h,TOK_NEW
w_next: DEFB "EX","T" + 80h,TOK_NEXT
w_not:  DEFB "O","T" + 80h,TOK_NOT
        DEFB 0
words_o:
w_oct_s:
        DEFB "CT","$" + 80h,TOK_FUNCTION,FN_OCT_S
w_off:  DEFB "F","F" + 80h,TOK_OFF
w_on:   DEFB "N" + 80h,TOK_ON
w_open: DEFB "PE","N" + 80h,TOK_OPEN
w_option:
        DEFB "PTIO","N" + 80h,TOK_OPTION
w_or:   DEFB "R" + 80h,TOK_OR
w_out:  DEFB "U","T" + 80h,TOK_OUT
        DEFB 0
words_p:
w_paint:
        DEFB "AIN","T" + 80h,TOK_PAINT
w_pcg:  DEFB "C","G" + 80h,TOK_PCG
w_peek: DEFB "EE","K" + 80h,TOK_FUNCTION,FN_PEEK
w_play: DEFB "LA","Y" + 80h,TOK_PLAY
w_point:
        DEFB "OIN","T" + 80h,TOK_FUNCTION,FN_POINT
w_poke: DEFB "OK","E" + 80h,TOK_POKE
w_pos:  DEFB "O","S" + 80h,TOK_FUNCTION,FN_POS
w_preset:
        DEFB "RESE","T" + 80h,TOK_PRESET
w_print:
        DEFB "RIN","T" + 80h,TOK_PRINT
w_pset: DEFB "SE","T" + 80h,TOK_PSET
w_put:  DEFB "U","T" + 80h,TOK_PUT
        DEFB 0
words_q:
        DEFB 0
words_r:
w_randomize:
        DEFB "ANDOMIZ","E" + 80h,TOK_RANDOMIZE
w_read: DEFB "EA","D" + 80h,TOK_READ
w_rem:  DEFB "E","M" + 80h,TOK_REM
w_renum:
        DEFB "ENU","M" + 80h,TOK_RENUM
w_restore:
        DEFB "ESTOR","E" + 80h,TOK_RESTORE
w_resume:
        DEFB "ESUM","E" + 80h,TOK_RESUME
w_return:
        DEFB "ETUR","N" + 80h,TOK_RETURN
w_right_s:
        DEFB "IGHT","$" + 80h,TOK_FUNCTION,FN_RIGHT_S
w_rnd:  DEFB "N","D" + 80h,TOK_FUNCTION,FN_RND
w_run:  DEFB "U","N" + 80h,TOK_RUN
        DEFB 0
words_s:
w_save: DEFB "AV","E" + 80h,TOK_SAVE
w_sgn:  DEFB "G","N" + 80h,TOK_FUNCTION,FN_SGN
w_sin:  DEFB "I","N" + 80h,TOK_FUNCTION,FN_SIN
w_sound:
        DEFB "OUN","D" + 80h,TOK_SOUND
w_space_s:
        DEFB "PACE","$" + 80h,TOK_FUNCTION,FN_SPACE_S
w_spc:  DEFB "P","C" + 80h,TOK_SPC
w_sqr:  DEFB "Q","R" + 80h,TOK_FUNCTION,FN_SQR
w_step: DEFB "TE","P" + 80h,TOK_STEP
w_stop: DEFB "TO","P" + 80h,TOK_STOP
w_str_s:
        DEFB "TR","$" + 80h,TOK_FUNCTION,FN_STR_S
w_string_s:
        DEFB "TRING","$" + 80h,TOK_FUNCTION,FN_STRING_S
w_swap: DEFB "WA","P" + 80h,TOK_SWAP
        DEFB 0
words_t:
w_tab:  DEFB "A","B" + 80h,TOK_TAB
w_tan:  DEFB "A","N" + 80h,TOK_FUNCTION,FN_TAN
w_then: DEFB "HE","N" + 80h,TOK_THEN
w_time_s:
        DEFB "IME","$" + 80h,TOK_FUNCTION,FN_TIME_S
w_to:   DEFB "O" + 80h,TOK_TO
w_troff:
        DEFB "ROF","F" + 80h,TOK_TROFF
w_tron: DEFB "RO","N" + 80h,TOK_TRON
        DEFB 0
words_u:
w_using:
        DEFB "SIN","G" + 80h,TOK_USING
w_usr:  DEFB "S","R" + 80h,TOK_FUNCTION,FN_USR
        DEFB 0
words_v:
w_val:  DEFB "A","L" + 80h,TOK_FUNCTION,FN_VAL
w_varptr:
        DEFB "ARPT","R" + 80h,TOK_FUNCTION,FN_VARPTR
        DEFB 0
words_w:
w_wait: DEFB "AI","T" + 80h,TOK_WAIT
w_wend: DEFB "EN","D" + 80h,TOK_WEND
w_while:
        DEFB "HIL","E" + 80h,TOK_WHILE
w_width:
        DEFB "IDT","H" + 80h,TOK_WIDTH
        DEFB 0
words_x:
w_xor:  DEFB "O","R" + 80h,TOK_XOR
        DEFB 0
words_y:
        DEFB 0
words_z:
        DEFB 0
; Where LIST finds them: statements, inner words, operators, functions, each from its first token on.
word_statements:
        DEFW w_end, w_for, w_next, w_data, w_input, w_dim, w_read, w_let, w_goto, w_run
        DEFW w_if, w_restore, w_gosub, w_return, w_rem, w_stop, w_print, w_clear, w_list, w_new
        DEFW w_on, w_wait, w_def, w_poke, w_cont, w_out, w_line, w_width, w_else, w_tron
        DEFW w_troff, w_swap, w_erase, w_edit, w_error, w_resume, w_delete, w_auto, w_renum, w_defstr
        DEFW w_defint, w_defsng, w_defdbl, w_while, w_wend, w_randomize, w_cls, w_locate, w_color, w_console
        DEFW w_key, w_pset, w_preset, w_circle, w_paint, w_draw, w_get, w_put, w_beep, w_sound
        DEFW w_play, w_motor, w_csave, w_cload, w_save, w_load, w_merge, w_mon, w_demo, w_help
        DEFW w_option, w_pcg, w_bsave, w_bload, w_lprint, w_llist, w_open, w_close, w_files, w_kill
word_inner:
        DEFW w_then, w_to, w_step, w_using, w_tab, w_spc, w_not, w_off, w_base
word_operators:
        DEFW w_imp, w_eqv, w_xor, w_or, w_and
word_functions:
        DEFW w_sgn, w_int, w_abs, w_sqr, w_rnd, w_log, w_exp, w_cos, w_sin, w_tan
        DEFW w_atn, w_fix, w_cint, w_csng, w_cdbl, w_peek, w_inp, w_len, w_val, w_asc
        DEFW w_str_s, w_chr_s, w_hex_s, w_oct_s, w_space_s, w_left_s, w_right_s, w_mid_s, w_string_s, w_instr
        DEFW w_inkey_s, w_input_s, w_csrlin, w_pos, w_point, w_fre, w_usr, w_varptr, w_err, w_erl
        DEFW w_time_s, w_date_s

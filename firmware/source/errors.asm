; Errors, Ok, and the direct mode.
;
;   error           E = number: to the program's handler, or message, Ok and the line, the cursor on its place. HL should
;                   be the text pointer behind what is to blame, or wait as the newest such word on the stack. Never returns
;   break_message   STOP: message and Ok
;   ready           Ok, then what is typed is done. Never returns
;   direct_mode     the same without Ok
;   enter_line      HL = text: with a line number, the line is stored, C; without NC, HL behind blanks
;   direct_line     HL = text without a line number: it is run

error:  LD A,E
        LD (error_number),A
        LD A,(page_borrowed)
        INC A
        JR NZ,_whole            ; what was read lies in another line
; How far the statement was read: the text pointer is in HL, or the newest word on the stack that lies within it.
_place: EX DE,HL
        LD HL,(line_pointer)
        LD C,(HL)
        INC HL
        LD B,(HL)
        ADD HL,BC
        SBC HL,DE
        JR C,_older
        LD HL,(statement_pointer)
        SBC HL,DE
        JR C,_read
_older: LD HL,0 - STACK
        ADD HL,SP
        JR C,_whole
        POP HL
        JR _place
_whole: LD DE,(statement_pointer)
        INC DE
_read:  DEC DE                  ; what was read last
        LD (list_at),DE
        LD SP,STACK
        CALL error_begin
        LD A,(error_handling)
        OR A
        JR NZ,error_message
        LD DE,(error_target)
        LD A,D
        OR E
        JR Z,error_message
        CALL line_direct
        JR Z,error_message
        LD A,1
        LD (error_handling),A
        PUSH DE
        LD HL,(statement_pointer)
        LD DE,resume_place
        CALL place_put
        LD HL,temps
        LD (temp_top),HL
        POP DE
        DEC DE
        JP goto_line
; Everything back where statements expect it; error_line = the running line's number: of the direct line FFFFh, or that
; of the line which is being entered.
error_begin:
        CALL error_map
        LD HL,(line_pointer)
        CALL header_number
        LD (error_line),HL
        RET
; Memory at C000h, the main ROM, the running line's page.
error_map:
        OUT (SELECT_RAM),A
        IF NBASIC = 0
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        ENDIF
        LD A,(page_borrowed)
        INC A
        JR Z,_own
        DEC A
        OUT (WINDOW_PAGE),A
        LD A,0FFh
        LD (page_borrowed),A
_own:   EI
        RET
break_message:
        LD SP,STACK
        CALL error_begin
        XOR A
        LD (error_number),A
        JR error_show

; The number is already there, and its line.
error_resumed:
        LD SP,STACK
error_message:
        XOR A
        LD (error_handling),A
        CALL line_direct
        LD A,0FFh
        JR Z,_entered
        LD (cont_place),A       ; a program does not go on behind its error
_entered:
        LD HL,(error_line)      ; the tape that a line came from stops
        CALL Z,tape_stop
error_show:
        CALL console_fresh
        LD A,(error_number)
        LD B,A
        INC B
        LD HL,messages
_look:  DEC B
        JR Z,_found
_skip:  LD A,(HL)
        INC HL
        OR A
        JR NZ,_skip
        LD A,(HL)
        INC A                   ; FFh ends them
        JR NZ,_look
        LD HL,message_unprintable
_found: LD A,(HL)
        OR A
        JR NZ,_text
        LD HL,message_unprintable
_text:  CALL console_text
        LD HL,(error_line)
        LD A,H
        AND L
        INC A
        JR Z,_direct
        LD HL,text_in
        CALL console_text
        LD HL,(error_line)
        CALL number_out
        LD A,(error_number)
        OR A
        JR Z,_direct            ; Break is none
        CALL line_direct        ; one that is not in the program cannot be listed
        LD (error_listed),A
_direct:
        CALL console_newline
        JR ready
tape_stop:
        LD A,H
        AND L
        INC A
        RET Z
        JP tape_close_in

; The line with the error, the cursor on its place.
error_list:
        XOR A
        LD (error_listed),A
        LD HL,(line_pointer)
        CALL list_line
        LD HL,LINE_TEXT
        CALL console_text       ; HL ends one behind where the cursor is
        LD DE,(list_mark)
        LD A,(DE)               ; not on the blank before it
        CP " "
        JR NZ,_word
        INC DE
_word:  LD A,L
        SUB E
        LD B,A
        JR _next
_left:  LD A,CTRL_LEFT
        CALL console_out
_next:  DJNZ _left
        RET

ready:  LD SP,STACK
        CALL console_fresh
        LD HL,text_ok
        CALL console_text
        CALL console_newline
        LD A,(error_listed)
        OR A
        CALL NZ,error_list
direct_mode:
        LD SP,STACK
        CALL error_map
        CALL frames_direct
        LD HL,temps
        LD (temp_top),HL
        LD HL,TOKENS
        LD (line_pointer),HL
        LD HL,0FFFFh
        LD (TOKENS + 2),HL
        XOR A
        LD (run_after),A
        CALL console_line
        JR C,direct_mode
        CALL enter_line
        JR C,direct_mode
        LD A,(HL)
        OR A
        JR Z,direct_mode
direct_line:
        CALL crunch
        LD HL,0FFFFh
        LD (TOKENS + 2),HL
        XOR A
        LD (stop_flag),A
        LD HL,TOKENS
        JP run_line

enter_line:
        LD DE,0FFFFh
        LD (TOKENS + 2),DE
        CALL line_number
        JR C,_direct
        LD (TOKENS + 2),DE      ; an error names it
        CALL crunch
        CALL line_store
        SCF
        RET
_direct:
        CALL skip_blanks
        OR A
        RET

; Frames that lead into a direct line would lead nowhere: then none is left, and CONT cannot go on. Those of a program
; that cannot go on stay, for a GOTO may lead back into its loops, until they leave no room for new ones.
frames_direct:
        LD HL,(frame_top)
        LD A,(cont_place)
        INC A
        JR NZ,_look
        LD A,H
        CP FRAMES_LIMIT / 256
        JP Z,frames_clear
_look:  LD A,(HL)
        PUSH AF
        CALL frame_before
        JR Z,_end
        POP AF
        DEC HL
        LD A,(HL)               ; high byte of its line
        INC HL
        CP TOKENS / 256
        JR NZ,_look
        LD A,0FFh
        LD (cont_place),A
        JP frames_clear
_end:   POP AF
        RET

text_ok:
        DEFB "Ok",0
text_in:
        DEFB " in ",0
messages:
        DEFB "Break",0
        DEFB "NEXT without FOR",0
        DEFB "Syntax error",0
        DEFB "RETURN without GOSUB",0
        DEFB "Out of DATA",0
        DEFB "Illegal function call",0
        DEFB "Overflow",0
        DEFB "Out of memory",0
        DEFB "Undefined line number",0
        DEFB "Subscript out of range",0
        DEFB "Duplicate definition",0
        DEFB "Division by zero",0
        DEFB "Illegal direct",0
        DEFB "Type mismatch",0
        DEFB "Out of string space",0
        DEFB "String too long",0
        DEFB "Formula too complex",0
        DEFB "Can't continue",0
        DEFB "Undefined user function",0
        DEFB "No RESUME",0
        DEFB "RESUME without error",0
message_unprintable:
        DEFB "Unprintable error",0
        DEFB "Missing operand",0
        DEFB "Line buffer overflow",0
        DEFB "Tape read error",0
        DEFB "Device unavailable",0
        DEFB "FOR without NEXT",0
        DEFB 0
        DEFB 0
        DEFB "WHILE without WEND",0
        DEFB "WEND without WHILE",0
        DEFB 0FFh

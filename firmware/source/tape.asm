; Programs and blocks of memory on tape.
;
;   do_csave do_save         "name": the program as text
;   do_cload do_load         ["name"]: a program or a block; CLOAD? compares the program instead
;   do_merge                 ["name"]: the lines of a program are added
;   do_bsave                 "name",address,bytes[,start]: a block
;   do_bload                 ["name"][,R]: a block, to memory that CLEAR has set aside; R starts it
;   tape_write_block         HL first, DE last address, BC start: a block without a name
;   tape_read_block          the next block: DE first address, HL behind the last, BC start; C: damaged
;
; A program on tape: a leader of FFh, 01h, the name, 0Dh, the lines, each ended by 0Dh, 1Ah, a check byte that makes the
; sum of all from the first line on 0. Text without leader and name is taken as well, lines ended by LF or CRLF, too; it
; ends with 1Ah or where the tape comes round to its first line again.
; A block: a leader, 02h, the name, 0Dh, records as port F0h loads them: a ':', address (high byte first), check, ':',
; length, bytes, check; both checks make a sum 0. A length of 0 ends them; its address is where the code starts.
; Records without leader and name are taken as well.

TAPE_LEADER     EQU 0FFh
TAPE_LEADERS    EQU 24
TAPE_PROGRAM    EQU 1
TAPE_BLOCK      EQU 2
TAPE_TEXT       EQU 3           ; a text without a name
TAPE_RECORDS    EQU 4           ; records without a name
TAPE_END        EQU 01Ah

; tape_mode
TAPE_LOADS      EQU 0
TAPE_MERGES     EQU 1
TAPE_SKIPS      EQU 2
TAPE_ANYWHERE   EQU 3           ; blocks may go anywhere; else only to memory that CLEAR has set aside

; ---- Writing

do_csave:
do_save:
        CALL tape_need_name
        CALL tape_statement_end
        LD A,TAPE_PROGRAM
        CALL tape_begin
        LD DE,PROGRAM_START
_line:  CALL place_to_text
        LD C,(HL)
        INC HL
        LD B,(HL)
        DEC HL
        LD A,B
        OR C
        JR Z,_end
        PUSH DE
        PUSH BC
        CALL list_line          ; LINE_TEXT = its text
        LD A,E
        CP 0FEh
        JP NC,tape_long         ; it may have been cut
        LD HL,LINE_TEXT
_byte:  LD A,(HL)
        INC HL
        OR A
        JR Z,_return
        CALL tape_write
        JR _byte
_return:
        LD A,00Dh
        CALL tape_write
        POP BC
        POP HL
        ADD HL,BC
        EX DE,HL
        JR _line
_end:   LD A,TAPE_END
        CALL tape_write
        CALL tape_write_check
tape_done:
        CALL tape_close_out
        JP load_done

; Leader, mark A, name.
tape_begin:
        PUSH AF
        CALL tape_leader
        POP AF
        CALL tape_write
        LD HL,tape_wanted
        LD B,(HL)
        INC B
        JR _next
_byte:  INC HL
        LD A,(HL)
        CALL tape_write
_next:  DJNZ _byte
        LD A,00Dh
        CALL tape_write
        XOR A
        LD (tape_sum),A
        RET
tape_leader:
        CALL tape_open_out
        LD B,TAPE_LEADERS
_byte:  LD A,TAPE_LEADER
        CALL tape_write
        DJNZ _byte
        RET

; A to the tape and into tape_sum. Keep BC, DE, HL. STOP ends all.
tape_write_check:
        LD A,(tape_sum)
        NEG
tape_write:
        PUSH HL
        PUSH DE
        PUSH BC
        LD HL,tape_sum
        LD C,A
        ADD A,(HL)
        LD (HL),A
        LD A,C
        CALL tape_put
        JR C,tape_stopped
        POP BC
        POP DE
        POP HL
        RET
tape_stopped:
        CALL tape_close_out
        LD HL,0                 ; the monitor is left as well
        LD (monitor_stack),HL
        DEC HL                  ; no line is to blame
        LD (TOKENS + 2),HL
        XOR A
        LD (stop_flag),A
        JP break_message

do_bsave:
        CALL tape_need_name
        CALL expect
        DEFB ","
        CALL eval_word
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_word          ; bytes
        LD A,D
        OR E
        LD B,D
        LD C,E
        LD E,ERR_CALL
        JP Z,error
        POP DE
        EX DE,HL
        PUSH HL                 ; first address; DE text
        ADD HL,BC
        DEC HL
        EX (SP),HL              ; HL first, (SP) last
        PUSH HL
        EX DE,HL
        CALL this_char
        LD BC,0
        JR Z,_start
        CALL expect
        DEFB ","
        CALL eval_word
        LD B,D
        LD C,E
_start: POP DE                  ; first
        EX (SP),HL              ; last; the text waits
        EX DE,HL
        PUSH HL
        PUSH DE
        PUSH BC
        LD A,TAPE_BLOCK
        CALL tape_begin
        POP BC
        POP DE
        POP HL
        CALL tape_records_out
        CALL tape_close_out
        POP HL
        RET

tape_write_block:
        PUSH HL
        PUSH DE
        PUSH BC
        CALL tape_leader
        POP BC
        POP DE
        POP HL
        CALL tape_records_out
        CALL tape_close_out
        OR A
        RET

; Records of HL to DE, start BC.
tape_records_out:
        PUSH BC
        EX DE,HL
        OR A
        SBC HL,DE
        INC HL                  ; bytes; 0: all of memory
        EX DE,HL
_record:
        CALL tape_head
        LD A,":"
        CALL tape_write
        XOR A
        LD (tape_sum),A
        LD B,0FFh
        LD A,D
        OR A
        JR NZ,_length
        LD A,E
        OR A
        JR Z,_length
        LD B,E
_length:
        LD A,B
        CALL tape_write
_byte:  LD A,(HL)
        CALL tape_write
        INC HL
        DEC DE
        DJNZ _byte
        CALL tape_write_check
        LD A,D
        OR E
        JR NZ,_record
        POP HL
        CALL tape_head
        LD A,":"
        CALL tape_write
        XOR A
        JP tape_write
; ':', address HL, check.
tape_head:
        LD A,":"
        CALL tape_write
        XOR A
        LD (tape_sum),A
        LD A,H
        CALL tape_write
        LD A,L
        CALL tape_write
        JP tape_write_check

; ---- Reading

; A = the next byte, also into tape_sum. Keeps BC, DE, HL. STOP ends all.
tape_read:
        PUSH HL
        PUSH DE
        PUSH BC
        LD HL,tape_next
        LD A,(HL)
        LD (HL),0
        OR A
        LD A,(tape_pushed)
        JR NZ,_pushed
        CALL tape_get
        JP C,tape_stopped
        LD HL,(tape_count)
        INC HL
        LD (tape_count),HL
_pushed:
        LD HL,tape_sum
        LD C,A
        ADD A,(HL)
        LD (HL),A
        LD A,C
        POP BC
        POP DE
        POP HL
        RET

; Goes on to the next program or block whose name is asked for; tape_kind says what it is, the tape stands at its
; first line or record. Those passed over are named.
tape_find:
        CALL tape_open_in
        LD HL,0
        LD (tape_count),HL
        XOR A
        LD (tape_next),A
_next:  CALL tape_read
        CP TAPE_PROGRAM
        JR Z,_named
        CP TAPE_BLOCK
        JR Z,_named
        CP " " + 1
        JR C,_next
        BIT 7,A
        JR NZ,_next             ; leader
        LD HL,tape_pushed       ; the first byte of what it is
        LD (HL),A
        LD B,TAPE_TEXT
        CP ":"
        JR NZ,_kind
        LD A,(tape_wanted)      ; records are not what has a name
        OR A
        JR NZ,_next
        INC B
_kind:  DEC HL
        LD (HL),1
        LD A,B
        LD (tape_kind),A
        RET
_named: LD (tape_kind),A
        LD HL,LINE_TEXT         ; its name
        LD B,0
_name:  CALL tape_read
        CP 00Dh
        JR Z,_whole
        CP " "
        JR C,_next              ; no name: it only looked like one
        LD (HL),A
        INC HL
        INC B
        LD A,B
        CP TAPE_NAME + 1
        JR C,_name
        JR _next
_whole: LD (HL),0
        XOR A
        LD (tape_sum),A
        LD HL,tape_wanted
        LD A,(HL)
        OR A
        JR Z,_found
        CP B
        JR NZ,_other
        LD DE,LINE_TEXT
_same:  INC HL
        LD A,(DE)
        INC DE
        CALL upper
        LD C,A
        LD A,(HL)
        CALL upper
        CP C
        JR NZ,_other
        DJNZ _same
_found: LD HL,tape_found
        JR tape_tell
_other: LD HL,tape_skip
        CALL tape_tell
        LD A,(tape_kind)
        CP TAPE_BLOCK
        JR Z,_block
_text:  CALL tape_read
        CP TAPE_END
        JR NZ,_text
        CALL tape_read
        JP _next
_block: LD A,TAPE_SKIPS
        LD (tape_mode),A
        CALL tape_records_in
        JP _next
tape_tell:
        CALL console_fresh
        CALL console_text
        LD HL,LINE_TEXT
        CALL console_text
        JP console_newline
tape_found:
        DEFB "Found:",0
tape_skip:
        DEFB "Skip:",0

do_cload:
        CP TOK_PRINT            ; CLOAD?
        JP Z,tape_verify
do_load:
        LD A,TAPE_LOADS
        JR tape_load
do_merge:
        LD A,TAPE_MERGES
tape_load:
        PUSH AF
        CALL tape_name
        CALL tape_statement_end
        CALL tape_find
        POP AF
        LD (tape_mode),A
        LD HL,TOKENS            ; a program that asked for this is gone, and errors name the line that is entered
        LD (line_pointer),HL
        LD HL,0FFFFh
        LD (TOKENS + 2),HL
        LD A,(tape_kind)
        CP TAPE_BLOCK
        JR Z,_block
        CP TAPE_RECORDS
        JR Z,_block
        LD A,(tape_mode)
        CP TAPE_MERGES
        CALL NZ,program_clear
        XOR A
        LD (tape_first),A
        LD (tape_sum),A
_line:  CALL tape_line
        JR C,_end               ; 1Ah
        CALL tape_wrapped
        JR C,_entered
        CALL tape_enter
        JR _line
_entered:
        LD A,(LINE_TEXT)        ; what is left of the last line
        OR A
        CALL NZ,tape_enter
        CALL tape_round
        JR _done
_end:   LD A,(tape_kind)
        CP TAPE_PROGRAM
        JR NZ,_done
        CALL tape_read
        LD A,(tape_sum)
        OR A
        JR NZ,tape_damaged
_done:  JP tape_done
_block: XOR A
        LD (tape_mode),A
        CALL tape_records_in
        JR NC,_done
tape_damaged:
        CALL tape_close_out
        LD HL,0FFFFh            ; which line it is nobody knows
        LD (TOKENS + 2),HL
        LD E,ERR_TAPE
        JP error

; The line in LINE_TEXT into the program. One without a number is told and left out.
tape_enter:
        CALL edit_take_line
        RET NC
        LD HL,tape_skip
        JP tape_tell

; CLOAD?: the program is compared, line by line as tokens.
tape_verify:
        CALL next_char
        CALL tape_name
        CALL tape_statement_end
        CALL edit_begin
        CALL tape_find
        LD A,TAPE_SKIPS
        LD (tape_mode),A
        LD A,(tape_kind)
        AND 1
        JR Z,_block
        XOR A
        LD (tape_first),A
        LD (tape_sum),A
        LD HL,PROGRAM_START
        LD (tape_bounds),HL     ; the line to compare
_line:  CALL tape_line
        JR C,_end
        CALL tape_wrapped
        PUSH AF
        CALL C,tape_round
        LD HL,LINE_TEXT
        CALL line_number
        JR C,_none
        LD (TOKENS + 2),DE
        CALL crunch
        LD DE,(tape_bounds)
        CALL place_to_text
        LD DE,TOKENS
        LD BC,(TOKENS)
        PUSH BC
_byte:  LD A,(DE)
        CP (HL)
        JR NZ,_differs
        INC DE
        INC HL
        DEC BC
        LD A,B
        OR C
        JR NZ,_byte
        POP BC
        LD HL,(tape_bounds)
        ADD HL,BC
        LD (tape_bounds),HL
_none:  POP AF
        JR NC,_line
_end:   LD DE,(tape_bounds)     ; nothing may be left
        CALL place_to_text
        LD A,(HL)
        INC HL
        OR (HL)
        JP Z,tape_done
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        LD (TOKENS + 2),DE
_differs:
        CALL tape_close_out
        LD HL,tape_different
        CALL console_text
        LD HL,(TOKENS + 2)
        CALL number_word
        CALL console_text
        JP ready
_block: CALL tape_records_in
        JP C,tape_damaged
        JP tape_done
tape_different:
        DEFB "Different in ",0

; LINE_TEXT = the next line that is not empty, ended by 0; B = its length. Carry: 1Ah came instead.
tape_line:
        LD HL,LINE_TEXT
        LD B,0
_byte:  CALL tape_read
        CP TAPE_END
        JR Z,_end
        CP 00Dh
        JR Z,_line
        CP 00Ah
        JR Z,_line
        CP 009h
        JR NZ,_plain
        LD A," "
_plain: INC B
        JR Z,_long
        LD (HL),A
        INC HL
        JR _byte
_line:  INC B
        DJNZ _whole
        JR _byte
_whole: LD (HL),0
        OR A
        RET
_end:   INC B                   ; a last line may end without an end of line
        DEC B
        SCF
        RET Z
        LD (HL),0
        LD (tape_pushed),A
        LD A,1
        LD (tape_next),A
        LD A,(tape_sum)         ; it will be read again
        SUB TAPE_END
        LD (tape_sum),A
        OR A
        RET
; No line end in sight: the last line of a bare text may end without one, and the first line follow, or the only line
; itself, again and again. Then the line is given as if the tape's first one were as long as what fits behind it.
_long:  LD A,(tape_kind)
        CP TAPE_TEXT
        JR NZ,tape_long
        LD A,(tape_first)
        OR A
        JR NZ,_known
        LD HL,LINE_TEXT
        LD DE,tape_first + 1
        LD BC,TAPE_FIRST
        LDIR
_known: LD HL,LINE_TEXT + 1
        LD C,254                ; characters from there on
_try:   PUSH HL
        LD DE,tape_first + 1
        LD A,C
        CP TAPE_FIRST
        JR C,_few
        LD A,TAPE_FIRST
_few:   LD B,A
_same:  LD A,(DE)
        CP (HL)
        INC HL
        INC DE
        JR NZ,_other
        DJNZ _same
        POP HL
        LD L,C
        LD H,B
        INC HL                  ; so much of the tape was read anew
        LD A,(tape_first)
        OR A
        JR NZ,_turn
        LD A,255                ; the tape is as long as this line
        SUB C
        LD E,A
        LD D,B
        LD HL,(tape_count)
        SBC HL,DE
_turn:  LD (tape_turn),HL
        LD A,C
        LD (tape_first),A
        LD HL,LINE_TEXT + 255
        LD (HL),B
        DEC B
        OR A
        RET
_other: POP HL
        INC HL
        DEC C
        LD A,C
        CP 8                    ; fewer might be alike by chance
        JR NC,_try
tape_long:
        CALL tape_close_out
        LD HL,LINE_TEXT
        CALL line_number
        LD HL,TOKENS + 2
        JR C,_none
        LD (HL),E
        INC HL
        LD (HL),D
_none:  LD E,ERR_BUFFER
        JP error

; In a text without a name: carry when the line is the tape's first one again, or ends with it for want of a line end;
; LINE_TEXT is cut before it. B = length.
tape_wrapped:
        LD A,(tape_kind)
        CP TAPE_TEXT
        JR NZ,_no
        LD HL,tape_first
        LD A,(HL)
        OR A
        JR Z,_first
        LD C,A
        LD A,B
        SUB C
        CCF
        RET NC                  ; shorter
        LD E,A
        LD D,0
        LD HL,LINE_TEXT
        ADD HL,DE
        PUSH HL
        LD DE,tape_first + 1
        LD B,C
        LD C,TAPE_FIRST
_same:  LD A,(DE)
        CP (HL)
        JR NZ,_other
        INC HL
        INC DE
        DEC C
        JR Z,_match
        DJNZ _same
_match: POP HL
        LD (HL),0
        LD DE,LINE_TEXT         ; before it: nothing, or a number and more
        LD A,(DE)
        OR A
        SCF
        RET Z
_digit: LD A,(DE)
        INC DE
        OR A
        JR Z,_number
        CP "0"
        JR C,_more
        CP "9" + 1
        JR C,_digit
_more:  SCF
        RET
_number:
        LD A,(tape_first + 1)   ; a number only: it belongs to what follows
        LD (HL),A
        OR A
        RET
_other: POP HL
_no:    OR A
        RET
_first: LD (HL),B
        LD DE,(tape_count)
        LD (tape_turn),DE
        INC HL
        EX DE,HL
        LD HL,LINE_TEXT
        LD BC,TAPE_FIRST
        LDIR
        OR A
        RET

; The first line of a bare text was read a second time: on to the tape's beginning.
tape_round:
        LD HL,(tape_count)
        LD DE,(tape_turn)
        OR A
        SBC HL,DE               ; the length of the tape
        LD B,H
        LD C,L
        OR A
        SBC HL,DE
        JR NC,_byte
_turn:  ADD HL,BC               ; it came round more than once
        JR NC,_turn
_byte:  LD A,H
        OR L
        RET Z
        CALL tape_read
        DEC HL
        JR _byte

; Records up to the end of the block, stored or passed over. DE = first address, HL behind the last, BC = start.
; Carry: damaged.
tape_records_in:
        LD HL,0
        LD (tape_bounds),HL
        LD (tape_bounds + 2),HL
_head:  CALL _colon
        RET C
        XOR A
        LD (tape_sum),A
        CALL tape_read
        LD H,A
        CALL tape_read
        LD L,A
        CALL tape_read
        LD A,(tape_sum)
        OR A
        SCF
        RET NZ
        CALL _colon
        RET C
        XOR A
        LD (tape_sum),A
        CALL tape_read
        OR A
        JR Z,_end
        LD B,A
        LD DE,(tape_bounds + 2)
        LD A,D
        OR E
        JR NZ,_checked
        LD (tape_bounds),HL
_checked:
        CALL tape_allowed
_byte:  CALL tape_read
        LD C,A
        LD A,(tape_mode)
        CP TAPE_SKIPS
        JR Z,_skip
        LD (HL),C
_skip:  INC HL
        DJNZ _byte
        LD (tape_bounds + 2),HL
        CALL tape_read
        LD A,(tape_sum)
        OR A
        SCF
        RET NZ
        JR _head
_end:   LD B,H
        LD C,L
        LD DE,(tape_bounds)
        LD HL,(tape_bounds + 2)
        OR A
        RET
; Carry unless a ':' comes.
_colon: CALL tape_read
        CP ":"
        RET Z
        SCF
        RET

; Variables and what else the interpreter needs are not written over: B bytes at HL. Keeps all.
tape_allowed:
        LD A,(tape_mode)
        CP TAPE_SKIPS
        RET NC
        PUSH HL
        PUSH DE
        LD DE,(memory_top)
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_taken
        LD E,B
        LD D,0
        DEC DE
        ADD HL,DE
        JR C,_taken             ; it would come round to the program
        POP DE
        POP HL
        RET
_taken: CALL tape_close_out
        JP illegal_call

tape_read_block:
        CALL tape_open_in
        XOR A
        LD (tape_next),A
        LD A,TAPE_ANYWHERE
        LD (tape_mode),A
_search:
        CALL tape_read
        CP ":"
        JR NZ,_search
        LD (tape_pushed),A
        LD A,1
        LD (tape_next),A
        CALL tape_records_in
        PUSH AF
        CALL tape_close_out
        POP AF
        RET

do_bload:
        CALL tape_name
        LD A,(HL)
        SUB ","
        LD B,0
        JR NZ,_plain
        CALL next_char          ; R is the name of a variable there
        CP TOK_VAR
        JP NZ,syntax_error
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        PUSH HL
        LD HL,SYMBOL_TYPE + 4
        ADD HL,DE
        LD A,(HL)
        POP HL
        CP "R"
        JP NZ,syntax_error
        LD B,1
_plain: PUSH HL
        PUSH BC
_next:  CALL tape_find
        LD A,(tape_kind)
        CP TAPE_BLOCK
        JR Z,_block
        CP TAPE_RECORDS
        JR NZ,_next
_block: XOR A
        LD (tape_mode),A
        CALL tape_records_in
        JP C,tape_damaged
        PUSH BC
        CALL tape_close_out
        POP DE                  ; start
        POP BC
        POP HL
        DEC B
        RET NZ
        PUSH HL
        LD HL,_back
        PUSH HL
        PUSH DE
        RET
_back:  POP HL
        RET

; ---- What the statements read

; The name of the file at HL, if there is one, to tape_wanted: at most 16 characters count.
tape_name:
        XOR A
        LD (tape_wanted),A
        CALL this_char
        RET Z
        CP ","
        RET Z
        CALL eval_string        ; B length, DE address
        LD A,B
        CP TAPE_NAME
        JR C,_fits
        LD A,TAPE_NAME
_fits:  PUSH HL
        LD HL,tape_wanted
        LD (HL),A
        OR A
        JR Z,_none
        LD B,0
        LD C,A
        INC HL
        EX DE,HL
        LDIR
_none:  POP HL
        RET
; It must be there.
tape_need_name:
        CALL tape_name
        LD A,(tape_wanted)
        OR A
        RET NZ
        LD E,ERR_OPERAND
        JP error
tape_statement_end:
        CALL this_char
        RET Z
        JP syntax_error

; MON: memory, processor and tape by hand. All numbers are hexadecimal. A dump (":8C00 ...") and a disassembly
; (".8C00 ...") are commands themselves: change them on the screen, press RETURN.
;
;   far_monitor      the statement; HL is kept
;   monitor_stopped  where RST 38h (code FFh) leads: a breakpoint, the end of what G started, or a program that
;                    ran into unused memory. Entered with AF pushed and the expansion ROM in place.
;   monitor_read     DE address -> A; keeps all else
;
; A program runs on a stack of its own below the monitor's, with the main ROM at 6000h. It comes back by RET, or
; by a breakpoint: FFh stands at its address while the program runs, and at no other time.

MONITOR_GAP     EQU 0C0h        ; bytes of stack between the monitor and the program

far_monitor:
        PUSH HL
        LD (monitor_stack),SP
        CALL console_fresh
        LD HL,monitor_hello
        CALL console_text
monitor_loop:
        LD SP,(monitor_stack)
        CALL console_fresh
        LD A,"*"
        CALL console_out
monitor_input:
        LD IX,console_line
        CALL upper_call
        JR C,monitor_loop
        LD DE,monitor_loop
        PUSH DE
        LD HL,line_text
_blank: LD A,(HL)
        INC HL
        CP " "
        JR Z,_blank
        CP "*"
        JR Z,_blank
        OR A
        RET Z
        CALL monitor_upper
        LD C,A
        EX DE,HL
        LD HL,monitor_commands
_look:  LD A,(HL)
        OR A
        JR Z,monitor_error
        CP C
        INC HL
        JR Z,_found
        INC HL
        INC HL
        JR _look
_found: LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL                ; HL behind the letter
        PUSH DE
        RET

monitor_error:
        CALL console_fresh
        LD HL,monitor_what
        CALL console_text
        JR monitor_loop

monitor_commands:
        DEFB "D"
        DEFW monitor_dump
        DEFB "L"
        DEFW monitor_list
        DEFB ":"
        DEFW monitor_change
        DEFB "."
        DEFW monitor_line
        DEFB "A"
        DEFW monitor_assemble
        DEFB "F"
        DEFW monitor_fill
        DEFB "M"
        DEFW monitor_move
        DEFB "S"
        DEFW monitor_search
        DEFB "G"
        DEFW monitor_go
        DEFB "B"
        DEFW monitor_set_break
        DEFB "X"
        DEFW monitor_exchange
        DEFB "U"
        DEFW monitor_view
        DEFB "W"
        DEFW monitor_write_tape
        DEFB "R"
        DEFW monitor_read_tape
        DEFB "Q"
        DEFW monitor_quit
        DEFB "?"
        DEFW monitor_help
        DEFB 0

monitor_hello:
        DEFB "Monitor. ? lists the commands, Q goes back.",0
monitor_what:
        DEFB "What? Type ? for the commands.",7,0
monitor_help:
        LD HL,_text
        JP console_text
_text:  DEFB "D from to        dump; change it and press RETURN",13,10
        DEFB "L from to        disassemble; likewise",13,10
        DEFB "A address        assemble",13,10
        DEFB "F from to bytes  fill",13,10
        DEFB "M from to there  move",13,10
        DEFB "S from to bytes  search",13,10
        DEFB "G address        go",13,10
        DEFB "B address        breakpoint",13,10
        DEFB "X name value     registers",13,10
        DEFB "U                RAM under ROM",13,10
        DEFB "W from to start  write tape",13,10
        DEFB "R                read tape",13,10
        DEFB "Q                BASIC",0

monitor_quit:
        LD SP,(monitor_stack)
        LD HL,0
        LD (monitor_stack),HL
        POP HL
        RET

monitor_view:
        LD HL,monitor_under
        LD A,(HL)
        XOR 1
        LD (HL),A
        LD HL,_rom
        JP Z,console_text
        LD HL,_ram
        JP console_text
_rom:   DEFB "ROM",0
_ram:   DEFB "RAM",0

monitor_read:
        LD A,(monitor_under)
        OR A
        JR Z,_seen
        BIT 7,D
        JR NZ,_seen
        PUSH BC
        PUSH DE
        IN A,(WINDOW_PAGE)
        LD C,A
        LD A,D
        OUT (WINDOW_PAGE),A
        LD D,WINDOW / 256
        LD A,(DE)
        LD B,A
        LD A,C
        OUT (WINDOW_PAGE),A
        LD A,B
        POP DE
        POP BC
        RET
_seen:  LD A,(DE)
        RET

; ---- Reading a command

monitor_upper:
        CP "a"
        RET C
        CP "z" + 1
        RET NC
        SUB 020h
        RET

; A = the next character behind blanks and commas, HL at it; Z at the end or a comment.
monitor_next:
        LD A,(HL)
        CP " "
        JR Z,_over
        CP ","
        JR Z,_over
        CP ";"
        RET Z
        OR A
        RET
_over:  INC HL
        JR monitor_next

; DE = the next number. Carry: there is none.
monitor_number:
        CALL monitor_next
        SCF
        RET Z
        CALL dis_hex
        JR Z,_error             ; something else
        OR A
        RET
_error: JP monitor_error
; It must be there.
monitor_need:
        CALL monitor_number
        RET NC
        JP monitor_error

; monitor_from and monitor_to, which must not lie before it.
monitor_range:
        CALL monitor_need
        LD (monitor_from),DE
        CALL monitor_need
        LD (monitor_to),DE
        PUSH HL
        EX DE,HL
        LD DE,(monitor_from)
        OR A
        SBC HL,DE
        POP HL
        RET NC
        JP monitor_error

; Bytes and texts in quotes up to the end of the line, to dis_text; B = how many, at least one.
monitor_bytes:
        LD B,0
        EXX
        LD HL,dis_text
        EXX
_next:  CALL monitor_next
        JR Z,_end
        CP 022h
        JR Z,_text
        CALL dis_hex
        JR Z,_error
        LD A,D
        OR A
        JR NZ,_error
        LD A,E
        CALL _store
        JR _next
_text:  INC HL
        LD A,(HL)
        OR A
        JR Z,_next
        CP 022h
        JR Z,_close
        CALL _store
        JR _text
_close: INC HL
        JR _next
_store: EXX
        LD (HL),A
        INC HL
        EXX
        INC B
        LD A,B
        CP dis_text_end - dis_text + 1
        RET C
_error: JP monitor_error
_end:   LD A,B
        OR A
        RET NZ
        JR _error

; ---- Writing

monitor_blank:
        LD A," "
        JP console_out
; DE in four digits, A in two. Keep BC, DE, HL.
monitor_word:
        LD A,D
        CALL monitor_byte_out
        LD A,E
monitor_byte_out:
        PUSH AF
        RRCA
        RRCA
        RRCA
        RRCA
        CALL _digit
        POP AF
_digit: AND 00Fh
        CP 10
        SBC A,069h
        DAA
        JP console_out

; Carry when STOP was pressed.
monitor_stop:
        LD A,(stop_flag)
        OR A
        RET Z
        XOR A
        LD (stop_flag),A
        SCF
        RET

; ---- Commands. HL: text behind the letter.

; The range of D and L: from where the last one ended, or the numbers given. Z: no end was given.
monitor_shown:
        CALL monitor_number
        JR NC,_from
        XOR A
        RET
_from:  LD (monitor_at),DE
        CALL monitor_number
        LD A,0
        RET C
        LD (monitor_to),DE
        INC A
        RET

; Counts the rows of D and L. B rows left, DE the next address, C: it has passed the top of memory.
; Carry: the end.
monitor_more:
        CALL monitor_stop
        RET C
        LD (monitor_at),DE
        LD A,B
        OR A
        JR Z,_to                ; by address
        DEC B
        JR Z,_end
        RET
_to:    LD HL,(monitor_to)
        SBC HL,DE
        RET
_end:   SCF
        RET

monitor_dump:
        CALL monitor_shown
        LD B,0
        JR NZ,_rows
        LD B,16
_rows:  LD DE,(monitor_at)
_row:   PUSH BC
        LD A,":"
        CALL console_out
        CALL monitor_word
        LD A,(screen_columns)
        RRCA
        RRCA
        RRCA
        AND 008h                ; 80: 10, 40: 5
        ADD A,8
        LD B,A
        LD C,A
        PUSH DE
_byte:  CALL monitor_blank
        CALL monitor_read
        CALL monitor_byte_out
        INC DE
        DJNZ _byte
        POP DE
        CALL monitor_blank
        LD A,";"
        CALL console_out
        LD B,C
_character:
        CALL monitor_read
        CP " "
        JR NC,_shown
        LD A,"."
_shown: CALL console_out
        INC DE
        DJNZ _character
        POP BC
        CALL console_fresh
        CALL monitor_wrapped
        RET C
        CALL monitor_more
        JR NC,_row
        RET

; Carry: DE has just passed the top of memory.
monitor_wrapped:
        LD A,D
        OR A
        RET NZ
        LD A,(monitor_at + 1)
        RLCA
        RET

monitor_list:
        CALL monitor_shown
        LD B,0
        JR NZ,_rows
        LD B,16
_rows:  LD DE,(monitor_at)
_row:   PUSH BC
        LD A,"."
        CALL console_out
        CALL monitor_word
        CALL monitor_blank
        PUSH DE
        CALL disassemble
        LD B,A
        LD HL,dis_text
        CALL console_text
_pad:   CALL monitor_blank
        CALL console_column
        CP 22
        JR C,_pad
        LD A,";"
        CALL console_out
        POP DE
_byte:  CALL monitor_read
        CALL monitor_byte_out
        INC DE
        DJNZ _byte
        POP BC
        CALL console_fresh
        CALL monitor_wrapped
        RET C
        CALL monitor_more
        JR NC,_row
        RET

monitor_change:
        CALL monitor_need
        PUSH DE
        CALL monitor_bytes
        POP DE
        LD C,B
        LD B,0
        LD HL,dis_text
        LDIR
        RET

monitor_assemble:
        CALL monitor_need
monitor_ask:
        CALL console_fresh
        LD A,"."
        CALL console_out
        CALL monitor_word
        CALL monitor_blank
        JP monitor_input

; .8C00 LD A,B
monitor_line:
        CALL monitor_need
        CALL monitor_next
        RET Z                   ; nothing: the end
        PUSH DE
        CALL monitor_tidy
        POP DE
        PUSH DE
        CALL assemble
        JP C,monitor_error
        POP DE
        LD HL,dis_code
        LD C,A
        LD B,0
        LDIR
        JR monitor_ask

; The instruction at HL to dis_text as templates have it: capitals, one blank behind the word, none elsewhere.
monitor_tidy:
        LD DE,dis_text
        LD B,40
        LD C,0                  ; 1: the blank was there
_next:  LD A,(HL)
        OR A
        JR Z,_end
        CP ";"
        JR Z,_end
        INC HL
        CALL monitor_upper
        CP " "
        JR NZ,_store
        INC C
        DEC C
        JR NZ,_next
        INC C
_store: LD (DE),A
        INC DE
        DJNZ _next
        JP monitor_error
_end:   DEC DE                  ; a blank at the end
        LD A,(DE)
        CP " "
        JR Z,_cut
        INC DE
_cut:   XOR A
        LD (DE),A
        RET

monitor_fill:
        CALL monitor_range
        CALL monitor_bytes
        LD DE,(monitor_from)
_again: LD HL,dis_text
        LD C,B
_byte:  LD A,(HL)
        LD (DE),A
        CALL monitor_step
        RET C
        INC HL
        DEC C
        JR NZ,_byte
        JR _again

; DE moves on; carry when it was monitor_to. Keeps BC, HL.
monitor_step:
        PUSH HL
        LD HL,(monitor_to)
        OR A
        SBC HL,DE
        INC DE
        POP HL
        SCF
        RET Z
        CCF
        RET

monitor_move:
        CALL monitor_range
        CALL monitor_need
        PUSH DE
        LD DE,(monitor_from)
        LD HL,(monitor_to)
        OR A
        SBC HL,DE
        LD B,H
        LD C,L                  ; bytes - 1
        POP HL                  ; there
        PUSH HL
        OR A
        SBC HL,DE
        POP HL
        JR NC,_down             ; upwards in memory: the last byte first
_up:    CALL monitor_read
        LD (HL),A
        INC HL
        CALL monitor_step
        JR NC,_up
        RET
_down:  ADD HL,BC
        INC BC
        LD DE,(monitor_to)
_back:  CALL monitor_read
        LD (HL),A
        DEC HL
        DEC DE
        DEC BC
        LD A,B
        OR C
        JR NZ,_back
        RET

monitor_search:
        CALL monitor_range
        CALL monitor_bytes
        LD DE,(monitor_from)
_place: PUSH DE
        LD HL,dis_text
        LD C,B
_byte:  CALL monitor_read
        CP (HL)
        INC HL
        INC DE
        JR NZ,_other
        DEC C
        JR NZ,_byte
        POP DE
        CALL monitor_word
        CALL monitor_blank
        PUSH DE
_other: POP DE
        CALL monitor_stop
        RET C
        CALL monitor_step
        JR NC,_place
        RET

; X shows the registers, X HL 1234 changes one.
monitor_exchange:
        CALL monitor_next
        JR Z,monitor_show
        CALL monitor_upper
        LD B,A
        INC HL
        LD A,(HL)
        CALL monitor_upper
        LD C,A                  ; BC the name
        INC HL
        LD A,(HL)
        LD DE,8 * 256 + 0       ; names, offset of the first
        CP "'"
        PUSH HL
        LD HL,monitor_names
        JR NZ,_look
        POP HL
        INC HL
        PUSH HL
        LD DE,4 * 256 + 8 * 2   ; AF' and so on
        LD HL,monitor_names + 2 * 2
_look:  LD A,(HL)
        INC HL
        CP B
        LD A,(HL)
        INC HL
        JR NZ,_other
        CP C
        JR Z,_found
_other: INC E
        INC E
        DEC D
        JR NZ,_look
_error: JP monitor_error
_found: LD A,E
        POP HL
        PUSH AF
        CALL monitor_need
        POP AF
        LD HL,monitor_registers
        ADD A,L
        LD L,A                  ; they lie within one page
        LD (HL),E
        INC HL
        LD (HL),D
        RET

monitor_names:
        DEFB "PCSPAFBCDEHLIXIYAFBCDEHL"
monitor_show:
        CALL console_fresh
        LD HL,monitor_registers
        LD DE,monitor_names
        LD B,12
_register:
        LD A,(DE)
        INC DE
        CALL console_out
        LD A,(DE)
        INC DE
        CALL console_out
        LD A,B
        CP 5
        LD A,"'"
        CALL C,console_out
        LD A,"="
        CALL console_out
        PUSH DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        CALL monitor_word
        POP DE
        CALL monitor_blank
        LD A,B
        CP 9
        CALL Z,console_fresh
        LD A,B
        CP 5
        CALL Z,monitor_flags
        DJNZ _register
        RET
; The flags by their letters, a dot for those that are clear.
monitor_flags:
        PUSH BC
        PUSH HL
        LD A,(monitor_af)
        LD C,A
        LD HL,_letters
        LD B,8
_flag:  RLC C
        LD A,(HL)
        INC HL
        JR C,_set
        CP " "
        JR Z,_none
        LD A,"."
_set:   CP " "                  ; bits 5 and 3 have no names
        CALL NZ,console_out
_none:  DJNZ _flag
        POP HL
        POP BC
        JP console_fresh
_letters:
        DEFB "SZ H VNC"

; B address, B alone clears it.
monitor_set_break:
        CALL monitor_number
        JR NC,_there
        LD DE,0
        JR _set
_there: BIT 7,D                 ; ROM would not take it
        JP Z,monitor_error
_set:   LD (monitor_break),DE
        RET

monitor_go:
        CALL monitor_number
        JR C,_on
        LD (monitor_pc),DE
        LD HL,(monitor_stack)
        LD DE,-MONITOR_GAP
        ADD HL,DE
        LD DE,monitor_return
        LD (HL),E
        INC HL
        LD (HL),D
        DEC HL
        LD (monitor_sp),HL
_on:    LD DE,(monitor_pc)
        LD A,D
        OR E
        JP Z,monitor_error      ; nothing was started
        CALL console_fresh
        LD HL,(monitor_break)
        LD A,H
        OR A
        JR Z,_run
        SBC HL,DE
        JR Z,_run               ; it goes on from there
        ADD HL,DE
        LD A,(HL)
        LD (monitor_byte),A
        LD (HL),0FFh            ; RST 38h
        LD A,1
        LD (monitor_set),A
_run:   LD HL,(monitor_others)
        PUSH HL
        POP AF
        LD BC,(monitor_others + 2)
        LD DE,(monitor_others + 4)
        LD HL,(monitor_others + 6)
        EXX
        EX AF,AF'
        LD SP,(monitor_sp)
        LD HL,(monitor_pc)
        PUSH HL
        LD HL,(monitor_af)
        PUSH HL
        LD BC,(monitor_bc)
        LD DE,(monitor_de)
        LD HL,(monitor_hl)
        LD IX,(monitor_ix)
        LD IY,(monitor_iy)
        JP monitor_leave

monitor_stopped:
        OUT (SELECT_RAM),A
        LD (monitor_hl),HL
        LD (monitor_de),DE
        LD (monitor_bc),BC
        LD (monitor_ix),IX
        LD (monitor_iy),IY
        POP HL
        LD (monitor_af),HL
        POP HL
        LD (monitor_pc),HL
        LD (monitor_sp),SP
        EX AF,AF'
        PUSH AF
        EX AF,AF'
        EXX
        LD (monitor_others + 2),BC
        LD (monitor_others + 4),DE
        LD (monitor_others + 6),HL
        POP HL
        LD (monitor_others),HL
        LD HL,(monitor_break)
        LD A,(monitor_set)
        OR A
        JR Z,_whole
        LD A,(monitor_byte)
        LD (HL),A
_whole: LD HL,(monitor_stack)
        LD A,H
        OR A
        JR NZ,_entered
        LD SP,STACK             ; a program of BASIC's fell into it
        LD HL,ready
        PUSH HL
        PUSH HL                 ; for AF
        LD HL,monitor_leave
        PUSH HL
        PUSH HL                 ; for HL
        LD (monitor_stack),SP
_entered:
        LD SP,(monitor_stack)
        EI
        CALL console_fresh
        LD DE,(monitor_pc)
        LD HL,monitor_return + 1
        OR A
        SBC HL,DE
        LD HL,_returned
        JR Z,_text
        DEC DE
        LD HL,monitor_set
        LD A,(HL)
        LD (HL),0
        LD HL,(monitor_break)
        OR A
        SBC HL,DE
        LD HL,_strange
        JR NZ,_text
        DEC A
        JR NZ,_text
        LD (monitor_pc),DE      ; the instruction itself is still to be run
        LD HL,_break
_text:  CALL console_text
        CALL monitor_show
        JP monitor_loop
_returned:
        DEFB "Returned",13,10,0
_break: DEFB "Breakpoint",13,10,0
_strange:
        DEFB "RST 38",13,10,0

; ---- Tape: records of a ':', address (high byte first), check, then ':', length, bytes, check. The check makes
; the sum 0. A length of 0 ends them; its address is where the program starts.

monitor_write_tape:
        CALL monitor_range
        CALL monitor_number
        JR NC,_start
        LD DE,0
_start: LD B,D
        LD C,E
        LD HL,(monitor_from)
        LD DE,(monitor_to)
        LD IX,tape_write_block
        CALL upper_call
        RET NC
        JP monitor_tape_error

monitor_read_tape:
        LD IX,tape_read_block
        CALL upper_call
        JR C,monitor_tape_error
        PUSH BC
        CALL monitor_word       ; DE the first address, HL behind the last
        CALL monitor_blank
        DEC HL
        EX DE,HL
        CALL monitor_word
        CALL monitor_blank
        POP DE
        LD A,D
        OR E
        RET Z
        LD (monitor_pc),DE
        JP monitor_word
monitor_tape_error:
        LD HL,_text
        JP console_text
_text:  DEFB "Tape error",7,0

        INCLUDE "disassembler.asm"

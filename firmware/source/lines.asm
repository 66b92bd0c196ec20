; Where the program is kept: under the ROM (written at its address, read through the window), on the plain map from
; DATA on. Addresses of lines count from 0 there; PROGRAM_START is the first line's.
;
;   find_line       DE = number: Z, HL = its header, page set; or NZ, HL = the first line beyond
;   line_follow     HL at a line's 0: HL = the next header, page set; carry: there is none
;   line_store      the line in TOKENS (see crunch) into the program; without tokens the line of its number goes. One
;                   that stands there already changes nothing: variables stay
;   line_remove     HL = header: the line goes. Between edit_begin and the next run only
;   edit_begin      before the program changes: line addresses become numbers again, variables go
;   header_number   HL = header: HL = its number
;   number_out      prints the number HL, 0..65535
;   program_clear   NEW
;   program_free    HL = bytes left for lines
;   token_skip      HL at a token: behind it. BC, DE are kept
;   tokens_walk     DE = routine, called with HL at each token of the program and of TOKENS; it may change its bytes
;                   and all registers
;   memory_move     DE = new (memory_top): symbols move there, variables go

        IF NBASIC
PROGRAM_START   EQU DATA
        ELSE
PROGRAM_START   EQU PROGRAM_RAM
        ENDIF

find_line:
        PUSH DE
        LD DE,PROGRAM_START
        CALL place_to_text
        POP DE
_next:  LD C,(HL)
        INC HL
        LD B,(HL)
        LD A,B
        OR C
        JR Z,_end
        INC HL
        LD A,(HL)
        SUB E
        INC HL
        LD A,(HL)
        SBC A,D
        JR C,_less
        LD A,(HL)
        CP D
        JR NZ,_beyond
        DEC HL
        LD A,(HL)
        CP E
        DEC HL
        DEC HL
        RET
_beyond:
        DEC HL
        DEC HL
        DEC HL
        RET
_end:   DEC HL
        OR 1
        RET
_less:  DEC HL
        DEC HL
        DEC HL
        ADD HL,BC
        CALL window_settle
        JR _next

; HL at a place in the program: moves the window so that HL lies in its first page.
window_settle:
        IF NBASIC = 0
        LD A,H
        SUB WINDOW_HIGH
        RET Z
        PUSH BC
        LD B,A
        IN A,(WINDOW_PAGE)
        ADD A,B
        OUT (WINDOW_PAGE),A
        POP BC
        LD H,WINDOW_HIGH
        ENDIF
        RET

line_follow:
        INC HL
        LD A,H
        CP TOKENS / 256
        JR Z,_direct
        IF NBASIC = 0
        CP TOKENS / 256 + 1
        JR Z,_direct
        ENDIF
        CALL window_settle
_direct:
        LD A,(HL)
        INC HL
        OR (HL)
        DEC HL
        RET NZ
        SCF
        RET

; ---- Editing

edit_begin:
        CALL lines_unresolve
        PUSH HL
        CALL variables_reset
        POP HL
        RET
lines_unresolve:
        PUSH HL
        LD A,(lines_resolved)
        OR A
        LD DE,line_unresolve
        CALL NZ,tokens_walk
        XOR A
        LD (lines_resolved),A
        POP HL
        RET

; For tokens_walk: the address of a line becomes its number.
line_unresolve:
        LD A,(HL)
        CP TOK_LINENO_AT
        RET NZ
        LD (HL),TOK_LINENO
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        PUSH HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        CALL place_to_text
        INC HL
        INC HL
        LD E,(HL)
        INC HL
        LD D,(HL)
        POP AF
        OUT (WINDOW_PAGE),A
        POP HL
        LD (HL),D
        DEC HL
        LD (HL),E
        RET

line_store:
        CALL lines_unresolve
        LD HL,(TOKENS)
        LD DE,0 - 64
        ADD HL,DE
        CALL C,list_check       ; one that is written shorter than it is listed
        LD DE,(TOKENS + 2)
        CALL find_line
        PUSH HL
        PUSH AF
        JR NZ,_new
        LD DE,TOKENS
        LD BC,(TOKENS)
_same:  LD A,(DE)
        INC DE
        CPI
        JR NZ,_new
        JP PE,_same
        POP AF
        POP HL
        RET
_new:   CALL variables_reset
        POP AF
        POP HL
        CALL Z,line_remove
        LD A,(TOKENS + 4)
        OR A
        RET Z
        CALL text_to_place      ; DE = where it goes
        PUSH DE
        LD HL,(TOKENS)
        PUSH HL
        CALL program_free
        POP BC
        OR A
        SBC HL,BC
        LD E,ERR_MEMORY
        JP C,error
        POP DE
        PUSH DE
        PUSH BC
        LD HL,(program_end)     ; from there on, the end mark too, up by BC
        INC HL
        PUSH HL
        OR A
        SBC HL,DE
        INC HL
        EX (SP),HL              ; HL = last byte, stack: length
        LD D,H
        LD E,L
        EX DE,HL
        ADD HL,BC
        EX DE,HL
        POP BC
        CALL program_up
        POP BC
        POP DE
        LD HL,TOKENS
        PUSH BC
        LDIR
        POP BC
        LD HL,(program_end)
        ADD HL,BC
program_ends:
        LD (program_end),HL
        IF NBASIC
        INC HL
        INC HL
        LD (arrays_base),HL
        LD (arrays_end),HL
        ENDIF
        RET

line_remove:
        PUSH HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        DEC HL
        CALL text_to_place      ; DE = where what follows goes
        PUSH DE
        LD H,D
        LD L,E
        ADD HL,BC
        PUSH BC
        PUSH HL
        LD B,H
        LD C,L
        LD HL,(program_end)
        INC HL
        INC HL
        OR A
        SBC HL,BC
        LD B,H
        LD C,L                  ; how much follows, the end mark too
        POP HL
        IN A,(WINDOW_PAGE)
        PUSH AF
        CALL program_down
        POP AF
        OUT (WINDOW_PAGE),A
        POP BC
        LD HL,(program_end)
        OR A
        SBC HL,BC
        CALL program_ends
        POP DE
        POP HL
        RET

; BC bytes of the program, upwards: HL the last of them, DE where it goes. Addresses.
program_up:
        IF NBASIC
        LDDR
        RET
        ELSE
_chunk: LD A,B
        OR C
        RET Z
        PUSH BC
        LD A,H
        OUT (WINDOW_PAGE),A
        LD A,B
        OR A
        LD A,L                  ; L + 1 bytes down to the start of the page
        LD B,0
        JR NZ,_page
        CP C
        JR NC,_all              ; no more are left
_page:  LD C,A
        INC BC
_all:   LD H,WINDOW_HIGH
        PUSH BC
        LDDR
        POP BC
        IN A,(WINDOW_PAGE)      ; back to an address: HL may have left the page
        BIT 7,H
        LD H,A
        JR NZ,_same             ; 80h: not
        DEC H
_same:  EX (SP),HL
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        POP HL
        JR _chunk
        ENDIF

; The same downwards: HL the first of them.
program_down:
        LD A,B
        OR C
        RET Z
        IF NBASIC
        LDIR
        RET
        ELSE
_chunk: PUSH BC
        LD A,H
        OUT (WINDOW_PAGE),A
        PUSH AF
        XOR A                   ; 100h - L bytes up to the end of the page
        SUB L
        JR Z,_whole
        INC B
        DEC B
        LD B,0
        JR NZ,_page
        CP C
        JR NC,_all              ; no more are left
_page:  LD C,A
        JR _all
_whole: LD A,B
        OR A
        JR Z,_all
        LD BC,256
_all:   LD H,WINDOW_HIGH
        PUSH BC
        LDIR
        POP BC
        LD A,H
        SUB WINDOW_HIGH
        POP HL                  ; H the page
        ADD A,H
        LD H,A
        LD L,0
        EX (SP),HL
        OR A
        SBC HL,BC
        LD B,H
        LD C,L
        POP HL
        LD A,B
        OR C
        RET Z
        JR _chunk
        ENDIF

program_clear:
        XOR A
        LD (lines_resolved),A
        LD HL,PROGRAM_START
        LD (HL),A
        INC HL
        LD (HL),A
        DEC HL
        IF NBASIC
        CALL program_ends
        ELSE
        LD (program_end),HL
        LD HL,DATA
        LD (arrays_base),HL
        ENDIF
        CALL symbols_clear
        JP variables_reset

program_free:
        IF NBASIC
        LD HL,(heap_low)
        ELSE
        LD HL,PROGRAM_RAM_END
        ENDIF
        LD DE,(program_end)
        OR A
        SBC HL,DE
        DEC HL
        DEC HL
        RET

header_number:
        INC HL
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        RET
number_out:
        CALL number_word
        JP console_text

; ---- Tokens

token_skip:
        LD A,(HL)
        INC HL
        CP 22h
        JR Z,_string
        JR NC,_above
        CP TOK_DIGIT
        RET NC
        OR A
        JR Z,_end
        PUSH DE
        PUSH HL
        LD E,A
        LD D,0
        LD HL,_lengths
        ADD HL,DE
        LD E,(HL)
        POP HL
        ADD HL,DE
        CP TOK_SPELT
        JR NZ,_skipped
        LD E,(HL)
        INC HL
        ADD HL,DE
_skipped:
        POP DE
        RET
_string:
        LD A,(HL)
        OR A
        RET Z
        INC HL
        CP 22h
        JR NZ,_string
        RET
_above: CP TOK_FIRST
        RET C
        CP TOK_FUNCTION
        JR Z,_two
        CP TOK_DATA
        JR Z,_data
        CP TOK_REM
        JR Z,_rem
        CP TOK_QUOTE
        RET NZ
_rem:   LD A,(HL)
        OR A
        RET Z
_two:   INC HL
        CP TOK_FUNCTION
        RET Z
        JR _rem
_end:   DEC HL
        RET
_data:  LD A,(HL)
        OR A
        RET Z
        CP ":"
        RET Z
        INC HL
        CP 22h
        CALL Z,_string
        JR _data
_lengths:
        DEFB 0,2,2,1,2,5,5,0,2,2,2,2,2,0,0,0

tokens_walk:
        LD (walk_routine),DE
        IN A,(WINDOW_PAGE)
        PUSH AF
        LD DE,PROGRAM_START
        CALL place_to_text
        LD A,(HL)
        INC HL
        OR (HL)
        DEC HL
        JR Z,_direct
_line:  CALL _tokens
        CALL line_follow
        JR NC,_line
_direct:
        LD HL,TOKENS
        CALL _tokens
        POP AF
        OUT (WINDOW_PAGE),A
        RET
_tokens:
        INC HL
        INC HL
        INC HL
        INC HL
_token: LD A,(HL)
        OR A
        RET Z
        PUSH HL
        LD DE,_back
        PUSH DE
        LD DE,(walk_routine)
        PUSH DE
        RET
_back:  POP HL
        CALL token_skip
        JR _token

; ---- CLEAR's second number

memory_move:
        LD HL,DATA_TOP
        OR A
        SBC HL,DE
        JP C,illegal_call
        LD A,D                  ; so low that what is moved would wrap round
        CP DATA / 256 + 1
        JP C,illegal_call
        PUSH DE
        CALL variables_clear
        POP HL
        LD DE,(memory_top)
        OR A
        SBC HL,DE               ; how far
        RET Z
        LD B,H
        LD C,L
        LD HL,(symbols_low)
        ADD HL,BC
        PUSH HL
        LD DE,(arrays_base)
        INC D                   ; 256 bytes at least
        OR A
        SBC HL,DE
        LD E,ERR_MEMORY
        JP C,error
        LD (walk_shift),BC
        LD HL,SYMBOL_HEADS      ; links first
        LD A,32
_head:  CALL word_shift
        DEC A
        JR NZ,_head
        LD HL,(symbols_low)
_symbol:
        CALL symbols_over
        JR Z,_links
        LD DE,SYMBOL_LINK
        ADD HL,DE
        CALL word_shift
        LD E,(HL)
        LD D,0
        INC HL
        ADD HL,DE
        JR _symbol
_links: LD DE,token_shift
        CALL tokens_walk
        LD HL,(memory_top)
        LD DE,(symbols_low)
        OR A
        SBC HL,DE
        LD B,H
        LD C,L                  ; size
        POP DE                  ; new place
        LD HL,(symbols_low)
        PUSH DE
        LD A,B
        OR C
        JR Z,_moved
        OR A
        SBC HL,DE
        ADD HL,DE
        JR C,_up
        LDIR
        JR _moved
_up:    ADD HL,BC
        DEC HL
        EX DE,HL
        ADD HL,BC
        DEC HL
        EX DE,HL
        LDDR
_moved: POP HL
        LD (symbols_low),HL
        LD (heap_low),HL
        LD HL,(memory_top)
        LD DE,(walk_shift)
        ADD HL,DE
        LD (memory_top),HL
        RET
; The word at HL, unless it is 0, by walk_shift; HL behind it. A is kept.
word_shift:
        LD E,(HL)
        INC HL
        LD D,(HL)
        DEC HL
        INC D
        DEC D
        JR Z,_none
        PUSH HL
        LD HL,(walk_shift)
        ADD HL,DE
        EX DE,HL
        POP HL
        LD (HL),E
        INC HL
        LD (HL),D
        INC HL
        RET
_none:  INC HL
        INC HL
        RET
token_shift:
        LD A,(HL)
        CP TOK_VAR
        RET C
        CP TOK_FN + 1
        RET NC
        INC HL
        JR word_shift

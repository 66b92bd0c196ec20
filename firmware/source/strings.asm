; Strings: their heap, and the functions on them.
;
; A descriptor is 3 bytes: length, address of the text. A string lies on the heap between (heap_low) and (symbols_low),
; owned by one descriptor: text, length, address of the descriptor. It is alive while its owner points to it. So the
; heap can be walked from its top, and each string found and moved without a look at the variables.
; A string that no variable owns has its descriptor in temps, last in, first out.
;
;   string_new      A = length: DE = new temporary descriptor, HL = room for the text; A is kept. May move all strings.
;   string_assign   HL = descriptor of a variable, DE = descriptor: copied, or taken over when it is a temporary
;   string_join     HL, DE = descriptors: DE = temporary of both, one behind the other
;   string_compare  HL with DE: Z equal, C HL's is smaller; both are freed
;   string_settle   DE = newest temporary, HL = a descriptor that went into it: freed, DE = the result
;   string_owned    HL = descriptor of a variable: its string learns so
;   string_literal  HL behind a quotation mark: B, DE a value; HL behind the closing one. C is kept
;   temp_free       DE = descriptor, freed when it is a temporary; all registers but AF are kept
;   heap_collect    strings without owner go
;   heap_shift      BC bytes more for symbols
;   heap_forget     the array block at HL, BC bytes, goes: its strings lose their owner, those of blocks behind follow
; All may raise Out of string space, String too long, Formula too complex.

OVERHEAD        EQU 3           ; bytes a string takes beside its text

string_new:
        PUSH AF
        LD DE,(temp_top)
        LD HL,0 - (temps + 3 * TEMPS)
        ADD HL,DE
        JR C,_complex
        OR A
        JR Z,_empty
        CALL string_room
        PUSH HL
        LD (DE),A
        INC DE
        LD A,L
        LD (DE),A
        INC DE
        LD A,H
        LD (DE),A
        INC DE
        LD HL,(temp_top)
        LD (temp_top),DE
        EX DE,HL
        POP HL
        POP AF
        RET
_empty: LD H,D
        LD L,E
        LD (HL),A
        INC HL
        INC HL
        INC HL
        LD (temp_top),HL
        POP AF
        RET
_complex:
        LD E,ERR_FORMULA
        JP error

; Room for A (not 0) characters owned by DE: HL. A, DE are kept.
string_room:
        PUSH AF
        CALL _take
        JR NC,_there
        PUSH DE
        CALL heap_collect
        POP DE
        POP AF
        PUSH AF
        CALL _take
        JR C,_full
_there: LD (heap_low),HL
        POP AF
        PUSH HL
        LD C,A
        LD B,0
        ADD HL,BC
        LD (HL),A
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        POP HL
        RET
_full:  LD E,ERR_STRINGS
        JP error
_take:  ADD A,OVERHEAD          ; HL = lower by so much, carry: there is no room
        LD C,A
        LD A,0
        ADC A,A
        LD B,A
        LD HL,(heap_low)
        OR A
        SBC HL,BC
        RET C
        LD BC,(arrays_end)
        SBC HL,BC
        RET C
        ADD HL,BC
        OR A
        RET

temp_free:
        PUSH HL
        LD HL,(temp_top)
        DEC HL
        DEC HL
        DEC HL
        OR A
        SBC HL,DE
        JR NZ,_end
        LD (temp_top),DE
        EX DE,HL                ; at the heap's low end it goes at once
        PUSH HL
        PUSH BC
        LD A,(HL)
        OR A
        JR Z,_empty
        INC HL
        LD C,(HL)
        INC HL
        LD B,(HL)
        LD HL,(heap_low)
        SBC HL,BC
        JR NZ,_empty
        LD L,A
        LD H,0
        ADD HL,BC
        LD BC,OVERHEAD
        ADD HL,BC
        LD (heap_low),HL
_empty: POP BC
        POP DE
_end:   POP HL
        RET

; Z: DE is the newest temporary. AF only.
temp_newest:
        PUSH HL
        LD HL,(temp_top)
        DEC HL
        DEC HL
        DEC HL
        OR A
        SBC HL,DE
        POP HL
        RET

string_assign:
        CALL temp_newest
        JR NZ,string_copy
        LD (temp_top),DE
        EX DE,HL
        PUSH DE
        LDI
        LDI
        LDI
        POP HL
string_owned:
        LD A,(HL)
        OR A
        RET Z
        LD D,H
        LD E,L
        INC HL
        LD C,(HL)
        INC HL
        LD H,(HL)
        LD L,C
        LD C,A
        LD B,0
        ADD HL,BC
        INC HL
        LD (HL),E
        INC HL
        LD (HL),D
        RET
string_copy:
        LD A,(DE)
        OR A
        JR Z,_none
        EX DE,HL                ; DE target, HL source
        PUSH HL
        CALL string_room
        EX (SP),HL              ; HL source, room on the stack
        INC HL
        LD C,(HL)
        INC HL
        LD H,(HL)
        LD L,C
        POP BC
        PUSH DE
        PUSH BC
        LD D,B
        LD E,C
        LD C,A
        LD B,0
        LDIR
        POP BC
        POP HL
        LD (HL),A
        INC HL
        LD (HL),C
        INC HL
        LD (HL),B
        RET
_none:  LD (HL),A
        RET

string_settle:
        DEC DE
        DEC DE
        DEC DE
        OR A
        SBC HL,DE
        JR NZ,_variable
        LD H,D
        LD L,E
        INC HL
        INC HL
        INC HL
        LD (temp_top),HL
        PUSH DE
        LDI
        LDI
        LDI
        POP HL
        PUSH HL
        CALL string_owned
        POP DE
        RET
_variable:
        INC DE
        INC DE
        INC DE
        RET

string_join:
        LD A,(DE)
        ADD A,(HL)
        JR C,_long
        PUSH HL
        PUSH DE
        CALL string_new         ; DE result, HL room
        EX (SP),HL              ; HL right, room on the stack
        LD B,H
        LD C,L
        POP HL
        EX (SP),HL              ; HL left; stack: room
        PUSH BC                 ; right
        PUSH DE                 ; result
        LD B,H
        LD C,L
        LD HL,4
        ADD HL,SP
        LD E,(HL)
        INC HL
        LD D,(HL)               ; DE = room
        LD (HL),B
        DEC HL
        LD (HL),C               ; left in its place
        LD H,B
        LD L,C
        CALL _part
        POP BC                  ; result
        POP HL                  ; right
        PUSH HL
        PUSH BC
        CALL _part
        POP DE
        POP HL
        CALL string_settle
        POP HL
        JR string_settle
_long:  LD E,ERR_LONG
        JP error
; The text of descriptor HL to DE, which moves on.
_part:  LD A,(HL)
        OR A
        RET Z
        LD C,A
        LD B,0
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LDIR
        RET

string_compare:
        CALL temp_free
        EX DE,HL
        CALL temp_free
        LD A,(DE)               ; DE left, HL right
        LD B,A
        LD C,(HL)
        PUSH BC
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A                  ; HL left text, DE right text
        EX DE,HL
        LD A,B
        CP C
        JR C,_shorter
        LD B,C
_shorter:
        INC B
        DEC B
        JR Z,_ends
_same:  LD A,(DE)
        CP (HL)
        JR NZ,_differ
        INC HL
        INC DE
        DJNZ _same
_ends:  POP BC
        LD A,B
        CP C
        RET
_differ:
        POP BC
        RET

string_literal:
        PUSH BC
        PUSH HL
        LD B,0
_count: LD A,(HL)
        OR A
        JR Z,_end
        CP 22h
        JR Z,_end
        INC HL
        INC B
        JR NZ,_count
_end:   LD A,B
        CALL string_new
        EX (SP),HL              ; HL text, stack: room
        POP BC
        PUSH DE
        LD D,B
        LD E,C
        CALL copy_text
        POP DE
        LD A,(HL)
        OR A
        JR Z,_open
        INC HL
_open:  POP BC
        LD B,80h
        RET

; ---- The heap

; HL = behind a string: DE = its text, A = length, HL = its owner; Z: that was the heap's end.
heap_string:
        LD DE,(heap_low)
        OR A
        SBC HL,DE
        RET Z
        ADD HL,DE
        DEC HL
        LD D,(HL)
        DEC HL
        LD E,(HL)               ; owner
        DEC HL
        LD A,(HL)
        PUSH DE
        LD E,A
        LD D,0
        OR A
        SBC HL,DE
        EX DE,HL
        POP HL
        OR A                    ; a length is never 0
        RET

; NZ: the string at DE, length A, is alive: HL, its owner, points to it. A, DE, HL are kept.
heap_alive:
        LD B,A
        LD A,H
        CP temps / 256          ; below all variables
        JR C,_dead
        JR NZ,_variable
        PUSH DE                 ; a temporary that is no more?
        LD DE,(temp_top)
        OR A
        SBC HL,DE
        ADD HL,DE
        POP DE
        JR NC,_dead
_variable:
        LD A,(HL)
        CP B
        JR NZ,_dead
        INC HL
        LD A,(HL)
        INC HL
        CP E
        JR NZ,_dead_2
        LD A,(HL)
        CP D
        JR NZ,_dead_2
        DEC HL
        DEC HL
        LD A,B
        OR A
        RET
_dead_2:
        DEC HL
        DEC HL
_dead:  XOR A
        LD A,B
        RET

heap_collect:
        LD HL,(symbols_low)
        PUSH HL                 ; where the next living one ends
_next:  CALL heap_string        ; HL = behind it
        JR Z,_end
        CALL heap_alive
        JR Z,_gone
        PUSH DE                 ; text
        INC HL                  ; its new address: end - OVERHEAD - length
        EX (SP),HL              ; HL text; stack: owner + 1, end
        EX DE,HL
        POP HL
        EX (SP),HL              ; HL end; stack: owner + 1
        PUSH DE                 ; text
        LD C,A
        LD B,0
        EX DE,HL                ; HL text, DE end
        ADD HL,BC
        INC HL
        INC HL                  ; last byte of the whole
        DEC DE
        INC BC
        INC BC
        INC BC
        LDDR
        INC DE                  ; its new address
        POP BC                  ; text
        POP HL
        LD (HL),E
        INC HL
        LD (HL),D
        PUSH DE
        LD H,B
        LD L,C
        JR _next
_gone:  EX DE,HL
        JR _next
_end:   POP HL
        LD (heap_low),HL
        RET

heap_shift:
        PUSH BC
        LD HL,(heap_low)
        OR A
        SBC HL,BC
        LD DE,(arrays_end)
        JR C,_full
        SBC HL,DE
        JR NC,_room
_full:  CALL heap_collect
        POP BC
        PUSH BC
        LD HL,(heap_low)
        OR A
        SBC HL,BC
        LD E,ERR_MEMORY
        JP C,error
        LD DE,(arrays_end)
        SBC HL,DE
        LD E,ERR_MEMORY
        JP C,error
_room:  LD HL,(symbols_low)     ; each owner learns the new place, then all moves at once
_next:  CALL heap_string
        JR Z,_move
        CALL heap_alive
        PUSH DE
        JR Z,_dead
        POP DE
        POP BC
        PUSH BC
        PUSH DE
        INC HL
        LD A,E
        SUB C
        LD (HL),A
        INC HL
        LD A,D
        SBC A,B
        LD (HL),A
_dead:  POP HL
        JR _next
_move:  LD HL,(symbols_low)
        LD DE,(heap_low)
        PUSH HL
        OR A
        SBC HL,DE
        LD B,H
        LD C,L                  ; length
        POP HL
        EX (SP),HL              ; HL = shift, stack: symbols_low
        EX DE,HL                ; HL heap_low, DE shift
        PUSH HL
        OR A
        SBC HL,DE
        LD (heap_low),HL
        EX (SP),HL
        EX DE,HL                ; DE from, HL shift; stack: to, symbols_low
        LD (array_data),HL
        POP HL
        EX DE,HL                ; HL from, DE to
        LD A,B
        OR C
        JR Z,_none
        LDIR
_none:  POP HL
        LD DE,(array_data)
        OR A
        SBC HL,DE
        LD (symbols_low),HL
        RET

heap_forget:
        PUSH BC
        PUSH HL
        LD (array_data),HL
        ADD HL,BC
        LD (array_symbol),HL
        LD HL,(symbols_low)
_next:  CALL heap_string
        JR Z,_end
        LD B,H                  ; BC owner, DE text
        LD C,L
        PUSH DE
        EX DE,HL
        LD E,A
        LD D,0
        ADD HL,DE
        INC HL                  ; where the owner is noted
        EX DE,HL                ; DE note
        LD H,B
        LD L,C
        LD BC,(array_data)
        OR A
        SBC HL,BC
        JR C,_keep
        ADD HL,BC
        LD BC,(array_symbol)
        SBC HL,BC
        JR C,_lose
        ADD HL,BC
        LD BC,(arrays_end)
        OR A
        SBC HL,BC
        JR NC,_keep
        ADD HL,BC
        LD BC,(array_symbol)
        OR A
        SBC HL,BC
        LD BC,(array_data)
        ADD HL,BC
        EX DE,HL
        LD (HL),E
        INC HL
        LD (HL),D
        JR _keep
_lose:  XOR A
        LD (DE),A
        INC DE
        LD (DE),A
_keep:  POP HL
        JR _next
_end:   POP HL
        POP BC
        RET

; ---- Functions

fn_len: CALL arg_string
        LD A,B
        JP result_byte

fn_asc: CALL arg_string
        LD A,B
        OR A
        JP Z,illegal_call
        LD A,(DE)
        JP result_byte

fn_val: CALL arg_string
        PUSH HL
        EX DE,HL
        LD DE,val_text
        LD C,B                  ; so much as a number can use, without blanks
        LD B,VAL_TEXT - 1
        INC C
_copy:  DEC C
        JR Z,_ready
        LD A,(HL)
        INC HL
        CP " "
        JR Z,_copy
        LD (DE),A
        INC DE
        DJNZ _copy
_ready: XOR A
        LD (DE),A
        LD HL,val_text
        CALL number_parse
        POP HL
        JP result_fac

fn_str: CALL arg_number
        PUSH HL
        CALL number_print
result_text:                    ; HL = text ended by 0; the text pointer on the stack
        EX DE,HL
        LD H,D
        LD L,E
        LD B,0
_count: LD A,(HL)
        OR A
        JR Z,_end
        INC HL
        INC B
        JR _count
_end:   POP HL
        JP result_string

fn_hex: CALL arg_word
        PUSH HL
        EX DE,HL
        CALL number_hex
        JR result_text
fn_oct: CALL arg_word
        PUSH HL
        EX DE,HL
        CALL number_octal
        JR result_text

fn_chr: CALL arg_byte
        LD C,A
        LD A,1
        PUSH HL
        PUSH BC
        CALL string_new
        POP BC
        LD (HL),C
        POP HL
        JP result_descriptor

fn_space:
        CALL arg_byte
        LD C," "
        JR string_repeat
fn_string:
        CALL arg_open
        CALL eval_byte
        PUSH AF
        CALL expect
        DEFB ","
        CALL evaluate
        BIT 7,B
        JR NZ,_text
        CALL value_to_byte
        JR _close
_text:  CALL value_to_string
        LD A,B
        OR A
        JP Z,illegal_call
        LD A,(DE)
_close: LD C,A
        CALL arg_close
        POP AF
; A times the character C.
string_repeat:
        PUSH HL
        PUSH BC
        CALL string_new
        POP BC
        OR A
        JR Z,_end
        LD B,A
_fill:  LD (HL),C
        INC HL
        DJNZ _fill
_end:   POP HL
        JP result_descriptor

fn_left:
        CALL string_count
        LD B,0
        LD C,A
        JR substring
fn_right:
        CALL string_count
        LD C,A
        LD A,(DE)
        SUB C
        JR NC,_start
        XOR A
_start: LD B,A
        JR substring
; ( string , byte ): DE descriptor, A
string_count:
        CALL arg_open
        CALL evaluate
        BIT 7,B
        JP Z,type_mismatch
        PUSH DE
        CALL expect
        DEFB ","
        CALL eval_byte
        CALL arg_close
        LD A,E
        POP DE
        RET

fn_mid: CALL arg_open
        CALL evaluate
        BIT 7,B
        JP Z,type_mismatch
        PUSH DE
        CALL mid_range
        CALL arg_close
        POP DE
; Of descriptor DE C characters from B on (0 the first), as far as there are.
substring:
        PUSH HL
        PUSH DE
        LD A,(DE)
        SUB B
        JR NC,_inside
        XOR A
_inside:
        CP C
        JR C,_short
        LD A,C
_short: PUSH BC
        CALL string_new
        POP BC
        EX (SP),HL              ; HL source, stack: room
        LD C,B
        LD B,0
        PUSH HL
        PUSH AF
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        POP AF
        ADD HL,BC
        POP BC                  ; source descriptor
        EX DE,HL                ; DE text, HL result
        EX (SP),HL              ; HL room, stack: result
        EX DE,HL                ; HL text, DE room
        PUSH BC
        CALL copy_text
        POP HL
        POP DE
        CALL string_settle
        POP HL
        JP result_descriptor

; "," start [ "," length ]: B = start from 0, C = length, 255 without.
mid_range:
        CALL expect
        DEFB ","
        CALL eval_byte
        OR A
        JP Z,illegal_call
        DEC A
        LD B,A
        LD C,255
        LD A,(HL)
        CP ","
        RET NZ
        INC HL
        PUSH BC
        CALL eval_byte
        POP BC
        LD C,A
        RET

; INSTR([start,] text, what)
fn_instr:
        CALL arg_open
        CALL evaluate
        LD A,1
        BIT 7,B
        JR NZ,_start
        CALL value_to_byte
        OR A
        JP Z,illegal_call
        PUSH AF
        CALL expect
        DEFB ","
        CALL evaluate
        POP AF
        BIT 7,B
        JP Z,type_mismatch
_start: PUSH DE
        PUSH AF
        CALL expect
        DEFB ","
        CALL evaluate
        BIT 7,B
        JP Z,type_mismatch
        CALL arg_close
        CALL temp_free
        POP AF
        EX (SP),HL              ; HL text, DE what, A start
        EX DE,HL                ; DE text, HL what
        LD B,A
        CALL temp_free
        LD A,(DE)
        SUB B
        INC A
        LD C,A                  ; C = characters left
        JR C,_missing
        LD A,(HL)               ; length wanted
        OR A
        JR Z,_found
        PUSH AF
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        EX DE,HL
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        LD A,B
        DEC A
        ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  POP AF                  ; HL text from the place, DE what, A its length
_try:   CP C
        JR Z,_fits
        JR NC,_missing
_fits:  PUSH BC
        PUSH DE
        PUSH HL
        LD B,A
        LD C,A
_same:  LD A,(DE)
        CP (HL)
        JR NZ,_unlike
        INC DE
        INC HL
        DJNZ _same
        POP HL
        POP DE
        POP BC
_found: LD E,B
        LD D,0
        POP HL
        JP result_integer
_unlike:
        LD A,C
        POP HL
        POP DE
        POP BC
        INC HL
        INC B
        DEC C
        JR NZ,_try
_missing:
        POP HL
        LD DE,0
        JP result_integer

; INPUT$(n): so many keys
fn_input:
        CALL arg_byte
        PUSH HL
        CALL string_new
        OR A
        JR Z,_end
        LD B,A
_key:   PUSH BC
        PUSH DE
        PUSH HL
        CALL key_wait
        POP HL
        POP DE
        POP BC
        CP 3
        JR Z,_stop
        LD (HL),A
        INC HL
        DJNZ _key
_end:   POP HL
        JP result_descriptor
_stop:  POP HL
        JP stop_here

; MID$(variable, start [, length]) = text: written over, the length stays.
do_mid: CALL arg_open
        CALL variable_ref
        CP KIND_STRING
        JP NZ,type_mismatch
        PUSH DE
        CALL mid_range
        CALL arg_close
        PUSH BC
        CALL expect
        DEFB TOK_EQUAL
        CALL eval_string
        LD A,B
        POP BC                  ; B start, C wanted
        CP C
        JR NC,_wanted
        LD C,A
_wanted:
        EX (SP),HL              ; HL target; the text pointer on the stack
        LD A,(HL)
        SUB B
        JR C,_done
        JR Z,_done
        CP C
        JR NC,_inside
        LD C,A
_inside:
        INC HL
        LD A,(HL)
        INC HL
        LD H,(HL)
        ADD A,B
        LD L,A
        JR NC,_page
        INC H
_page:  EX DE,HL
        LD A,C
        CALL copy_text
_done:  POP HL
        RET

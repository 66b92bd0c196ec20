; Z80 instructions as text, and text as instructions, by the same tables.
;
; A table holds one entry for opcodes that read alike: mask, value under the mask, template. In a template
; capital letters and signs stand for themselves, small letters for what the opcode or its operands decide
; (dis_lists, dis_specials); bit 7 marks its last character. The disassembler runs the template that fits the
; opcode and writes what comes of it. The assembler runs the templates of all opcodes and compares what comes of
; them with the text; at an operand it reads a number there instead of writing one. So whatever is written can be
; read back. LD HL,(nn) and LD (nn),HL exist twice: the assembler takes the short one.
;
;   disassemble      DE address -> dis_text (ended by 0), A bytes
;   assemble         dis_text, DE address -> dis_code, A bytes; carry: no such instruction
;   dis_hex          HL text -> DE number, HL behind it, C digits, Z: none there (keeps B)
;   dis_digit        A character -> A 0-15; carry: no hexadecimal digit
; All use AF BC DE HL. The memory is read by monitor_read (DE -> A; keeps BC DE HL).
; Numbers are hexadecimal. One that begins with a letter is written with all its digits, so that no register is
; taken for a number.

disassemble:
        LD (dis_origin),DE
        LD HL,dis_code
        LD B,4
_copy:  CALL monitor_read
        LD (HL),A
        INC HL
        INC DE
        DJNZ _copy
        XOR A
        LD (dis_matching),A
        LD (dis_index),A
        LD HL,dis_code
        LD A,(HL)
        LD C,"X"
        CP 0DDh
        JR Z,_index
        INC C                   ; "Y"
        CP 0FDh
        JR NZ,_group
_index: LD A,C
        LD (dis_index),A
        INC HL
_group: LD A,(dis_index)
        LD B,A
        LD A,(HL)
        INC HL
        LD C,2
        CP 0EDh
        JR Z,_ed
        DEC C
        CP 0CBh
        JR Z,_cb
        DEC C
        JR _opcode
_ed:    INC B                   ; not after DD or FD
        DJNZ _none
        JR _second
_cb:    INC B
        DJNZ _displaced         ; the displacement stands before the opcode
        JR _second
_displaced:
        INC HL
_second:
        LD A,(HL)
        INC HL
_opcode:
        LD (dis_next),HL
        LD (dis_opcode),A
        LD B,A
        LD A,C
        LD (dis_group),A
        CALL dis_table
_entry: LD A,(HL)
        OR A
        JR Z,_none
        AND B
        INC HL
        CP (HL)
        INC HL
        JR Z,_found
        CALL dis_skip
        JR _entry
_found: CALL dis_attempt
        JR NC,_end
_none:  XOR A
        LD (dis_index),A
        LD HL,dis_code
        LD (dis_next),HL
        LD HL,dis_defb
        CALL dis_attempt
_end:   LD HL,(dis_place)
        LD (HL),0
dis_length:
        LD A,(dis_next)
        SUB dis_code AND 0FFh   ; dis_code lies within a page, so carry is clear
        RET

assemble:
        LD (dis_origin),DE
        LD A,1
        LD (dis_matching),A
        LD HL,dis_code
        LD (dis_next),HL
        XOR A
        LD (dis_index),A
        LD HL,dis_defb
        CALL dis_attempt
        CALL NC,dis_at_end
        JR NC,dis_length
        LD HL,dis_ways
_way:   LD A,(HL)
        INC HL
        CP 0FFh
        CCF
        RET Z
        LD (dis_index),A
        LD A,(HL)
        INC HL
        LD (dis_group),A
        PUSH HL
        CALL dis_table
_entry: LD A,(HL)
        OR A
        JR Z,_next_way
        LD B,A                  ; B mask
        INC HL
        LD C,(HL)               ; C value
        INC HL
        LD A,(HL)
        AND 07Fh
        CP "a"
        JR NC,_try              ; begins with a field
        LD DE,dis_text
        EX DE,HL
        CP (HL)
        EX DE,HL
        JR NZ,_over
_try:   LD A,C
_opcode:
        LD (dis_opcode),A
        PUSH HL
        PUSH BC
        PUSH HL
        CALL dis_begin
        POP HL
        CALL dis_attempt
        CALL NC,dis_at_end
        POP BC
        POP HL
        JR NC,_found
        LD A,(dis_opcode)       ; the next opcode of this entry
        OR B
        INC A
        LD E,A
        LD A,B
        CPL
        AND E
        OR C
        CP C
        JR NZ,_opcode
_over:  CALL dis_skip
        JR _entry
_next_way:
        POP HL
        JR _way
_found: POP HL
        JR dis_length

; Carry unless the text ends here.
dis_at_end:
        LD HL,(dis_place)
        LD A,(HL)
        CP 1
        CCF
        RET

; dis_code up to the opcode, as index and group want it.
dis_begin:
        LD HL,dis_code
        LD A,(dis_index)
        OR A
        LD E,A
        JR Z,_group
        LD (HL),0DDh
        CP "X"
        JR Z,_prefix
        LD (HL),0FDh
_prefix:
        INC HL
_group: LD A,(dis_group)
        OR A
        JR Z,_opcode
        LD (HL),0CBh
        DEC A
        JR Z,_cb
        LD (HL),0EDh
        LD E,A                  ; 1: but nothing is displaced
        INC HL
        JR _opcode
_cb:    INC HL
        LD A,E
        OR A
        JR Z,_opcode
        INC HL
_opcode:
        LD A,(dis_opcode)
        LD (HL),A
        INC HL
        LD (dis_next),HL
        RET

; HL = the table of group A.
dis_table:
        LD HL,dis_main
        OR A
        RET Z
        LD HL,dis_cb
        DEC A
        RET Z
        LD HL,dis_ed
        RET

; HL moves behind a string. Keeps all else.
dis_skip:
        BIT 7,(HL)
        INC HL
        JR Z,dis_skip
        RET

; Runs the template at HL from the beginning of dis_text. Carry: it does not go.
dis_attempt:
        LD (dis_stack),SP
        XOR A
        LD (dis_used),A
        LD DE,dis_text
        LD (dis_place),DE
        CALL dis_run
        LD A,(dis_index)
        OR A
        RET Z
        LD A,(dis_used)         ; DD and FD stand before instructions with HL only
        CP 1
        RET
dis_fail:
        LD SP,(dis_stack)
        SCF
        RET

dis_run:
        LD A,(HL)
        PUSH HL
        AND 07Fh
        CALL dis_item
        POP HL
        BIT 7,(HL)
        INC HL
        JR Z,dis_run
        RET
dis_item:
        SUB "a"
        JR C,_literal
        ADD A,A
        LD E,A
        LD D,0
        CP 9 * 2
        JR NC,_special
        LD HL,dis_lists
        ADD HL,DE
        ADD HL,DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        INC HL
        LD B,(HL)
        INC HL
        LD C,(HL)
        LD A,(dis_opcode)
_rotate:
        RRCA
        DJNZ _rotate
        AND C
        EX DE,HL
        JR Z,dis_run
        LD B,A
_before:
        CALL dis_skip
        DJNZ _before
        JR dis_run
_special:
        LD HL,dis_specials - 9 * 2
        ADD HL,DE
        LD A,(HL)
        INC HL
        LD H,(HL)
        LD L,A
        JP (HL)
_literal:
        ADD A,"a"
; The character A: written, or expected. Keeps B, DE.
dis_put:
        LD HL,(dis_place)
        LD C,A
        LD A,(dis_matching)
        OR A
        LD A,C
        JR NZ,_match
        LD (HL),A
_on:    INC HL
        LD (dis_place),HL
        RET
_match: CP (HL)
        JR Z,_on
        JR dis_fail

; HL, or the index register in its place.
dis_hl: LD A,(dis_index)
        OR A
        JR NZ,_index
        LD A,"H"
        CALL dis_put
        LD A,"L"
        JR dis_put
_index: LD (dis_used),A
        PUSH AF
        LD A,"I"
        CALL dis_put
        POP AF
        JR dis_put

; H or L; half of an index register unless the instruction has an operand in memory.
dis_h:  LD A,"H"
        JR dis_half
dis_l:  LD A,"L"
dis_half:
        PUSH AF
        LD A,(dis_group)
        OR A
        JR NZ,_plain
        LD A,(dis_index)
        OR A
        JR Z,_plain
        LD A,(dis_opcode)
        LD B,A
        AND 0C0h
        CP 040h
        JR NZ,_index
        LD A,B
        AND 007h
        CP 006h
        JR Z,_plain
        LD A,B
        AND 038h
        CP 030h
        JR Z,_plain
_index: CALL dis_hl
_plain: POP AF
        JR dis_put

; (HL) or (IX+d).
dis_memory:
        LD A,(dis_group)
        CP 2
        JP Z,dis_fail           ; input to and output from no register
        LD A,"("
        CALL dis_put
        CALL dis_hl
        LD A,(dis_index)
        OR A
        JR Z,dis_close
        LD A,(dis_group)
        OR A
        LD HL,dis_code + 2
        JR NZ,_place
        LD HL,(dis_next)
        INC HL
        LD (dis_next),HL
        DEC HL
_place: LD A,(dis_matching)
        OR A
        JR NZ,_match
        LD A,(HL)
        LD E,A
        LD A,"+"
        BIT 7,E
        JR Z,_sign
        XOR A
        SUB E
        LD E,A
        LD A,"-"
_sign:  CALL dis_put
        LD A,E
        CALL dis_hex_2
        JR dis_close
_match: PUSH HL
        LD HL,(dis_place)
        LD A,(HL)
        LD E,0
        CP ")"
        JR Z,_store             ; (IX) is (IX+00)
        CP "+"
        JR Z,_read
        CP "-"
        JP NZ,dis_fail
_read:  PUSH AF
        INC HL
        LD (dis_place),HL
        CALL dis_number_byte
        POP AF
        CP "-"
        LD A,E
        JR Z,_minus
        OR A
        JP M,dis_fail
        JR _store
_minus: CP 081h
        JP NC,dis_fail
        XOR A
        SUB E
        LD E,A
_store: POP HL
        LD (HL),E
dis_close:
        LD A,")"
        JP dis_put

dis_byte:
        LD A,(dis_matching)
        OR A
        JR NZ,_match
        CALL dis_take
        JR dis_hex_2
_match: CALL dis_number_byte
        LD A,E
; The next byte of the instruction becomes A.
dis_give:
        LD HL,(dis_next)
        LD (HL),A
        JR dis_take
; A = the next byte of the instruction.
dis_take:
        LD HL,(dis_next)
        LD A,(HL)
        INC HL
        LD (dis_next),HL
        RET

dis_word:
        LD A,(dis_matching)
        OR A
        JR NZ,dis_word_match
        CALL dis_take
        LD E,A
        CALL dis_take
        LD D,A
dis_hex_4:
        LD A,D
        CALL dis_hex_2
        LD A,E
dis_hex_2:
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
        JP dis_put
dis_word_match:
        LD B,4
        CALL dis_number
        LD A,E
        CALL dis_give
        LD A,D
        JR dis_give

; The target of a relative jump.
dis_relative:
        LD A,(dis_matching)
        OR A
        LD HL,(dis_origin)
        INC HL
        INC HL
        JR NZ,_match
        PUSH HL
        CALL dis_take
        LD E,A
        RLCA
        SBC A,A
        LD D,A
        POP HL
        ADD HL,DE
        EX DE,HL
        JR dis_hex_4
_match: PUSH HL
        LD B,4
        CALL dis_number
        EX DE,HL
        POP DE
        OR A
        SBC HL,DE
        LD A,L
        RLCA
        SBC A,A
        CP H                    ; the sign of the low byte all through the high one
        JP NZ,dis_fail
        LD A,L
        JR dis_give

dis_restart:
        LD A,(dis_opcode)
        AND 038h
        LD E,A
        LD A,(dis_matching)
        OR A
        LD A,E
        JR Z,dis_hex_2
        PUSH AF
        CALL dis_number_byte
        POP AF
        CP E
        RET Z
        JP dis_fail

; DE = the number at dis_place, which moves behind it; B digits if it begins with a letter. The first: E only.
dis_number_byte:
        LD B,2
        CALL dis_number
        INC D
        DEC D
        RET Z
        JP dis_fail
dis_number:
        LD HL,(dis_place)
        LD A,(HL)
        CP "A"
        SBC A,A
        LD C,A                  ; FFh: begins with a figure
        PUSH BC
        CALL dis_hex
        LD A,(HL)
        CP "H"                  ; as others write it
        JR NZ,_bare
        INC HL
_bare:  LD (dis_place),HL
        LD A,C
        POP BC
        OR A
        JP Z,dis_fail
        INC C
        RET Z
        CP B
        RET Z
        JP dis_fail

; DE = the hexadecimal number at HL, which moves behind it; C its digits, Z when there are none.
dis_hex:
        LD C,0
        LD DE,0
_digit: LD A,(HL)
        CALL dis_digit
        JR C,_end
        INC C
        INC HL
        EX DE,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        OR L
        LD L,A
        EX DE,HL
        JR _digit
_end:   INC C
        DEC C
        RET

dis_digit:
        CP "a"
        JR C,_upper
        SUB "a" - "A"
_upper: SUB "0"
        RET C
        CP 10
        CCF
        RET NC
        SUB "A" - "0"
        RET C
        ADD A,10
        CP 16
        CCF
        RET

; Index register, group (0 none, 1 CB, 2 ED).
dis_ways:
        DEFB 0,0,0,1,0,2,"X",0,"X",1,"Y",0,"Y",1,0FFh

; The fields a-i: names, rotations of the opcode to the right (8: none), mask.
dis_lists:
        DEFW dis_registers
        DEFB 3,7                ; a
        DEFW dis_registers
        DEFB 8,7                ; b
        DEFW dis_pairs_sp
        DEFB 4,3                ; c
        DEFW dis_pairs_af
        DEFB 4,3                ; d
        DEFW dis_conditions
        DEFB 3,7                ; e
        DEFW dis_conditions
        DEFB 3,3                ; f
        DEFW dis_arithmetic
        DEFB 3,7                ; g
        DEFW dis_shifts
        DEFB 3,7                ; h
        DEFW dis_bits
        DEFB 3,7                ; i
; The fields j-q.
dis_specials:
        DEFW dis_hl             ; j
        DEFW dis_h              ; k
        DEFW dis_l              ; l
        DEFW dis_memory         ; m
        DEFW dis_byte           ; n
        DEFW dis_relative       ; o
        DEFW dis_restart        ; p
        DEFW dis_word           ; q

dis_registers:
        DEFB "B"+80h,"C"+80h,"D"+80h,"E"+80h,"k"+80h,"l"+80h,"m"+80h,"A"+80h
dis_pairs_sp:
        DEFB "B","C"+80h,"D","E"+80h,"j"+80h,"S","P"+80h
dis_pairs_af:
        DEFB "B","C"+80h,"D","E"+80h,"j"+80h,"A","F"+80h
dis_conditions:
        DEFB "N","Z"+80h,"Z"+80h,"N","C"+80h,"C"+80h,"P","O"+80h,"P","E"+80h,"P"+80h,"M"+80h
dis_arithmetic:
        DEFB "ADD A",","+80h,"ADC A",","+80h,"SUB"," "+80h,"SBC A",","+80h
        DEFB "AND"," "+80h,"XOR"," "+80h,"OR"," "+80h,"CP"," "+80h
dis_shifts:
        DEFB "RL","C"+80h,"RR","C"+80h,"R","L"+80h,"R","R"+80h,"SL","A"+80h,"SR","A"+80h,"SL","L"+80h,"SR","L"+80h
dis_bits:
        DEFB "0"+80h,"1"+80h,"2"+80h,"3"+80h,"4"+80h,"5"+80h,"6"+80h,"7"+80h
dis_defb:
        DEFB "DEFB ","n"+80h

dis_main:
        DEFB 0FFh,000h,"NO","P"+80h
        DEFB 0FFh,076h,"HAL","T"+80h
        DEFB 0C0h,040h,"LD a,","b"+80h
        DEFB 0C0h,080h,"g","b"+80h
        DEFB 0C7h,0C6h,"g","n"+80h
        DEFB 0C7h,006h,"LD a,","n"+80h
        DEFB 0CFh,001h,"LD c,","q"+80h
        DEFB 0FFh,00Ah,"LD A,(BC",")"+80h
        DEFB 0FFh,01Ah,"LD A,(DE",")"+80h
        DEFB 0FFh,002h,"LD (BC),","A"+80h
        DEFB 0FFh,012h,"LD (DE),","A"+80h
        DEFB 0FFh,03Ah,"LD A,(q",")"+80h
        DEFB 0FFh,032h,"LD (q),","A"+80h
        DEFB 0FFh,02Ah,"LD j,(q",")"+80h
        DEFB 0FFh,022h,"LD (q),","j"+80h
        DEFB 0FFh,0F9h,"LD SP,","j"+80h
        DEFB 0CFh,003h,"INC ","c"+80h
        DEFB 0CFh,00Bh,"DEC ","c"+80h
        DEFB 0C7h,004h,"INC ","a"+80h
        DEFB 0C7h,005h,"DEC ","a"+80h
        DEFB 0CFh,009h,"ADD j,","c"+80h
        DEFB 0FFh,007h,"RLC","A"+80h
        DEFB 0FFh,00Fh,"RRC","A"+80h
        DEFB 0FFh,017h,"RL","A"+80h
        DEFB 0FFh,01Fh,"RR","A"+80h
        DEFB 0FFh,027h,"DA","A"+80h
        DEFB 0FFh,02Fh,"CP","L"+80h
        DEFB 0FFh,037h,"SC","F"+80h
        DEFB 0FFh,03Fh,"CC","F"+80h
        DEFB 0FFh,008h,"EX AF,AF","'"+80h
        DEFB 0FFh,0EBh,"EX DE,H","L"+80h
        DEFB 0FFh,0E3h,"EX (SP),","j"+80h
        DEFB 0FFh,0D9h,"EX","X"+80h
        DEFB 0FFh,010h,"DJNZ ","o"+80h
        DEFB 0FFh,018h,"JR ","o"+80h
        DEFB 0E7h,020h,"JR f,","o"+80h
        DEFB 0FFh,0C3h,"JP ","q"+80h
        DEFB 0FFh,0E9h,"JP (j",")"+80h
        DEFB 0C7h,0C2h,"JP e,","q"+80h
        DEFB 0FFh,0CDh,"CALL ","q"+80h
        DEFB 0C7h,0C4h,"CALL e,","q"+80h
        DEFB 0FFh,0C9h,"RE","T"+80h
        DEFB 0C7h,0C0h,"RET ","e"+80h
        DEFB 0C7h,0C7h,"RST ","p"+80h
        DEFB 0CFh,0C1h,"POP ","d"+80h
        DEFB 0CFh,0C5h,"PUSH ","d"+80h
        DEFB 0FFh,0D3h,"OUT (n),","A"+80h
        DEFB 0FFh,0DBh,"IN A,(n",")"+80h
        DEFB 0FFh,0F3h,"D","I"+80h
        DEFB 0FFh,0FBh,"E","I"+80h
        DEFB 0
dis_cb:
        DEFB 0C0h,000h,"h ","b"+80h
        DEFB 0C0h,040h,"BIT i,","b"+80h
        DEFB 0C0h,080h,"RES i,","b"+80h
        DEFB 0C0h,0C0h,"SET i,","b"+80h
        DEFB 0
dis_ed:
        DEFB 0C7h,040h,"IN a,(C",")"+80h
        DEFB 0C7h,041h,"OUT (C),","a"+80h
        DEFB 0CFh,042h,"SBC j,","c"+80h
        DEFB 0CFh,04Ah,"ADC j,","c"+80h
        DEFB 0CFh,043h,"LD (q),","c"+80h
        DEFB 0CFh,04Bh,"LD c,(q",")"+80h
        DEFB 0FFh,044h,"NE","G"+80h
        DEFB 0FFh,045h,"RET","N"+80h
        DEFB 0FFh,04Dh,"RET","I"+80h
        DEFB 0FFh,046h,"IM ","0"+80h
        DEFB 0FFh,056h,"IM ","1"+80h
        DEFB 0FFh,05Eh,"IM ","2"+80h
        DEFB 0FFh,047h,"LD I,","A"+80h
        DEFB 0FFh,04Fh,"LD R,","A"+80h
        DEFB 0FFh,057h,"LD A,","I"+80h
        DEFB 0FFh,05Fh,"LD A,","R"+80h
        DEFB 0FFh,067h,"RR","D"+80h
        DEFB 0FFh,06Fh,"RL","D"+80h
        DEFB 0FFh,0A0h,"LD","I"+80h
        DEFB 0FFh,0A1h,"CP","I"+80h
        DEFB 0FFh,0A2h,"IN","I"+80h
        DEFB 0FFh,0A3h,"OUT","I"+80h
        DEFB 0FFh,0A8h,"LD","D"+80h
        DEFB 0FFh,0A9h,"CP","D"+80h
        DEFB 0FFh,0AAh,"IN","D"+80h
        DEFB 0FFh,0ABh,"OUT","D"+80h
        DEFB 0FFh,0B0h,"LDI","R"+80h
        DEFB 0FFh,0B1h,"CPI","R"+80h
        DEFB 0FFh,0B2h,"INI","R"+80h
        DEFB 0FFh,0B3h,"OTI","R"+80h
        DEFB 0FFh,0B8h,"LDD","R"+80h
        DEFB 0FFh,0B9h,"CPD","R"+80h
        DEFB 0FFh,0BAh,"IND","R"+80h
        DEFB 0FFh,0BBh,"OTD","R"+80h
        DEFB 0

; Statements of sound, above 6000h: BEEP, SOUND, PLAY. Notes wait in a queue a channel and are played by the
; 1/600 s clock (sound_tick in devices.asm) while the program goes on.
;
;   do_beep     BEEP: a short one; BEEP 1: on; BEEP 0: off
;   do_sound    SOUND channel,frequency[,length]: channel 1-3; 61 to 65535 Hz, 0: silence; length in 1/60 s, else
;               until something else is said
;   do_play     PLAY [a$][,[b$][,c$]]: one melody a channel; PLAY alone: silence
;
; Melodies: A-G, # or + or - behind them, a length, dots; R rest; Nn note by number (1: C of octave 1); On, < and >
; octave; Ln length of notes without one; Tn tempo in quarters a minute. V, S, M and their numbers say nothing here.

PLAY_LOWEST     EQU 12          ; first note of octave 2 by number; what is lower is played an octave higher

do_beep:
        JR NZ,_given
        CALL sound_beep
        JP this_char
_given: CALL eval_byte
        OR A
        LD A,BEEP
        JR NZ,_on
        CALL system_clear
        JP this_char
_on:    CALL system_set
        XOR A
        LD (beep_left),A
        JP this_char

do_sound:
        CALL eval_byte
        DEC A
        CP 3
        JP NC,illegal_call
        PUSH AF
        CALL expect
        DEFB ","
        CALL eval_word
        POP AF
        LD C,A
        PUSH BC
        PUSH DE
        CALL gfx_more           ; the length: E, or none
        LD A,E
        JR NC,_length
        XOR A
_length:
        POP DE
        POP BC
        PUSH HL
        PUSH AF
        LD A,D
        OR E
        JR Z,_silence
        LD A,D
        OR A
        JR NZ,_audible
        LD A,E
        CP 61
        JP C,illegal_call
_audible:
        PUSH BC
        CALL sound_divide
        POP BC
_silence:
        POP AF
        LD L,A                  ; length * 10
        LD H,0
        ADD HL,HL
        PUSH DE
        LD D,H
        LD E,L
        ADD HL,HL
        ADD HL,HL
        ADD HL,DE
        POP DE
        LD A,C
        LD (sound_channel),A
        LD B,H
        LD C,L
        PUSH DE
        PUSH BC                 ; ticks
        LD B,PLAY_LEFT
        CALL play_field
        POP BC
        POP DE
        DI
        LD (HL),C
        INC HL
        LD (HL),B
        INC HL
        LD A,(HL)
        INC HL
        LD (HL),A               ; nothing waits
        LD A,(sound_channel)
        LD C,A
        CALL tone_set
        EI
        CALL clock_on
        POP HL
        JP this_char

; DE = 3993600 / DE, rounded down.
sound_divide:
        PUSH DE
        POP IX
        LD DE,03CF0h            ; dividend D:E:C = 3CF000h, then the quotient; remainder HL
        LD C,0
        LD H,C
        LD L,C
        LD B,24
_bit:   SLA C
        RL E
        RL D
        ADC HL,HL
        PUSH DE
        PUSH IX
        POP DE
        JR C,_take
        OR A
        SBC HL,DE
        JR NC,_one
        ADD HL,DE
        POP DE
        JR _next
_take:  OR A
        SBC HL,DE
_one:   POP DE
        INC C
_next:  DJNZ _bit
        LD D,E                  ; quotient: the low 16 bits
        LD E,C
        RET

; ---- PLAY

do_play:
        JR NZ,_melodies
        CALL sound_stop
        JP this_char
_melodies:
        LD A,1
        LD (play_hold),A        ; silent channels begin together
        XOR A
_channel:
        LD (sound_channel),A
        CALL this_char
        JR Z,_end
        CP ","
        JR Z,_next
        LD A,(sound_channel)
        CP 3
        JP NC,illegal_call
        CALL eval_string
        PUSH HL
        LD (mml_text),DE
        LD A,B
        LD (mml_left),A
        CALL play_melody
        POP HL
        CALL this_char
        JR Z,_end
        CP ","
        LD E,ERR_SYNTAX
        JP NZ,error
_next:  CALL next_char
        LD A,(sound_channel)
        INC A
        JR _channel
_end:   XOR A
        LD (play_hold),A
        CALL clock_on
        JP this_char

; The melody (mml_text), (mml_left) for (sound_channel).
play_melody:
        CALL mml_char
        RET C
        LD HL,play_melody
        PUSH HL
        CP "<"
        JR Z,_lower
        CP TOK_LESS
        JR Z,_lower
        CP ">"
        JR Z,_higher
        CP TOK_GREATER
        JR Z,_higher
        CP "O"
        JR Z,_octave
        CP "L"
        JR Z,_length
        CP "T"
        JR Z,_tempo
        CP "N"
        JR Z,_number
        CP "R"
        JP Z,_rest
        CP "P"
        JR Z,_rest
        CP "V"
        JP Z,mml_number
        CP "S"
        JP Z,mml_number
        CP "M"
        JP Z,mml_number
        SUB "A"
        CP 7
        JR C,_note
_bad:   XOR A
        LD (play_hold),A
        JP illegal_call
_lower: LD B,PLAY_OCTAVE
        CALL play_field
        DEC (HL)
        JR Z,_bad
        RET
_higher:
        LD B,PLAY_OCTAVE
        CALL play_field
        INC (HL)
        LD A,(HL)
        CP 9
        JR NC,_bad
        RET
_octave:
        CALL mml_number
        JR C,_bad
        DEC A
        CP 8
        JR NC,_bad
        LD B,PLAY_OCTAVE
        CALL play_field
        LD (HL),E
        RET
_length:
        CALL mml_number
        JR C,_bad
        DEC A
        CP 64
        JR NC,_bad
        LD B,PLAY_LENGTH
        CALL play_field
        LD (HL),E
        RET
_tempo: CALL mml_number
        JR C,_bad
        CP 32
        JR C,_bad
        LD B,PLAY_TEMPO
        CALL play_field
        LD (HL),E
        RET
_number:
        CALL mml_number
        JR C,_bad
        CP 97
        JR NC,_bad
        PUSH AF
        LD B,PLAY_LENGTH
        CALL play_field
        LD A,(HL)
        CALL play_time
        POP AF
        OR A
        JR Z,_silent
        DEC A
        JR _tone
_rest:  CALL play_length
_silent:
        LD BC,0
        JP play_put
_note:  LD HL,_scale
        LD E,A
        LD D,0
        ADD HL,DE
        LD C,(HL)
        LD B,PLAY_OCTAVE
        CALL play_field
        LD B,(HL)
        LD A,C
_up:    DEC B                   ; 12 notes an octave
        JR Z,_known
        ADD A,12
        JR _up
_known: LD C,A
        CALL mml_char
        JR C,_natural
        CP "#"
        JR Z,_sharp
        CP "+"
        JR Z,_sharp
        CP TOK_PLUS
        JR Z,_sharp
        CP "-"
        JR Z,_flat
        CP TOK_MINUS
        JR Z,_flat
        CALL mml_back
        JR _natural
_sharp: INC C
        JR _natural
_flat:  DEC C
_natural:
        PUSH BC
        CALL play_length
        POP BC
        LD A,C
; Note A (0: C of octave 1) for DE ticks.
_tone:  CP 96
        JR C,_in
        LD A,95                 ; flat of the lowest, sharp of the highest
_in:    PUSH DE
        LD B,0
_down:  INC B
        SUB 12
        JR NC,_down
        ADD A,12                ; note of the octave, B octave
        LD E,A
        LD D,0
        LD HL,_divisors
        ADD HL,DE
        ADD HL,DE
        LD E,(HL)
        INC HL
        LD D,(HL)
        DEC B
        JR Z,_set               ; octave 1 sounds as octave 2
_halve: DEC B
        JR Z,_set
        SRL D
        RR E
        JR _halve
_set:   LD B,D
        LD C,E
        POP DE
        JP play_put
_scale: DEFB 9,11,0,2,4,5,7     ; A to G
_divisors:                      ; of octave 2, equal temperament, A of octave 4 = 440 Hz
        DEFW 61058,57631,54397,51344,48462,45742
        DEFW 43175,40751,38464,36305,34268,32344

; HL = field B of the channel's record. Keeps BC, DE.
play_field:
        PUSH BC
        LD A,(sound_channel)
        LD C,A
        CALL play_record
        POP BC
        LD A,B
        ADD A,L
        LD L,A
        RET NC
        INC H
        RET

; DE = ticks of a length read here, or of the channel's own; with dots.
play_length:
        CALL mml_number
        JR NC,_given
        LD B,PLAY_LENGTH
        CALL play_field
        LD E,(HL)
_given: LD A,E
        DEC A
        CP 64
        JP NC,illegal_call
        LD A,E
        CALL play_time
        LD B,D
        LD C,E                  ; half of it for the first dot, half of that for the next
_dot:   CALL mml_char
        RET C
        CP "."
        JR NZ,mml_back
        SRL B
        RR C
        EX DE,HL
        ADD HL,BC
        EX DE,HL
        JR _dot

; DE = ticks of a 1/A note at the channel's tempo: 144000 / tempo / A.
play_time:
        PUSH AF
        LD B,PLAY_TEMPO
        CALL play_field
        LD A,(HL)
        LD HL,36000
        CALL play_divide
        ADD HL,HL
        ADD HL,HL
        POP AF
        CALL play_divide
        EX DE,HL
        RET
; HL = HL / A.
play_divide:
        LD C,A
        XOR A
        LD B,16
_bit:   ADD HL,HL
        RLA
        JR C,_take
        CP C
        JR C,_next
_take:  SUB C
        INC L
_next:  DJNZ _bit
        RET

; The next character of the melody, in upper case, blanks left out; C at its end. Keeps BC, DE.
mml_char:
        LD A,(mml_left)
        SUB 1
        RET C
        LD (mml_left),A
        LD HL,(mml_text)
        LD A,(HL)
        INC HL
        LD (mml_text),HL
        CP " "
        JR Z,mml_char
        CP "a"
        CCF
        RET NC
        AND 0DFh
        RET
; The character read last is read again. Keeps BC, DE.
mml_back:
        LD HL,(mml_text)
        DEC HL
        LD (mml_text),HL
        LD HL,mml_left
        INC (HL)
        RET
; A and E = the number at hand, 0-255; C: there is none.
mml_number:
        LD E,0
        LD B,E
_digit: CALL mml_char
        JR C,_end
        SUB "0"
        CP 10
        JR NC,_back
        LD B,1
        LD C,A
        LD A,E
        CP 26
        JP NC,illegal_call
        ADD A,A
        ADD A,A
        ADD A,E
        ADD A,A
        ADD A,C
        JP C,illegal_call
        LD E,A
        JR _digit
_back:  CALL mml_back
_end:   LD A,B
        SUB 1                   ; C: no digit
        LD A,E
        RET

; A note of divisor BC (0: rest) and DE ticks into the channel's queue; waits for room.
play_put:
        LD A,D
        OR E
        RET Z
        PUSH BC
        LD B,PLAY_HEAD
        CALL play_field
        POP BC
_room:  LD A,(HL)
        ADD A,4
        INC HL
        CP (HL)
        DEC HL
        JR Z,_full
        PUSH HL
        PUSH BC
        LD C,(HL)
        LD A,(sound_channel)
        ADD A,PLAY_QUEUE / 256
        LD H,A
        LD L,C
        POP BC
        LD (HL),C
        INC L
        LD (HL),B
        INC L
        LD (HL),E
        INC L
        LD (HL),D
        INC L
        LD A,L
        POP HL
        LD (HL),A               ; now it counts
        RET
_full:  XOR A
        LD (play_hold),A
        CALL clock_on
        LD A,(stop_flag)
        OR A
        JR Z,_room
        RET

; ---- Programmable glyphs

;   do_pcg      PCG code,text$: code 80h-FFh gets a glyph of 8 bytes, told as 16 hexadecimal digits or as they are;
;               the screen shows it from then on. PCG ON, PCG OFF; PCG alone: the built-in glyphs again.
do_pcg: JR Z,_restore
        CP TOK_ON
        JR Z,_on
        CP TOK_OFF
        JR Z,_off
        CALL eval_byte
        SUB 080h
        JP C,illegal_call
        PUSH AF
        CALL expect
        DEFB ","
        CALL eval_string
        POP AF
        PUSH HL
        LD L,A                  ; HL = 8 * (code - 80h)
        LD H,0
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD A,B
        LD B,8
        CP 8
        JR Z,_raw
        CP 16
        JP NZ,illegal_call
_hex:   CALL _digit
        RLCA
        RLCA
        RLCA
        RLCA
        LD C,A
        CALL _digit
        OR C
        CALL _put
        DJNZ _hex
        JR _defined
_raw:   LD A,(DE)
        INC DE
        CALL _put
        DJNZ _raw
_defined:
        POP HL
        LD A,PCG_GLYPHS_ON
        OUT (PCG_SWITCH),A
        JP this_char
_on:    LD A,PCG_GLYPHS_ON
        JR _switch
_off:   XOR A
_switch:
        OUT (PCG_SWITCH),A
        JP next_char
_restore:
        PUSH HL
        LD HL,0
_byte:  LD A,PCG_WRITE + PCG_FROM_ROM
        CALL _write
        INC HL
        BIT 2,H
        JR Z,_byte
        POP HL
        JP this_char
; The glyph row A at HL, which moves on. Keeps BC, DE.
_put:   OUT (PCG_DATA),A
        LD A,PCG_WRITE
        CALL _write
        INC HL
        RET
; The control port also holds the gates that the melodies open and shut.
_write: PUSH BC
        LD B,A
        LD A,L
        DI
        OUT (PCG_ADDRESS),A
        LD A,(pcg_latch)
        OR B
        OR H
        OUT (PCG_CONTROL),A
        EI
        POP BC
        RET
; A = the hexadecimal digit at DE.
_digit: LD A,(DE)
        INC DE
        SUB "0"
        CP 10
        RET C
        AND 0DFh                ; small letters as large ones
        SUB 7
        CP 10
        JP C,illegal_call
        CP 16
        RET C
        JP illegal_call

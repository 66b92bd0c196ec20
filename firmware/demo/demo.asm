; The screen of the main ROM: characters, attributes, semigraphics, a picture, a figure that walks, and a
; place to type.

DEMO_CLOCK_ROW  EQU 1
DEMO_CLOCK_COL  EQU 62
COUNT_ROW       EQU 3
PCG_ROW         EQU 19          ; where the figure walks, and between which columns
PCG_FIRST       EQU 40
PCG_LAST        EQU 76
HINT_ROW        EQU 24
KANA_ROW        EQU 21
KANA_COL        EQU 66

demo_screen:
        CALL demo_background
        LD HL,demo_frames
        CALL screen_frames
        LD HL,2 * 256 + 1
        LD (screen_row),HL
        LD HL,demo_logo
        LD DE,demo_logo_colours
        CALL logo_show
        LD HL,demo_text
        CALL screen_list

        IN A,(STATUS)
        AND STATUS_STANDARD
        LD HL,text_high
        JR Z,_monitor
        LD HL,text_standard
_monitor:
        CALL screen_list
        LD A,(expansion_found)
        OR A
        LD HL,text_expansion
        JR NZ,_expansion
        LD HL,text_no_expansion
_expansion:
        CALL screen_list

        CALL demo_wave
        CALL screen_show

        CALL pcg_restore
        LD HL,pcg_figures
        LD A,CHAR_PCG
_glyph: PUSH AF
        CALL pcg_define         ; HL moves on to the next glyph
        POP AF
        INC A
        CP CHAR_PCG + 4
        JR NZ,_glyph
        LD A,1
        CALL pcg_show
        LD A,PCG_FIRST
        LD (walker_column),A
        LD A,1
        LD (walker_step),A

        LD HL,DEMO_CLOCK_COL * 256 + DEMO_CLOCK_ROW
        LD (calendar_row),HL
        LD A,0FFh
        LD (calendar_shown),A
        LD BC,22 * 256 + 3
        LD DE,2 * 256 + 74
        JP input_init

; Once a frame.
demo_frame:
        LD A,(frames)
        AND 7
        CALL Z,calendar_show
        LD A,(frames)
        AND 3
        CALL Z,demo_counters
        JR demo_walk

; The interrupts counted so far.
demo_counters:
        LD A,WHITE
        LD (screen_colour),A
        LD HL,60 * 256 + COUNT_ROW
        LD (screen_row),HL
        LD HL,(frames)
        CALL screen_number
        LD HL,73 * 256 + COUNT_ROW
        LD (screen_row),HL
        LD HL,(ticks)
        JP screen_number

; The figure takes a step: two glyphs for either of its two poses.
demo_walk:
        LD A,(frames)
        AND 7
        RET NZ
        LD D,PCG_ROW
        LD A,(walker_column)
        LD E,A
        CALL screen_address
        LD (HL)," "
        INC HL
        LD (HL)," "
        LD A,(walker_step)
        LD B,A
        LD A,(walker_column)
        ADD A,B
        LD (walker_column),A
        CP PCG_FIRST
        JR Z,_turn
        CP PCG_LAST
        JR NZ,_on
_turn:  LD A,B
        NEG
        LD (walker_step),A
_on:    LD A,(walker_column)
        LD E,A
        CALL screen_address
        LD A,E
        AND 1
        ADD A,A
        ADD A,CHAR_PCG
        LD (HL),A
        INC HL
        INC A
        LD (HL),A
        RET

; Semigraphics: a wave, 76 dots wide and 8 high, filled below.
demo_wave:
        LD A,GREEN + SEMIGRAPHIC
        LD (screen_colour),A
        LD HL,wave_heights
        LD DE,17 * 256 + 40
_cell:  LD A,(HL)
        INC HL
        CALL _dots
        LD B,A                  ; the left column, the top dot lowest
        LD A,(HL)
        INC HL
        CALL _dots
        LD C,A
        LD A,D
        LD (screen_row),A
        LD A,E
        LD (screen_column),A
        LD A,C                  ; upper four dots of each
        AND 00Fh
        RLCA
        RLCA
        RLCA
        RLCA
        PUSH DE
        LD D,A
        LD A,B
        AND 00Fh
        OR D
        POP DE
        CALL screen_character
        LD A,D
        INC A
        LD (screen_row),A
        LD A,E
        LD (screen_column),A
        LD A,B
        RRCA
        RRCA
        RRCA
        RRCA
        AND 00Fh
        LD B,A
        LD A,C
        AND 0F0h
        OR B
        CALL screen_character
        INC E
        LD A,E
        CP 40 + 38
        JR NZ,_cell
        RET
; A = 8 dots with the lowest A of them lit (they are the highest bits).
_dots:  OR A
        RET Z
        PUSH BC
        LD B,A
        XOR A
_dot:   SCF
        RRA
        DJNZ _dot
        POP BC
        RET

; Behind the title: lines of blue that thin out upwards, above a bright edge. Behind the black colour sample:
; something to see it by.
demo_background:
        LD HL,background_lines
_line:  LD A,(HL)
        CP 0FFh
        JR Z,_sample
        INC HL
        PUSH HL
        LD BC,0
        LD DE,639
        CALL graphics_span
        POP HL
        INC HL
        INC HL
        INC HL
        JR _line
_sample:
        LD A,17 * 8
_again: PUSH AF
        LD HL,pattern_sample
        LD BC,11 * 8
        LD DE,14 * 8 - 1
        CALL graphics_span
        POP AF
        INC A
        CP 18 * 8
        JR NZ,_again
        RET

; What the function keys do. In: A as input_key returns it.
demo_key:
        CP CTRL_F1
        JP Z,sound_play
        CP CTRL_F2
        JR Z,_ink
        CP CTRL_F3
        JR Z,_reverse
        CP CTRL_F4
        JR Z,_pcg
        CP CTRL_F5
        JR Z,_picture
        LD A,(key_kana)
        LD HL,text_latin
        OR A
        JR Z,_show
        LD HL,text_kana
_show:  CALL screen_list
        LD A,KANA_ROW
        JP screen_show_row
_ink:   LD A,(input_ink)
        ADD A,020h              ; the next colour; not black, which nobody could read
        JR NC,_visible
        LD A,BLUE
_visible:
        LD (input_ink),A
        LD (screen_colour),A
        LD HL,21 * 256 + HINT_ROW
        LD (screen_row),HL
        LD HL,text_ink
        CALL screen_list
        LD A,HINT_ROW
        JP screen_show_row
_reverse:
        LD A,(screen_reversed)
        XOR 1
        LD (screen_reversed),A
        OR CRTC_START
        OUT (CRTC_COMMAND),A
        RET
_pcg:   LD A,(pcg_shown)
        XOR 1
        JP pcg_show
_picture:
        XOR A
        JP expansion_call

; ---- What is shown

demo_frames:
        DEFB 5,1,35,9,CYAN
        DEFB T_INK,YELLOW," Characters ",T_END
        DEFB 5,39,38,9,CYAN
        DEFB T_INK,YELLOW," Graphics ",T_END
        DEFB 16,1,35,3,CYAN
        DEFB T_INK,YELLOW," Attributes ",T_END
        DEFB 16,39,38,3,CYAN
        DEFB T_INK,YELLOW," Semigraphics and PCG ",T_END
        DEFB 21,1,76,2,CYAN
        DEFB T_INK,YELLOW," Type here ",T_END
        DEFB 0FFh

demo_text:
        DEFB T_INK,WHITE,T_AT,1,25,"Demonstration ROM"
        DEFB T_INK,CYAN,T_AT,2,25,"Z80A 3.9936 MHz, RAM 64 KB, graphics 640 x 200 x 3"
        DEFB T_AT,COUNT_ROW,55,"VRTC",T_AT,COUNT_ROW,67,"clock"

        DEFB T_AT,6,2,T_INK,CYAN,"   0123456789ABCDEF0123456789ABCDEF"
        DEFB T_AT,7,2,"00 ",T_INK,WHITE,T_CODES,32,000h
        DEFB T_AT,8,2,T_INK,CYAN,"20 ",T_INK,WHITE,T_CODES,32,020h
        DEFB T_AT,9,2,T_INK,CYAN,"40 ",T_INK,WHITE,T_CODES,32,040h
        DEFB T_AT,10,2,T_INK,CYAN,"60 ",T_INK,WHITE,T_CODES,32,060h
        DEFB T_AT,11,2,T_INK,CYAN,"80 ",T_INK,WHITE,T_CODES,32,080h
        DEFB T_AT,12,2,T_INK,CYAN,"A0 ",T_INK,WHITE,T_CODES,32,0A0h
        DEFB T_AT,13,2,T_INK,CYAN,"C0 ",T_INK,WHITE,T_CODES,32,0C0h
        DEFB T_AT,14,2,T_INK,CYAN,"E0 ",T_INK,WHITE,T_CODES,32,0E0h

        DEFB T_AT,17,2,T_INK,WHITE," Colours"
        DEFB T_INK,BLACK," ",T_ATTR,ATTR_REVERSE," 0 ",T_INK,BLUE," 1 ",T_INK,RED," 2 "
        DEFB T_INK,MAGENTA," 3 ",T_INK,GREEN," 4 ",T_INK,CYAN," 5 ",T_INK,YELLOW," 6 "
        DEFB T_INK,WHITE," 7 ",T_ATTR,ATTR_NORMAL," "
        DEFB T_AT,18,3,T_ATTR,ATTR_REVERSE," reverse ",T_ATTR,ATTR_NORMAL,"  "
        DEFB T_ATTR,ATTR_BLINK,"blink",T_ATTR,ATTR_NORMAL,"  "
        DEFB T_ATTR,ATTR_UPPER,"upper",T_ATTR,ATTR_NORMAL,"  "
        DEFB T_ATTR,ATTR_UNDER,"under",T_ATTR,ATTR_NORMAL
        DEFB T_AT,19,4,"secret (",T_ATTR,ATTR_SECRET,"hidden",T_ATTR,ATTR_NORMAL,")   "
        DEFB T_ATTR,ATTR_UPPER + ATTR_UNDER,"both",T_ATTR,ATTR_NORMAL,"  "
        DEFB T_ATTR,ATTR_BLINK + ATTR_REVERSE," all ",T_ATTR,ATTR_NORMAL

        DEFB T_AT,PCG_ROW,39,T_INK,CYAN,CHAR_DOWN,T_INK,YELLOW,T_FILL,38," ",T_INK,CYAN,CHAR_DOWN
        DEFB T_AT,HINT_ROW,3,T_INK,WHITE," F1 ",T_INK,CYAN,"melody "
        DEFB T_AT,HINT_ROW,17,T_INK,WHITE," F2 ",T_INK,CYAN,"ink "
        DEFB T_AT,HINT_ROW,28,T_INK,WHITE," F3 ",T_INK,CYAN,"reverse "
        DEFB T_AT,HINT_ROW,43,T_INK,WHITE," F4 ",T_INK,CYAN,"PCG "
        DEFB T_AT,HINT_ROW,54,T_INK,WHITE," F5 ",T_INK,CYAN,"picture "
        DEFB T_END

text_high:
        DEFB T_AT,3,25,T_INK,CYAN,"24 kHz monitor",T_END
text_standard:
        DEFB T_AT,3,25,T_INK,CYAN,"15 kHz monitor",T_END
text_expansion:
        DEFB ", 4th ROM",T_END
text_no_expansion:
        DEFB T_AT,10,46,"No expansion ROM, no picture",T_END
text_latin:
        DEFB T_AT,KANA_ROW,KANA_COL,T_INK,CYAN,T_FILL,4,CHAR_ACROSS,T_END
text_kana:
        DEFB T_AT,KANA_ROW,KANA_COL,T_INK,WHITE," ",0B6h,0C5h," ",T_END

text_ink:
        DEFB "ink",T_END

demo_logo_colours:
        DEFB WHITE,YELLOW,RED
demo_logo:
        DEFB 11100000b,01110001b,11000111b,00000001b,11000000b
        DEFB 11100000b,11100001b,11000111b,00000001b,11000000b
        DEFB 11100001b,11000001b,11000111b,00000001b,11000000b
        DEFB 11100011b,10000001b,11000011b,10000011b,10000000b
        DEFB 11100111b,00000001b,11000011b,10000011b,10000000b
        DEFB 11111100b,00000001b,11000001b,11000111b,00000000b
        DEFB 11111100b,00000001b,11000001b,11000111b,00000000b
        DEFB 11100111b,00000001b,11000000b,11101110b,00000000b
        DEFB 11100011b,10000001b,11000000b,11101110b,00000000b
        DEFB 11100001b,11000001b,11000000b,01111100b,00000000b
        DEFB 11100000b,11100001b,11000000b,00111000b,00000000b
        DEFB 11100000b,01110001b,11000000b,00111000b,00000000b

; The height of each dot column.
wave_heights:
        DEFB 1,1,1,1,2,2,3,4,4,5,5,6,7,7,7,8,8,8,8
        DEFB 8,8,7,7,7,6,5,5,4,4,3,2,2,1,1,1,1,0,0
        DEFB 1,1,1,1,2,2,3,4,4,5,5,6,7,7,7,8,8,8,8
        DEFB 8,8,7,7,7,6,5,5,4,4,3,2,2,1,1,1,1,0,0

; Each line: its number, then the pattern of blue, red and green.
background_lines:
        DEFB 7,080h,000h,000h   ; between the rows of text, then below them
        DEFB 15,088h,000h,000h
        DEFB 23,0AAh,000h,000h
        DEFB 31,0EEh,000h,000h
        DEFB 33,0FFh,000h,000h
        DEFB 34,0FFh,000h,000h
        DEFB 35,0FFh,088h,000h
        DEFB 36,0FFh,0AAh,000h
        DEFB 37,0FFh,0FFh,000h
        DEFB 0FFh
pattern_sample:
        DEFB 0FFh,0AAh,000h

; Two poses of 16 x 8 dots, left half and right half.
pcg_figures:
        DEFB 00001000b
        DEFB 00011111b
        DEFB 00111001b
        DEFB 01111111b
        DEFB 01011111b
        DEFB 01010000b
        DEFB 00001100b
        DEFB 00000000b
        DEFB 00010000b
        DEFB 11111000b
        DEFB 10011100b
        DEFB 11111110b
        DEFB 11111010b
        DEFB 00001010b
        DEFB 00110000b
        DEFB 00000000b
        DEFB 00001000b
        DEFB 01011111b
        DEFB 01111001b
        DEFB 01111111b
        DEFB 00011111b
        DEFB 00001000b
        DEFB 00011000b
        DEFB 00000000b
        DEFB 00010000b
        DEFB 11111010b
        DEFB 10011110b
        DEFB 11111110b
        DEFB 11111000b
        DEFB 00010000b
        DEFB 00011000b
        DEFB 00000000b

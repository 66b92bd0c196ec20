; The keyboard: scanned at every vertical retrace, keys queued with the modifiers held, turned into characters
; when the program asks.
;
;   keyboard_init
;   key_poll        A = the next character, Z and A 0 when there is none
;   key_wait        A = the next character; waits for it, the cursor shown meanwhile
;   keys_reset      the function keys' texts of power-on
;   keys_show       draws the function-key line anew, if it is shown
;   key_text        A = key 0-9: HL = its text, KEY_TEXT bytes, ended by 0
;   stop_flag       1 once STOP was pressed; who sees it clears it
; All keep BC, DE; key_poll and key_wait keep HL as well.
; Function keys give the characters of their text, one after another. STOP gives 03h, too.

KEY_DELAY       EQU 24          ; frames until a held key repeats
KEY_RATE        EQU 3           ; frames from one repetition to the next
KEY_GRPH        EQU 8 * 8 + 4
KEY_KANA        EQU 8 * 8 + 5
KEY_SHIFT       EQU 8 * 8 + 6
KEY_CTRL        EQU 8 * 8 + 7
KEY_STOP        EQU 9 * 8
KEY_F1          EQU 9 * 8 + 1
KEY_F5          EQU 9 * 8 + 5

keyboard_init:
        LD HL,key_before
        LD B,KEY_ROWS
_row:   LD (HL),0FFh
        INC HL
        DJNZ _row
        LD A,0FFh
        LD (key_repeat),A
keys_reset:
        PUSH BC
        PUSH DE
        LD HL,keys_texts
        LD DE,key_texts
        LD BC,KEY_TEXT * KEY_TEXTS
        LDIR
        POP DE
        POP BC
        RET

; Called at every vertical retrace. Uses AF, BC, DE, HL.
keyboard_scan:
        IN A,(KEY_MODIFIERS)
        CPL
        LD (key_modifiers),A
        LD HL,key_before
        LD BC,KEY_ROWS * 256 + KEY_ROW
_row:   IN A,(C)
        CP (HL)
        CALL NZ,_changed
        INC HL
        INC C
        DJNZ _row

        LD A,(key_repeat)
        CP 0FFh
        RET Z
        LD C,A
        RRCA
        RRCA
        RRCA
        AND 01Fh
        LD E,A
        LD D,0
        LD HL,key_before
        ADD HL,DE
        LD A,C
        AND 7
        LD B,A
        INC B
        LD A,(HL)
_bit:   RRCA
        DJNZ _bit
        JR NC,_held
        LD A,0FFh
        LD (key_repeat),A
        RET
_held:  LD HL,key_repeat_left
        DEC (HL)
        RET NZ
        LD (HL),KEY_RATE
        JR key_queue_add        ; C the key

; Row C reads A: queues each key that was up at the last scan; the last one repeats. Keeps BC and HL.
_changed:
        LD E,(HL)
        LD (HL),A
        CPL
        AND E
        RET Z                   ; keys were only let go
        PUSH HL
        PUSH BC
        LD D,A
        LD A,C
        ADD A,A
        ADD A,A
        ADD A,A
        LD C,A                  ; the row's first key
        LD B,8
_key:   RR D
        CALL C,_down
        INC C
        DJNZ _key
        POP BC
        POP HL
        RET
_down:  LD A,C
        CP KEY_GRPH             ; GRPH, SHIFT and CTRL alone are no keys
        RET Z
        CP KEY_SHIFT
        RET Z
        CP KEY_CTRL
        RET Z
        CP KEY_STOP
        JR Z,_stop
        SUB KEY_F1
        CP KEY_F5 - KEY_F1 + 1
        CALL C,_caught
_queue: PUSH BC
        PUSH DE
        CALL key_queue_add
        POP DE
        POP BC
        LD A,C
        CP KEY_KANA             ; a switch, which does not repeat
        RET Z
        LD (key_repeat),A
        LD A,KEY_DELAY
        LD (key_repeat_left),A
        RET
_stop:  LD A,1
        LD (stop_flag),A
        LD A,(key_head)         ; what was typed ahead is not wanted any more
        LD (key_tail),A
        LD HL,0
        LD (key_string),HL
        JR _queue

; Function key A: when the running program has asked for it, it is not queued, and the routine above ends.
_caught:
        LD HL,key_modifiers
        BIT 6,(HL)              ; SHIFT
        JR Z,_trap
        ADD A,5
_trap:  LD HL,key_traps
        ADD A,L
        LD L,A
        JR NC,_flags
        INC H
_flags: LD A,(HL)
        AND 3
        RET Z
        LD A,(line_pointer + 1)
        CP TOKENS / 256
        RET Z                   ; none runs
        SET KEY_TRAP_CAUGHT,(HL)
        LD HL,trace_flag
        SET 7,(HL)
        POP HL
        RET

; Queues key C; when the queue is full, the key is lost.
key_queue_add:
        LD A,(key_head)
        LD E,A
        INC A
        AND KEY_QUEUE - 1
        LD HL,key_tail
        CP (HL)
        RET Z
        LD (key_head),A
        LD D,0
        LD HL,key_queue
        ADD HL,DE
        ADD HL,DE
        LD (HL),C
        INC HL
        LD A,(key_modifiers)
        LD (HL),A
        RET

key_wait:
        LD A,(cursor_shown)
        PUSH AF
        LD A,1
        LD (cursor_shown),A
_wait:  CALL key_poll
        JR NZ,_key
        CALL keys_follow
        JR _wait
_key:   EX (SP),HL              ; the cursor as it was
        PUSH AF
        LD A,H
        LD (cursor_shown),A
        POP AF
        POP HL
        OR A
        RET

key_poll:
        PUSH HL
        PUSH DE
        PUSH BC
        CALL key_next
        POP BC
        POP DE
        POP HL
        OR A
        RET
; A = the next character, 0: none.
key_next:
        LD HL,(key_string)
        LD A,H
        OR L
        JR Z,_queue
        LD A,(HL)
        INC HL
        LD (key_string),HL
        OR A
        RET NZ
        LD H,A
        LD L,A
        LD (key_string),HL
_queue: LD A,(key_tail)
        LD HL,key_head
        CP (HL)
        LD E,A
        LD A,0
        RET Z
        LD D,A
        LD HL,key_queue
        ADD HL,DE
        ADD HL,DE
        LD C,(HL)               ; key
        INC HL
        LD B,(HL)               ; modifiers
        LD A,E
        INC A
        AND KEY_QUEUE - 1
        LD (key_tail),A
        LD A,C
        SUB KEY_KANA
        JR Z,_kana
        LD A,C
        SUB KEY_F1
        CP KEY_F5 - KEY_F1 + 1
        JR NC,_character
        BIT 6,B                 ; SHIFT
        JR Z,_plain
        ADD A,5
_plain: CALL key_text
        LD (key_string),HL
        JR key_next
_kana:  LD HL,key_kana
        LD A,(HL)
        XOR 1
        LD (HL),A
        JR key_next
_character:
        CALL key_character
        OR A
        JR Z,key_next
        RET

; A = the character of key C with modifiers B, 0 where it has none.
key_character:
        LD A,C
        SUB 2 * 8
        CP 6 * 8
        JR C,_letter            ; rows 2 to 7
        LD A,C
        CP 2 * 8
        JR C,_common
        SUB 6 * 8
_common:
        LD HL,keys_common
        CALL _look
        BIT 6,B
        RET Z
        CP CTRL_DELETE
        JR Z,_insert
        CP CTRL_HOME
        RET NZ
        INC A                   ; SHIFT HOME: clear
        RET
_insert:
        LD A,CTRL_INSERT
        RET
_letter:
        LD HL,keys_graph
        BIT 4,B                 ; GRPH
        JR NZ,_look
        LD HL,keys_plain
        LD DE,keys_shift - keys_plain
        BIT 6,B
        JR Z,_lower
        ADD HL,DE
_lower: BIT 7,B                 ; CTRL
        JR NZ,_control
        LD C,A
        LD A,(key_kana)
        OR A
        LD A,C
        JR Z,_look
        ADD HL,DE               ; the kana tables follow in the same order
        ADD HL,DE
_look:  ADD A,L
        LD L,A
        JR NC,_page
        INC H
_page:  LD A,(HL)
        RET
_control:
        CALL _look
        CP 040h
        JR C,_none
        AND 01Fh
        RET
_none:  XOR A
        RET

; HL = the text of function key A.
key_text:
        PUSH DE
        LD L,A
        LD H,0
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        ADD HL,HL
        LD DE,key_texts
        ADD HL,DE
        POP DE
        RET

; While a key is waited for: the line names the keys that SHIFT changes.
keys_follow:
        LD A,(key_modifiers)
        BIT 6,A
        LD A,0
        JR Z,_plain
        LD A,5
_plain: PUSH HL
        LD HL,keys_base
        CP (HL)
        LD (HL),A
        POP HL
        RET Z
keys_show:
        LD A,(keys_shown)
        OR A
        RET Z
        PUSH HL
        PUSH DE
        PUSH BC
        CALL row_flush
        LD HL,(cursor_row)
        PUSH HL
        LD A,(console_ink)
        PUSH AF
        LD A,(screen_rows)
        DEC A
        LD L,A
        LD H,0
        LD (cursor_row),HL
        LD B,0
_field: PUSH BC
        LD A,INK_WHITE          ; a blank on either side: of two changes at a column only one counts
        LD (console_ink),A
        LD A," "
        CALL console_put
        POP BC
        PUSH BC
        LD A,(keys_base)
        ADD A,B
        CALL key_text
        LD A,(screen_columns)   ; a fifth of the row
        CP 80
        LD B,14
        JR Z,_wide
        LD B,6
_wide:  LD A,INK_WHITE + CELL_REVERSE
        LD (console_ink),A
_char:  LD A,(HL)
        OR A
        JR Z,_show
        INC HL
        CP " "
        JR NC,_show
        LD A," "                ; RETURN and the like
_show:  OR A
        JR NZ,_put
        LD A," "
_put:   PUSH HL
        PUSH BC
        CALL console_put
        POP BC
        POP HL
        DJNZ _char
        LD A,INK_WHITE
        LD (console_ink),A
        LD A," "
        CALL console_put
        POP BC
        INC B
        LD A,B
        CP 5
        JR NZ,_field
        POP AF
        LD (console_ink),A
        POP HL
        LD (cursor_row),HL
        CALL row_flush
        POP BC
        POP DE
        POP HL
        RET

; ---- Characters. First the rows that no modifier but SHIFT changes: 0, 1, 8 to 11; a line each.
keys_common:
        DEFB "01234567"                                 ; ten-key
        DEFB "89*+=,.",CTRL_RETURN
        DEFB CTRL_HOME,CTRL_UP,CTRL_RIGHT,CTRL_DELETE,0,0,0,0
        DEFB CTRL_STOP,0,0,0,0,0," ",CTRL_ESCAPE
        DEFB CTRL_TAB,CTRL_DOWN,CTRL_LEFT,0,0,"-/",0
        DEFB 0,0,0,0,0,0,0,0
; Then rows 2 to 7 in each layer.
keys_plain:
        DEFB "@abcdefg"
        DEFB "hijklmno"
        DEFB "pqrstuvw"
        DEFB "xyz[",05Ch,"]^-"
        DEFB "01234567"
        DEFB "89:;,./_"
keys_shift:
        DEFB "`ABCDEFG"
        DEFB "HIJKLMNO"
        DEFB "PQRSTUVW"
        DEFB "XYZ{|}~="
        DEFB 0,"!",022h,"#$%&'"
        DEFB "()*+<>?_"
keys_kana:
        DEFB 0DEh,0C1h,0BAh,0BFh,0BCh,0B2h,0CAh,0B7h    ; @ A-G
        DEFB 0B8h,0C6h,0CFh,0C9h,0D8h,0D3h,0D0h,0D7h    ; H-O
        DEFB 0BEh,0C0h,0BDh,0C4h,0B6h,0C5h,0CBh,0C3h    ; P-W
        DEFB 0BBh,0DDh,0C2h,0DFh,0B0h,0D1h,0CDh,0CEh    ; X Y Z [ yen ] ^ -
        DEFB 0DCh,0C7h,0CCh,0B1h,0B3h,0B4h,0B5h,0D4h    ; 0-7
        DEFB 0D5h,0D6h,0B9h,0DAh,0C8h,0D9h,0D2h,0DBh    ; 8 9 : ; , . / _
        DEFB 0DEh,0C1h,0BAh,0BFh,0BCh,0A8h,0CAh,0B7h    ; with SHIFT: small letters and marks
        DEFB 0B8h,0C6h,0CFh,0C9h,0D8h,0D3h,0D0h,0D7h
        DEFB 0BEh,0C0h,0BDh,0C4h,0B6h,0C5h,0CBh,0C3h
        DEFB 0BBh,0DDh,0AFh,0A2h,0B0h,0A3h,0CDh,0CEh
        DEFB 0A6h,0C7h,0CCh,0A7h,0A9h,0AAh,0ABh,0ACh
        DEFB 0ADh,0AEh,0B9h,0DAh,0A4h,0A1h,0A5h,0DBh
; With GRPH: bars and blocks on the digits, frames and signs on the letters.
keys_graph:
        DEFB 0E0h,08Eh,08Fh,090h,091h,092h,093h,094h
        DEFB 095h,096h,097h,098h,099h,09Ah,09Bh,09Ch
        DEFB 09Dh,09Eh,09Fh,0E1h,0E2h,0E3h,0E4h,0E5h
        DEFB 0E6h,0E7h,0E8h,0E9h,0EAh,0EBh,0ECh,0EDh
        DEFB 080h,081h,082h,083h,084h,085h,086h,087h
        DEFB 088h,089h,08Ah,08Bh,08Ch,08Dh,0EEh,0EFh

keys_texts:
        DEFB "LIST ",0,0,0,0,0,0,0,0,0,0,0
        DEFB "RUN",13,0,0,0,0,0,0,0,0,0,0,0,0
        DEFB "CLOAD",13,0,0,0,0,0,0,0,0,0,0
        DEFB "GOTO ",0,0,0,0,0,0,0,0,0,0,0
        DEFB "HELP ",0,0,0,0,0,0,0,0,0,0,0
        DEFB "CONT",13,0,0,0,0,0,0,0,0,0,0,0
        DEFB "PRINT ",0,0,0,0,0,0,0,0,0,0
        DEFB "COLOR ",0,0,0,0,0,0,0,0,0,0
        DEFB "CSAVE ",022h,0,0,0,0,0,0,0,0,0
        DEFB "DEMO",13,0,0,0,0,0,0,0,0,0,0,0

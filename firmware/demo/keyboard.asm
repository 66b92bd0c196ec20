; The keyboard: scanned at every vertical retrace, keys queued with the modifiers held, turned into
; characters when the program asks.

KEY_DELAY       EQU 24          ; frames until a held key repeats
KEY_RATE        EQU 3           ; frames from one repetition to the next
KEY_GRPH        EQU 8 * 8 + 4
KEY_KANA        EQU 8 * 8 + 5
KEY_SHIFT       EQU 8 * 8 + 6
KEY_CTRL        EQU 8 * 8 + 7

keyboard_init:
        LD HL,key_before
        LD B,KEY_ROWS
_row:   LD (HL),0FFh
        INC HL
        DJNZ _row
        LD A,0FFh
        LD (key_repeat),A
        RET

; Called at every vertical retrace. Uses AF, BC, DE, HL.
keyboard_scan:
        IN A,(KEY_MODIFIERS)
        CPL
        LD (key_modifiers),A
        LD HL,key_before
        LD C,KEY_ROW
_row:   IN A,(C)
        LD E,(HL)
        LD (HL),A
        CPL
        AND E                   ; held now and not at the last scan
        CALL NZ,_pressed
        INC HL
        INC C
        LD A,C
        CP KEY_ROWS
        JR NZ,_row

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

; Row C, new keys A: queues each; the last one repeats. Keeps BC and HL.
_pressed:
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
        JR NC,_next
        LD A,C
        CP KEY_GRPH             ; GRPH, SHIFT and CTRL alone are no keys
        JR Z,_next
        CP KEY_SHIFT
        JR Z,_next
        CP KEY_CTRL
        JR Z,_next
        PUSH BC
        PUSH DE
        CALL key_queue_add
        POP DE
        POP BC
        LD A,C
        CP KEY_KANA             ; a switch, which does not repeat
        JR Z,_next
        LD (key_repeat),A
        LD A,KEY_DELAY
        LD (key_repeat_left),A
_next:  INC C
        DJNZ _key
        POP BC
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

; The next key: carry set, A = key (row * 8 + bit), B = modifiers held. No carry: none waits.
keyboard_key:
        LD A,(key_tail)
        LD HL,key_head
        CP (HL)
        RET Z                   ; equal: no carry
        LD E,A
        LD D,0
        LD HL,key_queue
        ADD HL,DE
        ADD HL,DE
        LD B,(HL)
        INC HL
        LD C,(HL)
        INC A
        AND KEY_QUEUE - 1
        LD (key_tail),A
        LD A,B
        LD B,C
        SCF
        RET

; Key A with modifiers B as a character or a CTRL_ code; 0 where the key has none.
keyboard_character:
        LD HL,keys_plain
        LD C,A
        LD A,(key_kana)
        OR A
        JR Z,_latin
        LD HL,keys_kana
_latin: BIT 6,B                 ; SHIFT
        JR Z,_table
        LD DE,keys_shift - keys_plain
        ADD HL,DE
_table: LD B,0
        ADD HL,BC
        LD A,(HL)
        RET

; Each line a row of the matrix, bits 0-7.
keys_plain:
        DEFB "01234567"                                 ; ten-key
        DEFB "89*+=,.",CTRL_RETURN
        DEFB "@abcdefg"
        DEFB "hijklmno"
        DEFB "pqrstuvw"
        DEFB "xyz[",05Ch,"]^-"
        DEFB "01234567"
        DEFB "89:;,./_"
        DEFB CTRL_HOME,CTRL_UP,CTRL_RIGHT,CTRL_DELETE,0,CTRL_KANA,0,0
        DEFB CTRL_STOP,CTRL_F1,CTRL_F2,CTRL_F3,CTRL_F4,CTRL_F5," ",CTRL_ESCAPE
        DEFB CTRL_TAB,CTRL_DOWN,CTRL_LEFT,0,0,"-/",0
        DEFB 0,0,0,0,0,0,0,0
keys_shift:
        DEFB "01234567"
        DEFB "89*+=,.",CTRL_RETURN
        DEFB "`ABCDEFG"
        DEFB "HIJKLMNO"
        DEFB "PQRSTUVW"
        DEFB "XYZ{|}~="
        DEFB 0,"!",022h,"#$%&'"
        DEFB "()*+<>?_"
        DEFB CTRL_HOME,CTRL_UP,CTRL_RIGHT,CTRL_INSERT,0,CTRL_KANA,0,0
        DEFB CTRL_STOP,CTRL_F1,CTRL_F2,CTRL_F3,CTRL_F4,CTRL_F5," ",CTRL_ESCAPE
        DEFB CTRL_TAB,CTRL_DOWN,CTRL_LEFT,0,0,"-/",0
        DEFB 0,0,0,0,0,0,0,0
keys_kana:
        DEFB "01234567"
        DEFB "89*+=,.",CTRL_RETURN
        DEFB 0DEh,0C1h,0BAh,0BFh,0BCh,0B2h,0CAh,0B7h    ; @ A-G
        DEFB 0B8h,0C6h,0CFh,0C9h,0D8h,0D3h,0D0h,0D7h    ; H-O
        DEFB 0BEh,0C0h,0BDh,0C4h,0B6h,0C5h,0CBh,0C3h    ; P-W
        DEFB 0BBh,0DDh,0C2h,0DFh,0B0h,0D1h,0CDh,0CEh    ; X Y Z [ yen ] ^ -
        DEFB 0DCh,0C7h,0CCh,0B1h,0B3h,0B4h,0B5h,0D4h    ; 0-7
        DEFB 0D5h,0D6h,0B9h,0DAh,0C8h,0D9h,0D2h,0DBh    ; 8 9 : ; , . / _
        DEFB CTRL_HOME,CTRL_UP,CTRL_RIGHT,CTRL_DELETE,0,CTRL_KANA,0,0
        DEFB CTRL_STOP,CTRL_F1,CTRL_F2,CTRL_F3,CTRL_F4,CTRL_F5," ",CTRL_ESCAPE
        DEFB CTRL_TAB,CTRL_DOWN,CTRL_LEFT,0,0,"-/",0
        DEFB 0,0,0,0,0,0,0,0
keys_kana_shift:
        DEFB "01234567"
        DEFB "89*+=,.",CTRL_RETURN
        DEFB 0DEh,0C1h,0BAh,0BFh,0BCh,0A8h,0CAh,0B7h
        DEFB 0B8h,0C6h,0CFh,0C9h,0D8h,0D3h,0D0h,0D7h
        DEFB 0BEh,0C0h,0BDh,0C4h,0B6h,0C5h,0CBh,0C3h
        DEFB 0BBh,0DDh,0AFh,0A2h,0B0h,0A3h,0CDh,0CEh
        DEFB 0A6h,0C7h,0CCh,0A7h,0A9h,0AAh,0ABh,0ACh
        DEFB 0ADh,0AEh,0B9h,0DAh,0A4h,0A1h,0A5h,0DBh
        DEFB CTRL_HOME,CTRL_UP,CTRL_RIGHT,CTRL_INSERT,0,CTRL_KANA,0,0
        DEFB CTRL_STOP,CTRL_F1,CTRL_F2,CTRL_F3,CTRL_F4,CTRL_F5," ",CTRL_ESCAPE
        DEFB CTRL_TAB,CTRL_DOWN,CTRL_LEFT,0,0,"-/",0
        DEFB 0,0,0,0,0,0,0,0

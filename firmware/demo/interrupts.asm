; The interrupt table and its three handlers. IM 2: the level picks the word.
; Handlers keep off C000h-FFFFh, where a graphic plane may stand in place of RAM.

interrupts_start:
        LD A,VECTORS / 256
        LD I,A
        IM 2
        LD A,LEVEL_ALL
        OUT (INTERRUPT_LEVEL),A
        LD A,MASK_CLOCK + MASK_VRTC
        OUT (INTERRUPT_MASK),A
        EI
        RET

; Nothing is received here; a byte from the tape is taken so that the next one can come.
interrupt_usart:
        PUSH AF
        IN A,(USART_DATA)
        POP AF
        EI
        RETI

interrupt_vrtc:
        PUSH AF
        PUSH BC
        PUSH DE
        PUSH HL
        LD HL,(frames)
        INC HL
        LD (frames),HL
        CALL keyboard_scan
        JR interrupt_end

interrupt_clock:
        PUSH AF
        PUSH BC
        PUSH DE
        PUSH HL
        LD HL,(ticks)
        INC HL
        LD (ticks),HL
        CALL sound_tick
interrupt_end:
        LD A,LEVEL_ALL          ; the controller of the real machine wants its level again
        OUT (INTERRUPT_LEVEL),A
        POP HL
        POP DE
        POP BC
        POP AF
        EI
        RETI

; Waits for the next vertical retrace.
wait_frame:
        LD HL,frame_seen
_wait:  LD A,(frames)
        CP (HL)
        JR Z,_wait
        LD (HL),A
        RET

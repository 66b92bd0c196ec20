; Interrupts: the table's three handlers, and which of them run.
;
;   interrupts_init         table and mode set, all masked; ends with interrupts on
;   interrupts_start        retrace on; the clock stays off until something needs it
;   clock_on, clock_off     1/600 s clock; keep all but AF; end with interrupts on
;   wait_frame              until the next vertical retrace; keeps all but AF
;
; Handlers keep off C000h-FFFFh while a graphic plane stands there, and leave the window as it was.

interrupts_init:
        LD A,VECTORS / 256
        LD I,A
        IM 2
        XOR A
        LD (interrupt_mask),A
        OUT (INTERRUPT_MASK),A
        LD A,LEVEL_ALL
        OUT (INTERRUPT_LEVEL),A
        EI
        RET
interrupts_start:
        LD A,MASK_VRTC
        JR mask_set

clock_on:
        LD A,(interrupt_mask)
        OR MASK_CLOCK
        JR mask_set
clock_off:
        LD A,(interrupt_mask)
        AND 0FFh - MASK_CLOCK
mask_set:
        DI
        LD (interrupt_mask),A
        OUT (INTERRUPT_MASK),A
        EI
        RET

; Tape is read without interrupts; a byte that comes all the same is taken, so that the next one can.
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
        LD A,(dirty_row)
        INC A
        JR Z,_clean
        IN A,(SELECT_BLUE)      ; text is out of reach while a plane is in its place
        AND 7
        CALL Z,row_flush_now
_clean: CALL cursor_follow
        CALL keyboard_scan
interrupt_end:
        LD A,LEVEL_ALL          ; the controller of the real machine wants its level again
        OUT (INTERRUPT_LEVEL),A
        POP HL
        POP DE
        POP BC
        POP AF
        EI
        RETI

interrupt_clock:
        PUSH AF
        PUSH BC
        PUSH DE
        PUSH HL
        LD HL,(ticks)
        INC HL
        LD (ticks),HL
        CALL sound_tick
        JR interrupt_end

wait_frame:
        PUSH HL
        LD HL,frames
        LD A,(HL)
_wait:  CP (HL)
        JR Z,_wait
        POP HL
        RET

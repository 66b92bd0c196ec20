; Bytes of the cassette: motor and USART, without interrupts. The deck gives a byte whenever one is asked for.
;
;   tape_open_out   motor on, ready to write
;   tape_put        writes A; C when STOP was pressed
;   tape_open_in    motor on, ready to read
;   tape_get        A = the next byte; C when STOP was pressed
;   tape_close_out, tape_close_in   motor off
;   do_motor        MOTOR [ON, OFF, 1 or 0]
; All keep BC, DE, HL. STOP is left in stop_flag.

USART_RESET     EQU 040h        ; commands
USART_RECEIVE   EQU 014h        ; receiver on, errors cleared
USART_SEND      EQU 001h        ; transmitter on
USART_FORMAT    EQU 04Eh        ; 8 bits, no parity, 1 stop bit, clock / 16
USART_CAN_SEND  EQU 001h        ; status
USART_CAN_READ  EQU 002h

tape_open_out:
        CALL tape_start
        LD A,USART_SEND
        OUT (USART_CONTROL),A
        RET
tape_open_in:
        CALL tape_start
        LD A,USART_RECEIVE
        OUT (USART_CONTROL),A
        IN A,(USART_DATA)       ; what stood in the receiver
        RET
tape_start:
        XOR A
        OUT (USART_CONTROL),A   ; a command or a format, whatever is expected
        LD A,USART_RESET
        OUT (USART_CONTROL),A
        LD A,USART_FORMAT
        OUT (USART_CONTROL),A
        LD A,(mode_30)
        OR MOTOR_ON
motor_set:
        LD (mode_30),A
        OUT (MODE_30),A
        RET
tape_close_out:
tape_close_in:
        XOR A
        OUT (USART_CONTROL),A
        LD A,(mode_30)
        AND 0FFh - MOTOR_ON
        JR motor_set

tape_put:
        PUSH AF
_wait:  LD A,(stop_flag)
        OR A
        JR NZ,_stop
        IN A,(USART_CONTROL)
        AND USART_CAN_SEND
        JR Z,_wait
        POP AF
        OUT (USART_DATA),A
        OR A
        RET
_stop:  POP AF
        SCF
        RET

tape_get:
        LD A,(stop_flag)
        OR A
        SCF
        RET NZ
        IN A,(USART_CONTROL)
        AND USART_CAN_READ
        JR Z,tape_get
        IN A,(USART_DATA)
        OR A
        RET

do_motor:
        JR Z,_other
        INC HL
        CP TOK_ON
        JR Z,_on
        CP TOK_OFF
        JR Z,_off
        DEC HL
        CALL eval_byte
        OR A
        JR Z,_off
_on:    LD A,(mode_30)
        OR MOTOR_ON
        JR _set
_other: LD A,(mode_30)
        AND MOTOR_ON
        JR Z,_on
_off:   LD A,(mode_30)
        AND 0FFh - MOTOR_ON
_set:   CALL motor_set
        JP this_char

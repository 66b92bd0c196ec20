; The title at power-on.
;
;   title_show      on an empty screen; ends at ready

        IF NBASIC
TITLE_BYTES     EQU DATA_TOP - DATA
TITLE_LEFT      EQU 0
        ELSE
TITLE_BYTES     EQU DATA_TOP - DATA + PROGRAM_RAM_END - PROGRAM_RAM
TITLE_LEFT      EQU 24          ; right of the large letters
        ENDIF

title_show:
        LD A,TEXT_OFF           ; nobody sees characters that still wait for their attributes
        OUT (LAYERS),A
        IF NBASIC
        ELSE
        LD A,(far_found)
        OR A
        LD A,FAR_LOGO
        CALL NZ,far_call
        ENDIF
        LD A,INK_WHITE
        LD (console_ink),A
        LD D,0
        LD HL,title_text
_line:  LD E,TITLE_LEFT
        PUSH DE
        CALL console_locate
        CALL console_text
        POP DE
        INC D
        LD A,(HL)
        INC A
        JR NZ,_line
        CALL console_newline
        CALL row_flush
        XOR A
        OUT (LAYERS),A
        JP ready

title_text:
        DEFB "Kiv BASIC 1.0",0
        DEFB "0" + TITLE_BYTES / 10000,"0" + TITLE_BYTES / 1000 MOD 10,"0" + TITLE_BYTES / 100 MOD 10
        DEFB "0" + TITLE_BYTES / 10 MOD 10,"0" + TITLE_BYTES MOD 10," bytes free",0
        IF NBASIC
        ELSE
        DEFB "DEMO shows what the machine can do, HELP the words.",0
        ENDIF
        DEFB 0FFh

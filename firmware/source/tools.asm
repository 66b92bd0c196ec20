; The way from the interpreter to what stands in the expansion ROM besides graphics, and back.
;
;   do_mon do_demo   statements
;   demo_melody     for DEMO: two voices, played in the background
;   upper_call      from the expansion ROM: calls IX in the main ROM at 6000h; all other registers reach it and come
;                   back from it
;   monitor_leave   from the monitor to its program: AF on the stack, then the address
;   monitor_return  the address to which such a program returns
;   monitor_trap    where RST 38h leads, AF pushed

do_mon: LD A,FAR_MONITOR
        JP far_call
do_demo:
        LD A,FAR_DEMO
        JP far_call

        IF NBASIC
monitor_trap:
        LD SP,STACK
        EI
        JP ready
        ELSE
demo_melody:
        LD HL,demo_notes
        LD IX,do_play
        CALL this_char
upper_call:
        PUSH AF
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        POP AF
        CALL _there
        PUSH AF
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        POP AF
        RET
_there: JP (IX)

demo_notes:
        DEFB 022h,"T240L8O5CEG>C<BGEGA>C<FAGECEDFA>DC<AGB>C4<GE>C4.",022h
        DEFB ",",022h,"T240L8O4CC<GG>CC<EEFFFF>CCCCDDDD<GGGG>C4CCC4.",022h,0

monitor_leave:
        LD A,EXPANSION_OFF
        OUT (EXPANSION),A
        POP AF
        RET
monitor_return:
        RST 38h
monitor_trap:
        LD A,(far_found)
        OR A
        JR Z,_bare
        LD A,EXPANSION_4TH
        OUT (EXPANSION),A
        JP EXPANSION_TABLE + 3 * FAR_STOPPED
_bare:  LD SP,STACK
        EI
        JP ready
        ENDIF

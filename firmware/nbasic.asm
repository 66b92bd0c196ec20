; 8801-kiv.rom: the ROM that stands in for the main one when the switch asks for N-BASIC. The same language on the
; plain map: no planes, no window, no expansion ROM.

NBASIC          EQU 1
        INCLUDE "modules.inc"

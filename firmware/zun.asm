; 8801-zun.rom: the machine's first ROM, with the full language.

NBASIC          EQU 0
        INCLUDE "modules.inc"

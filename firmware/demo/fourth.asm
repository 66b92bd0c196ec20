; 8801-4th.rom: the expansion ROM, seen at 6000h-7FFFh while the main ROM asks for it.
;   6000h  the mark by which it is found
;   6004h  draws the picture
;   6007h  copies the tune to DE
; It draws with the main ROM's graphics_span, reached through the jump at SERVICES.

        INCLUDE "ports.inc"
        INCLUDE "memory.inc"

span            EQU SERVICES

        ORG EXPANSION_START
        DEFB "KIV4"
        JP picture
        JP tune

        INCLUDE "picture.asm"
        INCLUDE "tune.asm"

        DEFS EXPANSION_START + 2000h - $

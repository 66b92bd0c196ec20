; 8801-4th.rom: the expansion ROM, seen at 6000h-7FFFh while the main ROM asks for it. Names of the main ROM and of
; memory come from its table of symbols, so its own names must be others.
;   6000h  the mark by which it is found
;   6008h  the jump table, in the order of FAR_... (farcall.asm in the main ROM)

        INCLUDE "zun_symbols.inc"

        ORG EXPANSION_START
        DEFB "KIVBASIC"
        INCLUDE "far_table.asm"
far_module_planes:
        INCLUDE "planes.asm"
far_module_monitor:
        INCLUDE "monitor.asm"
far_module_demonstration:
        INCLUDE "demonstration.asm"
far_module_free:
        DEFS EXPANSION_START + 2000h - $
far_module_end_fourth:

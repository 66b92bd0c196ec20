; The jump table of the expansion ROM, in the order of FAR_... in farcall.asm.
        JP far_monitor
        JP far_demo
        JP monitor_stopped
        JP far_logo
        JP plane_init
        JP plane_clear
        JP plane_pset
        JP plane_point
        JP plane_line
        JP plane_fill
        JP plane_paint
        JP circle_draw

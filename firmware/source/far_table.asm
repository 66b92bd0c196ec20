; The jump table of the expansion ROM, in the order of FAR_... in farcall.asm.
        JP far_monitor
        JP far_demo
        JP monitor_stopped
        JP far_logo

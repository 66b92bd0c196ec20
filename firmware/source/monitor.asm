; Monitor

far_monitor:
        RET

; HELP

far_help:
        RET

; DEMO

far_demo:
        RET

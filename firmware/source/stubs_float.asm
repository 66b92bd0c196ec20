; Names that stand in until their owner's routine lands: each owner deletes the line with it.
float_power:
float_sqr:
float_sin:
float_cos:
float_tan:
float_atn:
float_exp:
float_log:
float_rnd:
print_using:
do_randomize:
        LD E,ERR_UNAVAILABLE
        JP error

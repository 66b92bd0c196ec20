; Names that stand in until their owner's routine lands: each owner deletes the line with it.
float_add:
float_sub:
float_mul:
float_div:
float_power:
float_compare:
float_negate:
float_abs:
float_sgn:
float_int:
float_fix:
float_sqr:
float_sin:
float_cos:
float_tan:
float_atn:
float_exp:
float_log:
float_rnd:
float_to_integer:
float_to_word:
integer_to_fac:
word_to_fac:
fac_load:
fac_store:
number_parse:
number_print:
number_hex:
number_octal:
print_using:
do_randomize:
        LD E,ERR_UNAVAILABLE
        JP error

; Names that stand in until their owner's routine lands: each owner deletes the line with it.
do_locate:
do_color:
do_width:
do_console:
do_cls:
do_key:
do_line_graphics:
do_pset:
do_preset:
do_circle:
do_paint:
do_draw:
do_get:
do_put:
do_beep:
do_sound:
do_play:
do_motor:
do_pcg:
do_time_set:
do_date_set:
fn_point:
fn_inkey:
fn_time:
fn_date:
fn_csrlin:
fn_pos:
tape_open_out:
tape_put:
tape_close_out:
tape_open_in:
tape_get:
        LD E,ERR_UNAVAILABLE
        JP error

; Names that stand in until their owner's routine lands: each owner deletes the line with it.
do_get:
do_put:
        LD E,ERR_UNAVAILABLE
        JP error

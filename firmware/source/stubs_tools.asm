; Names that stand in until their owner's routine lands: each owner deletes the line with it.
do_csave:
do_cload:
do_save:
do_load:
do_merge:
do_bsave:
do_bload:
do_renum:
do_auto:
do_delete:
do_edit:
        LD E,ERR_UNAVAILABLE
        JP error

; Names that stand in until their owner's routine lands: each owner deletes the line with it.
print_using:
        LD E,ERR_UNAVAILABLE
        JP error

; CSAVE CLOAD SAVE LOAD MERGE

tape_write_block:
tape_read_block:
        SCF
        RET

; The tune: two voices, told as sound_play wants it.

; Divisors of the 3993600 Hz clock for the notes, equal temperament, A4 = 440 Hz.
NOTE_C3         EQU 30529
NOTE_D3         EQU 27198
NOTE_E3         EQU 24231
NOTE_F3         EQU 22871
NOTE_G3         EQU 20376
NOTE_A3         EQU 18153
NOTE_AS3        EQU 17134
NOTE_B3         EQU 16172
NOTE_C4         EQU 15265
NOTE_D4         EQU 13599
NOTE_E4         EQU 12115
NOTE_F4         EQU 11436
NOTE_G4         EQU 10188
NOTE_A4         EQU 9076
NOTE_AS4        EQU 8567
NOTE_B4         EQU 8086
NOTE_C5         EQU 7632
NOTE_D5         EQU 6800
NOTE_E5         EQU 6058
NOTE_F5         EQU 5718
NOTE_G5         EQU 5094
NOTE_A5         EQU 4538
NOTE_AS5        EQU 4283
NOTE_B5         EQU 4043
NOTE_C6         EQU 3816
NOTE_D6         EQU 3400
NOTE_E6         EQU 3029
NOTE_F6         EQU 2859
NOTE_G6         EQU 2547
NOTE_A6         EQU 2269
NOTE_AS6        EQU 2142
NOTE_B6         EQU 2022
NOTE_REST       EQU 0

EIGHTH          EQU 75          ; 1/600 s

; Copies it to DE.
tune:   LD HL,tune_notes
        LD BC,tune_end - tune_notes
        LDIR
        RET

tune_notes:
        DEFW NOTE_C5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_E5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_G5, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_C6, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_B5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_G5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_E5, NOTE_E3
        DEFB EIGHTH
        DEFW NOTE_G5, NOTE_E3
        DEFB EIGHTH
        DEFW NOTE_A5, NOTE_F3
        DEFB EIGHTH
        DEFW NOTE_C6, NOTE_F3
        DEFB EIGHTH
        DEFW NOTE_F5, NOTE_F3
        DEFB EIGHTH
        DEFW NOTE_A5, NOTE_F3
        DEFB EIGHTH
        DEFW NOTE_G5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_E5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_C5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_E5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_D5, NOTE_D4
        DEFB EIGHTH
        DEFW NOTE_F5, NOTE_D4
        DEFB EIGHTH
        DEFW NOTE_A5, NOTE_D4
        DEFB EIGHTH
        DEFW NOTE_D6, NOTE_D4
        DEFB EIGHTH
        DEFW NOTE_C6, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_A5, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_G5, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_B5, NOTE_G3
        DEFB EIGHTH
        DEFW NOTE_C6, NOTE_C4
        DEFB EIGHTH * 2
        DEFW NOTE_G5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_E5, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_C6, NOTE_C4
        DEFB EIGHTH * 3
        DEFW NOTE_C6, NOTE_C4
        DEFB EIGHTH
        DEFW NOTE_REST, NOTE_REST
        DEFB 0
tune_end:

; A small firmware for tests, as Zun-BASIC's image.
;
; It sets up an 80 x 25 text screen that says READY, switches the beeper off, and then looks at the keyboard:
; what is typed appears in row 1, letters small unless shift is held. Four digits are commands instead:
;   0  HALT (at 00CDh)          1  an undefined instruction (at 00CEh)
;   8  the beeper on            9  the bytes "HI" to the cassette

vram    equ 0F3C8h      ; the text window
pos     equ 0E000h      ; characters typed so far
rows    equ 0E010h      ; the key rows as last seen

        org 0
        di
        ld sp,0F000h
        xor a
        out (40h),a
        out (51h),a
        ld hl,crtc
        ld b,5
param:  ld a,(hl)
        out (50h),a
        inc hl
        djnz param
        ld a,1
        out (30h),a
        xor a
        out (68h),a
        ld a,0C8h
        out (64h),a
        ld a,0F3h
        out (64h),a
        ld a,0B7h
        out (65h),a
        ld a,8Bh
        out (65h),a
        ld a,84h
        out (68h),a
        ld a,80h
        out (51h),a
        ld a,20h
        out (51h),a

; Blank rows: 80 blanks, then attribute pairs that make the row white and plain whatever stands above.
        ld hl,vram
        ld c,25
row:    ld b,80
blank:  ld (hl),20h
        inc hl
        djnz blank
        ld (hl),0
        inc hl
        ld (hl),0E8h
        inc hl
        ld b,19
pair:   ld (hl),1
        inc hl
        ld (hl),0
        inc hl
        djnz pair
        dec c
        jr nz,row
        ld hl,text
        ld de,vram
        ld bc,textend-text
        ldir

; Nothing typed, nothing held.
        xor a
        ld (pos),a
        ld hl,rows
        ld b,12
held:   ld (hl),0FFh
        inc hl
        djnz held

; Rows 2-7: letters, marks and digits.
scan:   ld c,2
        ld hl,rows+2
line:   in a,(c)
        ld d,(hl)
        ld (hl),a
        cpl
        and d
        ld e,a
        ld a,c
        rlca
        rlca
        rlca
        ld d,a
key:    srl e
        jr nc,up
        call typed
up:     inc d
        ld a,e
        or a
        jr nz,key
        inc hl
        inc c
        ld a,c
        cp 8
        jr nz,line
        jr scan

; The key that went down: D is its row * 8 + bit.
typed:  push hl
        ld a,d
        cp 30h
        jr z,stop
        cp 31h
        jr z,undef
        cp 39h
        jr z,tape
        cp 38h
        jr z,beep
        jr nc,show
        cp 30h
        jr nc,show
        add a,30h
        ld b,a
        in a,(8)
        and 40h
        ld a,b
        jr z,show
        add a,20h
show:   ld b,a
        ld a,(pos)
        ld l,a
        inc a
        ld (pos),a
        ld h,0
        push de
        ld de,vram+120
        add hl,de
        pop de
        ld (hl),b
        pop hl
        ret
stop:   halt
undef:  db 0EDh,0FFh
tape:   ld a,'H'
        out (20h),a
        ld a,'I'
        out (20h),a
        pop hl
        ret
beep:   ld a,20h
        out (40h),a
        pop hl
        ret

; RESET: 80 columns, 25 rows of 16 lines, colour attributes, 20 pairs a row.
crtc:   db 0CEh,98h,0Fh,58h,13h
text:   db "READY"
textend:

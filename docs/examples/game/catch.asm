; Catch: a game small enough to read, and to test. Keys 4 and 6 of the ten-key block move the dish, which has
; to be under each star when it comes down. Five stars win; one that is missed loses. How it ended goes to
; port 0x99, which the machine does not have and a test listens to: 0 won, 1 lost.

rows    equ     $F300           ; Kiv BASIC's text screen: 80 characters and 40 bytes of attributes a row
line    equ     120
bottom  equ     20

        org     $9000

start:  di
        ld      sp,$F000
        call    clear
        xor     a
        ld      (score),a
        ld      (row),a
        ld      a,40
        ld      (dish),a
        ld      a,24
        ld      (star),a

frame:  call    blank
        ld      a,' '
        call    draw_dish
        ld      a,' '
        call    draw_star
        call    keys
        call    fall
        ld      a,'U'
        call    draw_dish
        ld      a,'*'
        call    draw_star
        ld      a,(score)
        add     a,'0'
        ld      (rows+78),a
        jr      frame

; Waits for the vertical blank.
blank:  in      a,($40)
        and     $20
        jr      nz,blank
begins: in      a,($40)
        and     $20
        jr      z,begins
        ret

keys:   in      a,($00)
        ld      c,a
        ld      a,(dish)
        bit     4,c
        call    z,left
        bit     6,c
        call    z,right
        ld      (dish),a
        ret
left:   or      a
        ret     z
        dec     a
        ret
right:  cp      79
        ret     z
        inc     a
        ret

; One row every fourth picture.
fall:   ld      hl,ticks
        inc     (hl)
        ld      a,(hl)
        and     3
        ret     nz
        ld      hl,row
        inc     (hl)
        ld      a,(hl)
        cp      bottom
        ret     nz
        ld      (hl),0
        ld      a,(star)
        ld      b,a
        ld      a,(dish)
        sub     b
        inc     a               ; beside it on either side will do
        cp      3
        jr      nc,lost
        ld      hl,score
        inc     (hl)
        ld      a,b             ; the next star: 5 times the column and 17, somewhere from 8 to 71
        add     a,a
        add     a,a
        add     a,b
        add     a,17
        and     63
        add     a,8
        ld      (star),a
        ld      a,(score)
        cp      5
        ret     nz
        ld      hl,won_text
        ld      c,0
        jr      over
lost:   ld      hl,lost_text
        ld      c,1
over:   ld      de,rows+10*line+35
letter: ld      a,(hl)
        or      a
        jr      z,told
        ld      (de),a
        inc     hl
        inc     de
        jr      letter
told:   ld      a,c
        out     ($99),a
stay:   jr      stay

; A at the dish, at the star.
draw_dish:
        push    af
        ld      a,(dish)
        ld      c,a
        ld      a,bottom
        jr      draw
draw_star:
        push    af
        ld      a,(star)
        ld      c,a
        ld      a,(row)
draw:   call    place
        pop     af
        ld      (hl),a
        ret

; Row A, column C: its address in HL.
place:  ld      hl,rows
        ld      de,line
        or      a
down:   jr      z,across
        add     hl,de
        dec     a
        jr      down
across: ld      b,0
        add     hl,bc
        ret

clear:  ld      hl,rows
        ld      c,25
each:   ld      b,80
blanks: ld      (hl),' '
        inc     hl
        djnz    blanks
        ld      de,line-80
        add     hl,de
        dec     c
        jr      nz,each
        ret

won_text:
        db      "YOU WIN",0
lost_text:
        db      "GAME OVER",0
score:  db      0
row:    db      0               ; of the star
star:   db      0               ; its column
dish:   db      0               ; its column
ticks:  db      0

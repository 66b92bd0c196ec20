10 REM *** SNAKE ***  A game on semigraphic blocks
20 REM The snake eats the diamonds and grows. Its own body
30 REM and the wall end the game. Keys: I up, M down, J left,
40 REM K right, or the cursor keys. STOP leaves.
50 REM
60 DEFINT A-Z
70 WIDTH 80,25: CONSOLE 0,25,0,1: COLOR 7: CLS
80 L$=CHR$(29): R$=CHR$(28): U$=CHR$(30): D$=CHR$(31)
90 B$=CHR$(135): F$=CHR$(234): ' full block, diamond
100 DIM X(500),Y(500),M(79,24)
110 REM --- the field
120 COLOR 4: LOCATE 0,0,0: PRINT STRING$(79,B$);
130 FOR I=1 TO 22: LOCATE 0,I: PRINT B$;: LOCATE 78,I: PRINT B$;: NEXT I
140 LOCATE 0,23: PRINT STRING$(79,B$);
150 FOR I=0 TO 78: M(I,0)=1: M(I,23)=1: NEXT I
160 FOR I=0 TO 23: M(0,I)=1: M(78,I)=1: NEXT I
170 COLOR 7: LOCATE 30,0: PRINT " S N A K E ";
180 REM --- the snake: X(), Y() is a ring, H its head, T its tail
190 H=0: T=0: X=39: Y=12: X(0)=X: Y(0)=Y: M(X,Y)=1
200 DX=1: DY=0: G=6: S=0
210 GOSUB 520
220 REM --- one step
230 A$=INKEY$: IF A$="" THEN 320
240 IF (A$="I" OR A$="i" OR A$=U$) AND DY=0 THEN DX=0: DY=-1
250 IF (A$="M" OR A$="m" OR A$=D$) AND DY=0 THEN DX=0: DY=1
260 IF (A$="J" OR A$="j" OR A$=L$) AND DX=0 THEN DX=-1: DY=0
270 IF (A$="K" OR A$="k" OR A$=R$) AND DX=0 THEN DX=1: DY=0
320 X=X+DX: Y=Y+DY
330 IF X=FX AND Y=FY THEN S=S+10: G=G+4: BEEP: GOSUB 520: GOTO 350
340 IF M(X,Y) THEN 430
350 M(X,Y)=1: H=(H+1) MOD 500: X(H)=X: Y(H)=Y
360 COLOR 6: LOCATE X,Y: PRINT B$;
370 IF G>0 THEN G=G-1: GOTO 410
380 LOCATE X(T),Y(T): PRINT " ";: M(X(T),Y(T))=0: T=(T+1) MOD 500
410 FOR I=1 TO 60-S/20: NEXT I
420 GOTO 230
430 REM --- the end
440 BEEP: COLOR 2: LOCATE 33,12: PRINT " GAME OVER ";
450 COLOR 7: LOCATE 30,14: PRINT " Score:";S;" Again (Y/N)? ";
460 A$=INKEY$: IF A$="Y" OR A$="y" THEN RUN
470 IF A$<>"N" AND A$<>"n" THEN 460
480 CONSOLE 0,25,1,1: CLS: END
510 REM --- a new diamond where nothing is, and the score
520 FX=INT(RND(1)*77)+1: FY=INT(RND(1)*22)+1: IF M(FX,FY) THEN 520
530 COLOR 5: LOCATE FX,FY: PRINT F$;
540 COLOR 7: LOCATE 2,23: PRINT " Score";S;
550 RETURN

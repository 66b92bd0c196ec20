10 REM *** MAZE ***  Digs a maze, then finds the way through it
20 REM A row of the screen holds twenty changes of colour, so walls
25 REM and trace have one colour, and a row needs none.
30 DEFINT A-Z
50 CONSOLE 0,25,0,1:COLOR 7:CLS
60 DIM M(78,22),S(430),DX(3),DY(3)
70 FOR I=0 TO 3:READ DX(I),DY(I):NEXT I
80 DATA 0,-1,1,0,0,1,-1,0
90 B$=CHR$(135)
100 LOCATE 0,0,0
110 COLOR 5:FOR Y=0 TO 20:LOCATE 0,Y:PRINT STRING$(79,B$);:NEXT Y
120 LOCATE 2,21:PRINT "Digging";
130 REM --- dig: M is 1 where there is floor, S the way back
140 X=1:Y=1:N=0:M(X,Y)=1:GOSUB 500
150 D=INT(RND(1)*4):F=0
160 FOR I=0 TO 3
170 U=X+2*DX(D):V=Y+2*DY(D)
180 IF U<1 OR U>77 OR V<1 OR V>19 THEN 200
190 IF M(U,V)=0 THEN F=1:I=3:GOTO 210
200 D=(D+1) AND 3
210 NEXT I
220 IF F=0 THEN 270
230 M(X+DX(D),Y+DY(D))=1:M(U,V)=1
240 LOCATE X+DX(D),Y+DY(D):PRINT " ";
250 N=N+1:S(N)=D:X=U:Y=V:GOSUB 500
260 GOTO 150
270 IF N=0 THEN 300
280 D=S(N):N=N-1:X=X-2*DX(D):Y=Y-2*DY(D):GOTO 150
300 REM --- walk with a hand on the right wall; a step back wipes the trace
310 LOCATE 2,21:PRINT "Walking";
320 X=1:Y=1:D=1
330 LOCATE X,Y:PRINT CHR$(165);:M(X,Y)=2
340 IF X=77 AND Y=19 THEN 420
350 D=(D+1) AND 3
360 U=X+DX(D):V=Y+DY(D):IF M(U,V)=0 THEN D=(D+3) AND 3:GOTO 360
370 IF M(U,V)=2 THEN LOCATE X,Y:PRINT " ";:M(X,Y)=1
380 X=U:Y=V:GOTO 330
420 LOCATE 2,21:PRINT "Through!"
430 COLOR 7:CONSOLE 0,25,1,1:END
500 LOCATE X,Y:PRINT " ";:RETURN

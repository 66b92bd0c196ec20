10 REM *** MANDELBROT ***  The set, in eight colours
20 REM Each point is asked how often z=z*z+c stays near.
30 REM Take a smaller step D for a finer picture.
40 REM
50 CONSOLE 0,25,0,1:CLS 3
60 D=8 ' points across of one dot; half as many down
70 N=24 ' rounds at most
80 FOR Y=0 TO 99 STEP D/2
90 B=(Y-100)/80
100 FOR X=0 TO 639 STEP D
110 A=(X-430)/200
120 U=0:V=0:I=0
130 P=U*U:Q=V*V
140 IF P+Q>4 THEN 180
150 V=2*U*V+B:U=P-Q+A
160 I=I+1:IF I<N THEN 130
170 C=0:GOTO 190
180 C=1+I MOD 7
190 LINE (X,Y)-(X+D-1,Y+D/2-1),C,BF
200 LINE (X,199-Y)-(X+D-1,200-Y-D/2),C,BF ' the lower half is its mirror
210 NEXT X
220 NEXT Y
230 A$=INPUT$(1) ' any key
240 CONSOLE 0,25,1,1:CLS 3:END

10 REM *** TUNE ***  An old round on three channels
20 REM "Frere Jacques": one voice begins, the next two follow.
30 REM
40 CLS:LOCATE 0,2:PRINT "Frere Jacques, in three voices"
50 A$="O4C4D4E4C4C4D4E4C4" ' Frere Jacques
60 B$="O4E4F4G2E4F4G2" ' Dormez-vous
70 C$="O4G8A8G8F8E4C4G8A8G8F8E4C4" ' Sonnez les matines
80 D$="O4C4O3G4O4C2C4O3G4O4C2" ' Din, din, don
90 R$="R1R1"
100 T$="T160"
110 REM --- what the voices sing, a column each two bars
120 PRINT:FOR I=0 TO 2
130 PRINT "Voice";I+1;TAB(12+I*11);"Frere";TAB(23+I*11);"Dormez";TAB(34+I*11);"Sonnez";TAB(45+I*11);"Din"
140 NEXT I
150 REM --- notes wait in a queue, so the program ends before the music
160 PLAY T$+A$,T$+R$,T$+R$
170 PLAY B$,A$,R$
180 PLAY C$,B$,A$
190 PLAY D$,C$,B$
200 PLAY R$,D$,C$
210 PLAY R$,R$,D$
220 PRINT:PRINT "All is told; the machine plays on by itself. PLAY alone makes it silent."

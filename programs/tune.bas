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
110 LOCATE 0,4:PRINT "first voice"
120 PLAY T$+A$,T$+R$,T$+R$
130 LOCATE 0,5:PRINT "second voice"
140 PLAY B$,A$,R$
150 LOCATE 0,6:PRINT "third voice"
160 PLAY C$,B$,A$
170 PLAY D$,C$,B$
180 LOCATE 0,7:PRINT "the first voice ends"
190 PLAY R$,D$,C$
200 PLAY R$,R$,D$
210 PRINT:PRINT "Done."

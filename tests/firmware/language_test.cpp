// The language, told by small programs: each is loaded from a tape, then what stands in `typed` is typed, and
// what the screen shows below that is compared.
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "machine/tape_files.h"
#include "resources/resources.h"
#include "tests/temporary_folder.h"
#include "tests/typed_keys.h"
#include "tools/kiv_run_listing.h"
#include "tools/kiv_run_outputs.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

struct language_case {
    const char *name, *listing, *shown;
    const char *typed = "RUN\n";
};

const language_case cases[] = {
    {"FOR", R"(
10 FOR I=1 TO 3:PRINT I;:NEXT I:PRINT I
20 FOR I=3 TO 1 STEP -1:PRINT I;:NEXT:PRINT
30 FOR X=0 TO 1 STEP .25:PRINT X;:NEXT X:PRINT
40 FOR I=1 TO 2:FOR J=1 TO 2:PRINT I;J;:NEXT J,I:PRINT
50 FOR I=5 TO 1:PRINT "NO":FOR J=1 TO 2:NEXT J,I:PRINT "SKIPPED"
60 FOR I=32766 TO 32767:PRINT I;:NEXT:PRINT I
70 FOR I=1 TO 9:IF I=3 THEN I=7.5
80 PRINT I;:NEXT:PRINT
90 FOR K=1 TO 3:FOR L=1 TO 9:NEXT K:PRINT K)",
     " 1  2  3  4\n 3  2  1\n 0  .25  .5  .75  1\n 1  1  1  2  2  1  2  2\nSKIPPED\n 32766  32767  32768\n"
     " 1  2  7.5  8.5\n 4\nOk"},
    {"a loop begun anew that was jumped out of", R"(
10 FOR K=1 TO 3:IF K=2 THEN 20
15 NEXT
20 WHILE A<1:A=A+1:FOR J=.5 TO 1.5:FOR K=1 TO 2:PRINT J;K;:NEXT K:NEXT J:WEND:PRINT A
30 FOR K=1 TO 2:FOR K=5 TO 6:PRINT K;:NEXT:NEXT)",
     " .5  1  .5  2  1.5  1  1.5  2  1\n 5  6\nNEXT without FOR in 30\nOk\n30 FOR K=1 TO 2:FOR K=5 TO "
     "6:PRINT K;:NEXT:NEXT"},
    {"NEXT without FOR", "10 FOR I=1 TO 2:GOSUB 20\n20 NEXT I", "NEXT without FOR in 20\nOk\n20 NEXT I"},
    {"FOR without NEXT", "10 FOR I=2 TO 1\n20 END", "FOR without NEXT in 10\nOk\n10 FOR I=2 TO 1"},
    {"WHILE", R"(
10 WHILE A<3:A=A+1:B=0
20 WHILE B<2:B=B+1:PRINT A*10+B;:WEND:WEND:PRINT
30 WHILE 0:PRINT "NO":WHILE 1:WEND:WEND:PRINT "SKIPPED":WEND)",
     " 11  12  21  22  31  32\nSKIPPED\nWEND without WHILE in 30\nOk\n30 WHILE 0:PRINT \"NO\":WHILE "
     "1:WEND:WEND:PRINT \"SKIPPED\":WEND"},
    {"GOSUB", R"(
10 GOSUB 40:PRINT "BACK":ON 2 GOSUB 60,40,60:PRINT "ON"
20 ON 3 GOTO 50,50:ON 0 GOTO 50:PRINT "NEITHER"
30 ON 2 GOTO 20,70
40 FOR I=1 TO 9:PRINT "SUB";:RETURN
50 PRINT "NO":END
60 RETURN 50
70 GO SUB 40:GO TO 80
80 RETURN)",
     "SUBBACK\nSUBON\nNEITHER\nSUB\nRETURN without GOSUB in 80\nOk\n80 RETURN"},
    {"letters that meet", R"(
10 FORI=1TO3:PRINTI;:NEXTI:A=5:B=6:IFA=5ANDB=6THENPRINT"YES"ELSEPRINT"NO"
20 X1=1:X2=3:FORJ=X1TOX2STEPX1:PRINTJ;:NEXTJ:FORK=ATOB:PRINTK;:NEXT:DIMQ(5)
30 W$(0)="Z":IFW$(0)="Z"THENGOSUB70ELSEEND
40 ONAGOTO1,2,3,4,50
50 IFA$=""GOTO60
60 READA,B$:PRINTA;LEFT$(B$,2):DATA12,HELLO:IFNOTATHENPRINTAORB;A<BORC
65 FORMAT=3:FORCE=FACTOR+BOTTOM:IFFY=4:FORI=7:PRINT FORMAT;FORCE;IFFY;FORI:IFFY(1)=2:NEWTON=1:END
70 PRINT"SUB":RETURN)",
     " 1  2  3 YES\n 1  2  3  5  6 SUB\n 12 HE\n 14  0\n 3  0  4  7\nOk\nLIST 30-50\n"
     "30 W$(0)=\"Z\":IF W$(0)=\"Z\" THEN GOSUB 70 ELSE END\n40 ON A GOTO 1,2,3,4,50\n50 IF A$=\"\" GOTO "
     "60\nOk\n"
     "NEWS\nSyntax error\nOk\nLIST 70\n70 PRINT \"SUB\":RETURN\nOk",
     "RUN\nLIST 30-50\nNEWS\nLIST 70\n"},
    {"letters that meet, and FN",
     "10 DEF FN A(X)=X*2\n20 PRINTFN A(4):IFFN A(1)=2THENPRINTFNA(5)\n"
     "30 DEF FN AB(X)=X+1:C=1\n40 PRINTFN AB(4):IFFN AB(1)=2THENPRINTC",
     " 8\n 10\n 5\n 1\nOk"},
    {"HELP", "10 REM",
     "PRINT [USING \"format\";]value[;|,]...\nOk\nHELP ON\n"
     "ON n GOTO|GOSUB line[,...]  ON ERROR GOTO line  ON KEY|STOP GOSUB line[,...]\nOk\n"
     "HELP ELSE\nELSE: IF condition THEN statements [ELSE statements]\nOk\n"
     "HELP TO\nTO: FOR variable=first TO last [STEP n]\nOk\n"
     "HELP USING\nUSING: PRINT [USING \"format\";]value[;|,]...\nOk",
     "HELP PRINT\nHELP ON\nHELP ELSE\nHELP TO\nHELP USING\n"},
    {"endless recursion", "10 GOSUB 10", "Out of memory in 10\nOk\n10 GOSUB 10"},
    {"IF", R"(
10 FOR I=-1 TO 1
20 IF I<0 THEN PRINT "NEG";:IF I=0 THEN PRINT "NO" ELSE PRINT "ELSE":GOTO 40
30 IF I=0 THEN PRINT "ZERO" ELSE IF I THEN 50 ELSE PRINT "NO"
40 NEXT:PRINT "NO"
50 IF I=1 GOTO 60
60 IF "A"<"B" AND NOT 1=2 THEN PRINT "END": ELSE PRINT "NO")",
     "NEGELSE\nZERO\nEND\nOk"},
    {"operators", R"(
10 PRINT 1+2*3^2;(1+2)*3;-2^2;2^3^2;2^-1;7 MOD 3;-7 MOD 3;7\2;-7\2;7.6\2
20 PRINT NOT 0;5 AND 3;5 OR 3;5 XOR 3;5 EQV 3;5 IMP 3;1=1;1<>1;2>=2;1=>2
30 PRINT 32767+1;-32768-1;200*200;-200*-200;181*181;6/3;7/2;-(-32768)
40 PRINT &HFF;&HFFFF;&O17;1E3;.5E-3;1.5*2;10-.5;3>2.5;2.5<3;1/3)",
     " 19  9 -4  64  .5  1 -1  3 -3  4\n-1  1  7  6 -7 -5 -1  0 -1  0\n"
     " 32768 -32769  40000  40000  32761  2  3.5  32768\n"
     " 255 -1  15  1000  .0005  3  9.5 -1 -1  .333333333\nOk"},
    {"overflow of a word", "10 PRINT 40000 AND 1", "Overflow in 10\nOk\n10 PRINT 40000 AND 1"},
    {"division", "10 PRINT 1/0", "Division by zero in 10\nOk\n10 PRINT 1/0"},
    {"MOD 0", "10 PRINT 1 MOD 0", "Division by zero in 10\nOk\n10 PRINT 1 MOD 0"},
    {"strings", R"(
10 A$="KIV":B$=A$+" BASIC":PRINT B$;LEN(B$);LEN("")
20 PRINT LEFT$(B$,3);"|";RIGHT$(B$,5);"|";MID$(B$,2,3);"|";MID$(B$,8);"|";MID$(B$,20);"|";LEFT$(B$,0);"|"
30 PRINT INSTR(B$,"I");INSTR(3,B$,"I");INSTR(B$,"X");INSTR(B$,"");INSTR(20,B$,"I")
40 PRINT ASC("A");CHR$(66);STR$(-5);STR$(5);VAL("12.5X");VAL(" - 3");VAL("&H1F");VAL("ABC")
50 PRINT STRING$(3,"*A");STRING$(2,66);SPACE$(2);"|";HEX$(255);HEX$(-1);OCT$(8)
60 MID$(B$,1,2)="ab":MID$(B$,9)="QQQ":PRINT B$:PRINT "A"="A";"A"<"AB";"B">"AB";"">"A")",
     "KIV BASIC 9  0\nKIV|BASIC|IV |IC|||\n 2  8  0  1  0\n 65 B-5 5 12.5 -3  31  0\n"
     "***BB  |FFFFFF10\nabV BASIQ\n-1 -1 -1  0\nOk"},
    {"heap", R"(
10 DIM S$(20):FOR I=1 TO 400:J=I MOD 21:S$(J)=STRING$(I MOD 200,65+J):T$=S$(J)+"X":NEXT
20 FOR J=0 TO 20:A$=S$(J):FOR K=1 TO LEN(A$) STEP 30:IF MID$(A$,K,1)<>CHR$(65+J) THEN PRINT "BAD";J
30 NEXT K,J:SWAP S$(1),S$(2):ERASE S$:F=FRE(""):PRINT T$="B"+"X";LEN(T$)
40 FOR I=1 TO 260:U$=LEFT$(U$+CHR$(65+I MOD 26),250):V$=U$+"":NEXT:PRINT LEN(U$);LEFT$(V$,3);F-FRE(0))",
     " 0  1\n 250 BCD 506\nOk"},
    {"string too long", "10 A$=STRING$(200,65):A$=A$+A$",
     "String too long in 10\nOk\n10 A$=STRING$(200,65):A$=A$+A$"},
    {"string and number", "10 A$=5", "Type mismatch in 10\nOk\n10 A$=5"},
    {"number and string", "10 A=1+\"A\"", "Type mismatch in 10\nOk\n10 A=1+\"A\""},
    {"WHILE without WEND", "10 WHILE A\n20 END", "WHILE without WEND in 10\nOk\n10 WHILE A"},
    {"an error's place", "10 PRINT 1:IF A=0 THEN PRINT 2:B=B+7/A:PRINT 3",
     " 1\n 2\nDivision by zero in 10\nOk\n10 PRINT 1:IF A=0 THEN PRINT 2:B=B+7/*:PRINT 3", "RUN\n\\p*"},
    {"the place of what is missing", "10 PRINT 1:A=(5+3:PRINT X",
     " 1\nSyntax error in 10\nOk\n10 PRINT 1:A=(5+3*PRINT X", "RUN\n\\p*"},
    {"the place behind a blank", "10 FOR I=1 TO 3:NEXT JK",
     "NEXT without FOR in 10\nOk\n10 FOR I=1 TO 3:NEXT *K", "RUN\n\\p*"},
    {"the place in DATA", "20 DATA 1,Q,X7\n30 READ A,B$,C", "Syntax error in 20\nOk\n20 DATA 1,Q,*7",
     "RUN\n\\p*"},
    {"the place in a function's own line", "10 DEF FNA(X)=1/X\n20 PRINT 1;:PRINT FNA(0)",
     " 1\nDivision by zero in 20\nOk\n20 PRINT 1;:*RINT FNA(0)", "RUN\n\\p*"},
    {"a place some rows above the line's end", R"(
10 A$="X":PRINT A$+5:PRINT "0123456789012345678901234567890123456789012345678901234567890123456789":PRINT "012345678901234567890123456789")",
     "Type mismatch in 10\nOk\n"
     "10 A$=\"X\":PRINT A$+*:PRINT \"0123456789012345678901234567890123456789012345678901\n"
     "234567890123456789\":PRINT \"012345678901234567890123456789\"",
     "RUN\n\\p*"},
    {"an error mended in its place", "10 A$=\"X\":PRINT 1+A$:PRINT 2",
     "Type mismatch in 10\nOk\n10 A$=\"X\":PRINT 1+B!:PRINT 2\nRUN\n 1\n 2\nOk", "RUN\n\\pB!\nRUN\n"},
    {"RETURN on a line that stays as it is", "10 A=7:GOTO 20\n20 GOTO 30\n30 PRINT 1/0:GOTO 10",
     "Division by zero in 30\nOk\n30 PRINT 1/0:GOTO 10\nLIST 20\n20 GOTO 30\nOk\n20 GOTO 30\nPRINT A\n "
     "7\nOk\n"
     "20 GOTO 10\nPRINT A\n 0\nOk",
     "RUN\n\\p\nLIST 20\n20 GOTO 30\nPRINT A\n20 GOTO 10\nPRINT A\n"},
    {"RESUME goes back to READ", R"(
10 ON ERROR GOTO 80
20 READ A:PRINT "ON";A:END
30 REM 34567890123456789012345678901234567890123456789012345678901234567890
40 REM 34567890123456789012345678901234567890123456789012345678901234567890
50 REM 34567890123456789012345678901234567890123456789012345678901234567890
60 REM 34567890123456789012345678901234567890123456789012345678901234567890
70 DATA X:PRINT "NO"
80 PRINT ERR;ERL;:RESUME NEXT)",
     " 2  20 ON 0\nOk"},
    {"powers at the end of the range",
     "10 PRINT .5^128;2^-128=.5^128;.25^64=.5^128;.5^128.5;2.3^-255;2^-127.5>.5^128\n20 PRINT 2^128",
     " 2.93873588E-39 -1 -1  0  0 -1\nOverflow in 20\nOk\n20 PRINT 2^128"},
    {"arrays", R"(
10 DIM A(3),B(2,3),C%(5),D$(1,1,1):A(3)=1.5:B(2,3)=7:C%(5)=2.5:D$(1,0,1)="X"
20 B(0,1)=4:PRINT A(3);A(0);B(2,3);B(0,1);C%(5);D$(1,0,1);D$(0,0,0);E(10)
30 ERASE A,B:PRINT C%(5);D$(1,0,1);A(10):DIM B(1):I=1:B(I)=B(I)+A(B(0)+I-1)+5:PRINT B(1)
40 OPTION BASE 0:SWAP B(0),B(1):PRINT B(0);B(1):DIM C%(2))",
     " 1.5  0  7  4  3 X 0\n 3 X 0\n 5\n 5  0\nDuplicate definition in 40\nOk\n40 OPTION BASE 0:SWAP "
     "B(0),B(1):PRINT B(0);B(1):DIM C%(2)"},
    {"subscript", "10 PRINT A(11)", "Subscript out of range in 10\nOk\n10 PRINT A(11)"},
    {"too few subscripts", "10 DIM A(2,2):PRINT A(1)",
     "Subscript out of range in 10\nOk\n10 DIM A(2,2):PRINT A(1)"},
    {"negative subscript", "10 PRINT A(-1)", "Subscript out of range in 10\nOk\n10 PRINT A(-1)"},
    {"array beyond memory", "10 DIM A(3000),B(3000)", "Out of memory in 10\nOk\n10 DIM A(3000),B(3000)"},
    {"types", R"(
10 DEFINT A-C,I:A=2.5:X=2.5:PRINT A;X;A!:DEFSTR S:S="T":PRINT S+"X";S1;"|"
20 LONGNAME=1:LONGNAMES=2:L.1=3:PRINT LONGNAME;LONGNAMES;L.1:A$="S":A%=1:A=2:A(1)=3:PRINT A$;A%;A;A(1)
30 I=40000)",
     " 3  2.5  0\nTX|\n 1  2  3\nS 1  2  3\nOverflow in 30\nOk\n30 I=40000"},
    {"names of one kind of number", R"(
10 DEFSNG A:DEFDBL B:LET A=1/3:LET B=A:PRINT A=B;A!=A;B#=B;CSNG(B);CDBL(2);CSNG("X"))",
     "-1  0  0  .333333333  2\nType mismatch in 10\nOk\n10 DEFSNG A:DEFDBL B:LET A=1/3:LET B=A:PRINT "
     "A=B;A!=A;B#=B;CSNG(B);CDBL(2);CSNG(\n\"X\")"},
    {"MOTOR", "10 MOTOR ON:PRINT INP(&H30) AND 0;:MOTOR OFF:MOTOR:MOTOR 0:MOTOR 1:MOTOR 2:MOTOR A$",
     " 0\nType mismatch in 10\nOk\n10 MOTOR ON:PRINT INP(&H30) AND 0;:MOTOR OFF:MOTOR:MOTOR 0:MOTOR 1:MOTOR "
     "2:MOTOR\n A$"},
    {"DEF FN", R"(
10 DEF FNA(X,Y)=X*10+Y:DEF FNB$(A$)=A$+"!"+A$:DEF FN C=Z+1:X=7:A$="KEPT"
20 PRINT FNA(2,3);FNA(FNA(1,1),5);FNB$("AB");FN C;X;A$:Y=1:PRINT FNA(Y,X)
30 PRINT FNB$(FNB$("X")):PRINT FND(1))",
     " 23  115 AB!AB 1  7 KEPT\n 17\nX!X!X!X\nUndefined user function in 30\nOk\n30 PRINT "
     "FNB$(FNB$(\"X\")):PRINT FND(1)"},
    {"DEF FN that calls itself", "10 DEF FNA(X)=FNA(X+1)\n20 PRINT FNA(1)",
     "Formula too complex in 20\nOk\n20 PRINT FNA(1)"},
    {"READ", R"(
10 READ A,B$,C,D$,E:PRINT A;B$;C;D$;"|";E:RESTORE 40:READ A$,B:PRINT A$;B
20 RESTORE:READ A:PRINT A:READ A$,A$,A$,A$,A$,A,A,A
30 DATA 1," X,Y",-3.5E1, two words ,&HF
40 DATA "A:B",2:DATA 9)",
     " 1  X,Y-35 two words| 15\nA:B 2\n 1\nOut of DATA in 20\nOk\n20 RESTORE:READ A:PRINT A:READ "
     "A$,A$,A$,A$,A$,A,A,A"},
    {"READ of what is no number", "10 READ A\n20 DATA X", "Syntax error in 20\nOk\n20 DATA X"},
    {"INPUT", R"(
10 INPUT "NAME";N$:INPUT A,B$:PRINT N$;A;B$:INPUT "NO MARK",C:LINE INPUT "LINE ";L$
20 PRINT C;L$:PRINT INPUT$(2))",
     "NAME? KIV\n? 1\n?Redo from start\n? X,2\n?Redo from start\n? 3, FOUR\nKIV 3 FOUR\nNO MARK5\n"
     "LINE A,\"B\"\n 5 A,\"B\"\nXY\nOk",
     "RUN\nKIV\n1\nX,2\n3, FOUR\n5\nA,\"B\"\nXY"},
    {"PRINT", R"(
10 PRINT 1;-1,2:PRINT TAB(5);"X";TAB(3);"Y":PRINT "A";SPC(3);"B";:PRINT
20 PRINT USING "##.#";2.25:PRINT "A" "B" 1 2:? 1000000000;1E10;1E-5;-.5
30 FOR I=1 TO 7:PRINT I,:NEXT:PRINT:PRINT TAB(5);:PRINT POS(0);)",
     " 1 -1          2\n     X\n   Y\nA   B\n 2.3\nAB 1  2\n 1E+09  1E+10  1E-05 -.5\n"
     " 1             2             3             4             5\n 6             7\n      5\nOk"},
    {"ON ERROR", R"(
10 ON ERROR GOTO 60
20 PRINT 1/0:PRINT "NEXT"
30 ERROR 200:PRINT "AGAIN"
40 IF A=0 THEN ERROR 5 ELSE PRINT "DONE":ON ERROR GOTO 0
50 PRINT LEFT$("A",-1)
60 PRINT ERR;ERL;:IF ERL=40 THEN A=1:RESUME
70 IF ERR=200 THEN RESUME 40
80 RESUME NEXT)",
     " 11  20 NEXT\n 200  30  5  40 DONE\nIllegal function call in 50\nOk\n50 PRINT LEFT$(\"A\",-1)"},
    {"ON ERROR GOTO 0 in the handler", "10 ON ERROR GOTO 30\n20 PRINT 1/0\n30 ON ERROR GOTO 0",
     "Division by zero in 20\nOk\n20 PRINT 1/0"},
    {"RESUME without error", "10 RESUME", "RESUME without error in 10\nOk\n10 RESUME"},
    {"no RESUME", "10 ON ERROR GOTO 20:ERROR 3\n20 PRINT ERR", " 3\nNo RESUME\nOk"},
    {"STOP and CONT", "10 FOR I=1 TO 2:STOP:PRINT I\n20 NEXT",
     "Break in 10\nOk\nPRINT I*10\n 10\nOk\nCONT\n 1\n"
     "Break in 10\nOk\n5\nCONT\nCan't continue\nOk",
     "RUN\nPRINT I*10\nCONT\n5\nCONT\n"},
    {"END and CONT", "10 PRINT 1:END:PRINT 2\n20 PRINT 3",
     " 1\nOk\nCONT\n 2\n 3\nOk\nCONT\nCan't continue\nOk", "RUN\nCONT\nCONT\n"},
    {"no CONT behind an error", "10 STOP\n20 PRINT 1/0",
     "Break in 10\nOk\nCONT\nDivision by zero in 20\nOk\n20 PRINT 1/0\nCONT\nCan't continue\nOk",
     "RUN\nCONT\n\\bCONT\n"},
    {"loops that an error left", "10 FOR I=1 TO 3\n20 IF I=2 AND J=0 THEN PRINT 1/0\n30 PRINT I;:NEXT",
     " 1\nDivision by zero in 20\nOk\n20 IF I=2 AND J=0 THEN PRINT 1/0\nJ=1:GOTO 20\n 2  3\nOk\nGOTO 30\n "
     "4\nNEXT without FOR in 30\nOk\n30 PRINT I;:NEXT",
     "RUN\n\\bJ=1:GOTO 20\nGOTO 30\n"},
    {"frames full of what an error left", "10 GOSUB 10",
     "Out of memory in 10\nOk\n10 GOSUB 10\nFOR I=1 TO 2:PRINT I;:NEXT\n 1  2\nOk",
     "RUN\n\\bFOR I=1 TO 2:PRINT I;:NEXT\n"},
    {"a line that AUTO asked for, with an error", "10 AUTO 100", "100 FN1=1\nSyntax error in 100\nOk",
     "RUN\nFN1=1\n"},
    {"a typed line with an error", "", "Syntax error in 10\nOk\nPRINT 1\n 1\nOk", "10 FN1=1\nPRINT 1\n"},
    {"ON KEY", R"(
10 ON KEY GOSUB 100,,300:KEY(1) ON:KEY(2) ON:KEY(3) ON
20 A$=INPUT$(1)
30 PRINT "MAIN ";A$:KEY(1) STOP:KEY(3) OFF
40 A$=INPUT$(1)
50 PRINT "STOPPED ";A$:KEY(1) ON
60 PRINT "END":END
100 PRINT "ONE":RETURN
300 PRINT "THREE":RETURN)",
     "THREE\nONE\nMAIN x\nSTOPPED y\nONE\nEND\nOk\nLIST  60\n60 PRINT \"END\":END\nOk",
     "RUN\n\\p\\f3\\f1\\f2\\px\\p\\f1\\py\\p\\f1 60\n"},
    {"STOP key", "10 GOTO 10", "Break in 10\nOk", "RUN\n\\p\\b"},
    {"machine", R"(
10 POKE &HA000,201:POKE 40961,7:PRINT PEEK(40960);PEEK(&HA001);INP(&H71):DEF USR1=&HA000:PRINT USR1(5)
20 OUT &H71,255:WAIT &H71,255:A=VARPTR(X):X=258:PRINT PEEK(A);PEEK(A+1);PEEK(A+2)
30 CLEAR 100,&HE000:POKE &HE000,1:DIM A(2500):PRINT X;FRE(0)<10000:PRINT USR(1))",
     " 201  7  255\n 5\n 0  2  1\n 0 -1\nIllegal function call in 30\nOk\n30 CLEAR 100,&HE000:POKE "
     "&HE000,1:DIM A(2500):PRINT X;FRE(0)<10000:PRINT USR(1)"},
    {"TRON", "10 TRON:A=1\n20 PRINT A:TROFF\n30 PRINT", "[20] 1\n\nOk"},
    {"undefined line", "10 GOTO 20", "Undefined line number in 10\nOk\n10 GOTO 20"},
    {"what no word begins", "10 X=1:(", "Syntax error in 10\nOk\n10 X=1:("},
    {"missing operand", "10 PRINT 1+", "Missing operand in 10\nOk\n10 PRINT 1+"},
    {"RUN clears, RUN line, END", "10 PRINT A:A=5\n20 PRINT \"TWENTY\":END\n30 PRINT 30",
     " 0\nTWENTY\nOk\nRUN 20\nTWENTY\nOk\nPRINT A\n 0\nOk", "RUN\nRUN 20\nPRINT A\n"},
    {"LIST", R"(
10 for i=1to10:print"x";i:next:'rem here
20 if a=1 and b<>2 or not c then ?"A";:go to 10 else if x$="Q" then 30 else print tab(5)
30 line(0,0)-(10,10),2,bf:x=-1:y=(a+1)*-b:data  a, "b:c" ,3
40 on x goto 10,20:dim a(10):def fnq(x)=x^2:print 1.50;3.14159265358;007;&hff;1e5;.5;0.5;3%;65535
50 print mid$(a$,2)a mod b\c;"a";rnd(1):rem  as  It stands
60 goto10:x=y  =  z:resume next)",
     "10 FOR I=1 TO 10:PRINT \"x\";I:NEXT 'rem here\n"
     "20 IF A=1 AND B<>2 OR NOT C THEN PRINT \"A\";:GOTO 10 ELSE IF X$=\"Q\" THEN 30 ELSE\nPRINT TAB(5)\n"
     "30 LINE (0,0)-(10,10),2,BF:X=-1:Y=(A+1)*-B:DATA a, \"b:c\" ,3\n"
     "40 ON X GOTO 10,20:DIM A(10):DEF FNQ(X)=X^2:PRINT 1.50;3.14159265358;007;&HFF;1E\n5;"
     ".5;0.5;3%;65535\n50 PRINT MID$(A$,2) A MOD B¥C;\"a\";RND(1):REM  as  It stands\nOk\n"
     "LIST 60-\n60 GOTO 10:X=Y=Z:RESUME NEXT\nOk\nLIST -10\n10 FOR I=1 TO 10:PRINT \"x\";I:NEXT 'rem "
     "here\nOk",
     "LIST 10-50\nLIST 60-\nLIST -10\n"},
    {"editing", "10 PRINT 1\n30 GOTO 20\n20 END",
     " 1\nOk\n20\n15 PRINT 15:GOTO 40\n40 PRINT 40:END\n10\nLIST\n15 PRINT 15:GOTO 40\n30 GOTO 20\n"
     "40 PRINT 40:END\nOk\nRUN\n 15\n 40\nOk\nNEW\nOk\nLIST\nOk",
     "RUN\n20\n15 PRINT 15:GOTO 40\n40 PRINT 40:END\n10\nLIST\nRUN\nNEW\nLIST\n"},
    {"direct lines", "",
     " 1  2  3\nOk\nNEXT\nNEXT without FOR\nOk\n"
     "GOTO 10\nUndefined line number\nOk\nDEF FNA(X)=X\nIllegal direct\nOk",
     "FOR I=1 TO 3:PRINT I;:NEXT:PRINT A$\nNEXT\nGOTO 10\nDEF FNA(X)=X\n"},
    {"deep parentheses",
     "10 PRINT 1+(2*(3+(4*(5+(6*(7+(8*(9+(10*(11+12))))))))))\n20 PRINT 1+("
     "1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+("
     "1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1",
     " 92159\nFormula too complex in 20\nOk\n20 PRINT "
     "1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+\n(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+"
     "(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1\n+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1"},
    {"printers and disks", "10 LPRINT 1", "Device unavailable in 10\nOk\n10 LPRINT 1"},
};

class Language : public testing::TestWithParam<bool> {
  protected:
    static inline kiv_machine *ready = new kiv_machine;
    static inline z80_cpu ready_cpu;
    temporary_folder folder;

    static void power_on(bool zun) {
        register_program_resources();
        machine_init(
            machine, [] {}, [] {});
        host_callbacks_listen({[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}});
        ASSERT_EQ(load_rom_images(KIV_FIRMWARE_DIR), "");
        machine.boot_rom = uint8_t{zun};
        machine.timing_reset();
        z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
        run(60);
        *ready = machine;
        ready_cpu = main_cpu;
    }
    static bool run(uint64_t frames) {
        for (uint32_t i = 0; frames > 0; ++i) {
            const pass_outcome outcome = machine_pass(i, true);
            if (outcome == pass_outcome::stopped) {
                ADD_FAILURE() << "the processor stopped at 0x" << std::hex << main_cpu.trace_pc;
                return false;
            }
            if (outcome == pass_outcome::frame) --frames;
        }
        return true;
    }
    static bool type(const std::string &text) {
        typist keys;
        add_keys(keys, text);
        for (uint64_t frame = 0; keys.waiting() != 0; ++frame) {
            keys.at_frame(frame);
            if (!run(1)) return false;
        }
        return true;
    }
    // Runs until the screen has stood still for long: the rows behind the first one that is `after`.
    static std::string shown(const std::string &after) {
        std::string before;
        for (int still = 0; still < (before.find("\nOk ") != before.npos ? 8 : 100);
             still = text_screen() == before ? still + 1 : 0) {
            before = text_screen();
            if (!run(5)) break;
        }
        std::istringstream rows(before);
        std::string text;
        bool found = false;
        for (std::string row; std::getline(rows, row);) {
            row.resize(row.find_last_not_of(' ') + 1);
            if (found) text += row + '\n';
            found |= row == after;
        }
        text.resize(text.find_last_not_of('\n') + 1);
        return text;
    }
};

TEST_P(Language, ProgramsShowWhatTheyShould) {
    power_on(GetParam());
    for (const language_case &c : cases) {
        SCOPED_TRACE(c.name);
        machine = *ready;
        main_cpu = ready_cpu;
        const std::string typed = c.typed, first = typed.substr(0, typed.find('\n'));
        std::string keys = "CLS\n" + typed;
        if (*c.listing) {
            put_file(folder / "listing.cmt", listing_tape(c.listing, "listing"));
            ASSERT_TRUE(cassette_load_tape(folder / "listing.cmt"));
            keys = "CLOAD\n\\p" + keys;
        }
        if (!type(keys)) break;
        EXPECT_EQ(shown(first), c.shown);
    }
}
INSTANTIATE_TEST_SUITE_P(Rom, Language, testing::Values(true, false),
                         [](const auto &row) { return row.param ? "zun" : "nbasic"; });

} // namespace

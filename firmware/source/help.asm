; HELP: the words by subject, or the syntax of one.
;
;   do_help         the statement. The word behind it is taken from the line as typed (line_text), so that it
;                   needs no tokens; ends at ready.
;
; A subject begins with 01h; the entries behind it, up to the next, are its words. An entry begins with its word,
; in capitals; bit 7 marks its last character; codes below 20h stand for help_phrases.

HELP_COLUMN     EQU 11          ; where a subject's words begin

do_help:
        LD HL,ready
        PUSH HL
        LD HL,line_text
_find:  LD DE,help_name         ; behind the word HELP itself
        PUSH HL
_same:  LD A,(DE)
        OR A
        JR Z,_behind
        LD A,(HL)
        OR A
        JR Z,_none
        CALL upper
        EX DE,HL
        CP (HL)
        EX DE,HL
        INC HL
        INC DE
        JR Z,_same
        POP HL
        INC HL
        JR _find
_none:  POP HL
        JR help_subjects
_behind:
        POP DE
_blank: LD A,(HL)
        INC HL
        CP " "
        JR Z,_blank
        CALL upper
        CALL help_letter
        JR C,help_subjects
        DEC HL
        JR help_word
help_name:
        DEFB "HELP",0

; All subjects.
help_subjects:
        CALL console_fresh
        LD HL,help_texts
_entry: LD A,(HL)
        OR A
        JR Z,_end
        DEC A
        JR NZ,_word
        CALL console_fresh
        INC HL
_title: CALL help_character
        JR NC,_title
        CALL help_column
        JR _entry
_word:  PUSH HL                 ; its length
        LD B,0
_count: LD A,(HL)
        INC HL
        INC B
        CALL help_letter
        JR C,_counted
        DEC HL
        BIT 7,(HL)
        INC HL
        JR Z,_count
        INC B
_counted:
        POP HL
        CALL console_column
        ADD A,B
        LD C,A
        LD A,(screen_columns)
        CP C
        JR NC,_fits
        CALL console_newline
        CALL help_column
_fits:  DEC B
_letter:
        LD A,(HL)
        AND 07Fh
        CALL console_out
        INC HL
        DJNZ _letter
        LD A," "
        CALL console_out
        DEC HL
        CALL help_skip
        JR _entry
_end:   CALL console_fresh
        LD HL,help_hint
        JP console_text
help_column:
        LD A," "
        CALL console_out
        CALL console_column
        CP HELP_COLUMN
        JR C,help_column
        RET

; The entries of the word at HL.
help_word:
        LD C,0                  ; entries found
        LD DE,help_texts
_entry: LD A,(DE)
        OR A
        JR Z,_end
        CP 1
        JR Z,_next
        PUSH HL
        PUSH DE
_same:  LD A,(DE)
        CALL help_letter
        LD B,A
        SBC A,A                 ; FFh: the entry's word ends
        OR A
        LD A,(HL)
        JR NZ,_last
        CALL upper
        CP B
        LD A,(DE)
        INC HL
        INC DE
        JR NZ,_other
        RLA
        JR NC,_same
        LD A,(HL)               ; its last character was the entry's
_last:  CALL upper
        CALL help_letter
        JR NC,_other            ; the word at HL goes on
        POP HL
        PUSH HL
        CALL console_fresh
        INC C
_show:  CALL help_character
        JR NC,_show
_other: POP DE
        POP HL
_next:  EX DE,HL
        CALL help_skip
        EX DE,HL
        JR _entry
_end:   CALL console_fresh
        INC C
        DEC C
        RET NZ
        LD HL,help_unknown
        JP console_text

; HL moves behind an entry. Keeps all else.
help_skip:
        BIT 7,(HL)
        INC HL
        JR Z,help_skip
        RET

; Shows the character or phrase at HL and moves on; carry when it was the last. Keeps BC, DE.
help_character:
        LD A,(HL)
        AND 07Fh
        CP " "
        JR NC,_plain
        PUSH HL
        PUSH BC
        LD HL,help_phrases
        SUB 2
        JR Z,_phrase
        LD B,A
_skip:  CALL help_skip
        DJNZ _skip
_phrase:
        CALL help_character
        JR NC,_phrase
        POP BC
        POP HL
        JR _on
_plain: CALL console_out
_on:    LD A,(HL)
        INC HL
        RLA
        RET

; Carry unless A, bit 7 aside, belongs to a word. A = the character.
help_letter:
        AND 07Fh
        CP "$"
        RET Z
        CP "A"
        RET C
        CP "Z" + 1
        CCF
        RET

help_hint:
        DEFB "HELP word tells its syntax.",0
help_unknown:
        DEFB "No such word. HELP lists them.",0

; Phrases. They may hold others.
H_XY            EQU 2
H_LINE          EQU 3
H_N             EQU 4
H_A             EQU 5
H_COLOUR        EQU 6
H_NAME          EQU 7
H_ADDRESS       EQU 8
H_STATEMENTS    EQU 9
H_MORE          EQU 10
H_VARIABLE      EQU 11
H_FALSE         EQU 12
H_VALUE         EQU 13
H_OPEN          EQU 14
H_COMMA         EQU 15
H_QUOTED        EQU 16
H_TEXT          EQU 17
H_A_S           EQU 18
H_DEF           EQU 19
H_LINE_OR_NOT   EQU 20
H_OR            EQU 21
H_SWITCH        EQU 22
H_THEN          EQU 23
H_PRINTED       EQU 24
H_TO            EQU 25
help_phrases:
        DEFB "(x,y",")"+80h
        DEFB "lin","e"+80h
        DEFB "(n",")"+80h
        DEFB "(",H_A_S,")"+80h
        DEFB H_COMMA,"colour","]"+80h
        DEFB H_OPEN,H_QUOTED,"]"+80h
        DEFB "addres","s"+80h
        DEFB "statement","s"+80h
        DEFB H_COMMA,"...","]"+80h
        DEFB "variabl","e"+80h
        DEFB "conditio","n"+80h
        DEFB "valu","e"+80h
        DEFB " ","["+80h
        DEFB "[",","+80h
        DEFB "\"name",022h+80h
        DEFB "tex","t"+80h
        DEFB "a","$"+80h
        DEFB " DE","F"+80h
        DEFB H_OPEN,H_LINE,"]"+80h
        DEFB "o","r"+80h
        DEFB "ON|OF","F"+80h
        DEFB " ",H_FALSE," THEN ",H_STATEMENTS,H_OPEN,"ELSE ",H_STATEMENTS,"]"+80h
        DEFB H_OPEN,"USING \"f",H_OR,"mat\";]",H_VALUE,"[;|,]..","."+80h
        DEFB " ",H_VARIABLE,"=first TO last",H_OPEN,"STEP n","]"+80h

help_texts:
        DEFB 1,"Progra","m"+80h
        DEFB "RUN",H_OPEN,H_LINE,"|",H_QUOTED,"]"+80h
        DEFB "LIST",H_LINE_OR_NOT,"[-[",H_LINE,"]","]"+80h
        DEFB "NE","W"+80h
        DEFB "AUTO",H_OPEN,H_LINE,H_COMMA,"step]","]"+80h
        DEFB "RENUM",H_OPEN,"new",H_COMMA,"old",H_COMMA,"step]]","]"+80h
        DEFB "DELETE",H_LINE_OR_NOT,"-[",H_LINE,"]"+80h
        DEFB "EDIT ",H_LINE+80h
        DEFB "CON","T"+80h
        DEFB "CLEAR",H_OPEN,",",H_ADDRESS,"]"+80h
        DEFB "REM ",H_TEXT,"  ",H_OR,"  ' ",H_TEXT+80h
        DEFB "TRO","N"+80h
        DEFB "TROF","F"+80h
        DEFB 1,"Tap","e"+80h
        DEFB "CSAVE ",H_QUOTED+80h
        DEFB "CLOAD",H_NAME," (CLOAD? compares",")"+80h
        DEFB "SAVE ",H_QUOTED+80h
        DEFB "LOAD",H_NAME+80h
        DEFB "MERGE",H_NAME+80h
        DEFB "BSAVE ",H_QUOTED,",",H_ADDRESS,",bytes",H_COMMA,"start","]"+80h
        DEFB "BLOAD",H_NAME,H_COMMA,"R","]"+80h
        DEFB "MOTOR",H_OPEN,H_SWITCH,"]"+80h
        DEFB 1,"Flo","w"+80h
        DEFB "GOTO ",H_LINE+80h
        DEFB "GOSUB ",H_LINE+80h
        DEFB "RETURN",H_LINE_OR_NOT+80h
        DEFB "IF",H_THEN+80h
        DEFB "THEN: IF",H_THEN+80h
        DEFB "ELSE: IF",H_THEN+80h
        DEFB "FOR",H_TO+80h
        DEFB "TO: FOR",H_TO+80h
        DEFB "STEP: FOR",H_TO+80h
        DEFB "NEXT",H_OPEN,H_VARIABLE,H_MORE,"]"+80h
        DEFB "WHILE ",H_FALSE+80h
        DEFB "WEN","D"+80h
        DEFB "ON n GOTO|GOSUB ",H_LINE,H_MORE,"  ON ERROR GOTO ",H_LINE,"  ON KEY|STOP GOSUB ",H_LINE,H_MORE+80h
        DEFB "ERROR ","n"+80h
        DEFB "RESUME",H_OPEN,"NEXT|",H_LINE,"]"+80h
        DEFB "STO","P"+80h
        DEFB "EN","D"+80h
        DEFB 1,"Dat","a"+80h
        DEFB "LET ",H_VARIABLE,"=",H_VALUE+80h
        DEFB "DIM a(n",H_MORE,")",H_MORE+80h
        DEFB "DATA ",H_VALUE,H_MORE+80h
        DEFB "READ ",H_VARIABLE,H_MORE+80h
        DEFB "RESTORE",H_LINE_OR_NOT+80h
        DEFB "INPUT",H_OPEN,"\"",H_TEXT,"\";]",H_VARIABLE,H_MORE+80h
        DEFB "LINE INPUT",H_OPEN,"\"",H_TEXT,"\";]",H_A_S+80h
        DEFB "SWAP a,","b"+80h
        DEFB "ERASE a",H_MORE+80h
        DEFB "DEF FNa(x)=",H_VALUE+80h
        DEFB "DEFINT a[-b]",H_MORE," ",H_DEF,"SNG",H_DEF,"DBL",H_DEF,"ST","R"+80h
        DEFB "OPTION BASE 0|","1"+80h
        DEFB "RANDOMIZE",H_OPEN,"n","]"+80h
        DEFB 1,"Scree","n"+80h
        DEFB "PRINT",H_PRINTED+80h
        DEFB "USING: PRINT",H_PRINTED+80h
        DEFB "TAB",H_N+80h
        DEFB "SPC",H_N+80h
        DEFB "LOCATE x,y",H_COMMA,"curs",H_OR,"]"+80h
        DEFB "COLOR",H_OPEN,H_TEXT,"]",H_COMMA,"function]",H_COMMA,"background","]"+80h
        DEFB "CLS",H_OPEN,"n","]"+80h
        DEFB "WIDTH 80|40,25|2","0"+80h
        DEFB "CONSOLE first,rows,keys,colou","r"+80h
        DEFB "KEY n,",H_A_S,"|LIST|",H_SWITCH+80h
        DEFB "INKEY","$"+80h
        DEFB "CSRLI","N"+80h
        DEFB "POS(0",")"+80h
        DEFB 1,"Graphic","s"+80h
        DEFB "PSET ",H_XY,H_COLOUR+80h
        DEFB "PRESET ",H_XY+80h
        DEFB "LINE",H_OPEN,H_XY,"]-",H_XY,H_COLOUR,H_COMMA,"B|BF","]"+80h
        DEFB "CIRCLE ",H_XY,",r",H_COLOUR,H_COMMA,"from,to,ratio","]"+80h
        DEFB "PAINT ",H_XY,H_COLOUR,H_COMMA,"b",H_OR,"der","]"+80h
        DEFB "DRAW ",H_A_S,": U D L R E F G H M B N C S ","A"+80h
        DEFB "GET@ ",H_XY,"-",H_XY,",","a"+80h
        DEFB "PUT@ ",H_XY,",a",H_COMMA,"PSET|PRESET|AND|OR|XOR","]"+80h
        DEFB "POINT",H_XY+80h
        DEFB "PCG code,",H_A_S," (16 hex digits",")"+80h
        DEFB 1,"Soun","d"+80h
        DEFB "BEE","P"+80h
        DEFB "SOUND channel,hertz",H_COMMA,"length","]"+80h
        DEFB "PLAY ",H_A_S,H_COMMA,"b$",H_COMMA,"c$]]: A-G # + - . R O < > L T ","N"+80h
        DEFB 1,"Number","s"+80h
        DEFB "ABS",H_N+80h
        DEFB "SGN",H_N+80h
        DEFB "INT",H_N+80h
        DEFB "FIX",H_N+80h
        DEFB "CINT",H_N+80h
        DEFB "SQR",H_N+80h
        DEFB "SIN",H_N+80h
        DEFB "COS",H_N+80h
        DEFB "TAN",H_N+80h
        DEFB "ATN",H_N+80h
        DEFB "EXP",H_N+80h
        DEFB "LOG",H_N+80h
        DEFB "RND",H_N+80h
        DEFB "MOD: a MOD ","b"+80h
        DEFB 1,"String","s"+80h
        DEFB "LEFT$(",H_A_S,",n",")"+80h
        DEFB "RIGHT$(",H_A_S,",n",")"+80h
        DEFB "MID$(",H_A_S,",n",H_COMMA,"m]",")"+80h
        DEFB "LEN",H_A+80h
        DEFB "VAL",H_A+80h
        DEFB "STR$",H_N+80h
        DEFB "ASC",H_A+80h
        DEFB "CHR$",H_N+80h
        DEFB "HEX$",H_N+80h
        DEFB "OCT$",H_N+80h
        DEFB "STRING$(n,",H_A_S,")"+80h
        DEFB "SPACE$",H_N+80h
        DEFB "INSTR([n,]",H_A_S,",b$",")"+80h
        DEFB "INPUT$",H_N+80h
        DEFB 1,"Machin","e"+80h
        DEFB "PEEK(",H_ADDRESS,")"+80h
        DEFB "POKE ",H_ADDRESS,",",H_VALUE+80h
        DEFB "INP(p",H_OR,"t",")"+80h
        DEFB "OUT p",H_OR,"t,",H_VALUE+80h
        DEFB "WAIT p",H_OR,"t,and",H_COMMA,"x",H_OR,"]"+80h
        DEFB "USR",H_N," ",H_DEF," USR=",H_ADDRESS+80h
        DEFB "VARPTR(",H_VARIABLE,")"+80h
        DEFB "FRE(0",")"+80h
        DEFB "TIME","$"+80h
        DEFB "DATE","$"+80h
        DEFB "MO","N"+80h
        DEFB "DEM","O"+80h
        DEFB 0

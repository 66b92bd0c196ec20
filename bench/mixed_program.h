// The program that the CPU's speed is measured with: an endless round of a dozen small routines of the kinds
// that programs of this machine consist of, about 9 T-states an instruction. It follows its data
// (pseudo-random), so its jumps are no fixed pattern; block moves are a small part of it.
#pragma once

#include <cstdint>

constexpr uint16_t mixed_program_origin = 0x9000; // works on 0xA000-0xA3FF, stack below 0xB800

// clang-format off
constexpr uint8_t mixed_program[] = {
    0x31, 0x00, 0xB8,             // 9000 start:    LD SP,0xB800
    0xCD, 0x31, 0x90,             // 9003 round:    CALL fill
    0xCD, 0x4A, 0x90,             // 9006           CALL copy
    0xCD, 0x61, 0x90,             // 9009           CALL checksum
    0xCD, 0x76, 0x90,             // 900C           CALL crc
    0xCD, 0x98, 0x90,             // 900F           CALL multiply
    0xCD, 0xC1, 0x90,             // 9012           CALL decimal
    0xCD, 0xD8, 0x90,             // 9015           CALL records
    0xCD, 0x1B, 0x91,             // 9018           CALL sort
    0xCD, 0x2F, 0x91,             // 901B           CALL print
    0xCD, 0x59, 0x91,             // 901E           CALL search
    0xCD, 0x76, 0x91,             // 9021           CALL dispatch
    0xCD, 0xCA, 0x91,             // 9024           CALL bits
    0x2A, 0xF3, 0x91,             // 9027           LD HL,(rounds)
    0x23,                         // 902A           INC HL
    0x22, 0xF3, 0x91,             // 902B           LD (rounds),HL
    0xC3, 0x03, 0x90,             // 902E           JP round

    // A pseudo-random block, 64 bytes.
    0x11, 0x00, 0xA0,             // 9031 fill:     LD DE,0xA000
    0x06, 0x40,                   // 9034           LD B,64
    0xC5,                         // 9036 fill1:    PUSH BC
    0x2A, 0xEF, 0x91,             // 9037           LD HL,(seed)
    0x44,                         // 903A           LD B,H
    0x4D,                         // 903B           LD C,L
    0x29,                         // 903C           ADD HL,HL
    0x29,                         // 903D           ADD HL,HL
    0x09,                         // 903E           ADD HL,BC
    0x23,                         // 903F           INC HL
    0x22, 0xEF, 0x91,             // 9040           LD (seed),HL
    0xC1,                         // 9043           POP BC
    0x7C,                         // 9044           LD A,H
    0x12,                         // 9045           LD (DE),A
    0x13,                         // 9046           INC DE
    0x10, 0xED,                   // 9047           DJNZ fill1
    0xC9,                         // 9049           RET

    // Two block moves of 24 bytes.
    0x21, 0x00, 0xA0,             // 904A copy:     LD HL,0xA000
    0x11, 0x00, 0xA1,             // 904D           LD DE,0xA100
    0x01, 0x18, 0x00,             // 9050           LD BC,24
    0xED, 0xB0,                   // 9053           LDIR
    0x21, 0x17, 0xA0,             // 9055           LD HL,0xA017
    0x11, 0x1F, 0xA2,             // 9058           LD DE,0xA21F
    0x01, 0x18, 0x00,             // 905B           LD BC,24
    0xED, 0xB8,                   // 905E           LDDR
    0xC9,                         // 9060           RET

    // Sum of 64 bytes, with carry into the high byte.
    0x21, 0x00, 0xA0,             // 9061 checksum: LD HL,0xA000
    0x06, 0x40,                   // 9064           LD B,64
    0xAF,                         // 9066           XOR A
    0x4F,                         // 9067           LD C,A
    0x86,                         // 9068 sum1:     ADD A,(HL)
    0x30, 0x01,                   // 9069           JR NC,sum2
    0x0C,                         // 906B           INC C
    0x23,                         // 906C sum2:     INC HL
    0x10, 0xF9,                   // 906D           DJNZ sum1
    0x41,                         // 906F           LD B,C
    0x4F,                         // 9070           LD C,A
    0xED, 0x43, 0xF1, 0x91,       // 9071           LD (total),BC
    0xC9,                         // 9075           RET

    // CRC of 16 bytes, bit by bit.
    0x21, 0xFF, 0xFF,             // 9076 crc:      LD HL,0xFFFF
    0x11, 0x00, 0xA1,             // 9079           LD DE,0xA100
    0x0E, 0x10,                   // 907C           LD C,16
    0x1A,                         // 907E crc1:     LD A,(DE)
    0x13,                         // 907F           INC DE
    0xAC,                         // 9080           XOR H
    0x67,                         // 9081           LD H,A
    0x06, 0x08,                   // 9082           LD B,8
    0x29,                         // 9084 crc2:     ADD HL,HL
    0x30, 0x08,                   // 9085           JR NC,crc3
    0x7C,                         // 9087           LD A,H
    0xEE, 0x10,                   // 9088           XOR 0x10
    0x67,                         // 908A           LD H,A
    0x7D,                         // 908B           LD A,L
    0xEE, 0x21,                   // 908C           XOR 0x21
    0x6F,                         // 908E           LD L,A
    0x10, 0xF3,                   // 908F crc3:     DJNZ crc2
    0x0D,                         // 9091           DEC C
    0x20, 0xEA,                   // 9092           JR NZ,crc1
    0x22, 0xF1, 0x91,             // 9094           LD (total),HL
    0xC9,                         // 9097           RET

    // 16 x 16 bits, four times.
    0x3E, 0x04,                   // 9098 multiply: LD A,4
    0xF5,                         // 909A mul0:     PUSH AF
    0xED, 0x4B, 0xEF, 0x91,       // 909B           LD BC,(seed)
    0xED, 0x5B, 0xF1, 0x91,       // 909F           LD DE,(total)
    0x21, 0x00, 0x00,             // 90A3           LD HL,0
    0x3E, 0x10,                   // 90A6           LD A,16
    0x29,                         // 90A8 mul1:     ADD HL,HL
    0xCB, 0x13,                   // 90A9           RL E
    0xCB, 0x12,                   // 90AB           RL D
    0xD2, 0xB5, 0x90,             // 90AD           JP NC,mul2
    0x09,                         // 90B0           ADD HL,BC
    0xD2, 0xB5, 0x90,             // 90B1           JP NC,mul2
    0x13,                         // 90B4           INC DE
    0x3D,                         // 90B5 mul2:     DEC A
    0xC2, 0xA8, 0x90,             // 90B6           JP NZ,mul1
    0x22, 0xF1, 0x91,             // 90B9           LD (total),HL
    0xF1,                         // 90BC           POP AF
    0x3D,                         // 90BD           DEC A
    0x20, 0xDA,                   // 90BE           JR NZ,mul0
    0xC9,                         // 90C0           RET

    // Eight BCD bytes added, three times.
    0x0E, 0x03,                   // 90C1 decimal:  LD C,3
    0x21, 0x10, 0xA0,             // 90C3 dec0:     LD HL,0xA010
    0x11, 0x10, 0xA1,             // 90C6           LD DE,0xA110
    0x06, 0x08,                   // 90C9           LD B,8
    0xB7,                         // 90CB           OR A
    0x1A,                         // 90CC dec1:     LD A,(DE)
    0x8E,                         // 90CD           ADC A,(HL)
    0x27,                         // 90CE           DAA
    0x77,                         // 90CF           LD (HL),A
    0x23,                         // 90D0           INC HL
    0x13,                         // 90D1           INC DE
    0x10, 0xF8,                   // 90D2           DJNZ dec1
    0x0D,                         // 90D4           DEC C
    0x20, 0xEC,                   // 90D5           JR NZ,dec0
    0xC9,                         // 90D7           RET

    // Eight records of eight bytes, through the index registers.
    0xDD, 0x21, 0x00, 0xA0,       // 90D8 records:  LD IX,0xA000
    0xFD, 0x21, 0x00, 0xA2,       // 90DC           LD IY,0xA200
    0x11, 0x08, 0x00,             // 90E0           LD DE,8
    0x06, 0x08,                   // 90E3           LD B,8
    0xDD, 0x7E, 0x00,             // 90E5 rec1:     LD A,(IX+0)
    0xDD, 0x86, 0x01,             // 90E8           ADD A,(IX+1)
    0xDD, 0x77, 0x02,             // 90EB           LD (IX+2),A
    0xDD, 0x6E, 0x03,             // 90EE           LD L,(IX+3)
    0xDD, 0x66, 0x04,             // 90F1           LD H,(IX+4)
    0x23,                         // 90F4           INC HL
    0xDD, 0x75, 0x03,             // 90F5           LD (IX+3),L
    0xDD, 0x74, 0x04,             // 90F8           LD (IX+4),H
    0xDD, 0xCB, 0x05, 0x5E,       // 90FB           BIT 3,(IX+5)
    0x28, 0x07,                   // 90FF           JR Z,rec2
    0xFD, 0xCB, 0x05, 0xC6,       // 9101           SET 0,(IY+5)
    0xFD, 0x34, 0x06,             // 9105           INC (IY+6)
    0xFD, 0x7E, 0x07,             // 9108 rec2:     LD A,(IY+7)
    0xDD, 0xBE, 0x07,             // 910B           CP (IX+7)
    0x38, 0x04,                   // 910E           JR C,rec3
    0xDD, 0xCB, 0x07, 0xBE,       // 9110           RES 7,(IX+7)
    0xDD, 0x19,                   // 9114 rec3:     ADD IX,DE
    0xFD, 0x19,                   // 9116           ADD IY,DE
    0x10, 0xCB,                   // 9118           DJNZ rec1
    0xC9,                         // 911A           RET

    // One pass of an exchange sort over 32 bytes.
    0x21, 0x00, 0xA0,             // 911B sort:     LD HL,0xA000
    0x06, 0x1F,                   // 911E           LD B,31
    0x7E,                         // 9120 sort1:    LD A,(HL)
    0x23,                         // 9121           INC HL
    0xBE,                         // 9122           CP (HL)
    0x38, 0x07,                   // 9123           JR C,sort2
    0x28, 0x05,                   // 9125           JR Z,sort2
    0x4E,                         // 9127           LD C,(HL)
    0x77,                         // 9128           LD (HL),A
    0x2B,                         // 9129           DEC HL
    0x71,                         // 912A           LD (HL),C
    0x23,                         // 912B           INC HL
    0x10, 0xF2,                   // 912C sort2:    DJNZ sort1
    0xC9,                         // 912E           RET

    // Sixteen bytes as hexadecimal digits into a line.
    0x21, 0x00, 0xA0,             // 912F print:    LD HL,0xA000
    0x11, 0x00, 0xA3,             // 9132           LD DE,0xA300
    0x06, 0x10,                   // 9135           LD B,16
    0x7E,                         // 9137 print1:   LD A,(HL)
    0x23,                         // 9138           INC HL
    0xCD, 0x43, 0x91,             // 9139           CALL hexbyte
    0x3E, 0x20,                   // 913C           LD A,0x20
    0x12,                         // 913E           LD (DE),A
    0x13,                         // 913F           INC DE
    0x10, 0xF5,                   // 9140           DJNZ print1
    0xC9,                         // 9142           RET
    0xF5,                         // 9143 hexbyte:  PUSH AF
    0x0F,                         // 9144           RRCA
    0x0F,                         // 9145           RRCA
    0x0F,                         // 9146           RRCA
    0x0F,                         // 9147           RRCA
    0xCD, 0x4C, 0x91,             // 9148           CALL digit
    0xF1,                         // 914B           POP AF
    0xE6, 0x0F,                   // 914C digit:    AND 0xF
    0xFE, 0x0A,                   // 914E           CP 10
    0x38, 0x02,                   // 9150           JR C,digit1
    0xC6, 0x07,                   // 9152           ADD A,7
    0xC6, 0x30,                   // 9154 digit1:   ADD A,0x30
    0x12,                         // 9156           LD (DE),A
    0x13,                         // 9157           INC DE
    0xC9,                         // 9158           RET

    // A byte in 40, then two strings compared.
    0x21, 0x00, 0xA0,             // 9159 search:   LD HL,0xA000
    0x01, 0x28, 0x00,             // 915C           LD BC,40
    0x3E, 0x55,                   // 915F           LD A,0x55
    0xED, 0xB1,                   // 9161           CPIR
    0x21, 0x00, 0xA3,             // 9163           LD HL,0xA300
    0x11, 0x00, 0xA3,             // 9166           LD DE,0xA300
    0x06, 0x14,                   // 9169           LD B,20
    0x1A,                         // 916B search1:  LD A,(DE)
    0xBE,                         // 916C           CP (HL)
    0xC0,                         // 916D           RET NZ
    0x23,                         // 916E           INC HL
    0x13,                         // 916F           INC DE
    0x78,                         // 9170           LD A,B
    0xB7,                         // 9171           OR A
    0xC8,                         // 9172           RET Z
    0x05,                         // 9173           DEC B
    0x18, 0xF5,                   // 9174           JR search1

    // Eight byte codes through a jump table, as an interpreter of tokens does.
    0x06, 0x08,                   // 9176 dispatch: LD B,8
    0x21, 0x20, 0xA0,             // 9178           LD HL,0xA020
    0x7E,                         // 917B disp1:    LD A,(HL)
    0x23,                         // 917C           INC HL
    0xE5,                         // 917D           PUSH HL
    0xC5,                         // 917E           PUSH BC
    0xE6, 0x03,                   // 917F           AND 3
    0x87,                         // 9181           ADD A,A
    0x5F,                         // 9182           LD E,A
    0x16, 0x00,                   // 9183           LD D,0
    0x21, 0x97, 0x91,             // 9185           LD HL,table
    0x19,                         // 9188           ADD HL,DE
    0x5E,                         // 9189           LD E,(HL)
    0x23,                         // 918A           INC HL
    0x56,                         // 918B           LD D,(HL)
    0x21, 0x92, 0x91,             // 918C           LD HL,disp2
    0xE5,                         // 918F           PUSH HL
    0xEB,                         // 9190           EX DE,HL
    0xE9,                         // 9191           JP (HL)
    0xC1,                         // 9192 disp2:    POP BC
    0xE1,                         // 9193           POP HL
    0x10, 0xE5,                   // 9194           DJNZ disp1
    0xC9,                         // 9196           RET
    0x9F, 0x91, 0xAC, 0x91, 0xB3, 0x91, 0xBF, 0x91,// 9197 table:    DW token0,token1,token2,token3
    0x2A, 0xF1, 0x91,             // 919F token0:   LD HL,(total)
    0x11, 0xD2, 0x04,             // 91A2           LD DE,1234
    0xB7,                         // 91A5           OR A
    0xED, 0x52,                   // 91A6           SBC HL,DE
    0x22, 0xF1, 0x91,             // 91A8           LD (total),HL
    0xC9,                         // 91AB           RET
    0xD9,                         // 91AC token1:   EXX
    0x08,                         // 91AD           EX AF,AF'
    0x13,                         // 91AE           INC DE
    0x0B,                         // 91AF           DEC BC
    0x08,                         // 91B0           EX AF,AF'
    0xD9,                         // 91B1           EXX
    0xC9,                         // 91B2           RET
    0x3A, 0xF1, 0x91,             // 91B3 token2:   LD A,(total)
    0x2F,                         // 91B6           CPL
    0xE6, 0x7F,                   // 91B7           AND 0x7F
    0x37,                         // 91B9           SCF
    0x17,                         // 91BA           RLA
    0x32, 0xF1, 0x91,             // 91BB           LD (total),A
    0xC9,                         // 91BE           RET
    0x2A, 0xF1, 0x91,             // 91BF token3:   LD HL,(total)
    0xE5,                         // 91C2           PUSH HL
    0xE3,                         // 91C3           EX (SP),HL
    0xD1,                         // 91C4           POP DE
    0x7A,                         // 91C5           LD A,D
    0x93,                         // 91C6           SUB E
    0xED, 0x44,                   // 91C7           NEG
    0xC9,                         // 91C9           RET

    // Bits of sixteen bytes, set, tested, counted, shifted.
    0x21, 0x30, 0xA0,             // 91CA bits:     LD HL,0xA030
    0x11, 0x00, 0x00,             // 91CD           LD DE,0
    0x06, 0x10,                   // 91D0           LD B,16
    0x4E,                         // 91D2 bits1:    LD C,(HL)
    0xCB, 0x41,                   // 91D3           BIT 0,C
    0x28, 0x01,                   // 91D5           JR Z,bits2
    0x1C,                         // 91D7           INC E
    0xCB, 0x39,                   // 91D8 bits2:    SRL C
    0xCB, 0x1A,                   // 91DA           RR D
    0xCB, 0xE9,                   // 91DC           SET 5,C
    0xCB, 0x89,                   // 91DE           RES 1,C
    0xCB, 0x01,                   // 91E0           RLC C
    0x79,                         // 91E2           LD A,C
    0x07,                         // 91E3           RLCA
    0xAE,                         // 91E4           XOR (HL)
    0xE6, 0xFE,                   // 91E5           AND 0xFE
    0xB2,                         // 91E7           OR D
    0x77,                         // 91E8           LD (HL),A
    0x2C,                         // 91E9           INC L
    0x05,                         // 91EA           DEC B
    0xC2, 0xD2, 0x91,             // 91EB           JP NZ,bits1
    0xC9,                         // 91EE           RET
    0x57, 0x1D,                   // 91EF seed:     DW 0x1D57
    0x00, 0x00,                   // 91F1 total:    DW 0
    0x00, 0x00,                   // 91F3 rounds:   DW 0
};
// clang-format on

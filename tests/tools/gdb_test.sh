#!/bin/bash
# gdb itself as the client, over a pipe. Debian's gdb-multiarch knows no Z80; KIV_GDB names one that does.
#   gdb_test.sh KIV_RUN ROM_FOLDER
set -u
gdb=
for each in ${KIV_GDB:-} z80-unknown-elf-gdb z80-elf-gdb z80-none-elf-gdb gdb-multiarch; do
    command -v "$each" >/dev/null || continue
    "$each" -nx -q -batch -ex 'set architecture z80' -ex 'show architecture' 2>&1 | grep -q 'set to "z80"' && { gdb=$each; break; }
done
[ -n "$gdb" ] || { echo "no gdb for the Z80 is INSTALLED: it was not tried as a client"; exit 77; }
script=$(mktemp)
trap 'rm "$script"' EXIT
# The ROM begins DI; LD SP,$8E00; XOR A; OUT ($40),A.
cat >"$script" <<END
set pagination off
set confirm off
set architecture z80
mem 0 0x10000 rw cache
mem 0x10000 0 rw
target remote | $1 --roms $2 --gdb - --seed 1 --frames 60
hbreak *5
continue
stepi
printf "after %x sp %x\n", \$pc, \$sp
reverse-stepi
printf "before %x at %d\n", \$pc, \$tstates
set var *(unsigned char*)0x9000 = 0x41
set \$hl = 0x1234
printf "memory %x hl %x\n", *(unsigned char*)0x9000, \$hl
x/2i 0
monitor print PC
delete
watch *(unsigned char*)0xE6B0
continue
reverse-continue
delete
continue
END
said=$(timeout 200 "$gdb" -nx -q -batch -x "$script" 2>&1)
case $said in *trad_frame_saved_reg_kind*) echo "this gdb cannot unwind frames of the Z80: not tried as a client"; exit 77 ;; esac
failed=0
for wanted in 'after 7 sp 8e00' 'before 5 at 21' 'memory 41 hl 1234' 'ld sp,0x8e00' 'Hardware watchpoint' 'exited normally'; do
    [[ $said == *"$wanted"* ]] || { echo "missing: $wanted"; failed=1; }
done
[ $failed = 0 ] || printf '%s\n' "$said"
exit $failed

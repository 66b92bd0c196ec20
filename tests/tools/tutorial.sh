#!/bin/bash
# The debugger's tutorial, as it stands: its shell lines, then every line behind "kiv> ", and what it says comes of them.
# Places in the ROM, and T-states of a waiting loop, are others with every ROM.
#   tutorial.sh SOURCE_FOLDER KIV_RUN ROM_FOLDER
set -eu
export KIV=$1
command -v pasmo >/dev/null || { echo "pasmo is NOT INSTALLED: the tutorial was not tried"; exit 77; }
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder"
tutorial=$KIV/docs/debugger-tutorial.md
awk '/^```/ { inside = !inside; shell = /sh$/; next } inside && shell' "$tutorial" >steps.sh
awk '/^```/ { inside = !inside; shell = /sh$/; next } inside && !shell' "$tutorial" >told
bash -eu steps.sh
sed -n 's/^kiv> \(.*\)/echo kiv> \1\n\1/p' told >typed
[ "$(wc -l <typed)" -gt 40 ]
"$2" --roms "$3" --seed 1 --debug <typed 2>/dev/null | sed '1,/^kiv> /{/^kiv> /!d}' >said
steady() {
    sed -E '/^[0-7][0-9A-F]{3} /{N;s/.*/in the ROM/}; s/^ +[0-9]+ +([0-9.]+) +[0-9]+( +[0-9]+  \$)/\1\2/' "$1"
}
diff <(steady told) <(steady said)
for picture in $(grep -o 'tutorial-[a-z]*\.png' "$tutorial"); do [ -s "$KIV/docs/$picture" ]; done

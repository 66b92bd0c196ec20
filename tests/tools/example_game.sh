#!/bin/bash
# The example of a tested game, as it stands: every `run:` of its workflow but the one that installs packages.
#   example_game.sh EXAMPLE_FOLDER KIV_RUN ROM_FOLDER
set -eu
for program in pasmo python3; do
    command -v "$program" >/dev/null || { echo "$program is NOT INSTALLED: the example was not tried"; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cp "$1"/* "$folder"
ln -s "$2" "$folder/kiv-run"
export PATH=$folder:$PATH KIV_ROMS=$3
cd "$folder"
# A block begins with `run: |` and ends where the indentation does.
awk '/^ *run: \|/ { indent = match($0, /run/); block = 1; n++; next }
     block && match($0, /[^ ]/) && RSTART <= indent { block = 0 }
     block { print > ("step" n ".sh") }' test-catch.yml
steps=0
for step in step*.sh; do
    if grep -q apt-get "$step"; then continue; fi
    echo "--- $(cat "$step")"
    bash -eu "$step"
    steps=$((steps + 1))
done
[ "$steps" -eq 4 ] || { echo "$steps steps were found, not 4"; exit 1; }
grep -q '^LH:' coverage.info
grep -q '^fn=fall$' callgrind.out

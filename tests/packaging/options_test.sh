#!/bin/bash
# What `--help` tells stands in the manual pages of both languages and is completed by the shell, and nothing else is; the
# newest head of CHANGELOG.md is the version that the program shows.
#   options_test.sh SOURCE_FOLDER PROGRAM...
set -u
source=$1
shift
failed=0

# differ NAME: what only one of the two sorted lists before and after has.
differ() {
    local missing
    missing=$(comm -3 "$2" "$3" | tr '\n\t' ' >')
    [ -z "$missing" ] || { echo "$1 (> only there): $missing"; failed=1; }
}

lists=$(mktemp -d)
trap 'rm -r "$lists"' EXIT
for program in "$@"; do
    name=${program##*/}
    "$program" --help | grep -oE '^ +--[a-z-]+' | tr -d ' ' | sort -u >"$lists/help"
    [ -s "$lists/help" ] || { echo "$name --help tells of no option"; failed=1; }
    for page in "$source/packaging/man/$name.1" "$source/packaging/man/ja/$name.1"; do
        sed -n '/^\.TP/{n;p}' "$page" | sed 's/\\//g' | grep -oE '^\.B[RI]* --[a-z-]+' | sed 's/.* //' | sort -u >"$lists/page"
        differ "$page" "$lists/help" "$lists/page"
    done
    PATH=${program%/*}:$PATH bash -c 'source "$1"; COMP_WORDS=("$2" --) COMP_CWORD=1; "_${2//-/_}"; printf "%s\n" "${COMPREPLY[@]}"' \
        bash "$source/packaging/completion/$name" "$name" | sort -u >"$lists/completed"
    differ "completion of $name" "$lists/help" "$lists/completed"
    if shown=$("$program" --version 2>/dev/null); then
        newest=$(sed -n 's/^## //p' "$source/CHANGELOG.md" | head -n 1)
        [ "$shown" = "$name $newest" ] || { echo "CHANGELOG.md begins with $newest, $name --version says $shown"; failed=1; }
    fi
done
exit $failed

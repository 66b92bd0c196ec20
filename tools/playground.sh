# Sourced by ./run: the ROM images in the playground.

# is_ours FOLDER ROM: put there by put_roms, and not changed since.
is_ours() { [ -e "$1/$2" ] && grep -qsxF "$(sha256sum <"$1/$2") $2" "$1/.kiv-roms"; }

# own_roms FOLDER: the person has put a ROM image there.
own_roms() {
    for rom in 8801-zun.rom 8801-kiv.rom 8801-4th.rom; do
        if { [ -e "$1/$rom" ] || [ -L "$1/$rom" ]; } && ! is_ours "$1" "$rom"; then
            return 0
        fi
    done
    return 1
}

# put_roms FROM FOLDER: copies the ROM images of FROM into FOLDER. What lies there already is replaced only when
# it was put there by an earlier call and has not changed since; the sums of those stand in FOLDER/.kiv-roms.
put_roms() {
    sums=$2/.kiv-roms
    for rom in 8801-zun.rom 8801-kiv.rom 8801-4th.rom; do
        if cmp -s "$1/$rom" "$2/$rom"; then
            :
        elif { [ -e "$2/$rom" ] || [ -L "$2/$rom" ]; } && ! is_ours "$2" "$rom"; then
            echo "$2/$rom is not of Kiv's own set and stays; without it, that comes back."
            continue
        else
            cp "$1/$rom" "$2/$rom"
        fi
        line="$(sha256sum <"$2/$rom") $rom"
        grep -qsxF "$line" "$sums" || echo "$line" >>"$sums"
    done
}

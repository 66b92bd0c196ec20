# Sourced by ./run: the demonstration ROM set in the playground.

# put_roms FROM FOLDER: copies the ROM images of FROM into FOLDER. What lies there already is replaced only when
# it was put there by an earlier call and has not changed since; the sums of those stand in FOLDER/.kiv-roms.
put_roms() {
    sums=$2/.kiv-roms
    for rom in 8801-zun.rom 8801-kiv.rom 8801-4th.rom; do
        if cmp -s "$1/$rom" "$2/$rom"; then
            :
        elif { [ -e "$2/$rom" ] || [ -L "$2/$rom" ]; } &&
            ! grep -qsxF "$(sha256sum <"$2/$rom") $rom" "$sums"; then
            echo "$2/$rom is not the demonstration's and stays; without it, the demonstration's comes back."
            continue
        else
            cp "$1/$rom" "$2/$rom"
        fi
        line="$(sha256sum <"$2/$rom") $rom"
        grep -qsxF "$line" "$sums" || echo "$line" >>"$sums"
    done
}

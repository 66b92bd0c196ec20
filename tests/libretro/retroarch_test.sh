#!/bin/bash
# The core in RetroArch, without a screen: a listing is loaded and run, the state is kept on leaving and gone on with at the next
# start, with rewind and run-ahead switched on. The picture after that is the one of a run without a break.
#   retroarch_test.sh CORE INFO_FILE
set -eu
command -v retroarch >/dev/null || {
    echo "SKIPPED: RetroArch is not installed (Debian: retroarch), so the core was not tried in it"
    exit 77
}
core=$1
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
cp "$core" "$2" "$work/"
export HOME=$work XDG_CONFIG_HOME=$work/config
cat >"$work/base.cfg" <<END
video_driver = "null"
audio_driver = "null"
input_driver = "null"
input_joypad_driver = "null"
menu_driver = "null"
config_save_on_exit = "false"
history_list_enable = "false"
savestate_directory = "$work"
savestate_thumbnail_enable = "false"
libretro_directory = "$work"
libretro_info_path = "$work"
video_gpu_screenshot = "false"
rewind_enable = "true"
run_ahead_enabled = "true"
run_ahead_frames = "1"
savestate_auto_save = "true"
END
listing() { printf '10 COLOR 2:CLS\n20 PRINT "%s"\n' "$1" >"$work/first.bas"; }

# run NAME FRAMES LOAD: leaves NAME.png
run() {
    { cat "$work/base.cfg"; echo "savestate_auto_load = \"$3\""; } >"$work/run.cfg"
    timeout 100 retroarch -v -c "$work/run.cfg" -L "$work/$(basename "$core")" "$work/first.bas" --max-frames="$2" \
        --max-frames-ss --max-frames-ss-path="$work/$1.png" >"$work/$1.log" 2>&1 || { tail -n 30 "$work/$1.log"; exit 1; }
    [ -z "${KIV_FRONT_END_PICTURES:-}" ] || cp "$work/$1.png" "$KIV_FRONT_END_PICTURES/"
    if grep -E 'lacks serialized|Rewind unavailable|run-ahead.*unavailable|RunAhead.*not' "$work/$1.log"; then exit 1; fi
}
listing "FROM A FRONT END"
run typing 90 false # in the middle of CLOAD
run resumed 240 true
rm "$work"/*.state.auto
run whole 330 false
grep -q 'Initializing rewind buffer' "$work/whole.log" || { echo "no rewind"; exit 1; }
cmp "$work/resumed.png" "$work/whole.png"
listing "ANOTHER ONE"
rm "$work"/*.state.auto
run another 330 false
! cmp -s "$work/another.png" "$work/whole.png" || { echo "the programs have not run: both leave the same picture"; exit 1; }

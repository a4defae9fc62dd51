#!/usr/bin/env bash
# video.sh [ROUNDS]
# Processor time of playing a video of 1280 x 720 at 30 frames a second with sound: Lumora beside mpv, the same file at the same
# size on the same virtual display and without a sound device. Both play at the same time, so that whatever else the machine
# does disturbs both alike: the median of ROUNDS (default 5) stretches of 15 seconds. mpv draws with its X11 output, which
# costs it least where there is no graphics card.
# LUMORA=program measures another build.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
rounds=${1:-5}
build="$root/build/bench"
stretch=15 # seconds that are measured
lead=3     # seconds of playing before that

"$root/packaging/require.sh" build run check
"$root/packaging/require.sh" -f "$here/debian-12.packages" peers
cd -- "$root"
if [ -z "${LUMORA:-}" ]; then
    [ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
    cmake --build "$build" --target lumora > "$build/build.log" || {
        tail -n 30 -- "$build/build.log" >&2
        exit 1
    }
fi
lumora=${LUMORA:-$build/bin/lumora}

work=$(mktemp -d)
lumora_pid=
mpv_pid=
# shellcheck source=../tools/display.sh
. "$root/tools/display.sh"
end_players() {
    local pid
    for pid in $lumora_pid $mpv_pid; do
        kill "$pid" 2> /dev/null || true
        wait "$pid" 2> /dev/null || true
    done
    lumora_pid=
    mpv_pid=
}
trap 'end_players; stop_virtual_display; rm -rf -- "$work"' EXIT
mkdir -p -- "$work/home"
mkdir -m 0700 -- "$work/run"

film="$work/film.avi"
ffmpeg -v error -f lavfi -i testsrc2=size=1280x720:rate=30:duration=30 -f lavfi -i sine=frequency=440:duration=30 \
    -c:v mpeg4 -vtag XVID -b:v 4M -c:a libmp3lame -b:a 128k "$film"
ffmpeg -v error -f lavfi -i color=c=red:size=1280x720:rate=30:duration=2 -c:v mpeg4 -vtag XVID -qscale:v 2 "$work/red.avi"
start_virtual_display 2400x1024

own_home=(env -u XDG_CONFIG_HOME -u XDG_DATA_HOME -u XDG_CACHE_HOME -u XDG_STATE_HOME -u DBUS_SESSION_BUS_ADDRESS
    HOME="$work/home" XDG_RUNTIME_DIR="$work/run" LUMORA_APP_FOLDER="$work/home/" NO_AT_BRIDGE=1 QT_QPA_PLATFORM=xcb)

# The first start has windows of its own to show; this one shows a red film, whose size in the window is the size of all films.
"${own_home[@]}" "$lumora" --screenshot "$work/window.png" "$work/red.avi" 2>> "$work/log"
size=$(/usr/bin/python3 - "$work/window.png" << 'END'
import sys
from PIL import Image
red, green, blue = Image.open(sys.argv[1]).convert("RGB").split()
box = Image.composite(red, Image.new("L", red.size), green.point(lambda v: 255 * (v < 60))).point(lambda v: 255 * (v > 200)).getbbox()
print(f"{box[2] - box[0]}x{box[3] - box[1]}")
END
)

# Clock ticks that a process and its threads have used.
ticks() {
    local fields
    read -r -a fields <<< "$(sed 's/.*) //' "/proc/$1/stat")"
    printf '%s\n' $((fields[11] + fields[12]))
}

percent() { awk -v ticks="$1" -v seconds="$stretch" -v rate="$(getconf CLK_TCK)" 'BEGIN { print 100 * ticks / seconds / rate }'; }

for ((round = 0; round < rounds; round++)); do
    "${own_home[@]}" "$lumora" "$film" 2>> "$work/log" &
    lumora_pid=$!
    "${own_home[@]}" mpv --no-config --really-quiet --vo=x11 --hwdec=no --ao=null --osd-level=0 --osc=no --load-scripts=no \
        --ytdl=no --geometry="$size-0-0" "$film" 2>> "$work/log" &
    mpv_pid=$!
    sleep "$lead"
    lumora_before=$(ticks "$lumora_pid")
    mpv_before=$(ticks "$mpv_pid")
    sleep "$stretch"
    lumora_ticks=$(($(ticks "$lumora_pid") - lumora_before))
    mpv_ticks=$(($(ticks "$mpv_pid") - mpv_before))
    end_players
    percent "$lumora_ticks" >> "$work/lumora"
    percent "$mpv_ticks" >> "$work/mpv"
    awk -v a="$lumora_ticks" -v b="$mpv_ticks" 'BEGIN { print a / b }' >> "$work/ratio"
done

median() { sort -n -- "$1" | awk '{ value[NR] = $1 } END { print (value[int((NR + 1) / 2)] + value[int(NR / 2) + 1]) / 2 }'; }

printf 'video of 1280 x 720 at 30 frames a second, shown at %s, %s stretches of %s s\n' "$size" "$rounds" "$stretch"
for name in lumora mpv; do
    printf '%-8s median %5.1f %% of one processor   least %5.1f %%\n' "$name" "$(median "$work/$name")" "$(sort -n -- "$work/$name" | head -n 1)"
done
printf 'ratio    median %5.2f\n' "$(median "$work/ratio")"

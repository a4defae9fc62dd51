#!/usr/bin/env bash
# start.sh [RUNS]
# From the start of the process to the picture on the screen, and the peak resident memory, of Lumora and of Geeqie with the
# same 24-megapixel JPEG: RUNS (default 11) runs each, in turns, on one virtual display, after one unmeasured run each.
# LUMORA=program measures another build.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
runs=${1:-11}
build="$root/build/bench"

"$root/packaging/require.sh" build run
"$root/packaging/require.sh" -f "$here/debian-12.packages" peers
cd -- "$root"
[ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
cmake --build "$build" > "$build/build.log" || {
    tail -n 30 -- "$build/build.log" >&2
    exit 1
}
lumora=${LUMORA:-$build/bin/lumora}

# Both get a home of their own, so that neither meets old settings or thumbnails.
work=$(mktemp -d)
# shellcheck source=../tools/display.sh
. "$root/tools/display.sh"
trap 'stop_virtual_display; rm -rf -- "$work"' EXIT
picture="$work/pictures/bench.jpg"
mkdir -p -- "$work/pictures" "$work/home"
mkdir -m 0700 -- "$work/run"
"$build/bin/bench/bench_picture" "$picture"
start_virtual_display 1280x1024

# One line "milliseconds<tab>kB", or the reason on stderr.
measure() {
    env -u XDG_CONFIG_HOME -u XDG_DATA_HOME -u XDG_CACHE_HOME -u XDG_STATE_HOME HOME="$work/home" XDG_RUNTIME_DIR="$work/run" \
        LUMORA_APP_FOLDER="$work/home/" NO_AT_BRIDGE=1 GDK_BACKEND=x11 QT_QPA_PLATFORM=xcb \
        "$build/bin/bench/bench_pixels" 30 "$@" "$picture" 2>> "$work/log"
}

# The middle of the sorted numbers of one column.
median() {
    cut -f "$2" -- "$1" | sort -n | awk '{ value[NR] = $1 } END { print (value[int((NR + 1) / 2)] + value[int(NR / 2) + 1]) / 2 }'
}

declare -A programs=([lumora]="$lumora" [geeqie]=geeqie)
for name in lumora geeqie; do
    measure "${programs[$name]}" > /dev/null || {
        tail -n 5 -- "$work/log" >&2
        exit 1
    }
done
for ((run = 0; run < runs; run++)); do
    for name in lumora geeqie; do
        measure "${programs[$name]}" >> "$work/$name" || {
            tail -n 5 -- "$work/log" >&2
            exit 1
        }
    done
done

printf 'start to picture, %s, %s runs each in turns\n' "$(stat -c '24 megapixels, %s bytes' -- "$picture")" "$runs"
for name in lumora geeqie; do
    printf '%-8s median %7.1f ms   fastest %7.1f ms   peak memory %6.1f MB\n' "$name" "$(median "$work/$name" 1)" \
        "$(cut -f 1 -- "$work/$name" | sort -n | head -n 1)" "$(median "$work/$name" 2 | awk '{ print $1 / 1024 }')"
done

#!/usr/bin/env bash
# show.sh [STEPS] [INTERVAL]
# The Media Show over 100 JPEGs of 24 megapixels on a virtual display of 1920 by 1080: each step's delay from its tick to the
# painted picture, in the Main Viewer and full screen, STEPS (default 100) each, INTERVAL milliseconds apart (default 1000, what
# a user sets as one second); resident memory at every hundredth step.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
build=${BUILD:-"$root/build/bench"}

cd -- "$root"
if [ -z "${BUILD:-}" ]; then
    "$root/packaging/require.sh" build run
    [ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
    cmake --build "$build" --target bench_show bench_picture lumora-decoder lumora-codecs > "$build/build.log" || {
        tail -n 30 -- "$build/build.log" >&2
        exit 1
    }
fi

work=$(mktemp -d)
# shellcheck source=../tools/display.sh
. "$root/tools/display.sh"
trap 'stop_virtual_display; rm -rf -- "$work"' EXIT
mkdir -p -- "$work/pictures" "$work/home"
mkdir -m 0700 -- "$work/run"
"$build/bin/bench/bench_picture" "$work/picture.jpg"
for number in $(seq -w 1 100); do
    cp -- "$work/picture.jpg" "$work/pictures/$number.jpg"
done
start_virtual_display 1920x1080
for window in viewer fullscreen; do
    env HOME="$work/home" XDG_RUNTIME_DIR="$work/run" NO_AT_BRIDGE=1 QT_QPA_PLATFORM=xcb \
        LUMORA_MODULES="$build/bin/lumora-modules" \
        "$build/bin/bench/bench_show" "$work/pictures" "$window" "${2:-1000}" "${1:-100}"
done

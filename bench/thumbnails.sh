#!/usr/bin/env bash
# thumbnails.sh [PHOTOGRAPHS] [ROUNDS]
# "Generate All Thumbnails" at size 100 over a folder of photographs of 12 megapixels (default 1000), beside vipsthumbnail and
# gm making the same thumbnails as files: seconds by the clock, in turns, ROUNDS (default 3) times. The two get as many
# processes as there are cores, which is their best; vipsthumbnail also runs as one process. All files are in the system's cache.
# SIZE=edge takes another size, DIR=folder works there, BUILD=folder takes another build.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
count=${1:-1000}
rounds=${2:-3}
size=${SIZE:-100}
build=${BUILD:-"$root/build/bench"}

cd -- "$root"
if [ -z "${BUILD:-}" ]; then
    "$root/packaging/require.sh" build run
    "$root/packaging/require.sh" -f "$here/debian-12.packages" peers
    [ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
    cmake --build "$build" --target bench_thumbnails bench_picture lumora-decoder lumora-codecs lumora-images-template \
        > "$build/build.log" || {
        tail -n 30 -- "$build/build.log" >&2
        exit 1
    }
fi
export LUMORA_MODULES=${LUMORA_MODULES:-$build/bin/lumora-modules} LUMORA_DATA=${LUMORA_DATA:-$build/bin/lumora-data}

work=$(mktemp -d ${DIR:+-p "$DIR"})
trap 'rm -rf -- "$work"' EXIT
mkdir -- "$work/in"
mkdir -m 0700 -- "$work/run"
for ((i = 0; i < 8; i++)); do
    "$build/bin/bench/bench_picture" "$work/photo$i.jpg" "$((4000 + 8 * i))x$((3000 - 8 * i))" 92
done
for ((i = 0; i < count; i++)); do
    ln -- "$work/photo$((i % 8)).jpg" "$work/in/photo$(printf '%05d' "$i").jpg"
done

make_lumora() {
    env QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$work/run" \
        "$build/bin/bench/bench_thumbnails" "$work/in" "$size" "$((count / 4 > 0 ? count / 4 : 1))"
}
make_vips() {
    printf '%s\0' "$work"/in/*.jpg |
        xargs -0 -n 25 -P "$(nproc)" vipsthumbnail --size "${size}x$size" -o "$1/%s.jpg[Q=88]"
}
make_vips_alone() {
    vipsthumbnail --size "${size}x$size" -o "$1/%s.jpg[Q=88]" "$work"/in/*.jpg
}
make_gm() {
    (cd -- "$work/in" && printf '%s\0' *.jpg | OMP_NUM_THREADS=1 xargs -0 -n 25 -P "$(nproc)" \
        gm mogrify -output-directory "$1" -size "$((2 * size))x$((2 * size))" -thumbnail "${size}x$size" -quality 88)
}

for ((round = 1; round <= rounds; round++)); do
    for program in lumora vips vips_alone gm; do
        out=$(mktemp -d -p "$work")
        begin=$(date +%s.%N)
        "make_$program" "$out"
        end=$(date +%s.%N)
        printf '%-12s %8.2f s\n' "$program" "$(awk "BEGIN { print $end - $begin }")"
        rm -rf -- "$out"
    done
done

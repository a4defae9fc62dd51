#!/usr/bin/env bash
# convert.sh [PHOTOGRAPHS] [PROGRAM...]
# A folder of photographs of 12 megapixels (default 200) to PNG, JPEG and BMP in one run: seconds, processor seconds and peak
# memory of `lumora --convert`, of GraphicsMagick's batch tools and of a shell loop over libvips' tool, one after the other in
# turns. The settings are the same: PNG at level 1 with the filters of differences to the left and above, JPEG at quality 85
# with colours at half resolution and tables of its own, BMP not packed. PROGRAM picks some of: lumora mogrify batch vips.
# DIR=folder works there instead of the folder for temporary files; PHOTOS=folder takes the JPEGs in it, again and again;
# LUMORA=program measures another build.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
count=${1:-200}
shift || true
programs=("$@")
[ ${#programs[@]} -gt 0 ] || programs=(lumora mogrify batch vips)
build="$root/build/bench"

"$root/packaging/require.sh" build run
"$root/packaging/require.sh" -f "$here/debian-12.packages" peers
cd -- "$root"
[ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
cmake --build "$build" --target lumora lumora-decoder bench_picture > "$build/build.log" || {
    tail -n 30 -- "$build/build.log" >&2
    exit 1
}
lumora=${LUMORA:-$build/bin/lumora}
export LUMORA_MODULES=${LUMORA_MODULES:-$build/bin/lumora-modules}

work=$(mktemp -d ${DIR:+-p "$DIR"})
trap 'rm -rf -- "$work"' EXIT
mkdir -- "$work/in"
photos=()
if [ -n "${PHOTOS:-}" ]; then
    photos=("$PHOTOS"/*.jpg)
else
    for ((i = 0; i < 8; i++)); do
        photos+=("$work/photo$i.jpg")
        "$build/bin/bench/bench_picture" "${photos[i]}" "$((4000 + 8 * i))x$((3000 - 8 * i))" 92
    done
fi
for ((i = 0; i < count; i++)); do
    cp -- "${photos[i % ${#photos[@]}]}" "$work/in/photo$(printf '%05d' "$i").jpg"
done

convert_lumora() {
    "$lumora" --convert png,jpg,bmp --jpeg-quality 85 --to "$1" "$work/in"
}
convert_mogrify() {
    cd -- "$work/in"
    gm mogrify -output-directory "$1" -format png -quality 15 ./*.jpg
    gm mogrify -output-directory "$1" -format jpg -quality 85 ./*.jpg
    gm mogrify -output-directory "$1" -format bmp -compress None ./*.jpg
}
# Its cleverest way: one process, each photograph read once.
convert_batch() {
    local file name
    for file in "$work"/in/*.jpg; do
        name=$1/$(basename -- "$file" .jpg)
        echo "convert $file -quality 15 -write $name.png -quality 85 -write $name.jpg -compress None $name.bmp"
    done | gm batch -
}
convert_vips() {
    local file name
    for file in "$work"/in/*.jpg; do
        name=$1/$(basename -- "$file" .jpg)
        vips copy "$file" "$name.png[compression=1,filter=6]" 2> /dev/null || vips copy "$file" "$name.png[compression=1]"
        vips copy "$file" "$name.jpg[Q=85,optimize-coding]"
        vips copy "$file" "$name.bmp"
    done
}

# The sum of the memory of a process and all below it, each page once, every quarter of a second: the largest is left.
watch_memory() {
    local peak=0 sum kb pid
    while kill -0 "$1" 2> /dev/null; do
        sum=0
        for pid in $(descendants "$1"); do
            kb=$(awk '/^Pss:/ { print $2 }' "/proc/$pid/smaps_rollup" 2> /dev/null) || kb=0
            sum=$((sum + ${kb:-0}))
        done
        [ "$sum" -le "$peak" ] || peak=$sum
        echo "$peak" > "$2"
        sleep 0.25
    done
}
descendants() {
    echo "$1"
    local child
    for child in $(pgrep -P "$1"); do
        descendants "$child"
    done
}

# Runs in a process of its own, so that its times are those of all it starts.
TIMEFORMAT='%R %U %S'
measure() {
    local name=$1 out="$work/out"
    rm -rf -- "$out" "$work/times"
    mkdir -- "$out"
    sync
    ( time "convert_$name" "$out" ) 2> "$work/times" &
    local job=$!
    watch_memory "$job" "$work/peak" &
    local watcher=$!
    wait "$job" || {
        cat -- "$work/times" >&2
        exit 1
    }
    wait "$watcher"
    local files
    files=$(find "$out" -type f | wc -l)
    awk -v name="$name" -v files="$files" -v peak="$(cat -- "$work/peak")" -v bytes="$(du -sb -- "$out" | cut -f 1)" \
        'END { printf "%-8s %8.1f s   processor %8.1f s   peak memory %6.0f MB   %d files, %.0f MB\n", name, $1, $2 + $3, peak / 1024, files, bytes / 1e6 }' \
        "$work/times"
}

printf '%s photographs of 12 megapixels to PNG, JPEG and BMP\n' "$count"
for name in "${programs[@]}"; do
    measure "$name"
done

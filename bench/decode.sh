#!/usr/bin/env bash
# decode.sh [ROUNDS] [FILE...]
# How long a picture takes from a cached file to pixels in memory, beside GraphicsMagick, ImageMagick 6 and libvips: each in
# a process of its own that is started before the clock is, three times in turns, the median of ROUNDS (default 5) decodes.
# CPU=1 shows the processor time instead of the clock's, which says more on a machine that has other things to do.
# Without files it makes one of each everyday format out of the same photograph-like picture.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
rounds=${1:-5}
shift || true
column=1
[ -z "${CPU:-}" ] || column=2
build="$root/build/bench"

"$root/packaging/require.sh" build run
"$root/packaging/require.sh" -f "$here/debian-12.packages" peers
cd -- "$root"
[ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
cmake --build "$build" --target bench_decodewith bench_picture lumora-codecs > "$build/build.log" || {
    tail -n 30 -- "$build/build.log" >&2
    exit 1
}
decodewith="$build/bin/bench/bench_decodewith"
export LUMORA_MODULES="$build/bin/lumora-modules"
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

make_pictures() {
    local photo="$work/photo.jpg"
    "$build/bin/bench/bench_picture" "$photo" 4000x3000
    gm convert "$photo" -interlace line "$work/progressive.jpg"
    gm convert "$photo" -resize 50% "$work/small.ppm"
    gm convert "$work/small.ppm" -type TrueColor "$work/rgb.png"
    gm convert "$work/small.ppm" -interlace line "$work/interlaced.png"
    gm convert "$work/small.ppm" -depth 16 -operator All Add 1 "$work/deep.png"
    gm convert "$work/small.ppm" -colors 256 "$work/palette.png"
    gm convert "$work/small.ppm" -type Grayscale "$work/grey.png"
    gm convert "$work/small.ppm" -compress None "$work/plain.tif"
    gm convert "$work/small.ppm" -compress LZW "$work/lzw.tif"
    gm convert "$work/small.ppm" -compress Zip "$work/zip.tif"
    gm convert "$work/small.ppm" -compress JPEG "$work/jpeg.tif"
    gm convert "$work/small.ppm" -monochrome -compress Group4 "$work/fax.tif"
    opj_compress -i "$work/small.ppm" -o "$work/lossy.jp2" -r 12 -I > /dev/null
    opj_compress -i "$work/small.ppm" -o "$work/lossless.jp2" > /dev/null
    gm convert "$work/palette.png" "$work/photo.gif"
    gm convert "$work/palette.png" -interlace line "$work/interlaced.gif"
    gm convert "$work/small.ppm" -type TrueColor -compress None "$work/rgb.bmp"
    gm convert "$work/palette.png" -compress None "$work/palette.bmp"
    gm convert "$work/palette.png" -compress RLE "$work/runs.bmp"
    rm -- "$work/small.ppm"
}

if [ $# -eq 0 ]; then
    make_pictures
    set -- "$work"/*.jpg "$work"/*.png "$work"/*.tif "$work"/*.jp2 "$work"/*.gif "$work"/*.bmp
fi

libraries=(lumora graphicsmagick imagemagick vips)
for turn in 1 2 3; do
    for library in "${libraries[@]}"; do
        "$decodewith" "$library" "$rounds" "$@" > "$work/$library.$turn" 2>> "$work/log"
    done
done

# The middle one of the three turns, line by line.
for library in "${libraries[@]}"; do
    paste -- "$work/$library".[123] | awk -v column="$column" '{ a = $column; b = $(column + 2); c = $(column + 4)
        if (a == "-" || b == "-" || c == "-") { print "-"; next }
        a += 0; b += 0; c += 0
        middle = a > b ? (b > c ? b : (a > c ? c : a)) : (a > c ? a : (b > c ? c : b))
        print middle }' > "$work/$library"
done
printf '%s\n' "$@" | sed 's|.*/||' | paste -- - "$work/lumora" "$work/graphicsmagick" "$work/imagemagick" "$work/vips" \
    | awk 'BEGIN { printf "%-18s %10s %10s %10s %10s %8s\n", "file", "Lumora ms", "GM ms", "IM6 ms", "vips ms", "ratio" }
        { best = ""; for (i = 3; i <= 5; i++) if ($i != "-" && (best == "" || $i + 0 < best)) best = $i + 0
          printf "%-18s %10s %10s %10s %10s %8s\n", $1, $2, $3, $4, $5,
              best != "" && $2 != "-" ? sprintf("%.2f", $2 / best) : "-" }'

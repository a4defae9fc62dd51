#!/usr/bin/env bash
# copy.sh [ROUNDS] [FOLDER]
# The command "Copy Files To", with its windows, beside `cp --preserve`: 5,000 files of 20 to 60 kB and 20 of 40 MB, in turns
# and into an empty folder each time, all within FOLDER (default: where temporary files are). Prints the medians of ROUNDS
# (default 5) by the clock and of the processor, and their ratios.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$here")
rounds=${1:-5}
folder=${2:-${TMPDIR:-/tmp}}
build="$root/build/bench"

"$root/packaging/require.sh" build run
cd -- "$root"
[ -f "$build/build.ninja" ] || cmake --preset bench > /dev/null
cmake --build "$build" --target bench_copyfiles > "$build/build.log" || {
    tail -n 30 -- "$build/build.log" >&2
    exit 1
}
work=$(mktemp -d -- "$folder/copybench.XXXXXX")
trap 'rm -rf -- "$work"' EXIT
mkdir -- "$work/from" "$work/run"
chmod 700 -- "$work/run"
export QT_QPA_PLATFORM=offscreen LUMORA_MODULES="$build/bin/lumora-modules" XDG_RUNTIME_DIR="$work/run"

python3 - "$work/from" << 'END'
import os
import random
import sys

chance = random.Random(1)
for number in range(5000):
    with open(f"{sys.argv[1]}/small{number:04}.dat", "wb") as file:
        file.write(chance.randbytes(chance.randint(20_000, 60_000)))
for number in range(20):
    with open(f"{sys.argv[1]}/large{number:02}.dat", "wb") as file:
        for _ in range(40):
            file.write(chance.randbytes(1 << 20))
END

fresh_target() {
    rm -rf -- "$work/to"
    mkdir -- "$work/to"
    sync -f -- "$work"
}

with_cp() {
    local TIMEFORMAT='%R %U %S'
    { time cp --preserve -- "$work"/from/* "$work/to/"; } 2>&1 | awk '{ print $1, $2 + $3 }'
}

with_lumora() {
    "$build/bin/bench/bench_copyfiles" "$work/from" "$work/to" 2> "$work/messages" || {
        cat -- "$work/messages" >&2
        return 1
    }
}

# Read once, so that both find the files in memory.
cat -- "$work"/from/* > /dev/null
for ((round = 0; round < rounds; round++)); do
    fresh_target
    with_cp >> "$work/cp"
    fresh_target
    with_lumora >> "$work/lumora"
done
[ "$(find "$work/to" -type f | wc -l)" -eq 5020 ]

median() { awk -v column="$2" '{ print $column }' "$work/$1" | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

printf '%-10s %12s %14s\n' '' 'seconds' 'of processor'
for who in cp lumora; do
    printf '%-10s %12s %14s\n' "$who" "$(median "$who" 1)" "$(median "$who" 2)"
done
awk -v a="$(median lumora 1)" -v b="$(median cp 1)" -v c="$(median lumora 2)" -v d="$(median cp 2)" \
    'BEGIN { printf "%-10s %12.2f %14.2f\n", "ratio", a / b, c / d }'

#!/usr/bin/env bash
# run.sh SECONDS [NAME ...]
# Runs each fuzzer (all, or the named ones: psd, decode ...) for SECONDS of processor time, from the sample files of its
# format and from what earlier runs found. What breaks something is kept in fuzz/found/NAME.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
programs="$root/build/fuzz/bin/fuzz"
samples="$root/../shared/samples"
[ "$#" -ge 1 ] || { sed -n '2,4s/^# //p' "$0" >&2; exit 2; }
seconds=$1
shift
names=("$@")
if [ "${#names[@]}" -eq 0 ]; then
    for program in "$programs"/fuzz_*; do names+=("${program##*/fuzz_}"); done
fi

# Links to the samples of one folder, small ones only; the fuzzer of the whole call gets some of every folder.
seed() {
    local name=$1 folder=$2 file
    mkdir -p -- "$folder"
    [ -d "$samples" ] || { printf 'run.sh: no sample files, starting from nothing\n' >&2; return; }
    case $name in
    qoi) true ;; # no sample files
    decode | texts) find "$samples" -type f -size -24k ! -path '*/media/*' ! -name '*.tsv' ! -name '*.md' ;;
    softimage | pictor | radiance | pict) find "$samples/pic" -type f -size -64k ;;
    compuserve) find "$samples/rle" -type f -size -64k ;;
    iff) find "$samples/iff" "$samples/lbm" -type f -size -64k ;;
    ico) find "$samples/ico" "$samples/cur" -type f -size -64k ;;
    sgi) find "$samples/rgb" -type f -size -64k ;;
    fpx) find "$samples/fpx" -type f -size -400k ;;
    *) find "$samples/$name" -type f -size -64k ;;
    esac 2> /dev/null | while IFS= read -r file; do
        cp -n -- "$file" "$folder/$(printf '%s' "$file" | md5sum | cut -c1-12)"
    done
}

# The processor time of a process in whole seconds; nothing when it has ended.
processor_seconds() {
    local fields
    { read -r -a fields < "/proc/$1/stat"; } 2> /dev/null || return 0
    [ "${fields[2]}" = Z ] || echo $(((fields[13] + fields[14]) / $(getconf CLK_TCK)))
}

# Asks a fuzzer to end once it has used its time; a busy machine makes it last longer, not do less. Sets `used`.
stop_after() {
    local seconds=$1 process=$2 now
    used=0
    while now=$(processor_seconds "$process") && [ -n "$now" ]; do
        used=$now
        [ "$used" -lt "$seconds" ] || { kill -USR1 "$process" 2> /dev/null || true; return; }
        sleep 2
    done
}

status=0
for name in "${names[@]}"; do
    corpus="$root/build/fuzz/corpus/$name"
    found="$root/fuzz/found/$name"
    seed "$name" "$corpus"
    mkdir -p -- "$found"
    LSAN_OPTIONS=suppressions=$root/tests/support/lsan.supp \
        ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1:malloc_context_size=8 \
        nice -n 19 "$programs/fuzz_$name" -timeout=300 -report_slow_units=120 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="$found/" "$corpus" > "$root/build/fuzz/$name.log" 2>&1 &
    stop_after "$seconds" "$!"
    wait "$!" || { status=1; printf '%s: something was found, see %s\n' "$name" "$found"; }
    rmdir -- "$found" 2> /dev/null || true
    printf '%-12s %4d s  %s\n' "$name" "$used" \
        "$(grep -E 'number_of_executed_units' "$root/build/fuzz/$name.log" | tr -s ' \n' ' ')"
done
exit "$status"

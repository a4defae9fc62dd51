#!/usr/bin/env bash
# test.sh [dev|asan|tsan|coverage] [CTEST ARGUMENTS]
# Installs what is missing, checks the sources, builds the tests and runs them all. Exit status 0 when everything passed.
set -euo pipefail

root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
preset=dev
case ${1:-} in
dev | asan | tsan | coverage)
    preset=$1
    shift
    ;;
-h | --help)
    sed -n '2,3s/^# //p' -- "${BASH_SOURCE[0]}"
    exit 0
    ;;
esac

say() { printf 'test.sh: %s\n' "$*" >&2; }

"$root/packaging/require.sh" build run check
cd -- "$root"
mkdir -p build

checks=0
tools/check.sh || checks=1

log="$root/build/test-$preset.log"
say "building the preset $preset, the log is $log"
if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } > "$log" 2>&1; then
    grep -E -A 12 'FAILED|error|Error' -- "$log" | head -n 80 >&2 || true
    say "building failed, the log is $log"
    exit 1
fi

# shellcheck source=tools/display.sh
. "$root/tools/display.sh"
home=$(mktemp -d)
trap 'stop_virtual_display; rm -rf -- "$home"' EXIT
start_virtual_display 1280x1024 || {
    say "the virtual display could not be started"
    exit 1
}

[ "$checks" -eq 0 ] || say "the source checks failed, so this run ends with 1 even if every test passes"

# Whatever a test forgets to put aside lands in a home that is thrown away.
mkdir -m 0700 -- "$home/run"
status=0
env -u XDG_CONFIG_HOME -u XDG_DATA_HOME -u XDG_CACHE_HOME -u XDG_STATE_HOME -u DBUS_SESSION_BUS_ADDRESS \
    HOME="$home" XDG_RUNTIME_DIR="$home/run" LC_ALL=C.UTF-8 \
    dbus-run-session -- ctest --preset "$preset" -j 2 --no-tests=error "$@" || status=$?

[ "$status" -ne 0 ] || status=$checks
exit "$status"

#!/usr/bin/env bash
# run.sh [ARGUMENTS]
# Installs what is missing, builds the release, and starts the program with ARGUMENTS; the exit status is the program's.
# Without a display it runs on a virtual one. Everything this script says goes to stderr.
set -euo pipefail

root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
log="$root/build/run.log"
program="$root/build/release/bin/lumora"

say() { printf 'run.sh: %s\n' "$*" >&2; }

# Shows how far the build is: a running count on a terminal, one line otherwise, nothing when there is nothing to do.
show_progress() {
    local row begun=""
    while IFS= read -r row; do
        case $row in
        \[*/*\]*)
            [ -n "$begun" ] || say "building, the log is $log"
            begun=1
            [ -t 2 ] && printf '\r%s ' "${row%%]*}]" >&2
            ;;
        esac
    done
    if [ -n "$begun" ] && [ -t 2 ]; then
        printf '\n' >&2
    fi
}

build() {
    # Somebody else's build tree, as root's is to an ordinary user: what was built there can still be started.
    if [ -x "$program" ] && { [ ! -w "$root/build/release" ] || { [ -e "$log" ] && [ ! -w "$log" ]; }; }; then
        say "the folder build is not writable: starting the program as it was built"
        return
    fi
    mkdir -p -- "$root/build"
    if [ ! -f "$root/build/release/build.ninja" ]; then
        say "configuring"
        if ! cmake -S "$root" --preset release > "$log" 2>&1; then
            tail -n 30 -- "$log" >&2
            say "configuring failed, the log is $log"
            exit 1
        fi
    fi
    if ! cmake --build "$root/build/release" 2>&1 | tee -- "$log" | show_progress; then
        grep -E -A 12 'FAILED|error' -- "$log" | head -n 60 >&2 || true
        say "building failed, the log is $log"
        exit 1
    fi
}

needs_display() {
    local argument
    for argument in "$@"; do
        case $argument in
        --) break ;;
        -h | --help | -v | --version | --convert | --convert=*) return 1 ;;
        esac
    done
    [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]
}

run_on_virtual_display() {
    # shellcheck source=tools/display.sh
    . "$root/tools/display.sh"
    if ! start_virtual_display 1280x1024; then
        say "there is no display, and a virtual one could not be started"
        exit 1
    fi
    say "no display: running on the virtual display $DISPLAY"
    local status=0 program_pid
    QT_QPA_PLATFORM=xcb "$program" "$@" <&0 &
    program_pid=$!
    trap 'kill -TERM "$program_pid" 2> /dev/null' TERM INT HUP
    wait "$program_pid" || status=$?
    # A signal ends the first wait early; the program's own status comes with the second.
    if kill -0 "$program_pid" 2> /dev/null; then
        status=0
        wait "$program_pid" || status=$?
    fi
    trap - TERM INT HUP
    stop_virtual_display
    exit "$status"
}

"$root/packaging/require.sh" build run
build
if needs_display "$@"; then
    run_on_virtual_display "$@"
fi
exec "$program" "$@"

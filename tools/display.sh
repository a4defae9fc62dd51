# shellcheck shell=bash
# To be sourced. start_virtual_display [WIDTHxHEIGHT]: an X server without a screen on a free display number. Sets DISPLAY,
# XAUTHORITY and display_pid; stop_virtual_display ends it. The server ends with this shell too, however that ends.

start_virtual_display() {
    local size=${1:-1280x1024} cookie number=""
    display_folder=$(mktemp -d)
    cookie=$(mcookie)
    xauth -q -f "$display_folder/server" add :0 . "$cookie" 2> /dev/null
    : > "$display_folder/number"
    local watch=()
    if command -v setpriv > /dev/null; then
        watch=(setpriv --pdeathsig TERM)
    fi
    "${watch[@]}" Xvfb -displayfd 3 -screen 0 "${size}x24" -noreset -nolisten tcp -auth "$display_folder/server" \
        3> "$display_folder/number" > "$display_folder/log" 2>&1 &
    display_pid=$!
    local tries
    for ((tries = 0; tries < 200; tries++)); do
        number=$(cat -- "$display_folder/number")
        [ -n "$number" ] && break
        kill -0 "$display_pid" 2> /dev/null || break
        sleep 0.05
    done
    if [ -z "$number" ]; then
        cat -- "$display_folder/log" >&2
        stop_virtual_display
        return 1
    fi
    xauth -q -f "$display_folder/client" add ":$number" . "$cookie" 2> /dev/null
    export DISPLAY=":$number" XAUTHORITY="$display_folder/client"
    unset WAYLAND_DISPLAY
}

stop_virtual_display() {
    if [ -n "${display_pid:-}" ]; then
        kill "$display_pid" 2> /dev/null || true
        wait "$display_pid" 2> /dev/null || true
        display_pid=
    fi
    if [ -n "${display_folder:-}" ]; then
        rm -rf -- "$display_folder"
        display_folder=
    fi
}

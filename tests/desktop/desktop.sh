# shellcheck shell=bash
# A desktop for one test: an X server with a window manager, an empty HOME, and the tools to look at windows. Sourced.
set -euo pipefail

world=$(mktemp -d)
pids=()
end_desktop() {
    local pid
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$world"
}
trap end_desktop EXIT

fail() {
    echo "FAILED: $*" >&2
    grep -v 'debian-menu.xml' "$world/openbox.log" >&2 2>/dev/null || true
    exit 1
}

start_desktop() {
    make_home
    : >"$world/display"
    Xvfb -displayfd 3 -screen 0 "${1:-1600x1000x24}" -nolisten tcp 3>"$world/display" >/dev/null 2>&1 &
    pids+=($!)
    wait_for "an X server" test -s "$world/display"
    DISPLAY=:$(cat "$world/display")
    export DISPLAY
    unset QT_QPA_PLATFORM
    openbox >"$world/openbox.log" 2>&1 &
    pids+=($!)
    wait_for "a window manager" window_manager_runs
}

make_home() {
    mkdir -p "$world/home" "$world/runtime"
    chmod 700 "$world/runtime"
    export HOME=$world/home XDG_RUNTIME_DIR=$world/runtime
}

window_manager_runs() {
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

# wait_for <what> <command>... : up to twenty seconds and more.
wait_for() {
    local what=$1
    shift
    for _ in $(seq 400); do
        if "$@"; then
            return
        fi
        sleep 0.05
    done
    fail "waited in vain for $what${window:+ (window at $(position "$window"))}: $*"
}

window_shown() {
    xdotool search --onlyvisible --name "^$1\$" >/dev/null 2>&1
}

window_named() {
    wait_for "the window $1" window_shown "$1"
    xdotool search --onlyvisible --name "^$1\$" | head -n 1
}

# rests <window>: the window manager has framed it and done with placing it.
rests() {
    local before
    xprop -id "$1" _NET_FRAME_EXTENTS | grep -q = || return 1
    before=$(position "$1")
    for _ in 1 2 3; do
        sleep 0.3
        [ "$(position "$1")" = "$before" ] || return 1
    done
}

# position <window>: "x y" of the client area's corner. xdotool counts the frame twice under a window manager.
position() {
    xwininfo -id "$1" | awk '/Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { print x, $NF }'
}

size() {
    xwininfo -id "$1" | awk '/^  Width/ { w = $NF } /^  Height/ { print w, $NF }'
}

screenshot() {
    import -window root "$screenshots/$1.png"
}

# click <x> <y>: in $window.
click() {
    xdotool mousemove --window "$window" "$1" "$2" click 1
    sleep 0.2
}

# text_at <x> <y>: everything in the text box there, through the clipboard. A bench that waits in a call gives nothing.
text_at() {
    click "$1" "$2"
    xdotool key ctrl+a ctrl+c
    sleep 0.2
    timeout 2 xclip -selection clipboard -out 2>/dev/null
}

# Everything in the bench's log pane.
log_text() {
    text_at 400 560
}

log_has() {
    log_text | grep -F -- "$1" >/dev/null
}

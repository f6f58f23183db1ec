#!/usr/bin/env bash
# test_desktop.sh <bench> <driver folder> <folder for screenshots>
# shellcheck source=tests/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"
bench=$1
drivers=$2
screenshots=$3
mkdir -p "$screenshots"

# moved_to <window> <x> <y>
moved_to() {
    [ "$(position "$1")" = "$2 $3" ]
}

# follows <dialog> <window>: the dialog stands flush against the window's right edge, tops level.
follows() {
    local dialog window width
    read -r -a dialog <<<"$(position "$1")"
    read -r -a window <<<"$(position "$2")"
    read -r width _ <<<"$(size "$2")"
    [ $((dialog[0] - window[0])) -eq "$width" ] && [ "${dialog[1]}" -eq "${window[1]}" ]
}

bench_ended() {
    ! kill -0 "$bench_pid" 2>/dev/null
}

start_bench() {
    LD_LIBRARY_PATH=$drivers "$bench" >"$world/out" 2>"$world/err" &
    bench_pid=$!
    pids+=("$bench_pid")
    window=$(window_named 多功能读卡器演示程序)
    dialog=$(window_named 身份证正反面合成图像)
}

start_desktop
start_bench

[ "$(size "$window")" = "867 644" ] || fail "the window is $(size "$window") large"
wait_for "the dialog at the window's edge" follows "$dialog" "$window"
wait_for "the window to come to rest" rests "$window"
screenshot start

# By the window's body: the status bar takes no mouse.
read -r x y <<<"$(position "$window")"
xdotool mousemove --window "$window" 300 636 mousedown 1
for _ in 1 2 3 4 5; do
    xdotool mousemove_relative -- 12 9
done
xdotool mouseup 1
wait_for "the window after a drag by its body" moved_to "$window" $((x + 60)) $((y + 45))
wait_for "the dialog after a drag by the body" follows "$dialog" "$window"

# Not with another button.
xdotool mousemove --window "$window" 300 636 mousedown 2 mousemove_relative 30 30 mouseup 2
moved_to "$window" $((x + 60)) $((y + 45)) || fail "the middle button dragged the window"

# By the window manager.
read -r x y <<<"$(position "$window")"
xdotool windowmove --sync "$window" $((x - 40)) $((y + 33))
wait_for "the dialog after a move by the window manager" follows "$dialog" "$window"

# The loader's lines come at once, though standard output is a file; the driver row is the first row of the window.
xdotool mousemove --window "$window" 613 18 click 1
wait_for "the console lines" grep -q 'Load symbols done.' "$world/out"
[ "$(grep -c '^Load symbol .* success' "$world/out")" -eq 85 ] || fail "not 85 symbols"
screenshot loaded

# Every tab, looked at by whoever changes a form.
tabs=(status 77 cpucard 202 magstripe 275 idcard 339 mifare 400 ssse 461)
for ((i = 0; i < ${#tabs[@]}; i += 2)); do
    xdotool mousemove --window "$window" "${tabs[i + 1]}" 181 click 1
    sleep 0.3
    screenshot "tab-${tabs[i]}"
done

# An end from outside goes through the event loop: the picture folder does not stay behind.
for signal in INT TERM HUP; do
    [ -d "$HOME/vek_idcard_images" ] || fail "no picture folder while the bench runs"
    kill -"$signal" "$bench_pid"
    wait_for "the end after SIG$signal" bench_ended
    [ ! -e "$HOME/vek_idcard_images" ] || fail "the picture folder outlived SIG$signal"
    wait "$bench_pid" || {
        status=$?
        cat "$world/err" >&2
        fail "SIG$signal gave the exit code $status"
    }
    [ "$signal" = HUP ] || start_bench
done

# Without standard output, whose number the connection to the X server must not get.
LD_LIBRARY_PATH=$drivers "$bench" >&- 2>"$world/err" &
bench_pid=$!
pids+=("$bench_pid")
window=$(window_named 多功能读卡器演示程序)
wait_for "the window to come to rest" rests "$window"
[ "$(readlink "/proc/$bench_pid/fd/1")" = /dev/null ] || fail "standard output is $(readlink "/proc/$bench_pid/fd/1")"
xdotool mousemove --window "$window" 613 18 click 1
sleep 0.5
screenshot loaded-without-output
kill -TERM "$bench_pid"
wait_for "the end of the bench without standard output" bench_ended
wait "$bench_pid" || fail "the bench without standard output gave the exit code $?"

if grep -E 'Sanitizer|runtime error' "$world/err"; then
    fail "a sanitizer spoke"
fi

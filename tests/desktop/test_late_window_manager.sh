#!/usr/bin/env bash
# test_late_window_manager.sh <bench> <driver folder>
#
# A drag goes with the mouse from its first motion on, also where the window manager began, or ended, after the window
# was shown: the frame's widths that Qt keeps are old then.
# shellcheck source=tests/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"
bench=$1
drivers=$2

# drags_by <what>: each motion is looked at, so that none makes up for another.
drags_by() {
    local x y motion
    xdotool mousemove --window "$window" 300 636 mousedown 1
    for motion in 1 2; do
        read -r x y <<<"$(position "$window")"
        xdotool mousemove_relative -- 30 15
        sleep 0.5
        [ "$(position "$window")" = "$((x + 30)) $((y + 15))" ] ||
            fail "motion $motion with $1 moved the window from $x $y to $(position "$window")"
    done
    xdotool mouseup 1
}

start_desktop
openbox --exit
sleep 0.5
LD_LIBRARY_PATH=$drivers "$bench" >"$world/out" 2>"$world/err" &
pids+=($!)
window=$(window_named 多功能读卡器演示程序)
sleep 1
openbox >>"$world/openbox.log" 2>&1 &
pids+=($!)
wait_for "a window manager" window_manager_runs
wait_for "the window to come to rest" rests "$window"
drags_by "a window manager that came late"
openbox --exit
sleep 1
drags_by "a window manager that is gone"

#!/usr/bin/env bash
# test_pcsc_road.sh <bench> <driver folder> <card program> <folder for screenshots>
#
# The main job, with mouse and keyboard on a real desktop: load libtarvozent.so, find the PC/SC readers, open one, power
# its card on, send an APDU. The log is taken through the clipboard and compared with what opensc-tool says.
# shellcheck source=tests/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"
bench=$1
drivers=$2
card=$3
screenshots=$4
mkdir -p "$screenshots"

atr=3B9513810180 # with its historical bytes and check byte below
atr+=73FF01000B
select_reply=6F0A8408A0000003330101019000

start_pcscd() {
    if ! pgrep -x pcscd >/dev/null; then
        PATH=$PATH:/usr/sbin pcscd --foreground >"$world/pcscd.log" 2>&1 &
        pids+=($!)
    fi
    wait_for "the virtual reader of pcscd (is vsmartcard-vpcd installed?)" virtual_reader_shown
}

virtual_reader_shown() {
    opensc-tool --list-readers 2>/dev/null | grep -q 'Virtual PCD 00 00'
}

card_seen() {
    opensc-tool --reader 'Virtual PCD 00 00' --atr 2>/dev/null | tr -d ': \n' | tr a-f A-F | grep "$atr" >/dev/null
}

start_desktop
# The daemon's socket and the virtual reader's ports exist once on a machine; the other tests take the same lock.
lock=/tmp/unifold-vpcd.lock
[ -e "$lock" ] || : >>"$lock"
exec 9<"$lock" # another user's, perhaps
flock 9
start_pcscd
"$card" "$atr" "00A4040008A000000333010101*=$select_reply" >/dev/null &
pids+=($!)
wait_for "the card in the reader" card_seen

LD_LIBRARY_PATH=$drivers "$bench" >"$world/out" 2>"$world/err" &
pids+=($!)
window=$(window_named 多功能读卡器演示程序)
wait_for "the window to come to rest" rests "$window"

click 300 18
xdotool key Down Return
sleep 0.2
click 613 18
wait_for "the driver" grep -q 'Load library libtarvozent.so success!' "$world/out"
click 215 81
click 384 81
wait_for "the reader in the log" log_has '设备1 [Virtual PCD 00 00].'
click 394 140
wait_for "the open device" log_has 'vek_open 打开设备成功！'
click 202 181
click 171 312
wait_for "the ATR" log_has "ATR = [$atr]"
click 720 312
wait_for "the reply" log_has "recv RPDU=[$select_reply]"
xdotool key ctrl+End
click 720 312
sleep 0.3
screenshot pcsc-road

#!/usr/bin/env bash
# tour.sh <build folder> <output folder>
#
# Walks through the bench by itself over the virtual reader, with mouse and keyboard in the real window: on the display
# of $DISPLAY, or on a virtual one where there is none. Leaves each step's log text and picture in the output folder,
# and ends with an error if a step did not show what it should. The tray and HOME are temporary. On a real display it
# takes the mouse and the clipboard for half a minute.
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
mkdir -p "$2"
output=$(cd "$2" && pwd)
# shellcheck source=tests/desktop/desktop.sh
. "$root/tests/desktop/desktop.sh"

own_display=
use_display() {
    if [ -z "${DISPLAY:-}" ] || ! xwininfo -root >/dev/null 2>&1; then
        own_display=yes
        start_desktop 1920x1080x24
        return
    fi
    export XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority} QT_QPA_PLATFORM=xcb
    make_home
}

# As ./run places them; on a smaller screen the panel lies under the bench, which has to be seen to be clicked at.
place_windows() {
    panel_place=+6+120
    bench_place=+620+100
    if [ "$(xwininfo -root | awk '/^  Width/ { print $NF }')" -lt 1920 ]; then
        panel_place=+0+0
        bench_place=+0+20
    fi
}

start_programs() {
    place_windows
    "$build/bin/unifold-tray-panel" --geometry "$panel_place" 2>"$world/panel.err" &
    pids+=($!)
    panel=$(window_named 虚拟读卡器)
    LD_LIBRARY_PATH=$build/drivers/virtual "$build/bin/unifold-bench" -geometry "$bench_place" \
        >"$world/bench.out" 2>"$world/bench.err" &
    pids+=($!)
    window=$(window_named 多功能读卡器演示程序)
    dialog=$(window_named 身份证正反面合成图像)
    wait_for "the window to come to rest" rests "$window"
}

picture() {
    xdotool windowraise "$2"
    sleep 0.3
    import -window "$2" "$output/$1.png"
}

# has_picture <name>: it shows more than controls.
has_picture() {
    [ "$(identify -format %k "$output/$1.png")" -gt 2000 ]
}

number=0

# step <name>: the log is emptied, so that it will hold this step alone.
step() {
    number=$((number + 1))
    name=$(printf '%02d-%s' "$number" "$1")
    echo "$name"
    xdotool windowraise "$window"
    click 822 18
}

# holds_all <text>...: the step's text has each of them.
holds_all() {
    local text missing=
    for text in "$@"; do
        grep -F -- "$text" "$output/$name.txt" >/dev/null || missing+=" [$text]"
    done
    [ -z "$missing" ] || fail "step $name does not show$missing; see $output/$name.txt"
}

# shows <text>...: the step is done when the log holds the last text, and then it has to hold all of them. Keeps the log
# and the picture, also those of a step that went wrong.
shows() {
    for _ in $(seq 20); do
        log_has "${*: -1}" && break
        sleep 0.2
    done
    log_text >"$output/$name.txt" || true
    click 400 560
    xdotool key ctrl+End
    picture "$name" "$window"
    holds_all "$@"
}

# box_shows <x> <y> <text>...: the text box on the page holds them. Its text is kept behind the log's.
box_shows() {
    printf '\n\n' >>"$output/$name.txt"
    text_at "$1" "$2" >>"$output/$name.txt" || true
    xdotool key ctrl+Home # not selected in the next picture
    holds_all "${@:3}"
}

tab() {
    click "$1" 181
}

load_and_open() {
    step load
    click 613 18
    wait_for "the driver" grep -q 'Load symbols done.' "$world/bench.out"
    cp "$world/bench.out" "$output/$name.txt" # the bench tells of it there, not in its log
    picture "$name" "$window"
    holds_all 'Load library libtarvovek.so success!'
    ! grep failed "$output/$name.txt" || fail "the library lacks calls"
    step open
    click 90 82
    click 410 84
    click 394 140
    shows 'vek_open 打开设备成功！'
    step reader
    click 54 212
    click 801 285
    shows 'vek_firm_version return[0] (assert 0)' 'firm_version [Unifold virtual reader' 'vek_beep return[0] (assert 0)'
}

read_id_card() {
    tab 339
    step id-card
    click 75 300
    shows 'vek_idcr_getinfo return[0] (assert 0)'
    picture "$name-images" "$dialog"
    # The whole desktop only where it is the tour's own.
    [ -z "$own_display" ] || import -window root -crop 1920x840+0+60 +repage "$output/desktop.png"
    box_shows 370 391 林晓岚 云杉市临江区梧桐路88号 990101199003070023
    has_picture "$name-images" || fail "the ID card's pictures are not in the image dialog"
}

read_cpu_card() {
    tab 202
    step power-on
    click 171 312
    shows 'ATR = [3B6D0000554E49464F4C44205353534531]'
    step apdu
    click 720 312
    shows 'vek_icc_apdu return[0x0]' 'recv RPDU=[6F2C8408A000000333010101'
    step pboc-card-information
    click 705 384
    shows 'vek_pboc_get_card_info return[0x0]' 'ZHANG SAN'
    step pboc-arqc
    click 705 421
    shows 'vek_pboc_get_arqc return[0x0]' 'ARQC=[A016' 'P0196228000100001018885'
}

use_mifare_card() {
    tab 400
    step mifare-find
    click 298 244
    shows 'TYPE[A] UID = [3A9F07C4]'
    step mifare-authenticate
    click 295 415
    shows 'vek_mifare_authentication return[0x0]'
    step mifare-read
    click 793 303
    shows 'DATA = [8813000077ECFFFF8813000005FA05FA]'
    step mifare-wallet
    click 563 415
    click 804 415
    click 563 447
    click 804 447
    shows 'vek_mifare_init_value return[0x0]' 'vek_mifare_increase_value return[0x0]' 'vek_mifare_decrease_value return[0x0]' '余额 = [210]'
}

# The bench waits in the call while the card is swiped at the panel.
swipe_stripe() {
    tab 275
    step stripe
    click 180 328
    xdotool windowactivate --sync "$panel" key alt+s windowactivate --sync "$window"
    sleep 0.5
    shows 'vek_msr_qm_get return[0]'
    box_shows 426 241 6228000123456785=29121010000000000
    "$build/bin/unifold-tray" status | grep 'swipes 1,' >/dev/null || fail "the tray counts no swipe"
}

read_social_security_card() {
    tab 461
    step social-security-issuer
    click 224 278
    shows 'vek_ssse_get_issuer_info return[0x0]'
    box_shows 224 400 A00000018
    step social-security-holder
    click 647 278
    shows 'vek_ssse_get_user_info return[0x0]'
    box_shows 647 400 张三 110101199003072615
}

close_reader() {
    step close
    click 569 141
    shows 'vek_close return[0].'
    click 697 18
}

use_display
export UNIFOLD_TRAY=$world/tray
rm -f "$output"/*.png "$output"/*.txt
start_programs
load_and_open
read_id_card
read_cpu_card
use_mifare_card
swipe_stripe
read_social_security_card
picture panel "$panel"
has_picture panel || fail "the panel shows no cards"
close_reader
if grep -E 'Sanitizer|runtime error' "$world/bench.err" "$world/panel.err"; then
    fail "a sanitizer spoke"
fi
echo "The tour is over: $number steps, log texts and pictures in $output"

#!/usr/bin/env bash
# take_pictures.sh [<build folder> [<folder for the pictures>]]
#
# Makes the pictures of docs/pictures anew: the bench over the virtual reader, each page after its work.
# shellcheck source=tests/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(realpath "${1:-$root/build}")
pictures=${2:-$root/docs/pictures}
mkdir -p "$pictures"
bench=$build/bin/unifold-bench
tray=$build/bin/unifold-tray

click() {
    xdotool mousemove --window "$window" "$1" "$2" click 1
    sleep 0.4
}

# page <x of the tab>: brings it to the front over an empty log.
page() {
    click "$1" 181
    click 821 18
}

# picture <name> <width>x<height>+<x>+<y> [<colours>]: a part of the screen, in few enough colours to be small.
picture() {
    xdotool mousemove 1 1
    sleep 0.3
    import -window root "$world/root.png"
    convert "$world/root.png" -crop "$2" +repage -strip -dither None -colors "${3:-64}" \
        -define png:compression-level=9 -define png:compression-filter=0 \
        "$pictures/$1.png"
}

window_part() {
    local x y left right top bottom width height
    read -r x y <<<"$(position "$window")"
    read -r width height <<<"$(size "$window")"
    IFS=', ' read -r left right top bottom <<<"$(xprop -id "$window" _NET_FRAME_EXTENTS | sed 's/.*= //')"
    echo "$((width + left + right + ${1:-0}))x$((height + top + bottom))+$((x - left))+$((y - top))"
}

start_desktop 1920x1080x24
export HOME=$world # short enough for the page's field
LD_LIBRARY_PATH=$build/drivers/virtual:$build/drivers/pcsc "$bench" >"$world/out" 2>"$world/err" &
pids+=($!)
window=$(window_named 多功能读卡器演示程序)
dialog=$(window_named 身份证正反面合成图像)
wait_for "the window to come to rest" rests "$window"
click 613 18
wait_for "the driver" grep -q 'Load library libtarvovek.so success!' "$world/out"
click 479 140

page 77
click 54 212  # firmware version
click 801 285 # beep
click 221 427 # set rate
picture tab-status "$(window_part)"

page 194
click 151 313 # power on
click 713 313 # send
picture tab-cpucard "$(window_part)"

page 274
{
    sleep 1
    "$tray" swipe >/dev/null
} &
click 177 328 # read, which waits for the swipe
wait $!
sleep 0.5
picture tab-magstripe "$(window_part)"

page 338
click 284 308 # SAM ID
click 284 276 # UID
click 74 300  # read
sleep 0.5
picture tab-idcard "$(window_part)" 96
read -r dialog_width _ <<<"$(size "$dialog")"
picture id-card-dialog "$(window_part "$dialog_width")" 40

page 400
click 296 242 # find
click 293 412 # authenticate
click 561 412 # wallet: initialise, top up, deduct, balance
click 805 412
click 561 444
click 805 444
click 790 300 # read the block
picture tab-mifare "$(window_part)"

page 460
click 221 274 # issuer
click 648 274 # holder
picture tab-ssse "$(window_part)"

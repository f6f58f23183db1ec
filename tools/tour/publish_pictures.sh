#!/usr/bin/env bash
# publish_pictures.sh <tour's output folder> <folder for the pictures>
#
# Makes the pictures of README and docs/ from those of a tour, in few enough colours to be small. A tour on a display of
# its own has all of them.
set -euo pipefail
tour=$1
pictures=$2

# publish <name> <colours> <step's picture>...: several stand side by side.
publish() {
    local name=$1 colours=$2 pattern files=()
    shift 2
    for pattern in "$@"; do
        # shellcheck disable=SC2206 # the pattern is to be expanded
        files+=("$tour"/$pattern)
    done
    convert "${files[@]}" -background white +append -strip -dither None -colors "$colours" \
        -define png:compression-level=9 "$pictures/$name.png"
}

mkdir -p "$pictures"
publish desktop 128 desktop.png
publish id-card-dialog 64 '??-id-card.png' '??-id-card-images.png'
publish tab-status 64 '??-reader.png'
publish tab-cpucard 64 '??-apdu.png'
publish tab-magstripe 64 '??-stripe.png'
publish tab-idcard 96 '??-id-card.png'
publish tab-mifare 64 '??-mifare-wallet.png'
publish tab-ssse 64 '??-social-security-holder.png'

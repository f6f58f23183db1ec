#!/usr/bin/env bash
# test_package.sh <build folder>: what the Debian package holds, and that the bench in it starts from where it lies.
set -euo pipefail
world=$(mktemp -d)
trap 'rm -rf "$world"' EXIT
cd "$1"
cpack -G DEB -B "$world" >"$world/cpack.log" 2>&1 || {
    cat "$world/cpack.log"
    exit 1
}
dpkg-deb --field "$world"/*.deb Depends | grep libqt5svg5 >/dev/null || {
    echo "the package does not bring the icon's format"
    exit 1
}
dpkg-deb --extract "$world"/*.deb "$world/root"
if find "$world/root" -path '*/drivers/test*' | grep .; then
    echo "a driver for tests is in the package"
    exit 1
fi
for kind in cpu id mifare stripe; do
    [ -s "$world/root/usr/share/unifold-bench/schema/card-$kind.schema.json" ] || {
        echo "the package does not say what a card of the kind $kind is"
        exit 1
    }
done
mkdir -m 700 "$world/home"
status=0
HOME=$world/home XDG_RUNTIME_DIR=$world/home QT_QPA_PLATFORM=offscreen \
    timeout --preserve-status --signal TERM 3 "$world/root/usr/bin/unifold-bench" || status=$?
[ "$status" -eq 0 ] || {
    echo "the installed bench ended with $status"
    exit 1
}

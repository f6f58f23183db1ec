#!/usr/bin/env bash
# run.sh <build folder>: the soak test over the recording driver, in a HOME of its own.
set -euo pipefail
build=$(realpath "$1")
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
HOME=$home XDG_RUNTIME_DIR=$home QT_QPA_PLATFORM=offscreen LD_LIBRARY_PATH=$build/drivers/test-recording \
    "$build/tests/unifold-soak"

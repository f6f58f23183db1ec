#!/usr/bin/env bash
# run.sh <build folder> [seconds per target] [target]...: fuzzes each target, one after the other (an hour in all if
# nothing is said), and adds to its corpus the few of the new inputs that reach all the code which none there reaches.
# An input that fails stays in <build folder>/fuzz; it belongs into the corpus once its cause is mended.
set -euo pipefail
build=$(realpath "$1")
seconds=${2:-450}
shift $(($# < 2 ? $# : 2))
here=$(dirname "$(realpath "$0")")
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(ls "$here/corpus")

for target in "${targets[@]}"; do
    # Kept, so that the next hour goes on where this one ends.
    export FUZZ_FOUND=$build/fuzz/found/$target
    mkdir -p "$FUZZ_FOUND"
    echo "== $target"
    nice "$here/fuzz.sh" "$build" "$target" -max_total_time="$seconds" >"$build/fuzz/$target.log" 2>&1 || {
        tail -n 60 "$build/fuzz/$target.log"
        exit 1
    }
    grep -E 'DONE|Done' "$build/fuzz/$target.log"
    # How often an input goes through the code does not count, or the corpus would have thousands.
    "$here/fuzz.sh" "$build" "$target" -set_cover_merge=1 -use_counters=0 >"$build/fuzz/$target.merge.log" 2>&1
    tail -n 1 "$build/fuzz/$target.merge.log"
done

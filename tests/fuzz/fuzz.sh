#!/usr/bin/env bash
# fuzz.sh <build folder> <target> <libFuzzer option>...: runs a target's corpus and then new inputs. Those that find
# something stay in FUZZ_FOUND, if that names a folder; with -set_cover_merge=1 they are merged into the corpus instead.
# An input that fails stays in <build folder>/fuzz.
set -euo pipefail
build=$(realpath "$1")
target=$2
shift 2
here=$(dirname "$(realpath "$0")")
# In memory if there is such a place: the targets change files all the time.
world=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
trap 'rm -rf "$world"' EXIT
mkdir "$world/found"
folders=("${FUZZ_FOUND:-$world/found}" "$here/corpus/$target") # libFuzzer writes to the first one
[[ " $* " != *merge=1* ]] || folders=("${folders[1]}" "${folders[0]}")

HOME=$world TMPDIR=$world XDG_DATA_HOME=$world \
    LSAN_OPTIONS=suppressions=$here/../lsan.supp:print_suppressions=0 UBSAN_OPTIONS=print_stacktrace=1 \
    "$build/fuzz/$target" -artifact_prefix="$build/fuzz/$target-" -dict="$here/words.dict" -timeout=20 -len_control=0 \
    -rss_limit_mb=2048 "$@" "${folders[@]}"

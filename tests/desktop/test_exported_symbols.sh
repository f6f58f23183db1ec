#!/usr/bin/env bash
# The bench must export none of its table pointers: a driver that calls its own vek_open would get the bench's.
set -euo pipefail
nm --extern-only "$1" | grep ' [BD] vek_open$' >/dev/null || {
    echo "the table pointers have no external linkage"
    exit 1
}
if nm --dynamic --defined-only "$1" | grep -E ' (vek_|initMSF|inerrupt|genARQC|GetTxDetail)'; then
    echo "the executable exports table pointers"
    exit 1
fi
if readelf --dynamic "$1" | grep -E 'RPATH|RUNPATH'; then
    echo "the executable brings a library path of its own"
    exit 1
fi

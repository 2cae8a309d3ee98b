#!/usr/bin/env bash
# Runs every benchmark program of the build and prints its figures, one per line, as
# "name value unit".
set -euo pipefail
build=${1:-build}
shopt -s nullglob
ran=0
for program in "$build"/bench/bench_*; do
    # Only programs: CMake keeps folders such as bench_foundation_autogen beside them.
    [ -f "$program" ] && [ -x "$program" ] || continue
    echo "# $(basename "$program")"
    arguments=()
    # The long preview runs 20 minutes on its own; here it is shortened unless asked for.
    [ "$(basename "$program")" = bench_endurance ] && arguments=(--minutes "${ENDURANCE_MINUTES:-2}")
    QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$program" "${arguments[@]}"
    ran=1
done
[ $ran -eq 1 ] || echo "no benchmark programs in $build/bench"

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
    QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$program"
    ran=1
done
[ $ran -eq 1 ] || echo "no benchmark programs in $build/bench"

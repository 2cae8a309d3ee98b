#!/usr/bin/env bash
# Starts the built app. Without a display the app cannot open its window; it says so itself.
set -uo pipefail
app=${1:?usage: run.sh PATH-TO-TESSARO}
shift
"$app" "$@"
status=$?
if [ $status -eq 2 ] && [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-}" ]; then
    echo "(Built $app; the build and tests work without a display: try 'make test'.)"
    exit 0
fi
exit $status

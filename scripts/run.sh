#!/usr/bin/env bash
# Starts the built app. Without a display there is no window to open, so it records the headless
# demo clip from the virtual camera instead and says where the clip is.
set -uo pipefail
app=${1:?usage: run.sh PATH-TO-TESSARO}
shift
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ "${QT_QPA_PLATFORM:-}" != "offscreen" ] && [ $# -eq 0 ]; then
    echo "No display found: recording the demo clip with the virtual camera instead."
    echo "(On a desktop, 'make run' opens the window.)"
    exec "$app" record --camera virtual
fi
exec "$app" "$@"

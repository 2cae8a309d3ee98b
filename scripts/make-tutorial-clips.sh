#!/usr/bin/env bash
# Remakes the tutorial's four clips (resources/data/1.mov ... 4.mov) with the app's own recorder
# and the virtual camera, so a change to the recorder or the camera's scene can remake them.
# Each take is recorded at HD by `tessaro record`, then cut to the phone's portrait shape around
# the subject, shrunk and re-encoded without sound (the tutorial plays them muted) to stay small.
#
#   scripts/make-tutorial-clips.sh [PATH-TO-TESSARO] [OUTPUT-FOLDER]
#   CLIPS="1 4" scripts/make-tutorial-clips.sh      remakes only those
set -euo pipefail
cd "$(dirname "$0")/.."
app=${1:-build/app/tessaro}
out=${2:-resources/data}
[ -x "$app" ] || { echo "No $app: build first (make build)." >&2; exit 1; }
command -v gst-launch-1.0 >/dev/null || { echo "gst-launch-1.0 is missing (scripts/install-deps.sh)." >&2; exit 1; }
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A loaded machine drops frames while encoding HD; a take that lost more than a tenth of them
# stutters, so it is taken again (at most three times, keeping the best).
record() {
    local name=$1
    shift
    local best="" best_dropped=999999
    for attempt in 1 2 3; do
        local take="$work/$name-$attempt.mov"
        local summary
        summary=$(QT_QPA_PLATFORM=offscreen "$app" record --camera virtual --output "$take" "$@")
        local written dropped
        written=$(sed -n 's/^ *frames *\([0-9]*\) written.*/\1/p' <<<"$summary")
        dropped=$(sed -n 's/^ *frames.*written, *\([0-9]*\) dropped.*/\1/p' <<<"$summary")
        dropped=${dropped:-0}
        echo "$name: take $attempt, ${written:-?} frames written, $dropped dropped" >&2
        if [ "$dropped" -lt "$best_dropped" ]; then
            best=$take
            best_dropped=$dropped
        fi
        [ -n "$written" ] && [ $((dropped * 10)) -le "$written" ] && break
    done
    echo "$best"
}

# 1080 × 1080·9/16 around the centre, where the virtual camera's subject stands, then 540 × 960.
portrait() {
    local take=$1 clip=$2
    gst-launch-1.0 -q filesrc location="$take" ! qtdemux ! h264parse ! avdec_h264 ! \
        videoconvert ! videocrop left=656 right=656 ! videoscale method=lanczos ! \
        video/x-raw,width=540,height=960 ! videorate ! video/x-raw,framerate=30/1 ! \
        x264enc bitrate=640 speed-preset=slower key-int-max=60 ! video/x-h264,profile=main ! \
        qtmux faststart=true ! filesink location="$clip"
}

make_clip() {
    local name=$1
    shift
    [[ " ${CLIPS:-1 2 3 4} " == *" $name "* ]] || return 0
    local take
    take=$(record "$name" "$@")
    portrait "$take" "$out/$name.mov"
    local size
    size=$(stat -c %s "$out/$name.mov")
    echo "$out/$name.mov: $((size / 1024)) KB" >&2
    if [ "$size" -gt 512000 ]; then
        echo "$out/$name.mov is over 500 KB; lower the bit rate above." >&2
        exit 1
    fi
}

make_clip 1 --duration 4 --zoom 3            # zoom-out ramp: walking toward the subject
make_clip 2 --duration 4 --zoom 3 --zoom-in  # zoom-in ramp: walking away from it
make_clip 3 --duration 5 --zoom 2            # a gentle ramp with the subject held in the middle
make_clip 4 --duration 5 --zoom 4            # the finished effect at full strength

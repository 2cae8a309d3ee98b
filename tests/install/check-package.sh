#!/usr/bin/env bash
# make package's Debian package: runtime dependencies only, and its files run from an unpacked root.
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$build" && cpack -G DEB -B "$work/out" >/dev/null)
deb=$(ls "$work"/out/*.deb)
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
grep -q 'libqt6widgets6' <<<"$depends" || { echo "no Qt runtime dependency"; exit 1; }
grep -q 'gstreamer1.0-plugins-good' <<<"$depends" || { echo "no GStreamer plugins"; exit 1; }
if grep -q -- '-dev' <<<"$depends"; then echo "a development package among the dependencies"; exit 1; fi
dpkg-deb -x "$deb" "$work/root"
version=$(env -i HOME="$work" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen "$work/root/usr/bin/tessaro" --version)
[[ $version == Tessaro\ * ]] || { echo "the unpacked program printed: $version"; exit 1; }
[ -f "$work/root/usr/share/tessaro/1.mov" ] || { echo "no tutorial clips in the package"; exit 1; }
echo "$(basename "$deb"): $version"

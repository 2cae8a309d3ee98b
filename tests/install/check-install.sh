#!/usr/bin/env bash
# Installs the build into a scratch root under an unusual prefix and runs the installed program
# with a bare environment: it must start, record, and find its tutorial clips beside itself
# (never in the source tree); the desktop file and the metainfo must pass their validators.
set -euo pipefail
build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
prefix=/opt/tessaro-check
DESTDIR="$root" cmake --install "$build" --prefix "$prefix" >/dev/null
bin="$root$prefix/bin/tessaro"
share="$root$prefix/share"
run() { env -i HOME="$root/home" PATH=/usr/bin:/bin LANG=C.UTF-8 QT_QPA_PLATFORM=offscreen "$@"; }
mkdir -p "$root/home"

for f in "applications/org.tessaro.Tessaro.desktop" "metainfo/org.tessaro.Tessaro.metainfo.xml" \
         "icons/hicolor/scalable/apps/org.tessaro.Tessaro.svg" \
         "icons/hicolor/symbolic/apps/org.tessaro.Tessaro-symbolic.svg" \
         "man/man1/tessaro.1" tessaro/1.mov tessaro/2.mov tessaro/3.mov tessaro/4.mov; do
    [ -f "$share/$f" ] || { echo "not installed: share/$f"; exit 1; }
done
[ ! -e "$share/tessaro/.keep" ] || { echo "the data folder's placeholder was installed"; exit 1; }

run "$bin" record --duration 1 --output "$root/home/clip.mov" >/dev/null
[ -s "$root/home/clip.mov" ] || { echo "the installed program recorded no clip"; exit 1; }

find "$root$prefix" -path '*/tessaro/tessaro-faces.so' | grep -q . ||
    { echo "the face detector's module was not installed"; exit 1; }
faces=$(run "$bin" photo --faces --output "$root/home/still.jpg" 2>&1)
grep -q "^Face 1:" <<<"$faces" || { echo "the installed program found no face: $faces"; exit 1; }

german=$(env -i HOME="$root/home" PATH=/usr/bin:/bin LANGUAGE=de LANG=de_DE.UTF-8 "$bin" --help)
grep -q "Mit der Kamera NAME aufnehmen" <<<"$german" || { echo "no German: $german"; exit 1; }

out=$(run "$bin" --screenshot tutorial-1 "$root/home/t1.png" 2>&1)
! grep -q 'not found' <<<"$out" && [ -s "$root/home/t1.png" ] ||
    { echo "the installed program did not find its tutorial clips: $out"; exit 1; }

# validate PACKAGE COMMAND...: runs the validator, or says which package would bring it.
validate() {
    if command -v "$2" >/dev/null; then "${@:2}"
    else echo "$2 is missing (package $1): ${*: -1} not checked"; fi
}
validate desktop-file-utils desktop-file-validate "$share/applications/org.tessaro.Tessaro.desktop"
validate appstream appstreamcli validate --no-net "$share/metainfo/org.tessaro.Tessaro.metainfo.xml"
echo "installed under $prefix: runs, records, finds faces, speaks German, finds its clips; desktop file and metainfo valid"

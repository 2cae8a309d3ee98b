#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the app need, and nothing when they are
# all there already (a dpkg query, no network), so every make target can call it first.
set -euo pipefail

packages=(
    build-essential cmake pkg-config clang-format
    qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-svg-dev qt6-sensors-dev
    libgl-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    gstreamer1.0-plugins-ugly gstreamer1.0-libav xdg-utils
    fonts-dejavu-core fontconfig
    xvfb xauth dbus-daemon
    desktop-file-utils appstream dpkg-dev file qt6-translations-l10n
    libexif-dev libopencv-objdetect-dev libopencv-imgproc-dev opencv-data
)

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
sudo=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Need root or sudo to install: ${missing[*]}" >&2; exit 1; }
    sudo=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"

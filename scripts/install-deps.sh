#!/usr/bin/env bash
# Installs every Debian package Selvane needs to build, test and run.
# Quick when everything is already present: apt is only touched for missing packages.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-multimedia-dev libqt6opengl6-dev qt6-tools-dev qt6-tools-dev-tools
  qt6-websockets-dev
  qt6-l10n-tools linguist-qt6 qt6-translations-l10n
  libavformat-dev libavcodec-dev libavdevice-dev libavfilter-dev libavutil-dev libswscale-dev
  libswresample-dev ffmpeg
  libxcb1-dev libxcb-randr0-dev xvfb xauth x11-utils xdotool libgl1-mesa-dri
  fonts-dejavu-core fonts-noto-cjk
  pulseaudio pulseaudio-utils
  nginx libnginx-mod-rtmp libnginx-mod-stream microsocks dante-server
  g++-mingw-w64-x86-64-posix time valgrind ccache gnuplot-nox
  chromium chromium-driver python3-selenium
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all ${#PACKAGES[@]} packages present"
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

# nginx must not start as a system service: the tests run their own instances.
if [ ! -e /usr/sbin/policy-rc.d ]; then
  printf '#!/bin/sh\nexit 101\n' | $SUDO tee /usr/sbin/policy-rc.d >/dev/null
  $SUDO chmod +x /usr/sbin/policy-rc.d
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"

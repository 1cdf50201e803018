#!/usr/bin/env bash
# Measures how late a 10 ms timer on the window thread runs during a show (four channels, a cut
# every 2 s, a recording), with the engine alone and with the main window on a virtual display.
# Usage: scripts/latency.sh [SECONDS]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
seconds="${1:-60}"
"$root/scripts/build.sh" >/dev/null
QT_QPA_PLATFORM=offscreen "$build/selvane_latency" --seconds "$seconds" 2>/dev/null
xvfb-run -a -s "-screen 0 1920x1080x24" env QT_QPA_PLATFORM=xcb \
  "$build/selvane_latency" --window --seconds "$seconds" 2>/dev/null

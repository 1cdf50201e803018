#!/usr/bin/env bash
# How live pictures land on the program's ticks, a minute per window: RTMP, SRT, UDP and HLS
# senders at 30, 29.97, 59.94 and 60 fps into a 30 fps show, before and after the RTMP publisher
# restarts; prints each channel's repeated ticks and skipped pictures against what the rates
# imply. The suite runs the same test with 8-second windows.
# Usage: scripts/cadence.sh [SECONDS]      (by hand, never in CI)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
[ -n "${SELVANE_NO_BUILD:-}" ] || "$root/scripts/build.sh" >/dev/null
export SELVANE_CADENCE_SECONDS="${1:-60}"
# Each row runs up to ten windows of that length (a window in which a margin grew is run again)
# plus about a minute of setting up.
export QTEST_FUNCTION_TIMEOUT=$(( 3 * (10 * SELVANE_CADENCE_SECONDS + 60) * 1000 ))
QT_QPA_PLATFORM=offscreen "$build/tests/test_cadence" 2>&1 |
  sed -n 's/^QINFO  : TestCadence::everyTickShowsItsPicture([^)]*) //p; /^\(PASS\|FAIL\|Totals\)/p'

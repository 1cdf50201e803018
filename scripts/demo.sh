#!/usr/bin/env bash
# Installs what is missing, builds, and runs the built-in demo headless for 20 seconds,
# recording it to demo.mp4 in the current folder (other arguments are passed on).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" >/dev/null
build="${SELVANE_BUILD_DIR:-$root/build}"
exec "$build/selvane" --demo --duration 20 --record "$PWD/demo.mp4" "$@"

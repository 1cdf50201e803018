#!/usr/bin/env bash
# Installs what is missing, builds, and starts Selvane with the given arguments.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" >/dev/null
build="${SELVANE_BUILD_DIR:-$root/build}"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "run: no display; starting under a virtual X server (xvfb-run)" >&2
  exec xvfb-run -a "$build/selvane" "$@"
fi
exec "$build/selvane" "$@"

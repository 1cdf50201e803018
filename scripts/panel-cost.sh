#!/usr/bin/env bash
# What one open web panel costs a show's CPU: two identical headless shows side by side, the
# panel open in headless Chromium on one of them. By hand, never in CI.
#   scripts/panel-cost.sh [SECONDS] [ROUNDS]     (default 30 s, 3 rounds)
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
binary="${SELVANE_BINARY:-$here/../build/selvane}"
exec /usr/bin/python3 "$here/lib/panel-cost.py" "$binary" "${1:-30}" "${2:-3}"

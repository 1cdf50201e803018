#!/usr/bin/env bash
# Configures and builds Selvane into build/ (or $SELVANE_BUILD_DIR). Extra arguments go to CMake.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${SELVANE_BUILD_TYPE:-RelWithDebInfo}" "$@"
cmake --build "$build" -j "$(nproc)"

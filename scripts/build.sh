#!/usr/bin/env bash
# Configures and builds Selvane into build/ (or $SELVANE_BUILD_DIR). Extra arguments go to CMake.
#
# Compiles go through ccache when it is there, with its cache outside the tree
# (~/.cache/ccache unless CCACHE_DIR says otherwise) and paths taken relative to the tree, so
# that a fresh clone anywhere on the machine reuses what an earlier build compiled.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
launcher=()
if command -v ccache >/dev/null 2>&1 && [ "${SELVANE_NO_CCACHE:-0}" != 1 ]; then
  export CCACHE_BASEDIR="$root"
  export CCACHE_NOHASHDIR=1
  export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-6G}"
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${SELVANE_BUILD_TYPE:-RelWithDebInfo}" \
  "${launcher[@]}" "$@"
cmake --build "$build" -j "$(nproc)"
if [ ${#launcher[@]} -gt 0 ]; then
  ccache --show-stats 2>/dev/null | grep -Ei "^ *(hits|misses|cacheable calls|direct|preprocessed)" |
    sed 's/^/build: ccache /' || true
fi

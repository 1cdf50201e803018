#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite (unit, integration, gui).
# Extra arguments go to ctest, e.g. `scripts/test.sh -L unit`.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
build="${SELVANE_BUILD_DIR:-$root/build}"
cd "$build"
ctest --output-on-failure --timeout 600 -j "${SELVANE_TEST_JOBS:-3}" "$@"

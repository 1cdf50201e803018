#!/usr/bin/env bash
# Fuzzes the program arrangement reader with libFuzzer (clang): scripts/fuzz.sh [RUNS]
# (default one million executions). Crashes are written to build-fuzz/crash-*.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-1000000}"
build="$root/build-fuzz"
CC=clang CXX=clang++ cmake -S "$root/tests/fuzz" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" >/dev/null
corpus="$build/corpus"
mkdir -p "$corpus"
cp -n "$root/tests/fuzz/corpus/"*.json "$corpus/" 2>/dev/null || true
cd "$build"
QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 ./fuzz_arrangement -runs="$runs" -max_len=8192 \
  -print_final_stats=1 "$corpus"

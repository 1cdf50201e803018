#!/usr/bin/env bash
# Fuzzes the program arrangement reader, the source-address and stream-target readers with the
# secret masker, and the headless command-line reader, with libFuzzer (clang): scripts/fuzz.sh [RUNS] (default one million
# executions each). Crashes are written to build-fuzz/crash-*.
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
mkdir -p addresses
printf '%s' 'rtmp://user:pw@host:1935/live/key' >addresses/rtmp
printf '%s' 'srt://h:9000?mode=caller&passphrase=abcdefghij&streamid=#!::r=live/k,m=publish' >addresses/srt
printf '%s' 'dshow://capture?video=Cam%20One&audio=Mic' >addresses/dshow
printf '%s' 'lavfi://testsrc2[out0];sine[out1]' >addresses/lavfi
printf '%s' 'https://h/p/x.m3u8?token=t#mpegts' >addresses/http
QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 ./fuzz_addresses -runs="$runs" -max_len=512 \
  -print_final_stats=1 addresses
mkdir -p arguments
printf '%s\n' --channel '1=lavfi://testsrc2' --base 1 --size 1280x720 --fps 60 >arguments/basic
printf '%s\n' --record /tmp/x.mp4 --stream 'srt://h:9000?passphrase=abcdefghij' --bitrate 900 >arguments/outputs
printf '%s\n' --text hello --image 'a.png@1,2,3,4' --volume 2=0.5 --gain 150 --duration 3 >arguments/overlays
QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 ./fuzz_command_line -runs="$runs" -max_len=1024 \
  -print_final_stats=1 arguments

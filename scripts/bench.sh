#!/usr/bin/env bash
# Compares Selvane's whole pipeline with the ffmpeg CLI on the same work, in the same run:
# 20 s of a 1080p30 test signal with a tone, paced in real time, encoded once to H.264 + AAC
# in an MP4 file. Both sides are real-time, so the figure of merit is CPU time (user + system).
# Runs alternate (ours, ffmpeg, ours, ...) and medians are printed with their ratio.
# Usage: scripts/bench.sh [ROUNDS] [SECONDS]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
rounds="${1:-3}"
seconds="${2:-20}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
"$root/scripts/build.sh" >/dev/null

graph="testsrc2=size=1920x1080:rate=30"
tone="sine=frequency=1000:sample_rate=48000"
ours=()
theirs=()
cpu() { awk '{print $1 + $2}' "$1"; }
for i in $(seq 1 "$rounds"); do
  /usr/bin/time -f "%U %S" -o "$work/ours.time" env XDG_DATA_HOME="$work/data" QT_QPA_PLATFORM=offscreen \
    "$build/selvane" --headless --channel "1=lavfi://$graph[out0];$tone[out1]" \
    --duration "$seconds" --record "$work/ours.mp4" --encoder software --preset balanced >/dev/null 2>&1
  ours+=("$(cpu "$work/ours.time")")
  /usr/bin/time -f "%U %S" -o "$work/ffmpeg.time" ffmpeg -v error -y -re -f lavfi -i "$graph" \
    -re -f lavfi -i "$tone" -t "$seconds" -c:v libx264 -preset veryfast -tune zerolatency -g 60 \
    -bf 0 -b:v 7465k -maxrate 7465k -bufsize 14930k -pix_fmt yuv420p -c:a aac -b:a 160k \
    -movflags +frag_keyframe+empty_moov+default_base_moof "$work/ffmpeg.mp4"
  theirs+=("$(cpu "$work/ffmpeg.time")")
  echo "round $i: selvane ${ours[-1]} s CPU, ffmpeg ${theirs[-1]} s CPU"
done
median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
m_ours="$(median "${ours[@]}")"
m_theirs="$(median "${theirs[@]}")"
echo "median CPU seconds for ${seconds} s of 1080p30 + tone: selvane $m_ours, ffmpeg CLI $m_theirs"
awk -v a="$m_ours" -v b="$m_theirs" 'BEGIN { printf "ratio selvane/ffmpeg: %.2f\n", a / b }'
"$build/selvane_bench" 2>/dev/null

#!/usr/bin/env bash
# Does memory come back after a busy show? (By hand, never part of the test run.) A headless show
# (1280x720, x264 at the performance preset) recording to MP4 with the remote control on: its
# resident memory and thread count are read from /proc once it has settled, then CHANGES source
# changes go through the API, each putting one of four short looping clips (1080p30, 720p30,
# 1080p25, 720p60; H.264 + AAC in MP4) on the next of the four channels and cutting the program
# to it. The channels are then cleared, and after SETTLE seconds memory and threads are read again.
#
#   scripts/churn.sh [CHANGES] [PAUSE] [SETTLE]      (defaults: 1000 0.1 5)
#
# PAUSE is the time in seconds between two changes: a channel keeps each source for four of them.
# Prints RSS and threads before and after and the difference; exits 1 when RSS grew by more than
# SELVANE_CHURN_MAX_MB (default 30) or the thread count did not come back to where it started.
# SELVANE_BUILD_DIR picks the build folder (default build/), an absolute path included.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
[[ $build = /* ]] || build="$root/$build"
binary="$build/selvane"
changes="${1:-1000}"
pause="${2:-0.1}"
settle="${3:-5}"
max_mb="${SELVANE_CHURN_MAX_MB:-30}"
[ -x "$binary" ] || { echo "churn: no $binary (scripts/build.sh)" >&2; exit 2; }

work="$(mktemp -d /tmp/selvane-churn.XXXXXX)"
show_pid=""
cleanup() {
  if [ -n "$show_pid" ]; then
    kill "$show_pid" 2>/dev/null || true
    wait "$show_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

clips=()
make_clip() { # NAME SIZE RATE
  local file="$work/$1.mp4"
  ffmpeg -nostdin -v error -y -f lavfi -i "testsrc2=size=$2:rate=$3" \
    -f lavfi -i "sine=frequency=440:sample_rate=48000" -t 4 -c:v libx264 -preset veryfast \
    -crf 26 -g "$3" -pix_fmt yuv420p -c:a aac -b:a 128k "$file"
  clips+=("$file")
}
echo "churn: making four 4 s clips (H.264 + AAC)"
make_clip a 1920x1080 30
make_clip b 1280x720 30
make_clip c 1920x1080 25
make_clip d 1280x720 60

port="$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])')"
token="churn-$(head -c 24 /dev/urandom | od -An -tx1 | tr -d ' \n')"
headers="$(umask 077 && mktemp -p "$work")"
printf 'Authorization: Bearer %s\nContent-Type: application/json\n' "$token" >"$headers"
api="http://127.0.0.1:$port/api/v1"

SELVANE_CONTROL_TOKEN="$token" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" \
  "$binary" --headless --control-port "$port" --size 1280x720 --encoder software \
  --preset performance --record "$work/churn.mp4" >"$work/show.log" 2>"$work/show.err" &
show_pid=$!
for _ in $(seq 1 100); do
  grep -q '^control: listening' "$work/show.log" 2>/dev/null && break
  sleep 0.1
done
grep -q '^control: listening' "$work/show.log" || { cat "$work/show.err" >&2; exit 1; }

call() { # METHOD PATH [BODY]: fails the run on any answer but 2xx
  curl -fsS -o /dev/null -H @"$headers" -X "$1" ${3:+-d "$3"} "$api/$2" ||
    { echo "churn: $1 $2 failed" >&2; exit 1; }
}
status_of() { awk -v k="$1:" '$1 == k {print $2}' "/proc/$show_pid/status"; }

sleep 3 # the outputs open and the show settles
rss_before="$(status_of VmRSS)"
threads_before="$(status_of Threads)"
echo "churn: before: RSS $((rss_before / 1024)) MB, $threads_before threads"

start=$SECONDS
for ((i = 0; i < changes; i++)); do
  channel=$((i % 4 + 1))
  clip="${clips[$(((i / 4 + i) % 4))]}"
  call PUT "channels/$channel" "{\"address\": \"$clip\"}"
  call POST program/cut "{\"channel\": $channel}"
  if (((i + 1) % 100 == 0)); then
    echo "churn: $((i + 1)) changes ($((SECONDS - start)) s): RSS $(($(status_of VmRSS) / 1024)) MB," \
      "$(status_of Threads) threads"
  fi
  sleep "$pause"
done
peak="$(status_of VmHWM)"
for channel in 1 2 3 4; do call DELETE "channels/$channel"; done
sleep "$settle"
rss_after="$(status_of VmRSS)"
threads_after="$(status_of Threads)"
kill -0 "$show_pid" 2>/dev/null || { echo "churn: the show ended early" >&2; cat "$work/show.err" >&2; exit 1; }

grown=$(((rss_after - rss_before) / 1024))
echo "churn: after $changes changes, the channels cleared and ${settle} s:" \
  "RSS $((rss_after / 1024)) MB, $threads_after threads (peak RSS $((peak / 1024)) MB)"
echo "churn: RSS before $((rss_before / 1024)) MB, after $((rss_after / 1024)) MB," \
  "difference $grown MB (at most $max_mb); threads before $threads_before, after $threads_after"
failed=0
[ "$grown" -le "$max_mb" ] || { echo "churn: FAIL: RSS grew by $grown MB" >&2; failed=1; }
[ "$threads_after" -le "$threads_before" ] ||
  { echo "churn: FAIL: $((threads_after - threads_before)) threads more than at the start" >&2; failed=1; }
exit "$failed"

#!/usr/bin/env bash
# Load on the remote control during a real show (by hand, never part of the test run): a 1080p30
# H.264 + AAC file on channel 1 and a 1080p colour on channel 2, recorded to MP4 with x264
# (--encoder software --preset balanced), while wrk sends RATE requests a second for SECONDS:
# mostly GET /status, with cuts between the two channels and volume changes among them.
# Reports the program frames against SECONDS * 30, what was skipped or dropped (the headless
# "done:" line), the frames in the recording, and wrk's answer times (p50 ... p99).
#
#   scripts/control-load.sh [SECONDS] [RATE]       (defaults: 60 200)
#
# RATE 0 runs the same show without any request: the figures to compare with on a busy machine.
# SELVANE_BUILD_DIR picks the build folder (default build/). Needs wrk (apt-get install wrk).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
binary="$build/selvane"
seconds="${1:-60}"
rate="${2:-200}"
command -v wrk >/dev/null || { echo "control-load: wrk is missing (apt-get install wrk)" >&2; exit 2; }
[ -x "$binary" ] || { echo "control-load: no $binary (scripts/build.sh)" >&2; exit 2; }

work="$(mktemp -d)"
show_pid=""
cleanup() {
  [ -n "$show_pid" ] && kill "$show_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

echo "making media: $((seconds + 20)) s of 1080p30 H.264 + AAC"
ffmpeg -nostdin -v error -y -f lavfi -i "testsrc2=size=1920x1080:rate=30" \
  -f lavfi -i "sine=frequency=1000:sample_rate=48000" -t $((seconds + 20)) \
  -c:v libx264 -preset veryfast -crf 23 -g 60 -pix_fmt yuv420p -c:a aac -b:a 160k "$work/show.mp4"

port="$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])')"
export SELVANE_CONTROL_TOKEN="load-$(head -c 24 /dev/urandom | od -An -tx1 | tr -d ' \n')"
# The show runs a few seconds longer than the load, so that it is under load from start to end.
XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" \
  "$binary" --headless --channel "1=$work/show.mp4" \
  --channel "2=lavfi://color=c=navy:size=1920x1080:rate=30" \
  --record "$work/load.mp4" --encoder software --preset balanced \
  --control-port "$port" --duration $((seconds + 6)) >"$work/show.log" 2>"$work/show.err" &
show_pid=$!
for _ in $(seq 1 100); do
  grep -q '^control: listening' "$work/show.log" 2>/dev/null && break
  sleep 0.1
done
grep -q '^control: listening' "$work/show.log" || { cat "$work/show.err" >&2; exit 1; }
sleep 3 # the outputs open and the channels settle

connections=10
delay_ms=$((rate > 0 ? connections * 1000 / rate - 1 : 0))
cat >"$work/load.lua" <<LUA
-- $rate requests a second over $connections connections: each waits its share between requests,
-- less the millisecond or so an answer takes.
local token = os.getenv("SELVANE_CONTROL_TOKEN")
local n = 0
wrk.headers["Authorization"] = "Bearer " .. token
wrk.headers["Content-Type"] = "application/json"
request = function()
  n = n + 1
  if n % 20 == 0 then
    return wrk.format("POST", "/api/v1/program/cut", nil, '{"channel": ' .. (n / 20 % 2 + 1) .. '}')
  elseif n % 20 == 10 then
    return wrk.format("PUT", "/api/v1/audio/channels/1", nil, '{"volume": ' .. (n % 7) / 7 .. '}')
  end
  return wrk.format("GET", "/api/v1/status")
end
delay = function()
  return $delay_ms
end
LUA
if [ "$rate" -gt 0 ]; then
  echo "load: $rate requests a second for $seconds s on port $port"
  wrk -t2 -c"$connections" -d"${seconds}s" --timeout 5s --latency -s "$work/load.lua" \
    "http://127.0.0.1:$port" | tee "$work/wrk.log"
else
  echo "no requests: the show alone for $seconds s"
  sleep "$seconds"
fi
wait "$show_pid" || true
show_pid=""

done_line="$(grep '^done:' "$work/show.log" || true)"
echo
echo "show: $done_line"
field() { sed -n "s/.*  $1 \([0-9]*\).*/\1/p" <<<"$done_line"; }
frames="$(field frames)"
written="$(ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames \
  -of csv=p=0 "$work/load.mp4" 2>/dev/null || echo '?')"
elapsed_s="$(sed -n 's/.*elapsed \([0-9:.]*\).*/\1/p' <<<"$done_line" | awk -F: '{print $1*3600+$2*60+$3}')"
expected="$(awk -v s="$elapsed_s" 'BEGIN {printf "%d", s * 30}')"
echo "program frames $frames of $expected expected ($elapsed_s s at 30 fps);" \
  "skipped ticks $(field skipped), decoder drops $(field dropped), encoder drops $(field encoder-drops);" \
  "frames in the recording $written"
if [ "$rate" -gt 0 ]; then
  p99="$(awk '/Latency Distribution/ {on=1} on && $1 == "99%" {print $2; exit}' "$work/wrk.log")"
  rps="$(awk '/Requests\/sec/ {print $2}' "$work/wrk.log")"
  errors="$(grep -E 'Non-2xx|Socket errors' "$work/wrk.log" || echo 'none')"
  echo "answers: $rps a second, p99 $p99 (target <= 50ms); errors: $errors"
fi

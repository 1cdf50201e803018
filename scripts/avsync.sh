#!/usr/bin/env bash
# Sound-with-picture offsets, source kind by source kind: the same coded flash-and-beep pattern
# (second n flashes at grey 40 + 24 (n mod 8) and beeps at 500 + 250 (n mod 8) Hz) is recorded by
# Selvane and by the ffmpeg CLI, and both recordings are measured (+ means sound late).
# Usage: scripts/avsync.sh [SECONDS] [CASE...]   cases: mp4 ts tsjump loop hls rtmp srt-listen
#                                                       srt-call udp
# Never part of the test run; it needs nginx with the rtmp module and the ffmpeg CLI.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
seconds="${1:-20}"
shift || true
cases=("$@")
[ ${#cases[@]} -gt 0 ] || cases=(mp4 ts tsjump loop hls rtmp srt-listen srt-call udp)
[ -n "${SELVANE_NO_BUILD:-}" ] || "$root/scripts/build.sh" >/dev/null
work="$(mktemp -d)"
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill -- "-$pid" 2>/dev/null || kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
export XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" QT_QPA_PLATFORM=offscreen

free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }
video="color=c=black:size=320x240:rate=30,geq=lum='if(lt(mod(T\,1)\,0.1)\,40+24*mod(floor(T)\,8)\,16)':cb=128:cr=128"
audio="aevalsrc=exprs='if(lt(mod(t\,1)\,0.1)\,0.5*sin(2*PI*(500+250*mod(floor(t)\,8))*t)\,0)':sample_rate=48000"
long=$((seconds + 40))
ffmpeg -v error -y -f lavfi -i "$video" -f lavfi -i "$audio" -t "$long" -c:v libx264 -preset veryfast \
  -g 30 -bf 2 -pix_fmt yuv420p -c:a aac "$work/coded.mp4"
ffmpeg -v error -y -i "$work/coded.mp4" -c copy "$work/coded.ts"
ffmpeg -v error -y -f lavfi -i "$video" -f lavfi -i "$audio" -t 8 -c:v libx264 -preset veryfast \
  -g 30 -pix_fmt yuv420p -c:a aac "$work/loop8.mp4"
# Two halves joined with a 5000 s jump in their timestamps, cut where both streams have a
# frame (a keyframe) so that picture and sound keep their relation across the jump.
ffmpeg -v error -y -i "$work/coded.ts" -c copy -f segment -segment_times 10 -reset_timestamps 0 \
  "$work/half%d.ts"
mv "$work/half0.ts" "$work/a.ts"
ffmpeg -v error -y -copyts -i "$work/half1.ts" -c copy -muxdelay 0 -output_ts_offset 5000 \
  "$work/b.ts"
cat "$work/a.ts" "$work/b.ts" >"$work/jump.ts"

port="$(free_port)"
http="$(free_port)"
mkdir -p "$work/nginx/logs" "$work/www"
cat >"$work/nginx/nginx.conf" <<CONF
load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;
daemon off; master_process off; worker_processes 1;
pid $work/nginx/nginx.pid; error_log $work/nginx/logs/error.log warn;
events { worker_connections 256; }
rtmp { server { listen 127.0.0.1:$port; chunk_size 4096;
  application live { live on; record off; drop_idle_publisher 5s; } } }
http { access_log off; server { listen 127.0.0.1:$http; root $work/www;
  types { application/vnd.apple.mpegurl m3u8; video/mp2t ts; } } }
CONF
nginx -c "$work/nginx/nginx.conf" -p "$work/nginx" -e "$work/nginx/logs/error.log" &
pids+=($!)
sleep 1

publish() { # URL FORMAT [extra output options]: the coded clip in real time, looped; a sender
  # that ends (an SRT peer that went away) starts again, so that both recorders find one
  setsid bash -c 'while true; do
      ffmpeg -v error -re -stream_loop -1 -i "$0" -c copy -f "$2" "${@:3}" "$1" </dev/null \
        >/dev/null 2>&1
      sleep 0.5
    done' "$work/coded.mp4" "$@" &
  pids+=($!)
}

measure() { # CASE SELVANE_SOURCE FFMPEG_INPUT_ARGS...
  local name="$1" source="$2"
  shift 2
  timeout -k 5 $((seconds + 30)) "$build/selvane" --headless --channel "1=$source" \
    --duration "$seconds" --record "$work/$name.selvane.mp4" >/dev/null 2>&1 || true
  timeout -k 5 $((seconds + 30)) ffmpeg -v error -y "$@" -t "$seconds" -c:v libx264 \
    -preset veryfast -c:a aac "$work/$name.ffmpeg.mp4" </dev/null >/dev/null 2>&1 || true
  printf '%-11s selvane: %s\n' "$name" \
    "$("$build/selvane_avsync" measure "$work/$name.selvane.mp4" | cut -d: -f2-)"
  printf '%-11s ffmpeg:  %s\n' "$name" \
    "$("$build/selvane_avsync" measure "$work/$name.ffmpeg.mp4" | cut -d: -f2-)"
}

for c in "${cases[@]}"; do
  case "$c" in
  mp4) measure mp4 "$work/coded.mp4" -re -i "$work/coded.mp4" ;;
  ts) measure ts "$work/coded.ts" -re -i "$work/coded.ts" ;;
  tsjump) measure tsjump "$work/jump.ts" -re -i "$work/jump.ts" ;;
  loop) measure loop "$work/loop8.mp4" -re -stream_loop -1 -i "$work/loop8.mp4" ;;
  hls)
    publish "$work/www/live.m3u8" hls -hls_time 2 -hls_list_size 6 -hls_flags delete_segments
    sleep 7
    measure hls "http://127.0.0.1:$http/live.m3u8" -i "http://127.0.0.1:$http/live.m3u8" ;;
  rtmp)
    publish "rtmp://127.0.0.1:$port/live/sync" flv
    sleep 2
    measure rtmp "rtmp://127.0.0.1:$port/live/sync" -rw_timeout 5000000 \
      -i "rtmp://127.0.0.1:$port/live/sync" ;;
  srt-listen) # Selvane listens, the sender calls
    srt="$(free_port)"
    publish "srt://127.0.0.1:$srt?mode=caller" mpegts
    measure srt-listen "srt://127.0.0.1:$srt?mode=listener" -i "srt://127.0.0.1:$srt?mode=listener" ;;
  srt-call) # the sender listens, Selvane calls
    srt="$(free_port)"
    publish "srt://127.0.0.1:$srt?mode=listener" mpegts
    sleep 1
    measure srt-call "srt://127.0.0.1:$srt?mode=caller" -i "srt://127.0.0.1:$srt?mode=caller" ;;
  udp)
    udp="$(free_port)"
    publish "udp://127.0.0.1:$udp?pkt_size=1316" mpegts
    measure udp "udp://127.0.0.1:$udp" -timeout 5000000 -i "udp://127.0.0.1:$udp" ;;
  *) echo "unknown case $c" >&2 ;;
  esac
done

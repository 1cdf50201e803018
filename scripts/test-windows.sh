#!/usr/bin/env bash
# Runs the Windows build of Selvane (dist/windows/, made by scripts/build-windows.sh) under Wine
# on this machine, against real servers on loopback, and says what each step found:
#
#   version       selvane.exe --version
#   demo          a ten-second headless demo recorded, the file checked with ffprobe
#   log           a line the program writes to stderr reaches its log file
#   rtmp          a show streamed to nginx-rtmp and read back by ffmpeg
#   socks         a stream target reached through the SOCKS relay (Winsock) and microsocks
#   capture       the monitor and window lists (as the source dialog shows them, through the
#                 remote control), a monitor and a window captured, and which path ran
#   window        the window under Xvfb, a screenshot of it, a second start waking the first
#   installer     Selvane_Setup_<version>.exe installed and uninstalled silently
#
#   scripts/test-windows.sh [STEP ...]     (all steps when none is named)
#
# Uses Debian's wine64 with a private prefix, nginx with the RTMP module, microsocks, Xvfb and
# the ffmpeg CLI. Each step prints "ok" or "FAILED" with what it measured; the screenshot and
# every log stay in the work folder it names. Not part of the test suite: it needs the
# Windows build, which takes hours the first time.
set -uo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
dist="${SELVANE_WINDOWS_DIST:-$root/dist/windows}"
exe="$dist/selvane.exe"
[ -x "$exe" ] || [ -f "$exe" ] || { echo "test-windows: no $exe (run scripts/build-windows.sh)" >&2; exit 2; }
for tool in wine wineserver nginx microsocks Xvfb ffmpeg ffprobe curl python3; do
  command -v "$tool" >/dev/null || { echo "test-windows: $tool is missing" >&2; exit 2; }
done

work="$(mktemp -d /tmp/selvane-windows-test.XXXXXX)"
export WINEPREFIX="$work/wine" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
failures=0
pids=()
cleanup() {
  local pid
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
  wineserver -k 2>/dev/null
  wait 2>/dev/null
}
trap cleanup EXIT

say() { printf '%s\n' "$*"; }
ok() { say "  ok: $*"; }
failed() { say "  FAILED: $*"; failures=$((failures + 1)); }
free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
wait_port() {
  local i
  for i in $(seq 1 100); do
    (echo >"/dev/tcp/$1/$2") 2>/dev/null && return 0
    sleep 0.1
  done
  return 1
}
# A Linux path as Wine's Z: drive sees it.
winpath() { printf 'Z:%s' "${1//\//\\}"; }
selvane() { timeout "$1" wine "$exe" "${@:2}"; }
video_frames() {
  ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames \
    -of csv=p=0 "$1" 2>/dev/null | head -n 1
}
log_files() { find "$WINEPREFIX/drive_c/users" -path '*Ostrel/Selvane/logs/*' -type f 2>/dev/null; }
all_logs() { log_files | xargs -r cat 2>/dev/null; }
xvfb_display=""
start_xvfb() {
  [ -n "$xvfb_display" ] && return 0
  local n
  for n in $(seq 90 120); do
    [ -e "/tmp/.X11-unix/X$n" ] && continue
    Xvfb ":$n" -screen 0 1280x800x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
    pids+=($!)
    sleep 1
    if [ -e "/tmp/.X11-unix/X$n" ]; then xvfb_display=":$n"; return 0; fi
  done
  return 1
}
start_nginx() {
  local port="$1" listen="$2" dir="$work/nginx-$port"
  mkdir -p "$dir/logs"
  cat >"$dir/nginx.conf" <<EOF
load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;
daemon off;
master_process off;
worker_processes 1;
pid $dir/nginx.pid;
error_log $dir/logs/error.log warn;
events { worker_connections 64; }
rtmp { server { listen $listen:$port; chunk_size 4096;
  application live { live on; record off; } } }
EOF
  nginx -c "$dir/nginx.conf" -p "$dir" -e "$dir/logs/error.log" >"$dir/out.log" 2>&1 &
  pids+=($!)
  wait_port "$listen" "$port"
}
# Streams the demo to URL for SECONDS in the background, reads 5 s of it back, and prints the
# frames read.
publish_and_read() {
  local url="$1" seconds="$2" out="$3" pid frames
  shift 3
  (env "$@" timeout $((seconds + 60)) wine "$exe" --headless --demo --stream "$url" \
    --duration "$seconds" >"$out.selvane.txt" 2>&1) &
  pid=$!
  timeout 40 ffmpeg -v error -rw_timeout 15000000 -i "$url" -t 5 -c copy -y "$out" \
    >"$out.ffmpeg.txt" 2>&1
  wait "$pid"
  frames="$(video_frames "$out")"
  printf '%s\n' "${frames:-0}"
}

steps=("$@")
[ ${#steps[@]} -gt 0 ] || steps=(version demo log rtmp socks capture window installer)
wants() { local s; for s in "${steps[@]}"; do [ "$s" = "$1" ] && return 0; done; return 1; }

say "Windows build: $dist ($(du -sh "$dist" | cut -f1), $(find "$dist" -type f | wc -l) files)"
say "work folder: $work"
say "wine: $(wine --version 2>/dev/null)"
start="$(date +%s)"
wineboot --init >"$work/wineboot.log" 2>&1
wineserver -w
say "wine prefix made in $(($(date +%s) - start)) s"

if wants version; then
  say "step version"
  out="$(selvane 60 --version 2>&1 | tr -d '\r')"
  if printf '%s' "$out" | grep -q '^Selvane [0-9]'; then ok "$out"; else failed "--version printed: $out"; fi
fi

if wants demo; then
  say "step demo"
  start="$(date +%s)"
  selvane 180 --headless --demo --record "$(winpath "$work/demo.mp4")" --duration 10 \
    >"$work/demo.txt" 2>&1
  rc=$?
  frames="$(video_frames "$work/demo.mp4")"
  duration="$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$work/demo.mp4" 2>/dev/null)"
  audio="$(ffprobe -v error -select_streams a -show_entries stream=codec_name -of csv=p=0 "$work/demo.mp4" 2>/dev/null | head -n 1)"
  say "  $(tr -d '\r' <"$work/demo.txt" | grep -E 'outputs started|frames' | tail -n 2 | tr '\n' ' ')"
  if [ "$rc" -eq 0 ] && [ "${frames:-0}" -ge 270 ] && [ -n "$audio" ]; then
    ok "exit 0 in $(($(date +%s) - start)) s; demo.mp4: $frames frames, ${duration} s, sound $audio"
  else
    failed "exit $rc; demo.mp4: ${frames:-no} frames, duration ${duration:-none}, sound ${audio:-none}"
  fi
fi

if wants log; then
  say "step log"
  printf '{ "format": ' >"$work/cut-short.json"
  selvane 60 --headless --schedule "$(winpath "$work/cut-short.json")" --duration 2 \
    >"$work/log-run.txt" 2>&1
  rc=$?
  line="$(all_logs | tr -d '\r' | grep 'cut-short.json' | tail -n 1)"
  if [ "$rc" -ne 0 ] && [ -n "$line" ]; then
    ok "exit $rc; the stderr line is in $(log_files | head -n 1 | sed "s|$WINEPREFIX/||"): $line"
  else
    failed "exit $rc; no line naming cut-short.json in the log files ($(log_files | wc -l) files)"
  fi
fi

if wants rtmp; then
  say "step rtmp"
  port="$(free_port)"
  if start_nginx "$port" 127.0.0.1; then
    frames="$(publish_and_read "rtmp://127.0.0.1:$port/live/windows" 14 "$work/rtmp.flv")"
    if [ "$frames" -ge 100 ]; then ok "read back $frames frames in 5 s from nginx-rtmp"
    else failed "read back $frames frames (see $work/rtmp.flv.*.txt)"; fi
  else
    failed "nginx-rtmp did not start"
  fi
fi

if wants socks; then
  say "step socks"
  # The relay is used for destinations that are not loopback: nginx listens on this machine's
  # own address.
  address="$(hostname -I 2>/dev/null | awk '{ print $1 }')"
  port="$(free_port)"
  sport="$(free_port)"
  if [ -z "$address" ]; then
    failed "this machine has no address besides loopback"
  elif start_nginx "$port" "$address"; then
    microsocks -i 127.0.0.1 -p "$sport" >"$work/microsocks.txt" 2>&1 &
    pids+=($!)
    wait_port 127.0.0.1 "$sport"
    before="$(all_logs | grep -c 'SOCKS relay')"
    frames="$(publish_and_read "rtmp://$address:$port/live/socks" 14 "$work/socks.flv" \
      ALL_PROXY="socks5://127.0.0.1:$sport")"
    relayed="$(all_logs | grep -c 'SOCKS relay')"
    through="$(grep -c "$address" "$work/microsocks.txt")"
    if [ "$frames" -ge 100 ] && [ "$relayed" -gt "$before" ] && [ "$through" -gt 0 ]; then
      ok "read back $frames frames; microsocks carried $through connection(s) to $address:$port; log: $(all_logs | tr -d '\r' | grep 'SOCKS relay' | tail -n 1)"
    else
      failed "frames $frames, relay log lines $((relayed - before)), microsocks lines $through"
    fi
  else
    failed "nginx-rtmp did not start on $address"
  fi
fi

if wants capture; then
  say "step capture"
  start_xvfb || failed "Xvfb did not start"
  export DISPLAY="$xvfb_display"
  # A window to list and capture: Wine's own notepad.
  wine notepad >/dev/null 2>&1 &
  sleep 4
  cport="$(free_port)"
  (timeout 90 wine "$exe" --headless --control-port "$cport" --duration 40 \
    >"$work/control.txt" 2>&1) &
  cpid=$!
  token=""
  for _ in $(seq 1 60); do
    token="$(find "$WINEPREFIX/drive_c/users" -name 'selvane_control_token' -type f 2>/dev/null | head -n 1)"
    [ -n "$token" ] && wait_port 127.0.0.1 "$cport" && break
    sleep 0.5
  done
  curl -s -H "Authorization: Bearer $(tr -d '\r\n' <"${token:-/dev/null}" 2>/dev/null)" \
    "http://127.0.0.1:$cport/api/v1/sources" >"$work/sources.json"
  displays="$(python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); print("; ".join("%s %s %dx%d" % (x["address"], x["name"], x["width"], x["height"]) for x in d["displays"]))' "$work/sources.json" 2>/dev/null)"
  windows="$(python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); print("; ".join(x["label"] for x in d["windows"]))' "$work/sources.json" 2>/dev/null)"
  notepad="$(python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); print(next((x["address"] for x in d["windows"] if "Notepad" in x["title"]), ""))' "$work/sources.json" 2>/dev/null)"
  kill "$cpid" 2>/dev/null
  wait "$cpid" 2>/dev/null
  if [ -n "$displays" ]; then ok "monitors: $displays"; else failed "no monitor listed ($(head -c 300 "$work/sources.json"))"; fi
  if [ -n "$notepad" ]; then ok "windows: $windows"; else failed "notepad not among the windows: ${windows:-none}"; fi
  for what in "monitor desktop://capture?monitor=0" "window ${notepad:-wgc://capture?hwnd=0x0}"; do
    name="${what%% *}"
    address="${what#* }"
    selvane 120 --headless --channel "1=$address" --record "$(winpath "$work/capture-$name.mp4")" \
      --duration 6 >"$work/capture-$name.txt" 2>&1
    frames="$(video_frames "$work/capture-$name.mp4")"
    path="$(tr -d '\r' <"$work/capture-$name.txt" | grep -hoE "system's capture refused.*|first picture.*from the system's capture|capturing .* with gdigrab.*" | sort -u | tr '\n' ' ')"
    ffmpeg -v error -ss 4 -i "$work/capture-$name.mp4" -frames:v 1 -y "$work/capture-$name.png"
    channel="$(tr -d '\r' <"$work/capture-$name.txt" | grep -oE 'ch1 [^|]*' | tail -n 1)"
    if [ "${frames:-0}" -ge 150 ] && ! tr -d '\r' <"$work/capture-$name.txt" | grep -q 'never opened'; then
      ok "$name: $frames frames recorded (a picture: $work/capture-$name.png); ${path:-(no path line)}"
    else
      failed "$name: ${frames:-no} frames; ${path:-(no path line)}; $channel"
    fi
  done
  wine taskkill /f /im notepad.exe >/dev/null 2>&1
  unset DISPLAY
fi

if wants window; then
  say "step window"
  start_xvfb || failed "Xvfb did not start"
  export DISPLAY="$xvfb_display"
  (timeout 120 wine "$exe" >"$work/window.txt" 2>&1) &
  wpid=$!
  sleep 20
  ffmpeg -v error -f x11grab -video_size 1280x800 -i "$DISPLAY" -frames:v 1 -y "$work/window.png"
  start="$(date +%s%N)"
  selvane 60 >"$work/second.txt" 2>&1
  rc=$?
  elapsed=$((($(date +%s%N) - start) / 1000000))
  sleep 1
  woke="$(all_logs | tr -d '\r' | grep -c 'brings this window to the front')"
  if kill -0 "$wpid" 2>/dev/null && [ "$rc" -eq 0 ] && [ "$woke" -gt 0 ]; then
    ok "second start ended with 0 after $elapsed ms; the first logged the wake and runs on"
  else
    failed "second start: exit $rc after $elapsed ms; wake lines $woke; first running: $(kill -0 "$wpid" 2>/dev/null && echo yes || echo no)"
  fi
  if [ -s "$work/window.png" ]; then ok "screenshot: $work/window.png (look at it)"; else failed "no screenshot"; fi
  wine taskkill /f /im selvane.exe >/dev/null 2>&1
  wait "$wpid" 2>/dev/null
  unset DISPLAY
fi

if wants installer; then
  say "step installer"
  setup="$(ls "$root"/dist/Selvane_Setup_*.exe 2>/dev/null | tail -n 1)"
  installed="$WINEPREFIX/drive_c/Program Files/Selvane"
  if [ -z "$setup" ]; then
    failed "no dist/Selvane_Setup_*.exe"
  else
    timeout 180 wine "$setup" /S >"$work/setup.txt" 2>&1
    # The installer may still be at work when wine returns.
    for _ in $(seq 1 120); do
      [ -f "$installed/uninstall.exe" ] && break
      sleep 0.5
    done
    sleep 1
    version="$(timeout 60 wine "C:\\Program Files\\Selvane\\selvane.exe" --version 2>&1 | tr -d '\r')"
    shortcut="$(find "$WINEPREFIX/drive_c/ProgramData" -name 'Selvane.lnk' 2>/dev/null | head -n 1)"
    if [ -f "$installed/selvane.exe" ] && [ -n "$shortcut" ] && printf '%s' "$version" | grep -q '^Selvane'; then
      ok "$(basename "$setup") installed $(find "$installed" -type f | wc -l) files into Program Files, Start-menu entry, installed program says '$version'"
    else
      failed "install: selvane.exe $([ -f "$installed/selvane.exe" ] && echo present || echo missing), shortcut ${shortcut:-missing}, version '$version'"
    fi
    timeout 180 wine "C:\\Program Files\\Selvane\\uninstall.exe" /S "_?=C:\\Program Files\\Selvane" \
      >"$work/uninstall.txt" 2>&1
    # The uninstaller may still be at work when wine returns.
    for _ in $(seq 1 120); do
      [ -f "$installed/selvane.exe" ] || break
      sleep 0.5
    done
    sleep 1
    # Run in place (_?=), the uninstaller cannot remove itself: that is all that may be left.
    left="$(find "$installed" -type f ! -name uninstall.exe 2>/dev/null | wc -l)"
    shortcut="$(find "$WINEPREFIX/drive_c/ProgramData" -name 'Selvane.lnk' 2>/dev/null | head -n 1)"
    if [ "$left" -eq 0 ] && [ -z "$shortcut" ]; then ok "uninstalled: no file and no Start-menu entry left"
    else failed "uninstall left $left files, shortcut ${shortcut:-none}"; fi
  fi
fi

if [ "$failures" -eq 0 ]; then say "all steps passed"; else say "$failures failure(s)"; fi
[ "$failures" -eq 0 ]

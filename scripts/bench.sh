#!/usr/bin/env bash
# Compares Selvane with the ffmpeg CLI doing the same work, in the same run. Runs alternate
# (ours, ffmpeg, ours, ...); every round is printed, then the medians and the ratio
# selvane/ffmpeg. CPU is user + system time, RSS the peak resident set. All media is made at run
# time with ffmpeg (lavfi) in a temporary folder; nginx-rtmp is started on a free loopback port
# when a case streams. By hand only, never part of the test run.
#
#   scripts/bench.sh [CASE] [ROUNDS] [SECONDS]      (scripts/bench.sh ROUNDS SECONDS = signal)
#
#   signal  (3 20)   a 1080p30 test signal with a tone, paced in real time, encoded once to
#                    H.264 + AAC in an MP4 file; then the selvane_bench micro benchmarks
#   show      (5 20)  the real-time show: a 1080p30 H.264 + AAC file channel, two pictures, a
#                     ticker, x264 veryfast live settings (--encoder software --preset balanced),
#                     AAC 160k, to an MP4 file and two RTMP targets; beside each round the CLI's
#                     bare transcode of the same file (decode + encode alone, one MP4): CPU,
#                     peak RSS, Selvane's done: counts, the frames in the recording against
#                     SECONDS * 30, the ratio, each side's spread, Selvane's overhead beyond the
#                     bare transcode, and for round 1 each thread's CPU and wake-ups a second
#   show-hevc (5 20)  the same for an HEVC file with a picture-in-picture video and a logo
#   show-vp9  (5 20)  the same for a VP9/Opus WebM file with a lower third and the ticker
#   shows     (5 20)  all three, then a line each
#   profile   (1 20)  one run of each side of a show (SELVANE_BENCH_SHOW, default show) and of
#                     the bare transcode under perf record: CPU seconds by library, and
#                     Selvane's hottest functions outside the codecs (needs linux-perf)
#   profiles (3 20)  encode profiles: a 1080p30 H.264 + AAC file encoded at 1080p30 6000 kbit/s
#                    to MP4, then + 720p30 2500 kbit/s and + 360p30 800 kbit/s to HLS folders,
#                    one encoder each; beside it the CLI's ladder in one process (decoded once,
#                    split, scaled, one x264 + AAC per rung): CPU in % of a core per rung
#                    count, the ratio, what each rung adds, every rung's size and frames
#   memory  (1 600)  the show, RSS sampled every 10 s; the series, first/last/max and
#                    whether it grew by more than 10 % from the 60 s sample to the end
#   scale   (3 20)   CPU against (a) 1, 2, 3, 4 file channels loaded (channel 1 on the program,
#                    one encode to MP4) and (b) 1, 2, 4, 8 RTMP targets (one encode)
#   relay   (3 20)   a live RTMP input relayed to an RTMP output, by Selvane and by the ffmpeg
#                    CLI (the same x264 settings) side by side: a frame counter burnt into the
#                    source is read back from both outputs, and the difference of arrival times
#                    of the same frame is what Selvane adds beyond decoding and encoding
#   window  (3 30)   the cost of the window: the same show (four channels: a 1080p30 file on
#                    air, a 720p30 file, two test signals; recorded to MP4) headless and in the
#                    window under Xvfb with the
#                    program preview, the channel thumbnails and the meters running
#                    (--start-outputs, both ended by --duration); CPU medians over the whole run
#                    and in steady state (the middle half, from each thread's CPU), the ratios
#                    window/headless, and each thread of round 1
#   capture (3 20)   1080p30 display capture into the program (no outputs) under Xvfb with a
#                    moving picture on the screen, against ffmpeg -f x11grab alone grabbing the
#                    same screen at the same rate into the null muxer; CPU medians, the
#                    difference in % of one core, and the ratio
#   keepup  (3 10)   sources that must run at full rate: a 10-bit HEVC 1080p30 file, a 4K
#                    H.264 file scaled to 1080p, a 10,000-character --text and a 100 KB ticker
#                    (in a schedule) over a 1080p test signal; Selvane in real time (are all
#                    frames kept?) and the ffmpeg CLI unpaced (speed, x real time)
#
# SELVANE_BUILD_DIR picks the build folder (default build/); SELVANE_NO_BUILD=1 skips
# scripts/build.sh and takes the binary as it is (it is waited for while it is being relinked).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${SELVANE_BUILD_DIR:-$root/build}"
binary="$build/selvane"

case_name=signal
if [ $# -gt 0 ] && ! [[ $1 =~ ^[0-9]+$ ]]; then
  case_name="$1"
  shift
fi
case "$case_name" in
signal | scale | relay | profiles) default_rounds=3 default_seconds=20 ;;
show | show-hevc | show-vp9 | shows) default_rounds=5 default_seconds=20 ;;
profile) default_rounds=1 default_seconds=20 ;;
window) default_rounds=3 default_seconds=30 ;;
capture) default_rounds=3 default_seconds=20 ;;
memory) default_rounds=1 default_seconds=600 ;;
keepup) default_rounds=3 default_seconds=10 ;;
transitions) default_rounds=3 default_seconds=60 ;;
*)
  echo "usage: scripts/bench.sh [signal|show|show-hevc|show-vp9|shows|profile|profiles|memory|scale|keepup|relay|window|capture|transitions] [ROUNDS] [SECONDS]" >&2
  exit 2
  ;;
esac
rounds="${1:-$default_rounds}"
seconds="${2:-$default_seconds}"
[[ $rounds =~ ^[1-9][0-9]*$ && $seconds =~ ^[1-9][0-9]*$ ]] || {
  echo "bench: ROUNDS and SECONDS are whole numbers above 0" >&2
  exit 2
}

work="$(mktemp -d /tmp/selvane-bench.XXXXXX)"
current=    # the measured run in progress (timeout -> time -> program)
sampled=    # a program whose memory is being sampled
nginx_pid=
xvfb_pid=
cleanup() {
  for pid in $current $sampled $nginx_pid $xvfb_pid; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

[ -n "${SELVANE_NO_BUILD:-}" ] || "$root/scripts/build.sh" >/dev/null

need_binary() { # the binary may be in the middle of a rebuild: wait for it (10 min at most)
  local i
  for i in $(seq 120); do
    [ -x "$binary" ] && return 0
    [ "$i" -gt 1 ] || echo "bench: waiting for $binary" >&2
    sleep 5
  done
  echo "bench: $binary is missing" >&2
  exit 2
}
need_binary
binary_stamp="$(stat -c %Y "$binary")"

free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }

start_nginx() {
  port="$(free_port)"
  mkdir -p "$work/nginx"
  cat >"$work/nginx/nginx.conf" <<EOF
load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;
daemon off; master_process off; worker_processes 1;
pid $work/nginx/nginx.pid; error_log $work/nginx/error.log warn;
events { worker_connections 256; }
rtmp { server { listen 127.0.0.1:$port; chunk_size 4096;
  application live { live on; record off; } } }
EOF
  nginx -c "$work/nginx/nginx.conf" -p "$work/nginx" -e "$work/nginx/error.log" >/dev/null 2>&1 &
  nginx_pid=$!
  local _
  for _ in $(seq 50); do
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && return 0
    sleep 0.1
  done
  echo "bench: nginx-rtmp did not start (needs /usr/lib/nginx/modules/ngx_rtmp_module.so)" >&2
  exit 2
}
key=0
next_key() { key=$((key + 1)); } # every publisher gets stream names of its own

# --- measuring --------------------------------------------------------------------------------
rc=0
limit=$((seconds + 120))
run_timed() { # NAME CMD...: wall, user, system, peak RSS of CMD into NAME.time, its output to NAME.log
  local name="$1"
  shift
  timeout -k 5 "$limit" /usr/bin/time -f "%e %U %S %M" -o "$work/$name.time" "$@" \
    </dev/null >"$work/$name.log" 2>&1 &
  current=$!
  rc=0
  wait "$current" || rc=$?
  current=
}
wrap=() # a command the next headless runs go through (the profile's perf record)
run_selvane() { # NAME ARGS...: a headless run (tried again while the binary cannot be executed)
  local name="$1" _
  shift
  for _ in 1 2 3 4 5 6; do
    need_binary
    run_timed "$name" env XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" \
      QT_QPA_PLATFORM=offscreen "${wrap[@]}" "$binary" --headless "$@"
    [ "$rc" -eq 126 ] || [ "$rc" -eq 127 ] || break
    sleep 10
  done
  [ "$rc" -eq 0 ] || echo "  note: selvane exited with $rc (log: $(tail -n 1 "$work/$name.log"))"
}
run_ffmpeg() { # NAME ARGS...
  local name="$1"
  shift
  run_timed "$name" ffmpeg -nostdin -hide_banner -v warning -y "$@"
  [ "$rc" -eq 0 ] || echo "  note: ffmpeg exited with $rc (log: $(tail -n 1 "$work/$name.log"))"
  # (flv over RTMP cannot seek back to write its duration and size: not a failure)
  local failed
  failed="$(grep -i 'fail' "$work/$name.log" | grep -v 'update header with correct' |
    head -n 1 || true)"
  [ -z "$failed" ] || echo "  note: ffmpeg: $failed"
}
last_line() { tail -n 1 "$work/$1.time"; } # time puts "Command exited with ..." above the figures
cpu() { last_line "$1" | awk '{printf "%.2f", $2 + $3}'; }
wall() { last_line "$1" | awk '{printf "%.2f", $1}'; }
rss() { last_line "$1" | awk '{printf "%.0f", $4 / 1024}'; }
done_field() { # NAME FIELD: the value after FIELD in the run's done: line
  awk -v k="$2" '/^done:/ {line = $0}
    END {n = split(line, w, " "); for (i = 1; i < n; i++) if (w[i] == k) {print w[i + 1]; exit}
         print "?"}' "$work/$1.log"
}
frames_in() { # FILE: video frames decoded from the file (0 when it is missing)
  local n
  n="$(ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames \
    -of csv=p=0 "$1" 2>/dev/null | head -n 1 || true)"
  echo "${n:-0}"
}
spread() { printf '%s\n' "$@" | sort -g | awk '{a[NR] = $1} END {m = a[int((NR + 1) / 2)];
  if (m > 0) printf "%.1f %%", 100 * (a[NR] - a[1]) / m; else print "n/a"}'; }
median() { printf '%s\n' "$@" | sort -g | awk '{a[NR] = $1} END {print a[int((NR + 1) / 2)]}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {if (b > 0) printf "%.2f", a / b; else print "n/a"}'; }
core_pct() { awk -v c="$1" -v w="$2" 'BEGIN {if (w > 0) printf "%.0f", 100 * c / w; else print "n/a"}'; }
counts() { # NAME: Selvane's own counts from its done: line
  echo "repeated $(done_field "$1" repeated) skipped $(done_field "$1" skipped)" \
    "dropped $(done_field "$1" dropped) encoder-drops $(done_field "$1" encoder-drops)"
}
expected=$((seconds * 30))
sample_threads() { # NAME PATTERN [--each]: per-thread CPU and wake-ups of the newest process
  # matching PATTERN, over the middle half of the run, into NAME.threads (run in the background)
  local name="$1" pattern="$2" each="${3:-}" pid="" _
  for _ in $(seq 50); do
    pid="$(pgrep -n -f "$pattern" || true)"
    [ -n "$pid" ] && break
    sleep 0.1
  done
  [ -n "$pid" ] || return 0
  python3 "$root/scripts/threads.py" $each "$pid" "$((seconds / 2))" "$((seconds / 4))" \
    >"$work/$name.threads" 2>/dev/null || true
}

# --- media ------------------------------------------------------------------------------------
tone="sine=frequency=1000:sample_rate=48000"
signal1080="testsrc2=size=1920x1080:rate=30"
# x264 veryfast with the bitrate and buffer Selvane's software encoder uses for 1080p30 (balanced)
x264=(-c:v libx264 -preset veryfast -tune zerolatency -g 60 -bf 0 -b:v 7465k -maxrate 7465k
  -bufsize 14930k -pix_fmt yuv420p -c:a aac -b:a 160k)
# ... and when it also streams: constant bitrate with filler, frame threads, fixed keyframes
x264_live=(-c:v libx264 -preset veryfast -tune zerolatency -g 60 -bf 0 -b:v 7465k -maxrate 7465k
  -bufsize 7465k -x264-params
  sliced-threads=0:threads=4:weightp=0:scenecut=0:force-cfr=1:nal-hrd=cbr:filler=1:keyint=60:min-keyint=60
  -pix_fmt yuv420p -c:a aac -b:a 160k)
fragmented="movflags=+frag_keyframe+empty_moov+default_base_moof"
ticker="Selvane benchmark ticker: the quick brown fox jumps over the lazy dog, while the program goes out to a file and two servers"

make_clip() { # FILE SECONDS SOURCE [ENCODER OPTIONS...]: a 30 fps clip with a tone
  local file="$1" length="$2" source="$3"
  shift 3
  ffmpeg -nostdin -v error -y -f lavfi -i "$source" -f lavfi -i "$tone" -t "$length" "$@" \
    -c:a aac -b:a 160k "$file"
}
font="$(fc-match -f '%{file}' 'sans:bold' 2>/dev/null || true)"
# The ticker as Selvane draws it at 1080p: a dark band along the bottom, bold white words with
# a shadow, moving right to left; the same picture as Selvane's, measured on a frame of each.
# The band is a translucent black picture laid over (drawbox would blend the chroma of each
# pixel four times over and leave a grey band, a picture cheaper to encode than the real one);
# fontsize 95 gives Selvane's letter height (24 pt on the 360-line scene, 72 rows of ink).
ticker_filter() { # IN TEXTFILE OUT: filter_complex chains from the label IN to OUT
  echo "color=c=black@0.69:size=1920x154:rate=30,format=yuva420p[band];[$1][band]overlay=0:900:shortest=1,drawtext=fontfile=$font:textfile=$2:expansion=none:fontsize=95:fontcolor=white:shadowcolor=black:shadowx=4:shadowy=4:x=w-mod(t*100\\,w+tw):y=900+(154-th)/2[$3]"
}
header() {
  echo "selvane bench: $case_name, $rounds round(s) of $seconds s; $(nproc) cores," \
    "load average $(cut -d' ' -f1-3 /proc/loadavg)"
}
footer() {
  [ "$(stat -c %Y "$binary" 2>/dev/null || echo 0)" = "$binary_stamp" ] ||
    echo "note: $binary was rebuilt during the run; the rounds may mix two builds"
}

# --- signal -----------------------------------------------------------------------------------
bench_signal() {
  local ours=() theirs=() i
  for i in $(seq 1 "$rounds"); do
    run_selvane ours --channel "1=lavfi://${signal1080}[out0];${tone}[out1]" --duration "$seconds" \
      --record "$work/ours$i.mp4" --encoder software --preset balanced
    ours+=("$(cpu ours)")
    run_ffmpeg theirs -re -f lavfi -i "$signal1080" -re -f lavfi -i "$tone" -t "$seconds" \
      "${x264[@]}" -movflags +frag_keyframe+empty_moov+default_base_moof "$work/theirs$i.mp4"
    theirs+=("$(cpu theirs)")
    rm -f "$work/ours$i.mp4" "$work/theirs$i.mp4"
    echo "round $i: selvane ${ours[-1]} s CPU, ffmpeg ${theirs[-1]} s CPU"
  done
  local m_ours m_theirs
  m_ours="$(median "${ours[@]}")"
  m_theirs="$(median "${theirs[@]}")"
  echo "median CPU seconds for ${seconds} s of 1080p30 + tone: selvane $m_ours, ffmpeg CLI $m_theirs"
  echo "ratio selvane/ffmpeg: $(ratio "$m_ours" "$m_theirs")"
  "$build/selvane_bench" 2>/dev/null || echo "note: $build/selvane_bench did not run"
}

# --- window -----------------------------------------------------------------------------------
steady_core() { # NAME: "% of a core" of the whole process in its threads table (middle half)
  awk '$1 == "all" {print $3}' "$work/$1.threads" 2>/dev/null || echo 0
}
bench_window() {
  echo "making media: $((seconds + 5)) s of 1080p30 and of 720p30 H.264 + AAC"
  make_clip "$work/show.mp4" $((seconds + 5)) "$signal1080" -c:v libx264 -preset veryfast \
    -crf 23 -g 60 -pix_fmt yuv420p
  make_clip "$work/second.mp4" $((seconds + 5)) "smptehdbars=size=1280x720:rate=30" \
    -c:v libx264 -preset veryfast -crf 23 -g 60 -pix_fmt yuv420p
  local display=":$((RANDOM % 400 + 200))"
  Xvfb "$display" -screen 0 1920x1080x24 -nolisten tcp >/dev/null 2>&1 &
  xvfb_pid=$!
  sleep 1
  local i h_cpu=() w_cpu=() h_frames=() w_frames=() h_core=() w_core=() sampler
  # Four channels, so that four thumbnails move: two files and two test signals.
  local show=(--channel "1=$work/show.mp4" --channel
    "2=lavfi://testsrc2=size=1280x720:rate=30[out0];$tone[out1]" --channel
    "3=lavfi://testsrc=size=640x360:rate=30" --channel "4=$work/second.mp4" --encoder software
    --preset balanced)
  for i in $(seq 1 "$rounds"); do
    sample_threads head "^$binary --headless" --each &
    sampler=$!
    run_selvane head "${show[@]}" --record "$work/head$i.mp4" --duration "$seconds"
    wait "$sampler" || true
    h_cpu+=("$(cpu head)") h_frames+=("$(frames_in "$work/head$i.mp4")") h_core+=("$(steady_core head)")
    printf 'round %d  headless  CPU %6.2f s  steady %5.1f %% of a core  frames %d/%d\n' "$i" \
      "${h_cpu[-1]}" "${h_core[-1]}" "${h_frames[-1]}" "$expected"
    rm -rf "$work/run"
    mkdir -p -m 700 "$work/run"
    sample_threads win "^$binary --channel" --each &
    sampler=$!
    run_timed win env XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" \
      XDG_RUNTIME_DIR="$work/run" DISPLAY="$display" QT_QPA_PLATFORM=xcb \
      "$binary" "${show[@]}" --record "$work/win$i.mp4" --start-outputs --duration "$seconds"
    wait "$sampler" || true
    w_cpu+=("$(cpu win)") w_frames+=("$(frames_in "$work/win$i.mp4")") w_core+=("$(steady_core win)")
    printf 'round %d  window    CPU %6.2f s  steady %5.1f %% of a core  frames %d/%d\n' "$i" \
      "${w_cpu[-1]}" "${w_core[-1]}" "${w_frames[-1]}" "$expected"
    [ "$i" -gt 1 ] || { cp "$work/head.threads" "$work/head1.threads" 2>/dev/null || true
                        cp "$work/win.threads" "$work/win1.threads" 2>/dev/null || true; }
    rm -f "$work/head$i.mp4" "$work/win$i.mp4"
  done
  local hc wc hs ws
  hc="$(median "${h_cpu[@]}")" wc="$(median "${w_cpu[@]}")"
  hs="$(median "${h_core[@]}")" ws="$(median "${w_core[@]}")"
  echo
  echo "medians, $seconds s show (four channels: 1080p30 file on air, 720p file, two test signals -> MP4):"
  printf '  %-9s CPU %6.2f s (%3s %% of a core), steady state %5.1f %% of a core\n' headless \
    "$hc" "$(core_pct "$hc" "$seconds")" "$hs"
  printf '  %-9s CPU %6.2f s (%3s %% of a core), steady state %5.1f %% of a core\n' window \
    "$wc" "$(core_pct "$wc" "$seconds")" "$ws"
  echo "ratio window/headless: CPU $(ratio "$wc" "$hc") over the whole run (start-up included)," \
    "$(ratio "$ws" "$hs") in steady state (the middle half)"
  echo "spread (max - min) / median of the rounds, steady state: headless $(spread "${h_core[@]}")," \
    "window $(spread "${w_core[@]}")"
  thread_table head1 "round 1, headless: each thread over the middle half of the run"
  thread_table win1 "round 1, window: each thread over the middle half of the run"
}

# --- capture ----------------------------------------------------------------------------------
bench_capture() {
  local display=":$((RANDOM % 400 + 200))"
  Xvfb "$display" -screen 0 1920x1080x24 -nolisten tcp -noreset >/dev/null 2>&1 &
  xvfb_pid=$!
  sleep 1
  # Something moving on the screen, as a real desktop has (its own CPU is in neither figure).
  DISPLAY="$display" SDL_AUDIODRIVER=dummy ffplay -v error -an -f lavfi \
    -i "testsrc2=size=1280x720:rate=30" -left 100 -top 100 -window_title moving \
    </dev/null >/dev/null 2>&1 &
  sampled=$!
  sleep 2
  local i s_cpu=() f_cpu=()
  for i in $(seq 1 "$rounds"); do
    run_timed cap env DISPLAY="$display" XDG_DATA_HOME="$work/data" \
      XDG_CONFIG_HOME="$work/config" QT_QPA_PLATFORM=offscreen "$binary" --headless \
      --channel 1=desktop://capture?monitor=0 --duration "$seconds"
    s_cpu+=("$(cpu cap)")
    printf 'round %d  selvane   CPU %6.2f s  %s\n' "$i" "${s_cpu[-1]}" \
      "$(grep '^done:' "$work/cap.log" | cut -c1-60)"
    run_ffmpeg grab -f x11grab -framerate 30 -video_size 1920x1080 -i "$display" \
      -t "$seconds" -f null -
    f_cpu+=("$(cpu grab)")
    printf 'round %d  ffmpeg    CPU %6.2f s\n' "$i" "${f_cpu[-1]}"
  done
  local sc fc
  sc="$(median "${s_cpu[@]}")" fc="$(median "${f_cpu[@]}")"
  echo
  echo "medians, $seconds s of 1080p30 display capture:"
  printf '  %-9s CPU %6.2f s (%3s %% of a core)\n' selvane "$sc" "$(core_pct "$sc" "$seconds")"
  printf '  %-9s CPU %6.2f s (%3s %% of a core)\n' ffmpeg "$fc" "$(core_pct "$fc" "$seconds")"
  echo "selvane beyond ffmpeg: $(awk -v a="$sc" -v b="$fc" -v w="$seconds" \
    'BEGIN {printf "%.0f", 100 * (a - b) / w}') % of a core; ratio $(ratio "$sc" "$fc")"
}

# --- memory -----------------------------------------------------------------------------------
sample_rss() { # PID NAME: VmRSS in MiB every 10 s while PID runs, into NAME.rss as "SECOND MIB"
  local pid="$1" out="$work/$2.rss" t=0 value start now
  : >"$out"
  start="$(date +%s.%N)"
  while true; do
    t=$((t + 10))
    now="$(date +%s.%N)"
    sleep "$(awk -v s="$start" -v n="$now" -v t="$t" 'BEGIN {d = s + t - n; print (d > 0 ? d : 0)}')"
    value="$(awk '/^VmRSS:/ {printf "%.1f", $2 / 1024}' "/proc/$pid/status" 2>/dev/null || true)"
    [ -n "$value" ] || break # gone (or a zombie: no memory left)
    echo "$t $value" >>"$out"
    if [ "$t" -gt "$limit" ]; then
      echo "  note: still running after $t s, stopped"
      kill "$pid" 2>/dev/null || true
    fi
  done
}
report_rss() { # NAME LABEL
  local out="$work/$1.rss"
  echo "$2 RSS in MiB, one sample every 10 s:"
  awk '{v[NR] = $2; t[NR] = $1}
    END {for (i = 1; i <= NR; i += 10) {
           line = sprintf("  %5d s:", t[i]);
           for (j = i; j < i + 10 && j <= NR; j++) line = line sprintf(" %7.1f", v[j]);
           print line }}' "$out"
  awk -v label="$2" '{v[NR] = $2; if ($1 == 60) base = $2; if ($2 > max) max = $2}
    END {if (NR == 0) {print "  " label ": no sample"; exit}
         printf "  %s: first %.1f, last %.1f, max %.1f MiB; ", label, v[1], v[NR], max
         if (base == "") {print "no 60 s sample (the run is too short)"; exit}
         g = 100 * (v[NR] - base) / base
         printf "60 s -> end %+.1f %% (%s)\n", g, (g > 10 ? "GREW BY MORE THAN 10 %" : "within 10 %")}' "$out"
}
bench_memory() {
  make_media_for show
  start_nginx
  local i
  for i in $(seq 1 "$rounds"); do
    echo "round $i: selvane show of $seconds s"
    need_binary
    selvane_args show "$work/ours$i.mp4" "$seconds"
    env XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" QT_QPA_PLATFORM=offscreen \
      "$binary" --headless "${show_args[@]}" </dev/null >"$work/ours.log" 2>&1 &
    sampled=$!
    sample_rss "$sampled" ours
    wait "$sampled" || echo "  note: selvane exited with $?"
    sampled=
    report_rss ours selvane
    echo "  selvane: frames $(frames_in "$work/ours$i.mp4")/$expected recorded, $(counts ours)"
    rm -f "$work/ours$i.mp4"

    echo "round $i: ffmpeg CLI show of $seconds s"
    ffmpeg_args show "$work/theirs$i.mp4" "$seconds"
    ffmpeg -nostdin -hide_banner -v warning -y "${show_args[@]}" </dev/null >"$work/theirs.log" 2>&1 &
    sampled=$!
    sample_rss "$sampled" theirs
    wait "$sampled" || echo "  note: ffmpeg exited with $?"
    sampled=
    report_rss theirs "ffmpeg CLI"
    echo "  ffmpeg CLI: frames $(frames_in "$work/theirs$i.mp4")/$expected recorded"
    rm -f "$work/theirs$i.mp4"
    local sm fm
    sm="$(awk '$2 > m {m = $2} END {print m + 0}' "$work/ours.rss")"
    fm="$(awk '$2 > m {m = $2} END {print m + 0}' "$work/theirs.rss")"
    echo "round $i: max RSS selvane $sm MiB, ffmpeg CLI $fm MiB, ratio selvane/ffmpeg $(ratio "$sm" "$fm")"
  done
}

# --- scale ------------------------------------------------------------------------------------
# Prints one row per count: medians of CPU, their ratio, and each side's marginal CPU per extra
# unit against the row before, in % of a core (CPU seconds over the run's wall seconds).
scale_table() { # TITLE UNIT then rows "COUNT S_CPU F_CPU S_WALL F_WALL" on stdin
  echo
  echo "$1"
  printf '  %8s  %13s  %12s  %6s  %20s  %20s\n' "$2" "selvane CPU s" "ffmpeg CPU s" ratio \
    "selvane %core/extra" "ffmpeg %core/extra"
  awk '{n = $1; sc = $2; fc = $3; sw = $4; fw = $5
        ms = "-"; mf = "-"
        if (NR > 1) {d = n - pn; ms = sprintf("%+.1f", 100 * (sc - psc) / d / sw)
                     mf = sprintf("%+.1f", 100 * (fc - pfc) / d / fw)}
        printf "  %8d  %13.2f  %12.2f  %6.2f  %20s  %20s\n", n, sc, fc, (fc > 0 ? sc / fc : 0), ms, mf
        pn = n; psc = sc; pfc = fc}'
}
bench_scale() {
  make_media_for show
  start_nginx
  local n i args s_cpu f_cpu s_wall f_wall rows=()
  for n in 1 2 3 4; do
    s_cpu=() f_cpu=() s_wall=() f_wall=()
    for i in $(seq 1 "$rounds"); do
      args=()
      for c in $(seq 1 "$n"); do args+=(--channel "$c=$work/show.mp4"); done
      run_selvane ours "${args[@]}" --record "$work/ours.mp4" --duration "$seconds" \
        --encoder software --preset balanced
      s_cpu+=("$(cpu ours)") s_wall+=("$(wall ours)")
      # The same inputs, paced; the first encoded, the others decoded into a null output (the
      # CLI reads an input only for an output: inputs that only feed nullsinks are never read).
      args=() extra=()
      for c in $(seq 1 "$n"); do args+=(-re -i "$work/show.mp4"); done
      for c in $(seq 1 $((n - 1))); do extra+=(-map "$c:v" -map "$c:a"); done
      [ "$n" -eq 1 ] || extra+=(-t "$seconds" -f null -)
      run_ffmpeg theirs "${args[@]}" -map 0:v -map 0:a "${x264[@]}" -t "$seconds" \
        -movflags +frag_keyframe+empty_moov+default_base_moof "$work/theirs.mp4" "${extra[@]}"
      f_cpu+=("$(cpu theirs)") f_wall+=("$(wall theirs)")
      printf 'channels %d round %d: selvane %6.2f s CPU (frames %d/%d, %s), ffmpeg %6.2f s CPU\n' \
        "$n" "$i" "${s_cpu[-1]}" "$(frames_in "$work/ours.mp4")" "$expected" "$(counts ours)" \
        "${f_cpu[-1]}"
      rm -f "$work/ours.mp4" "$work/theirs.mp4"
    done
    rows+=("$n $(median "${s_cpu[@]}") $(median "${f_cpu[@]}") $(median "${s_wall[@]}") $(median "${f_wall[@]}")")
  done
  local channel_rows=("${rows[@]}")
  rows=()
  for n in 1 2 4 8; do
    s_cpu=() f_cpu=() s_wall=() f_wall=()
    for i in $(seq 1 "$rounds"); do
      next_key
      args=()
      for c in $(seq 1 "$n"); do args+=(--stream "rtmp://127.0.0.1:$port/live/s${key}t$c"); done
      run_selvane ours --channel "1=$work/show.mp4" "${args[@]}" --duration "$seconds" \
        --encoder software --preset balanced
      s_cpu+=("$(cpu ours)") s_wall+=("$(wall ours)")
      local online
      online="$(grep -c "targets $(printf 'online,%.0s' $(seq 1 "$n") | sed 's/,$//') " "$work/ours.log" || true)"
      local tee=""
      for c in $(seq 1 "$n"); do tee+="[f=flv:onfail=ignore]rtmp://127.0.0.1:$port/live/f${key}t$c|"; done
      run_ffmpeg theirs -re -i "$work/show.mp4" -map 0:v -map 0:a "${x264_live[@]}" -flags +global_header \
        -t "$seconds" -f tee "${tee%|}"
      f_cpu+=("$(cpu theirs)") f_wall+=("$(wall theirs)")
      printf 'targets %d round %d: selvane %6.2f s CPU (%s, all online in %d progress lines), ffmpeg %6.2f s CPU\n' \
        "$n" "$i" "${s_cpu[-1]}" "$(counts ours)" "$online" "${f_cpu[-1]}"
    done
    rows+=("$n $(median "${s_cpu[@]}") $(median "${f_cpu[@]}") $(median "${s_wall[@]}") $(median "${f_wall[@]}")")
  done
  printf '%s\n' "${channel_rows[@]}" |
    scale_table "(a) file channels loaded, channel 1 on the program, one encode to MP4 (medians, $seconds s):" channels
  printf '%s\n' "${rows[@]}" |
    scale_table "(b) RTMP targets of one encode (medians, $seconds s):" targets
  echo "(%core/extra: CPU added by each extra channel or target against the row above, in % of"
  echo " one core: CPU seconds over the run's wall seconds x 100)"
}

# --- keepup -----------------------------------------------------------------------------------
progress_speed() { # NAME: the last speed ffmpeg reported on -progress
  awk -F= '$1 == "speed" {s = $2} END {sub(/x$/, "", s); print ((s == "" || s == "N/A") ? "?" : s)}' \
    "$work/$1.progress"
}
# --text takes at most 10,000 characters (a longer ticker is taken for a mistake), so the 100 KB
# ticker comes in a schedule: channel 1 as the base (the file counts channels from 0) and a text
# clip with what --text sets (24 pt bold white, the band, the shadow, right to left).
write_ticker_schedule() { # WORDS JSON
  python3 - "$1" "$2" <<'EOF'
import json, sys
words = open(sys.argv[1]).read()
ticker = {"text": words, "fontPointSize": 24, "bold": True, "fontColor": {"rgba": 0xFFFFFFFF},
          "posX": 0.0, "posY": 306 / 360, "backgroundEnabled": True,
          "backgroundColor": {"rgba": 0xB0000000}, "backgroundPadding": 6, "shadow": True,
          "shadowColor": {"rgba": 0xFF000000}, "shadowOffsetX": 2, "shadowOffsetY": 2,
          "scrollable": True, "scrollDirection": 2, "scrollStep": 5, "scrollTimes": 100,
          "scrollViewportWidth": -1.0, "scrollViewportHeight": -1.0}
schedule = {"format": "selvane_program_arrangement", "version": 3,
            "coordinateSystem": "normalized", "canvas": {"width": 1920, "height": 1080},
            "sceneClips": [{"id": "signal", "startMs": 0, "endMs": 0, "kind": "channel",
                            "channel": 0}],
            "overlayClips": [{"id": "ticker", "startMs": 0, "endMs": 0, "overlayKind": "text",
                              "mediaType": "text", "x": 0, "y": 0.85, "w": 1, "h": 0.15,
                              "opacity": 1, "textData": ticker}]}
json.dump(schedule, open(sys.argv[2], "w"))
EOF
}
bench_keepup() {
  echo "making media: $((seconds + 5)) s of 10-bit HEVC 1080p30, of H.264 3840x2160p30;" \
    "tickers of 10,000 and 102,400 characters"
  make_clip "$work/hevc10.mp4" $((seconds + 5)) "$signal1080" -c:v libx265 -preset ultrafast \
    -pix_fmt yuv420p10le -g 60 -x265-params log-level=error
  make_clip "$work/uhd.mp4" $((seconds + 5)) "testsrc2=size=3840x2160:rate=30" -c:v libx264 \
    -preset veryfast -crf 23 -g 60 -pix_fmt yuv420p
  yes "the quick brown fox jumps over the lazy dog" | tr '\n' ' ' | head -c 102400 \
    >"$work/words100k.txt" || true
  head -c 10000 "$work/words100k.txt" >"$work/words10k.txt"
  write_ticker_schedule "$work/words100k.txt" "$work/ticker100k.json"
  local source i label s_args f_args s_frames s_cpu f_speed f_cpu f_own sc fc
  local signal_args=(--channel "1=lavfi://${signal1080}[out0];${tone}[out1]")
  local signal_inputs=(-f lavfi -i "$signal1080" -f lavfi -i "$tone")
  for source in hevc10 uhd text10k text100k; do
    case "$source" in
    hevc10)
      label="10-bit HEVC 1080p30 file"
      s_args=(--channel "1=$work/hevc10.mp4")
      f_args=(-i "$work/hevc10.mp4")
      ;;
    uhd)
      label="H.264 3840x2160p30 file, output 1920x1080"
      s_args=(--channel "1=$work/uhd.mp4" --size 1920x1080)
      f_args=(-i "$work/uhd.mp4" -vf scale=1920:1080)
      ;;
    text10k)
      label="10,000-character ticker (the longest --text) over a 1080p30 test signal"
      s_args=("${signal_args[@]}" --text "$(cat "$work/words10k.txt")")
      f_args=("${signal_inputs[@]}" -filter_complex "$(ticker_filter 0:v "$work/words10k.txt" v)"
        -map '[v]' -map 1:a)
      ;;
    text100k)
      label="100 KB ticker (in a schedule) over a 1080p30 test signal"
      s_args=("${signal_args[@]}" --schedule "$work/ticker100k.json")
      f_args=("${signal_inputs[@]}" -filter_complex "$(ticker_filter 0:v "$work/words100k.txt" v)"
        -map '[v]' -map 1:a)
      ;;
    esac
    echo
    echo "$label, $seconds s:"
    s_frames=() s_cpu=() f_speed=() f_cpu=() f_own=()
    for i in $(seq 1 "$rounds"); do
      run_selvane ours "${s_args[@]}" --record "$work/ours.mp4" --duration "$seconds" \
        --encoder software --preset balanced
      s_frames+=("$(frames_in "$work/ours.mp4")") s_cpu+=("$(cpu ours)")
      printf '  round %d  selvane real time: frames %d/%d recorded, %s, CPU %.2f s\n' \
        "$i" "${s_frames[-1]}" "$expected" "$(counts ours)" "${s_cpu[-1]}"
      run_ffmpeg theirs "${f_args[@]}" -t "$seconds" "${x264[@]}" -progress "$work/theirs.progress" \
        -movflags +frag_keyframe+empty_moov+default_base_moof "$work/theirs.mp4"
      f_cpu+=("$(cpu theirs)")
      f_speed+=("$(awk -v s="$seconds" -v w="$(wall theirs)" 'BEGIN {printf "%.2f", (w > 0 ? s / w : 0)}')")
      f_own+=("$(progress_speed theirs)")
      printf '  round %d  ffmpeg unpaced: %d s in %.2f s wall = %sx real time (its -progress: %sx), frames %d, CPU %.2f s\n' \
        "$i" "$seconds" "$(wall theirs)" "${f_speed[-1]}" "${f_own[-1]}" \
        "$(frames_in "$work/theirs.mp4")" "${f_cpu[-1]}"
      rm -f "$work/ours.mp4" "$work/theirs.mp4"
    done
    sc="$(median "${s_cpu[@]}")" fc="$(median "${f_cpu[@]}")"
    printf '  median   selvane frames %d/%d, CPU %.2f s; ffmpeg %sx real time, CPU %.2f s; CPU ratio selvane/ffmpeg %s\n' \
      "$(median "${s_frames[@]}")" "$expected" "$sc" "$(median "${f_speed[@]}")" "$fc" \
      "$(ratio "$sc" "$fc")"
  done
}

# --- relay ------------------------------------------------------------------------------------
# The source carries its frame number in 12 blocks along the top (white: bit set).
counter_graph="color=c=gray:size=640x360:rate=30,format=yuv420p,geq=lum=if(lt(Y\\,40)\\,if(lt(X\\,480)\\,16+219*mod(floor(N/pow(2\\,floor(X/40)))\\,2)\\,128)\\,128):cb=128:cr=128"
bench_relay() {
  start_nginx
  cat >"$work/arrivals.py" <<'PY'
import select, subprocess, sys, time
# Reads the frame numbers of each stream and prints "name number arrival" lines.
urls = sys.argv[1:]
procs = {}
for url in urls:
    p = subprocess.Popen(["ffmpeg", "-v", "error", "-nostdin", "-fflags", "nobuffer", "-flags",
                          "low_delay", "-probesize", "32768", "-analyzeduration", "0", "-threads",
                          "1", "-i", url, "-vf", "crop=480:20:0:10,scale=12:1:flags=area",
                          "-pix_fmt", "gray", "-f", "rawvideo", "-"], stdout=subprocess.PIPE)
    procs[p.stdout.fileno()] = (url, p, bytearray())
while procs:
    ready, _, _ = select.select(list(procs), [], [], 1.0)
    for fd in ready:
        url, p, buf = procs[fd]
        chunk = p.stdout.read1(4096) if hasattr(p.stdout, "read1") else p.stdout.read(12)
        now = time.monotonic()
        if not chunk:
            del procs[fd]
            continue
        buf += chunk
        while len(buf) >= 12:
            bits = bytes(buf[:12])
            del buf[:12]
            n = sum(1 << i for i, v in enumerate(bits) if v > 128)
            print(url.rsplit("/", 1)[-1], n, "%.4f" % now, flush=True)
PY
  local i rows=()
  for i in $(seq 1 "$rounds"); do
    next_key
    local in="rtmp://127.0.0.1:$port/live/in$key" sel="rtmp://127.0.0.1:$port/live/sel$key"
    local cli="rtmp://127.0.0.1:$port/live/cli$key"
    ffmpeg -nostdin -v error -re -f lavfi -i "$counter_graph" -t $((seconds + 10)) -c:v libx264 \
      -preset ultrafast -tune zerolatency -g 30 -bf 0 -f flv "$in" 2>/dev/null &
    local publisher=$!
    sleep 1
    env XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" QT_QPA_PLATFORM=offscreen \
      "$binary" --headless --channel "1=$in" --size 640x360 --stream "$sel" \
      --duration $((seconds + 6)) --encoder software --preset balanced >"$work/relay.log" 2>&1 &
    local ours=$!
    ffmpeg -nostdin -v error -fflags nobuffer -i "$in" -t $((seconds + 6)) -an \
      -c:v libx264 -preset veryfast -tune zerolatency -g 60 -bf 0 -b:v 2000k -maxrate 2000k \
      -bufsize 2000k -x264-params \
      sliced-threads=0:threads=4:weightp=0:scenecut=0:force-cfr=1:nal-hrd=cbr:filler=1:keyint=60:min-keyint=60 \
      -f flv "$cli" 2>/dev/null &
    local theirs=$!
    sleep 3
    timeout $((seconds + 2)) python3 "$work/arrivals.py" "$sel" "$cli" "$in" \
      >"$work/arrivals$i.txt" 2>/dev/null || true
    kill "$ours" "$theirs" "$publisher" 2>/dev/null || true
    wait "$ours" "$theirs" "$publisher" 2>/dev/null || true
    python3 - "$work/arrivals$i.txt" "sel$key" "cli$key" "in$key" <<'PY' | tee -a "$work/relay.rows"
import statistics, sys
lines = [l.split() for l in open(sys.argv[1]) if len(l.split()) == 3]
sel, cli, src = sys.argv[2], sys.argv[3], sys.argv[4]
first = {}
for name, n, t in lines:
    first.setdefault((name, int(n)), float(t))
def diffs(a, b):
    return sorted(1000 * (first[(a, n)] - first[(b, n)]) for (name, n) in first
                  if name == a and (b, n) in first)
added, cli_own = diffs(sel, cli), diffs(cli, src)
if not added:
    print("no frame seen in both outputs")
else:
    p95 = added[int(0.95 * (len(added) - 1))]
    print("frames %d  selvane after the ffmpeg relay: median %.0f ms, p95 %.0f ms;"
          "  the ffmpeg relay after the source: median %.0f ms"
          % (len(added), statistics.median(added), p95,
             statistics.median(cli_own) if cli_own else float("nan")))
PY
  done
}

# shellcheck source=lib/bench-shows.sh
. "$root/scripts/lib/bench-shows.sh"
# shellcheck source=lib/bench-production.sh
. "$root/scripts/lib/bench-production.sh"
# shellcheck source=lib/bench-profiles.sh
. "$root/scripts/lib/bench-profiles.sh"

header
"bench_$case_name"
footer

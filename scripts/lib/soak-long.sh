# shellcheck shell=bash
# Sourced by scripts/soak.sh for `soak.sh long HOURS`: a headless show of HOURS hours (0.1 is six
# minutes) with everything a long unattended run meets, its process sampled all along.
#
# The show: a schedule taking channel 1 and channel 2 in turn for a minute each, a title over it
# all the time and a ticker for 30 s every five minutes. Channels 1 and 2 are RTMP streams from
# two nginx servers of their own, each fed by an ffmpeg publisher (a test picture with the
# publisher's frame number burnt in, a tone); channel 3 is a test signal and stands in for
# channel 1 (--backup 1=channel:3); channel 2 has no backup, so the slate stands in for it;
# channel 4 is a test signal whose source the remote control changes now and then.
# Failover is on (--failover-ms 2000 --return-ms 3000). Out: a recording on a small tmpfs and two
# RTMP targets on a third nginx. 640x360, 30 fps, x264 (--encoder software --preset performance).
#
# What goes wrong, at random times drawn from SOAK_SEED (default 1), each noted in events.csv:
#   - each input drops every few minutes for 10-40 s: its publisher is killed (TERM or KILL), or
#     its nginx is stopped (SIGSTOP: a server that hangs with its connections open) and continued
#   - the targets' nginx is killed (TERM or KILL) every few minutes and started 10-40 s later
#   - the recording's tmpfs is filled with a ballast file every few minutes until the show says
#     the recording failed, kept full 5 s more, then emptied: the show goes on in a new file
#     beside the old one. Files the show has left are moved off the tmpfs to recordings/ in the
#     run folder as the run goes (SOAK_KEEP_RECORDINGS=0 deletes them once checked)
#   - the remote control: GET /status every 5 s; a cut or a source change every 20-90 s
# In a run under half an hour the faults come about twice as often. None starts in the last
# minutes (3; 1 under half an hour), so the run ends with everything up and the end's figures can
# be set beside the start's.
#
# Every minute (every 10 s under half an hour) a line goes to soak.csv:
#   elapsed_s        seconds since the show's remote control started listening
#   rss_kb, threads  VmRSS and Threads of /proc/PID/status
#   open_fds         entries in /proc/PID/fd
#   skipped_ticks, failovers, returns, program_frames, frames_written, encoder_drops
#                    program.skippedTicks, failover.failovers, failover.returns, program.frames,
#                    outputs.framesWritten, outputs.encoderDrops of GET /api/v1/status
#   targets_online   targets whose status is "online"
#   recording_failed 1 while outputs.file.failed is true
#   faults           faults in force at that moment (inputs down, targets' server down, disk
#                    full and not yet written again)
#   rec_av_start_ms, rec_av_end_ms
#                    filled in at the end, from the recording file being written at that moment
#                    (ffprobe): its audio stream's start time less its video stream's, and the
#                    same for the streams' ends. These are per file, not per minute: the show
#                    offers no cheap measure of audio against video while it runs
#   rec_file         that file's name
# At the end the show gets SIGINT, the summary is printed (first/last/min/max of each column, the
# RSS slope by least squares, whether RSS, threads and open files stayed flat, every recording
# checked with ffprobe and decoded at its start and end), soak.png is drawn with gnuplot, and the
# run folder (SOAK_DIR, default a new /tmp/selvane-soak-long.XXXXXX) is named. Exit 0 when all
# verdicts hold, 1 otherwise. Needs nginx with the rtmp module, ffmpeg, curl, jq, and gnuplot
# for the plot; mounting the tmpfs needs root (without it the recording goes to the run folder
# and the disk is never filled; SOAK_RECORD_DIR names a small file system to fill instead).

: "${root:?the tree, set by scripts/soak.sh}"
hours=${1:-}
[[ $hours =~ ^[0-9]*\.?[0-9]+$ ]] || { echo "soak: long HOURS (a number, e.g. 2 or 0.1)" >&2; exit 2; }
run_s=$(awk -v h="$hours" 'BEGIN { printf "%d", h * 3600 + 0.5 }')
((run_s >= 120)) || { echo "soak: long runs last at least 2 minutes (0.034 hours)" >&2; exit 2; }
build=${SELVANE_BUILD_DIR:-build}
[[ $build = /* ]] || build="$root/$build"
binary="$build/selvane"
[[ -x $binary ]] || { echo "soak: no $binary (scripts/build.sh)" >&2; exit 2; }
for tool in nginx ffmpeg ffprobe curl jq; do
  command -v "$tool" >/dev/null || { echo "soak: $tool is missing (scripts/install-deps.sh)" >&2; exit 2; }
done
[[ -e /usr/lib/nginx/modules/ngx_rtmp_module.so ]] ||
  { echo "soak: nginx's rtmp module is missing (libnginx-mod-rtmp)" >&2; exit 2; }

seed=${SOAK_SEED:-1}
if ((run_s < 1800)); then
  short=1 sample_every=10 calm=60
else
  short=0 sample_every=60 calm=180
fi
warmup=$((run_s / 3 < 600 ? run_s / 3 : 600))
if [[ -n ${SOAK_DIR:-} ]]; then
  run=$SOAK_DIR
  mkdir -p "$run"
else
  run=$(mktemp -d /tmp/selvane-soak-long.XXXXXX)
fi
run=$(cd "$run" && pwd)
mkdir -p "$run/recordings"
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf

free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }

# Each kind of fault draws from a sequence of its own (1, 2: the inputs, 3: the targets' server,
# 4: the disk, 5: the remote control), so that one seed gives the same faults at the same times
# however the others fall. REPLY = a whole number from LO to HI.
declare -a rng=()
draw() { # SEQUENCE LO HI
  local state=${rng[$1]:-$((seed * 7919 + $1 * 104729))}
  state=$(((state * 1103515245 + 12345) % 2147483648))
  rng[$1]=$state
  REPLY=$(($2 + (state >> 8) % ($3 - $2 + 1)))
}
now() { # REPLY = whole seconds since t0
  local us=${EPOCHREALTIME//[!0-9]/}
  REPLY=$(((us - t0_us) / 1000000))
}
t0_us=${EPOCHREALTIME//[!0-9]/}

echo "elapsed_s,kind,detail" >"$run/events.csv"
event() { # KIND DETAIL
  now
  printf '%s,%s,"%s"\n' "$REPLY" "$1" "${2//\"/\"\"}" >>"$run/events.csv"
  printf 'soak: %02d:%02d %s: %s\n' $((REPLY / 60)) $((REPLY % 60)) "$1" "$2"
}

# --- the recording's file system --------------------------------------------------------------
rec=$run/rec
mkdir -p "$rec"
mounted=0
fill_disk=1
if [[ -n ${SOAK_RECORD_DIR:-} ]]; then
  rec=$SOAK_RECORD_DIR
  mkdir -p "$rec"
elif mount -t tmpfs -o "size=${SOAK_TMPFS_MB:-256}m,mode=0700" selvane-soak "$rec" 2>/dev/null; then
  mounted=1
else
  fill_disk=0
  echo "soak: cannot mount a tmpfs here (not root): the recording goes to $rec and the disk is" \
    "never filled (SOAK_RECORD_DIR names a small file system to fill instead)" >&2
fi

# --- servers and publishers -------------------------------------------------------------------
declare -A port nginx_pid
declare -a pub_pid=('' '' '')
for role in in1 in2 out; do
  port[$role]=$(free_port)
  mkdir -p "$run/nginx-$role"
  cat >"$run/nginx-$role/nginx.conf" <<EOF
load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;
daemon off; master_process off; worker_processes 1;
pid $run/nginx-$role/nginx.pid; error_log $run/nginx-$role/error.log warn;
events { worker_connections 256; }
rtmp { server { listen 127.0.0.1:${port[$role]}; chunk_size 4096;
  application live { live on; record off; } } }
EOF
done

start_nginx() { # ROLE
  nginx -c "$run/nginx-$1/nginx.conf" -p "$run/nginx-$1" >>"$run/nginx-$1/stdout.log" 2>&1 &
  nginx_pid[$1]=$!
  local _
  for _ in $(seq 50); do
    (exec 3<>"/dev/tcp/127.0.0.1/${port[$1]}") 2>/dev/null && return 0
    sleep 0.1
  done
  event warning "nginx $1 is not listening after 5 s"
}
stop_pid() { # PID [SIGNAL]: ends it (continued first, in case it was stopped) and reaps it
  [[ -n $1 ]] || return 0
  kill -CONT "$1" 2>/dev/null || true
  kill "-${2:-TERM}" "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || true
}
start_publisher() { # 1|2
  local i=$1 picture=testsrc2 tone=440
  ((i == 2)) && picture=testsrc tone=660
  ffmpeg -nostdin -v error -re -f lavfi \
    -i "$picture=size=640x360:rate=30,drawtext=fontfile=$font:text='input $i frame %{n}':x=20:y=310:fontsize=28:fontcolor=white:box=1:boxcolor=black@0.6" \
    -f lavfi -i "sine=frequency=$tone:sample_rate=48000" -c:v libx264 -preset ultrafast \
    -tune zerolatency -g 30 -pix_fmt yuv420p -c:a aac -b:a 96k -f flv \
    "rtmp://127.0.0.1:${port[in$i]}/live/input$i" >>"$run/publisher$i.log" 2>&1 &
  pub_pid[i]=$!
}

show_pid=
# shellcheck disable=SC2317 # run by the EXIT trap
cleanup() {
  stop_pid "$show_pid" KILL
  stop_pid "${pub_pid[1]}"
  stop_pid "${pub_pid[2]}"
  local role
  for role in in1 in2 out; do stop_pid "${nginx_pid[$role]:-}"; done
  if ((mounted)); then
    rm -f "$rec/ballast"
    move_old_recordings "" 2>/dev/null || true
    umount "$rec" 2>/dev/null || umount -l "$rec" 2>/dev/null || true
    mounted=0
  fi
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# --- the schedule -----------------------------------------------------------------------------
python3 - "$run/schedule.json" "$run_s" <<'PY'
import json, sys
path, seconds = sys.argv[1], int(sys.argv[2])
minutes = seconds // 60 + 10  # the schedule outlasts the run; its last clip has no end
scene = [{"id": "m%03d" % m, "startMs": m * 60000, "endMs": 0 if m == minutes else (m + 1) * 60000,
          "kind": "channel", "channel": m % 2} for m in range(minutes + 1)]
white, black = 4294967295, 2566914048  # #ffffffff, #99000000
title = {"text": "Selvane soak", "fontPointSize": 22, "bold": True, "fontColor": {"rgba": white},
         "backgroundEnabled": True, "backgroundColor": {"rgba": black}, "posX": 0.03,
         "posY": 0.04}
overlay = [{"id": "title", "startMs": 0, "endMs": 0, "overlayKind": "text", "textData": title}]
for n, start in enumerate(range(150000, (minutes + 1) * 60000, 300000)):
    ticker = {"text": "Ticker %d: a long run with inputs, targets and the disk failing on purpose" % (n + 1),
              "fontPointSize": 20, "fontColor": {"rgba": white}, "backgroundEnabled": True,
              "backgroundColor": {"rgba": black}, "posX": 0.0, "posY": 0.86,
              "scrollable": True, "scrollDirection": 2}
    overlay.append({"id": "ticker%d" % (n + 1), "startMs": start, "endMs": start + 30000,
                    "overlayKind": "text", "textData": ticker})
json.dump({"format": "selvane_program_arrangement", "version": 3, "sceneClips": scene,
           "overlayClips": overlay}, open(path, "w"), indent=1)
PY

# --- start ------------------------------------------------------------------------------------
for role in in1 in2 out; do start_nginx "$role"; done
start_publisher 1
start_publisher 2
sleep 2

control_port=$(free_port)
token="soak-$(head -c 24 /dev/urandom | od -An -tx1 | tr -d ' \n')"
headers=$(umask 077 && mktemp -p "$run")
printf 'Authorization: Bearer %s\nContent-Type: application/json\n' "$token" >"$headers"
api="http://127.0.0.1:$control_port/api/v1"
signal3='lavfi://smptebars=size=640x360:rate=30[out0];sine=frequency=880:sample_rate=48000[out1]'
signal4=('lavfi://testsrc=size=640x360:rate=30[out0];sine=frequency=330:sample_rate=48000[out1]'
  'lavfi://color=c=navy:size=640x360:rate=30[out0];sine=frequency=550:sample_rate=48000[out1]')

echo "soak: long run of $run_s s (seed $seed) in $run"
SELVANE_CONTROL_TOKEN="$token" XDG_CONFIG_HOME="$run/config" XDG_DATA_HOME="$run/data" \
  "$binary" --headless --schedule "$run/schedule.json" \
  --channel "1=rtmp://127.0.0.1:${port[in1]}/live/input1" \
  --channel "2=rtmp://127.0.0.1:${port[in2]}/live/input2" \
  --channel "3=$signal3" --channel "4=${signal4[0]}" \
  --backup 1=channel:3 --failover-ms 2000 --return-ms 3000 \
  --size 640x360 --fps 30 --bitrate 1000 --encoder software --preset performance \
  --record "$rec/soak.mp4" \
  --stream "rtmp://127.0.0.1:${port[out]}/live/a" --stream "rtmp://127.0.0.1:${port[out]}/live/b" \
  --control-port "$control_port" --duration $((run_s + 600)) \
  >"$run/show.log" 2>"$run/show.err" &
show_pid=$!
for _ in $(seq 100); do
  grep -q '^control: listening' "$run/show.log" 2>/dev/null && break
  sleep 0.1
done
grep -q '^control: listening' "$run/show.log" || { cat "$run/show.err" >&2; exit 1; }
t0_us=${EPOCHREALTIME//[!0-9]/}
echo "soak: show $show_pid listening; sampling every $sample_every s, warm-up $warmup s, calm end $calm s"

# --- the remote control -----------------------------------------------------------------------
status_json=
echo "elapsed_s,method,path,code,seconds" >"$run/api.csv"
call() { # METHOD PATH [BODY]: REPLY = the HTTP code (000: no answer); a GET's body in status_json
  local out
  now
  local at=$REPLY
  if [[ $1 == GET ]]; then
    out=$(curl -sS --max-time 5 -H @"$headers" -w '\n%{http_code} %{time_total}' "$api/$2" 2>/dev/null) || true
    status_json=${out%$'\n'*}
    out=${out##*$'\n'}
  else
    out=$(curl -sS --max-time 5 -o /dev/null -H @"$headers" -X "$1" ${3:+-d "$3"} \
      -w '%{http_code} %{time_total}' "$api/$2" 2>/dev/null) || true
  fi
  [[ $out =~ ^[0-9]{3}\ [0-9.]+$ ]] || out="000 5"
  printf '%s,%s,%s,%s,%s\n' "$at" "$1" "$2" "${out% *}" "${out#* }" >>"$run/api.csv"
  REPLY=${out% *}
  [[ $REPLY == 2?? ]] || event api-error "$1 $2 answered $REPLY"
}
status_field() { jq -r "$1" <<<"$status_json" 2>/dev/null || true; }

# --- the faults -------------------------------------------------------------------------------
if ((short)); then
  input_gap=(45 110) target_up=(60 120) fill_gap=(100 160) action_gap=(20 45)
else
  input_gap=(120 300) target_up=(150 360) fill_gap=(240 480) action_gap=(30 90)
fi
last_start=$((run_s - calm - 45)) # no fault starts after this: all are over before the calm end
declare -a in_down=(0 0 0) in_until=(0 0 0) in_next=(0 0 0) in_kind=('' '' '')
draw 1 "${input_gap[@]}"; in_next[1]=$REPLY
draw 2 "${input_gap[@]}"; in_next[2]=$REPLY
out_down=0 out_until=0
draw 3 "${target_up[@]}"; out_next=$REPLY
disk=idle disk_since=0 disk_failed_at=0 disk_file=
draw 4 "${fill_gap[@]}"; disk_next=$REPLY
((fill_disk)) || disk_next=$((run_s * 2))
draw 5 "${action_gap[@]}"; action_next=$REPLY
poll_next=5 sample_next=0 source4=0
drops=0 stops=0 restarts=0 fills=0 actions=0 deaths=0

input_tick() { # 1|2 at time $1
  local i=$2 t=$1
  if ((in_down[i] == 0 && t >= in_next[i] && t <= last_start)); then
    draw "$i" 10 40
    in_until[i]=$((t + REPLY))
    in_down[i]=1
    draw "$i" 0 1
    if ((REPLY)); then
      in_kind[i]=stop
      kill -STOP "${nginx_pid[in$i]}" 2>/dev/null || true
      stops=$((stops + 1))
      event input-down "input $i: nginx stopped (SIGSTOP) for $((in_until[i] - t)) s"
    else
      in_kind[i]='kill'
      local sig=TERM
      draw "$i" 0 1
      ((REPLY)) && sig=KILL
      stop_pid "${pub_pid[i]}" "$sig"
      pub_pid[i]=
      drops=$((drops + 1))
      event input-down "input $i: publisher killed ($sig) for $((in_until[i] - t)) s"
    fi
  elif ((in_down[i] == 1 && t >= in_until[i])); then
    if [[ ${in_kind[i]} == stop ]]; then
      kill -CONT "${nginx_pid[in$i]}" 2>/dev/null || true
      event input-up "input $i: nginx continued"
    else
      start_publisher "$i"
      event input-up "input $i: publisher started"
    fi
    in_down[i]=0
    draw "$i" "${input_gap[@]}"
    in_next[i]=$((t + REPLY))
  fi
  # anything that should be running and is not has died by itself: noted and started again
  if ! kill -0 "${nginx_pid[in$i]}" 2>/dev/null; then
    deaths=$((deaths + 1))
    event died "nginx in$i ended by itself; started again"
    wait "${nginx_pid[in$i]}" 2>/dev/null || true
    start_nginx "in$i"
    if [[ ${in_kind[i]} == stop ]]; then in_down[i]=0; fi
  fi
  if [[ ${in_down[i]} == 0 || ${in_kind[i]} == stop ]] && ! kill -0 "${pub_pid[i]:-0}" 2>/dev/null; then
    if [[ ${in_down[i]} == 0 ]]; then
      deaths=$((deaths + 1))
      event died "publisher $i ended by itself ($(tail -n 1 "$run/publisher$i.log" 2>/dev/null)); started again"
      wait "${pub_pid[i]}" 2>/dev/null || true
      start_publisher "$i"
    fi
  fi
  return 0
}

targets_tick() { # at time $1
  local t=$1
  if ((out_down == 0 && t >= out_next && t <= last_start)); then
    draw 3 10 40
    out_until=$((t + REPLY))
    out_down=1
    local sig=TERM
    draw 3 0 1
    ((REPLY)) && sig=KILL
    stop_pid "${nginx_pid[out]}" "$sig"
    restarts=$((restarts + 1))
    event targets-down "targets' nginx killed ($sig) for $((out_until - t)) s"
  elif ((out_down == 1 && t >= out_until)); then
    start_nginx out
    out_down=0
    draw 3 "${target_up[@]}"
    out_next=$((t + REPLY))
    event targets-up "targets' nginx started"
  elif ((out_down == 0)) && ! kill -0 "${nginx_pid[out]}" 2>/dev/null; then
    deaths=$((deaths + 1))
    event died "targets' nginx ended by itself; started again"
    wait "${nginx_pid[out]}" 2>/dev/null || true
    start_nginx out
  fi
  return 0
}

disk_tick() { # at time $1: idle -> full -> failed -> freed -> idle
  local t=$1 failed path
  case $disk in
  idle)
    if ((t >= disk_next && t <= last_start)); then
      call GET status
      disk_file=$(status_field '.outputs.file.path')
      local before
      before=$(stat -c %s "$disk_file" 2>/dev/null || echo '?')
      dd if=/dev/zero of="$rec/ballast" bs=1M status=none 2>/dev/null || true
      disk=full disk_since=$t
      fills=$((fills + 1))
      event disk-full "${disk_file##*/} at $before bytes; ballast of $(stat -c %s "$rec/ballast") bytes; $(df -k --output=avail "$rec" | tail -n 1 | tr -d ' ') kB left"
    fi
    ;;
  full)
    call GET status
    failed=$(status_field '.outputs.file.failed')
    if [[ $failed == true ]]; then
      disk=failed disk_failed_at=$t
      event recording-failed "after $((t - disk_since)) s: $(status_field '.outputs.file.reason') (${disk_file##*/} at $(stat -c %s "$disk_file" 2>/dev/null || echo '?') bytes)"
    elif ((t - disk_since >= 60)); then
      disk=failed disk_failed_at=$t
      event recording-not-failed "the disk has been full for 60 s and the recording has not failed"
    fi
    ;;
  failed)
    if ((t - disk_failed_at >= 5)); then
      rm -f "$rec/ballast"
      disk=freed disk_since=$t
      event disk-freed "ballast removed"
    fi
    ;;
  freed)
    call GET status
    failed=$(status_field '.outputs.file.failed')
    path=$(status_field '.outputs.file.path')
    if [[ $failed == false ]]; then
      event recording-resumed "after $((t - disk_since)) s in ${path##*/}"
      move_old_recordings "$path"
    elif ((t - disk_since >= 60)); then
      event recording-not-resumed "60 s after the disk was emptied the recording still fails"
    else
      return 0
    fi
    disk=idle
    draw 4 "${fill_gap[@]}"
    disk_next=$((t + REPLY))
    ;;
  esac
  return 0
}
# Every file but the one being written leaves the tmpfs. An empty file keeps each name taken, so
# that the show, which never replaces a file, goes on numbering its takes (soak_1, soak_2 ...)
# instead of writing a name again once it is free.
move_old_recordings() { # CURRENT
  ((mounted)) || return 0
  local f
  for f in "$rec"/*; do
    [[ -f $f && $f != "$1" && $f != "$rec/ballast" && ! -e $run/recordings/${f##*/} ]] || continue
    if mv -n "$f" "$run/recordings/"; then
      : >"$f"
      event moved "${f##*/} ($(stat -c %s "$run/recordings/${f##*/}") bytes) to recordings/"
    else
      event warning "could not move $f"
    fi
  done
}

action_tick() { # at time $1: a cut, or a new source on channel 4 and a cut to it
  local t=$1 what
  ((t >= action_next)) || return 0
  draw 5 0 4
  what=$REPLY
  actions=$((actions + 1))
  if ((what == 4)); then
    source4=$((1 - source4))
    call PUT channels/4 "{\"address\": \"${signal4[source4]}\"}"
    event control "channel 4 source ${signal4[source4]%%[*} ($REPLY)"
    call POST program/cut '{"channel": 4}'
    event control "cut to 4 ($REPLY)"
  else
    call POST program/cut "{\"channel\": $((what % 3 + 1))}"
    event control "cut to $((what % 3 + 1)) ($REPLY)"
  fi
  draw 5 "${action_gap[@]}"
  action_next=$((t + REPLY))
}

echo "elapsed_s,rss_kb,threads,open_fds,skipped_ticks,failovers,returns,program_frames,frames_written,encoder_drops,targets_online,recording_failed,faults,rec_av_start_ms,rec_av_end_ms,rec_file" >"$run/soak.csv"
sample() { # at time $1
  local proc rss='' threads='' fds row faults
  # At one go: bash's read takes a line at a time and seeks back, and /proc writes its text anew
  # for each read, so a line can come cut where a figure before it changed its width.
  proc=$(cat "/proc/$show_pid/status" 2>/dev/null) || return 0
  [[ $proc =~ VmRSS:[[:space:]]*([0-9]+) ]] && rss=${BASH_REMATCH[1]}
  [[ $proc =~ Threads:[[:space:]]*([0-9]+) ]] && threads=${BASH_REMATCH[1]}
  local us=${EPOCHREALTIME//[!0-9]/} at
  us=$((us - t0_us))
  printf -v at '%d.%02d' $((us / 1000000)) $((us % 1000000 / 10000))
  local entries=("/proc/$show_pid/fd"/*)
  fds=${#entries[@]}
  call GET status
  row=$(status_field '[.program.skippedTicks, .failover.failovers, .failover.returns, .program.frames,
    .outputs.framesWritten, .outputs.encoderDrops,
    ([.outputs.targets[] | select(.status == "online")] | length),
    (if .outputs.file.failed then 1 else 0 end)] | map(tostring) | join(",")')
  [[ -n $row ]] || row=",,,,,,,"
  faults=$((in_down[1] + in_down[2] + out_down))
  [[ $disk == idle ]] || faults=$((faults + 1))
  printf '%s,%s,%s,%s,%s,%s,,,%s\n' "$at" "$rss" "$threads" "$fds" "$row" "$faults" \
    "$(status_field '.outputs.file.path | split("/") | last')" >>"$run/soak.csv"
  printf 'soak: %02d:%02d RSS %d MB, %s threads, %s files, skipped/failovers/returns %s\n' \
    $(($1 / 60)) $(($1 % 60)) $((rss / 1024)) "$threads" "$fds" "$(cut -d, -f1-3 <<<"$row" | tr , /)"
}

# --- the run ----------------------------------------------------------------------------------
while :; do
  now
  t=$REPLY
  kill -0 "$show_pid" 2>/dev/null || { event show-ended "the show ended by itself"; break; }
  if ((t >= sample_next)); then
    sample "$t"
    sample_next=$((sample_next + sample_every))
  fi
  ((t >= run_s)) && break
  input_tick "$t" 1
  input_tick "$t" 2
  targets_tick "$t"
  disk_tick "$t"
  action_tick "$t"
  if ((t >= poll_next)); then
    call GET status
    poll_next=$((t + 5))
  fi
  sleep 1
done

# --- the end ----------------------------------------------------------------------------------
stop_started=${EPOCHREALTIME//[!0-9]/}
show_exit=-1
stop_ms=-1
if kill -0 "$show_pid" 2>/dev/null; then
  kill -INT "$show_pid"
  for _ in $(seq 300); do
    kill -0 "$show_pid" 2>/dev/null || break
    sleep 0.1
  done
  if kill -0 "$show_pid" 2>/dev/null; then
    event stop "the show did not end 30 s after SIGINT: killed"
    kill -KILL "$show_pid"
  fi
  stop_ms=$(((${EPOCHREALTIME//[!0-9]/} - stop_started) / 1000))
fi
show_exit=0
wait "$show_pid" || show_exit=$?
show_pid=
stop_pid "${pub_pid[1]}"
stop_pid "${pub_pid[2]}"
for role in in1 in2 out; do stop_pid "${nginx_pid[$role]}"; done
nginx_pid=()
pub_pid=('' '' '')
if ((mounted)); then
  rm -f "$rec/ballast"
  move_old_recordings ""
  umount "$rec" || umount -l "$rec" || true
  mounted=0
elif [[ $rec != "$run/recordings" ]]; then
  for f in "$rec"/*; do
    if [[ -f $f && $f != "$rec/ballast" ]]; then mv -n "$f" "$run/recordings/"; fi
  done
fi
rm -f "$headers"
echo "soak: the show stopped in $stop_ms ms with exit code $show_exit"

verdict=0
python3 "$root/scripts/lib/soak-summary.py" "$run" "$run_s" "$warmup" "$calm" "$show_exit" \
  "$stop_ms" "$fill_disk" | tee "$run/summary.txt" || verdict=1
if command -v gnuplot >/dev/null; then
  gnuplot -e "dir='$run'" "$root/scripts/lib/soak-plot.gp" 2>"$run/gnuplot.err" &&
    echo "plot: $run/soak.png" || echo "soak: gnuplot failed: $(head -n 3 "$run/gnuplot.err")" >&2
else
  echo "soak: no gnuplot (apt-get install gnuplot-nox): no plot" >&2
fi
if [[ ${SOAK_KEEP_RECORDINGS:-1} == 0 ]]; then
  rm -f "$run/recordings"/*
fi
echo "files in $run"
exit "$verdict"

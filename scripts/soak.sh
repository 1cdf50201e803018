#!/usr/bin/env bash
# Soak run (by hand, never in CI): a show with a network channel, a recording and two RTMP
# targets while the RTMP server is killed and restarted again and again.
#
#   scripts/soak.sh [CYCLES] [UP_SECONDS] [DOWN_SECONDS]     (default 20 25 5: ten minutes)
#   scripts/soak.sh long HOURS                                (scripts/lib/soak-long.sh)
#
# Prints, for every restart, how long the targets and the channel took to come back and how long
# the targets' backoff had them wait (their reconnect attempts come 0.4 s after the drop, then
# 1 s, 2 s, 4 s ... apart), and at the end whether the recording has every frame of the run.
# Needs nginx with the rtmp module and ffmpeg; exits non-zero when a target came back later than
# its backoff + 1 s (+ 1 s: the progress line comes once a second) or the recording lost frames.
#
# `long HOURS` is a show of HOURS hours (fractions allowed) with a schedule, two network inputs
# that drop, one with a backup, two targets whose server restarts, a recording whose disk fills
# up, and the remote control in use; its memory, threads and open files are sampled all along
# into a CSV and a plot (gnuplot). See scripts/lib/soak-long.sh.
set -euo pipefail

if [[ ${1:-} == long ]]; then
  root=$(cd "$(dirname "$0")/.." && pwd)
  # shellcheck source=lib/soak-long.sh
  source "$root/scripts/lib/soak-long.sh" "${2:-}"
  exit 0
fi

cycles=${1:-20}
up=${2:-25}
down=${3:-5}
root=$(cd "$(dirname "$0")/.." && pwd)
build=${SELVANE_BUILD_DIR:-build}
binary="$root/$build/selvane"
[[ -x $binary ]] || { echo "soak: build first (scripts/build.sh)" >&2; exit 2; }

work=$(mktemp -d /tmp/selvane-soak.XXXXXX)
port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])')
cat >"$work/nginx.conf" <<EOF
load_module /usr/lib/nginx/modules/ngx_rtmp_module.so;
daemon off; master_process off; worker_processes 1;
pid $work/nginx.pid; error_log $work/nginx.log warn;
events { worker_connections 256; }
rtmp { server { listen 127.0.0.1:$port; chunk_size 4096;
  application live { live on; record off; } } }
EOF

nginx_pid=
publisher_pid=
selvane_pid=
cleanup() {
  for pid in $selvane_pid $publisher_pid $nginx_pid; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
}
trap cleanup EXIT

start_server() {
  nginx -c "$work/nginx.conf" -p "$work" >/dev/null 2>&1 &
  nginx_pid=$!
  for _ in $(seq 50); do
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && break
    sleep 0.1
  done
  ffmpeg -v quiet -nostdin -re -f lavfi -i testsrc2=size=640x360:rate=30 -f lavfi \
    -i sine=frequency=440 -c:v libx264 -preset ultrafast -g 30 -c:a aac -f flv \
    "rtmp://127.0.0.1:$port/live/in" >/dev/null 2>&1 &
  publisher_pid=$!
}

stamp() { while IFS= read -r line; do printf '%s %s\n' "$(date +%s.%N)" "$line"; done; }

start_server
sleep 1
duration=$((cycles * (up + down) + 10))
t0=$(date +%s.%N)
"$binary" --headless --channel "1=rtmp://127.0.0.1:$port/live/in" --size 640x360 \
  --record "$work/soak.mp4" --stream "rtmp://127.0.0.1:$port/live/a" \
  --stream "rtmp://127.0.0.1:$port/live/b" --duration "$duration" \
  > >(stamp >"$work/out.txt") 2> >(stamp >"$work/err.txt") &
selvane_pid=$!

: >"$work/restarts.txt"
: >"$work/kills.txt"
for i in $(seq "$cycles"); do
  sleep "$up"
  date +%s.%N >>"$work/kills.txt"
  kill -9 "$nginx_pid" "$publisher_pid" 2>/dev/null || true
  wait "$nginx_pid" "$publisher_pid" 2>/dev/null || true
  sleep "$down"
  start_server
  date +%s.%N >>"$work/restarts.txt"
  echo "soak: restart $i of $cycles"
done
wait "$selvane_pid" || echo "soak: selvane exited with $?"
selvane_pid=
sleep 1

python3 - "$work" <<'EOF'
import re, subprocess, sys
work = sys.argv[1]
restarts = [float(x) for x in open(f"{work}/restarts.txt")]
kills = [float(x) for x in open(f"{work}/kills.txt")]
lines = []
for raw in open(f"{work}/out.txt"):
    stamp, _, text = raw.partition(" ")
    lines.append((float(stamp), text.rstrip("\n")))
errs = []
for raw in open(f"{work}/err.txt"):
    stamp, _, text = raw.partition(" ")
    errs.append((float(stamp), text))

def first_after(t, pattern):
    for stamp, text in lines:
        if stamp >= t and re.search(pattern, text):
            return stamp
    return None

def backoff_wait(killed, up):
    # the targets' attempts after a drop: 0.4 s, then 1, 2, 4 ... s apart (at most 90 s)
    attempt, step = killed + 0.4, 1.0
    while attempt < up:
        attempt, step = attempt + step, min(step * 2, 90.0)
    return attempt - up

late = 0
targets, channel = [], []
for i, (killed, t) in enumerate(zip(kills, restarts), 1):
    on = first_after(t, r"targets online,online")
    live = first_after(t, r"channels 1:live")
    wait = backoff_wait(killed, t)
    bound = wait + 1.0 + 1.0  # + 1 s, + the progress line's own second
    back = None if on is None else on - t
    targets.append(back if back is not None else float("inf"))
    if live is not None:
        channel.append(live - t)
    ok = back is not None and back <= bound
    late += 0 if ok else 1
    print(f"restart {i:2d}: targets online after {back if back is not None else -1:5.1f} s "
          f"(backoff wait {wait:4.1f} s), channel live after "
          f"{(live - t) if live else -1:5.1f} s {'ok' if ok else 'LATE'}")
done = next((t for _, t in reversed(lines) if t.startswith("done:")), "")
m = re.search(r"written (\d+) .*encoder-drops (\d+)", done)
written, drops = (int(m.group(1)), int(m.group(2))) if m else (-1, -1)
probe = subprocess.run(["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0",
                        "-show_entries", "stream=nb_read_frames", "-of", "csv=p=0",
                        f"{work}/soak.mp4"], capture_output=True, text=True)
recorded = int(probe.stdout.strip() or -1)
elapsed = re.search(r"elapsed (\d+):(\d+):([\d.]+)", done)
seconds = int(elapsed.group(1)) * 3600 + int(elapsed.group(2)) * 60 + float(elapsed.group(3)) if elapsed else 0
expected = round(seconds * 30)
lost = expected - recorded
print(f"\n{len(restarts)} restarts; targets back after median "
      f"{sorted(targets)[len(targets)//2]:.1f} s, at most {max(targets):.1f} s; channel back after "
      f"at most {max(channel) if channel else -1:.1f} s")
print(f"recording: {recorded} frames of {expected} ticks in {seconds:.1f} s "
      f"(written {written}, encoder drops {drops}); lost {max(0, lost)}")
print(f"files in {work}")
sys.exit(1 if late or recorded != written or lost > 2 or drops != 0 else 0)
EOF

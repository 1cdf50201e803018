#!/usr/bin/env bash
# The adaptive bitrate against a link that narrows and widens again (by hand, never in CI).
#
#   scripts/adaptive-trace.sh [SECONDS] [CONGESTED_FROM] [CONGESTED_UNTIL] [LINK_KBPS]
#                                               (default 100 10 40 600)
#
# A headless show streams an adaptive profile (640x360, 30 fps, 2000 kbit/s, floor 20 %) as
# MPEG-TS over TCP to a reader on loopback that takes at most LINK_KBPS kbit/s (its receive
# buffer kept small) from CONGESTED_FROM to CONGESTED_UNTIL seconds after it connects, and all
# that comes otherwise. Twice a second the encoder's bitrate is read from the remote control's
# status; the reader logs what it received each second. Writes trace.csv and trace.png (gnuplot)
# into a fresh folder under /tmp and prints how long the bitrate took to reach one the link
# carries and to return to the set bitrate.
set -euo pipefail

seconds=${1:-100}
from=${2:-10}
until=${3:-40}
link=${4:-600}
root=$(cd "$(dirname "$0")/.." && pwd)
binary="$root/${SELVANE_BUILD_DIR:-build}/selvane"
[[ -x $binary ]] || { echo "adaptive-trace: build first (scripts/build.sh)" >&2; exit 2; }
work=$(mktemp -d /tmp/selvane-adaptive.XXXXXX)
free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }
port=$(free_port)
control=$(free_port)
token=$(head -c 16 /dev/urandom | od -An -tx1 | tr -d ' \n')
headers="$work/headers"
(umask 077; printf 'Authorization: Bearer %s\n' "$token" >"$headers")

show_pid=
reader_pid=
cleanup() { for pid in $show_pid $reader_pid; do kill "$pid" 2>/dev/null || true; done; }
trap cleanup EXIT

python3 - "$port" "$from" "$until" "$link" "$work/reader.csv" "$work/received.ts" <<'PY' &
import socket, sys, time
port, start, end, kbps = int(sys.argv[1]), float(sys.argv[2]), float(sys.argv[3]), int(sys.argv[4])
log, out = open(sys.argv[5], "w"), open(sys.argv[6], "wb")
server = socket.socket()
server.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 8192)
server.bind(("127.0.0.1", port)); server.listen(1)
conn, _ = server.accept()
conn.settimeout(0.1)
t0 = time.monotonic(); second = 0; got = 0; tokens = 0.0; last = t0
log.write("t,received_kbps\n")
while True:
    now = time.monotonic(); t = now - t0
    throttled = start <= t < end
    # A bucket of at most 100 ms at the link's rate; empty whenever the link is wide open.
    tokens = min(tokens + (now - last) * kbps * 125, kbps * 125 / 10) if throttled else 0.0
    last = now
    if throttled and tokens < 1024:
        time.sleep(0.01); continue
    try:
        data = conn.recv(int(tokens) if throttled else 65536)
        if not data:
            break
    except socket.timeout:
        data = b""
    except OSError:
        break
    tokens -= len(data); got += len(data); out.write(data)
    while t >= second + 1:
        log.write(f"{second + 1},{got * 8 / 1000:.0f}\n"); log.flush(); got = 0; second += 1
PY
reader_pid=$!

SELVANE_CONTROL_TOKEN=$token "$binary" --headless --control-port "$control" \
  --channel "1=lavfi://testsrc2=size=640x360:rate=30[out0];sine=frequency=1000[out1]" \
  --size 640x360 --fps 30 --encoder software --preset performance --bitrate 1000 \
  --record "$work/fixed.mp4" --profile net=640x360@30:2000:performance --adaptive net:20 \
  --stream "net=tcp://127.0.0.1:$port#mpegts" --duration "$seconds" >"$work/show.log" 2>&1 &
show_pid=$!

# Twice a second, the encoder's bitrate from the remote control (the token read from the
# private header file, never on a command line).
python3 - "$control" "$headers" "$work/encoder.csv" "$show_pid" <<'PY'
import json, os, sys, time, urllib.request
port, headers, out, pid = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4])
auth = open(headers).read().split(":", 1)[1].strip()
log = open(out, "w")
log.write("t,current_kbps,set_kbps,steps\n")
t0 = time.monotonic()
while True:
    try:
        os.kill(pid, 0)
    except OSError:
        break
    try:
        request = urllib.request.Request(f"http://127.0.0.1:{port}/api/v1/status",
                                         headers={"Authorization": auth})
        status = json.load(urllib.request.urlopen(request, timeout=2))
        for e in status.get("outputs", {}).get("encodes", []):
            if e["profile"] == "net" and e["setKbps"] > 0:
                log.write(f"{time.monotonic() - t0:.1f},{e['currentKbps']},{e['setKbps']},"
                          f"{e['bitrateSteps']}\n")
                log.flush()
    except OSError:
        pass
    time.sleep(0.5)
PY
wait "$show_pid" || true
show_pid=
kill "$reader_pid" 2>/dev/null || true
reader_pid=

python3 - "$work" "$from" "$until" "$link" <<'PY'
import csv, sys
work, start, end, link = sys.argv[1], float(sys.argv[2]), float(sys.argv[3]), float(sys.argv[4])
enc = [(float(r["t"]), int(r["current_kbps"]), int(r["set_kbps"])) for r in csv.DictReader(open(f"{work}/encoder.csv"))]
if not enc:
    sys.exit("adaptive-trace: no status read")
# The reader's clock starts when the show connects; the encoder's a little before: line them up
# on the first status with a running stream (close enough at half-second samples).
offset = enc[0][0]
carried = next((t for t, k, s in enc if t - offset >= start and k + 128 <= link), None)
back = next((t for t, k, s in enc if t - offset >= end and k >= s), None)
print(f"set {enc[0][2]} kbit/s, link {link:.0f} kbit/s from {start:.0f} s to {end:.0f} s")
print("reached a bitrate the link carries (with the sound): " +
      (f"{carried - offset - start:.1f} s after congestion began" if carried else "never"))
print("back at the set bitrate: " +
      (f"{back - offset - end:.1f} s after congestion ended" if back else "never"))
print(f"lowest: {min(k for _, k, _ in enc)} kbit/s")
PY

if command -v gnuplot >/dev/null; then
  gnuplot <<EOF2
set terminal pngcairo size 1000,500
set output "$work/trace.png"
set datafile separator ","
set xlabel "seconds"
set ylabel "kbit/s"
set key top right
set object 1 rect from $from, graph 0 to $until, graph 1 fc rgb "#ffeeee" fs solid behind
plot "$work/encoder.csv" using 1:2 skip 1 with steps lw 2 title "encoder bitrate", \
     "$work/reader.csv" using 1:2 skip 1 with lines title "received by the reader", \
     $link title "link while congested" dt 2
EOF2
fi
echo "adaptive-trace: $work (encoder.csv, reader.csv, trace.png, show.log)"

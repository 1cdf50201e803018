#!/usr/bin/env python3
"""The end of `scripts/soak.sh long`: reads the run folder's soak.csv, events.csv, api.csv and
show.log, checks every recording with ffprobe (and decodes its first and last 5 s), fills the
recording columns of soak.csv in, and prints the summary. Exits 1 when a verdict fails.

    soak-summary.py RUN RUN_S WARMUP CALM SHOW_EXIT STOP_MS FILLED
"""
import csv
import json
import re
import statistics
import subprocess
import sys
from pathlib import Path

run = Path(sys.argv[1])
run_s, warmup, calm = int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
show_exit, stop_ms, filled = int(sys.argv[5]), int(sys.argv[6]), sys.argv[7] == "1"
max_rss_mb = 30.0
thread_margin, fd_margin = 2, 4
failures = []


def number(text):
    try:
        return float(text)
    except (TypeError, ValueError):
        return None


# --- the recordings ---------------------------------------------------------------------------
def take_number(path):
    m = re.search(r"_(\d+)$", path.stem)
    return int(m.group(1)) if m else 0


def last_box(path):
    """How the file's top-level MP4 boxes end: None when the last is whole, else what is cut."""
    size = path.stat().st_size
    whole, offset = 0, 0
    with open(path, "rb") as f:
        while offset + 8 <= size:
            f.seek(offset)
            head = f.read(16)
            length, kind = int.from_bytes(head[:4], "big"), head[4:8].decode("latin-1")
            if length == 1:
                length = int.from_bytes(head[8:16], "big")
            elif length == 0:
                length = size - offset
            if length < 8:
                return "a box of size %d at byte %d" % (length, offset), offset
            if offset + length > size:
                return ("its last box, a %s, is cut off: %d of its %d bytes are there; %.1f MB of "
                        "whole boxes before it" % (kind, size - offset, length, whole / 1048576)), whole
            offset += length
            whole = offset
    return (None, size) if offset == size else ("%d stray bytes at its end" % (size - offset), offset)


def whole_boxes_open(path, whole):
    """Whether a copy of the file cut back to its whole boxes opens, and how long it lasts."""
    copy = run / ("whole-boxes-" + path.name)
    try:
        with open(path, "rb") as f, open(copy, "wb") as g:
            g.write(f.read(whole))
        out = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of",
                              "csv=p=0", str(copy)], capture_output=True, text=True)
        return number(out.stdout.strip()) if out.returncode == 0 else None
    finally:
        copy.unlink(missing_ok=True)


def probe(path):
    out = subprocess.run(
        ["ffprobe", "-v", "error", "-count_packets", "-show_entries",
         "stream=codec_type,codec_name,start_time,duration,nb_read_packets,sample_rate"
         ":format=duration", "-of", "json", str(path)], capture_output=True, text=True)
    said = " | ".join(out.stderr.strip().splitlines())
    info = {"file": path.name, "bytes": path.stat().st_size,
            "error": said if out.returncode else "", "notes": "" if out.returncode else said}
    try:
        data = json.loads(out.stdout or "{}")
    except json.JSONDecodeError:
        data = {}
    for s in data.get("streams", []):
        kind = s.get("codec_type")
        if kind in ("audio", "video") and kind not in info:
            info[kind] = s
    info["duration"] = number(data.get("format", {}).get("duration"))
    decode_errors = []
    for where, before, after in (("start", [], ["-t", "5"]), ("end", ["-sseof", "-5"], [])):
        d = subprocess.run(["ffmpeg", "-nostdin", "-v", "error"] + before + ["-i", str(path)] + after
                           + ["-f", "null", "-"], capture_output=True, text=True)
        if d.returncode != 0 or d.stderr.strip():
            said = d.stderr.strip().splitlines() or ["exit %d" % d.returncode]
            decode_errors.append("decoding its %s: %s" % (where, said[-1]))
    info["decode_errors"] = decode_errors
    info["cut"], whole = last_box(path) if path.suffix.lower() in (".mp4", ".mov") else (None, 0)
    if info["cut"] and info["error"]:
        seconds = whole_boxes_open(path, whole)
        info["cut"] += ("; a copy cut back to them opens: %.1f s" % seconds if seconds is not None
                        else "; a copy cut back to them does not open either")
    a, v = info.get("audio"), info.get("video")
    if a and v:
        a0, v0 = number(a.get("start_time")), number(v.get("start_time"))
        ad, vd = number(a.get("duration")), number(v.get("duration"))
        if None not in (a0, v0):
            info["av_start_ms"] = (a0 - v0) * 1000
        if None not in (a0, v0, ad, vd):
            info["av_end_ms"] = (a0 + ad - v0 - vd) * 1000
        packets_a, packets_v = number(a.get("nb_read_packets")), number(v.get("nb_read_packets"))
        rate = number(a.get("sample_rate"))
        if a.get("codec_name") == "aac" and rate and packets_a is not None and packets_v is not None:
            # AAC packets hold 1024 samples: the sound's length by its samples, the picture's by its frames
            info["av_content_ms"] = (packets_a * 1024 / rate - packets_v / 30) * 1000
        info["video_packets"] = packets_v
    return info


files = sorted((p for p in (run / "recordings").iterdir() if p.is_file()),
               key=lambda p: (p.stem.rsplit("_", 1)[0] if take_number(p) else p.stem, take_number(p)))
recordings = [probe(p) for p in files]
by_name = {r["file"]: r for r in recordings}

# --- the samples ------------------------------------------------------------------------------
with open(run / "soak.csv") as f:
    rows = list(csv.DictReader(f))
for row in rows:
    r = by_name.get(row["rec_file"]) if row["recording_failed"] != "1" else None
    if r:
        for key, column in (("av_start_ms", "rec_av_start_ms"), ("av_end_ms", "rec_av_end_ms")):
            if key in r:
                row[column] = "%.1f" % r[key]
with open(run / "soak.csv", "w", newline="") as f:
    w = csv.DictWriter(f, fieldnames=list(rows[0].keys()) if rows else [], lineterminator="\n")
    w.writeheader()
    w.writerows(rows)
with open(run / "recordings.csv", "w", newline="") as f:
    w = csv.writer(f, lineterminator="\n")
    w.writerow(["file", "bytes", "duration_s", "video_packets", "av_start_ms", "av_end_ms",
                "av_content_ms", "plays"])
    for r in recordings:
        one = lambda v: "" if v is None else "%.1f" % v
        w.writerow([r["file"], r["bytes"], one(r["duration"]), one(r.get("video_packets")),
                    one(r.get("av_start_ms")), one(r.get("av_end_ms")), one(r.get("av_content_ms")),
                    "no" if r["error"] else "with errors" if r["notes"] or r["decode_errors"] else "yes"])

columns = [c for c in (rows[0].keys() if rows else []) if c != "rec_file"]
steps = [number(b["elapsed_s"]) - number(a["elapsed_s"]) for a, b in zip(rows, rows[1:])]
print("\n== samples: %d, every %.0f s (soak.csv) ==" % (len(rows), statistics.median(steps) if steps else 0))
print("%-17s %12s %12s %12s %12s" % ("column", "first", "last", "min", "max"))
for c in columns:
    values = [number(row[c]) for row in rows]
    values = [v for v in values if v is not None]
    if not values:
        print("%-17s %12s" % (c, "(none)"))
        continue
    fmt = lambda v: ("%12d" % v) if v == int(v) else ("%12.1f" % v)
    print("%-17s %s %s %s %s" % (c, fmt(values[0]), fmt(values[-1]), fmt(min(values)), fmt(max(values))))


def series(column, keep=lambda row: True):
    out = []
    for row in rows:
        t, v = number(row["elapsed_s"]), number(row[column])
        if t is not None and v is not None and keep(row):
            out.append((t, v))
    return out


print("\n== resources ==")
rss = series("rss_kb")
after = [(t, v) for t, v in rss if t >= warmup]
if len(after) >= 3:
    n = len(after)
    mt = sum(t for t, _ in after) / n
    mv = sum(v for _, v in after) / n
    sxx = sum((t - mt) ** 2 for t, _ in after)
    slope = sum((t - mt) * (v - mv) for t, v in after) / sxx if sxx else 0.0  # kB a second
    # RSS moves by some MB with what is on air: the first and the last stretch of the run (a sixth
    # of it, at most 10 minutes, at least 3 samples) are each taken by their median
    step = rss[1][0] - rss[0][0] if len(rss) > 1 else 60
    span = max(3 * step, min(600, run_s / 6))
    first = [v for t, v in after if t < after[0][0] + span - 1]
    final = [v for t, v in rss if t > rss[-1][0] - span + 1]
    start_mb = statistics.median(first) / 1024
    end_mb = statistics.median(final) / 1024
    grown = end_mb - start_mb
    ok = grown < max_rss_mb
    print("RSS: %.1f MB from %d s (median of %d samples after the %d s warm-up), %.1f MB at the end "
          "(median of the last %d): %+.1f MB, limit %.0f: %s" %
          (start_mb, after[0][0], len(first), warmup, end_mb, len(final), grown, max_rss_mb,
           "flat" if ok else "GROWING"))
    print("RSS slope after the warm-up, least squares over %d samples: %+.2f MB/h "
          "(%+.1f MB over the %.2f h after the warm-up)" %
          (n, slope * 3600 / 1024, slope * (after[-1][0] - after[0][0]) / 1024,
           (after[-1][0] - after[0][0]) / 3600))
    print("RSS peak %.1f MB, lowest %.1f MB" % (max(v for _, v in rss) / 1024, min(v for _, v in rss) / 1024))
    if not ok:
        failures.append("RSS grew by %.1f MB" % grown)
else:
    print("RSS: too few samples after the warm-up")
    failures.append("too few samples")

end_from = run_s - calm + 15  # the calm end, once the last fault's effects have settled
for column, margin, name in (("threads", thread_margin, "threads"), ("open_fds", fd_margin, "open files")):
    calm_rows = lambda row: row["faults"] == "0" and number(row["elapsed_s"]) >= warmup and number(row["elapsed_s"]) < end_from
    base = series(column, calm_rows) or series(column, lambda row: row["faults"] == "0" and number(row["elapsed_s"]) > 0 and number(row["elapsed_s"]) < end_from)
    end = series(column, lambda row: number(row["elapsed_s"]) >= end_from)
    if not base or not end:
        print("%s: not enough fault-free samples to compare" % name)
        continue
    b = statistics.median(v for _, v in base)
    e = statistics.median(v for _, v in end)
    ok = abs(e - b) <= margin
    every = series(column)
    print("%s: %g while nothing was failing (median of %d samples), %g at the calm end (median of %d); "
          "%d..%d over the run: %s" % (name, b, len(base), e, len(end), min(v for _, v in every),
                                       max(v for _, v in every),
                                       "back (within %d)" % margin if ok else "NOT BACK (margin %d)" % margin))
    if not ok:
        failures.append("%s %g -> %g" % (name, b, e))

# --- what happened ----------------------------------------------------------------------------
with open(run / "events.csv") as f:
    events = list(csv.DictReader(f))


def count(kind, text=""):
    return sum(1 for e in events if e["kind"] == kind and text in e["detail"])


print("\n== faults (events.csv) ==")
print("inputs: %d publisher kills, %d nginx stops; targets' nginx killed %d times; "
      "%d processes ended by themselves" %
      (count("input-down", "killed"), count("input-down", "stopped"), count("targets-down"), count("died")))
last = rows[-1] if rows else {}
print("program: %s skipped ticks (%.1f an hour), %s encoder drops; failovers %s, returns %s "
      "(a cut during a failover ends it without a return)" %
      (last.get("skipped_ticks"), (number(last.get("skipped_ticks")) or 0) * 3600 / max(1, run_s),
       last.get("encoder_drops"), last.get("failovers"), last.get("returns")))
gap_bound = 0.0
if filled:
    fill_t = None
    for e in events:
        t = float(e["elapsed_s"])
        if e["kind"] == "disk-full":
            fill_t = t
        elif e["kind"] == "recording-failed":
            print("disk full at %5d s: %s" % (fill_t, e["detail"]))
        elif e["kind"] == "recording-resumed" and fill_t is not None:
            print("            %5d s: disk emptied, recording resumed %s" % (t, e["detail"]))
            gap_bound += t - fill_t + 3  # + a fragment begun before the disk filled, + 1 s of polling
            fill_t = None
    bad = count("recording-not-failed") + count("recording-not-resumed")
    print("disk fills: %d; the recording failed and came back each time: %s" %
          (count("disk-full"), "yes" if bad == 0 and count("recording-resumed") == count("disk-full") else "NO"))
    if bad or count("recording-resumed") != count("disk-full"):
        failures.append("a disk fill did not go as expected")
else:
    print("disk fills: none (no tmpfs to fill)")

with open(run / "api.csv") as f:
    calls = list(csv.DictReader(f))
errors = [c for c in calls if not c["code"].startswith("2")]
times = sorted(float(c["seconds"]) for c in calls if c["code"].startswith("2"))
print("remote control: %d requests (%d of them changes), %d without a 2xx answer; answer time "
      "median %.1f ms, slowest %.1f ms" %
      (len(calls), sum(1 for c in calls if c["method"] != "GET"), len(errors),
       (statistics.median(times) if times else 0) * 1000, (times[-1] if times else 0) * 1000))
if errors:
    failures.append("%d requests failed" % len(errors))

# --- the recordings ---------------------------------------------------------------------------
print("\n== recordings (recordings.csv) ==")
done = next((l for l in open(run / "show.log") if l.startswith("done:")), "")
m = re.search(r"elapsed (\d+):(\d+):([\d.]+)", done)
elapsed = int(m.group(1)) * 3600 + int(m.group(2)) * 60 + float(m.group(3)) if m else float(run_s)
total = 0.0
broken = 0
takes = [r for r in recordings if r["bytes"] > 0]
for n, r in enumerate(takes):
    # Every take but the last was closed by a failed write (the full disk): its last fragment may
    # be cut short, and decoding its end may say so. It must still open and play from its start.
    cut_by_disk = n < len(takes) - 1
    opens = not r["error"] and r["duration"]
    end_errors = [e for e in r["decode_errors"] if e.startswith("decoding its end")]
    start_errors = [e for e in r["decode_errors"] if not e.startswith("decoding its end")]
    plays = opens and not start_errors and (cut_by_disk or not (end_errors or r["notes"]))
    broken += 0 if plays else 1
    total += r["duration"] or 0
    frames = r.get("video_packets")
    av = ", ".join("%s %+.0f ms" % (k, r[key]) for k, key in
                   (("a/v start", "av_start_ms"), ("end", "av_end_ms"), ("samples-frames", "av_content_ms"))
                   if key in r)
    print("%-16s %7.1f s %6.1f MB %6s frames (%+d against 30 fps)  %s" %
          (r["file"], r["duration"] or 0, r["bytes"] / 1048576, "%d" % frames if frames else "?",
           (frames or 0) - round((r["duration"] or 0) * 30), av))
    if plays:
        print("%16s plays%s" % ("", " (closed by the full disk; decoding its end: %s)" % end_errors[0].split(": ", 1)[1]
                                if end_errors else " (closed by the full disk)" if cut_by_disk else ""))
    else:
        label = "DOES NOT PLAY" if not opens or start_errors else "ENDS WITH ERRORS"
        for e in filter(None, [r["error"], r["notes"]] + r["decode_errors"]):
            print("%16s %s: %s" % ("", label, e))
    if r["cut"]:
        print("%16s %s" % ("", r["cut"]))
for r in recordings:
    if r["bytes"] == 0:
        print("%-16s empty" % r["file"])
missing = elapsed - total
print("%d files, %.1f s recorded of a %.1f s show (the done: line); %.1f s missing, at most %.1f s "
      "allowed by the disk fills" % (len(recordings), total, elapsed, missing, gap_bound + 2))
if broken:
    failures.append("%d recordings do not play" % broken)
if not recordings or missing > gap_bound + 2 or missing < -1:
    failures.append("the recordings hold %.1f s of %.1f s" % (total, elapsed))
ends = [r["av_end_ms"] for r in recordings if "av_end_ms" in r]
if ends:
    print("audio end less video end per file: %+.0f .. %+.0f ms" % (min(ends), max(ends)))

print("\n== stop ==")
print("SIGINT: the show ended in %d ms with exit code %d (3: the recording failed at some point, "
      "as the disk fills make it)" % (stop_ms, show_exit))
if stop_ms < 0 or stop_ms > 30000 or show_exit not in ((0, 3) if filled else (0,)):
    failures.append("the show did not stop cleanly")

print("\nverdict: " + ("all held" if not failures else "FAILED: " + "; ".join(failures)))
sys.exit(1 if failures else 0)

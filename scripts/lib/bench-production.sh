# shellcheck shell=bash
# Sourced by scripts/bench.sh: the cost of transitions on a running show.

# --- transitions ------------------------------------------------------------------------------
# Two 1080p30 files with sound taken in turn every 3 s by a schedule, once with cuts and once
# with 1000 ms mixes and wipes between them (every third second of the show is a transition),
# recorded: the program must keep every tick (skipped 0) and the CPU the transitions add is
# printed beside the cuts' in the same run.
write_switch_schedule() { # FILE KIND: clips of 3 s taking channels 1 and 2 in turn
  python3 - "$1" "$2" "$seconds" <<'PY'
import json, sys
path, kind, seconds = sys.argv[1], sys.argv[2], int(sys.argv[3])
clips = []
for i, start in enumerate(range(0, seconds * 1000, 3000)):
    clip = {"id": "c%d" % i, "startMs": start, "endMs": start + 3000, "kind": "channel",
            "channel": i % 2}
    if kind != "cut" and i > 0:
        clip["transition"] = {"type": "mix" if i % 2 else "wipe", "durationMs": 1000}
    clips.append(clip)
json.dump({"format": "selvane_program_arrangement", "version": 3, "sceneClips": clips,
           "overlayClips": []}, open(path, "w"))
PY
}
bench_transitions() {
  echo "making media: two $((seconds + 5)) s 1080p30 H.264 + AAC files"
  make_clip "$work/a.mp4" $((seconds + 5)) "$signal1080" -c:v libx264 -preset veryfast -g 60 \
    -pix_fmt yuv420p
  make_clip "$work/b.mp4" $((seconds + 5)) "smptehdbars=size=1920x1080:rate=30" -c:v libx264 \
    -preset veryfast -g 60 -pix_fmt yuv420p
  write_switch_schedule "$work/cuts.json" cut
  write_switch_schedule "$work/mixes.json" mix
  local i kind cuts=() mixes=()
  echo "a take every 3 s for $seconds s, recorded; $rounds alternating rounds"
  for i in $(seq 1 "$rounds"); do
    for kind in cuts mixes; do
      run_selvane "$kind" --channel "1=$work/a.mp4" --channel "2=$work/b.mp4" \
        --schedule "$work/$kind.json" --record "$work/$kind.mp4" --duration "$seconds" \
        --encoder software --preset balanced
      printf '  round %d  %-6s CPU %6.2f s  frames %d/%d  %s\n' "$i" "$kind" "$(cpu "$kind")" \
        "$(frames_in "$work/$kind.mp4")" "$expected" "$(counts "$kind")"
      if [ "$kind" = cuts ]; then cuts+=("$(cpu cuts)"); else mixes+=("$(cpu mixes)"); fi
      rm -f "$work/$kind.mp4"
    done
  done
  local c m
  c="$(median "${cuts[@]}")" m="$(median "${mixes[@]}")"
  printf 'medians: cuts %.2f s, transitions %.2f s CPU; ratio %s (a third of the frames blended)\n' \
    "$c" "$m" "$(ratio "$m" "$c")"
}

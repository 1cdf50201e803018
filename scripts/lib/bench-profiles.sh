# shellcheck shell=bash
# Sourced by scripts/bench.sh: what each encode profile costs.

# --- profiles ---------------------------------------------------------------------------------
# A ladder of encodes of one show: a 1080p30 H.264 + AAC file (20 s, looped) on air, encoded at
# 1080p30 6000 kbit/s to an MP4 file; then also at 720p30 2500 kbit/s to an HLS folder; then
# also at 360p30 800 kbit/s to another. Selvane runs one encoder per profile and scales the
# program for each on the encode side; the ffmpeg CLI does the same ladder in one process: the
# file decoded once, paced in real time and looped as the channel loops it, split, scaled
# (bilinear, as Selvane's balanced preset scales) and encoded by one libx264 and one AAC encoder
# per rung with Selvane's settings for the balanced preset (x264 veryfast, zerolatency, no
# B-frames, a keyframe every 2 s, maxrate the bitrate, a buffer of two seconds' worth; AAC
# 160 kbit/s stereo 48 kHz), into the same kinds of files with the same HLS options.
# Rounds run 1, 2, 3 rungs for each side in turn, so that a change of the machine's load over the
# run falls on every row alike. CPU is user + system seconds per second of show, in % of a core.

ladder_sizes=(1920x1080 1280x720 640x360)
ladder_kbps=(6000 2500 800)
ladder_names=(p1080 p720 p360)

ladder_x264() { # KBPS: the CLI's video encoder options for one rung
  x264_rung=(-c:v libx264 -preset veryfast -tune zerolatency -g 60 -bf 0 -b:v "${1}k"
    -maxrate "${1}k" -bufsize "$((2 * $1))k" -pix_fmt yuv420p -c:a aac -b:a 160k -ac 2 -ar 48000)
}

ladder_mp4_flags() { # the movflags Selvane's recording takes with this FFmpeg
  if ffmpeg -hide_banner -h muxer=mp4 2>/dev/null | grep -q hybrid_fragmented; then
    echo "+hybrid_fragmented+frag_keyframe+empty_moov+default_base_moof"
  else
    echo "+frag_keyframe+empty_moov+default_base_moof"
  fi
}

ladder_outputs() { # SIDE RUNGS: the files of each rung (rung 1 the MP4, then HLS playlists)
  local side="$1" n="$2" r
  ladder_files=("$work/$side/top.mp4")
  for r in $(seq 2 "$n"); do ladder_files+=("$work/$side/${ladder_names[$((r - 1))]}/index.m3u8"); done
}

ladder_prepare() { # SIDE RUNGS: empty folders for the side's outputs
  rm -rf "${work:?}/$1"
  mkdir -p "$work/$1"
  local r
  for r in $(seq 2 "$2"); do mkdir -p "$work/$1/${ladder_names[$((r - 1))]}"; done
}

ladder_shape() { # FILE: "WxH packets" of its first video stream (counted without decoding)
  local line
  line="$(ffprobe -v error -count_packets -select_streams v:0 \
    -show_entries stream=width,height,nb_read_packets -of csv=p=0 "$1" 2>/dev/null |
    grep -m 1 . || true)"
  [ -n "$line" ] || { echo "missing 0"; return 0; }
  echo "$line" | awk -F, '{printf "%sx%s %s", $1, $2, $3}'
}

ladder_check() { # SIDE RUNGS: each rung's size and video frames into ladder_words; wrong sizes
  # and short files marked and counted in ladder_bad
  local side="$1" n="$2" r shape size count
  ladder_words=""
  ladder_outputs "$side" "$n"
  for r in $(seq 1 "$n"); do
    shape="$(ladder_shape "${ladder_files[$((r - 1))]}")"
    size="${shape% *}" count="${shape#* }"
    [ -z "$ladder_words" ] || ladder_words+=", "
    ladder_words+="$size $count/$expected"
    if [ "$size" != "${ladder_sizes[$((r - 1))]}" ]; then
      ladder_words+=" (WRONG SIZE, wanted ${ladder_sizes[$((r - 1))]})"
      ladder_bad=$((ladder_bad + 1))
    elif [ "$count" -lt $((expected * 98 / 100)) ]; then
      ladder_words+=" (SHORT)"
      ladder_bad=$((ladder_bad + 1))
    fi
  done
}

ladder_x264_options() { # FILE: the options x264 wrote into the first picture, one a line
  ffmpeg -nostdin -v error -i "$1" -map 0:v:0 -c copy -frames:v 1 -f h264 - 2>/dev/null |
    strings | grep -m 1 'x264 - core' | sed 's/.*options: //' | tr ' ' '\n' | sort || true
}

ladder_compare_x264() { # RUNGS: whether each rung's encoder ran with the same options on both sides
  local n="$1" r ours theirs differ=""
  ladder_outputs ours "$n"
  local mine=("${ladder_files[@]}")
  ladder_outputs theirs "$n"
  for r in $(seq 1 "$n"); do
    ours="$(ladder_x264_options "${mine[$((r - 1))]}")"
    theirs="$(ladder_x264_options "${ladder_files[$((r - 1))]}")"
    if [ -z "$ours" ] || [ -z "$theirs" ]; then
      differ+=" ${ladder_sizes[$((r - 1))]}: options not found;"
    elif [ "$ours" != "$theirs" ]; then
      differ+=" ${ladder_sizes[$((r - 1))]}: selvane $(comm -23 <(echo "$ours") <(echo "$theirs") |
        paste -sd ' ') against $(comm -13 <(echo "$ours") <(echo "$theirs") | paste -sd ' ');"
    fi
  done
  if [ -z "$differ" ]; then
    echo "                     x264 options (from the streams): the same on both sides, every rung"
  else
    echo "                     x264 options differ:$differ"
  fi
}

selvane_ladder() { # RUNGS: Selvane's options for the ladder, into ladder_args
  local n="$1" r
  ladder_outputs ours "$n"
  ladder_args=(--channel "1=$work/ladder.mp4" --size "${ladder_sizes[0]}" --fps 30
    --bitrate "${ladder_kbps[0]}" --encoder software --preset balanced --hls-window 60
    --record "${ladder_files[0]}" --duration "$seconds")
  for r in $(seq 2 "$n"); do
    ladder_args+=(--profile "${ladder_names[$((r - 1))]}=${ladder_sizes[$((r - 1))]}@30:${ladder_kbps[$((r - 1))]}:balanced"
      --stream "${ladder_names[$((r - 1))]}=${ladder_files[$((r - 1))]}")
  done
}

ffmpeg_ladder() { # RUNGS: the CLI's options for the same ladder, into ladder_args
  local n="$1" r graph labels="" size dir
  ladder_outputs theirs "$n"
  ladder_args=(-stream_loop -1 -re -i "$work/ladder.mp4")
  if [ "$n" -gt 1 ]; then
    for r in $(seq 1 "$n"); do labels+="[s$r]"; done
    graph="[0:v]split=$n$labels"
    for r in $(seq 2 "$n"); do
      size="${ladder_sizes[$((r - 1))]}"
      graph+=";[s$r]scale=${size%x*}:${size#*x}:flags=bilinear[v$r]"
    done
    ladder_args+=(-filter_complex "$graph" -map '[s1]')
  else
    ladder_args+=(-map 0:v)
  fi
  ladder_x264 "${ladder_kbps[0]}"
  ladder_args+=(-map 0:a "${x264_rung[@]}" -t "$seconds" -movflags "$(ladder_mp4_flags)"
    "${ladder_files[0]}")
  for r in $(seq 2 "$n"); do
    ladder_x264 "${ladder_kbps[$((r - 1))]}"
    dir="$(dirname "${ladder_files[$((r - 1))]}")"
    ladder_args+=(-map "[v$r]" -map 0:a "${x264_rung[@]}" -t "$seconds" -f hls -hls_time 2
      -hls_list_size 60 -hls_delete_threshold 2
      -hls_flags delete_segments+temp_file+program_date_time+independent_segments
      -hls_segment_filename "$dir/index_%05d.ts" "${ladder_files[$((r - 1))]}")
  done
}

bench_profiles() {
  echo "making media: 20 s of 1080p30 H.264 + AAC (looped by both sides)"
  make_clip "$work/ladder.mp4" 20 "$signal1080" -c:v libx264 -preset veryfast -crf 23 -g 60 \
    -pix_fmt yuv420p
  echo "rungs: 1080p30 ${ladder_kbps[0]} kbit/s MP4; + 720p30 ${ladder_kbps[1]} kbit/s HLS;" \
    "+ 360p30 ${ladder_kbps[2]} kbit/s HLS (x264 veryfast, AAC 160k each)"
  local i n s_cpu=() f_cpu=() line
  ladder_bad=0
  local drops=0 skipped=0
  # s_cpu[n] / f_cpu[n]: the rounds' CPU seconds of n rungs, a space between them
  for i in $(seq 1 "$rounds"); do
    for n in 1 2 3; do
      ladder_prepare ours "$n"
      selvane_ladder "$n"
      run_selvane ours "${ladder_args[@]}"
      s_cpu[n]+="$(cpu ours) "
      drops=$((drops + $(done_field ours encoder-drops | tr -c -d '0-9\n' | grep . || echo 0)))
      skipped=$((skipped + $(done_field ours skipped | tr -c -d '0-9\n' | grep . || echo 0)))
      line="$(grep '^done:' "$work/ours.log" | tail -n 1 |
        sed -E 's/^done: //; s/ +out [0-9]+ kbps//; s/ +(targets|recording|channels) .*//')"
      printf 'round %d  %d rung(s)  selvane CPU %6.2f s (%3s %%)  %s\n' "$i" "$n" \
        "$(cpu ours)" "$(core_pct "$(cpu ours)" "$seconds")" "${line:-no done: line}"
      ladder_check ours "$n"
      printf '                     files: %s\n' "$ladder_words"

      ladder_prepare theirs "$n"
      ffmpeg_ladder "$n"
      run_ffmpeg theirs "${ladder_args[@]}"
      f_cpu[n]+="$(cpu theirs) "
      printf 'round %d  %d rung(s)  ffmpeg  CPU %6.2f s (%3s %%)  wall %s s\n' "$i" "$n" \
        "$(cpu theirs)" "$(core_pct "$(cpu theirs)" "$seconds")" "$(wall theirs)"
      ladder_check theirs "$n"
      printf '                     files: %s\n' "$ladder_words"
      [ "$i" -gt 1 ] || [ "$n" -lt 3 ] || ladder_compare_x264 "$n"
      rm -rf "${work:?}/ours" "${work:?}/theirs"
    done
  done
  echo
  echo "medians of $rounds round(s) of $seconds s, CPU (user + system) in % of one core:"
  printf '  %5s  %11s  %11s  %17s  %6s  %18s  %18s\n' rungs "selvane %" "ffmpeg %" \
    "selvane-ffmpeg %" ratio "selvane +/rung %" "ffmpeg +/rung %"
  local sm fm sp fp ps="" pf=""
  for n in 1 2 3; do
    # shellcheck disable=SC2086 # the rounds, one word each
    sm="$(median ${s_cpu[n]})" fm="$(median ${f_cpu[n]})"
    sp="$(awk -v c="$sm" -v w="$seconds" 'BEGIN {printf "%.1f", 100 * c / w}')"
    fp="$(awk -v c="$fm" -v w="$seconds" 'BEGIN {printf "%.1f", 100 * c / w}')"
    printf '  %5d  %11s  %11s  %17s  %6s  %18s  %18s\n' "$n" "$sp" "$fp" \
      "$(awk -v a="$sp" -v b="$fp" 'BEGIN {printf "%+.1f", a - b}')" "$(ratio "$sm" "$fm")" \
      "$([ -z "$ps" ] && echo - || awk -v a="$sp" -v b="$ps" 'BEGIN {printf "%+.1f", a - b}')" \
      "$([ -z "$pf" ] && echo - || awk -v a="$fp" -v b="$pf" 'BEGIN {printf "%+.1f", a - b}')"
    ps="$sp" pf="$fp"
  done
  echo "(+/rung: what the rung adds to the row above; the files of every round were probed:"
  if [ "$ladder_bad" -eq 0 ]; then
    echo " every rung had its size and at least 98 % of $expected frames)"
  else
    echo " $ladder_bad file(s) of a wrong size or short, marked in the rounds above)"
  fi
  echo "selvane over all rounds: encoder-drops $drops, skipped ticks $skipped"
}

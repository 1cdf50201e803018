# The shows of scripts/bench.sh (sourced by it; its helpers and variables are in scope). Each show
# is a real-time 1080p30 program with overlays, sent to an MP4 file and RTMP targets, made by
# Selvane and by the ffmpeg CLI with the same x264 live settings; beside them the CLI's bare
# transcode of the same source (decode and encode alone: no overlays, one MP4 file, the same
# encoder settings), which is what the show costs at the least.
#
#   show       H.264 + AAC file; two pictures with alpha and a scrolling ticker; MP4 + 2 RTMP
#   show-hevc  HEVC + AAC file; a looping picture-in-picture video and a logo; MP4 + 1 RTMP
#   show-vp9   VP9 + Opus WebM file; a lower-third picture and the ticker; MP4 + 2 RTMP

show_names=(show show-hevc show-vp9)

show_source() { # SHOW: the file the show plays
  case "$1" in
  show) echo "$work/show.mp4" ;;
  show-hevc) echo "$work/hevc.mp4" ;;
  show-vp9) echo "$work/vp9.webm" ;;
  esac
}

show_title() {
  case "$1" in
  show) echo "1080p30 H.264 file + 2 pictures + ticker -> MP4 + 2 RTMP" ;;
  show-hevc) echo "1080p30 HEVC file + picture-in-picture video + logo -> MP4 + 1 RTMP" ;;
  show-vp9) echo "1080p30 VP9/Opus file + lower third + ticker -> MP4 + 2 RTMP" ;;
  esac
}

make_media_for() { # SHOW: its source (SECONDS + 5 s) and overlays, once per run
  local length=$((seconds + 5))
  [ -s "$(show_source "$1")" ] && return 0
  printf '%s' "$ticker" >"$work/ticker.txt"
  case "$1" in
  show)
    echo "making media: $length s of 1080p30 H.264 + AAC, two PNG pictures"
    make_clip "$work/show.mp4" "$length" "$signal1080" -c:v libx264 -preset veryfast -crf 23 \
      -g 60 -pix_fmt yuv420p
    ffmpeg -nostdin -v error -y -f lavfi -i "color=c=orange@0.6:size=400x300,format=rgba" \
      -frames:v 1 "$work/a.png"
    ffmpeg -nostdin -v error -y -f lavfi \
      -i "testsrc2=size=320x180,format=rgba,colorchannelmixer=aa=0.5" -frames:v 1 "$work/b.png"
    ;;
  show-hevc)
    echo "making media: $length s of 1080p30 HEVC + AAC, a 10 s 640x360 clip, a logo"
    make_clip "$work/hevc.mp4" "$length" "$signal1080" -c:v libx265 -preset ultrafast -crf 26 \
      -g 60 -pix_fmt yuv420p -x265-params log-level=error
    ffmpeg -nostdin -v error -y -f lavfi -i "testsrc=size=640x360:rate=30" -t 10 -an \
      -c:v libx264 -preset veryfast -crf 23 -g 30 -pix_fmt yuv420p "$work/pip.mp4"
    ffmpeg -nostdin -v error -y -f lavfi \
      -i "color=c=white:size=200x200,format=rgba,geq=r='255*X/W':g='128':b='255*Y/H':a='if(lt(hypot(X-100\,Y-100)\,90)\,230\,0)'" \
      -frames:v 1 "$work/logo.png"
    ;;
  show-vp9)
    echo "making media: $length s of 1080p30 VP9 + Opus, a lower-third picture"
    ffmpeg -nostdin -v error -y -f lavfi -i "$signal1080" -f lavfi -i "$tone" -t "$length" \
      -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -row-mt 1 -b:v 6M -g 60 -pix_fmt yuv420p \
      -c:a libopus -b:a 128k "$work/vp9.webm"
    ffmpeg -nostdin -v error -y -f lavfi \
      -i "color=c=navy:size=640x80,format=rgba,geq=r='20':g='40':b='160':a='200*X/W'" \
      -frames:v 1 "$work/third.png"
    ;;
  esac
}

selvane_args() { # SHOW RECORDING LENGTH: the show as Selvane's options, into show_args
  next_key
  local rtmp="rtmp://127.0.0.1:$port/live/s${key}"
  case "$1" in
  show)
    show_args=(--channel "1=$work/show.mp4" --image "$work/a.png@20,20,200,150"
      --image "$work/b.png@440,20,160,90" --text "$ticker" --stream "${rtmp}a"
      --stream "${rtmp}b")
    ;;
  show-hevc)
    show_args=(--channel "1=$work/hevc.mp4" --video "$work/pip.mp4@460,250,160,90"
      --image "$work/logo.png@20,20,80,80" --stream "${rtmp}a")
    ;;
  show-vp9)
    show_args=(--channel "1=$work/vp9.webm" --image "$work/third.png@0,280,640,80"
      --text "$ticker" --stream "${rtmp}a" --stream "${rtmp}b")
    ;;
  esac
  show_args+=(--record "$2" --duration "$3" --encoder software --preset balanced)
}

# Selvane's rectangles are in the 640x360 scene; the CLI's are the same at 1920x1080 (x 3).
ffmpeg_args() { # SHOW RECORDING LENGTH: the same show as the CLI's options, into show_args
  next_key
  local rtmp="rtmp://127.0.0.1:$port/live/f${key}" inputs graph tee
  tee="[f=mp4:$fragmented]$2|[f=flv:onfail=ignore]${rtmp}a"
  case "$1" in
  show)
    inputs=(-re -i "$work/show.mp4" -i "$work/a.png" -i "$work/b.png")
    graph="[1:v]scale=600:450[a];[2:v]scale=480:270[b];[0:v][a]overlay=60:60[v1];[v1][b]overlay=1320:60[v2];$(ticker_filter v2 "$work/ticker.txt" v)"
    tee+="|[f=flv:onfail=ignore]${rtmp}b"
    ;;
  show-hevc)
    inputs=(-re -i "$work/hevc.mp4" -stream_loop -1 -re -i "$work/pip.mp4" -i "$work/logo.png")
    graph="[1:v]scale=480:270[p];[0:v][p]overlay=1380:750:shortest=1[v1];[2:v]scale=240:240[l];[v1][l]overlay=60:60[v]"
    ;;
  show-vp9)
    inputs=(-re -i "$work/vp9.webm" -i "$work/third.png")
    graph="[1:v]scale=1920:240[t];[0:v][t]overlay=0:840[v1];$(ticker_filter v1 "$work/ticker.txt" v)"
    tee+="|[f=flv:onfail=ignore]${rtmp}b"
    ;;
  esac
  show_args=("${inputs[@]}" -filter_complex "$graph" -map '[v]' -map 0:a "${x264_live[@]}"
    -flags +global_header -t "$3" -f tee "$tee")
}

bare_args() { # SHOW RECORDING LENGTH: the CLI decoding and encoding the show's source alone
  show_args=(-re -i "$(show_source "$1")" -map 0:v -map 0:a "${x264_live[@]}" -t "$3"
    -movflags +frag_keyframe+empty_moov+default_base_moof "$2")
}

thread_table() { # NAME TITLE: the per-thread table sampled in round 1, when there is one
  [ -s "$work/$1.threads" ] || return 0
  echo
  echo "$2"
  sed 's/^/  /' "$work/$1.threads"
}

bench_one_show() { # SHOW: the rounds, the medians, the ratio, the spreads and the overhead
  local show="$1" i s_cpu=() f_cpu=() b_cpu=() s_rss=() f_rss=() s_frames=() f_frames=()
  local online sampler
  make_media_for "$show"
  echo
  echo "== $show: $(show_title "$show"), $rounds round(s) of $seconds s"
  for i in $(seq 1 "$rounds"); do
    selvane_args "$show" "$work/ours$i.mp4" "$seconds"
    sampler=
    if [ "$i" -eq 1 ]; then
      sample_threads ours "^$binary --headless" --each &
      sampler=$!
    fi
    run_selvane ours "${show_args[@]}"
    [ -z "$sampler" ] || wait "$sampler" || true
    s_cpu+=("$(cpu ours)") s_rss+=("$(rss ours)") s_frames+=("$(frames_in "$work/ours$i.mp4")")
    online=no # every target online on the last progress line before the end
    [[ "$(grep '^elapsed' "$work/ours.log" | tail -n 1 | sed -n 's/.* targets \([^ ]*\).*/\1/p')" =~ ^online(,online)*$ ]] && online=yes
    printf 'round %d  selvane  CPU %6.2f s  RSS %4d MiB  frames %d/%d  %s  targets online: %s\n' \
      "$i" "${s_cpu[-1]}" "${s_rss[-1]}" "${s_frames[-1]}" "$expected" "$(counts ours)" "$online"
    ffmpeg_args "$show" "$work/theirs$i.mp4" "$seconds"
    sampler=
    if [ "$i" -eq 1 ]; then
      sample_threads theirs "^ffmpeg -nostdin -hide_banner" &
      sampler=$!
    fi
    run_ffmpeg theirs "${show_args[@]}"
    [ -z "$sampler" ] || wait "$sampler" || true
    f_cpu+=("$(cpu theirs)") f_rss+=("$(rss theirs)") f_frames+=("$(frames_in "$work/theirs$i.mp4")")
    printf 'round %d  ffmpeg   CPU %6.2f s  RSS %4d MiB  frames %d/%d\n' \
      "$i" "${f_cpu[-1]}" "${f_rss[-1]}" "${f_frames[-1]}" "$expected"
    bare_args "$show" "$work/bare$i.mp4" "$seconds"
    run_ffmpeg bare "${show_args[@]}"
    b_cpu+=("$(cpu bare)")
    printf 'round %d  bare     CPU %6.2f s  (the CLI: decode + encode of the source alone)\n' \
      "$i" "${b_cpu[-1]}"
    rm -f "$work/ours$i.mp4" "$work/theirs$i.mp4" "$work/bare$i.mp4"
  done
  local sc fc bc sr fr
  sc="$(median "${s_cpu[@]}")" fc="$(median "${f_cpu[@]}")" bc="$(median "${b_cpu[@]}")"
  sr="$(median "${s_rss[@]}")" fr="$(median "${f_rss[@]}")"
  echo
  echo "medians, $seconds s of $(show_title "$show"):"
  printf '  %-10s  CPU %6.2f s (%3s %% of a core)  RSS %4d MiB  frames %d/%d\n' \
    selvane "$sc" "$(core_pct "$sc" "$seconds")" "$sr" "$(median "${s_frames[@]}")" "$expected"
  printf '  %-10s  CPU %6.2f s (%3s %% of a core)  RSS %4d MiB  frames %d/%d\n' \
    "ffmpeg CLI" "$fc" "$(core_pct "$fc" "$seconds")" "$fr" "$(median "${f_frames[@]}")" "$expected"
  printf '  %-10s  CPU %6.2f s (%3s %% of a core)\n' "CLI bare" "$bc" "$(core_pct "$bc" "$seconds")"
  echo "ratio selvane/ffmpeg: CPU $(ratio "$sc" "$fc"), RSS $(ratio "$sr" "$fr")"
  echo "spread (max - min) / median of the rounds: selvane $(spread "${s_cpu[@]}")," \
    "ffmpeg CLI $(spread "${f_cpu[@]}"), CLI bare $(spread "${b_cpu[@]}")"
  local overhead
  overhead="$(awk -v s="$sc" -v b="$bc" 'BEGIN {if (b > 0) printf "%+.1f", 100 * (s - b) / b; else print "n/a"}')"
  echo "overhead: selvane's show beyond the CLI's bare transcode: $overhead % of the transcode"
  thread_table ours "round 1, selvane: each thread over the middle half of the run"
  thread_table theirs "round 1, ffmpeg CLI: its threads over the middle half of the run"
  printf '%-10s %7.2f %7.2f %5s %7s %7s %7.2f %7s\n' "$show" "$sc" "$fc" "$(ratio "$sc" "$fc")" \
    "$(spread "${s_cpu[@]}" | tr -d ' ')" "$(spread "${f_cpu[@]}" | tr -d ' ')" "$bc" \
    "${overhead}%" >>"$work/summary"
}

bench_show() { start_nginx; bench_one_show show; }
bench_show-hevc() { start_nginx; bench_one_show show-hevc; }
bench_show-vp9() { start_nginx; bench_one_show show-vp9; }

bench_shows() { # every show, then one line each
  start_nginx
  local show
  for show in "${show_names[@]}"; do bench_one_show "$show"; done
  echo
  echo "all shows, medians of $rounds rounds of $seconds s (CPU seconds):"
  printf '%-10s %7s %7s %5s %7s %7s %7s %7s\n' show selvane CLI ratio "s.sprd" "c.sprd" bare \
    overhead
  cat "$work/summary"
}

# --- profile ----------------------------------------------------------------------------------
# One run of each side of a show (SELVANE_BENCH_SHOW, default show) and of the bare transcode
# under `perf record` (Debian's linux-perf): CPU seconds by library and Selvane's own hottest
# functions, over the middle 60 % of each run.
perf_table() { # NAME: "seconds library" rows of the recording, most first
  perf report -i "$work/$1.perf" --stdio --no-children --sort dso -F period,dso --time 20%-80% \
    2>/dev/null | awk '/^ +[0-9]/ {printf "%7.2f  %s\n", $1 / 1e9, $2}' | sort -rn | head -n 12
}
bench_profile() {
  command -v perf >/dev/null || {
    echo "bench: profile needs perf (Debian package linux-perf)" >&2
    exit 2
  }
  local show="${SELVANE_BENCH_SHOW:-show}" side
  start_nginx
  make_media_for "$show"
  echo "profile of $show: $(show_title "$show"), $seconds s each; CPU seconds over the middle 60 %"
  local perf_cmd=(perf record -q -e cpu-clock -F 999)
  selvane_args "$show" "$work/ours.mp4" "$seconds"
  wrap=("${perf_cmd[@]}" -o "$work/ours.perf" --)
  run_selvane ours "${show_args[@]}"
  wrap=()
  ffmpeg_args "$show" "$work/theirs.mp4" "$seconds"
  run_timed theirs "${perf_cmd[@]}" -o "$work/theirs.perf" -- ffmpeg -nostdin -hide_banner \
    -v warning -y "${show_args[@]}"
  bare_args "$show" "$work/bare.mp4" "$seconds"
  run_timed bare "${perf_cmd[@]}" -o "$work/bare.perf" -- ffmpeg -nostdin -hide_banner \
    -v warning -y "${show_args[@]}"
  for side in ours theirs bare; do
    echo
    echo "$side: CPU seconds by library"
    perf_table "$side"
  done
  echo
  echo "ours: the hottest functions outside the codecs"
  perf report -i "$work/ours.perf" --stdio --no-children --sort comm,dso,sym --time 20%-80% \
    2>/dev/null | grep -E '^ +[0-9]' | grep -v -E 'libx264|libavcodec' | head -n 15
}

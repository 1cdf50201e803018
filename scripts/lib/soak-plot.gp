# The columns of a `scripts/soak.sh long` run's soak.csv against time, into soak.png beside it.
#   gnuplot -e "dir='RUN'" scripts/lib/soak-plot.gp
# Columns: 1 elapsed_s, 2 rss_kb, 3 threads, 4 open_fds, 5 skipped_ticks, 6 failovers, 7 returns,
# 8 program_frames, 9 frames_written, 10 encoder_drops, 11 targets_online, 12 recording_failed,
# 13 faults, 14 rec_av_start_ms, 15 rec_av_end_ms, 16 rec_file
data = dir . '/soak.csv'
set terminal pngcairo size 1400,1300 font 'DejaVu Sans,10'
set output dir . '/soak.png'
set datafile separator ','
set datafile missing ''
set key top left horizontal opaque
set offsets 0, 0, graph 0.2, graph 0.05
set grid
set xlabel 'minutes'
stats data every ::1 using 1 nooutput
set xrange [0:STATS_max / 60]
set multiplot layout 4,2 title 'selvane soak: ' . dir

set title 'resident memory (VmRSS)'
set ylabel 'MB'
plot data every ::1 using ($1/60):($2/1024) with linespoints pt 7 ps 0.4 title 'RSS'

set title 'threads (/proc/PID/status)'
set ylabel 'threads'
plot data every ::1 using ($1/60):3 with linespoints pt 7 ps 0.4 title 'threads'

set title 'open files (/proc/PID/fd)'
set ylabel 'files'
plot data every ::1 using ($1/60):4 with linespoints pt 7 ps 0.4 title 'open files'

set title 'program: skipped ticks and encoder drops (totals)'
set ylabel 'count'
plot data every ::1 using ($1/60):5 with steps lw 2 title 'skipped ticks', \
     '' every ::1 using ($1/60):10 with steps title 'encoder drops'

set title 'failover (totals)'
set ylabel 'count'
plot data every ::1 using ($1/60):6 with steps lw 2 title 'failovers', \
     '' every ::1 using ($1/60):7 with steps title 'returns'

set title 'at each sample: faults in force, targets online, recording failed'
set ylabel 'count'
set yrange [-0.2:*]
plot data every ::1 using ($1/60):13 with steps lw 2 title 'faults', \
     '' every ::1 using ($1/60):11 with steps title 'targets online', \
     '' every ::1 using ($1/60):12 with steps title 'recording failed'
set yrange [*:*]

set title 'program frames a second, between two samples'
set ylabel 'fps'
pt = NaN; pf = NaN
plot data every ::1 using ($1/60):(dt = $1 - pt, df = $8 - pf, pt = $1, pf = $8, dt > 0 ? df / dt : NaN) \
     with linespoints pt 7 ps 0.4 title 'program fps'

set title 'recording file being written: audio less video, start and end (per file)'
set ylabel 'ms'
plot data every ::1 using ($1/60):14 with steps lw 2 title 'start', \
     '' every ::1 using ($1/60):15 with steps title 'end'

unset multiplot

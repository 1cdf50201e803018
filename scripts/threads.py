#!/usr/bin/env python3
"""Per-thread CPU and wake-ups of a running process, by thread name.

    scripts/threads.py [--each] PID [SECONDS [SKIP]]

Waits SKIP seconds (default 5: past the start-up), then reads every thread's CPU time and
context switches from /proc, again SECONDS later (default 10), and prints per thread name: the
share of one core, voluntary switches a second (wake-ups: the thread slept and was woken) and
involuntary ones (it was pushed off a core). Threads started by a named thread carry its name
(the codec threads of "decode" and "encode"); --each prints every thread on a line of its own
(name and thread id) instead of one line per name, leaving out the idle ones (counted at the
end). By hand and from scripts/bench.sh only.
"""
import os
import sys
import time

TICKS = os.sysconf("SC_CLK_TCK")


def sample(pid):
    threads = {}
    base = f"/proc/{pid}/task"
    for tid in os.listdir(base):
        try:
            with open(f"{base}/{tid}/stat") as f:
                stat = f.read()
            with open(f"{base}/{tid}/status") as f:
                status = dict(line.split(":", 1) for line in f if ":" in line)
        except OSError:
            continue  # the thread ended meanwhile
        name = stat[stat.index("(") + 1:stat.rindex(")")]
        fields = stat[stat.rindex(")") + 2:].split()
        cpu = (int(fields[11]) + int(fields[12])) / TICKS
        threads[tid] = (name, cpu, int(status["voluntary_ctxt_switches"]),
                        int(status["nonvoluntary_ctxt_switches"]))
    return threads


def main():
    args = sys.argv[1:]
    each = "--each" in args
    args = [a for a in args if a != "--each"]
    if not args:
        sys.exit(__doc__)
    pid = int(args[0])
    seconds = float(args[1]) if len(args) > 1 else 10.0
    time.sleep(float(args[2]) if len(args) > 2 else 5.0)
    first = sample(pid)
    start = time.monotonic()
    time.sleep(seconds)
    last = sample(pid)
    elapsed = time.monotonic() - start
    by_name = {}
    for tid, (name, cpu, vol, invol) in last.items():
        _, cpu0, vol0, invol0 = first.get(tid, (name, 0.0, 0, 0))
        row = by_name.setdefault(f"{name}/{tid}" if each else name, [0, 0.0, 0, 0])
        row[0] += 1
        row[1] += cpu - cpu0
        row[2] += vol - vol0
        row[3] += invol - invol0
    w = 22 if each else 16
    print(f"{'thread':{w}} {'n':>3} {'% core':>7} {'wake-ups/s':>11} {'preempted/s':>12}")
    total = [0, 0.0, 0, 0]
    idle = 0
    for name, (n, cpu, vol, invol) in sorted(by_name.items(), key=lambda kv: -kv[1][1]):
        if each and cpu / elapsed < 0.0005 and vol / elapsed < 0.5:
            idle += 1
            total[0] += n
            continue
        print(f"{name:{w}} {n:3d} {100 * cpu / elapsed:7.1f} {vol / elapsed:11.0f} "
              f"{invol / elapsed:12.0f}")
        total = [total[0] + n, total[1] + cpu, total[2] + vol, total[3] + invol]
    if idle:
        print(f"{f'({idle} idle)':{w}}")
    print(f"{'all':{w}} {total[0]:3d} {100 * total[1] / elapsed:7.1f} "
          f"{total[2] / elapsed:11.0f} {total[3] / elapsed:12.0f}")


if __name__ == "__main__":
    main()

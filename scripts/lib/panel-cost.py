#!/usr/bin/python3
"""What one open web panel costs the show: two identical headless shows side by side (1280x720,
two file channels, recording), the panel open on one of them in headless Chromium, and the CPU
of both shows read from /proc over the same seconds. Side by side, the machine's own noise falls
on both; a first round with no panel shows how far apart the two are anyway."""

import os
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.request

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

TOKEN = "panel-cost-token-0123456789"


def cpu_seconds(pid):
    with open(f"/proc/{pid}/stat") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def free_port():
    import socket
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def start_show(binary, folder, name, clips):
    port = free_port()
    env = dict(os.environ, SELVANE_CONTROL_TOKEN=TOKEN)
    show = subprocess.Popen(
        [binary, "--headless", "--channel", "1=" + clips[0], "--channel", "2=" + clips[1],
         "--record", os.path.join(folder, name + ".mp4"), "--size", "1280x720",
         "--encoder", "software", "--control-port", str(port), "--duration", "3600"],
        env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(100):
        try:
            urllib.request.urlopen(f"http://127.0.0.1:{port}/", timeout=1)
            return show, port
        except OSError:
            time.sleep(0.1)
    raise SystemExit("the show did not come up")


def measure(shows, seconds):
    before = [cpu_seconds(s.pid) for s in shows]
    time.sleep(seconds)
    return [100 * (cpu_seconds(s.pid) - b) / seconds for s, b in zip(shows, before)]


def main():
    binary = sys.argv[1]
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 30
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    folder = tempfile.mkdtemp(prefix="panel-cost-")
    clips = []
    for i, tone in enumerate((440, 660)):
        clip = os.path.join(folder, f"clip{i}.mp4")
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
                        "testsrc2=size=1280x720:rate=30", "-f", "lavfi", "-i",
                        f"sine=f={tone}", "-t", "30", "-c:v", "libx264", "-preset", "veryfast",
                        "-c:a", "aac", clip], check=True)
        clips.append(clip)
    watched, port = start_show(binary, folder, "watched", clips)
    alone, _ = start_show(binary, folder, "alone", clips)
    driver = None
    try:
        time.sleep(5)
        base = measure([watched, alone], seconds)
        print(f"no panel:      {base[0]:5.1f} % vs {base[1]:5.1f} %  (difference {base[0] - base[1]:+.1f})")
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage",
                         "--window-size=1280,900"):
            options.add_argument(argument)
        driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        driver.get(f"http://127.0.0.1:{port}/")
        driver.find_element(By.CSS_SELECTOR, "#token").send_keys(TOKEN)
        driver.find_element(By.CSS_SELECTOR, "#signin").click()
        for _ in range(100):
            if driver.execute_script("return document.body.dataset.ready") == "1":
                break
            time.sleep(0.1)
        driver.execute_script("performance.setResourceTimingBufferSize(1000000)")
        time.sleep(3)
        differences = []
        for r in range(rounds):
            driver.execute_script("performance.clearResourceTimings()")
            cpu = measure([watched, alone], seconds)
            names = [e["name"] for e in driver.execute_script(
                "return performance.getEntriesByType('resource').map(e => ({name: e.name}))")]
            program = sum("program/snapshot.jpg" in n for n in names) / seconds
            thumbs = sum("/snapshot.jpg" in n and "channels/" in n for n in names) / seconds
            differences.append(cpu[0] - cpu[1] - (base[0] - base[1]))
            print(f"panel round {r + 1}: {cpu[0]:5.1f} % vs {cpu[1]:5.1f} %  (panel costs "
                  f"{differences[-1]:+.1f} % of a core; {program:.1f} program and "
                  f"{thumbs:.1f} channel pictures a second)")
        print(f"median cost of one open panel: {statistics.median(differences):+.1f} % of a core")
    finally:
        if driver:
            driver.quit()
        for show in (watched, alone):
            show.terminate()
            show.wait(30)


if __name__ == "__main__":
    main()

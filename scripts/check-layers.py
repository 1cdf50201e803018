#!/usr/bin/env python3
"""Checks that includes run one way: no circle between files or between folders, and no folder
includes one that is not below it in the layer order. Run by the test suite; exits 1 with the
offending includes, 0 when everything runs downward.

    scripts/check-layers.py [ROOT]
"""
import os
import re
import subprocess
import sys

# What each folder may include besides itself: the layers below it.
ALLOWED = {
    "media": set(),
    "net": {"media"},
    "input": {"media", "net"},
    "output": {"media", "net"},
    "compose": {"media"},
    "audio": {"media"},
    "schedule": {"compose", "media"},
    "engine": {"media", "net", "input", "output", "compose", "audio", "schedule"},
    "show": {"engine", "media", "audio", "compose", "input", "output", "schedule"},
    "control": {"engine", "media", "audio", "compose", "input", "output", "schedule"},
    "panels": {"engine", "media", "audio", "compose", "input", "output", "schedule"},
    "cli": {"show", "control", "engine", "media", "audio", "compose", "input", "output",
            "schedule"},
    "app": {"show", "panels", "engine", "net", "media", "audio", "compose", "input", "output",
            "schedule"},
}
# The process entry picks a face: it may include any of them.
ENTRY = {"program/main.cpp"}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([a-z]+)/([^"]+)"', re.M)


def sources(root):
    for folder in ALLOWED:
        path = os.path.join(root, folder)
        if not os.path.isdir(path):
            continue
        for name in sorted(os.listdir(path)):
            if name.endswith((".cpp", ".h")):
                yield folder, name


def circles(graph):
    """Strongly connected components of more than one node (Tarjan, iterative)."""
    index, low, on, stack, found, counter = {}, {}, set(), [], [], [0]
    for start in graph:
        if start in index:
            continue
        work = [(start, iter(graph.get(start, ())))]
        index[start] = low[start] = counter[0]
        counter[0] += 1
        stack.append(start)
        on.add(start)
        while work:
            node, edges = work[-1]
            advanced = False
            for nxt in edges:
                if nxt not in index:
                    index[nxt] = low[nxt] = counter[0]
                    counter[0] += 1
                    stack.append(nxt)
                    on.add(nxt)
                    work.append((nxt, iter(graph.get(nxt, ()))))
                    advanced = True
                    break
                if nxt in on:
                    low[node] = min(low[node], index[nxt])
            if advanced:
                continue
            work.pop()
            if work:
                low[work[-1][0]] = min(low[work[-1][0]], low[node])
            if low[node] == index[node]:
                component = []
                while True:
                    top = stack.pop()
                    on.discard(top)
                    component.append(top)
                    if top == node:
                        break
                if len(component) > 1:
                    found.append(sorted(component))
    return found


def main():
    root = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else
                           os.path.join(os.path.dirname(__file__), ".."))
    files, folders, wrong = {}, {}, []
    for folder, name in sources(root):
        with open(os.path.join(root, folder, name), encoding="utf-8", errors="replace") as f:
            text = f.read()
        here = f"{folder}/{name}"
        for target_folder, target_name in INCLUDE.findall(text):
            if target_folder not in ALLOWED:
                continue
            files.setdefault(here, set()).add(f"{target_folder}/{target_name}")
            if target_folder != folder:
                folders.setdefault(folder, set()).add(target_folder)
                if target_folder not in ALLOWED[folder] and here not in ENTRY:
                    wrong.append(f"{here} includes {target_folder}/{target_name}")
    folder_circles = circles(folders)
    file_circles = circles(files)
    for folder in sorted(folders):
        print(f"  {folder:9} -> {', '.join(sorted(folders[folder]))}")
    for c in folder_circles:
        print("folder circle:", " -> ".join(c))
    for c in file_circles:
        print("file circle:", " -> ".join(c))
    for w in wrong:
        print("climbs a layer:", w)
    print(f"{len(folder_circles)} folder circle(s), {len(file_circles)} file circle(s), "
          f"{len(wrong)} include(s) against the layer order")
    failed = bool(folder_circles or file_circles or wrong)
    # The workplace's own include graph, where the checkout sits beside it: its circles fail too.
    shared = os.path.join(root, "..", "shared", "tools", "include-graph.py")
    if os.access(shared, os.X_OK):
        report = subprocess.run([shared, root], capture_output=True, text=True, timeout=60)
        summary = [l for l in report.stdout.splitlines() if "circle" in l]
        print("include-graph.py:", "; ".join(summary) or report.stdout.strip()[-200:])
        if not any("0 folder circle(s), 0 file circle(s)" in l for l in summary):
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

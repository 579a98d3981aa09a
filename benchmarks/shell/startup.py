#!/usr/bin/env python3
"""From the start of the desktop program to its window with an example in it, part by part.

    startup.py SIGNALSCOPE DESCRIPTION [RUNS [SIGNALSCOPE ...]]

SIGNALSCOPE stands in its stage folder, with the simulated servers beside it; more than one are run
in turn. Each part has the medians of its elapsed time and of the program's processor time, the last
line those of the whole and of the servers. Runs on the present display, else without one; with
xvfb-run in front on an X server.
"""
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

LAST = "painted"
MARK = re.compile(r"signalscope\.startup: (.+), ([\d.]+) ms of processor time")


def servers_of(pid):
    """The processor time, in ms, of the children of a process."""
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/children") as children:
            for child in children.read().split():
                with open(f"/proc/{child}/schedstat") as stat:
                    total += int(stat.read().split()[0]) / 1e6
    return total


def run(program, description):
    sockets = tempfile.mkdtemp(prefix="startup-", dir="/tmp")  # a path of a socket is short
    environment = dict(os.environ, TMPDIR=sockets, XDG_CONFIG_HOME=sockets, XDG_DATA_HOME=sockets,
                       QT_LOGGING_RULES="signalscope.startup.debug=true")
    if not {"DISPLAY", "WAYLAND_DISPLAY"} & set(environment):
        environment["QT_QPA_PLATFORM"] = "offscreen"
    marks = []
    begin = time.perf_counter()
    process = subprocess.Popen(
        [program, "-family", "KR", "-device", "KR-C", "-keo", description],
        stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, env=environment)
    try:
        for line in process.stderr:
            mark = MARK.search(line)
            if not mark:
                continue
            marks.append((mark[1], (time.perf_counter() - begin) * 1000, float(mark[2])))
            if mark[1] == LAST:
                return marks, servers_of(process.pid)
        sys.exit(f"{program} ended before its window was painted")
    finally:
        process.terminate()
        process.wait()
        process.stderr.close()
        shutil.rmtree(sockets, ignore_errors=True)


def report(program, runs):
    print(f"{program}, medians of {len(runs)} runs in ms:")
    print(f"{'':22}{'elapsed':>9}{'processor':>11}")
    def median(figures):
        return statistics.median(figures)
    for i, (name, _, _) in enumerate(runs[0][0]):
        def part(marks, column):
            return marks[i][column] - (marks[i - 1][column] if i else 0)
        print(f"{name:22}{median(part(m, 1) for m, _ in runs):9.1f}"
              f"{median(part(m, 2) for m, _ in runs):11.1f}")
    print(f"{'all':22}{median(m[-1][1] for m, _ in runs):9.1f}"
          f"{median(m[-1][2] for m, _ in runs):11.1f}, servers {median(s for _, s in runs):.1f}")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    description = os.path.abspath(sys.argv[2])
    count = int(sys.argv[3]) if len(sys.argv) > 3 else 9
    programs = [sys.argv[1], *sys.argv[4:]]
    for program in programs:  # the first one reads the libraries from the disk
        run(program, description)
    rounds = [[run(program, description) for program in programs] for _ in range(count)]
    for i, program in enumerate(programs):
        report(program, [each[i] for each in rounds])


main()

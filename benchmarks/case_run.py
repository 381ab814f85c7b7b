#!/usr/bin/env python3
"""Times zyngrad gradient on a binary OpenFOAM case, from the files to the .vtu, at one time and at three.

    case_run.py PROGRAMS ZYNGRAD CELLS ROUNDS

PROGRAMS is the folder with reading_benchmark, which writes the case. Prints lines for run.sh: see Report.h. Seconds are medians
of the rounds, on the clock, with one rank; those of a further time are from the results file of the run itself.
"""

import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time


def run(command, folder):
    """Seconds and peak memory in MB."""
    start = time.monotonic()
    process = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit("case_run.py: %s ended with status %d" % (" ".join(command), status))
    return time.monotonic() - start, usage.ru_maxrss / 1024


def report(row, column, value, decimals):
    print("value\tcase\t%s\t%s\t%.*f\t" % (row, column, decimals, value), flush=True)


def main():
    programs, zyngrad, cells, rounds = sys.argv[1:]
    zyngrad = str(pathlib.Path(zyngrad).resolve())
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([programs + "/reading_benchmark", "write", cells, str(folder / "case")], check=True)
        for copy in ("1", "2"):
            shutil.copytree(folder / "case" / "0", folder / "case" / copy)
        command = [zyngrad, "gradient", "case", "--field-file", "U", "--method", "lsq", "--default-group", "wall"]
        measured = {}
        for _ in range(int(rounds)):
            for times in ("0", "all"):
                seconds, memory = run(command + ["--time", times, "-o", "results"], folder)
                measured.setdefault(times, []).append((seconds, memory))
        further = json.loads((folder / "results" / "gradient.json").read_text())["times"][-1]["seconds"]
    for times, row in (("0", "one time"), ("all", "three times")):
        report(row, "s", statistics.median(s for s, _ in measured[times]), 1)
        report(row, "peak memory, MB", max(m for _, m in measured[times]), 0)
    for key, column in (("reading", "reading, s"), ("computing", "application, s"), ("writing", "writing, s")):
        report("each further time", column, further[key], 2)
    report("each further time", "s", (statistics.median(s for s, _ in measured["all"])
                                      - statistics.median(s for s, _ in measured["0"])) / 2, 1)


if __name__ == "__main__":
    main()

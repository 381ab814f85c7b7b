#!/usr/bin/python3
"""Times the scheme zyn beside OpenFOAM's gradients and prints tables in Markdown.

    run.py PROGRAMS WORK [--across N] [--rounds N] [--ranks N]

PROGRAMS is the folder with zynFoamTime and libzynGradSchemes.so; WORK is the folder for the mesh, a box of N^3 cells (100^3),
which is kept for the next run. The machine should have nothing else to do.
"""

import argparse
import os
import pathlib
import platform
import shutil
import subprocess
import sys

BOX = pathlib.Path(__file__).resolve().parent.parent / "tests/cases/box"


def run(case, environment, *command):
    done = subprocess.run(command, cwd=case, env=environment, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode:
        sys.exit("run.py: %s ends with %d:\n%s" % (" ".join(command), done.returncode, done.stdout[-3000:]))
    return done.stdout


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":")[1].strip()
    return platform.machine()


def make_case(work, across, ranks, environment):
    case = work / ("box-%d-%d" % (across, ranks))
    if (case / "made").exists():
        return case
    shutil.copytree(BOX, case)
    mesh = case / "system/blockMeshDict"
    mesh.write_text(mesh.read_text().replace("n 6;", "n %d;" % across))
    run(case, environment, "blockMesh")
    if ranks > 1:
        (case / "system/decomposeParDict").write_text(
            "FoamFile { version 2.0; format ascii; class dictionary; object decomposeParDict; }\n"
            "numberOfSubdomains %d;\nmethod simple;\ncoeffs { n (%d 1 1); }\n" % (ranks, ranks))
        run(case, environment, "decomposePar")
    (case / "made").touch()
    return case


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--across", type=int, default=100)
    parser.add_argument("--rounds", type=int, default=11)
    parser.add_argument("--ranks", type=int, default=1)
    options = parser.parse_args()
    environment = dict(os.environ, WM_PROJECT_DIR=os.environ.get("WM_PROJECT_DIR", "/usr/share/openfoam"))
    environment.setdefault("OMP_NUM_THREADS", "1")
    options.work.mkdir(parents=True, exist_ok=True)
    case = make_case(options.work, options.across, options.ranks, environment)

    command = [str(options.programs.resolve() / "zynFoamTime"), "-rounds", str(options.rounds)]
    if options.ranks > 1:
        command = ["mpirun", "-np", str(options.ranks)] + command + ["-parallel"]
    lines = [line.split("\t") for line in run(case, environment, *command).splitlines() if "\t" in line]

    def rows(kind):
        return [line[1:] for line in lines if line[0] == kind]

    cells, _, ranks, rate = rows("mesh")[0]
    print("%s, read rate of a core %s GB/s, %s cells, %s rank(s), OMP_NUM_THREADS=%s, %d rounds, load average %.1f\n" % (
        processor(), rate, cells, ranks, environment["OMP_NUM_THREADS"], options.rounds, os.getloadavg()[0]))
    print("| field | scheme | ns per cell | against Gauss linear |\n|---|---|---|---|")
    for field, scheme, ns, ratio in rows("time"):
        print("| %s | `%s` | %s | %s |" % (field, scheme, ns, ratio))
    print("\n| scheme | set-up, s | kept, bytes per cell |\n|---|---|---|")
    for scheme, seconds, size in rows("setup"):
        print("| `%s` | %s | %s |" % (scheme, seconds, size))
    print("\n| field | scheme | operator, ns per cell | filling and copying out | whole call | part of the call, % |")
    print("|---|---|---|---|---|---|")
    for row in rows("client"):
        print("| %s | `%s` | %s | %s | %s | %s |" % tuple(row))


if __name__ == "__main__":
    main()

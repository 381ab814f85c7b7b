#!/usr/bin/env python3
"""Measures the tables of docs/measured/scale.md: meshes that no rank holds whole.

    scale.py PROGRAMS PAGE [--parts]
    scale.py PROGRAMS --quick

PROGRAMS is the folder with scale_benchmark and write_big_mesh, PAGE the page whose blocks are replaced. Takes about a quarter of an hour, 1 GB
of disk and 20 GB of memory, on a machine that should have nothing else to do. With --parts, only the table that compares the parts of
PT-Scotch with those of METIS. With --quick, small meshes and no page. Exit code 1 if a rank needs more memory than its bound, or
if parts are more than 10 % worse than METIS's.
"""

import argparse
import datetime
import json
import math
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

ENVIRONMENT = {
    "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1", "OMPI_MCA_rmaps_base_oversubscribe": "1",
    "OMPI_MCA_mpi_yield_when_idle": "1", "OMPI_MCA_plm": "isolated", "OMPI_MCA_btl_vader_single_copy_mechanism": "none",
    "OMP_NUM_THREADS": "1", "OPENBLAS_NUM_THREADS": "1",
}
MEGABYTE = 1e6
ALLOWED = 1.3  # times the bytes a cell of one process
BASE = 60 * MEGABYTE  # of a process without a mesh, its MPI library included
WORSE = 1.1  # times METIS's cut faces and largest part
SPEED = 1.5  # times the seconds of one rank that reads the whole, on two ranks


class Meshes:
    """The meshes, and what has been measured on them: runs[NAME, WAY, RANKS] = results of scale_benchmark."""

    def __init__(self, programs, folder, quick):
        self.programs = pathlib.Path(programs).resolve()
        n = "40" if quick else "94"
        edge = 60 if quick else 272
        self.ranks = [1, 2, 4] if quick else [1, 2, 4, 8, 16]
        self.box_ranks = 4 if quick else 16
        self.files = {}
        for name, kind, ending in (("Gmsh, tetrahedra", "gmsh41", "msh"), ("CGNS, tetrahedra", "cgns", "cgns")):
            file = str(folder / ("mesh." + ending))
            if subprocess.run([self.programs / "write_big_mesh", kind, n, file], stdout=subprocess.DEVNULL).returncode == 0:
                self.files[name] = file
        self.box = "box:%d,%d,%d" % (edge, edge, edge)
        half = max(1, edge // 2)
        self.small_box = "box:%d,%d,%d" % (half, half, half)
        self.runs = {}

    def run(self, mesh, way, ranks):
        command = ["mpirun", "-n", str(ranks), str(self.programs / "scale_benchmark"), mesh]
        output = subprocess.run(command + ([way] if way else []), check=True, stdout=subprocess.PIPE,
                                env={**os.environ, **ENVIRONMENT}).stdout
        result = json.loads(output.decode().splitlines()[-1])
        print("%-40s %-6s %2d ranks: %6.1f s, %7.1f MB" % (mesh[-40:], way or "auto", ranks, result["seconds"],
                                                           result["peak"] / MEGABYTE), file=sys.stderr, flush=True)
        self.runs.setdefault((mesh, way, ranks), []).append(result)
        return result

    def median(self, mesh, way, ranks):
        """The run of median seconds."""
        runs = sorted(self.runs[mesh, way, ranks], key=lambda r: r["seconds"])
        return runs[len(runs) // 2]


def table(heads, rows):
    lines = ["| " + " | ".join(heads) + " |", "|" + "---|" * len(heads)]
    return "\n".join(lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]) + "\n"


def grouped(number):
    return "{:,.0f}".format(number)


def megabytes(number):
    return grouped(number / MEGABYTE)


def bytes_a_cell(result):
    return (result["peak"] - result["base"]) / result["cells"]


def bound(per_cell, result):
    return ALLOWED * per_cell * result["cells"] / result["ranks"] + BASE


def memory_rows(meshes, wrong):
    for name, mesh in meshes.files.items():
        one = meshes.median(mesh, "whole", 1)
        yield [name, grouped(one["cells"]), "1, whole", megabytes(one["peak"]), "", "%.0f" % bytes_a_cell(one)]
        for ranks in meshes.ranks:
            yield memory_row(name, meshes.median(mesh, "slabs", ranks), bytes_a_cell(one), wrong)
    one = meshes.median(meshes.small_box, "", 1)
    yield ["box, hexahedra", grouped(one["cells"]), "1", megabytes(one["peak"]), "", "%.0f" % bytes_a_cell(one)]
    yield memory_row("box, hexahedra", meshes.median(meshes.box, "", meshes.box_ranks), bytes_a_cell(one), wrong)


def memory_row(name, result, per_cell, wrong):
    limit = bound(per_cell, result)
    if result["peak"] > limit:
        wrong.append("%s on %d ranks: %s MB, bound %s" % (name, result["ranks"], megabytes(result["peak"]), megabytes(limit)))
    peak = megabytes(result["peak"])
    return [name, grouped(result["cells"]), result["ranks"], "**%s**" % peak if result["peak"] > limit else peak,
            megabytes(limit), "%.0f" % ((result["peak"] - result["base"]) * result["ranks"] / result["cells"])]


STAGES = ["reading", "partitioning", "distributing", "tables"]


def time_rows(meshes):
    for name, mesh in meshes.files.items():
        one = meshes.median(mesh, "whole", 1)
        for way, ranks in (("whole", 1), ("whole", 2), ("slabs", 1), ("slabs", 2)):
            result = meshes.median(mesh, way, ranks)
            seconds = {stage["stage"]: stage["seconds"] for stage in result["stages"]}
            ratio = result["seconds"] / one["seconds"]
            target = way == "slabs" and ranks == 2
            text = "%.2f" % ratio
            yield ([name, "%d, %s" % (ranks, way)] + ["%.1f" % seconds.get(stage, 0.0) for stage in STAGES]
                   + ["%.1f" % result["seconds"], "**%s**" % text if target and ratio > SPEED else text])


def cut_rows(meshes):
    for name, mesh in meshes.files.items():
        for ranks in meshes.ranks[1:]:
            result = meshes.median(mesh, "slabs", ranks)
            mean = result["cells"] / ranks
            yield [name, ranks, grouped(result["cutFaces"]), "%.3f" % (result["mostCells"] / mean),
                   grouped(result["mostCutFaces"]), "%.1f" % (result["mostCutFaces"] / mean ** (2 / 3)),
                   result["mostNeighbours"]]


SERIES = ["box:12,12,12", "box:24,24,24", "box:48,48,48", "box:6,6,6:tet", "box:12,12,12:tet", "box:24,24,24:tet",
          "box:8,8,8:prism", "box:16,16,16:prism", "box:32,32,32:prism", "box:10,10,10:dual", "box:20,20,20:dual",
          "box:40,40,40:dual"]


def part_rows(programs, ranks, wrong):
    """Cut faces and largest part of PT-Scotch over those of METIS, by mesh of the study's series and number of parts."""
    cells = {box: [] for box in SERIES}
    for n in ranks:
        output = subprocess.run(["mpirun", "-n", str(n), programs / "partition_quality"] + SERIES, check=True,
                                stdout=subprocess.PIPE, env={**os.environ, **ENVIRONMENT}).stdout.decode()
        for line in output.splitlines():
            if not line.startswith("| `box"):
                continue
            mesh, _, _, _, ratio, metis, scotch = (cell.strip(" `") for cell in line.split("|")[1:8])
            larger = float(scotch) / float(metis)
            cells[mesh].append("%s, %.3f" % (ratio, larger))
            if max(float(ratio), larger) > WORSE:
                wrong.append("parts of %s on %d ranks: %s" % (mesh, n, cells[mesh][-1]))
    return [["`%s`" % box] + cells[box] for box in SERIES]


def model_rows(meshes, file_rate=1e9):
    """What larger runs will take, from the rates of the Gmsh file. The page states the assumptions."""
    mesh = next(iter(meshes.files.values()))
    most = meshes.ranks[-1]
    large, two = meshes.median(mesh, "slabs", most), meshes.median(mesh, "slabs", 2)
    seconds = {stage["stage"]: stage["seconds"] for stage in two["stages"]}
    cells_of_two = two["cells"] / 2
    per_cell = (large["peak"] - large["base"]) * most / large["cells"]
    surface = large["mostCutFaces"] / (large["cells"] / most) ** (2 / 3)
    file_bytes = os.path.getsize(mesh) / two["cells"]
    rows = []
    for cells, ranks in ((1e8, 128), (1e9, 1024)):
        own = cells / ranks
        levels = math.log2(ranks)
        faces = surface * own ** (2 / 3)
        rows.append([("%.0e" % cells).replace("+0", ""), grouped(ranks), grouped(own), megabytes(per_cell * own + large["base"]),
                     grouped(faces), megabytes(faces * 8) if faces * 8 >= MEGABYTE else "%.2f" % (faces * 8 / MEGABYTE),
                     "%.1f" % (cells * file_bytes / file_rate), "%.1f" % (seconds["reading"] * own / cells_of_two),
                     "%.0f" % (seconds["partitioning"] * own / cells_of_two * levels),
                     "%.1f" % (seconds["distributing"] * own / cells_of_two),
                     "%.1f" % (seconds["tables"] * own / cells_of_two)])
    return rows


def facts():
    model = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")), "?")
    commit = subprocess.run(["git", "describe", "--always", "--dirty"], stdout=subprocess.PIPE).stdout.decode().strip()
    return table(["", ""], [["processor", "%s, %d cores" % (model, os.cpu_count())],
                            ["threads", "OMP_NUM_THREADS=1, one thread for PT-Scotch"],
                            ["commit", "%s, %s" % (commit, datetime.date.today())]])


def measure(meshes, rounds):
    for _ in range(rounds):
        for mesh in meshes.files.values():
            for way, ranks in (("whole", 1), ("slabs", 2), ("whole", 2), ("slabs", 1)):
                meshes.run(mesh, way, ranks)
    for mesh in meshes.files.values():
        for ranks in meshes.ranks[2:]:
            meshes.run(mesh, "slabs", ranks)
    meshes.run(meshes.small_box, "", 1)
    meshes.run(meshes.box, "", meshes.box_ranks)


def put_blocks(page, blocks):
    lines, inside = [], False
    for line in page.read_text().splitlines():
        if line == "<!-- /measured -->":
            inside = False
        if not inside:
            lines.append(line)
        if line.startswith("<!-- measured "):
            name = line.split()[2]
            if name in blocks:
                inside = True
                lines += ["", blocks[name].rstrip("\n"), ""]
    page.write_text("\n".join(lines) + "\n")


def scale_blocks(options, wrong):
    with tempfile.TemporaryDirectory() as folder:
        meshes = Meshes(options.programs, pathlib.Path(folder), options.quick)
        measure(meshes, 1 if options.quick else 3)
        return {
            "facts": facts(),
            "memory": table(["mesh", "cells", "ranks", "peak of the largest rank, MB", "bound, MB", "bytes a cell"],
                            memory_rows(meshes, wrong)),
            "time": table(["mesh", "ranks, way"] + [stage + ", s" for stage in STAGES] + ["all, s", "over one rank"],
                          time_rows(meshes)),
            "cuts": table(["mesh", "ranks", "faces cut", "most cells over mean", "most cut faces of a rank",
                           "over (cells a rank)^(2/3)", "most neighbours"], cut_rows(meshes)),
            "model": table(["cells", "ranks", "cells a rank", "MB a rank", "halo faces a rank",
                            "MB sent a rank and exchange", "file at 1 GB/s, s", "reading, s", "partitioning, s",
                            "distributing, s", "tables, s"], model_rows(meshes)),
        }


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("programs")
    arguments.add_argument("page", type=pathlib.Path, nargs="?")
    arguments.add_argument("--quick", action="store_true")
    arguments.add_argument("--parts", action="store_true")
    options = arguments.parse_args()
    wrong = []
    ranks = [2, 4] if options.quick else [2, 3, 4, 6, 8, 12, 16]
    blocks = {"parts": table(["mesh"] + ["%d parts" % n for n in ranks],
                             part_rows(pathlib.Path(options.programs).resolve(), ranks, wrong))}
    if not options.parts:
        blocks.update(scale_blocks(options, wrong))
    if options.page and not options.quick:
        put_blocks(options.page, blocks)
    else:
        print("\n".join(blocks.values()))
    for text in wrong:
        print("beyond its bound: " + text, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

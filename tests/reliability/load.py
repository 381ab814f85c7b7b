#!/usr/bin/env python3
"""Runs zyngrad on meshes of millions of cells, from input to output, and tells the time and the peak memory.

load.py ZYNGRAD [CELLS] [FOLDER]: CELLS is about how many there are (5 000 000), FOLDER has some gigabytes of room (a
temporary one). One line a command; exit code 1 if any failed.
"""

import array
import itertools
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time

FIELD = "sin(2*x)*y + z^2"


def write_tetrahedra(path, n):
    """The unit cube of n^3 cubes, each cut into six tetrahedra around its diagonal, as a binary Gmsh 2.2 file."""
    stride = (1, n + 1, (n + 1) ** 2)

    def node(i, j, k):
        return 1 + i * stride[0] + j * stride[1] + k * stride[2]

    paths = []
    for a, b, c in itertools.permutations(stride):
        corners = (0, a, a + b, a + b + c)
        odd = (stride.index(a), stride.index(b), stride.index(c)) in ((0, 2, 1), (1, 0, 2), (2, 1, 0))
        paths.append((corners[0], corners[2], corners[1], corners[3]) if odd else corners)

    triangles = array.array("i")
    number = 0
    for axis in range(3):
        others = [stride[d] for d in range(3) if d != axis]
        for side, i, j in itertools.product((0, n), range(n), range(n)):
            low = 1 + side * stride[axis] + i * others[0] + j * others[1]
            high = low + others[0] + others[1]
            for middle in (low + others[0], low + others[1]):
                number += 1
                triangles.extend((number, 1, 1, low, middle, high))
    n_triangles = number

    with open(path, "wb") as out:
        out.write(b"$MeshFormat\n2.2 1 8\n" + struct.pack("<i", 1) + b"\n$EndMeshFormat\n")
        out.write(b'$PhysicalNames\n2\n2 1 "wall"\n3 2 "fluid"\n$EndPhysicalNames\n')
        out.write(b"$Nodes\n%d\n" % (n + 1) ** 3)
        for k, j in itertools.product(range(n + 1), repeat=2):
            row = [struct.pack("<i3d", node(i, j, k), i / n, j / n, k / n) for i in range(n + 1)]
            out.write(b"".join(row))
        out.write(b"\n$EndNodes\n$Elements\n%d\n" % (n_triangles + 6 * n**3))
        out.write(struct.pack("<3i", 2, n_triangles, 2))
        triangles.tofile(out)
        out.write(struct.pack("<3i", 4, 6 * n**3, 2))
        for k, j in itertools.product(range(n), repeat=2):
            row = array.array("i")
            for i in range(n):
                corner = node(i, j, k)
                for a, b, c, d in paths:
                    number += 1
                    row.extend((number, 2, 2, corner + a, corner + b, corner + c, corner + d))
            row.tofile(out)
        out.write(b"\n$EndElements\n")


def run(name, cells, command):
    """Runs a command and prints its line. Children are counted one by one: the peak is the largest so far."""
    start = time.monotonic()
    read_end, write_end = os.pipe()
    child = os.fork()
    if child == 0:  # a process in between, so that the peak is this command's alone
        os.close(read_end)
        import resource

        code = subprocess.call(command, stdout=subprocess.DEVNULL)
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024
        os.write(write_end, b"%d %d" % (code, peak))
        os._exit(0)
    os.close(write_end)
    with os.fdopen(read_end) as report:
        code, peak = (int(word) for word in report.read().split())
    os.waitpid(child, 0)
    seconds = time.monotonic() - start
    print(f"{name:34} {cells:10,} cells  {seconds:7.1f} s  {peak / 2**30:6.2f} GB  {peak / cells:7.0f} bytes a cell"
          + ("" if code == 0 else f"  FAILED, exit code {code}"), flush=True)
    return code == 0


def main():
    zyngrad = os.path.realpath(sys.argv[1])
    wanted = int(sys.argv[2]) if len(sys.argv) > 2 else 5_000_000
    work = tempfile.mkdtemp(dir=sys.argv[3] if len(sys.argv) > 3 else None)
    try:
        side = round(wanted ** (1 / 3))
        box, hexahedra = f"box:{side},{side},{side}", side**3
        side = round((wanted / 6) ** (1 / 3))
        mesh, tetrahedra = os.path.join(work, "tetrahedra.msh"), 6 * side**3
        write_tetrahedra(mesh, side)
        good = True
        for kind, source, cells in (("box of hexahedra", box, hexahedra), ("file of tetrahedra", mesh, tetrahedra)):
            for command in (["info"], ["gradient", "--field", FIELD, "--method", "all", "--repeat", "1"],
                            ["faces", "--field", FIELD, "--group", "wall"],
                            ["points", "--field", FIELD, "--body", "(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.01"]):
                output = [] if command[0] == "info" else ["-o", os.path.join(work, "output")]
                good &= run(f"{command[0]}, {kind}", cells, [zyngrad, command[0], source, *command[1:], *output])
                shutil.rmtree(os.path.join(work, "output"), ignore_errors=True)
        return 0 if good else 1
    finally:
        shutil.rmtree(work, ignore_errors=True)


sys.exit(main())

#!/usr/bin/env python3
"""Measures what the module costs: set-ups and calls at a million cells, and a call beyond the library's own time.

    benchmark.py [--cells N]

The cost of a call beyond the library is what a call takes on a mesh of one cell, where the library itself has next to
nothing to do. Times are the least of several repetitions, with the interpreter's collector off as timeit has it.
"""

import argparse
import os
import platform
import tempfile
import timeit

import numpy as np

import zyn3dgradop as zyn

METHODS = ("plain", "iterated", "least_squares", "radial_basis")


def seconds(action, number=1, repeat=5):
    return min(timeit.repeat(action, number=number, repeat=repeat)) / number


def one_cell():
    """The unit cube with its six boundary faces, from arrays."""
    centres = np.full((3, 7), 0.5)
    areas = np.zeros((3, 6))
    for face in range(6):
        areas[face // 2, face] = 2.0 * (face % 2) - 1.0
        centres[face // 2, 1 + face] = face % 2
    nothing, no_numbers = np.zeros((3, 0)), np.zeros(0, np.int32)
    return zyn.Mesh(centres=centres, volumes=np.ones(1), owner=no_numbers, neighbour=no_numbers, areas=nothing,
                    face_centres=nothing.copy(), weights=np.zeros(0), boundary_owner=np.zeros(6, np.int32),
                    boundary_areas=areas, boundary_centres=centres[:, 1:].copy())


def calls_on_one_cell(number=2000, repeat=30):
    """{call: microseconds}."""
    mesh = one_cell()
    phi = np.arange(7.0)
    fields, weight, out, out_three = np.stack([phi, phi, phi]), 1 + phi, np.empty((3, 7)), np.empty((3, 3, 7))
    plain, iterated = zyn.Gradient(mesh), zyn.Gradient(mesh, "iterated")
    squares = zyn.Gradient(mesh, "least_squares")
    boxes = zyn.Mesh.read("box:1,1,1")
    of_boxes = np.arange(float(boxes.total_count))
    faces = zyn.FaceInterpolation(boxes, "wall", method=3)
    points = zyn.PointInterpolation(boxes, np.ascontiguousarray(boxes.centres[:, :1]) + 0.1)
    actions = {
        "`gradient(phi)`, plain": lambda: plain(phi),
        "`gradient(phi, out)`, plain": lambda: plain(phi, out),
        "`gradient(phi, out, sweeps=2)`, iterated": lambda: iterated(phi, out, sweeps=2),
        "`gradient(phi, out)`, least squares": lambda: squares(phi, out),
        "`gradient.three(fields, out)`, plain": lambda: plain.three(fields, out_three),
        "`gradient.weighted(phi, weight, out)`": lambda: plain.weighted(phi, weight, out),
        "`faces(phi)`, 4 faces": lambda: faces(of_boxes),
        "`points(phi)`, 1 point": lambda: points(of_boxes),
    }
    return {name: 1e6 * seconds(action, number, repeat) for name, action in actions.items()}


def large_mesh(cells):
    """[(what, seconds)] of a box of about so many cells."""
    edge = round(cells ** (1 / 3))
    name = f"box:{edge},{edge},{edge}"
    rows = [(f"`Mesh.read(\"{name}\")`", seconds(lambda: zyn.Mesh.read(name), repeat=1))]
    read = zyn.Mesh.read(name)
    arrays = {key: np.array(getattr(read, key)) for key in (
        "centres", "volumes", "owner", "neighbour", "areas", "face_centres", "weights", "boundary_owner",
        "boundary_areas", "boundary_centres")}
    nodes = {key: np.array(getattr(read, key)) for key in ("nodes", "face_nodes", "face_node_start")}
    kinds = {"boundary_kinds": read.boundary_kinds}
    del read

    mesh = zyn.Mesh(**arrays, **nodes, **kinds)
    phi = np.sin(mesh.centres[0]) * mesh.centres[1]
    rows.append(("`Mesh(...)` from arrays", seconds(lambda: zyn.Mesh(**arrays, **kinds), repeat=3)))
    for method in METHODS:
        more = nodes if method == "radial_basis" else {}
        rows.append((f"`Mesh(...)` and `Gradient(mesh, \"{method}\")`",
                     seconds(lambda: zyn.Gradient(zyn.Mesh(**arrays, **more, **kinds), method), repeat=2)))
    out, out_three = np.empty((3, phi.size)), np.empty((3, 3, phi.size))
    fields = np.stack([phi, phi, phi])
    for method in METHODS:
        gradient = zyn.Gradient(mesh, method)
        rows.append((f"`gradient(phi, out)`, {method}", seconds(lambda: gradient(phi, out))))
    gradient = zyn.Gradient(mesh)
    rows.append(("`gradient(phi)`, plain, with a new array", seconds(lambda: gradient(phi))))
    rows.append(("`gradient.three(fields, out)`, plain", seconds(lambda: gradient.three(fields, out_three))))
    rows.append(("`gradient.weighted(phi, weight, out)`", seconds(lambda: gradient.weighted(phi, 1 + phi, out))))
    return mesh.cell_count, rows


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        return next((line.split(":")[1].strip() for line in lines if line.startswith("model name")), platform.machine())


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cells", type=int, default=1_000_000)
    arguments = parser.parse_args()
    print(f"{processor()}, {os.cpu_count()} cores seen; OMP_NUM_THREADS={os.environ.get('OMP_NUM_THREADS', 'unset')}; "
          f"Python {platform.python_version()}, numpy {np.__version__}, zyn3dgradop {zyn.__version__}\n")
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)  # what the operators may write stays here
        print("| call on one cell | microseconds |\n|---|---|")
        for name, microseconds in calls_on_one_cell().items():
            print(f"| {name} | {microseconds:.2f} |")
        cells, rows = large_mesh(arguments.cells)
        print(f"\n| {cells} hexahedra | seconds |\n|---|---|")
        for name, elapsed in rows:
            print(f"| {name} | {elapsed:.3f} |")
        os.chdir("/")


if __name__ == "__main__":
    main()

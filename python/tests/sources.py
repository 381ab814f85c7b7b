"""Meshes with every kind of cell, as points and rows of nodes in the order of VTK, which meshio shares."""

import numpy as np
from grids import Grid

NAMES = ("inlet", "outlet", "wall_ymin", "wall_ymax", "floor", "lid")


def hexahedra(n=(4, 3, 5)):
    """(points, {type: rows}, quads of the boundary, patch of each quad)."""
    grid = Grid(*n)
    return grid.points, {"hexahedron": grid.hexahedra}, grid.boundary_nodes, grid.boundary_patch


def mixed():
    """A bar of 9 cubes: three stay hexahedra, three become two wedges each, and three become six pyramids each."""
    grid = Grid(9, 1, 1, shear=0.2, shuffle=False)
    cubes = grid.hexahedra
    points = [grid.points]
    wedges, pyramids = [], []
    # Triangles at the bottom and the top: the faces that two cubes share, 0 3 7 4 and 1 2 6 5, stay whole.
    for a, b, c, d, e, f, g, h in cubes[3:6]:
        wedges += [(a, b, d, e, f, h), (b, c, d, f, g, h)]
    for number, cube in enumerate(cubes[6:]):
        a, b, c, d, e, f, g, h = cube
        tip = len(grid.points) + number
        points.append(grid.points[cube].mean(axis=0)[None])
        pyramids += [(*side, tip) for side in ((a, b, c, d), (e, h, g, f), (a, e, f, b), (b, f, g, c), (c, g, h, d), (d, h, e, a))]
    cells = {"hexahedron": cubes[:3], "wedge": np.array(wedges), "pyramid": np.array(pyramids)}
    return np.concatenate(points), cells


def tetrahedra():
    """A box of cubes, each cut into five tetrahedra, mirrored from cube to cube so that their faces match."""
    grid = Grid(4, 4, 4, shear=0.1, shuffle=False)
    rows = []
    for number, (a, b, c, d, e, f, g, h) in enumerate(grid.hexahedra):
        i, j, k = number % 4, number // 4 % 4, number // 16
        if (i + j + k) % 2 == 0:
            rows += [(a, b, d, e), (c, d, b, g), (f, e, g, b), (h, g, e, d), (b, d, e, g)]
        else:
            rows += [(b, c, a, f), (d, a, c, h), (e, h, f, a), (g, f, h, c), (a, c, f, h)]
    return grid.points, {"tetra": np.array(rows)}


def centres(points, rows):
    """Averages of nodes: the centres of tetrahedra and of parallelepipeds."""
    return points[rows].mean(axis=1)

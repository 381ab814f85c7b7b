"""Meshes from meshio, and through it from the file formats that it reads."""

import os

import numpy as np

from ._cells import HEXAHEDRON, PRISM, PYRAMID, TETRAHEDRON, CellList

_CELLS = {"tetra": TETRAHEDRON, "hexahedron": HEXAHEDRON, "wedge": PRISM, "pyramid": PYRAMID}
_SURFACES = {"triangle": 3, "quad": 4}
_IGNORED = {"vertex", "line"}

# Where meshio's readers put the number of the patch to which a surface element belongs.
_PATCH_DATA = ("gmsh:physical", "su2:tag", "cell_tags", "medit:ref", "ugrid:ref", "nastran:ref", "netgen:index",
               "CellEntityIds", "gmsh:geometrical")


def read(source, *, patches=None):
    """The cells of a meshio mesh, or of a file that meshio reads.

    Returns a CellList. `patches` names the cell data whose numbers tell the patch of a surface element.
    """
    if isinstance(source, (str, os.PathLike)):
        name = os.fspath(source)
        try:
            import meshio
        except ImportError:
            raise ImportError("reading this file needs meshio (Debian: python3-meshio)") from None
        source = meshio.read(name)
    else:
        name = "meshio mesh"
    if not hasattr(source, "points") or not hasattr(source, "cells"):
        raise TypeError(f"from_meshio takes a meshio.Mesh or the name of a file, not {type(source).__name__}")

    cells = CellList(name, source.points)
    names = _surface_names(source, patches, name)
    position = 0
    for number, block in enumerate(source.cells):
        count = len(block.data)
        if block.type in _CELLS:
            cells.add_cells(_CELLS[block.type], np.arange(position, position + count), block.data)
        elif block.type.startswith("polyhedron"):
            for offset, faces in enumerate(block.data):
                cells.add_polyhedron(position + offset, faces)
        elif block.type in _SURFACES:
            cells.add_surfaces(block.data, names(number, count))
        elif block.type not in _IGNORED:
            cells.refuse(block.type, count)
        position += count
    cells.count = position
    return cells


def _surface_names(source, patches, name):
    """A function of the number and the length of a block that returns the name of each element's patch."""
    data = source.cell_data
    if patches is not None and patches not in data:
        known = ", ".join(map(repr, data)) or "none"
        raise ValueError(f"{name}: no cell data called {patches!r}; there are {known}")
    sets = {key: members for key, members in getattr(source, "cell_sets", {}).items()
            if not key.startswith("gmsh:")}
    if patches is None and not sets:
        patches = next((key for key in _PATCH_DATA if key in data), None)
    if patches is not None:
        words = _words_of_numbers(source, patches)
        return lambda block, count: [words.get(int(value), f"patch {int(value)}") for value in data[patches][block]]

    def by_sets(block, count):
        names = np.full(count, "unnamed", dtype=object)
        for key in reversed(list(sets)):  # an element of several sets belongs to the first one
            members = sets[key][block]
            if members is not None:
                names[np.asarray(members, dtype=np.int64)] = key
        return names

    return by_sets


def _words_of_numbers(source, patches):
    """Names that a file gives to the numbers of surface elements."""
    words = {}
    if patches == "gmsh:physical":
        for word, (number, dimension) in source.field_data.items():
            if dimension == 2:
                words[int(number)] = word
    if patches == "cell_tags":  # MED: a family may belong to several groups
        for number, groups in getattr(source, "cell_tags", {}).items():
            words[int(number)] = "+".join(group.strip() for group in groups)
    return words

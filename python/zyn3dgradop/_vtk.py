"""Meshes from unstructured grids of VTK, of which those of PyVista are."""

import numpy as np

from ._cells import HEXAHEDRON, PRISM, PYRAMID, TETRAHEDRON, CellList

_VOXEL, _PIXEL, _POLYHEDRON = 11, 8, 42
# VTK's number of a cell type: the shape, and the position of each of its nodes among VTK's.
_CELLS = {
    10: (TETRAHEDRON, (0, 1, 2, 3)),
    _VOXEL: (HEXAHEDRON, (0, 1, 3, 2, 4, 5, 7, 6)),
    12: (HEXAHEDRON, (0, 1, 2, 3, 4, 5, 6, 7)),
    13: (PRISM, (0, 1, 2, 3, 4, 5)),
    14: (PYRAMID, (0, 1, 2, 3, 4)),
}
_SURFACES = {5: (0, 1, 2), _PIXEL: (0, 1, 3, 2), 9: (0, 1, 2, 3)}
_IGNORED = (0, 1, 2, 3, 4)  # empty cells, points and lines


def read(grid, *, patches=None):
    """The cells of a vtkUnstructuredGrid as a CellList.

    `patches` names the integer cell array whose numbers tell the patch of a surface element.
    """
    try:
        from vtkmodules.util.numpy_support import vtk_to_numpy
    except ImportError:
        raise ImportError("a mesh from VTK needs the Python modules of VTK (Debian: python3-vtk9)") from None
    if not hasattr(grid, "GetCellTypesArray") or not hasattr(grid, "GetFaceStream"):
        raise TypeError(f"from_vtk takes a vtkUnstructuredGrid, not {type(grid).__name__}")
    name = "VTK grid"
    if grid.GetNumberOfCells() == 0 or grid.GetNumberOfPoints() == 0:
        raise ValueError(f"{name}: no cells")

    cells = CellList(name, vtk_to_numpy(grid.GetPoints().GetData()))
    types = vtk_to_numpy(grid.GetCellTypesArray())
    cells.count = len(types)
    start = vtk_to_numpy(grid.GetCells().GetOffsetsArray())
    nodes = vtk_to_numpy(grid.GetCells().GetConnectivityArray())
    patch_numbers = _patch_numbers(grid, patches, name, vtk_to_numpy)
    for kind in np.unique(types):
        found = np.flatnonzero(types == kind)
        if kind in _CELLS:
            shape, places = _CELLS[kind]
            cells.add_cells(shape, found, nodes[start[found][:, None] + np.array(places)])
        elif kind in _SURFACES:
            names = ["unnamed"] * len(found) if patch_numbers is None else [
                f"patch {number}" for number in patch_numbers[found]]
            cells.add_surfaces(nodes[start[found][:, None] + np.array(_SURFACES[kind])], names)
        elif kind == _POLYHEDRON:
            for cell in found:
                cells.add_polyhedron(cell, _faces_of_polyhedron(grid, int(cell)))
        elif kind not in _IGNORED:
            cells.refuse(_name_of_type(int(kind)), len(found))
    return cells


def _patch_numbers(grid, patches, name, vtk_to_numpy):
    if patches is None:
        return None
    array = grid.GetCellData().GetArray(patches)
    if array is None:
        data = grid.GetCellData()
        known = ", ".join(repr(data.GetArrayName(i)) for i in range(data.GetNumberOfArrays())) or "none"
        raise ValueError(f"{name}: no cell array called {patches!r}; there are {known}")
    numbers = vtk_to_numpy(array)
    if numbers.ndim != 1 or numbers.dtype.kind not in "iu":
        raise ValueError(f"{name}: the cell array {patches!r} does not have one integer for each cell")
    return numbers


def _faces_of_polyhedron(grid, cell):
    from vtkmodules.vtkCommonCore import vtkIdList

    stream = vtkIdList()
    grid.GetFaceStream(cell, stream)
    faces, place = [], 1
    for _ in range(stream.GetId(0)):
        count = stream.GetId(place)
        faces.append(np.array([stream.GetId(place + 1 + node) for node in range(count)]))
        place += 1 + count
    return faces


def _name_of_type(kind):
    from vtkmodules.vtkCommonDataModel import vtkCellTypes

    return vtkCellTypes.GetClassNameFromTypeId(kind)

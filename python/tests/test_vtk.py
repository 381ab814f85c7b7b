"""Meshes from VTK's unstructured grids, of which PyVista's are: cell types, boundary, precision, refusals."""

import sys

import numpy as np
import pytest
import sources
from grids import Grid
from program import same_bits

import zyn3dgradop as z

pytest.importorskip("vtkmodules")
from vtkmodules import vtkCommonCore, vtkCommonDataModel  # noqa: E402
from vtkmodules.util.numpy_support import numpy_to_vtk  # noqa: E402

TYPES = {"tetra": 10, "voxel": 11, "hexahedron": 12, "wedge": 13, "pyramid": 14, "triangle": 5, "pixel": 8, "quad": 9,
         "line": 3, "vertex": 1, "tetra10": 24}


def grid_of(points, blocks, arrays=None, cls=vtkCommonDataModel.vtkUnstructuredGrid):
    """A vtkUnstructuredGrid of [(type, rows of nodes)]."""
    grid = cls()
    of_grid = vtkCommonCore.vtkPoints()
    of_grid.SetData(numpy_to_vtk(np.ascontiguousarray(points), deep=True))
    grid.SetPoints(of_grid)
    for kind, rows in blocks:
        for row in rows:
            grid.InsertNextCell(TYPES[kind], len(row), [int(node) for node in row])
    for name, values in (arrays or {}).items():
        array = numpy_to_vtk(values, deep=True)
        array.SetName(name)
        grid.GetCellData().AddArray(array)
    return grid


def test_hexahedra_equal_those_of_meshio():
    """The same cells give the same mesh, bit for bit, through either door."""
    meshio = pytest.importorskip("meshio")
    grid = Grid(4, 3, 5)
    through_vtk = z.Mesh.from_vtk(grid_of(grid.points, [("hexahedron", grid.hexahedra)]))
    through_meshio = z.Mesh.from_meshio(meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra)]))
    for name in ("centres", "volumes", "owner", "neighbour", "areas", "weights", "source_cell"):
        assert same_bits(getattr(through_vtk, name), getattr(through_meshio, name)), name
    np.testing.assert_allclose(through_vtk.result(through_vtk.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-14)


@pytest.mark.parametrize("make", [sources.mixed, sources.tetrahedra])
def test_every_cell_type(make):
    points, cells = make()
    mesh = z.Mesh.from_vtk(grid_of(points, cells.items()))
    assert mesh.check() == []
    centres = mesh.result(mesh.centres)
    slope = np.array([2.0, -3.0, 1.0])
    phi = np.ascontiguousarray(slope @ mesh.centres)
    np.testing.assert_allclose(mesh.result(phi), centres @ slope, rtol=1e-15)
    result = mesh.result(z.Gradient(mesh, "least_squares")(phi))
    np.testing.assert_allclose(result, np.broadcast_to(slope, result.shape), rtol=0, atol=1e-9)


def test_voxels_and_pixels():
    """Their nodes run along the axes instead of around."""
    grid = Grid(4, 3, 5, shear=0.0)
    around = [0, 1, 3, 2, 4, 5, 7, 6]
    as_hexahedra = z.Mesh.from_vtk(grid_of(grid.points, [("hexahedron", grid.hexahedra), ("quad", grid.boundary_nodes)],
                                           {"patch": np.concatenate([np.zeros(grid.n, int), grid.boundary_patch])}),
                                   patches="patch")
    as_voxels = z.Mesh.from_vtk(grid_of(grid.points, [("voxel", grid.hexahedra[:, around]),
                                                      ("pixel", grid.boundary_nodes[:, [0, 1, 3, 2]])],
                                        {"patch": np.concatenate([np.zeros(grid.n, int), grid.boundary_patch])}),
                                patches="patch")
    for name in ("centres", "volumes", "owner", "neighbour", "areas"):
        assert same_bits(getattr(as_voxels, name), getattr(as_hexahedra, name)), name
    for mesh in (as_hexahedra, as_voxels):
        assert [len(mesh.ghost_cells(f"patch {k}")) for k in range(6)] == np.bincount(grid.boundary_patch).tolist()


def test_polyhedra():
    grid = Grid(3, 3, 3)
    source = grid_of(grid.points, [("hexahedron", grid.hexahedra[:10])])
    faces = ((0, 3, 2, 1), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7))
    for cell in grid.hexahedra[10:]:
        stream = vtkCommonCore.vtkIdList()
        for number in [6] + [number for face in faces for number in (4, *(int(node) for node in cell[list(face)]))]:
            stream.InsertNextId(number)
        source.InsertNextCell(42, stream)
    mesh = z.Mesh.from_vtk(source)
    assert mesh.check() == []
    assert (mesh.cell_count, mesh.inner_face_count, mesh.boundary_face_count) == (grid.n, grid.nf, grid.nb)
    np.testing.assert_allclose(mesh.result(mesh.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-13)


def test_cells_between_others_keep_their_places():
    grid = Grid(3, 3, 3)
    source = grid_of(grid.points, [("quad", grid.boundary_nodes[:4]), ("hexahedron", grid.hexahedra[:5]),
                                   ("vertex", [[0]]), ("hexahedron", grid.hexahedra[5:]), ("line", [[0, 1]])])
    mesh = z.Mesh.from_vtk(source)
    np.testing.assert_allclose(mesh.result(mesh.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-14)
    everything = mesh.result(mesh.centres, fill=-1.0)
    assert everything.shape == (source.GetNumberOfCells(), 3)
    assert np.flatnonzero((everything == -1.0).all(axis=1)).tolist() == [0, 1, 2, 3, 9, 32]


def test_points_of_single_precision_are_widened():
    grid = Grid(3, 3, 3)
    mesh = z.Mesh.from_vtk(grid_of(grid.points.astype(np.float32), [("hexahedron", grid.hexahedra)]))
    assert mesh.nodes.dtype == np.float64
    assert np.array_equal(np.sort(mesh.nodes, axis=1), np.sort(grid.points.astype(np.float32).astype(np.float64).T, axis=1))


def test_subclasses_are_taken():
    """As PyVista's UnstructuredGrid is one."""

    class Derived(vtkCommonDataModel.vtkUnstructuredGrid):
        pass

    grid = Grid(2, 2, 2)
    assert z.Mesh.from_vtk(grid_of(grid.points, [("hexahedron", grid.hexahedra)], cls=Derived)).cell_count == 8


def test_mesh_does_not_hold_on_to_the_grid():
    grid = Grid(3, 3, 3)
    source = grid_of(grid.points, [("hexahedron", grid.hexahedra)])
    mesh = z.Mesh.from_vtk(source)
    phi = mesh.expand(np.arange(grid.n))
    expected = z.Gradient(mesh)(phi)
    source.GetPoints().GetData().Fill(0.0)
    del source
    assert same_bits(z.Gradient(mesh)(phi), expected)


@pytest.mark.parametrize("blocks, message", [
    ([], "no cells"),
    ([("triangle", [[0, 1, 2]])], "no three-dimensional cells"),
    ([("tetra", [[0, 1, 2, 3]]), ("tetra10", [list(range(10))] * 2)], "2 of type vtkQuadraticTetra"),
    ([("tetra", [[0, 1, 2, 3], [0, 1, 2, 3]])], "same side|two sides"),
])
def test_grids_that_are_refused(blocks, message):
    with pytest.raises(ValueError, match=message) as caught:
        z.Mesh.from_vtk(grid_of(np.random.default_rng(1).uniform(size=(20, 3)), blocks))
    assert "\n" not in str(caught.value)


def test_patches_that_are_refused():
    grid = Grid(2, 2, 2)
    source = grid_of(grid.points, [("hexahedron", grid.hexahedra)],
                     {"float": np.zeros(8), "pairs": np.zeros((8, 2), int), "patch": np.zeros(8, int)})
    with pytest.raises(ValueError, match="'none'.*'patch'"):
        z.Mesh.from_vtk(source, patches="none")
    for name in ("float", "pairs"):
        with pytest.raises(ValueError, match="one integer"):
            z.Mesh.from_vtk(source, patches=name)


@pytest.mark.parametrize("source", [None, 3, [], vtkCommonDataModel.vtkPolyData()], ids=type)
def test_other_objects_are_refused(source):
    with pytest.raises(TypeError, match="vtkUnstructuredGrid"):
        z.Mesh.from_vtk(source)


def test_without_vtk(monkeypatch):
    monkeypatch.setitem(sys.modules, "vtkmodules.util.numpy_support", None)
    with pytest.raises(ImportError, match="python3-vtk9") as caught:
        z.Mesh.from_vtk(object())
    assert "\n" not in str(caught.value)

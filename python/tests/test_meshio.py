"""Meshes from meshio: every cell type, boundary names, fields in the source's order, file formats, refusals."""

import sys

import grids
import numpy as np
import pytest
import sources
from grids import Grid
from program import same_bits, zyngrad

import zyn3dgradop as z

meshio = pytest.importorskip("meshio")

LINEAR = np.array([2.0, -3.0, 1.0])


def linear(points):
    return points @ LINEAR + 5.0


def named_quads(quads, patch):
    """Cell data as meshio's Gmsh reader makes it."""
    return [("quad", quads)], patch + 1, {name: np.array([k + 1, 2]) for k, name in enumerate(sources.NAMES)}


def assert_least_squares_is_exact(mesh, centres):
    """The slope of a linear field, given in the source's order and with the boundary values of its formula."""
    phi = mesh.expand(linear(centres))
    ghosts = np.flatnonzero(np.asarray(mesh.source_cell) < 0)
    phi[ghosts] = linear(mesh.centres[:, ghosts].T)
    np.testing.assert_allclose(mesh.result(phi), linear(centres), rtol=0, atol=0)
    result = mesh.result(z.Gradient(mesh, "least_squares")(phi))
    assert result.shape == (len(centres), 3)
    np.testing.assert_allclose(result, np.broadcast_to(LINEAR, result.shape), rtol=0, atol=1e-9)


def test_hexahedra_with_named_boundary():
    """Geometry and plain gradient of shuffled cells are those of numpy, cell by cell in the source's order."""
    grid = Grid(4, 3, 5)
    blocks, numbers, names = named_quads(grid.boundary_nodes, grid.boundary_patch)
    source = meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), *blocks], field_data=names,
                         cell_data={"gmsh:physical": [np.zeros(grid.n, int), numbers]})
    mesh = z.Mesh.from_meshio(source)
    assert (mesh.cell_count, mesh.inner_face_count, mesh.boundary_face_count) == (grid.n, grid.nf, grid.nb)
    assert mesh.check() == []
    np.testing.assert_allclose(mesh.result(np.pad(mesh.volumes, (0, grid.nb))), grid.volumes, rtol=1e-13)
    np.testing.assert_allclose(mesh.result(mesh.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-14)

    groups = {patch.name: patch.group for patch in mesh.patches}
    assert {name: groups[name] for name in sources.NAMES} == {
        "inlet": "inlet", "outlet": "outlet", "wall_ymin": "wall", "wall_ymax": "wall", "floor": "wall", "lid": "wall"}
    for number, name in enumerate(sources.NAMES):
        found = mesh.centres[:, mesh.ghost_cells(name)].T
        expected = grid.boundary_centres[:, grid.boundary_patch == number].T
        np.testing.assert_allclose(found[np.lexsort(found.T)], expected[np.lexsort(expected.T)], rtol=0, atol=1e-14)

    def wavy(x, y, z):
        return np.sin(3 * x) * y + z**2

    phi = mesh.expand(wavy(*grid.centres[:, :grid.n]))
    for name in sources.NAMES:
        cells = mesh.ghost_cells(name)
        phi[cells] = wavy(*mesh.centres[:, cells])
    expected = grids.plain(grid, grid.field(wavy))
    np.testing.assert_allclose(mesh.result(z.Gradient(mesh)(phi)), expected.T, rtol=0, atol=1e-13 * np.abs(expected).max())


@pytest.mark.parametrize("make", [sources.mixed, sources.tetrahedra])
@pytest.mark.parametrize("mirrored", [False, True])
def test_every_cell_type(make, mirrored):
    """Also inside out, as some programs write cells."""
    points, cells = make()
    if mirrored:
        points = points * np.array([-1.0, 1.0, 1.0])
    mesh = z.Mesh.from_meshio(meshio.Mesh(points, list(cells.items())))
    assert mesh.check() == []
    assert mesh.cell_count == sum(map(len, cells.values()))
    centres = mesh.result(mesh.centres)
    first = 0
    for kind, rows in cells.items():
        if kind in ("tetra", "hexahedron"):  # the average of nodes is the centre of no other
            np.testing.assert_allclose(centres[first:first + len(rows)], sources.centres(points, rows), rtol=0, atol=1e-13)
        first += len(rows)
    assert_least_squares_is_exact(mesh, centres)


def test_blocks_of_a_type_may_be_scattered():
    """meshio keeps the order of a file in many blocks."""
    grid = Grid(4, 3, 5)
    source = meshio.Mesh(grid.points, [
        ("hexahedron", grid.hexahedra[:7]), ("quad", grid.boundary_nodes[:3]), ("vertex", [[0], [1]]),
        ("hexahedron", grid.hexahedra[7:20]), ("line", [[0, 1]]), ("hexahedron", grid.hexahedra[20:])])
    mesh = z.Mesh.from_meshio(source)
    np.testing.assert_allclose(mesh.result(mesh.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-14)
    everything = mesh.result(mesh.centres[0].copy(), fill=np.nan)
    assert everything.shape == (grid.n + 6,)
    assert np.flatnonzero(np.isnan(everything)).tolist() == [7, 8, 9, 10, 11, 25]
    assert same_bits(mesh.expand(everything), mesh.expand(mesh.result(mesh.centres[0].copy())))


def test_polyhedra():
    """Cubes given as polyhedra beside cubes given as hexahedra: the mesh is that of hexahedra alone."""
    grid = Grid(4, 3, 5)
    blocks, numbers, names = named_quads(grid.boundary_nodes, grid.boundary_patch)
    faces = ((0, 3, 2, 1), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7))
    as_polyhedra = [[cell[list(face)][::(-1) ** number] for number, face in enumerate(faces)]
                    for cell in grid.hexahedra[25:]]  # every other face runs the wrong way, as files have it
    data = {"gmsh:physical": [np.zeros(25, int), np.zeros(grid.n - 25, int), numbers]}
    source = meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra[:25]), ("polyhedron8", as_polyhedra), *blocks],
                         cell_data=data, field_data=names)
    mesh = z.Mesh.from_meshio(source)
    assert mesh.check() == []
    assert (mesh.inner_face_count, mesh.boundary_face_count) == (grid.nf, grid.nb)
    np.testing.assert_allclose(mesh.result(mesh.centres), grid.centres[:, :grid.n].T, rtol=0, atol=1e-13)
    assert [len(mesh.ghost_cells(name)) for name in sources.NAMES] == np.bincount(grid.boundary_patch).tolist()
    assert_least_squares_is_exact(mesh, mesh.result(mesh.centres))


@pytest.mark.parametrize("make", [sources.mixed, sources.tetrahedra])
def test_standard_cells_beside_a_polyhedron(make):
    """One polyhedron among them, and all cells go by their faces: the mesh is that of standard cells."""
    points, cells = make()
    kind, rows = next(iter(cells.items()))
    faces = {"hexahedron": ((0, 3, 2, 1), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7)),
             "tetra": ((0, 1, 2), (0, 1, 3), (1, 2, 3), (2, 0, 3))}[kind]
    polyhedron = ("polyhedron", [[rows[0][list(face)] for face in faces]])
    others = [(other, block) for other, block in cells.items() if other != kind]
    mesh = z.Mesh.from_meshio(meshio.Mesh(points, [polyhedron, (kind, rows[1:]), *others]))
    standard = z.Mesh.from_meshio(meshio.Mesh(points, list(cells.items())))
    assert mesh.check() == []
    assert (mesh.inner_face_count, mesh.boundary_face_count) == (standard.inner_face_count, standard.boundary_face_count)
    for name in ("centres", "volumes"):
        ours, theirs = getattr(mesh, name), getattr(standard, name)
        if name == "volumes":
            ours, theirs = (np.pad(one, (0, mesh.ghost_count)) for one in (ours, theirs))
        np.testing.assert_allclose(mesh.result(ours), standard.result(theirs), rtol=0, atol=1e-14)
    assert_least_squares_is_exact(mesh, mesh.result(mesh.centres))


def test_polyhedra_that_are_refused():
    """A face of three cells, and a cell that is not closed."""
    points, cells = sources.tetrahedra()
    tetrahedron = [[0, 1, 2], [0, 1, 3], [1, 2, 3], [2, 0, 3]]
    apart = [[[node + 4 for node in face] for face in tetrahedron]]
    with pytest.raises(ValueError, match="3 cells share"):
        z.Mesh.from_meshio(meshio.Mesh(points, [("polyhedron4", [tetrahedron] * 3)]))
    with pytest.raises(ValueError) as caught:
        z.Mesh.from_meshio(meshio.Mesh(np.random.default_rng(1).uniform(size=(8, 3)),
                                       [("polyhedron4", [tetrahedron[:3]] + apart)]))
    assert "\n" not in str(caught.value)


def test_first_of_several_sets_has_the_face():
    grid = Grid(3, 3, 3)
    sets = {"first": [None, np.arange(10)], "second": [None, np.arange(5, 20)]}
    mesh = z.Mesh.from_meshio(meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), ("quad", grid.boundary_nodes)],
                                          cell_sets=sets))
    assert [len(mesh.ghost_cells(name)) for name in ("first", "second", "unnamed")] == [10, 10, 34]


def test_cell_sets_name_the_boundary():
    grid = Grid(3, 3, 3)
    sets = {name: [np.zeros(0, int), np.flatnonzero(grid.boundary_patch == k)] for k, name in enumerate(sources.NAMES[:4])}
    sets["all cells"] = [np.arange(grid.n), None]
    mesh = z.Mesh.from_meshio(meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), ("quad", grid.boundary_nodes)],
                                          cell_sets=sets))
    assert [len(mesh.ghost_cells(name)) for name in (*sources.NAMES[:4], "unnamed")] == [9, 9, 9, 9, 18]


def test_groups_of_patches():
    grid = Grid(3, 3, 3)
    data = {"su2:tag": [np.zeros(grid.n, int), grid.boundary_patch], "mine": [np.zeros(grid.n, int), grid.boundary_patch // 2]}
    source = meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), ("quad", grid.boundary_nodes)], cell_data=data)
    by_tag = z.Mesh.from_meshio(source, groups={"patch 0": "inlet", "patch 3": "symmetry"}, default_group="outlet")
    assert {kind: count for kind, count in by_tag.boundary_kinds.items() if count} == {
        "inlet": 9, "outlet": 36, "symmetry": 9}
    chosen = z.Mesh.from_meshio(source, patches="mine")
    assert [len(chosen.ghost_cells(f"patch {k}")) for k in range(3)] == [18, 18, 18]
    with pytest.raises(ValueError, match="nowhere"):
        z.Mesh.from_meshio(source, groups={"nowhere": "wall"})
    with pytest.raises(ValueError, match="walls"):
        z.Mesh.from_meshio(source, groups={"patch 0": "walls"})
    with pytest.raises(ValueError, match="default_group"):
        z.Mesh.from_meshio(source, default_group="floor")
    with pytest.raises(ValueError, match="'yours'.*'mine'"):
        z.Mesh.from_meshio(source, patches="yours")


FORMATS = ["vtu", "vtk", "su2", "med", "msh", "ansys", "mesh", "inp", "cgns", "xdmf", "avs"]


@pytest.mark.parametrize("suffix", FORMATS)
def test_file_formats(work, suffix):
    """What meshio writes and reads comes in with all its cells, in their order, by name or as an object."""
    points, cells = sources.tetrahedra()
    if suffix in ("med", "cgns", "xdmf"):
        pytest.importorskip("h5py")
    name, file_format = {"ansys": ("mesh.msh", "ansys"), "avs": ("mesh.inp", "avsucd"), "msh": ("mesh.msh", "gmsh"),
                         "inp": ("mesh.inp", "abaqus")}.get(suffix, (f"mesh.{suffix}", None))
    extra = {"cell_data": {"cell_tags": [np.zeros(len(cells["tetra"]), int)]}} if suffix == "med" else {}
    source = meshio.Mesh(points, list(cells.items()), **extra)
    if suffix == "med":
        source.cell_tags = {}
    meshio.write(name, source, file_format=file_format)
    mesh = z.Mesh.from_meshio(name) if suffix not in ("ansys", "avs") else z.Mesh.from_meshio(
        meshio.read(name, file_format=file_format))
    assert mesh.check() == []
    np.testing.assert_allclose(mesh.result(mesh.centres), sources.centres(points, cells["tetra"]), rtol=0, atol=1e-9)
    assert_least_squares_is_exact(mesh, sources.centres(mesh_points(name, file_format), cells["tetra"]))


def mesh_points(name, file_format):
    """As the file has them: some formats write fewer digits."""
    return meshio.read(name, file_format=file_format).points


@pytest.mark.parametrize("shape", ["hex", "tet", "prism"])
def test_output_of_the_program_comes_back(work, shape):
    """The program's VTU file, read by meshio: plain gradients agree up to the rounding of another order of faces."""
    box = f"box:4,3,5:{shape}:perturb=0.2,seed=3"
    zyngrad("gradient", box, "--field", "x*y + z*z", "--method", "plain", "-o", "out")
    written = meshio.read("out/gradient.vtu")
    mesh = z.Mesh.from_meshio(written)
    phi = mesh.expand(written.cell_data["field"][0])
    ghosts = np.flatnonzero(np.asarray(mesh.source_cell) < 0)
    x, y, zz = mesh.centres[:, ghosts]
    phi[ghosts] = x * y + zz * zz
    expected = written.cell_data["gradient_plain"][0]
    np.testing.assert_allclose(mesh.result(z.Gradient(mesh)(phi)), expected, rtol=0, atol=1e-12 * np.abs(expected).max())


@pytest.mark.parametrize("cells, message", [
    ([("triangle", [[0, 1, 2]])], "no three-dimensional cells"),
    ([], "no three-dimensional cells"),
    ([("tetra10", [list(range(10))] * 4), ("tetra", [[0, 1, 2, 3]])], "4 of type tetra10"),
    ([("tetra", [[0, 1, 2, 3]]), ("hexahedron20", [list(range(20))] * 3), ("tetra10", [list(range(10))] * 2)],
     "3 of type hexahedron20, 2 of type tetra10"),
    ([("tetra", [[0, 1, 2, 30]])], "node 30 .* 20 points"),
    ([("tetra", [[0, 1, 2, -1]])], "node -1 "),
    ([("tetra", [[0, 1, 2, 2]])], "twice"),
    ([("tetra", [[0, 1, 2, 3], [0, 1, 2, 3]])], "same side|two sides"),
])
def test_meshes_that_are_refused(cells, message):
    random = np.random.default_rng(1)
    source = meshio.Mesh(random.uniform(size=(20, 3)), cells)
    with pytest.raises(ValueError, match=message) as caught:
        z.Mesh.from_meshio(source)
    assert "\n" not in str(caught.value)


def test_flat_points_are_refused():
    with pytest.raises(ValueError, match="two coordinates"):
        z.Mesh.from_meshio(meshio.Mesh(np.zeros((3, 2)), [("triangle", [[0, 1, 2]])]))


@pytest.mark.parametrize("source", [None, 3, [], np.zeros((3, 3))])
def test_other_objects_are_refused(source):
    with pytest.raises(TypeError, match="meshio.Mesh"):
        z.Mesh.from_meshio(source)


def test_file_without_meshio(monkeypatch, work):
    monkeypatch.setitem(sys.modules, "meshio", None)
    with pytest.raises(ImportError, match="needs meshio") as caught:
        z.Mesh.from_meshio("mesh.vtu")
    assert "\n" not in str(caught.value)


def test_expand_and_result(random):
    """Scalars, vectors, boundary values for all, for patches and for each face."""
    grid = Grid(3, 3, 3)
    blocks, numbers, names = named_quads(grid.boundary_nodes, grid.boundary_patch)
    mesh = z.Mesh.from_meshio(meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), *blocks], field_data=names,
                                          cell_data={"gmsh:physical": [np.zeros(grid.n, int), numbers]}))
    scalar, vector = random.uniform(size=grid.n), random.uniform(size=(grid.n, 3))
    phi, velocity = mesh.expand(scalar), mesh.expand(vector)
    assert phi.shape == (mesh.total_count,) and velocity.shape == (3, mesh.total_count)
    assert velocity.flags.c_contiguous and velocity.dtype == np.float64
    assert same_bits(mesh.result(phi), scalar) and same_bits(mesh.result(velocity), vector)
    assert np.array_equal(phi[grid.n:], phi[mesh.boundary_owner]), "the values of the cells at the boundary"

    given = random.uniform(size=(9, 3))
    velocity = mesh.expand(vector, {"inlet": [1.0, 2.0, 3.0], "outlet": 7.0, "lid": given})
    assert (velocity[:, mesh.ghost_cells("inlet")] == np.array([[1.0], [2.0], [3.0]])).all()
    assert (velocity[:, mesh.ghost_cells("outlet")] == 7.0).all()
    assert np.array_equal(velocity[:, mesh.ghost_cells("lid")].T, given)
    floor = mesh.ghost_cells("floor")
    assert np.array_equal(velocity[:, floor], velocity[:, mesh.boundary_owner[floor - grid.n]])
    assert (mesh.expand(scalar, 4.0)[grid.n:] == 4.0).all()
    assert same_bits(mesh.expand(scalar[:, None]), phi), "one component is a number"

    three = z.Gradient(mesh).three(velocity)
    rows = mesh.result(three)
    assert rows.shape == (grid.n, 3, 3)
    for i in range(3):
        assert same_bits(np.ascontiguousarray(rows[:, i]), mesh.result(z.Gradient(mesh)(velocity[i])))

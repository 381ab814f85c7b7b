"""Arrays are borrowed: never copied, never written except `out`, and kept alive as long as anything reads them."""

import gc
import sys
import weakref

import numpy as np
import pytest
from program import same_bits

import zyn3dgradop as z

FLOATS = ("centres", "volumes", "areas", "face_centres", "weights", "boundary_areas", "boundary_centres", "nodes")
NUMBERS = ("owner", "neighbour", "boundary_owner", "face_nodes", "face_node_start")


def guarded(array, guard=np.nan, width=64):
    """The same numbers in the middle of a block whose other elements must stay as they are."""
    block = np.full(array.size + 2 * width, guard, dtype=array.dtype)
    inside = block[width:width + array.size].reshape(array.shape)
    inside[...] = array
    return block, inside


@pytest.fixture
def arrays(grid):
    return {name: np.array(values) for name, values in {**grid.arrays(), **grid.nodes()}.items()}


@pytest.fixture
def phi(grid):
    return grid.field(lambda x, y, z: x * y + z * z)


def every_call(mesh, phi):
    """Each operator applied to the mesh, with what it returned."""
    fields = np.stack([phi, 2 * phi, phi - 1])
    points = np.ascontiguousarray(mesh.centres[:, :5]) + 0.01
    for method in ("plain", "iterated", "least_squares", "radial_basis"):
        gradient = z.Gradient(mesh, method)
        yield f"{method}", lambda out, g=gradient: g(phi, out), (3, phi.size)
        yield f"{method} three", lambda out, g=gradient: g.three(fields, out), (3, 3, phi.size)
    yield "weighted", lambda out: z.Gradient(mesh).weighted(phi, 1 + phi * phi, out), (3, phi.size)
    faces = z.FaceInterpolation(mesh, "inner", method=2, number=10)
    yield "faces", lambda out: faces(phi, out), (mesh.inner_face_count,)
    at_points = z.PointInterpolation(mesh, points, method=2, number=10)
    yield "points", lambda out: at_points(phi, out), (5,)
    yield "points with gradient", lambda out: at_points.with_gradient(phi, out), (4, 5)


def test_nothing_outside_the_arrays_is_touched_and_nothing_inside_but_out(work, arrays, phi):
    blocks, inside = {}, {}
    for name, values in arrays.items():
        blocks[name], inside[name] = guarded(values, np.nan if name in FLOATS else -7)
    before = {name: block.tobytes() for name, block in blocks.items()}
    mesh = z.Mesh(**inside)
    field_block, field = guarded(phi)
    field_before = field_block.tobytes()
    for name, call, shape in every_call(mesh, field):
        out_block, out = guarded(np.zeros(shape), guard=-12345.5)
        assert call(out) is out, name
        assert np.isfinite(out).all(), name
        assert (out_block[:64] == -12345.5).all() and (out_block[-64:] == -12345.5).all(), name
        assert field_block.tobytes() == field_before, name
    mesh.check()
    mesh.quality()
    for name, block in blocks.items():
        assert block.tobytes() == before[name], name


def test_out_has_the_bits_of_a_new_array(work, arrays, phi):
    for name, call, shape in every_call(z.Mesh(**arrays), phi):
        new = call(None)
        assert new.shape == shape and new.dtype == np.float64 and new.flags.c_contiguous and new.flags.owndata, name
        assert same_bits(call(np.full(shape, np.nan)), new), name


def test_floats_are_not_copied(work, arrays, phi):
    """A change of a borrowed array is seen by the next call, through the same memory."""
    mesh = z.Mesh(**arrays)
    for name in FLOATS:
        assert np.shares_memory(getattr(mesh, name), arrays[name]), name
    gradient = z.Gradient(mesh)
    before = gradient(phi)
    arrays["volumes"] *= 2.0
    assert same_bits(gradient(phi), before / 2.0)


def test_numbers_are_copied(arrays, phi):
    mesh = z.Mesh(**arrays)
    before = z.Gradient(mesh)(phi)
    for name in NUMBERS:
        arrays[name][:] = -1
    assert same_bits(z.Gradient(mesh)(phi), before)


def test_arrays_that_a_mesh_shows_are_read_only(work, arrays):
    for mesh in (z.Mesh(**arrays), z.Mesh.read("box:2,2,2")):
        for name in FLOATS + NUMBERS:
            with pytest.raises(ValueError):
                getattr(mesh, name)[...] = 0


def test_mesh_keeps_its_arrays(grid, phi):
    expected = z.Gradient(z.Mesh(**grid.arrays()))(phi)
    arrays = {name: np.array(values) for name, values in grid.arrays().items()}
    alive = {name: weakref.ref(values) for name, values in arrays.items()}
    mesh = z.Mesh(**arrays)
    del arrays
    gc.collect()
    # Fresh arrays take the place of any that was freed.
    refill = [np.full_like(values, -1) for values in grid.arrays().values()]
    assert all(alive[name]() is not None for name in FLOATS if name in alive)
    assert same_bits(z.Gradient(mesh)(phi), expected)
    del mesh, refill
    gc.collect()
    assert not any(reference() is not None for reference in alive.values())


def test_operators_keep_their_mesh(work, grid, phi):
    arrays = {name: np.array(values) for name, values in {**grid.arrays(), **grid.nodes()}.items()}
    volumes = weakref.ref(arrays["volumes"])
    mesh = z.Mesh(**arrays)
    operators = [z.Gradient(mesh, "least_squares"), z.FaceInterpolation(mesh), z.PointInterpolation(mesh, mesh.centres[:, :3].copy())]
    expected = [operator(phi) for operator in operators]
    del mesh, arrays
    gc.collect()
    for operator, result in zip(operators, expected):
        assert volumes() is not None
        assert same_bits(operator(phi), result)
    del operators, operator
    gc.collect()
    assert volumes() is None


def test_views_of_a_mesh_outlive_it(arrays):
    mesh = z.Mesh(**arrays)
    owner, centres = mesh.owner, mesh.centres
    expected = arrays["owner"].copy()
    del mesh
    gc.collect()
    assert np.array_equal(owner, expected)
    assert np.array_equal(centres, arrays["centres"])


def test_calls_leave_no_references(work, arrays, phi):
    calls = list(every_call(z.Mesh(**arrays), phi))
    for name, call, shape in calls:
        out = np.empty(shape)
        call(out)
        counts = sys.getrefcount(phi), sys.getrefcount(out)
        for _ in range(50):
            call(out)
        assert (sys.getrefcount(phi), sys.getrefcount(out)) == counts, name


def test_failed_calls_leave_no_references(arrays, phi):
    gradient = z.Gradient(z.Mesh(**arrays))
    bad = np.empty((3, 7))
    counts = sys.getrefcount(phi), sys.getrefcount(bad)
    for _ in range(50):
        with pytest.raises(ValueError):
            gradient(phi, bad)
    assert (sys.getrefcount(phi), sys.getrefcount(bad)) == counts


def test_meshes_that_could_not_be_made_leave_no_references(grid):
    arrays = {name: np.array(values) for name, values in grid.arrays().items()}
    arrays["boundary_owner"][-1] = grid.n
    counts = {name: sys.getrefcount(values) for name, values in arrays.items()}
    for _ in range(50):
        with pytest.raises(ValueError):
            z.Mesh(**arrays)
    assert {name: sys.getrefcount(values) for name, values in arrays.items()} == counts


def test_update_sees_moved_points(work, grid, phi):
    """A mesh that moved in place gives the bits of a new one in the new place."""
    arrays = {name: np.array(values) for name, values in {**grid.arrays(), **grid.nodes()}.items()}
    mesh = z.Mesh(**arrays)
    operators = {method: z.Gradient(mesh, method) for method in ("plain", "iterated", "least_squares", "radial_basis")}
    for name in ("centres", "face_centres", "boundary_centres", "nodes"):
        arrays[name][0] *= 2.0
    for name in ("areas", "boundary_areas"):
        arrays[name][1:] *= 2.0
    arrays["volumes"] *= 2.0
    new = z.Mesh(**{name: np.array(values) for name, values in arrays.items()})
    for method, operator in operators.items():
        old = operator(phi) if method in ("least_squares", "radial_basis") else None
        operator.update()
        result = operator(phi)
        assert same_bits(result, z.Gradient(new, method)(phi)), method
        assert old is None or not same_bits(old, result), method

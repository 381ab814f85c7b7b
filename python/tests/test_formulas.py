"""Gradients of a mesh from arrays against formulas written down with numpy, which knows nothing of the library.

The sums are the same in another order of additions, so they agree up to rounding: a cell adds six products of the size
of phi S / V, each rounded three times, which 1e-13 of the largest slope allows for.
"""

import grids
import numpy as np
import pytest

import zyn3dgradop as z

ROUNDING = 1e-13


def wavy(x, y, z):
    return np.sin(3 * x) * y + z**2 - x * z


@pytest.fixture(params=[(4, 3, 5), (1, 1, 1), (7, 1, 2)], ids=str)
def grid(request):
    return grids.Grid(*request.param)


def assert_close(grid, result, expected):
    assert result.shape == (3, grid.n + grid.nb)
    largest = np.abs(expected).max()
    assert largest > 0.1
    np.testing.assert_allclose(result[:, :grid.n], expected, rtol=0, atol=ROUNDING * largest)
    assert not result[:, grid.n:].any(), "ghost cells have no gradient"


def test_plain(grid):
    grid = grid.displaced(0.05)
    phi = grid.field(wavy)
    assert_close(grid, z.Gradient(z.Mesh(**grid.arrays()))(phi), grids.plain(grid, phi))


@pytest.mark.parametrize("sweeps", [1, 2, 5])
def test_iterated(grid, sweeps):
    grid = grid.displaced(0.05)
    phi = grid.field(wavy)
    result = z.Gradient(z.Mesh(**grid.arrays()), "iterated")(phi, sweeps=sweeps)
    assert_close(grid, result, grids.iterated(grid, phi, sweeps))
    if sweeps > 1 and grid.nf > 20:
        step = result[:, :grid.n] - grids.iterated(grid, phi, sweeps - 1)
        assert np.abs(step).max() > 1e-4, "each sweep corrects something"


def test_iterated_makes_three_sweeps_unless_told():
    grid = grids.Grid(4, 3, 5).displaced(0.05)
    phi = grid.field(wavy)
    assert_close(grid, z.Gradient(z.Mesh(**grid.arrays()), "iterated")(phi), grids.iterated(grid, phi, 3))


def test_weighted(grid, random):
    grid = grid.displaced(0.05)
    phi, kappa = grid.field(wavy), random.uniform(0.1, 10.0, grid.n + grid.nb)
    assert_close(grid, z.Gradient(z.Mesh(**grid.arrays())).weighted(phi, kappa), grids.weighted(grid, phi, kappa))


def test_least_squares(grid):
    grid = grid.displaced(0.02)
    phi = grid.field(wavy)
    result = z.Gradient(z.Mesh(**grid.arrays()), "least_squares")(phi)
    expected = grids.least_squares(grid, phi)
    # Elimination without pivoting: the condition of the moments, below 1e3 here, multiplies the rounding.
    np.testing.assert_allclose(result[:, :grid.n], expected, rtol=0, atol=1e3 * ROUNDING * np.abs(expected).max())


def test_linear_field_is_exact_where_it_must_be():
    """Least squares on any mesh; Green-Gauss on parallelepipeds whose centres stand in a line, as these do."""
    grid = grids.Grid(4, 4, 4)
    phi = grid.field(lambda x, y, z: 2 * x - 3 * y + z + 5)
    for method in ("plain", "iterated", "least_squares"):
        result = z.Gradient(z.Mesh(**grid.arrays()), method)(phi)[:, :grid.n]
        np.testing.assert_allclose(result, np.array([[2.0], [-3.0], [1.0]]) + np.zeros(grid.n), rtol=0, atol=1e-11)


def test_orientation_of_faces_is_the_callers(grid):
    """The neighbour may have the lower number; turning faces around changes nothing but the rounding."""
    arrays = grid.arrays()
    turned = np.arange(grid.nf) % 2 == 1
    arrays["owner"] = np.where(turned, grid.neighbour, grid.owner)
    arrays["neighbour"] = np.where(turned, grid.owner, grid.neighbour)
    arrays["areas"] = np.where(turned, -grid.areas, grid.areas)
    arrays["weights"] = np.where(turned, 1.0 - grid.weights, grid.weights)
    phi = grid.field(wavy)
    assert_close(grid, z.Gradient(z.Mesh(**arrays))(phi), grids.plain(grid, phi))


def test_mesh_of_one_layer_with_empty_faces():
    """Green-Gauss leaves the front and the back out; least squares needs them, and sees no slope across."""
    grid = grids.Grid(5, 4, 1, shear=0.0)
    order = np.argsort(grid.boundary_patch >= 4, kind="stable")  # front and back last
    arrays = grid.arrays()
    arrays["boundary_owner"] = grid.boundary_owner[order]
    for name in ("boundary_areas", "boundary_centres"):
        arrays[name] = np.ascontiguousarray(arrays[name][:, order])
    arrays["centres"] = np.ascontiguousarray(
        np.concatenate([grid.centres[:, :grid.n], arrays["boundary_centres"]], axis=1))
    n_empty = int((grid.boundary_patch >= 4).sum())
    mesh = z.Mesh(**arrays, empty_faces=n_empty)
    assert mesh.empty_face_count == n_empty == 2 * grid.n
    phi = 3 * arrays["centres"][0] - arrays["centres"][1]
    values = phi.copy()
    values[-n_empty:] = np.nan  # Green-Gauss must not read them
    for method, field in (("plain", values), ("least_squares", phi)):
        result = z.Gradient(mesh, method)(field)[:, :grid.n]
        np.testing.assert_allclose(result, np.array([[3.0], [-1.0], [0.0]]) + np.zeros(grid.n), rtol=0, atol=1e-12)


def test_radial_basis_reproduces_what_it_promises(grid, work):
    """Constants have no slope; a linear field has its slope up to the square of 1/span, at most 1e-3 at 500."""
    if grid.n < 10:
        pytest.skip("cells at the boundary alone")
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    gradient = z.Gradient(mesh, "radial_basis")
    ones = np.ones(grid.n + grid.nb)
    assert np.abs(gradient(ones)[:, :grid.n]).max() < 1e-8
    phi = grid.field(lambda x, y, z: 2 * x - 3 * y + z)
    np.testing.assert_allclose(gradient(phi)[:, :grid.n], np.array([[2.0], [-3.0], [1.0]]) + np.zeros(grid.n), atol=5e-3)


@pytest.mark.parametrize("method", [1, 2, 3, 4])
def test_faces_reproduce_a_smooth_field(work, method):
    grid = grids.Grid(6, 6, 6, shear=0.1)
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    faces = z.FaceInterpolation(mesh, "inner", method=method, span=100, number=20)
    np.testing.assert_allclose(faces.targets, grid.face_centres, rtol=0, atol=1e-14)
    phi = grid.field(lambda x, y, z: np.sin(2 * x) * y + z**2)
    exact = np.sin(2 * grid.face_centres[0]) * grid.face_centres[1] + grid.face_centres[2]**2
    error = np.abs(faces(phi) - exact)
    assert np.median(error) < 0.01 and error.max() < 0.1


@pytest.mark.parametrize("method", [1, 2, 3])
def test_points_reproduce_a_smooth_field(work, random, method):
    grid = grids.Grid(6, 6, 6, shear=0.1)
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    points = np.ascontiguousarray(grid.points[grid.hexahedra[:20]].mean(axis=1).T + random.uniform(-0.02, 0.02, (3, 20)))
    at_points = z.PointInterpolation(mesh, points, method=method, span=100)
    phi = grid.field(lambda x, y, z: np.sin(2 * x) * y + z**2)
    found = at_points.with_gradient(phi)
    x, y, zz = points
    for row, exact, bound in zip(found, (np.sin(2 * x) * y + zz**2, 2 * np.cos(2 * x) * y, np.sin(2 * x), 2 * zz),
                                 (0.02, 0.2, 0.2, 0.2)):
        assert np.median(np.abs(row - exact)) < bound
    assert np.array_equal(found[0], at_points(phi))

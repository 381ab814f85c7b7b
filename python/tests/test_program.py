"""Every operator on a mesh that the reference host has read gives the bits of zyngrad on the same mesh.

Both read the mesh by the same reader into the same records. zyngrad writes its results as raw bytes, so nothing is lost
on the way; points.vtp has those of the points.
"""

import numpy as np
import pytest
from program import arrays_of, same_bits, zyngrad

import zyn3dgradop as z

FORMULAS = ("x*y + z*z", "2*x - y*z", "z*x*x - y")


def phi(x, y, z):
    return x * y + z * z


def second(x, y, z):
    return 2 * x - y * z


def third(x, y, z):
    return z * x * x - y


WEIGHT = "1 + x*y"


def kappa(x, y, z):
    return 1 + x * y


MESHES = {
    "hex": ("box:6,5,4:hex:perturb=0.2,seed=3", {}),
    "stretched": ("box:5,6,5:hex:stretch=100", {}),
    "tet": ("box:4,4,4:tet:perturb=0.2,seed=3", {}),
    "prism": ("box:4,3,5:prism", {}),
    "polyhedra": ("box:3,4,3:dual:perturb=0.2,seed=5", {}),
    "symmetry": ("box:4,4,4:tet", {"wall_ymin": "symmetry", "wall_ymax": "symmetry"}),
    "polyMesh": ("tests/data/openfoam_warped", {}),
}


@pytest.fixture(scope="module", params=MESHES)
def case(request, source):
    """The mesh as the module has it, and the arguments of the program for it."""
    name, groups = MESHES[request.param]
    path = name if name.startswith("box:") else str(source / name)
    options = [word for patch, group in groups.items() for word in ("--group", f"{patch}={group}")]
    return z.Mesh.read(path, groups=groups), [path, *options]


def own_cells(mesh, result):
    """The columns of the interior cells, as rows."""
    return np.ascontiguousarray(result[:, :mesh.cell_count].T)


@pytest.fixture(scope="module")
def program_gradients(case, tmp_path_factory):
    _, arguments = case
    out = tmp_path_factory.mktemp("gradient")
    fields = [word for formula in FORMULAS for word in ("--field", formula)]
    zyngrad("gradient", *arguments, *fields, "--weight", WEIGHT, "--sweeps", 4, "--repeat", 1, "-o", out)
    return arrays_of(out / "gradient.vtu")


@pytest.mark.parametrize("method, call, array", [
    ("plain", lambda g, f: g(f), "gradient_plain"),
    ("iterated", lambda g, f: g(f, sweeps=4), "gradient_iterated"),
    ("least_squares", lambda g, f: g(f), "gradient_lsq"),
    ("radial_basis", lambda g, f: g(f), "gradient_rbf"),
])
def test_gradient_has_the_bits_of_the_program(case, program_gradients, work, method, call, array):
    mesh, _ = case
    field = phi(*mesh.centres)
    assert same_bits(field[:mesh.cell_count], program_gradients["field_1"])
    result = call(z.Gradient(mesh, method), field)
    assert same_bits(own_cells(mesh, result), program_gradients[array])


def test_weighted_gradient_has_the_bits_of_the_program(case, program_gradients):
    mesh, _ = case
    result = z.Gradient(mesh).weighted(phi(*mesh.centres), kappa(*mesh.centres))
    assert same_bits(own_cells(mesh, result), program_gradients["gradient_weighted"])


def test_three_gradients_have_the_bits_of_the_program(case, program_gradients):
    mesh, _ = case
    fields = np.stack([f(*mesh.centres) for f in (phi, second, third)])
    result = z.Gradient(mesh).three(fields)
    for k in range(3):
        assert same_bits(own_cells(mesh, result[k]), program_gradients[f"gradient_vector_{k + 1}"])


@pytest.mark.parametrize("sweeps", [2, 7])
def test_number_of_sweeps_is_the_programs(case, tmp_path, sweeps):
    mesh, arguments = case
    zyngrad("gradient", *arguments, "--field", FORMULAS[0], "--method", "iterated", "--sweeps", sweeps, "--repeat", 1,
            "-o", tmp_path)
    result = z.Gradient(mesh, "iterated")(phi(*mesh.centres), sweeps=sweeps)
    assert same_bits(own_cells(mesh, result), arrays_of(tmp_path / "gradient.vtu")["gradient_iterated"])


def test_span_is_the_programs(case, work):
    mesh, arguments = case
    zyngrad("gradient", *arguments, "--field", FORMULAS[0], "--method", "rbf", "--span", 40, "--repeat", 1, "-o",
            work / "out")
    result = z.Gradient(mesh, "radial_basis", span=40)(phi(*mesh.centres))
    assert same_bits(own_cells(mesh, result), arrays_of(work / "out" / "gradient.vtu")["gradient_rbf"])


@pytest.mark.parametrize("method", ["plain", "iterated", "least_squares", "radial_basis"])
def test_three_equals_three_calls(case, work, method):
    mesh, _ = case
    gradient = z.Gradient(mesh, method)
    fields = np.stack([f(*mesh.centres) for f in (phi, second, third)])
    together = gradient.three(fields)
    for k in range(3):
        assert same_bits(together[k], gradient(fields[k]))


@pytest.mark.parametrize("method", [1, 2, 3, 4])
@pytest.mark.parametrize("kind", ["inner", "wall", "inlet", "outlet", "symmetry"])
def test_faces_have_the_bits_of_the_program(case, work, method, kind):
    mesh, arguments = case
    counts = {"inner": mesh.inner_face_count, **mesh.boundary_kinds}
    faces = z.FaceInterpolation(mesh, kind, method=method, span=200, number=15)
    result = faces(phi(*mesh.centres))
    assert result.shape == (faces.face_count,) == (counts.get(kind, 0),)
    if not counts.get(kind, 0):
        return
    zyngrad("faces", *arguments, "--group", kind, "--field", FORMULAS[0], "--search-method", method, "--span", 200,
            "--search-number", 15, "-o", work / "out")
    assert same_bits(result, arrays_of(work / "out" / "faces.vtp")["value"])


@pytest.mark.parametrize("method", [1, 2, 3])
def test_points_have_the_bits_of_the_program(case, work, random, method):
    mesh, arguments = case
    low, high = mesh.nodes.min(axis=1), mesh.nodes.max(axis=1)
    points = low[:, None] + random.uniform(0.1, 0.9, (3, 40)) * (high - low)[:, None]
    lines = ["x,y,z"] + [",".join(map(repr, map(float, point))) for point in points.T]
    (work / "points.csv").write_text("\n".join(lines) + "\n")
    zyngrad("points", *arguments, "--points", work / "points.csv", "--field", FORMULAS[0], "--search-method", method,
            "--span", 200, "--search-number", 15, "-o", work / "out")
    written = arrays_of(work / "out" / "points.vtp")
    at_points = z.PointInterpolation(mesh, points, method=method, span=200, number=15)
    assert at_points.point_count == 40
    field = phi(*mesh.centres)
    assert same_bits(at_points(field), written["value"])
    value_and_gradient = at_points.with_gradient(field)
    assert same_bits(value_and_gradient[0], written["value"])
    assert same_bits(value_and_gradient[1:].T, written["gradient"])


def test_mesh_from_the_arrays_of_a_read_mesh_gives_its_bits(case, work):
    """Arrays in the order of the reference host's records make the same sums."""
    read, _ = case
    arrays = {name: getattr(read, name) for name in (
        "centres", "volumes", "owner", "neighbour", "areas", "face_centres", "weights", "boundary_owner",
        "boundary_areas", "boundary_centres", "nodes", "face_nodes", "face_node_start")}
    mesh = z.Mesh(**arrays, boundary_kinds=read.boundary_kinds)
    field = phi(*read.centres)
    for method in ("plain", "iterated", "least_squares"):
        assert same_bits(z.Gradient(mesh, method)(field), z.Gradient(read, method)(field)), method


def test_a_periodic_mesh_is_rejected_with_the_groups_that_make_walls(source):
    channel = str(source / "tests/data/openfoam_cases/channel")
    with pytest.raises(Exception, match="is periodic.*groups={'left': 'wall'}"):
        z.Mesh.read(channel)
    mesh = z.Mesh.read(channel, groups={"left": "wall", "back": "wall"})
    assert mesh.cell_count == 120

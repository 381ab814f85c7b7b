"""Calls release the interpreter's lock: threads on different objects run at once, threads on one object take turns."""

import threading
import time

import numpy as np
from grids import Grid
from program import same_bits

import zyn3dgradop as z


def phi(x, y, z):
    return x * y + z * z


def in_threads(functions):
    """Runs all functions at the same time and raises what one of them raised."""
    errors = []
    start = threading.Barrier(len(functions))

    def run(function):
        try:
            start.wait()
            function()
        except BaseException as error:  # noqa: B902: whatever it is, the test fails with it
            errors.append(error)

    threads = [threading.Thread(target=run, args=(function,)) for function in functions]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if errors:
        raise errors[0]


def steps_of_python_during(call, repeat):
    """How often a thread of plain Python gets a turn well inside `call`, for each of `repeat` calls."""
    done = threading.Event()
    stamps = []

    def count():
        while not done.is_set():
            stamps.append(time.perf_counter())
            time.sleep(0)

    counter = threading.Thread(target=count)
    counter.start()
    inside = []
    for _ in range(repeat):
        a = time.perf_counter()
        call()
        inside.append((a, time.perf_counter()))
    done.set()
    counter.join()
    return [sum(a + 0.2 * (b - a) < stamp < b - 0.2 * (b - a) for stamp in stamps) for a, b in inside]


def test_python_runs_during_a_call():
    """Well inside a call, between its first and its last fifth, another thread of Python takes steps."""
    mesh = z.Mesh.read("box:50,50,50")
    gradient = z.Gradient(mesh, "iterated")
    field = phi(*mesh.centres)
    out = np.empty((3, mesh.total_count))
    turns = steps_of_python_during(lambda: gradient(field, out, sweeps=20), 5)
    assert max(turns) > 10, turns


def test_python_runs_during_a_set_up(work):
    turns = steps_of_python_during(lambda: z.Mesh.read("box:30,30,30:tet"), 2)
    assert max(turns) > 10, turns
    mesh = z.Mesh.read("box:12,12,12:tet")
    turns = steps_of_python_during(lambda: z.Gradient(mesh, "radial_basis"), 2)
    assert max(turns) > 10, turns


def test_two_meshes_at_once(work):
    """Each thread has the bits that it has alone."""
    grids = [Grid(6, 5, 4, seed=seed) for seed in range(4)]
    fields = [grid.field(phi) for grid in grids]
    arrays = [{**grid.arrays(), **grid.nodes()} for grid in grids]
    methods = ("plain", "iterated", "least_squares", "radial_basis")
    expected = [[z.Gradient(z.Mesh(**of_mesh), method)(field) for method in methods]
                for of_mesh, field in zip(arrays, fields)]

    def work_on(k):
        for _ in range(20):
            mesh = z.Mesh(**arrays[k])
            for method, result in zip(methods, expected[k]):
                assert same_bits(z.Gradient(mesh, method)(fields[k]), result), method

    in_threads([lambda k=k: work_on(k) for k in range(4)])


def test_many_operators_on_one_mesh(work, grid):
    """Iterated Green-Gauss has work arrays of the mesh: they must not mix."""
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    fields = [grid.field(phi) * (k + 1) for k in range(4)]
    expected = [z.Gradient(mesh, "iterated")(field, sweeps=5) for field in fields]
    operators = [z.Gradient(mesh, "iterated") for _ in fields]

    def work_on(k):
        for _ in range(500):
            assert same_bits(operators[k](fields[k], sweeps=5), expected[k])

    in_threads([lambda k=k: work_on(k) for k in range(4)])


def test_many_threads_on_one_operator(work, grid):
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    fields = [grid.field(phi) * (k + 1) for k in range(4)]
    operators = {
        "iterated": z.Gradient(mesh, "iterated"),
        "least_squares": z.Gradient(mesh, "least_squares"),
        "radial_basis": z.Gradient(mesh, "radial_basis"),
        "faces": z.FaceInterpolation(mesh, "inner"),
        "points": z.PointInterpolation(mesh, np.ascontiguousarray(mesh.centres[:, :9])),
    }
    expected = {name: [operator(field) for field in fields] for name, operator in operators.items()}

    def work_on(k):
        for _ in range(300):
            for name, operator in operators.items():
                assert same_bits(operator(fields[k]), expected[name][k]), name

    in_threads([lambda k=k: work_on(k) for k in range(4)])


def test_check_beside_gradients(work, grid):
    mesh = z.Mesh(**grid.arrays(), **grid.nodes())
    field = grid.field(phi)
    expected = z.Gradient(mesh)(field)
    gradient = z.Gradient(mesh)

    def check():
        for _ in range(50):
            assert mesh.check() == []

    def compute():
        for _ in range(500):
            assert same_bits(gradient(field), expected)

    in_threads([check, compute, compute])

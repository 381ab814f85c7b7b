"""Memory does not grow: not Python's, which tracemalloc counts with numpy's arrays, and not that of the process.

A leak of one small object in each of 10 000 calls or 1 000 set-ups shows: 10 000 of 64 bytes are 640 kB, and a set-up
of the mesh of these tests has more than 100 kB.
"""

import gc
import os
import tracemalloc

import numpy as np
import pytest
from grids import Grid

import zyn3dgradop as z

CALLS, SET_UPS = 10_000, 1_000
ROOM = 400_000  # bytes: pools of the allocator and the interpreter


def resident_bytes():
    with open("/proc/self/statm", encoding="ascii") as counts:
        return int(counts.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def growth(action, repeat):
    """(bytes that Python holds, bytes of the process) that are more after `repeat` actions, once all is warm."""
    for _ in range(max(repeat // 5, 20)):
        action()
    gc.collect()
    tracemalloc.start()
    # What tracemalloc itself needs for its first entries is there before the comparison begins.
    for _ in range(20):
        action()
    gc.collect()
    traced, resident = tracemalloc.get_traced_memory()[0], resident_bytes()
    for _ in range(repeat):
        action()
    gc.collect()
    more = tracemalloc.get_traced_memory()[0] - traced, resident_bytes() - resident
    tracemalloc.stop()
    return more


def assert_no_growth(action, repeat):
    traced, resident = growth(action, repeat)
    assert traced < ROOM // 10, f"Python holds {traced} bytes more after {repeat} times"
    assert resident < ROOM, f"the process holds {resident} bytes more after {repeat} times"


@pytest.fixture(scope="module")
def small():
    return Grid(3, 3, 3)


@pytest.fixture(scope="module")
def arguments(small):
    return {**small.arrays(), **small.nodes()}


@pytest.fixture(scope="module")
def phi(small):
    return small.field(lambda x, y, z: x * y + z * z)


@pytest.mark.parametrize("method", ["plain", "iterated", "least_squares", "radial_basis"])
def test_calls_of_a_gradient(work, arguments, phi, method):
    gradient = z.Gradient(z.Mesh(**arguments), method)
    out, fields = np.empty((3, phi.size)), np.stack([phi, phi, phi])
    weight = 1 + phi * phi

    def action():
        gradient(phi)
        gradient(phi, out)
        gradient.three(fields)
        gradient.weighted(phi, weight)

    assert_no_growth(action, CALLS)


def test_calls_of_interpolations(work, arguments, phi):
    mesh = z.Mesh(**arguments)
    faces, points = z.FaceInterpolation(mesh), z.PointInterpolation(mesh, np.ascontiguousarray(mesh.centres[:, :9]))

    def action():
        faces(phi)
        points(phi)
        points.with_gradient(phi)

    assert_no_growth(action, CALLS)


def test_calls_that_fail(arguments, phi):
    gradient = z.Gradient(z.Mesh(**arguments))
    wrong = np.empty((3, 5))

    def action():
        for bad in ((phi, wrong), (phi[::2], None), (phi.astype(np.float32), None)):
            with pytest.raises((TypeError, ValueError)):
                gradient(*bad)

    assert_no_growth(action, CALLS // 4)


@pytest.mark.parametrize("method", ["plain", "iterated", "least_squares", "radial_basis"])
def test_set_ups_of_a_gradient(work, arguments, phi, method):
    assert_no_growth(lambda: z.Gradient(z.Mesh(**arguments), method)(phi), SET_UPS)


def test_set_ups_of_interpolations(work, arguments, phi):
    points = np.ascontiguousarray(arguments["centres"][:, :9])

    def action():
        mesh = z.Mesh(**arguments)
        z.FaceInterpolation(mesh)(phi)
        z.PointInterpolation(mesh, points)(phi)

    assert_no_growth(action, SET_UPS)


def test_set_ups_that_fail(arguments):
    wrong = dict(arguments)
    wrong["boundary_owner"] = wrong["boundary_owner"] + 1000

    def action():
        with pytest.raises(ValueError):
            z.Mesh(**wrong)
        with pytest.raises(ValueError):
            z.Mesh.read("box:0,1,1")

    assert_no_growth(action, SET_UPS)


@pytest.mark.parametrize("method", ["least_squares", "radial_basis"])
def test_updates(work, arguments, phi, method):
    gradient = z.Gradient(z.Mesh(**arguments), method)

    def action():
        gradient.update()
        gradient(phi)

    assert_no_growth(action, SET_UPS)


def test_meshes_that_are_read_and_looked_at(work):
    def action():
        mesh = z.Mesh.read("box:3,3,3:tet")
        mesh.check()
        mesh.quality()
        for name in ("centres", "owner", "nodes", "face_nodes", "source_cell", "patches", "boundary_kinds"):
            getattr(mesh, name)
        mesh.result(mesh.expand(np.ones(mesh.cell_count), {"inlet": 2.0}))

    assert_no_growth(action, SET_UPS)


def test_a_leak_would_show(arguments):
    """The measure itself, on meshes that are kept."""
    kept = []
    traced, resident = growth(lambda: kept.append(z.Mesh(**arguments)), SET_UPS)
    assert resident > ROOM
    kept.clear()
    blocks = []
    traced, _ = growth(lambda: blocks.append(bytearray(64)), CALLS // 10)
    assert traced > ROOM // 10

"""Every argument of every callable, given wrong in every way: an error of the right type in one line, and nothing else.

TypeError is for the kind of object and the type of its elements, ValueError for shape, layout, range and contents. The
message names the argument.
"""

import ast
import copy
import inspect
import os
import pickle

import numpy as np
import pytest
from grids import Grid
from program import same_bits

import zyn3dgradop as z

MPI = pytest.importorskip("mpi4py.MPI")
MISSING = object()


# Ways in which an array of floats can be wrong.

def float32(good):
    return good.astype(np.float32)


def integers(good):
    return good.astype(np.int64)


def complexes(good):
    return good.astype(np.complex128)


def texts(good):
    return good.astype(str)


def objects(good):
    return good.astype(object)


def a_list(good):
    return good.tolist()


def nothing(good):
    return None


def a_number(good):
    return 1.0


def too_short(good):
    return np.ascontiguousarray(good[..., :-1])


def too_long(good):
    return np.ascontiguousarray(np.concatenate([good, good[..., -1:]], axis=-1))


def empty(good):
    return np.ascontiguousarray(good[..., :0])


def one_more_dimension(good):
    return good[None].copy()


def one_component_less(good):
    return good[:-1].copy()


def transposed(good):
    return np.ascontiguousarray(good.T)


def fortran(good):
    return np.asfortranarray(good)


def every_second(good):
    wide = np.repeat(good, 2, axis=-1)
    wide[..., 1::2] = np.nan if good.dtype.kind == "f" else 0
    return wide[..., ::2]


def backwards(good):
    return good[..., ::-1]


def swapped_bytes(good):
    return good.astype(good.dtype.newbyteorder())


def misaligned(good):
    raw = np.empty(good.nbytes + 1, dtype=np.uint8)
    view = raw[1:].view(good.dtype).reshape(good.shape)
    view[...] = good
    return view


def read_only(good):
    good = good.copy()
    good.flags.writeable = False
    return good


OF_TYPE = (float32, integers, complexes, texts, objects, a_list, nothing, a_number)
OF_VECTOR = (too_short, too_long, empty, one_more_dimension, every_second, backwards, swapped_bytes, misaligned)
OF_MATRIX = OF_VECTOR + (one_component_less, transposed, fortran)
VECTOR = [(way, TypeError) for way in OF_TYPE] + [(way, ValueError) for way in OF_VECTOR]
MATRIX = [(way, TypeError) for way in OF_TYPE] + [(way, ValueError) for way in OF_MATRIX]


def optional(cases):
    return [(way, error) for way, error in cases if way is not nothing]


def output(cases):
    return optional(cases) + [(read_only, ValueError)]


# Numbers of cells, nodes and rows are copied, so that any integers in any layout will do, but they must be in range.

def set_last(value, dtype=None):
    def change(good):
        bad = good.copy() if dtype is None else good.astype(dtype)
        bad.flat[-1] = value
        return bad

    change.__name__ = f"last_is_{value}"
    return change


def set_first(value):
    def change(good):
        bad = good.copy()
        bad.flat[0] = value
        return bad

    change.__name__ = f"first_is_{value}"
    return change


def as_floats(good):
    return good.astype(np.float64)


def as_bools(good):
    return good.astype(bool)


NUMBERS = [(way, TypeError) for way in (as_floats, as_bools, complexes, texts, objects, nothing, a_number)] + [
    (way, ValueError) for way in (too_short, too_long, one_more_dimension, set_last(-1), set_last(10**6), set_first(-1),
                                  set_last(2**31 - 1), set_last(2**32, np.int64), set_last(-2**31), set_last(2**63, np.uint64))]


def value(wrong, error):
    def replace(good):
        return wrong

    replace.__name__ = repr(wrong)[:40]
    return replace, error


def values(error, *wrong):
    return [value(one, error) for one in wrong]


A_NUMBER = values(TypeError, None, "3", 2.5, [3], 3j)
COUNT = A_NUMBER + values(ValueError, 0, -1, -2**31) + [value(2**31, (ValueError, TypeError, OverflowError)), value(2**70, (ValueError, TypeError, OverflowError))]


class Sound:
    """Arguments with which every callable works: 60 cells."""

    def __init__(self, grid):
        self.n, self.total = grid.n, grid.n + grid.nb
        self.mesh_arguments = {**grid.arrays(), **grid.nodes(), "boundary_kinds": {"inlet": 5, "wall": grid.nb - 5},
                               "empty_faces": 0, "partition": None}
        self.mesh = z.Mesh(**self.mesh_arguments)
        self.phi = grid.field(lambda x, y, z: x * y + z * z)
        self.points = np.ascontiguousarray(grid.centres[:, :7]) + 0.01
        fields = np.stack([self.phi, 2 * self.phi, 1 - self.phi])
        phi = self.phi
        gradient, faces, points = z.Gradient(self.mesh), z.FaceInterpolation(self.mesh), z.PointInterpolation(
            self.mesh, self.points)
        iterated = z.Gradient(self.mesh, "iterated")
        exchange = z.MpiExchange(MPI.COMM_SELF, {0: [0, 1]}, {0: [2, 3]})
        self.callables = {
            "Mesh": (z.Mesh, self.mesh_arguments),
            "Mesh.read": (z.Mesh.read, {"path": "box:3,3,3", "groups": {"wall_ymin": "symmetry"}, "comm": None}),
            "Mesh.check": (self.mesh.check, {"max_per_kind": 5}),
            "Mesh.ghost_cells": (z.Mesh.read("box:3,3,3").ghost_cells, {"patch": "inlet"}),
            "Mesh.expand": (self.mesh.expand, {"values": phi[:self.n].copy(), "boundary": 1.0}),
            "Mesh.result": (self.mesh.result, {"values": phi, "fill": 0.0}),
            "Gradient": (z.Gradient, {"mesh": self.mesh, "method": "radial_basis", "span": 500.0, "shape_normalize": False,
                                      "exchange_result": True}),
            "Gradient.__call__": (iterated, {"phi": phi, "out": np.empty((3, self.total)), "sweeps": 2}),
            "Gradient.three": (gradient.three, {"phi": fields, "out": np.empty((3, 3, self.total))}),
            "Gradient.weighted": (gradient.weighted, {"phi": phi, "weight": 1 + phi * phi, "out": np.empty((3, self.total))}),
            "FaceInterpolation": (z.FaceInterpolation, {"mesh": self.mesh, "kind": "inner", "method": 2, "span": 100, "number": 10}),
            "FaceInterpolation.__call__": (faces, {"phi": phi, "out": np.empty(grid.nf)}),
            "PointInterpolation": (z.PointInterpolation, {"mesh": self.mesh, "points": self.points, "method": 2, "span": 100,
                                                          "number": 10, "usable": np.ones(self.total, dtype=bool)}),
            "PointInterpolation.__call__": (points, {"phi": phi, "out": np.empty(7)}),
            "PointInterpolation.with_gradient": (points.with_gradient, {"phi": phi, "out": np.empty((4, 7))}),
            "PartitionFaces": (mesh_in_partitions(grid), {
                "owner": grid.owner[:4].copy(), "areas": np.ascontiguousarray(grid.areas[:, :4]),
                "centres": np.ascontiguousarray(grid.face_centres[:, :4]), "weights": grid.weights[:4].copy(),
                "exchange": lambda field: None, "halo_cells": np.arange(4, dtype=np.int32), "halo_count": 4}),
            "MpiExchange": (z.MpiExchange, {"comm": MPI.COMM_SELF, "send": {0: [0, 1]}, "receive": {0: [2, 3]}}),
            "MpiExchange.__call__": (exchange, {"field": np.arange(4.0)}),
        }


def mesh_in_partitions(grid):
    """PartitionFaces holds its arguments; a mesh made with them looks at them."""
    arrays = grid.arrays()
    arrays["centres"] = np.ascontiguousarray(np.concatenate([grid.centres, grid.centres[:, :4]], axis=1))

    def make(**arguments):
        return z.Mesh(**arrays, partition=z.PartitionFaces(**arguments))

    return make


@pytest.fixture(scope="module")
def sound(tmp_path_factory):
    before = os.getcwd()
    os.chdir(tmp_path_factory.mktemp("sound"))
    yield Sound(Grid(4, 3, 5))
    os.chdir(before)


A_MESH = values(TypeError, None, 3, "box:3,3,3", {})
BAD = {
    "Mesh": {
        "centres": MATRIX, "volumes": VECTOR, "areas": MATRIX, "face_centres": MATRIX, "weights": VECTOR,
        "boundary_areas": MATRIX, "boundary_centres": MATRIX, "nodes": [
            case for case in optional(MATRIX) if case[0] is not too_long],
        "owner": NUMBERS, "neighbour": NUMBERS, "boundary_owner": NUMBERS, "face_nodes": optional(NUMBERS),
        "face_node_start": optional(NUMBERS),
        "boundary_kinds": values(TypeError, 3, "wall", [("wall", 94)], {"wall": 94.0}, {"wall": "94"}) + values((TypeError, ValueError), {3: 94}) + values(
            ValueError, {}, {"wall": 93}, {"wall": 95}, {"walls": 94}, {"wall": -1, "inlet": 95},
            {"wall": 89, "inlet": 5}, {"wall": 2**40}),
        "empty_faces": A_NUMBER + values(ValueError, -1, 95, 10**6, 90),
        "partition": values(TypeError, 3, "mpi", object(), {}),
    },
    "Mesh.read": {
        "path": values(TypeError, None, 3, [], object()) + values(
            ValueError, "", "no_such_file.msh", "no_such_folder", "box:0,0,0", "box:3,3", "box:3,3,3:round", "box:", "mesh.xyz"),
        "groups": values(TypeError, 3, "wall", ["wall"], {"inlet": 3}, {3: "wall"}) + values(
            ValueError, {"no such patch": "wall"}, {"inlet": "walls"}, {"inlet": ""}),
        "comm": values(TypeError, 3, "world", object()),
    },
    "Mesh.check": {"max_per_kind": A_NUMBER + values(ValueError, -1)},
    "Mesh.ghost_cells": {"patch": values(TypeError, None, 3, ["inlet"]) + values(
        (ValueError, KeyError), "", "nowhere", "Inlet")},
    "Mesh.expand": {
        "values": [(way, TypeError) for way in (complexes, texts, objects, nothing)] + [
            (way, ValueError) for way in (too_short, too_long, empty, one_more_dimension, a_number)],
        "boundary": values(TypeError, "hot", [None], 3j) + values(
            ValueError, [1.0, 2.0], np.zeros(3), np.zeros((94, 2))) + values((ValueError, KeyError), {"nowhere": 1.0}),
    },
    "Mesh.result": {
        "values": [(too_short, ValueError), (too_long, ValueError), (empty, ValueError), (a_number, ValueError),
                   (nothing, (TypeError, ValueError))],
        "fill": values((TypeError, ValueError), "none", [1, 2], 3j),
    },
    "Gradient": {
        "mesh": A_MESH,
        "method": values(TypeError, None, 3, ["plain"]) + values(ValueError, "", "Plain", "gauss", "least squares"),
        "span": values(TypeError, None, "500", [500.0], 3j) + values(
            ValueError, 0.0, -1.0, float("nan"), float("inf"), float("-inf")),
        "exchange_result": values(TypeError, "yes", []), "shape_normalize": values(TypeError, "yes", []),
    },
    "Gradient.__call__": {
        "phi": VECTOR, "out": output(MATRIX),
        "sweeps": values(TypeError, "3", 2.5, [3], 3j) + COUNT[len(A_NUMBER):],
    },
    "Gradient.three": {"phi": MATRIX, "out": output(MATRIX)},
    "Gradient.weighted": {"phi": VECTOR, "weight": VECTOR, "out": output(MATRIX)},
    "FaceInterpolation": {
        "mesh": A_MESH,
        "kind": values(TypeError, None, 3, ["inner"]) + values(ValueError, "", "Inner", "walls", "cell"),
        "method": A_NUMBER + values(ValueError, 0, 5, -1), "span": COUNT, "number": COUNT,
    },
    "FaceInterpolation.__call__": {"phi": VECTOR, "out": output(VECTOR)},
    "PointInterpolation": {
        "mesh": A_MESH,
        "points": [case for case in MATRIX if case[0] not in (too_short, too_long, empty)],
        "method": A_NUMBER + values(ValueError, 0, 4, -1), "span": COUNT, "number": COUNT,
        "usable": [(way, TypeError) for way in (as_floats, integers, complexes, texts, objects, a_list, a_number)] + [
            (way, ValueError) for way in (too_short, too_long, empty, one_more_dimension)],
    },
    "PointInterpolation.__call__": {"phi": VECTOR, "out": output(VECTOR)},
    "PointInterpolation.with_gradient": {"phi": VECTOR, "out": output(MATRIX)},
    "PartitionFaces": {
        "owner": NUMBERS,
        "areas": MATRIX, "centres": MATRIX, "weights": VECTOR,
        "exchange": values(TypeError, None, 3, "mpi", []),
        "halo_cells": [case for case in optional(NUMBERS)], "halo_count": values(TypeError, "4", 2.5, [4]) + values(
            ValueError, -1, 2, 2**31 - 1),
    },
    "MpiExchange": {
        "comm": values(TypeError, None, 3, "world", object()),
        "send": values(TypeError, None, 3, [(0, [1])], {"0": [1]}, {0: [1.5]}, {0: ["a"]}) + values(
            ValueError, {1: [1]}, {-1: [1]}, {0: [-1]}, {0: [[1]]}, {0: 3}),
        "receive": values(TypeError, None, 3, [(0, [1])], {"0": [1]}, {0: [1.5]}, {0: ["a"]}) + values(
            ValueError, {1: [1]}, {-1: [1]}, {0: [-1]}, {0: [[1]]}, {0: 3}),
    },
    # The operators call it with their own arrays; numpy refuses the rest.
    "MpiExchange.__call__": {"field": values((TypeError, IndexError), None, 3, "field", np.zeros(3))},
}
CASES = [(name, argument, way, error) for name, of_callable in BAD.items() for argument, cases in of_callable.items()
         for way, error in cases]


def call(sound, name, **changes):
    function, arguments = sound.callables[name]
    arguments = {key: given for key, given in {**arguments, **changes}.items() if given is not MISSING}
    return function(**arguments)


@pytest.mark.parametrize("name", BAD)
def test_sound_arguments_are_taken(sound, name):
    call(sound, name)


@pytest.mark.parametrize("name, argument, way, error", CASES,
                         ids=[f"{name}-{argument}-{way.__name__}" for name, argument, way, _ in CASES])
def test_bad_argument(sound, name, argument, way, error):
    good = sound.callables[name][1][argument]
    with pytest.raises(error) as caught:
        call(sound, name, **{argument: way(good)})
    text = str(caught.value)
    assert text and "\n" not in text.strip() or "incompatible" in text, text
    # The object is as good as before.
    assert same_bits(z.Gradient(sound.mesh)(sound.phi), z.Gradient(z.Mesh(**sound.mesh_arguments))(sound.phi))


@pytest.mark.parametrize("name", BAD)
def test_unknown_and_missing_arguments(sound, name):
    function, arguments = sound.callables[name]
    with pytest.raises(TypeError):
        function(**arguments, colour="red")
    with pytest.raises(TypeError):
        function(*range(30))


def test_each_argument_of_each_callable_is_in_the_table(source):
    """The stubs list what there is."""
    tree = ast.parse((source / "python" / "zyn3dgradop" / "__init__.pyi").read_text())
    listed = {}
    for cls in (node for node in tree.body if isinstance(node, ast.ClassDef)):
        if cls.name == "PartitionFaces":
            listed[cls.name] = {field.target.id for field in cls.body}
        for function in (node for node in cls.body if isinstance(node, ast.FunctionDef)):
            arguments = [arg.arg for arg in function.args.posonlyargs + function.args.args + function.args.kwonlyargs
                         if arg.arg not in ("self", "cls")]
            is_property = any(isinstance(d, ast.Name) and d.id == "property" for d in function.decorator_list)
            if arguments and not is_property and not (function.name.startswith("__") and function.name not in (
                    "__init__", "__call__")):
                name = cls.name if function.name == "__init__" else f"{cls.name}.{function.name}"
                listed[name] = set(arguments)
    # Of test_meshio.py and test_vtk.py; the last one MPI itself calls, with a number.
    elsewhere = {"Mesh.from_meshio", "Mesh.from_vtk", "MpiExchange.minimum"}
    assert {name: arguments for name, arguments in listed.items() if name not in elsewhere} == {
        name: set(arguments) for name, arguments in BAD.items()}


# What no single argument shows.

def test_overlap_of_out_with_what_is_read(sound):
    memory = np.zeros((4, sound.total))
    memory[0] = sound.phi
    for out in (memory[:3], memory[1:]):
        phi = memory[0] if out.base is memory and np.shares_memory(out, memory[0]) else memory[1]
        with pytest.raises(ValueError):
            z.Gradient(sound.mesh)(phi, out)
    with pytest.raises(ValueError):
        z.Gradient(sound.mesh).weighted(sound.phi, memory[0], memory[:3])
    line = np.zeros(2 * sound.total)
    faces = z.FaceInterpolation(sound.mesh)
    count = faces.face_count
    with pytest.raises(ValueError):
        faces(line[:sound.total], line[sound.total - 1:sound.total - 1 + count])
    faces(line[:sound.total], line[sound.total:sound.total + count] if count <= sound.total else np.empty(count))


def test_out_that_is_an_array_of_the_mesh(grid):
    arrays = {name: np.array(given) for name, given in grid.arrays().items()}
    mesh = z.Mesh(**arrays)
    before = arrays["centres"].copy()
    with pytest.raises(ValueError):
        z.Gradient(mesh)(grid.field(lambda x, y, z: x), arrays["centres"])
    assert same_bits(arrays["centres"], before)


@pytest.mark.parametrize("method", ["plain", "least_squares", "radial_basis"])
def test_sweeps_belong_to_the_iterated_method(sound, method):
    with pytest.raises(ValueError, match="sweeps"):
        z.Gradient(sound.mesh, method)(sound.phi, sweeps=3)


@pytest.mark.parametrize("operator", [
    lambda mesh: z.Gradient(mesh, "radial_basis"), z.FaceInterpolation,
    lambda mesh: z.PointInterpolation(mesh, np.zeros((3, 1)))])
def test_mesh_without_nodes(grid, operator):
    with pytest.raises(ValueError, match="nodes"):
        operator(z.Mesh(**grid.arrays()))


@pytest.mark.parametrize("missing", ["nodes", "face_nodes", "face_node_start"])
def test_nodes_come_together(grid, missing):
    arguments = {**grid.arrays(), **grid.nodes()}
    del arguments[missing]
    with pytest.raises(ValueError, match="node"):
        z.Mesh(**arguments)


@pytest.mark.parametrize("missing", ["centres", "volumes", "owner", "neighbour", "areas", "face_centres", "weights",
                                     "boundary_owner", "boundary_areas", "boundary_centres"])
def test_missing_array(grid, missing):
    arguments = grid.arrays()
    del arguments[missing]
    with pytest.raises(TypeError):
        z.Mesh(**arguments)


def test_position_is_not_enough(grid):
    """The arrays have names: nobody can confuse ten of them."""
    with pytest.raises(TypeError):
        z.Mesh(*grid.arrays().values())


def test_numbers_of_any_integer_type_and_layout_are_taken(grid):
    phi = grid.field(lambda x, y, z: x * y + z * z)
    expected = z.Gradient(z.Mesh(**grid.arrays()))(phi)
    for dtype in (np.int8, np.uint8, np.int16, np.uint16, np.uint32, np.int64, np.uint64, ">i4"):
        arguments = grid.arrays()
        for name in ("owner", "neighbour", "boundary_owner"):
            arguments[name] = np.repeat(arguments[name].astype(dtype), 2)[::2]
        assert same_bits(z.Gradient(z.Mesh(**arguments))(phi), expected), dtype


def test_message_names_array_index_and_value(grid):
    arguments = grid.arrays()
    arguments["neighbour"] = arguments["neighbour"].copy()
    arguments["neighbour"][17] = 4711
    with pytest.raises(ValueError, match="neighbour.*17.*4711"):
        z.Mesh(**arguments)


@pytest.mark.parametrize("cls", [z.Mesh, z.Gradient, z.FaceInterpolation, z.PointInterpolation])
def test_subclass_that_forgets_the_constructor(cls):
    class Forgetful(cls):
        def __init__(self):
            pass

    with pytest.raises(TypeError, match="__init__"):
        Forgetful()


@pytest.mark.parametrize("duplicate", [copy.copy, copy.deepcopy, pickle.dumps])
def test_objects_are_not_duplicated(sound, duplicate):
    """A second object would have the same arrays and its own tables, or none."""
    for made in (sound.mesh, z.Gradient(sound.mesh), z.FaceInterpolation(sound.mesh)):
        with pytest.raises(TypeError):
            duplicate(made)


def test_all_that_is_public_has_a_docstring():
    for name in z.__all__:
        member = getattr(z, name)
        if inspect.isclass(member):
            assert inspect.getdoc(member), name
            for part, attribute in vars(member).items():
                if not part.startswith("_"):
                    assert inspect.getdoc(attribute), f"{name}.{part}"

#!/usr/bin/python3
"""Runs the function object zynSample and compares what it writes with exact fields and with the program zyngrad.

    sampling.py PROGRAMS WORK [--zyngrad PROGRAM] [--small]

PROGRAMS is the folder with libzynSampling.so and libzynGradSchemes.so; WORK is the folder for the cases, which the script
makes and empties. Without --zyngrad, that comparison is left out. --small leaves out the solvers on meshes that change.

One line is printed for each test: name, what was measured, the bar, passed or FAILED. The exit code is 1 if a test failed.
"""

import argparse
import csv
import filecmp
import math
import pathlib
import random
import re
import subprocess
import sys

from run import EXAMPLES, Failure, Result, Runner

HEADER = "FoamFile { version 2.0; format ascii; class dictionary; object %s; }\n"
BOX = """
scale 1;
vertices ((0 0 0) (1 0 0) (1 1 0) (0 1 0) (0 0 {height}) (1 0 {height}) (1 1 {height}) (0 1 {height}));
blocks (hex (0 1 2 3 4 5 6 7) ({cells}) simpleGrading ({grading}));
edges ();
boundary
(
    left {{ type patch; faces ((0 4 7 3)); }}
    right {{ type patch; faces ((1 2 6 5)); }}
    sides {{ type wall; faces ((0 1 5 4) (3 7 6 2)); }}
    bottom {{ type {layer}; faces ((0 3 2 1)); }}
    top {{ type {layer}; faces ((4 5 6 7)); }}
);
"""
CONTROL = HEADER % "controlDict" + """
application none; startFrom startTime; startTime 0; stopAt endTime; endTime 1; deltaT 1;
writeControl timeStep; writeInterval 1; writeFormat ascii; writePrecision 17;
"""
SCHEMES = HEADER % "fvSchemes" + "gradSchemes { default Gauss linear; } divSchemes { } laplacianSchemes { }\n"
VECTOR = re.compile(r"\(([-+0-9.eE]+) ([-+0-9.eE]+) ([-+0-9.eE]+)\)")

COLUMNS = ("value", "gradient_x", "gradient_y", "gradient_z")  # of points.csv

# Largest errors on the boxes of this script, twice those measured: points by method, value and gradient, then faces.
POINT_BARS = {1: (6e-3, 0.1), 2: (8e-3, 0.14), 3: (6e-2, 3)}
FACE_BARS = {1: 7e-3, 2: 9e-3, 3: 1e-2, 4: 1.2e-2}
FLAT_POINT_BARS = {1: (4e-5, 2e-3), 2: (4e-5, 2e-3)}
FLAT_FACE_BAR = 5e-5


def value(x, y, z):
    return math.sin(2 * x) * y + z * z


def slope(x, y, z):
    return (2 * math.cos(2 * x) * y, math.sin(2 * x), 2 * z)


def vector(x, y, z):
    return (value(x, y, z), x * y - z, math.exp(x) * z)


def vector_slope(x, y, z):
    """T_ij = d/dx_i of component j, by rows."""
    of_value = slope(x, y, z)
    rows = [(of_value[0], y, math.exp(x) * z), (of_value[1], x, 0), (of_value[2], -1, math.exp(x))]
    return [t for row in rows for t in row]


def flat(function):
    """The same without a change in z."""
    return lambda x, y, z: function(x, y, 0)


def write_fields(case, scalar, of_vector):
    """The exact fields p and U at the cell centres and the centres of boundary faces, as fixed values."""
    case.run("postProcess", "-func", "writeCellCentres")
    centres = (case.folder / "0/C").read_text()
    for name, kind, text in (
            ("p", "Scalar", lambda m: "%.17g" % scalar(*map(float, m.groups()))),
            ("U", "Vector", lambda m: "(%.17g %.17g %.17g)" % tuple(of_vector(*map(float, m.groups()))))):
        field = VECTOR.sub(text, centres.replace("volVectorField", "vol%sField" % kind))
        field = field.replace("List<vector>", "List<%s>" % kind.lower()).replace("object      C", "object      " + name)
        (case.folder / "0" / name).write_text(re.sub(r"type( *)calculated", "type fixedValue", field))
    for path in (case.folder / "0").glob("C*"):
        path.unlink()


def box_case(runner, name, is_flat=False):
    case = runner.case(name)
    (case.folder / "system").mkdir(parents=True)
    (case.folder / "constant").mkdir()
    (case.folder / "0").mkdir()
    (case.folder / "system/blockMeshDict").write_text(HEADER % "blockMeshDict" + BOX.format(
        height=0.1 if is_flat else 1, cells="20 20 1" if is_flat else "12 12 12",
        grading="1 2 1" if is_flat else "2 3 1.7", layer="empty" if is_flat else "wall"))
    (case.folder / "system/controlDict").write_text(CONTROL)
    (case.folder / "system/fvSchemes").write_text(SCHEMES)
    (case.folder / "system/fvSolution").write_text(HEADER % "fvSolution")
    case.run("blockMesh")
    if is_flat:
        write_fields(case, flat(value), flat(vector))
    else:
        write_fields(case, value, vector)
    return case


def random_points(count, height=1.0):
    numbers = random.Random(3)
    return [(numbers.random(), numbers.random(), height * numbers.random()) for _ in range(count)]


def foam_points(points):
    return "(%s)" % " ".join("(%.17g %.17g %.17g)" % p for p in points)


def sample(case, entries, ranks=1):
    """Samples the fields of time 0. @return what was printed"""
    control = case.folder / "system/controlDict"
    control.write_text(CONTROL + 'functions { sample { type zynSample; libs ("libzynSampling.so"); %s } }\n' % entries)
    return case.run("postProcess", "-fields", "(p U)", ranks=ranks)


def rows(path):
    return [[float(x) for x in line.split()] for line in path.read_text().splitlines() if not line.startswith("#")]


def error(path, exact):
    """The largest error of a table of positions and values; infinite if the table is empty."""
    errors = [max(abs(a - b) for a, b in zip(row[3:], exact(*row[:3]))) for row in rows(path)]
    return max(errors) if errors and all(e == e for e in errors) else math.inf


def one(function):
    return lambda *place: (function(*place),)


def compare_points(name, folder, points, bars, functions):
    """Values and gradients of the set `probes`, and that it has all points in their order."""
    scalar, of_scalar, of_vector, of_vector_slope = functions
    places = [tuple(row[:3]) for row in rows(folder / "probes_p.xy")]
    return [
        Result(name + ", positions out of order", sum(a != b for a, b in zip(places, points)) + abs(
            len(places) - len(points)), 0),
        Result(name + ", p", error(folder / "probes_p.xy", one(scalar)), bars[0]),
        Result(name + ", grad(p)", error(folder / "probes_grad(p).xy", of_scalar), bars[1]),
        Result(name + ", U", error(folder / "probes_U.xy", of_vector), bars[0]),
        Result(name + ", grad(U)", error(folder / "probes_grad(U).xy", of_vector_slope), bars[1])]


def compare_faces(name, folder, count, bar, functions):
    """Values between cells, and on a boundary the values of the patch."""
    scalar, _, of_vector, _ = functions
    results = [Result(name + ", faces too few or twice", abs(len(rows(folder / "p_between.raw")) - count), 0),
               Result(name + ", p", error(folder / "p_between.raw", one(scalar)), bar),
               Result(name + ", U", error(folder / "U_between.raw", of_vector), bar)]
    if (folder / "p_walls.raw").exists():
        # The weights of a boundary face are those of its ghost cell alone, up to rounding.
        results.append(Result(name + ", p of walls", error(folder / "p_walls.raw", one(scalar)), 1e-6))
    return results


def box(runner):
    functions = (value, slope, vector, vector_slope)
    case = box_case(runner, "sampling-box")
    points, results = random_points(300), []
    before = sorted(p for p in case.folder.rglob("*") if not p.name.startswith("log."))
    for ranks in (1, 3):
        if ranks > 1:
            scatter(case)
        for method in (1, 2, 3, 4):
            settings = "fields (p U); surfaceFormat raw; faceInterpolation { method %d; } faces { between { internal yes; }" % method
            settings += " }" if method == 4 else " walls { patches (sides top); } }"
            if method < 4:
                settings += " points { probes { points %s; } } gradients yes; pointInterpolation { method %d; }" % (
                    foam_points(points), method)
            text = sample(case, settings, ranks)
            name = "box, %d ranks, method %d" % (ranks, method)
            folder = case.folder / "postProcessing/sample/0"
            if method < 4:
                results += compare_points(name + ", points", folder, points, POINT_BARS[method], functions)
            results.append(Result(name + ", warnings of weights", text.count("sum to 1 only within"), 0))
            results += compare_faces(name + ", faces", folder, 3 * 11 * 12 * 12, FACE_BARS[method], functions)
            if ranks == 1:
                after = sorted(p for p in case.folder.rglob("*") if not p.name.startswith("log.")
                               and "postProcessing" not in p.parts)
                results.append(Result(name + ", files besides the results", len(set(after) - set(before)), 0))
            for path in folder.iterdir():
                path.unlink()
    return results


def scatter(case):
    """Cuts the case so that cells of one process have several neighbours in the same cell of another."""
    centres = 12 ** 3
    parts = []
    for c in range(centres):
        i, j, k = c % 12, c // 12 % 12, c // 144
        parts.append((i + j // 2 + k // 3) // 4 % 3)
    (case.folder / "constant/parts").write_text(
        "FoamFile { version 2.0; format ascii; class labelList; object parts; }\n%d\n(\n%s\n)\n" % (
            centres, "\n".join(map(str, parts))))
    (case.folder / "system/decomposeParDict").write_text(
        HEADER % "decomposeParDict" + 'numberOfSubdomains 3;\nmethod manual;\ncoeffs { dataFile "parts"; }\n')
    case.run("decomposePar", "-force")


def one_layer(runner):
    functions = (flat(value), flat(slope), flat(vector), lambda x, y, z: vector_slope(x, y, 0)[:6] + [0, 0, 0])
    case = box_case(runner, "sampling-flat", is_flat=True)
    points, results = random_points(300, 0.1), []
    folder = case.folder / "postProcessing/sample/0"
    for method in (1, 2):
        sample(case, "fields (p U); surfaceFormat raw; gradients yes; points { probes { points %s; } } faces { between { "
               "internal yes; } walls { patches (sides); } } pointInterpolation { method %d; } "
               "faceInterpolation { method %d; }" % (foam_points(points), method, method))
        name = "one layer, method %d" % method
        results += compare_points(name + ", points", folder, points, FLAT_POINT_BARS[method], functions)
        results += compare_faces(name + ", faces", folder, 2 * 19 * 20, FLAT_FACE_BAR, functions)
    text = sample(case, "fields (p); points { probes { points ((0.5 0.5 0)); } } pointInterpolation { method 3; }")
    results.append(Result("one layer, method 3, warnings", text.count("Method 3 is poor on a mesh of one layer"), 1, below=False))
    return results


def against_zyngrad(runner, zyngrad):
    """The same points by the program, which numbers cells in another order.

    The order changes the rounding, the more the wider the support: the span is small here.
    """
    case = box_case(runner, "sampling-zyngrad")
    points, results = random_points(300), []
    with open(case.folder / "points.csv", "w") as out:
        out.write("x,y,z\n" + "".join("%.17g,%.17g,%.17g\n" % p for p in points))
    for method in (1, 2, 3):
        sample(case, "fields (p); boundary no; gradients yes; points { probes { points %s; } } "
               "pointInterpolation { method %d; span 10; }" % (foam_points(points), method))
        output = "zyngrad-%d" % method
        run([zyngrad, "points", "constant/polyMesh", "--group", "left=wall", "--group", "right=wall",
             "--field", "sin(2*x)*y+z*z", "--points", "points.csv", "--search-method", str(method), "--span", "10",
             "-o", output], case.folder)
        with open(case.folder / output / "points.csv") as table:
            theirs = list(csv.DictReader(table))
        folder = case.folder / "postProcessing/sample/0"
        ours = [v + g[3:] for v, g in zip(rows(folder / "probes_p.xy"), rows(folder / "probes_grad(p).xy"))]
        results.append(Result("zyngrad, method %d, points" % method, min(len(ours), len(theirs)), len(points), below=False))
        differences = [[abs(float(a[column]) - b[3 + k]) for k, column in enumerate(COLUMNS)] for a, b in zip(theirs, ours)]
        if method < 3:
            results.append(Result("zyngrad, method %d, value" % method, max(d[0] for d in differences), 1e-12))
            results.append(Result("zyngrad, method %d, gradient" % method, max(max(d[1:]) for d in differences), 2e-11))
        else:
            # Whether a point has one or two seeds depends on the order of the cells: about one in seven has another choice.
            same = sum(max(d) < 2e-11 for d in differences) / len(differences)
            results.append(Result("zyngrad, method 3, share of points alike", same, 0.75, below=False))
    return results


def run(command, folder):
    result = subprocess.run(command, cwd=folder, capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=600)
    if result.returncode:
        raise Failure("%s ends with %d:\n%s" % (command[0], result.returncode, result.stderr))


BAD_ENTRIES = {
    "fields (p);": "Neither points nor faces are given",
    "fields (p); points { a 3; }": "a is no dictionary",
    "fields (p); points { a { pionts ((0.1 0.1 0.1)); } }": "Unknown entry pionts",
    "fields (p); points { a { start (0 0 0); end (1 1 1); nPoints 1; } }": "nPoints 1 is less than 2",
    "fields (p); points { a { surface none.stl; } }": "There is no surface",
    "fields (p); points { a { points ((0.1 0.1 0.1)); axis r; } }": "Unknown axis r",
    "fields (p); points { a { points ((0.1 0.1 0.1)); } } setFormat nothing;": "Unknown setFormat nothing",
    "fields (p); points { a { points ((0.1 0.1 0.1)); } } pointInterpolation { method 4; }": "method 4 is outside 1..3",
    "fields (p); points { a { points ((0.1 0.1 0.1)); } } pointInterpolation { spam 4; }": "Unknown entry spam",
    "fields (p); faces { a { patches (none); } }": "There are no such faces; patches are",
    "fields (p); faces { a { patches (sides); internal yes; } }": "Either patches, faceZones or internal",
    "fields (p); faces { a { patches (sides); } } faceInterpolation { method 4; }": "Method 4 has no values at faces of",
    "fields (p); faces { a { patches (sides); } } surfaceFormat nothing;": "Unknown surfaceFormat nothing",
}


def messages(runner):
    """Bad entries are told in one message, in serial and in parallel; points outside are told and left out."""
    case = box_case(runner, "sampling-messages")
    case.decompose((3, 1, 1))
    results = []
    for ranks in (1, 3):
        for entries, words in BAD_ENTRIES.items():
            try:
                text = sample(case, entries, ranks)  # postProcess goes on after some errors
            except Failure as failure:
                text = str(failure)
            found = text.count(words) == 1 and text.count("FOAM FATAL IO ERROR") == 1
            results.append(Result("message, %d ranks: %s" % (ranks, words), 1 if found else 0, 1, below=False))
        text = sample(case, "fields (p nothing); points { a { points ((0.5 0.5 0.5) (2 2 2) (0.25 0.5 0.5) (3 3 3)); } }", ranks)
        found = "2 of the 4 points of a are outside the mesh and left out; the first one is (2 2 2)" in text
        results.append(Result("message, %d ranks: points outside" % ranks, 1 if found else 0, 1, below=False))
        found = "There is no scalar or vector field of cells nothing" in text
        results.append(Result("message, %d ranks: no such field" % ranks, 1 if found else 0, 1, below=False))
        left = [row[0] for row in rows(case.folder / "postProcessing/sample/0/a_p.xy")]
        results.append(Result("message, %d ranks: points left" % ranks, 1 if left == [0.5, 0.25] else 0, 1, below=False))
    return results


def vertices(runner):
    """The vertices of a surface are points like others."""
    case = box_case(runner, "sampling-surface")
    folder = case.folder / "constant/triSurface"
    folder.mkdir()
    points = random_points(3)
    (folder / "body.obj").write_text("".join("v %.17g %.17g %.17g\n" % p for p in points) + "f 1 2 3\n")
    sample(case, "fields (p); points { body { surface \"body.obj\"; } listed { points %s; } }" % foam_points(points))
    results = case.folder / "postProcessing/sample/0"
    same = filecmp.cmp(results / "body_p.xy", results / "listed_p.xy", shallow=False)
    return [Result("vertices of a surface: other values than at the same points", 0 if same else 1, 0)]


def changing_mesh(runner, name, source, prepare, solver, settings):
    """What a solver writes while its mesh changes is what postProcess makes of the written times.

    The values of moving walls are calculated from the motion anew, which changes their rounding.
    """
    case = runner.case("sampling-" + name.replace(" ", "-")).copy(EXAMPLES / source)
    for command in prepare:
        case.run(*command) if isinstance(command, list) else command(case)
    control = case.folder / "system/controlDict"
    text = control.read_text()
    end = text.find("\nfunctions")
    control.write_text(text[:end if end >= 0 else len(text)] + "\nwritePrecision 17;\n" + settings)
    case.run(solver)
    folder = case.folder / "postProcessing"
    folder.rename(case.folder / "while-running")
    case.run("postProcess", "-fields", "(p U alpha.water)")
    running = case.folder / "while-running"
    files = [p.relative_to(running) for p in running.rglob("*.*") if p.is_file()]
    worst = max((difference(running / f, folder / f) for f in files), default=math.inf)
    return [Result(name + ", files while running", len(files), 9, below=False),
            Result(name + ", values afterwards, relative to the largest", worst, 1e-9)]


def difference(one_file, other_file):
    """The largest difference of two tables, relative to the largest value; infinite if they are not alike."""
    first, second = rows(one_file), rows(other_file)
    if len(first) != len(second) or not first:
        return math.inf
    largest = max(abs(x) for row in first for x in row)
    return max(abs(x - y) for a, b in zip(first, second) for x, y in zip(a, b)) / largest


def moving_cone(runner):
    return changing_mesh(runner, "moving cone", "incompressible/pimpleFoam/laminar/movingCone", [["blockMesh"]], "pimpleFoam", """
endTime 0.0006; writeInterval 40;
functions { sample { type zynSample; libs ("libzynSampling.so"); writeControl writeTime; fields (p U); surfaceFormat raw;
points { line { start (-0.0025 0.0012 0); end (-0.0005 0.0012 0); nPoints 9; } } faces { between { internal yes; } } } }""")


def refinement(runner):
    def restore(case):
        (case.folder / "0.orig").rename(case.folder / "0")

    return changing_mesh(
        runner, "refinement", "multiphase/interFoam/laminar/damBreakWithObstacle",
        [restore, ["blockMesh"], ["topoSet"], ["subsetMesh", "-overwrite", "c0", "-patch", "walls"], ["setFields"]],
        "interFoam", """
endTime 0.006; writeInterval 0.002;
functions { sample { type zynSample; libs ("libzynSampling.so"); writeControl writeTime; fields (alpha.water U); surfaceFormat raw;
points { line { start (0.1 0.3 0.1); end (0.9 0.31 0.21); nPoints 25; } } faces { walls { patches (walls); } } } }""")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--zyngrad", type=pathlib.Path)
    parser.add_argument("--small", action="store_true")
    options = parser.parse_args()
    runner = Runner(options.programs, options.work)
    runner.empty_work()
    tests = [box, one_layer, messages, vertices] + ([] if options.small else [moving_cone, refinement])
    if options.zyngrad:
        zyngrad = options.zyngrad.resolve()
        tests.append(lambda r: against_zyngrad(r, zyngrad))
    count = failed = 0
    for test in tests:
        try:
            results = test(runner)
        except Failure as failure:
            print("FAILED: %s" % failure, flush=True)
            count, failed = count + 1, failed + 1
            continue
        for result in results:
            print(result, flush=True)
        count, failed = count + len(results), failed + sum(not r.passed for r in results)
    print("%d of %d passed" % (count - failed, count))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

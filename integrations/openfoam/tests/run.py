#!/usr/bin/python3
"""Runs OpenFOAM with the gradient scheme of this folder and compares it with OpenFOAM's own.

    run.py PROGRAMS WORK [--small] [--only TEXT] [--jobs N] [--keep-going]

PROGRAMS is the folder with libzynGradSchemes.so, zynFoamCompare and zynFoamChange; WORK is the folder for the cases, which
the script makes and empties. The cases are the tutorials of the package openfoam-examples, shortened, and those in
cases/ beside this script. --small runs what takes a minute or two, --only the tests whose name contains TEXT.

One line is printed for each test: name, what was measured, the bar, passed or FAILED. The exit code is 1 if a test failed.
"""

import argparse
import concurrent.futures
import gzip
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = pathlib.Path("/usr/share/doc/openfoam-examples/examples")
LIBRARY = 'libs ("libzynGradSchemes.so");'
MARK = ".made-by-openfoam-tests"

# Gradients of the same formula differ by rounding: a cell sums some ten terms, each as large as the largest slope times the
# ratio of a cell's surface to its volume. Systems of least squares have condition numbers up to 1e4, in flat cells.
ROUNDING = 1e-11
# faceLimited divides the differences of values by those that the gradient gives: where a field is flat, both are small.
FACE_LIMITED = 1e-8
# A linear field by radial basis functions at the default Span of 500: docs/methods/radial-basis-gradient.md has 1.3e-4.
RADIAL_BASIS_LINEAR = 2e-4
SCHEMES = ["plain", "leastSquares", "iterated 3", "radialBasis"]


class Failure(Exception):
    """A program that did not end as it should."""


class Result:
    """A measured value against its bar; NaN fails."""

    def __init__(self, name, measured, bar, below=True, unit=""):
        self.name, self.measured, self.bar, self.below, self.unit = name, measured, bar, below, unit
        self.passed = measured <= bar if below else measured >= bar

    def __str__(self):
        relation = "at most" if self.below else "at least"
        return "%-92s %10.4g, %s %-8.4g%s %s" % (
            self.name, self.measured, relation, self.bar, self.unit, "passed" if self.passed else "FAILED")


class Runner:
    """Where things are, and how programs are called."""

    def __init__(self, programs, work):
        self.programs, self.work = programs.resolve(), work.resolve()
        self.environment = dict(os.environ, WM_PROJECT_DIR=os.environ.get("WM_PROJECT_DIR", "/usr/share/openfoam"))
        folders = [str(self.programs), os.environ.get("LD_LIBRARY_PATH", "")]
        self.environment["LD_LIBRARY_PATH"] = ":".join(f for f in folders if f)
        self.environment["PATH"] = "%s:%s" % (self.programs, os.environ["PATH"])
        for name, value in (("OMP_NUM_THREADS", "1"), ("OMPI_MCA_rmaps_base_oversubscribe", "1"),
                            ("OMPI_MCA_mpi_yield_when_idle", "1")):
            self.environment.setdefault(name, value)

    def empty_work(self):
        """The folder is emptied only if an earlier run of this script has made it."""
        if self.work.exists() and any(self.work.iterdir()):
            if not (self.work / MARK).exists():
                sys.exit("run.py: %s holds files of others" % self.work)
            shutil.rmtree(self.work)
        self.work.mkdir(parents=True, exist_ok=True)
        (self.work / MARK).touch()

    def case(self, name):
        return Case(self, self.work / name)


class Case:
    """A folder with a case of OpenFOAM."""

    def __init__(self, runner, folder):
        self.runner, self.folder = runner, folder

    def copy(self, source, *names):
        """Copies the case, or only some of its files, and unpacks what is compressed."""
        for path in sorted(source.rglob("*")):
            to = self.folder / path.relative_to(source)
            plain = to.with_suffix("") if to.suffix == ".gz" else to
            if path.is_dir() or (names and str(plain.relative_to(self.folder)) not in names):
                continue
            plain.parent.mkdir(parents=True, exist_ok=True)
            plain.write_bytes(gzip.decompress(path.read_bytes()) if path.suffix == ".gz" else path.read_bytes())
        return self

    def append(self, file, text):
        """A later entry replaces an earlier one, and dictionaries are merged."""
        with open(self.folder / file, "a") as out:
            out.write("\n%s\n" % text)
        return self

    def replace(self, file, pattern, text):
        path = self.folder / file
        changed, count = re.subn(pattern, text, path.read_text())
        if not count:
            raise Failure("%s: nothing matches %s" % (path, pattern))
        path.write_text(changed)
        return self

    def schemes(self, gradient, extra=""):
        """Loads the library and takes `gradient` for all gradients, also for those that the case names."""
        self.append("system/controlDict", LIBRARY)
        named = " ".join('%s %s;' % (name, gradient) for name in ("grad(p)", "grad(U)"))
        return self.append("system/fvSchemes", "gradSchemes { default %s; %s %s }" % (gradient, named, extra))

    def decompose(self, counts):
        n = math.prod(counts)
        (self.folder / "system/decomposeParDict").write_text(
            "FoamFile { version 2.0; format ascii; class dictionary; object decomposeParDict; }\n"
            "numberOfSubdomains %d;\nmethod simple;\ncoeffs { n (%d %d %d); }\n" % ((n,) + tuple(counts)))
        self.run("decomposePar", "-force")
        return self

    def run(self, *command, ranks=1):
        """Runs a program in the case. @return what it printed"""
        command = [str(c) for c in command]
        log = self.folder / ("log.%s.%d" % (command[0], time.monotonic_ns()))
        if ranks > 1:
            command = ["mpirun", "-np", str(ranks)] + command + ["-parallel"]
        with open(log, "w") as out:
            code = subprocess.run(command, cwd=self.folder, env=dict(self.runner.environment, PWD=str(self.folder)),
                                  stdout=out, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, timeout=1800).returncode
        text = log.read_text(errors="replace")
        if code:
            raise Failure("%s in %s ends with %d:\n%s" % (" ".join(command), self.folder, code, text[-3000:]))
        return text


def foam_list(words):
    return "(%s)" % " ".join('"%s"' % w for w in words)


def table(text, kind):
    """The lines of a program of ours that begin with `kind`, split."""
    return [line.split("\t")[1:] for line in text.splitlines() if line.startswith(kind + "\t")]


# --- cell by cell -----------------------------------------------------------------------------------------------------

# Name: folder of the tutorial, what makes the mesh after blockMesh, cuts for three ranks, whether a linear field is exact
# there (not at periodic, symmetry and wedge patches), whether the components of a vector are scalars of their own (not at
# rotational periodicity, which turns them into each other).
MESHES = {
    "cavity": ("incompressible/icoFoam/cavity/cavity", [], (3, 1, 1), True, True),
    "pitzDaily": ("incompressible/simpleFoam/pitzDaily", [], (3, 1, 1), True, True),
    "squareBend": ("incompressible/simpleFoam/squareBend", [], (1, 3, 1), True, True),
    "channel395": ("incompressible/pimpleFoam/LES/channel395", [], (3, 1, 1), False, True),
    "forwardStep": ("compressible/rhoCentralFoam/forwardStep", [], (3, 1, 1), False, True),
    "movingCone": ("incompressible/pimpleFoam/laminar/movingCone", [], (3, 1, 1), False, True),
    "pipeCyclic": ("incompressible/simpleFoam/pipeCyclic", [["topoSet"], ["refineHexMesh", "c0", "-overwrite"]],
                   (1, 3, 1), False, False),
}


def compare(runner, mesh, ranks):
    source, more, cuts, linear_is_exact, components_are_scalars = MESHES[mesh]
    name = "compare %s %d" % (mesh, ranks)
    case = runner.case(name.replace(" ", "-"))
    case.copy(HERE / "cases/box", "system/controlDict", "system/fvSchemes", "system/fvSolution")
    case.copy(EXAMPLES / source, "system/blockMeshDict", "system/topoSetDict")
    case.append("system/controlDict", LIBRARY + " DebugSwitches { zyn 1; }")
    results = []
    case.run("blockMesh")
    for command in more:
        case.run(*command)
    if ranks > 1:
        case.decompose(cuts)
        if mesh == "channel395":
            n = sum(p.read_text().count("processorCyclic;") for p in case.folder.glob("processor*/*/polyMesh/boundary"))
            results.append(Result(name + ": patches of type processorCyclic", n, 4, below=False))

    pairs = ["zyn plain", "Gauss linear", "zyn leastSquares", "reference leastSquares",
             "zyn iterated 1", "reference iterated 1", "zyn iterated 3", "reference iterated 3",
             "cellLimited zyn plain 1", "cellLimited Gauss linear 1",
             "faceLimited zyn plain 1", "faceLimited Gauss linear 1",
             "leastSquares", "Gauss linear"]
    components = ["zyn " + s for s in SCHEMES]
    command = ["zynFoamCompare", "-smooth", foam_list(pairs)]
    if components_are_scalars:
        command += ["-components", foam_list(components)]
    if linear_is_exact:
        command += ["-linear", foam_list(["zyn leastSquares", "zyn radialBasis"])]
    # Data are checked when they are made: without nodes for the first gradients, with nodes for radialBasis.
    text = case.run(*command, ranks=ranks)
    breaches = [int(n) for n in re.findall(r"zyn: host data: (\d+) breach(?:es)? found", text)]
    checks = (2 if components_are_scalars else 1) * ranks
    results.append(Result(name + ": checks of the host's data", len(breaches), checks, below=False))
    results.append(Result(name + ": breaches found by them", sum(breaches), 0))
    lines = table(text, "result")

    for field, scheme, reference, difference, boundary, slope, _ in lines:
        relative, at_patches = float(difference) / float(slope), float(boundary) / float(slope)
        test = "%s: %s, %s - %s" % (name, field, scheme, reference)
        if scheme == "leastSquares":
            # Two methods must not look alike: this line fails when the comparison sees nothing.
            results.append(Result(test, relative, 1e-6, below=False))
            continue
        bar = ROUNDING
        if field == "components":
            bar = 0
        elif scheme.startswith("faceLimited"):
            bar = FACE_LIMITED
        elif field == "linear" and scheme == "zyn radialBasis":
            bar = RADIAL_BASIS_LINEAR
        results.append(Result(test, relative, bar))
        if not reference.startswith(("reference", "exact", "three")):
            results.append(Result(test + ", patches", at_patches, bar))
    expected = sum(1 if other.startswith("reference") else 2 for other in pairs[1::2])
    expected += command.count("-components") * len(components) + command.count("-linear") * 2
    results.append(Result(name + ": comparisons made", len(lines), expected, below=False))
    return results


# --- solvers ----------------------------------------------------------------------------------------------------------

def internal_field(path):
    """The numbers of a field's cells."""
    text = path.read_text()
    body = text[text.index("internalField"):]
    count, rest = re.match(r"internalField\s+nonuniform\s+List<\w+>\s*(\d+)\s*\(", body), None
    if count is None:
        raise Failure("%s has no list of cells" % path)
    rest = body[count.end():body.index("\n)\n")]
    return [float(x) for x in re.findall(r"[-+0-9.eEinfa]+", rest)]


def field_difference(a, b):
    """The largest difference of two fields, relative to the range of the second."""
    first, second = internal_field(a), internal_field(b)
    if len(first) != len(second):
        return math.inf
    return max(abs(x - y) for x, y in zip(first, second)) / (max(second) - min(second))


def linear_iterations(text):
    return sum(int(n) for n in re.findall(r"No Iterations (\d+)", text))


def latest(case):
    times = [p for p in case.folder.iterdir() if re.fullmatch(r"[0-9.e+-]+", p.name) and p.name != "0"]
    return max(times, key=lambda p: float(p.name))


def cavity_case(runner, scheme):
    case = runner.case("icoFoam-" + scheme.replace(" ", "-"))
    case.copy(EXAMPLES / MESHES["cavity"][0])
    case.append("system/controlDict", "writePrecision 16; writeInterval 100;").schemes(scheme)
    case.run("blockMesh")
    return case, case.run("icoFoam")


def ico_foam(runner, schemes):
    """icoFoam on the cavity, to the end: the iterations of the linear solvers, and with plain the same fields."""
    usual, text = cavity_case(runner, "Gauss linear")
    iterations = linear_iterations(text)
    results = []
    for scheme in schemes:
        case, text = cavity_case(runner, "zyn " + scheme)
        name = "icoFoam cavity: zyn %s" % scheme
        change = abs(linear_iterations(text) / iterations - 1)
        results.append(Result(name + ", iterations (%d) against Gauss linear (%d)" % (
            linear_iterations(text), iterations), change, 0.03))
        if scheme == "plain":
            for field in ("p", "U"):
                results.append(Result(name + ", final %s - Gauss linear" % field, field_difference(
                    latest(case) / field, latest(usual) / field), 1e-9))
    return results


RESIDUAL = re.compile(r"Solving for (\w+), Initial residual = ([-+.e0-9]+|nan|inf)")


def residuals(text):
    """The first residual of each equation in each iteration: a dictionary for each iteration."""
    history = []
    for part in text.split("\nTime = ")[1:]:
        step = {}
        for name, value in RESIDUAL.findall(part):
            step.setdefault(name, float(value))
        history.append(step)
    return history


def pitz_daily_case(runner, scheme, extra="", ranks=1, end=2000):
    case = runner.case("simpleFoam-%s-%d" % ((scheme + " " + extra).strip(" ;").replace(" ", "-"), ranks))
    case.copy(EXAMPLES / MESHES["pitzDaily"][0]).schemes(scheme, extra)
    case.append("system/controlDict", "endTime %d; writeInterval %d;" % (end, end))
    case.run("blockMesh")
    if ranks > 1:
        case.decompose((3, 1, 1))
    text = case.run("simpleFoam", "-noFunctionObjects", ranks=ranks)
    history = residuals(text)
    names = ["Ux", "Uy", "p", "k", "epsilon"]
    with open(case.folder / "residuals.csv", "w") as out:
        out.write("iteration,%s\n" % ",".join(names))
        for i, step in enumerate(history):
            out.write("%d,%s\n" % (i + 1, ",".join("%.6g" % step[n] for n in names)))
    converged = re.search(r"SIMPLE solution converged in (\d+) iterations", text)
    return int(converged.group(1)) if converged else math.inf, history


def simple_foam_usual(runner):
    return pitz_daily_case(runner, "Gauss linear")[0]


def simple_foam(runner, scheme, usual, extra=""):
    """simpleFoam on pitzDaily to convergence.

    Gradients by radial basis functions, unlimited, let linearUpwind diverge within 15 iterations, as leastSquares of
    OpenFOAM does. Limited, they take fewer iterations than Gauss linear.
    """
    iterations = pitz_daily_case(runner, scheme, extra)[0]
    change = iterations / usual() - 1
    limited_radial_basis = scheme.startswith("cellLimited zyn radialBasis")
    return [Result("simpleFoam pitzDaily: %s, iterations (%g) against Gauss linear (%g)" % (
        scheme + (" with " + extra if extra else ""), iterations, usual()),
        change if limited_radial_basis else abs(change), 0.03)]


def simple_foam_ranks(runner):
    """Thirty iterations on three ranks: the residuals of two gradients with the same formula."""
    usual = pitz_daily_case(runner, "Gauss linear", ranks=3, end=30)[1]
    ours = pitz_daily_case(runner, "zyn plain", ranks=3, end=30)[1]
    # In the first, the fields are uniform, and limitedLinear decides by the sign of a gradient's rounding error.
    worst = max(abs(a[n] - b[n]) / b[n] for a, b in zip(ours[1:], usual[1:]) for n in b)
    return [Result("simpleFoam pitzDaily 3: zyn plain, residuals of iterations 2 to %d - Gauss linear" % len(ours), worst,
                   1e-5)]


# --- meshes that change -----------------------------------------------------------------------------------------------


def change(runner, name, mesh, ranks, by, changes, against, schemes, memory=False):
    """Moves or refines a mesh. @return lines of the program"""
    case = runner.case(name.replace(" ", "-"))
    case.copy(HERE / "cases/box")
    if memory:
        case.replace("system/blockMeshDict", "n 6;", "n 4;")
    if mesh == "movingCone":
        case.copy(EXAMPLES / MESHES[mesh][0], "system/blockMeshDict", "constant/dynamicMeshDict", "0/U",
                  "0/pointMotionUx").append("system/controlDict", "deltaT 5e-06;")
    elif mesh == "damBreakWithObstacle":
        case.copy(EXAMPLES / "multiphase/interFoam/laminar/damBreakWithObstacle", "system/blockMeshDict",
                  "system/topoSetDict").replace("system/blockMeshDict", r"\(32 32 32\)", "(8 8 8)")
    case.append("system/controlDict", LIBRARY)
    case.run("blockMesh")
    if mesh == "damBreakWithObstacle":
        case.run("topoSet")
        case.run("subsetMesh", "-overwrite", "c0", "-patch", "walls")
    if ranks > 1:
        case.decompose((ranks, 1, 1))
    command = ["zynFoamChange", "-changes", changes, "-by", by, "-schemes", foam_list(schemes)]
    if against:
        command += ["-against", against]
    if memory:
        command += ["-memory"]
    return case.run(*command, ranks=ranks)


def after_change(runner, what, mesh, ranks, by, changes):
    """Gradients right after each change: plain ones against Gauss linear, which keeps nothing from the mesh before; all
    against themselves on a mesh that the library has never seen."""
    name = "%s %s %d" % (what, mesh, ranks)
    results = []
    for against, schemes, bar in (("Gauss linear", ["zyn plain"], ROUNDING), ("fresh", ["zyn " + s for s in SCHEMES], 0)):
        text = change(runner, name + " " + against, mesh, ranks, by, changes, against, schemes)
        results += [Result("%s: %s, %s - %s after each of %d changes" % (name, line[0], line[1], line[2], changes),
                           float(line[3]), bar) for line in table(text, "result")]
    results.append(Result(name + ": comparisons made", len(results), 2 + len(SCHEMES), below=False))
    _, motions, topology_changes, _, _ = (int(x) for x in table(text, "changes")[0])
    happened = topology_changes if what == "refinement" else motions
    # Few of the ball's steps leave all cells as they are.
    results.append(Result(name + ": changes that happened", happened, 0.5 * changes, below=False))
    return results


def memory(runner, what, by, changes):
    """Bytes in use after a tenth of the changes and after all, beyond what OpenFOAM's own gradient leaves."""
    schemes = ["zyn " + s for s in SCHEMES]
    grown = []
    for kind, used in (("ours", schemes), ("usual", ["Gauss linear"])):
        text = change(runner, "memory %s %s" % (what, kind), "box", 1, by, changes, "", used, memory=True)
        first, last = (float(line[1]) for line in table(text, "memory"))
        grown.append(last - first)
    # One forgotten block of the smallest size in each change would be 24 bytes of it.
    return [Result("memory %s: bytes a change from %d to %d, all schemes - Gauss linear" % (what, changes // 10, changes),
                   (grown[0] - grown[1]) / (0.9 * changes), 8)]


def moving_cone(runner, steps):
    """pimpleFoam with a moving wedge, to the end."""
    last = {}
    for scheme in ("Gauss linear", "zyn plain"):
        case = runner.case("pimpleFoam-" + scheme.replace(" ", "-"))
        case.copy(EXAMPLES / MESHES["movingCone"][0]).schemes(scheme)
        case.append("system/controlDict", "writeFormat ascii; writePrecision 16; endTime %g; writeInterval %d;" % (
            5e-6 * steps, steps))
        case.run("blockMesh")
        text = case.run("pimpleFoam", "-noFunctionObjects")
        last[scheme] = latest(case)
    return [Result("pimpleFoam movingCone: time steps", len(re.findall("^Time = ", text, re.M)), steps, below=False)] + [
        Result("pimpleFoam movingCone: final %s - Gauss linear" % field,
               field_difference(last["zyn plain"] / field, last["Gauss linear"] / field), 1e-6) for field in ("p", "U")]


def dam_break(runner, end):
    """interFoam with refinement, to the end."""
    cells = {}
    for scheme in ("Gauss linear", "zyn plain", "zyn leastSquares"):
        case = runner.case("interFoam-" + scheme.replace(" ", "-"))
        case.copy(EXAMPLES / "multiphase/interFoam/laminar/damBreakWithObstacle")
        (case.folder / "0.orig").rename(case.folder / "0")
        if not (case.folder / "0/alpha.water").exists():
            (case.folder / "0/alpha.water.orig").rename(case.folder / "0/alpha.water")
        case.replace("system/blockMeshDict", r"\(32 32 32\)", "(12 12 12)").schemes(scheme)
        case.append("system/controlDict", "endTime %g; writeControl adjustable; writeInterval %g;" % (end, end))
        for command in (["blockMesh"], ["topoSet"], ["subsetMesh", "-overwrite", "c0", "-patch", "walls"], ["setFields"]):
            case.run(*command)
        text = case.run("interFoam")
        cells[scheme] = int(re.findall(r"(?:Refined|Unrefined) from \d+ to (\d+) cells", text)[-1])
        times = [float(t) for t in re.findall(r"^Time = (\S+)", text, re.M)]
    return [Result("interFoam damBreakWithObstacle: end of the last run", times[-1], 0.999 * end, below=False)] + [
        Result("interFoam damBreakWithObstacle: %s, cells at the end (%d) against Gauss linear (%d)" % (
            scheme, cells[scheme], cells["Gauss linear"]), abs(cells[scheme] / cells["Gauss linear"] - 1),
            0 if scheme == "zyn plain" else 0.1) for scheme in ("zyn plain", "zyn leastSquares")]


# --- the page for users -----------------------------------------------------------------------------------------------


def page(runner):
    """Runs the commands of docs/use/openfoam.md in one shell, from the root of the repository, with another home."""
    root = HERE.parents[2]
    blocks = re.findall(r"^```sh\n(.*?)^```", (root / "docs/use/openfoam.md").read_text(), re.M | re.S)
    install = [b for b in blocks if "apt-get install" in b]
    packages = re.sub(r"\\\n", " ", install[0]).split()[3:]
    absent = [p for p in packages if subprocess.run(
        ["dpkg-query", "-W", "-f", "${Status}", p], capture_output=True, text=True, check=False).stdout != "install ok installed"]
    home = runner.work / "page"
    home.mkdir()
    script = "set -eux\n" + "\n".join(b for b in blocks if b not in install)
    environment = dict(os.environ, HOME=str(home))
    for name in ("LD_LIBRARY_PATH", "WM_PROJECT_DIR"):
        environment.pop(name, None)
    done = subprocess.run(["bash", "-c", script], cwd=root, env=environment, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    (home / "log").write_text(done.stdout)
    if done.returncode:
        raise Failure("the commands of docs/use/openfoam.md end with %d:\n%s" % (done.returncode, done.stdout[-3000:]))
    converged = re.search(r"SIMPLE solution converged in (\d+) iterations", done.stdout)
    sampled = list((home / "zyn-cases/pitzDaily/postProcessing/sample").rglob("*.*"))
    return [Result("page: packages that are not installed (%s)" % " ".join(absent), len(absent), 0),
            Result("page: blocks of commands", len(blocks) - 1, 6, below=False),
            Result("page: iterations of simpleFoam against 282", abs(int(converged.group(1)) / 282 - 1), 0.03),
            Result("page: files of zynSample", len(sampled), 2, below=False),
            Result("page: checks without a breach", done.stdout.count("zyn: host data: 0 breaches found"), 1, below=False)]


# --- all of them ------------------------------------------------------------------------------------------------------


class Once:
    """The value of a function that several tests wait for."""

    def __init__(self, function):
        self.function, self.lock, self.values = function, threading.Lock(), []

    def __call__(self):
        with self.lock:
            if not self.values:
                self.values.append(self.function())
        return self.values[0]


def tests(runner, small):
    """Names and functions that return results; long ones first, so that none is left alone at the end."""
    usual = Once(lambda: simple_foam_usual(runner))
    if small:
        yield "page", lambda: page(runner)
        yield "compare cavity 3", lambda: compare(runner, "cavity", 3)
        yield "compare pitzDaily 1", lambda: compare(runner, "pitzDaily", 1)
        yield "compare movingCone 1", lambda: compare(runner, "movingCone", 1)
        yield "compare pipeCyclic 1", lambda: compare(runner, "pipeCyclic", 1)
        yield "compare channel395 3", lambda: compare(runner, "channel395", 3)
        yield "icoFoam", lambda: ico_foam(runner, ["plain"])
        yield "motion movingCone 1", lambda: after_change(runner, "motion", "movingCone", 1, "update", 20)
        yield "refinement damBreakWithObstacle 1", lambda: after_change(
            runner, "refinement", "damBreakWithObstacle", 1, "update", 20)
        return
    yield "page", lambda: page(runner)
    for scheme in ("zyn plain", "zyn leastSquares", "zyn iterated 3", "cellLimited zyn leastSquares 1",
                   "cellLimited zyn radialBasis 1"):
        yield "simpleFoam " + scheme, lambda s=scheme: simple_foam(runner, s, usual)
    yield "simpleFoam grad(p) zyn radialBasis", lambda: simple_foam(
        runner, "Gauss linear", usual, "grad(p) zyn radialBasis;")
    yield "simpleFoam 3", lambda: simple_foam_ranks(runner)
    yield "memory refinement", lambda: memory(runner, "refinement", "update", 10000)
    yield "memory motion", lambda: memory(runner, "motion", "motion", 10000)
    yield "interFoam", lambda: dam_break(runner, 0.1)
    yield "pimpleFoam", lambda: moving_cone(runner, 600)
    yield "icoFoam", lambda: ico_foam(runner, SCHEMES)
    for ranks in (1, 3):
        yield "motion movingCone %d" % ranks, lambda n=ranks: after_change(
            runner, "motion", "movingCone", n, "update", 100)
        yield "motion box %d" % ranks, lambda n=ranks: after_change(runner, "motion", "box", n, "motion", 100)
        yield "refinement damBreakWithObstacle %d" % ranks, lambda n=ranks: after_change(
            runner, "refinement", "damBreakWithObstacle", n, "update", 50)
        for mesh in MESHES:
            yield "compare %s %d" % (mesh, ranks), lambda m=mesh, n=ranks: compare(runner, m, n)


def timed(function):
    start = time.monotonic()
    try:
        results, failure = function(), None
    except (Failure, OSError, ValueError, KeyError, IndexError, subprocess.SubprocessError) as error:
        results, failure = [], "%s: %s" % (type(error).__name__, error)
    return results, failure, time.monotonic() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--small", action="store_true")
    parser.add_argument("--only", metavar="TEXT")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="tests at a time")
    options = parser.parse_args()
    if not EXAMPLES.is_dir():
        sys.exit("run.py: the package openfoam-examples is not installed")
    runner = Runner(options.programs, options.work)
    runner.empty_work()

    chosen = [t for t in tests(runner, options.small) if not options.only or options.only in t[0]]
    if not chosen:
        sys.exit("run.py: no test has a name with '%s'" % options.only)
    start, count, failed = time.monotonic(), 0, []
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for (name, _), (results, failure, seconds) in zip(chosen, pool.map(timed, [t[1] for t in chosen])):
            for result in results:
                print(result, flush=True)
            if failure:
                print("%s: FAILED: %s" % (name, failure), flush=True)
            count += len(results) + bool(failure)
            failed += [r.name for r in results if not r.passed] + [name] * bool(failure)
            print("    %s: %.0f s" % (name, seconds), flush=True)
    print("%d of %d passed in %.0f s" % (count - len(failed), count, time.monotonic() - start))
    for name in failed:
        print("FAILED  %s" % name)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3
"""Times the scheme zyn beside OpenFOAM's gradients.

    run.py PROGRAMS WORK [--meshes NAME...] [--rounds N] [--ranks N] [--only-meshes]

PROGRAMS is the folder with zynFoamTime and libzynGradSchemes.so; WORK is the folder for the meshes, which are kept for the
next run:

    box-N    N^3 hexahedra
    skew-N   the same with inner points moved at random, along each axis by up to a fifth of the cell size
    tet-S    tetrahedra around the sphere of examples/channel_sphere, whose edge lengths are multiplied by S and whose cells
             are renumbered; 0.33 gives a million (needs gmsh)

Prints the lines that benchmarks/run.sh collects. The heap keeps what it has got from the system: without, OpenFOAM's
schemes fault in the pages of each result anew. The machine should have nothing else to do.
"""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
BOX = HERE.parent / "tests/cases/box"
SPHERE = HERE.parent.parent.parent / "examples/channel_sphere/channel_sphere.geo"
sys.path.insert(0, str(HERE.parent / "tutorial/skewedChannel"))
import channel  # noqa: E402  pylint: disable=wrong-import-position

SCHEMES = ["Gauss linear", "leastSquares", "zyn plain", "zyn leastSquares"]
SKEW_SCHEMES = SCHEMES + ["Gauss skewCorrected linear", "zyn iterated 2"]
BOX_SCHEMES = SCHEMES + ["zyn iterated 3", "zyn radialBasis"]

# What the operator's call may take, in units of OpenFOAM's own scheme.
TARGETS = {
    ("scalar", "zyn plain"): 0.75,
    ("vector", "zyn plain"): 0.75,
    ("scalar", "zyn leastSquares"): 1.0,
    ("vector", "zyn leastSquares"): 1.2,
    ("scalar", "zyn iterated 2"): 0.7,
}


def run(case, environment, *command):
    done = subprocess.run(command, cwd=case, env=environment, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode:
        sys.exit("run.py: %s ends with %d:\n%s" % (" ".join(command), done.returncode, done.stdout[-3000:]))
    return done.stdout


def make_mesh(case, kind, size, environment):
    if kind == "tet":
        run(case, environment, "gmsh", "-3", "-nt", "1", "-format", "msh22", "-clscale", size, "-o", "mesh.msh", str(SPHERE))
        run(case, environment, "gmshToFoam", "mesh.msh")
        (case / "mesh.msh").unlink()
        run(case, environment, "renumberMesh", "-overwrite")
        return
    mesh = case / "system/blockMeshDict"
    mesh.write_text(mesh.read_text().replace("n 6;", "n %s;" % size))
    run(case, environment, "blockMesh")
    if kind == "skew":
        os.chdir(case)
        channel.skew(0.2, (1, 1, 1))


def make_case(work, name, ranks, environment):
    kind, _, size = name.partition("-")
    if kind not in ("box", "skew", "tet") or not size:
        sys.exit("run.py: unknown mesh %s" % name)
    case = work / (name if ranks == 1 else "%s-%d" % (name, ranks))
    if (case / "made").exists():
        return case
    shutil.rmtree(case, ignore_errors=True)  # of a run that was interrupted
    shutil.copytree(BOX, case)
    make_mesh(case, kind, size, environment)
    if ranks > 1:
        (case / "system/decomposeParDict").write_text(
            "FoamFile { version 2.0; format ascii; class dictionary; object decomposeParDict; }\n"
            "numberOfSubdomains %d;\nmethod simple;\ncoeffs { n (%d 1 1); }\n" % (ranks, ranks))
        run(case, environment, "decomposePar")
    (case / "made").touch()
    return case


def report(table, row, column, text, target=None):
    print("value", table, row, column, text, "" if target is None else "%g" % target, sep="\t", flush=True)


def schemes_for(name):
    return SKEW_SCHEMES if name.startswith("skew") else BOX_SCHEMES if name.startswith("box") else SCHEMES


def measure(programs, case, name, options, environment):
    schemes = "(" + " ".join('"%s"' % scheme for scheme in schemes_for(name)) + ")"
    command = [str(programs / "zynFoamTime"), "-rounds", str(options.rounds), "-schemes", schemes]
    if options.ranks > 1:
        command = ["mpirun", "-np", str(options.ranks)] + command + ["-parallel"]
    lines = [line.split("\t") for line in run(case, environment, *command).splitlines() if "\t" in line]

    def rows(kind):
        return [line[1:] for line in lines if line[0] == kind]

    cells = "%s, %s" % (name, format(int(rows("mesh")[0][0]), ","))
    if options.ranks > 1:
        cells += ", %d ranks" % options.ranks
    for field, scheme, own, library_ns, own_ns, ratio, scheme_ratio in rows("own"):
        row = "%s | %s | `%s` | `%s`" % (cells, field, scheme, own)
        report("openfoam", row, "operator, ns per cell", library_ns)
        report("openfoam", row, "its own, ns per cell", own_ns)
        target = TARGETS.get((field, scheme)) if options.ranks == 1 else None
        report("openfoam", row, "operator over its own", "%.2f" % float(ratio), target)
        report("openfoam", row, "scheme over its own", "%.2f" % float(scheme_ratio))
    if not name.startswith("box"):
        return
    for field, scheme, ns, ratio in rows("time"):
        row = "%s | %s | `%s`" % (cells, field, scheme)
        report("openfoam-schemes", row, "ns per cell", ns)
        report("openfoam-schemes", row, "over `Gauss linear`", ratio)
    for scheme, seconds, size in rows("setup"):
        row = "%s | `%s`" % (cells, scheme)
        report("openfoam-memory", row, "set-up, s", seconds, 0.3 if scheme.startswith("zyn ") and "radial" not in scheme else None)
        report("openfoam-memory", row, "kept, bytes per cell", size,
               250 if scheme.startswith(("zyn plain", "zyn iterated")) else None)
    for field, scheme, library_ns, client_ns, scheme_ns, percent in rows("client"):
        row = "%s | %s | `%s`" % (cells, field, scheme)
        report("openfoam-client", row, "operator, ns per cell", library_ns)
        report("openfoam-client", row, "filling and copying out", client_ns)
        report("openfoam-client", row, "whole call", scheme_ns)
        report("openfoam-client", row, "part of the call, %", percent, 15)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--meshes", nargs="+", default=["box-100", "skew-100", "tet-0.33"])
    parser.add_argument("--rounds", type=int, default=11)
    parser.add_argument("--ranks", type=int, default=1)
    parser.add_argument("--only-meshes", action="store_true", help="make the meshes and stop")
    options = parser.parse_args()
    environment = dict(os.environ, WM_PROJECT_DIR=os.environ.get("WM_PROJECT_DIR", "/usr/share/openfoam"))
    environment.setdefault("OMP_NUM_THREADS", "1")
    keep = {"MALLOC_MMAP_MAX_": "0", "MALLOC_TRIM_THRESHOLD_": "100000000000", "MALLOC_TOP_PAD_": "500000000"}
    options.work.mkdir(parents=True, exist_ok=True)
    work, programs = options.work.resolve(), options.programs.resolve()
    for name in options.meshes:
        if name.startswith("tet") and shutil.which("gmsh") is None:
            print("run.py: %s is left out: gmsh is not installed" % name, file=sys.stderr)
            continue
        case = make_case(work, name, options.ranks, environment)
        if not options.only_meshes:
            measure(programs, case, name, options, dict(environment, **keep))


if __name__ == "__main__":
    main()

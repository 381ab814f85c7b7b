#!/usr/bin/env python3
"""OpenFOAM reads what `zyngrad gradient --write-case` writes, and computes the same.

    write_case.py ZYNGRAD MPIEXEC CASES

CASES is tests/data/openfoam_cases. Without OpenFOAM the exit code is 77, "skipped".

Plain Green-Gauss is "Gauss linear" on planar faces. Fields in the case, as zyngrad has read them, are therefore compared
with grad(p), grad(U), vorticity and Q of postProcess, and the divergence and the strain rate with what follows from grad(U).
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# Both add some ten terms in a cell, in another order. The numbers of the text cases have 12 digits.
ROUNDING = 1e-10

ENVIRONMENT = dict(os.environ, WM_PROJECT_DIR=os.environ.get("WM_PROJECT_DIR", "/usr/share/openfoam"), OMP_NUM_THREADS="1",
                   OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1",
                   OMPI_MCA_rmaps_base_oversubscribe="1", OMPI_MCA_mpi_yield_when_idle="1")
DERIVED = "grad,div,curl,Q,strain"
WRITTEN = ["grad(U)", "div(U)", "vorticity", "Q", "strainRate", "grad(p)"]


def run(*command, cwd):
    command = [str(c) for c in command]
    done = subprocess.run(command, cwd=cwd, env=dict(ENVIRONMENT, PWD=str(cwd)), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", timeout=300)
    if done.returncode:
        sys.exit("%s in %s ends with %d:\n%s" % (" ".join(command), cwd, done.returncode, done.stdout[-3000:]))
    return done.stdout


def complete(case):
    """Dictionaries that OpenFOAM's programs want besides those of the data; text of full precision."""
    with open(case / "system/controlDict", "a") as out:
        out.write("writeFormat ascii; writeCompression off; writePrecision 17;\n")
    (case / "system/fvSolution").write_text("FoamFile { version 2.0; format ascii; class dictionary; object fvSolution; }\n")


def copy(case, to):
    shutil.copytree(case, to)
    complete(to)
    return to


def values(path):
    """The values of the internal field of a text file, one list for each cell."""
    text = path.read_text()
    found = re.search(r"internalField\s+(uniform\s+([^;]*)|nonuniform\s+List<\w+>\s*\d+\s*\((.*?)\)\s*;)", text, re.S)
    if found is None:
        sys.exit("%s has no internalField" % path)
    numbers = [float(n) for n in re.findall(r"[-+.\deE]+", found.group(2) or found.group(3))]
    width = {"volScalarField": 1, "volVectorField": 3, "volSymmTensorField": 6, "volTensorField": 9}[
        re.search(r"class\s+(\w+)", text).group(1)]
    return [numbers[i:i + width] for i in range(0, len(numbers), width)]


def difference(ours, theirs):
    """The largest difference in units of the largest value."""
    if len(ours) == len(theirs):
        largest = max([abs(v) for row in theirs for v in row] + [1e-300])
        return max(abs(a - b) for one, other in zip(ours, theirs) for a, b in zip(one, other)) / largest
    if len(theirs) == 1:  # uniform
        return difference(ours, theirs * len(ours))
    return float("inf")


def compare(name, ours, theirs, bar=ROUNDING):
    found = difference(ours, theirs)
    print("%-70s %9.2e, at most %.0e" % (name, found, bar))
    if not found <= bar:
        sys.exit("FAILED: " + name)


def expected(case, time):
    """OpenFOAM's own fields, in a copy of the case."""
    for function in ("grad(p)", "grad(U)", "vorticity", "Q"):
        run("postProcess", "-func", function, "-time", time, cwd=case)
    fields = {name: values(case / time / name) for name in ("grad(p)", "grad(U)", "vorticity", "Q")}
    fields["div(U)"] = [[g[0] + g[4] + g[8]] for g in fields["grad(U)"]]
    fields["strainRate"] = [[g[0], (g[1] + g[3]) / 2, (g[2] + g[6]) / 2, g[4], (g[5] + g[7]) / 2, g[8]]
                            for g in fields["grad(U)"]]
    return fields


def main():
    zyngrad, cases = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[3]).resolve()
    mpiexec = sys.argv[2]
    if not all(shutil.which(program) for program in ("postProcess", "foamFormatConvert", "reconstructPar")):
        print("skipped: OpenFOAM is not installed")
        sys.exit(77)

    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)

        def write(case, time, ranks=1, *more):
            command = [zyngrad, "gradient", case.name, "--field-file", "U", "--field-file", "p", "--time", time,
                       "--method", "plain", "--derive", DERIVED, "--write-case", "-o", "results", *more]
            return run(*([mpiexec, "-n", ranks] if ranks > 1 else []), *command, cwd=work)

        whole = {"cavity": "0.4", "channel": "0.1"}
        reference = {}
        for name, time in whole.items():
            theirs = copy(cases / name, work / (name + "-theirs"))
            reference[name] = expected(theirs, time)

        # Whole cases in all formats, on one rank and on several.
        for name, source in (("cavity", "cavity"), ("cavity_binary", "cavity"), ("cavity_gz", "cavity"),
                             ("cavity_binary_gz", "cavity"), ("channel", "channel")):
            for ranks in (1, 3):
                time = whole[source]
                ours = copy(cases / name, work / ("%s-%d" % (name, ranks)))
                write(ours, time, ranks)
                run("postProcess", "-func", "mag(grad(p))", "-time", time, cwd=ours)
                run("foamFormatConvert", "-time", time, cwd=ours)
                for field in WRITTEN:
                    # The binary cases keep all bits of the run that wrote 12 digits into the text cases.
                    compare("%s on %d: %s" % (name, ranks, field), values(ours / time / field), reference[source][field])

        # Decomposed cases: reconstructPar puts the parts together.
        for name, source, ranks in (("cavity_parts", "cavity", 2), ("cavity_parts_binary_gz", "cavity", 3),
                                    ("cavity_collated_text", "cavity", 2), ("cavity_collated", "cavity", 3),
                                    ("channel_parts", "channel", 2), ("channel_parts_3", "channel", 3),
                                    ("channel_collated", "channel", 3)):
            time = whole[source]
            ours = copy(cases / name, work / name)
            write(ours, time, ranks)
            handler = ["-fileHandler", "collated" if "collated" in name else "uncollated"]
            shutil.copytree(cases / source / "constant", ours / "constant", dirs_exist_ok=True)
            run("reconstructPar", "-time", time, *handler, cwd=ours)
            for field in WRITTEN:
                compare("%s on %d: %s" % (name, ranks, field), values(ours / time / field), reference[source][field])


if __name__ == "__main__":
    main()

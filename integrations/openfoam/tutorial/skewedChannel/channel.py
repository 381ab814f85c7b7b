#!/usr/bin/python3
"""Makes the skewed mesh and the exact field of the case, and measures the error of a gradient.

    channel.py skew AMOUNT     moves each inner point at random, along each axis by up to AMOUNT of the cell size
    channel.py field           writes the exact field 0/T from the cell centres in 0/C (postProcess -func writeCellCentres)
    channel.py error NAME      prints NAME, cells across, and mean and largest error of 0/grad(T), in units of the largest
                               exact slope, with commas between

The field is T = sin(3x) cos(2y) + exp(z/2). Errors are lengths of vectors, in all cells, weighted equally.
"""

import math
import pathlib
import random
import re
import sys

HEADER = "FoamFile { version 2.0; format ascii; class %s; object %s; }\n"


def exact(p):
    x, y, z = p
    return math.sin(3 * x) * math.cos(2 * y) + math.exp(z / 2)


def exact_slope(p):
    x, y, z = p
    return (3 * math.cos(3 * x) * math.cos(2 * y), -2 * math.sin(3 * x) * math.sin(2 * y), math.exp(z / 2) / 2)


def vectors(text):
    """All vectors of a piece of a file."""
    return [tuple(float(w) for w in v.split()) for v in re.findall(r"\(([-+.0-9eE]+ [-+.0-9eE]+ [-+.0-9eE]+)\)", text)]


def cells_across():
    return int(re.search(r"^n (\d+);", pathlib.Path("system/blockMeshDict").read_text(), re.M).group(1))


def skew(amount, corner=(2, 1, 1)):
    """Points on the surface of the box from the origin to the corner stay."""
    path = pathlib.Path("constant/polyMesh/points")
    text = path.read_text()
    start = text.index("(", text.index("}") + 1)
    generator, step, lines = random.Random(1), 1 / cells_across(), []
    for p in vectors(text[start:]):
        moves = [generator.uniform(-amount, amount) * step for _ in range(3)]
        inside = all(1e-9 < c < end - 1e-9 for c, end in zip(p, corner))
        q = [c + m for c, m in zip(p, moves)] if inside else p
        lines.append("(%.17g %.17g %.17g)" % tuple(q))
    path.write_text(text[:start] + "(\n%s\n)\n" % "\n".join(lines))


def scalar_list(values):
    return "nonuniform List<scalar> %d (%s)" % (len(values), " ".join("%.17g" % v for v in values))


def field():
    text = pathlib.Path("0/C").read_text()
    inside, boundary = text[text.index("internalField"):].split("boundaryField")
    with open("0/T", "w") as out:
        out.write(HEADER % ("volScalarField", "T") + "dimensions [0 0 0 0 0 0 0];\n")
        out.write("internalField %s;\nboundaryField\n{\n" % scalar_list([exact(p) for p in vectors(inside)]))
        for name, part in re.findall(r"(\w+)\s*\{([^}]*)\}", boundary):
            out.write("%s { type fixedValue; value %s; }\n" % (name, scalar_list([exact(p) for p in vectors(part)])))
        out.write("}\n")


def inner_vectors(path):
    text = pathlib.Path(path).read_text()
    return vectors(text[text.index("internalField"):text.index("boundaryField")])


def error(name):
    slopes = [exact_slope(p) for p in inner_vectors("0/C")]
    errors = [math.dist(g, s) for g, s in zip(inner_vectors("0/grad(T)"), slopes)]
    unit = max(math.hypot(*s) for s in slopes)
    if len(errors) != len(slopes):
        sys.exit("channel.py: 0/grad(T) has %d cells, 0/C has %d" % (len(errors), len(slopes)))
    print("%s,%d,%.5g,%.5g" % (name, cells_across(), sum(errors) / len(errors) / unit, max(errors) / unit))


if __name__ == "__main__":
    if sys.argv[1] == "skew":
        skew(float(sys.argv[2]))
    elif sys.argv[1] == "field":
        field()
    else:
        error(sys.argv[2])

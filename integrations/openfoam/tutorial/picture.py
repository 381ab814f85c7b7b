#!/usr/bin/python3
"""Draws the picture of docs/measured/openfoam.md from the results of the two cases in this folder.

    picture.py PICTURE.png

Reads skewedChannel/errors.csv and pitzDaily/residuals.csv, which the Allrun of each case writes. Needs python3-matplotlib.
"""

import csv
import pathlib
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
STYLES = {
    "Gauss linear": ("black", "-", "o"),
    "leastSquares": ("gray", "-", "s"),
    "zyn plain": ("tab:orange", "--", "x"),
    "zyn iterated 3": ("tab:red", "-", "^"),
    "zyn leastSquares": ("tab:blue", "-", "D"),
    "zyn radialBasis": ("tab:green", "-", "v"),
    "cellLimited zyn radialBasis 1": ("tab:green", ":", "v"),
}


def series(path):
    """The rows of each scheme, in the order of the file."""
    result = {}
    with open(path) as file:
        for row in csv.DictReader(file):
            result.setdefault(row["scheme"], []).append(row)
    return result


def main():
    figure, (errors, residuals) = plt.subplots(1, 2, figsize=(10, 4.2), constrained_layout=True)
    for scheme, rows in series(HERE / "skewedChannel/errors.csv").items():
        color, line, marker = STYLES[scheme]
        errors.loglog([int(r["cells across"]) for r in rows], [float(r["mean error"]) for r in rows], color=color,
                      linestyle=line, marker=marker, label=scheme)
    errors.set_xlabel("cells across the channel")
    errors.set_ylabel("mean error / largest slope")
    errors.set_title("Gradient of an exact field on a skewed mesh")
    ticks = sorted({int(r["cells across"]) for rows in series(HERE / "skewedChannel/errors.csv").values() for r in rows})
    errors.set_xticks(ticks, [str(t) for t in ticks])
    errors.minorticks_off()
    errors.legend(fontsize=8)

    for scheme, rows in series(HERE / "pitzDaily/residuals.csv").items():
        color, line, marker = STYLES[scheme]
        steps, values = [int(r["iteration"]) for r in rows], [float(r["p"]) for r in rows]
        residuals.semilogy(steps, values, color=color, linestyle=line, linewidth=1.2, label=scheme)
        if len(rows) < 50:
            residuals.semilogy(steps[-1:], values[-1:], color=color, marker="X", markersize=9)
    residuals.set_xlabel("iteration")
    residuals.set_ylabel("initial residual of p")
    residuals.set_title("simpleFoam on pitzDaily (X: diverged)")
    residuals.legend(fontsize=8)
    figure.savefig(sys.argv[1], dpi=110)


if __name__ == "__main__":
    main()

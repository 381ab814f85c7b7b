#!/usr/bin/env python3
"""Draws velocity, vorticity and Q of the cavity from a file that `zyngrad gradient` has written. Needs NumPy and Matplotlib.

    draw.py gradients/gradient.vtu PICTURE.png
"""

import pathlib
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "docs"))
from vtu import read_vtu  # noqa: E402


def main():
    arrays = read_vtu(pathlib.Path(sys.argv[1]))
    centre = arrays["Points"][arrays["connectivity"].reshape(-1, 8)].mean(axis=1)
    centre = centre.round(9)  # cells of one row differ by rounding
    order = np.lexsort((centre[:, 0], centre[:, 1]))
    n = int(round(len(order) ** 0.5))

    def on_grid(values):
        return values[order].reshape(n, n)

    x, y = on_grid(centre[:, 0]), on_grid(centre[:, 1])
    u, v = on_grid(arrays["U"][:, 0]), on_grid(arrays["U"][:, 1])
    panels = [
        ("speed", np.hypot(u, v), "viridis", None),
        ("vorticity", on_grid(arrays["vorticity_U_lsq"][:, 2]), "RdBu_r", 8.0),
        ("Q", on_grid(arrays["Q_U_lsq"]), "PuOr_r", 2.0),
    ]
    figure, axes = plt.subplots(1, 3, figsize=(11, 3.6), layout="constrained")
    for (title, values, colours, limit), axis in zip(panels, axes):
        range_of_colours = {} if limit is None else {"vmin": -limit, "vmax": limit}
        image = axis.pcolormesh(x, y, values, cmap=colours, shading="nearest", **range_of_colours)
        axis.streamplot(x[0], y[:, 0], u, v, color="black", linewidth=0.4, density=0.7, arrowsize=0.6)
        axis.set(title=title, aspect="equal", xlim=(0, 1), ylim=(0, 1), xticks=(0, 1), yticks=(0, 1))
        figure.colorbar(image, ax=axis, shrink=0.8, extend="neither" if limit is None else "both")
    figure.savefig(sys.argv[2], dpi=90)


if __name__ == "__main__":
    main()

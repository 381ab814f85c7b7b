#!/usr/bin/env python3
"""Makes the picture of the README: a field, its gradient and the errors of two methods on the plane z = 0 of the
channel with a sphere. Needs Matplotlib (Debian: python3-matplotlib).

    docs/make_picture.py ZYNGRAD_BINARY
"""

import io
import pathlib
import subprocess
import sys
import tempfile

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
from matplotlib.collections import PolyCollection  # noqa: E402
from matplotlib.colors import LogNorm  # noqa: E402
from PIL import Image  # noqa: E402
from vtu import read_vtu  # noqa: E402

DOCS = pathlib.Path(__file__).resolve().parent
MESH = DOCS.parent / "examples" / "channel_sphere" / "channel_sphere.msh"
FIELD = "sin(2*x)*y + z^2"
PLANE_Z = 0.0


def slice_tetrahedra(points, tetrahedra):
    """The polygons in which the plane cuts the tetrahedra, with corners in order, and the numbers of the cut cells."""
    polygons, cells = [], []
    above = points[:, 2] >= PLANE_Z
    n_above = above[tetrahedra].sum(axis=1)
    for cell in np.flatnonzero((n_above > 0) & (n_above < 4)):
        corners = tetrahedra[cell]
        crossings = []
        for a in corners[above[corners]]:
            for b in corners[~above[corners]]:
                t = (PLANE_Z - points[a, 2]) / (points[b, 2] - points[a, 2])
                crossings.append(points[a] + t * (points[b] - points[a]))
        polygon = np.array(crossings)[:, :2]
        offset = polygon - polygon.mean(axis=0)
        polygons.append(polygon[np.argsort(np.arctan2(offset[:, 1], offset[:, 0]))])
        cells.append(cell)
    return polygons, np.array(cells)


def main():
    zyngrad = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            [zyngrad, "gradient", MESH, "--field", FIELD, "--method", "plain,lsq", "-o", "out"],
            cwd=folder, check=True, stdout=subprocess.DEVNULL,
        )
        arrays = read_vtu(pathlib.Path(folder) / "out" / "gradient.vtu")

    polygons, cells = slice_tetrahedra(arrays["Points"], arrays["connectivity"].reshape(-1, 4))
    length = np.linalg.norm(arrays["gradient_lsq"], axis=1)
    errors = LogNorm(1e-2, 2.0)
    panels = [
        ("field: sin(2x) y + z²", arrays["field"], "viridis", None),
        ("length of its gradient, least squares", length, "viridis", None),
        ("error of plain Green-Gauss", arrays["error_plain"], "magma", errors),
        ("error of least squares", arrays["error_lsq"], "magma", errors),
    ]
    figure, axes = plt.subplots(2, 2, figsize=(10, 5.2), layout="constrained")
    for (title, values, colours, norm), axis in zip(panels, axes.flat):
        cut = PolyCollection(polygons, array=values[cells], cmap=colours, norm=norm, edgecolors="face", linewidths=0.2)
        axis.add_collection(cut)
        axis.set_aspect("equal")
        axis.autoscale_view()
        axis.set_title(title, fontsize=11)
        axis.set_axis_off()
        figure.colorbar(cut, ax=axis, shrink=0.8)
    drawn = io.BytesIO()
    figure.savefig(drawn, dpi=90)
    # A palette keeps the file small.
    Image.open(drawn).convert("RGB").quantize(128).save(DOCS / "channel_sphere.png", optimize=True)
    print(f"docs/channel_sphere.png: {len(cells)} cells of the plane z = {PLANE_Z:g}")


if __name__ == "__main__":
    main()

"""The example runs as it is, finds the vorticity of its own flow, and takes another file."""

import subprocess
import sys

import numpy as np
import pytest

meshio = pytest.importorskip("meshio")
pytest.importorskip("matplotlib")


def run(source, folder, *arguments):
    done = subprocess.run([sys.executable, source / "python" / "examples" / "vorticity.py", *arguments], cwd=folder,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_own_flow(source, work):
    printed = run(source, work)
    assert "9600 cells" in printed
    on_average, at_most = (float(word) for word in printed.split("vorticity: ")[1].replace(",", "").split()[:4:3])
    assert 0 < on_average < 0.1 and at_most < 0.6, printed
    result = meshio.read("vorticity.vtu")
    x, y, z = result.points[result.cells[0].data].mean(axis=1).T
    exact = np.stack([-np.cos(x) * np.sin(y) * np.sin(z), -np.sin(x) * np.cos(y) * np.sin(z),
                      2 * np.sin(x) * np.sin(y) * np.cos(z)], axis=1)
    assert np.abs(result.cell_data["vorticity"][0] - exact).mean() < 0.05


def test_picture(source, work):
    """It shows something: red and blue in a picture of the expected size."""
    run(source, work)
    from matplotlib import image

    picture = image.imread("vorticity.png")[..., :3]
    assert picture.shape[0] > 300 and picture.shape[1] > 300
    red, green, blue = np.moveaxis(picture, -1, 0)
    assert (red - blue > 0.3).mean() > 0.02 and (blue - red > 0.3).mean() > 0.02, "there are vortices of both signs"


def test_another_file(source, work):
    """Rotation of a rigid body, in a file with surface elements and another name for the velocity."""
    from grids import Grid

    grid = Grid(5, 5, 5)
    centres = grid.centres[:, :grid.n].T
    rotation = np.stack([-centres[:, 1], centres[:, 0], 0 * centres[:, 2]], axis=1)
    meshio.Mesh(grid.points, [("hexahedron", grid.hexahedra), ("quad", grid.boundary_nodes)],
                cell_data={"U": [rotation, np.zeros((grid.nb, 3))]}).write("rigid.vtu")
    run(source, work, "rigid.vtu", "U")
    result = meshio.read("vorticity.vtu")
    inside = np.setdiff1d(np.arange(grid.n), grid.boundary_owner)
    np.testing.assert_allclose(result.cell_data["vorticity"][0][inside], np.broadcast_to([0, 0, 2.0], (len(inside), 3)),
                               rtol=0, atol=1e-9)

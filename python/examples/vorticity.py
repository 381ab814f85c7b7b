#!/usr/bin/env python3
"""Read a VTU file, compute the gradient of its velocity and from it the vorticity, and draw a picture.

    vorticity.py [FLOW.vtu [VELOCITY]]

Without a file, the script makes one: the vortices of Taylor and Green on 9600 tetrahedra, whose vorticity is known.
With one, VELOCITY is the name of its cell data with three components (default "velocity"). It needs python3-meshio and
python3-matplotlib. The cells between the lines # %% can be run one by one in editors that know them.
"""

# %% A flow in a file, as a solver writes it: a velocity for each cell.
import sys

import matplotlib
import meshio
import numpy as np

import zyn3dgradop as zyn

matplotlib.use("Agg")  # no window
import matplotlib.pyplot as plt  # noqa: E402


def taylor_green(x, y, z):
    """u = sin x cos y cos z, v = -cos x sin y cos z, w = 0: free of divergence."""
    return np.stack([np.sin(x) * np.cos(y) * np.cos(z), -np.cos(x) * np.sin(y) * np.cos(z), 0 * z], axis=-1)


def taylor_green_vorticity(x, y, z):
    return np.stack([-np.cos(x) * np.sin(y) * np.sin(z), -np.sin(x) * np.cos(y) * np.sin(z),
                     2 * np.sin(x) * np.sin(y) * np.cos(z)], axis=-1)


def write_flow(path, n=(20, 20, 4)):
    """A box of 2 pi x 2 pi x 0.4 pi in cubes, each cut into six tetrahedra around a diagonal."""
    x, y, z = np.meshgrid(*[np.pi / 10 * np.arange(count + 1) for count in n], indexing="ij")
    points = np.stack([x, y, z], axis=-1).reshape(-1, 3)
    first = np.arange(x.size).reshape(x.shape)[:-1, :-1, :-1].ravel()
    step = np.array([(n[1] + 1) * (n[2] + 1), n[2] + 1, 1])
    tetrahedra = np.concatenate([np.stack([first, first + step[a], first + step[a] + step[b], first + step.sum()], axis=1)
                                 for a in range(3) for b in range(3) if a != b])
    centres = points[tetrahedra].mean(axis=1)
    meshio.Mesh(points, [("tetra", tetrahedra)], cell_data={"velocity": [taylor_green(*centres.T)]}).write(path)


own_flow = len(sys.argv) < 2
flow_file = "flow.vtu" if own_flow else sys.argv[1]
name = sys.argv[2] if len(sys.argv) > 2 else "velocity"
if own_flow:
    write_flow(flow_file)

# %% The mesh: faces and boundary are derived from the cells.
flow = meshio.read(flow_file)
mesh = zyn.Mesh.from_meshio(flow)
quality = mesh.quality()
print(f"{mesh.cell_count} cells, {mesh.boundary_face_count} boundary faces, "
      f"non-orthogonality up to {quality.max_non_orthogonality:.0f} degrees")

# %% The velocity with its boundary values. A file of cell data has none: the value of the cell is taken, unless we know more.
velocity = mesh.expand(np.concatenate([values for block, values in zip(flow.cells, flow.cell_data[name])
                                       if block.dim == 3]))
if own_flow:
    boundary = slice(mesh.cell_count, mesh.total_count)
    velocity[:, boundary] = taylor_green(*mesh.centres[:, boundary]).T

# %% The gradient: gradient[i, j] = d velocity_i / d x_j in each cell.
gradient = zyn.Gradient(mesh, "least_squares").three(velocity)

# %% Vorticity, and divergence as a measure of the error where the flow has none.
vorticity = np.stack([gradient[2, 1] - gradient[1, 2], gradient[0, 2] - gradient[2, 0], gradient[1, 0] - gradient[0, 1]])
divergence = gradient[0, 0] + gradient[1, 1] + gradient[2, 2]
magnitude = np.linalg.norm(mesh.result(vorticity), axis=1)
print(f"vorticity up to {magnitude.max():.3f}, divergence up to {np.abs(divergence).max():.3f}")
if own_flow:
    exact = taylor_green_vorticity(*mesh.centres[:, :mesh.cell_count])
    error = np.linalg.norm(vorticity[:, :mesh.cell_count].T - exact, axis=1)
    weights = mesh.volumes / mesh.volumes.sum()
    print(f"error of the vorticity: {np.sqrt(weights @ error**2):.3f} on average, {error.max():.3f} at most")

# %% Back into a file for viewers, in the order of the cells that came.
cells = [block for block in flow.cells if block.dim == 3]
ends = np.cumsum([len(block.data) for block in cells])[:-1]
meshio.Mesh(flow.points, cells, cell_data={"velocity": np.split(mesh.result(velocity), ends),
                                           "vorticity": np.split(mesh.result(vorticity), ends)}).write("vorticity.vtu")

# %% A picture: the cells nearest to the lowest plane of the flow, seen from above.
centres = mesh.result(mesh.centres)
low, high = centres.min(axis=0), centres.max(axis=0)
layer = centres[:, 2] < low[2] + (high[2] - low[2]) / 6
component = mesh.result(vorticity)[layer, 2]
limit = np.abs(component).max()
figure, axes = plt.subplots(figsize=(6, 5))
shown = axes.tripcolor(*centres[layer, :2].T, component, cmap="RdBu_r", vmin=-limit, vmax=limit, shading="gouraud")
some = np.random.default_rng(1).choice(np.flatnonzero(layer), min(400, layer.sum()), replace=False)
axes.quiver(*centres[some, :2].T, *mesh.result(velocity)[some, :2].T, scale=30, width=0.004)
axes.set(aspect="equal", xlabel="x", ylabel="y", title="vorticity around z, and velocity")
figure.colorbar(shown)
figure.savefig("vorticity.png", dpi=100, bbox_inches="tight")
print("wrote vorticity.vtu and vorticity.png")

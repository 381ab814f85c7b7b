"""Meshes of parallelepipeds, made with numpy alone: an account of the geometry that owes nothing to the library."""

import copy

import numpy as np


class Grid:
    """A box of nx * ny * nz cells, sheared and unevenly spaced, so that cells are parallelepipeds of many sizes.

    Cells are numbered with x fastest, then y, then z, and moved around if `shuffle` is given. Faces are planar, so
    their centres are the averages of their nodes and there is no doubt about any number.
    """

    def __init__(self, nx, ny, nz, shear=0.3, seed=1, shuffle=True):
        random = np.random.default_rng(seed)
        self.shape = (nx, ny, nz)
        ticks = [np.concatenate(([0.0], np.cumsum(random.uniform(0.5, 1.5, count)))) / count for count in self.shape]
        x, y, z = (axis.ravel(order="F") for axis in np.meshgrid(*ticks, indexing="ij"))
        self.points = np.stack([x + shear * y, y + shear * z, z - 0.5 * shear * x], axis=1)

        i, j, k = (axis.ravel(order="F") for axis in np.meshgrid(*map(np.arange, self.shape), indexing="ij"))
        self.n = n = nx * ny * nz
        number = np.arange(n)
        if shuffle:
            random.shuffle(number)
        self.hexahedra = np.empty((n, 8), dtype=np.int64)
        corners = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
        for corner, (di, dj, dk) in enumerate(corners):
            self.hexahedra[number, corner] = self._node(i + di, j + dj, k + dk)

        # The faces at the lower end of each axis, then those at the upper end.
        local = [((0, 4, 7, 3), (1, 2, 6, 5)), ((0, 1, 5, 4), (3, 7, 6, 2)), ((0, 3, 2, 1), (4, 5, 6, 7))]
        position, strides = (i, j, k), (1, nx, nx * ny)
        inner, outer = [], []
        for axis in range(3):
            below, above = local[axis]
            inside = np.flatnonzero(position[axis] < self.shape[axis] - 1)
            inner.append((number[inside], number[inside + strides[axis]], self.hexahedra[number[inside]][:, above]))
            for side, nodes, end in ((0, below, 0), (1, above, self.shape[axis] - 1)):
                cells = number[position[axis] == end]
                patch = np.full(len(cells), 2 * axis + side)
                outer.append((cells, patch, self.hexahedra[cells][:, nodes]))

        owner, neighbour, face_nodes = (np.concatenate(part) for part in zip(*inner))
        order = np.lexsort((np.maximum(owner, neighbour), np.minimum(owner, neighbour)))
        self.owner, self.neighbour = owner[order].astype(np.int32), neighbour[order].astype(np.int32)
        self.face_nodes = face_nodes[order]
        boundary_owner, self.boundary_patch, self.boundary_nodes = (np.concatenate(part) for part in zip(*outer))
        self.boundary_owner = boundary_owner.astype(np.int32)
        self.nf, self.nb = len(self.owner), len(self.boundary_owner)

        edges = [self._corner(1) - self._corner(0), self._corner(3) - self._corner(0), self._corner(4) - self._corner(0)]
        self.volumes = np.abs(np.einsum("ij,ij->i", edges[0], np.cross(edges[1], edges[2])))
        cell_centres = self.points[self.hexahedra].mean(axis=1)
        self.areas, self.face_centres = self._faces(self.face_nodes)
        self.boundary_areas, self.boundary_centres = self._faces(self.boundary_nodes)
        self.centres = np.ascontiguousarray(np.concatenate([cell_centres, self.boundary_centres.T]).T)

        to_face = np.linalg.norm(self.face_centres - self.centres[:, self.owner], axis=0)
        to_neighbour = np.linalg.norm(self.face_centres - self.centres[:, self.neighbour], axis=0)
        self.weights = to_face / (to_face + to_neighbour)

    def displaced(self, distance, seed=1):
        """A copy with cell and face centres moved at random, so that the line of centres misses the face's centre."""
        random = np.random.default_rng(seed)
        other = copy.copy(self)
        other.centres = self.centres + random.uniform(-distance, distance, self.centres.shape)
        other.face_centres = self.face_centres + random.uniform(-distance, distance, self.face_centres.shape)
        other.weights = random.uniform(0.2, 0.8, self.nf)
        return other

    def _node(self, i, j, k):
        nx, ny, _ = self.shape
        return i + (nx + 1) * (j + (ny + 1) * k)

    def _corner(self, corner):
        return self.points[self.hexahedra[:, corner]]

    def _faces(self, nodes):
        corner = self.points[nodes]
        area = np.cross(corner[:, 1] - corner[:, 0], corner[:, 3] - corner[:, 0])
        return np.ascontiguousarray(area.T), np.ascontiguousarray(corner.mean(axis=1).T)

    def arrays(self):
        """The arguments of Mesh(...) without nodes."""
        names = ("centres", "volumes", "owner", "neighbour", "areas", "face_centres", "weights", "boundary_owner",
                 "boundary_areas", "boundary_centres")
        return {name: getattr(self, name) for name in names}

    def nodes(self):
        """The arguments of Mesh(...) for the nodes: of inner faces, then of boundary faces."""
        rows = np.concatenate([self.face_nodes, self.boundary_nodes]).astype(np.int32)
        return {"nodes": np.ascontiguousarray(self.points.T), "face_nodes": rows.reshape(-1),
                "face_node_start": np.arange(0, rows.size + 1, 4, dtype=np.int32)}

    def field(self, formula):
        """formula(x, y, z) at cell centres and, on the boundary, at face centres."""
        return formula(*self.centres)


def gauss(grid, face_values, boundary_values):
    """1/V * sum over the faces of phi_f S for all cells: (3, n)."""
    total = np.zeros((3, grid.n))
    for axis in range(3):
        flux = face_values * grid.areas[axis]
        np.add.at(total[axis], grid.owner, flux)
        np.subtract.at(total[axis], grid.neighbour, flux)
        np.add.at(total[axis], grid.boundary_owner, boundary_values * grid.boundary_areas[axis])
    return total / grid.volumes


def median(a, b, c):
    return np.sort(np.stack([a, b, c]), axis=0)[1]


def plain(grid, phi):
    """Plain Green-Gauss by its formula."""
    beside, beyond = phi[grid.owner], phi[grid.neighbour]
    linear = (1.0 - grid.weights) * beside + grid.weights * beyond
    return gauss(grid, median(beside, linear, beyond), phi[grid.n:])


def iterated(grid, phi, sweeps):
    """Iterated Green-Gauss by its formula: face values corrected by the gradient of the sweep before."""
    w, n = grid.weights, grid.n
    beside, beyond = phi[grid.owner], phi[grid.neighbour]
    linear = (1.0 - w) * beside + w * beyond
    between = (1.0 - w) * grid.centres[:, grid.owner] + w * grid.centres[:, grid.neighbour]
    result = plain(grid, phi)
    for _ in range(sweeps - 1):
        slope = (1.0 - w) * result[:, grid.owner] + w * result[:, grid.neighbour]
        corrected = linear + np.sum(slope * (grid.face_centres - between), axis=0)
        result = gauss(grid, median(beside, corrected, beyond), phi[n:])
    return result


def weighted(grid, phi, kappa):
    """Green-Gauss by its formula, with face values from the harmonic mean of kappa."""
    w = grid.weights
    beside, beyond = phi[grid.owner], phi[grid.neighbour]
    here, there = w / kappa[grid.owner], (1.0 - w) / kappa[grid.neighbour]
    value = beyond + (beside - beyond) * there / (here + there)
    return gauss(grid, median(beside, value, beyond), phi[grid.n:])


def least_squares(grid, phi):
    """Unweighted least squares over the face neighbours, by numpy's own solver. All boundary faces are walls."""
    n = grid.n
    matrix, right = np.zeros((n, 3, 3)), np.zeros((n, 3))
    ghosts = n + np.arange(grid.nb)
    pairs = [(grid.owner, grid.neighbour), (grid.neighbour, grid.owner), (grid.boundary_owner, ghosts)]
    for cell, other in pairs:
        d = (grid.centres[:, other] - grid.centres[:, cell]).T
        np.add.at(matrix, cell, d[:, :, None] * d[:, None, :])
        np.add.at(right, cell, d * (phi[other] - phi[cell])[:, None])
    return np.linalg.solve(matrix, right[:, :, None])[:, :, 0].T

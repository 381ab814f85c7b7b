"""Cells and surface elements of other programs' meshes, in the form from which the core derives faces."""

import numpy as np

from . import _core

# The core's numbers of the standard cells.
TETRAHEDRON, HEXAHEDRON, PRISM, PYRAMID = range(4)
NODE_COUNTS = np.array([4, 8, 6, 5])

# Nodes of each face of a standard cell. Their direction does not matter: `_outward` sets it.
_FACES = {
    TETRAHEDRON: ((0, 1, 2), (0, 1, 3), (1, 2, 3), (2, 0, 3)),
    HEXAHEDRON: ((0, 1, 2, 3), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7)),
    PRISM: ((0, 1, 2), (3, 4, 5), (0, 1, 4, 3), (1, 2, 5, 4), (2, 0, 3, 5)),
    PYRAMID: ((0, 1, 2, 3), (0, 1, 4), (1, 2, 4), (2, 3, 4), (3, 0, 4)),
}

_UNNAMED = "unnamed"  # what the core calls boundary faces that no surface element covers
_GROUP_NAMES = ("inlet", "outlet", "symmetry", "wall")


class CellList:
    """What a source contains, collected block by block in its own order.

    A position is the number of a cell among all that the source calls cells, surface elements, lines and points included.
    """

    def __init__(self, name, points):
        points = np.asarray(points)
        if points.ndim != 2 or points.shape[1] not in (2, 3):
            raise ValueError(f"{name}: points have the shape {points.shape} instead of (number of points, 3)")
        if points.shape[1] == 2:
            raise ValueError(f"{name}: points have two coordinates; the mesh must have three dimensions")
        self.name = name
        self.count = 0  # of all that the source calls cells
        self.points = np.ascontiguousarray(points, dtype=np.float64)
        self._blocks = []  # (shape, positions in the source, (count, nodes of the shape))
        self._polyhedra = []  # (position in the source, [nodes of a face, ...])
        self._surfaces = []  # (nodes of each element in a row, patch of each element)
        self._patches = {}
        self._refused = {}

    def add_cells(self, shape, positions, nodes):
        if len(positions):
            self._blocks.append((shape, np.asarray(positions), self._checked(nodes)))

    def add_polyhedron(self, position, faces):
        self._polyhedra.append((position, [self._checked(face) for face in faces]))

    def add_surfaces(self, nodes, patch_names):
        """Rows of nodes, and the name of each row's patch."""
        numbers = [self._patches.setdefault(str(name), len(self._patches)) for name in patch_names]
        if len(numbers):
            self._surfaces.append((self._checked(nodes), np.array(numbers, dtype=np.int32)))

    def refuse(self, type_name, count):
        self._refused[type_name] = self._refused.get(type_name, 0) + count

    def build(self, groups, default_group):
        """The mesh, and the position of each of its cells in the source."""
        if default_group not in _GROUP_NAMES:
            raise ValueError(f"default_group is {default_group!r} instead of one of {', '.join(_GROUP_NAMES)}")
        if self._refused:
            kinds = ", ".join(f"{count} of type {kind}" for kind, count in self._refused.items())
            raise ValueError(f"{self.name}: cells that are not supported: {kinds}")
        if not self._blocks and not self._polyhedra:
            raise ValueError(f"{self.name}: no three-dimensional cells")
        build = self._build_polyhedra if self._polyhedra else self._build_standard
        return build(*self._patches_and_groups(groups, default_group))

    def _checked(self, nodes):
        nodes = np.asarray(nodes)
        outside = (nodes < 0) | (nodes >= len(self.points))
        if outside.any():
            raise ValueError(f"{self.name}: node {nodes[outside].flat[0]} of a cell is not one of the "
                             f"{len(self.points)} points")
        return nodes

    def _patches_and_groups(self, groups, default_group):
        """The patches, and a group for each of them: the user's, the one that its name begins with, or the default."""
        names = list(self._patches)
        if _UNNAMED not in self._patches:
            names.append(_UNNAMED)
        chosen = {name: next((group for group in _GROUP_NAMES if name.lower().startswith(group)), default_group)
                  for name in names}
        chosen.update(groups or {})
        return [(name, None) for name in names], chosen

    def _in_source_order(self, positions):
        order = np.argsort(positions, kind="stable")
        return order, positions[order]

    def _build_standard(self, patches, groups):
        shapes = np.concatenate([np.full(len(positions), shape, np.uint8) for shape, positions, _ in self._blocks])
        positions = np.concatenate([positions for _, positions, _ in self._blocks])
        flat = np.concatenate([nodes.reshape(-1) for _, _, nodes in self._blocks])
        order, positions = self._in_source_order(positions)
        start = np.concatenate(([0], np.cumsum(NODE_COUNTS[shapes])))
        nodes = flat[_ranges(start[order], NODE_COUNTS[shapes[order]])]
        surface_nodes, surface_start, surface_patch = self._surface_rows()
        mesh = _core.build_cells(self.name, self.points, shapes[order], nodes.astype(np.int32), surface_nodes,
                                 surface_start, surface_patch, patches, groups)
        return mesh, positions

    def _surface_rows(self):
        counts = np.concatenate([np.zeros(0, np.int64)] + [np.full(len(rows), rows.shape[1])
                                                           for rows, _ in self._surfaces])
        nodes = [rows.reshape(-1) for rows, _ in self._surfaces]
        patches = [patch for _, patch in self._surfaces]
        return (np.concatenate([np.zeros(0, np.int32)] + nodes).astype(np.int32),
                np.concatenate(([0], np.cumsum(counts))).astype(np.int32),
                np.concatenate([np.zeros(0, np.int32)] + patches))

    def _build_polyhedra(self, patches, groups):
        """All cells by their faces, since the core derives faces of standard cells only."""
        positions = np.concatenate([positions for _, positions, _ in self._blocks] +
                                   [[position for position, _ in self._polyhedra]]).astype(np.int64)
        order, positions = self._in_source_order(positions)
        number = np.empty(len(order), dtype=np.int64)
        number[order] = np.arange(len(order))

        sides, cells = [], []  # nodes of a face as one cell sees it; that cell
        first = 0
        for shape, block, nodes in self._blocks:
            for face in _FACES[shape]:
                sides.extend(nodes[:, face])
                cells.append(number[first:first + len(block)])
            first += len(block)
        for place, (_, faces) in enumerate(self._polyhedra):
            sides.extend(faces)
            cells.append(np.full(len(faces), number[first + place]))
        cells = np.concatenate(cells)
        faces = _match(self.name, sides, cells)

        patch_of = {name: patch for patch, (name, _) in enumerate(patches)}
        surface_patch = {}
        for rows, patch_numbers in self._surfaces:
            for row, patch in zip(rows, patch_numbers):
                surface_patch.setdefault(tuple(np.sort(row)), patch)
        owner, neighbour, face_patch, outward = [], [], [], []
        cell_means = _means_of_cells(self.points, sides, cells)
        for key, one, other in faces:
            nodes = sides[one]
            owner.append(cells[one])
            neighbour.append(-1 if other is None else cells[other])
            face_patch.append(-1 if other is not None else surface_patch.get(key, patch_of[_UNNAMED]))
            outward.append(_outward(self.points, nodes, cell_means[cells[one]]))
        start = np.concatenate(([0], np.cumsum([len(nodes) for nodes in outward])))
        mesh = _core.build_faces(self.name, self.points, start.astype(np.int32), np.concatenate(outward).astype(np.int32),
                                 np.array(owner, np.int32), np.array(neighbour, np.int32),
                                 np.array(face_patch, np.int32), patches, groups)
        return mesh, positions


def _ranges(starts, counts):
    """starts[0], starts[0] + 1, ... for counts[0] numbers, and so on."""
    before = np.cumsum(counts) - counts
    return np.repeat(starts - before, counts) + np.arange(counts.sum())


def _match(name, sides, cells):
    """(sorted nodes, side of the first cell, side of the second cell or None) for each face, by its first cell."""
    of_key = {}
    for side, nodes in enumerate(sides):
        of_key.setdefault(tuple(np.sort(nodes)), []).append(side)
    faces = []
    for key, found in of_key.items():
        if len(found) > 2:
            raise ValueError(f"{name}: {len(found)} cells share the face of the nodes {', '.join(map(str, key))}: "
                             "a face has two sides")
        found.sort(key=lambda side: cells[side])
        faces.append((key, found[0], found[1] if len(found) == 2 else None))
    faces.sort(key=lambda face: (cells[face[1]], face[1]))
    return faces


def _means_of_cells(points, sides, cells):
    """The average of the averages of each cell's faces: inside every cell that surrounds it."""
    total, count = np.zeros((cells.max() + 1, 3)), np.bincount(cells)
    np.add.at(total, cells, np.array([points[nodes].mean(axis=0) for nodes in sides]))
    return total / count[:, None]


def _outward(points, nodes, inside):
    """The nodes of a face in the order that goes around a normal away from `inside`."""
    corners = points[nodes]
    middle = corners.mean(axis=0)
    area = np.cross(corners - middle, np.roll(corners, -1, axis=0) - middle).sum(axis=0)
    return nodes if np.dot(area, middle - inside) >= 0.0 else nodes[::-1]

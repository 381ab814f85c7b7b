"""Between a source's arrays, one row for each of its cells, and the operators' arrays, one column for each cell."""

import numpy as np


def expand(mesh, values, boundary=None):
    """Make a field for the operators of one value for each cell of the source.

    Parameters
    ----------
    values : array_like, (n,) or (n, k)
        A number, also as (n, 1), or k components for each of the mesh's n cells in the order of the file or the object that the mesh
        was made of, unit U. If that has surface elements among its cells, there may be a row for each of these,
        too, which is not used.
    boundary : optional
        The values on the boundary, unit U: a number or k components for all of it; or a dict from patch name to the
        same, or to one row for each face of the patch in the order of `ghost_cells(name)`. Where nothing is given,
        the value of the adjacent cell is taken, which means that the field does not change across the boundary.

    Returns
    -------
    numpy.ndarray, (N,) or (k, N)
        A new array with ghost and halo cells, for Gradient and the interpolations.
    """
    rows = np.asarray(values)
    if rows.dtype.kind not in "fiu":
        raise TypeError(f"values have the type {rows.dtype} instead of numbers")
    if rows.ndim not in (1, 2):
        raise ValueError(f"values have the shape {rows.shape} instead of (n,) or (n, k)")
    if rows.ndim == 2 and rows.shape[1] == 1:
        rows = rows[:, 0]
    source = np.asarray(mesh.source_cell)
    known = source >= 0
    positions = getattr(mesh, "_source_positions", None)
    n_source = int(source.max(initial=-1)) + 1
    if positions is not None and len(rows) == mesh._source_count:
        rows = rows[positions]
    # A rank does not know how many cells there are in all, but the cells that it has must be among them.
    elif len(rows) < n_source or (len(rows) > n_source and mesh.halo_count == 0):
        raise ValueError(f"values have {len(rows)} rows for {n_source} cells")

    field = np.empty((mesh.total_count,) + rows.shape[1:])
    field[known] = rows[source[known]]
    field[~known] = np.nan  # halo cells of which nothing is known, until they are exchanged
    ghosts = _ghosts_by_face(mesh)
    field[ghosts] = field[mesh.boundary_owner]
    if isinstance(boundary, dict):
        for name, given in boundary.items():
            _set_rows(field, mesh.ghost_cells(name), given, f"boundary[{name!r}]")
    elif boundary is not None:
        _set_rows(field, ghosts, boundary, "boundary")
    return np.ascontiguousarray(field.T)


def _ghosts_by_face(mesh):
    """The ghost cell of each boundary face: those of empty faces come after the halo cells."""
    ghosts = mesh.cell_count + np.arange(mesh.boundary_face_count)
    ghosts[mesh.boundary_face_count - mesh.empty_face_count:] += mesh.halo_count
    return ghosts


def _set_rows(field, cells, given, name):
    given = np.asarray(given)
    if given.dtype.kind not in "fiu":
        raise TypeError(f"{name} has the type {given.dtype} instead of numbers")
    wanted = (len(cells),) + field.shape[1:]
    if given.shape not in ((), wanted[1:], wanted):
        raise ValueError(f"{name} has the shape {given.shape} instead of {wanted}, {wanted[1:]} or a number")
    field[cells] = given


def result(mesh, values, fill=None):
    """Bring what an operator returned into the order of the source: the counterpart of expand.

    Parameters
    ----------
    values : (N,), (3, N) or (3, 3, N)
        A field or what a Gradient returned.
    fill : float, optional
        If the source has surface elements, points or lines among its cells, return a row for each of these, too,
        with this number in it.

    Returns
    -------
    numpy.ndarray, (n,), (n, 3) or (n, 3, 3)
        A new array, one row for each cell; of a mesh on several ranks, the cells of this rank by ascending number.
    """
    columns = np.asarray(values)
    if columns.ndim == 0 or columns.shape[-1] != mesh.total_count:
        raise ValueError(f"values have the shape {columns.shape}; the last length must be {mesh.total_count}")
    if fill is not None and not isinstance(fill, (float, int)):
        raise TypeError(f"fill is of the type {type(fill).__name__} instead of float")
    own = np.asarray(mesh.source_cell)[:mesh.cell_count]
    rows = np.moveaxis(columns[..., np.argsort(own, kind="stable")], -1, 0)
    positions = getattr(mesh, "_source_positions", None)
    if fill is None or positions is None:
        return np.ascontiguousarray(rows)
    filled = np.full((mesh._source_count,) + rows.shape[1:], fill, dtype=np.float64)
    filled[positions] = rows
    return filled

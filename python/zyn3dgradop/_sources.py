"""Meshes from the objects of other Python packages: Mesh.from_meshio and Mesh.from_vtk."""

from . import _meshio, _vtk


def _build(cells, groups, default_group):
    mesh, positions = cells.build(groups, default_group)
    mesh._source_positions = positions
    mesh._source_count = cells.count
    return mesh


def from_meshio(source, *, groups=None, default_group="wall", patches=None):
    """Make a mesh of a meshio mesh, or of a file that meshio reads (VTU, SU2, MED, Ansys, Abaqus, CGNS, ...).

    Cells are tetra, hexahedron, wedge, pyramid and polyhedron; triangle and quad become patches of the boundary.
    Lines and vertices are ignored, all other cells are refused. The mesh owns its arrays.

    Parameters
    ----------
    source : meshio.Mesh, str or os.PathLike
    groups : dict of str to str, optional
        Patch name to "inlet", "outlet", "symmetry" or "wall".
    default_group : str
        The group of patches that neither `groups` nor their own names assign to one.
    patches : str, optional
        The cell data whose numbers tell the patch of a surface element. Without it, the cell sets are used, or else
        the numbers that meshio's readers supply ("gmsh:physical", "su2:tag", "cell_tags", ...). Numbers without a
        name become "patch 7". Boundary faces without a surface element belong to the patch "unnamed".

    Raises
    ------
    ImportError
        A file is given and there is no meshio.
    ValueError
        Cells of another type (the line names the types and counts), or a mesh that is not closed.
    """
    return _build(_meshio.read(source, patches=patches), groups, default_group)


def from_vtk(grid, *, groups=None, default_group="wall", patches=None):
    """Make a mesh of a vtkUnstructuredGrid, for example a PyVista UnstructuredGrid.

    Cells are tetrahedra, hexahedra, voxels, wedges, pyramids and polyhedra; triangles, quads and pixels become
    patches of the boundary. Points and lines are ignored, all other cells are refused. The mesh owns its arrays.

    Parameters
    ----------
    grid : vtkUnstructuredGrid
    groups, default_group
        As for from_meshio.
    patches : str, optional
        The integer cell array whose numbers tell the patch of a surface element: 7 is called "patch 7". Without it,
        all boundary faces belong to the patch "unnamed".

    Raises
    ------
    ImportError
        There are no Python modules of VTK.
    ValueError
        Cells of another type (the line names the types and counts), or a mesh that is not closed.
    """
    return _build(_vtk.read(grid, patches=patches), groups, default_group)

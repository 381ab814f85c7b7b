"""What Mesh has besides its compiled part: reading, and the names of patches."""

import os
from typing import NamedTuple, Optional

from . import _core


class Patch(NamedTuple):
    """A named part of the boundary of a mesh that was read."""

    name: str
    group: Optional[str]  # 'inlet', 'outlet', 'symmetry' or 'wall'; None for a patch without faces


def _read(path, *, groups=None, comm=None):
    """Read a mesh.

    Parameters
    ----------
    path : str or path
        A Gmsh file *.msh, a CGNS file *.cgns, an OpenFOAM case or polyMesh folder, or a box such as
        "box:20,20,20:tet". Cells get the order in which zyngrad numbers them.
    groups : dict, optional
        Patch name to 'inlet', 'outlet', 'symmetry' or 'wall', for patches whose names do not say it.
    comm : mpi4py communicator, optional
        Collective: each rank gets its partition of the mesh. An OpenFOAM case that is decomposed for as many
        processors as there are ranks is read rank by rank.

    A file that cannot be read or a mesh that cannot be used is a ValueError with the line that zyngrad prints.
    """
    name = os.fspath(path)
    if comm is None:
        return _core.read(name, groups)
    from mpi4py import MPI

    if not isinstance(comm, MPI.Comm):
        raise TypeError(f"comm must be a communicator of mpi4py, not {type(comm).__name__}")
    try:
        from . import _mpi
    except ImportError as error:
        raise RuntimeError(f"this build of zyn3dgradop cannot read on several ranks: {error}") from error
    if MPI.Get_library_version() != _mpi.library_version():
        raise RuntimeError("mpi4py and zyn3dgradop were built with different MPI libraries")
    return _core.from_host(_mpi.read(name, groups, comm.py2f()))


def _patches(mesh):
    """List of Patch, in the order of the file; empty for a mesh from arrays."""
    return [Patch(*patch) for patch in mesh._patches]


_core.Mesh.read = staticmethod(_read)
_core.Mesh.patches = property(_patches, doc=_patches.__doc__)

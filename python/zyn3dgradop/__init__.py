"""Gradients and interpolation of cell fields on unstructured finite-volume meshes.

    import numpy as np
    import zyn3dgradop as zyn

    mesh = zyn.Mesh.read("box:20,20,20:tet")
    x, y, z = mesh.centres
    gradient = zyn.Gradient(mesh, "least_squares")
    slope = gradient(np.sin(x) * y)  # (3, N): d/dx, d/dy, d/dz in every cell

Fields are float64 arrays with a value for each of the N cells of a mesh: interior cells first, then a ghost cell for
each boundary face, which holds the value at the face, then halo cells of other partitions. Arrays are used in place
and never copied. The library prints some lines about its progress; they go to the standard output as they are.
"""

from . import _fields, _sources
from ._core import (
    Breach,
    FaceInterpolation,
    Gradient,
    Mesh,
    PointInterpolation,
    Quality,
)
from ._core import version as __version__
from ._mesh import Patch
from ._partition import MpiExchange, PartitionFaces

__all__ = [
    "Breach",
    "FaceInterpolation",
    "Gradient",
    "Mesh",
    "MpiExchange",
    "PartitionFaces",
    "Patch",
    "PointInterpolation",
    "Quality",
    "__version__",
]

Mesh.from_meshio = staticmethod(_sources.from_meshio)
Mesh.from_vtk = staticmethod(_sources.from_vtk)
Mesh.expand = _fields.expand
Mesh.result = _fields.result

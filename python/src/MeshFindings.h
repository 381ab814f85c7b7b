#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "python/src/Mesh.h"
#include "reference_host/partition/MeshQuality.h"

namespace zyn_python {

/// A breach of the rules for meshes.
struct Breach {
  std::string kind;  ///< "area-wrong-way"
  int entity = 0;    ///< number of the face, cell or node as `text` names it, from 1; 0: none
  std::string text;
  int count = 0;  ///< breaches of this kind in all
};

/// Collective if the mesh is in partitions. Without nodes, what only the radial-basis operators read is not checked.
std::vector<Breach> CheckMeshOf(Mesh& mesh, int maxPerKind);

void BindMeshFindings(pybind11::module_& module);

}  // namespace zyn_python

#pragma once

#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/GroupRules.h"

namespace zyngrad {

/// A whole mesh in one process, which can be divided as LoadMesh divides it.
struct WholeMesh {
  reference_host::FaceMesh faces;
  std::string spec;  ///< what it was made from

  int nCells() const { return faces.nCells; }

  /// The part, 0..nParts-1, of every cell. Throws MeshError if there are too few cells.
  std::vector<int> PartOfCell(int nParts) const;
};

/// @param[in] spec  file, folder or text of a box, as for LoadMesh
/// Throws MeshError for everything that LoadMesh refuses.
WholeMesh ReadWholeMesh(std::string const& spec, reference_host::GroupRules const& groupsByUser);

/// Layers are counted up to this one, which includes all layers beyond it.
constexpr int kLastLayer = 3;

/// [0..nCells-1] the distance of a cell from the cuts, in cells: 0 beside a cut, 1 in the next layer, ... kLastLayer.
std::vector<int> LayersFromCuts(reference_host::FaceMesh const& mesh, std::vector<int> const& partOfCell);

}  // namespace zyngrad

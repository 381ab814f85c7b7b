#pragma once

#include <map>
#include <string>
#include <vector>

#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/FaceMesh.h"

namespace zyngrad {

/// A whole mesh in one process, with the divisions that LoadMesh would make of it.
struct WholeMesh {
  reference_host::FaceMesh faces;
  std::string spec;  ///< what it was made from

  int nCells() const { return faces.nCells; }

  /// The part 0..nParts-1 of every cell. Throws MeshError when there are too few cells.
  std::vector<int> PartOfCell(int nParts) const;
};

/// @param[in] spec  file, folder or text of a box, as for LoadMesh
/// Throws MeshError for what LoadMesh would refuse.
WholeMesh ReadWholeMesh(std::string const& spec,
                        std::map<std::string, reference_host::BoundaryGroup> const& groupsByUser);

/// Layers are counted up to this one, which stands for all beyond, too.
constexpr int kLastLayer = 3;

/// [0..nCells-1] how far a cell is from the cuts, in cells: 0 beside a cut, 1 beside those, ... kLastLayer.
std::vector<int> LayersFromCuts(reference_host::FaceMesh const& mesh, std::vector<int> const& partOfCell);

}  // namespace zyngrad

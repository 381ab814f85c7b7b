#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_cell/CellSystem.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/parallel/LoadMesh.h"

namespace benchmarks {

/// Systems A w = b of cells, one behind the other: (n+1) x (n+1) values of A, (n+1) x 3 of b, row-major.
struct CellSystems {
  std::vector<int> order;  ///< n+1 of each
  std::vector<double> matrices, columns;

  void Clear();
};

/// A mesh on the calling rank and the radial-basis cell operator on it, with its settings file in a temporary
/// folder.
class CellOperatorOnMesh {
 public:
  explicit CellOperatorOnMesh(std::string const& meshSpec,
                              std::map<std::string, reference_host::BoundaryGroup> const& groups = {});
  ~CellOperatorOnMesh();
  CellOperatorOnMesh(CellOperatorOnMesh const&) = delete;
  CellOperatorOnMesh& operator=(CellOperatorOnMesh const&) = delete;

  CZYN3DFiniteVolumeMesh& mesh() { return *loaded_.partition->mesh(); }

  /// A new operator that has its host objects and nothing else. Releases the one before.
  CZynRBFInternalObject& NewOperator();
  CZynRBFInternalObject& op() { return *op_; }

  /// Appends the system of a cell as DeriveRBFweighting solves it. @pre the operator has its stencils
  void AppendSystem(int cell, CellSystems& systems);

 private:
  void ReleaseOperator();

  std::string folder_;
  reference_host::LoadedMesh loaded_;
  std::unique_ptr<CZynRBFInternalObject> op_;
  CellSystem system_;
};

}  // namespace benchmarks

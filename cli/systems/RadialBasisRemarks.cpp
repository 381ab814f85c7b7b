#include "cli/systems/RadialBasisRemarks.h"

#include <cstdint>
#include <set>

#include "cli/base/TextTable.h"
#include "foundation/FaceGroups.h"

namespace zyngrad {
namespace {

/// Number of cells on all ranks that have a symmetry face.
std::int64_t CellsBesideSymmetry(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh) {
  std::set<int> cells;
  FaceGroup const faces = FacesOf(FaceKind::Symmetry, mesh);
  for (int f = 1; f <= faces.count; ++f) cells.insert(faces.cv[f]);
  auto own = static_cast<std::int64_t>(cells.size());
  std::int64_t all = 0;
  MPI_Allreduce(&own, &all, 1, MPI_INT64_T, MPI_SUM, ranks.communicator());
  return all;
}

}  // namespace

std::vector<std::string> RadialBasisRemarks(Ranks const& ranks, reference_host::HostPartition& partition,
                                            RadialBasisSettings const& settings) {
  std::vector<std::string> remarks;
  std::int64_t const nBeside = CellsBesideSymmetry(ranks, *partition.mesh());
  if (nBeside > 0) {
    remarks.push_back("wrong beside symmetry faces, in " + Grouped(nBeside) +
                      (nBeside == 1 ? " cell" : " cells") +
                      " whose stencils have side cells at the origin; --group NAME=wall avoids it");
  }
  if (settings.shapeNormalize) {
    remarks.emplace_back(
        "the shape-normalised form gives the derivative along an axis times Span and the stencil's extent");
  }
  return remarks;
}

}  // namespace zyngrad

#include "cli/study/StudyPoints.h"

#include <algorithm>
#include <cstddef>

namespace zyngrad {

using reference_host::HostPartition;

std::vector<int> CellsWithPoints(HostPartition& partition, std::int64_t nCells) {
  std::int64_t const step = std::max<std::int64_t>(1, nCells / kStudyPoints);
  std::vector<int> cells;
  for (int c = 1; c <= partition.mesh()->NInnerCells; ++c)
    if ((partition.globalCell()[static_cast<std::size_t>(c)] - 1) % step == 0) cells.push_back(c);
  return cells;
}

reference_host::Point PointInCell(HostPartition& partition, int cell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  auto const number = [&partition](int n) { return partition.globalNode()[static_cast<std::size_t>(n)]; };
  int const* const nodes = mesh.CellLnods[cell] + 1;
  int const node = *std::min_element(nodes, nodes + mesh.CellLnodsNumber[cell],
                                     [&number](int a, int b) { return number(a) < number(b); });
  return {0.5 * (mesh.xc[cell] + mesh.xn[node]), 0.5 * (mesh.yc[cell] + mesh.yn[node]),
          0.5 * (mesh.zc[cell] + mesh.zn[node])};
}

}  // namespace zyngrad

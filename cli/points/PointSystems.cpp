#include "cli/points/PointSystems.h"

#include <algorithm>

#include "cli/systems/KernelCondition.h"
#include "foundation/DQKernel.h"

namespace zyngrad {

std::vector<DQVector> NodesOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh,
                                   int i) {
  bool const byNodes = op.iSearch_method == 3;
  int const* const cells = op.m_ppIBConn[i];
  int const nCells = byNodes ? std::min(cells[0], op.m_pIBTwoSeeds[i] == 1 ? 2 : 1) : cells[0];
  std::vector<DQVector> nodes;
  for (int k = 1; k <= nCells; ++k) {
    IBCnode const& cell = op.m_pIBCnode[cells[k]];
    nodes.push_back({cell.x, cell.y, cell.z});
  }
  if (!byNodes) return nodes;
  int const* const row = op.m_ppIBNodeConn[i];
  for (int k = 1; k <= row[0]; ++k) nodes.push_back({mesh.xn[row[k]], mesh.yn[row[k]], mesh.zn[row[k]]});
  return nodes;
}

double ConditionOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i) {
  return KernelCondition(InterpolationDQKernel(op.Span, op.m_pIBSupportLength[i]), NodesOfPoint(op, mesh, i));
}

}  // namespace zyngrad

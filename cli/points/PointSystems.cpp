#include "cli/points/PointSystems.h"

#include "cli/systems/KernelCondition.h"
#include "rbf_ib/PointNodes.h"

namespace zyngrad {
namespace {

KernelSystem SystemOf(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i) {
  KernelSystem system;
  point_nodes::Take(op, mesh, i, system);
  return system;
}

}  // namespace

std::vector<DQVector> NodesOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh,
                                   int i) {
  return SystemOf(op, mesh, i).Nodes();
}

double ConditionOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i) {
  KernelSystem system = SystemOf(op, mesh, i);
  return KernelCondition(point_nodes::KernelOf(op, i), system);
}

}  // namespace zyngrad

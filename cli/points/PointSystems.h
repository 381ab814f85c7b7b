#pragma once

#include <vector>

#include "foundation/DQVector.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {

/// Nodes of the system of point i in 1..m_iNIBNode of an operator that is set up, in the operator's order: the cells
/// of its stencil; with search method 3 the seeds and the mesh nodes around them. L.
std::vector<DQVector> NodesOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh,
                                   int i);

/// Condition number of that system, an estimate: see ConditionEstimate. 0 without nodes.
double ConditionOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i);

}  // namespace zyngrad

#pragma once

#include <vector>

#include "foundation/DQVector.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {

/// Nodes of the system of point i in 1..m_iNIBNode of an operator that is set up: the cells of its stencil; by nodes
/// (search method 3) the seeds and the mesh nodes around them.
std::vector<DQVector> NodesOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh,
                                   int i);

/// Estimated condition number of that system.
double ConditionOfPoint(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i);

}  // namespace zyngrad

#pragma once

#include <algorithm>

#include "foundation/DQKernel.h"
#include "foundation/KernelSystem.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/SearchMethod.h"

/// @file
/// Which nodes and which kernel the system of a point has. The operator derives its weights from this system, and
/// programs that judge a mesh look at the same one.

namespace point_nodes {

/// Method 3: number of cells at the front of the stencil that are seeds. Without a usable cell there is none.
inline int CountSeeds(CZynIBRBFInternalObject const& op, int i) {
  return std::min(op.m_pIBTwoSeeds[i] == 1 ? 2 : 1, op.m_ppIBConn[i][0]);
}

/// The first n cells of the stencil of point i.
inline void TakeCells(CZynIBRBFInternalObject const& op, int i, int n, KernelSystem& system) {
  int const* const stencil = op.m_ppIBConn[i];
  system.Clear();
  for (int k = 1; k <= n; ++k) {
    IBCnode const& position = op.m_pIBCnode[stencil[k]];
    system.Add({position.x, position.y, position.z});
  }
}

/// Methods 1 and 2: all cells of the stencil.
inline void TakeStencil(CZynIBRBFInternalObject const& op, int i, KernelSystem& system) {
  TakeCells(op, i, op.m_ppIBConn[i][0], system);
}

/// Method 3: the seeds, then the mesh nodes around them.
inline void TakeSeedsAndNodes(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i,
                              KernelSystem& system) {
  TakeCells(op, i, CountSeeds(op, i), system);
  int const* const nodes = op.m_ppIBNodeConn[i];
  for (int j = 1; j <= nodes[0]; ++j) system.Add({mesh.xn[nodes[j]], mesh.yn[nodes[j]], mesh.zn[nodes[j]]});
}

/// The nodes of point i by the operator's method.
inline void Take(CZynIBRBFInternalObject const& op, CZYN3DFiniteVolumeMesh const& mesh, int i,
                 KernelSystem& system) {
  if (op.iSearch_method == kByTopology) {
    TakeSeedsAndNodes(op, mesh, i, system);
  } else {
    TakeStencil(op, i, system);
  }
}

/// The kernel of the point's system, for every method.
inline PlainDQKernel KernelOf(CZynIBRBFInternalObject const& op, int i) {
  return {op.Span, op.m_pIBSupportLength[i]};
}

}  // namespace point_nodes

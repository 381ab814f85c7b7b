#pragma once

#include <algorithm>

#include "foundation/Cpp_DataStructure.h"
#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "foundation/IBCnode.h"
#include "foundation/KernelSystem.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_face/FaceC2Kernel.h"

/// @file
/// Which nodes and which kernel the systems of a face have. The operator derives its weights from these systems, and
/// programs that judge a mesh look at the same ones.
///
/// All of it reads the work tables of an object that has collected its stencils and has not released its memory.

namespace face_nodes {

inline DQVector PointOf(IBCnode const& node) { return {node.x, node.y, node.z}; }

inline DQVector PointOfCell(CZynFaceRBFInternalObject const& op, int c) {
  return PointOf(op.m_pNodeTable[c]);
}

inline DQVector PointOfVertex(CZynFaceRBFInternalObject const& op, int v) {
  CZYN3DFiniteVolumeMesh const& mesh = *op.pMesh;
  return {mesh.xn[v], mesh.yn[v], mesh.zn[v]};
}

/// Row k of face i: positions in the stencil, its length in element 0. Method 3 has a row for each vertex, method 4
/// row 1 for P and row 2 for E.
///
/// In a program under UBSan, the check whether the table is of its very class would need type information that the
/// library keeps to itself.
#if defined(__GNUC__)
__attribute__((no_sanitize("vptr")))
#endif
inline int const*
PositionsOf(CZynFaceRBFInternalObject const& op, int i, int k) {
  return op.m_pFaceRows[i].m_ppRow[k];
}

/// Methods 1 and 2: all cells of the stencil.
inline void TakeStencil(CZynFaceRBFInternalObject const& op, int i, KernelSystem& system) {
  int const* const stencil = op.m_ppFaceCellConn[i];
  system.Clear();
  for (int k = 1; k <= stencil[0]; ++k) system.Add(PointOfCell(op, stencil[k]));
}

/// Method 3: the face's two cells, then its vertices.
inline void TakePairAndVertices(CZynFaceRBFInternalObject const& op, int i, KernelSystem& system) {
  int const* const stencil = op.m_ppFaceCellConn[i];
  int const* const vertices = op.m_ppFaceLnods[i];
  system.Clear();
  for (int k = 1; k <= 2; ++k) system.Add(PointOfCell(op, stencil[k]));
  for (int j = 1; j <= vertices[0]; ++j) system.Add(PointOfVertex(op, vertices[j]));
}

/// Methods 1 to 3: the kernel of the face's system.
inline PlainDQKernel FaceKernel(CZynFaceRBFInternalObject const& op, int i) {
  return {op.Span, op.m_pFaceSupport[i]};
}

/// Method 4: the cells around virtual node k, 1 for P and 2 for E.
///
/// A cell that was dropped as the twin of another has position 0. There the stencil has its length, which then stands
/// for a cell number; the weights of such faces are defined by that. A length beyond the cells stands for cell 0, at
/// the origin.
inline void TakeSide(CZynFaceRBFInternalObject const& op, int i, int k, KernelSystem& system) {
  int const* const stencil = op.m_ppFaceCellConn[i];
  int const* const positions = PositionsOf(op, i, k);
  int const nCell = op.pMesh->NCell;
  system.Clear();
  for (int j = 1; j <= positions[0]; ++j) {
    int const c = stencil[positions[j]];
    system.Add(PointOfCell(op, c <= nCell ? c : 0));
  }
}

/// Method 4: whether a cell around virtual node k was dropped as the twin of another.
inline bool HasDroppedTwins(CZynFaceRBFInternalObject const& op, int i, int k) {
  int const* const positions = PositionsOf(op, i, k);
  return std::find(positions + 1, positions + 1 + positions[0], 0) != positions + 1 + positions[0];
}

/// Method 4: the kernel for the value at a virtual node. @pre the system has its nodes
inline FaceC2Kernel VirtualNodeKernel(CZynFaceRBFInternalObject const& op, DQVector const& at,
                                      KernelSystem const& system) {
  return {op.Span, system.Reach(at)};
}

}  // namespace face_nodes

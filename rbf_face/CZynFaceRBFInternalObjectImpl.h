#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "foundation/DistanceSort.h"
#include "foundation/FaceGroups.h"
#include "foundation/GrowingBoxSearch.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/KernelSystem.h"
#include "foundation/RowTable.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_face/FaceNodes.h"

/// @file
/// What the sources of the face operator share.

/// The faces of a kind, without the centres of partition faces, which the operator does not use: these faces stand at
/// the centres of their halo cells. `partitionFaces` is used for partition faces alone and may be null otherwise.
inline FaceGroup FacesWithPoints(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh,
                                 CPartitionFace_DLL* partitionFaces) {
  return kind == FaceKind::Partition ? PartitionFacesAtHaloCells(*partitionFaces, mesh) : FacesOf(kind, mesh);
}

/// Elements of a row of virtual nodes, and rows of positions.
constexpr int kP = 1, kE = 2;

/// The dot product, summed in the order y, x, z as lengths are.
inline double Dot(DQVector const& a, DQVector const& b) { return a.y * b.y + a.x * b.x + a.z * b.z; }

/// Work memory of the set-up, which grows to the largest face and is used again for the next, and what the set-up
/// remembers from one face to the next.
struct CZynFaceRBFInternalObject::Work {
  std::vector<int> merged, sideP, sideE;  ///< cells at 1.., element 0 unused
  std::vector<int> vertices;              ///< a row of vertices
  std::vector<int> ids;                   ///< [0..count-1] entries found by a search
  std::vector<double> distances;          ///< [0..count-1] theirs, L
  std::vector<double> weights;            ///< [1..n] of a vertex or virtual node
  std::vector<double> sums;               ///< [0..n-1][0..3] of a face, weights of gradient and value
  std::vector<double> cellWeights;        ///< [1..n] of a vertex

  PieceStore positions;  ///< the rows of positions of all faces, or of the last one

  DistanceSort distanceSort;
  KernelSystem faceSystem, pointSystem;

  std::optional<BoundingBox> entries;  ///< bounds of the points in the tree of cells
  std::vector<DQVector> entryPoints;   ///< [1..NCell] these points by entry
  std::vector<double> keys;            ///< of listed cells, see Delete_Duplicate_Coordinate
  /// [1..NNode] weights of the vertices solved so far, during a walk over all faces; null otherwise.
  double** vertexWeights = nullptr;

  Work() = default;
  Work(Work const&) = delete;
  Work& operator=(Work const&) = delete;
  ~Work() { GrowingRowTable<double>::Destroy(vertexWeights); }
};

inline CZynFaceRBFInternalObject::Work& CZynFaceRBFInternalObject::WorkOwner::Get() {
  if (work_ == nullptr) work_ = std::make_unique<Work>();
  return *work_;
}

inline FaceKind CZynFaceRBFInternalObject::Kind() const { return static_cast<FaceKind>(iFaceType); }

// None if there is no such type.
inline FaceGroup CZynFaceRBFInternalObject::OwnFaces() const {
  return IsFaceType(iFaceType) ? FacesWithPoints(Kind(), *pMesh, pPartFace) : FaceGroup{};
}

inline DQVector CZynFaceRBFInternalObject::Target(int i) const {
  return {m_FaceX.m_pData[i], m_FaceY.m_pData[i], m_FaceZ.m_pData[i]};
}

inline DQVector CZynFaceRBFInternalObject::PointOf(int c) const { return face_nodes::PointOfCell(*this, c); }

inline DQVector CZynFaceRBFInternalObject::VertexPoint(int v) const {
  return face_nodes::PointOfVertex(*this, v);
}

// Adds a cell to a list unless it is there, and marks it with its position.
inline void CZynFaceRBFInternalObject::AppendOnce(int c, std::vector<int>& list, int* marks) {
  if (marks[c] != 0) return;
  marks[c] = static_cast<int>(list.size());
  list.push_back(c);
}

// Rows 1..nRow of positions for face i, each with its length in element 0, in place of those that it had.
// @return [0..nRow], row 0 null
template <typename LengthOf>
int** CZynFaceRBFInternalObject::MakePositionRows(int i, int nRow, LengthOf lengthOf) {
  std::size_t nElement = 0;
  for (int k = 1; k <= nRow; ++k) nElement += static_cast<std::size_t>(lengthOf(k)) + 1;
  void* const memory = work_.Get().positions.Take(RowTable<int>::Bytes(nRow, nElement));
  int** const rows =
      RowTable<int>::LayOut(memory, nRow, nRow, [&lengthOf](int k) { return lengthOf(k) + 1; });
  rows[0] = nullptr;
  for (int k = 1; k <= nRow; ++k) rows[k][0] = lengthOf(k);
  m_pFaceRows[i].Borrow(nRow, rows);
  return rows;
}

#pragma once

#include <cmath>
#include <optional>
#include <vector>

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "foundation/DistanceSort.h"
#include "foundation/FaceGroups.h"
#include "foundation/GrowingBoxSearch.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/KernelSystem.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"

/// @file
/// What the sources of the interpolation to faces share.

constexpr int kInnerFaces = 1, kWallFaces = 2, kInletFaces = 3, kOutletFaces = 4, kPartitionFaces = 5,
              kSymmetryFaces = 6;

/// The types of faces with a ghost or halo cell, in the order in which all walks over them go.
constexpr int kBoundaryTypes[] = {kWallFaces, kInletFaces, kOutletFaces, kPartitionFaces, kSymmetryFaces};

/// Type of a face from the mesh's code of it; 0 for no code.
inline int FaceTypeOfCode(int code) {
  switch (code) {
    case 0:
      return kInnerFaces;
    case 1:
      return kWallFaces;
    case 2:
      return kInletFaces;
    case 3:
      return kOutletFaces;
    case 101:
      return kPartitionFaces;
    case 5:
      return kSymmetryFaces;
    default:
      return 0;
  }
}

/// The faces of a type; none for an unknown type. `partitionFaces` is used for partition faces only and may be null
/// otherwise.
inline FaceGroup FacesOfType(int type, CZYN3DFiniteVolumeMesh const& mesh,
                             CPartitionFace_DLL* partitionFaces) {
  if (!IsFaceType(type)) return {};
  FaceKind const kind = static_cast<FaceKind>(type);
  return kind == FaceKind::Partition ? PartitionFacesAtHaloCells(*partitionFaces, mesh) : FacesOf(kind, mesh);
}

/// Whether the line between two cells goes on beyond the face: both sides are cells of their own there. On
/// the other types the second cell is a ghost cell that stands on the face.
inline bool HasCellBeyond(int faceType) { return faceType == kInnerFaces || faceType == kPartitionFaces; }

/// Elements of a row of virtual nodes, and rows of positions.
constexpr int kP = 1, kE = 2;

/// The dot product, summed in the order y, x, z as lengths are.
inline double Dot(DQVector const& a, DQVector const& b) { return a.y * b.y + a.x * b.x + a.z * b.z; }

/// The greatest distance from a point to a node of the system.
inline double Reach(KernelSystem const& system, DQVector const& from) {
  double largest2 = 0.0;
  for (int k = 0; k < system.Size(); ++k) {
    double const r2 = SquaredLength(OffsetBetween(from, system.Node(k)));
    if (r2 > largest2) largest2 = r2;
  }
  return std::sqrt(largest2);
}

/// Memory that grows to the largest face and is used again for the next, and what set-up remembers.
struct CZynFaceRBFInternalObject::Work {
  std::vector<int> merged, sideP, sideE;  ///< cells at 1.., element 0 unused
  std::vector<int> vertices;              ///< a row of vertices
  std::vector<int> ids;                   ///< [0..count-1] entries found by a search
  std::vector<double> distances;          ///< [0..count-1] theirs, L
  std::vector<double> weights;            ///< [1..n] of a vertex or virtual node
  std::vector<double> cellWeights;        ///< [1..n] of a vertex

  DistanceSort distanceSort;
  KernelSystem faceSystem, pointSystem;

  std::optional<BoundingBox> entries;  ///< bounds of the points in the tree of cells
  /// [1..NNode] weights of the vertices that have them by now, while a walk over all faces makes them worth
  /// keeping; null otherwise.
  double** vertexWeights = nullptr;

  Work() = default;
  Work(Work const&) = delete;
  Work& operator=(Work const&) = delete;
  ~Work() { GrowingRowTable<double>::Destroy(vertexWeights); }
};

inline DQVector CZynFaceRBFInternalObject::Target(int i) const {
  return {m_FaceX.m_pData[i], m_FaceY.m_pData[i], m_FaceZ.m_pData[i]};
}

inline DQVector CZynFaceRBFInternalObject::PointOf(int c) const {
  IBCnode const& node = m_pNodeTable[c];
  return {node.x, node.y, node.z};
}

inline DQVector CZynFaceRBFInternalObject::VertexPoint(int v) const {
  return {pMesh->xn[v], pMesh->yn[v], pMesh->zn[v]};
}

#pragma once

/// @file
/// The table of the groups of faces. It says which members of the host's records make up a group, which numbers
/// and names the group has, and in which orders the operators visit the groups.

#include <array>
#include <cstddef>

#include "host/Zyn3dGV.h"

/// Kinds of faces. The number is the face type in the operators' interfaces and in their tables of cells, where a
/// ghost or halo cell has the kind of its face and an interior cell the kind of inner faces.
enum class FaceKind : int { Inner = 1, Wall = 2, Inlet = 3, Outlet = 4, Partition = 5, Symmetry = 6 };

inline constexpr std::size_t kFaceKinds = 6;

/// Position of a kind in arrays by kind, 0..kFaceKinds-1.
constexpr std::size_t IndexOf(FaceKind kind) { return static_cast<std::size_t>(kind) - 1; }

/// One group of faces as the host lends it. All arrays are borrowed and [1..count].
struct FaceGroup {
  FaceKind kind = FaceKind::Inner;
  int count = 0;
  int const* cv = nullptr;     ///< interior cell that the area vector points out of; it receives +flux
  int const* other = nullptr;  ///< the cell beyond: interior, ghost or halo cell
  double const *sx = nullptr, *sy = nullptr, *sz = nullptr;  ///< area vector S, L^2
  double const *xc = nullptr, *yc = nullptr, *zc = nullptr;  ///< face centre, L
  double const* weight = nullptr;                            ///< w of `other`; null for boundary groups
  int const* type = nullptr;    ///< 1: only `cv` takes the flux; null for boundary groups
  int* const* nodes = nullptr;  ///< ragged rows: the nodes of a face
};

/// The members of the mesh record that make up a group, and the group's names. Of the partition faces only the nodes are
/// in the record; the accessors of CPartitionFace_DLL have the rest, and the other members are null.
struct FaceGroupMembers {
  template <typename T>
  using Member = T CZYN3DFiniteVolumeMesh::*;

  FaceKind kind;
  int code;                ///< the group's number in CellFaceType
  char const* name;        ///< "wall"
  char const* prefix;      ///< "ijWall", with which the names of its arrays begin
  char const* countName;   ///< "NWall"
  char const* weightName;  ///< "Lamda"; null: the group has neither weights nor types
  char const* typeName;    ///< "FaceType"

  Member<int> count;
  Member<int*> cv, other;
  Member<double*> sx, sy, sz;
  Member<double*> xc, yc, zc;
  Member<int**> nodes;
  Member<double*> weight;
  Member<int*> type;
};

namespace face_groups {
// Hidden, or a library built without the project's flags would share these tables with the whole process and could
// never be unloaded.

using Mesh = CZYN3DFiniteVolumeMesh;

/// All groups by IndexOf(kind), that is by ascending face type.
// clang-format off
[[gnu::visibility("hidden")]] inline constexpr std::array<FaceGroupMembers, kFaceKinds> kTable = {{
    {FaceKind::Inner, 0, "inner", "ij", "NInnerFaces", "Lamda", "FaceType",
     &Mesh::NInnerFaces, &Mesh::ijCV, &Mesh::ij, &Mesh::ijSx, &Mesh::ijSy, &Mesh::ijSz,
     &Mesh::ijxc, &Mesh::ijyc, &Mesh::ijzc, &Mesh::ijLnods, &Mesh::Lamda, &Mesh::FaceType},
    {FaceKind::Wall, 1, "wall", "ijWall", "NWall", nullptr, nullptr,
     &Mesh::NWall, &Mesh::ijWallCV, &Mesh::ijWall, &Mesh::ijWallSx, &Mesh::ijWallSy, &Mesh::ijWallSz,
     &Mesh::ijWallxc, &Mesh::ijWallyc, &Mesh::ijWallzc, &Mesh::ijWallLnods, nullptr, nullptr},
    {FaceKind::Inlet, 2, "inlet", "ijInlet", "NInlet", nullptr, nullptr,
     &Mesh::NInlet, &Mesh::ijInletCV, &Mesh::ijInlet, &Mesh::ijInletSx, &Mesh::ijInletSy, &Mesh::ijInletSz,
     &Mesh::ijInletxc, &Mesh::ijInletyc, &Mesh::ijInletzc, &Mesh::ijInletLnods, nullptr, nullptr},
    {FaceKind::Outlet, 3, "outlet", "ijOutlet", "NOutlet", nullptr, nullptr,
     &Mesh::NOutlet, &Mesh::ijOutletCV, &Mesh::ijOutlet, &Mesh::ijOutletSx, &Mesh::ijOutletSy, &Mesh::ijOutletSz,
     &Mesh::ijOutletxc, &Mesh::ijOutletyc, &Mesh::ijOutletzc, &Mesh::ijOutletLnods, nullptr, nullptr},
    {FaceKind::Partition, 101, "partition", "ijPar", "NParInterFace()", "ParInterFace_Lamda", "FaceType_Partition",
     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
     nullptr, nullptr, nullptr, &Mesh::ijParLnods, nullptr, nullptr},
    {FaceKind::Symmetry, 5, "symmetry", "ijSymmetry", "NSymmetry", nullptr, nullptr,
     &Mesh::NSymmetry, &Mesh::ijSymmetryCV, &Mesh::ijSymmetry, &Mesh::ijSymmetrySx, &Mesh::ijSymmetrySy, &Mesh::ijSymmetrySz,
     &Mesh::ijSymmetryxc, &Mesh::ijSymmetryyc, &Mesh::ijSymmetryzc, &Mesh::ijSymmetryLnods, nullptr, nullptr},
}};
// clang-format on

/// Of the Green-Gauss sums, after inner and partition faces.
[[gnu::visibility("hidden")]] inline constexpr std::array<FaceKind, 4> kGreenGaussBoundary = {
    FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall};
/// Of the least-squares sums, after inner and partition faces.
[[gnu::visibility("hidden")]] inline constexpr std::array<FaceKind, 4> kLeastSquaresBoundary = {
    FaceKind::Inlet, FaceKind::Outlet, FaceKind::Wall, FaceKind::Symmetry};
/// Of the face operator's walks over the faces with a ghost or halo cell.
[[gnu::visibility("hidden")]] inline constexpr std::array<FaceKind, 5> kFacesWithOwnCell = {
    FaceKind::Wall, FaceKind::Inlet, FaceKind::Outlet, FaceKind::Partition, FaceKind::Symmetry};
}  // namespace face_groups

constexpr FaceGroupMembers const& MembersOf(FaceKind kind) { return face_groups::kTable[IndexOf(kind)]; }

constexpr bool IsBoundary(FaceKind kind) { return kind != FaceKind::Inner && kind != FaceKind::Partition; }

/// Whether there is a kind with this face type.
constexpr bool IsFaceType(int type) { return type >= 1 && type <= static_cast<int>(kFaceKinds); }

/// The group with this number in CellFaceType, or null.
constexpr FaceGroupMembers const* GroupWithCode(int code) {
  for (FaceGroupMembers const& members : face_groups::kTable)
    if (members.code == code) return &members;
  return nullptr;
}

/// A group whose arrays are in the mesh record. @pre kind is not Partition
inline FaceGroup FacesOf(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh) {
  FaceGroupMembers const& m = MembersOf(kind);
  bool const hasWeights = m.weight != nullptr;
  return {kind,
          mesh.*m.count,
          mesh.*m.cv,
          mesh.*m.other,
          mesh.*m.sx,
          mesh.*m.sy,
          mesh.*m.sz,
          mesh.*m.xc,
          mesh.*m.yc,
          mesh.*m.zc,
          hasWeights ? mesh.*m.weight : nullptr,
          hasWeights ? mesh.*m.type : nullptr,
          mesh.*m.nodes};
}

/// The cells of the partition faces, for operators that need nothing else. The host is not asked for the rest.
inline FaceGroup PartitionFaceCells(CPartitionFace_DLL& faces) {
  FaceGroup group;
  group.kind = FaceKind::Partition;
  group.count = faces.NParInterFace();
  group.cv = faces.ijParCV();
  group.other = faces.ijPar();
  return group;
}

/// The partition faces without centres, weights and types, for operators that put a partition face at the centre of
/// its halo cell. The host is not asked for the rest.
inline FaceGroup PartitionFacesAtHaloCells(CPartitionFace_DLL& faces, CZYN3DFiniteVolumeMesh const& mesh) {
  FaceGroup group = PartitionFaceCells(faces);
  group.sx = faces.ijParSx();
  group.sy = faces.ijParSy();
  group.sz = faces.ijParSz();
  group.nodes = mesh.ijParLnods;
  return group;
}

/// The partition faces with all of their arrays.
inline FaceGroup PartitionFaces(CPartitionFace_DLL& faces, CZYN3DFiniteVolumeMesh const& mesh) {
  FaceGroup group = PartitionFacesAtHaloCells(faces, mesh);
  group.xc = faces.ijParxc();
  group.yc = faces.ijParyc();
  group.zc = faces.ijParzc();
  group.weight = faces.ParInterFace_Lamda();
  group.type = faces.FaceType_Partition();
  return group;
}

/// Any group with all of its arrays. Only partition faces need `partitionFaces`; it may be null for the others.
inline FaceGroup FacesOf(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh,
                         CPartitionFace_DLL* partitionFaces) {
  return kind == FaceKind::Partition ? PartitionFaces(*partitionFaces, mesh) : FacesOf(kind, mesh);
}

/// The groups of a partition's faces, in the orders in which the gradients visit them.
class FaceGroups {
 public:
  /// @param partition  the partition faces, with the arrays that the caller needs
  FaceGroups(CZYN3DFiniteVolumeMesh const& mesh, FaceGroup const& partition)
      : mesh_(mesh), partition_(partition) {}

  /// Inner faces, then partition faces.
  std::array<FaceGroup, 2> BetweenCells() const { return {FacesOf(FaceKind::Inner, mesh_), partition_}; }

  std::array<FaceGroup, 4> OnBoundaryInGreenGaussOrder() const {
    return OnBoundary(face_groups::kGreenGaussBoundary);
  }

  /// Inner faces, partition faces, then the boundary.
  std::array<FaceGroup, kFaceKinds> InLeastSquaresOrder() const {
    auto const [inner, partition] = BetweenCells();
    auto const [first, second, third, fourth] = OnBoundary(face_groups::kLeastSquaresBoundary);
    return {inner, partition, first, second, third, fourth};
  }

 private:
  std::array<FaceGroup, 4> OnBoundary(std::array<FaceKind, 4> const& order) const {
    return {FacesOf(order[0], mesh_), FacesOf(order[1], mesh_), FacesOf(order[2], mesh_),
            FacesOf(order[3], mesh_)};
  }

  CZYN3DFiniteVolumeMesh const& mesh_;
  FaceGroup partition_;
};

#include "cli/faces/TargetedFaces.h"

#include <cmath>

namespace zyngrad {

std::string NameOf(FaceKind kind) { return MembersOf(kind).name; }

std::optional<FaceKind> FaceKindFromName(std::string const& name) {
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (members.name == name) return members.kind;
  }
  return std::nullopt;
}

std::string FaceKindNames() {
  std::string names;
  for (std::size_t k = 0; k < kFaceKinds; ++k) {
    if (k > 0) names += k + 1 < kFaceKinds ? ", " : " or ";
    names += face_groups::kTable[k].name;
  }
  return names;
}

double TargetedFaces::Area(int f) const { return std::sqrt(sx[f] * sx[f] + sy[f] * sy[f] + sz[f] * sz[f]); }

std::array<double, 3> TargetedFaces::Target(int f) const {
  int const at = kind == FaceKind::Partition ? other[f] : f;
  return {target[0][at], target[1][at], target[2][at]};
}

TargetedFaces TargetedFacesOf(reference_host::HostPartition& partition, FaceKind kind) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  FaceGroup const faces = FacesOf(kind, mesh, partition.partitionFaces());
  if (kind == FaceKind::Partition) return {faces, {mesh.xc, mesh.yc, mesh.zc}};
  return {faces, {faces.xc, faces.yc, faces.zc}};
}

}  // namespace zyngrad

#include "cli/faces/FaceGroup.h"

#include <cmath>
#include <cstddef>

namespace zyngrad {
namespace {

constexpr FaceGroup kGroups[] = {FaceGroup::Inner,  FaceGroup::Wall,      FaceGroup::Inlet,
                                 FaceGroup::Outlet, FaceGroup::Partition, FaceGroup::Symmetry};

FacesOfGroup PartitionFaces(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& faces) {
  FacesOfGroup group;
  group.count = faces.NParInterFace();
  group.cell = faces.ijParCV();
  group.other = faces.ijPar();
  group.area = {faces.ijParSx(), faces.ijParSy(), faces.ijParSz()};
  group.target = {mesh.xc, mesh.yc, mesh.zc};
  group.targetsAreCells = true;
  group.nodes = mesh.ijParLnods;
  return group;
}

}  // namespace

std::string NameOf(FaceGroup group) {
  switch (group) {
    case FaceGroup::Inner:
      return "inner";
    case FaceGroup::Wall:
      return "wall";
    case FaceGroup::Inlet:
      return "inlet";
    case FaceGroup::Outlet:
      return "outlet";
    case FaceGroup::Partition:
      return "partition";
    case FaceGroup::Symmetry:
      return "symmetry";
  }
  return {};
}

std::optional<FaceGroup> FaceGroupFromName(std::string const& name) {
  for (FaceGroup const group : kGroups) {
    if (NameOf(group) == name) return group;
  }
  return std::nullopt;
}

std::string FaceGroupNames() {
  std::string names;
  for (FaceGroup const group : kGroups) {
    if (group != kGroups[0]) names += group == FaceGroup::Symmetry ? " or " : ", ";
    names += NameOf(group);
  }
  return names;
}

bool IsBoundary(FaceGroup group) { return group != FaceGroup::Inner && group != FaceGroup::Partition; }

double FacesOfGroup::Area(int f) const {
  return std::sqrt(area[0][f] * area[0][f] + area[1][f] * area[1][f] + area[2][f] * area[2][f]);
}

std::array<double, 3> FacesOfGroup::Target(int f) const {
  int const at = targetsAreCells ? other[f] : f;
  return {target[0][at], target[1][at], target[2][at]};
}

FacesOfGroup FacesOf(reference_host::HostPartition& partition, FaceGroup group) {
  CZYN3DFiniteVolumeMesh const& m = *partition.mesh();
  switch (group) {
    // clang-format off
    case FaceGroup::Inner:
      return {m.NInnerFaces, m.ijCV, m.ij, {m.ijSx, m.ijSy, m.ijSz}, {m.ijxc, m.ijyc, m.ijzc}, false, m.ijLnods};
    case FaceGroup::Wall:
      return {m.NWall, m.ijWallCV, m.ijWall, {m.ijWallSx, m.ijWallSy, m.ijWallSz},
              {m.ijWallxc, m.ijWallyc, m.ijWallzc}, false, m.ijWallLnods};
    case FaceGroup::Inlet:
      return {m.NInlet, m.ijInletCV, m.ijInlet, {m.ijInletSx, m.ijInletSy, m.ijInletSz},
              {m.ijInletxc, m.ijInletyc, m.ijInletzc}, false, m.ijInletLnods};
    case FaceGroup::Outlet:
      return {m.NOutlet, m.ijOutletCV, m.ijOutlet, {m.ijOutletSx, m.ijOutletSy, m.ijOutletSz},
              {m.ijOutletxc, m.ijOutletyc, m.ijOutletzc}, false, m.ijOutletLnods};
    case FaceGroup::Symmetry:
      return {m.NSymmetry, m.ijSymmetryCV, m.ijSymmetry, {m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz},
              {m.ijSymmetryxc, m.ijSymmetryyc, m.ijSymmetryzc}, false, m.ijSymmetryLnods};
    // clang-format on
    case FaceGroup::Partition:
      break;
  }
  return PartitionFaces(m, *partition.partitionFaces());
}

}  // namespace zyngrad

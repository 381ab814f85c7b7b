#include "host_check/HostView.h"

#include <algorithm>

namespace host_check {
namespace {

int Positive(int count) { return std::max(count, 0); }

/// The groups in the order in which the checks look at them, which is the order of the messages.
constexpr std::array<FaceKind, HostView::kGroups> kOrder = {FaceKind::Inner,    FaceKind::Wall,
                                                            FaceKind::Inlet,    FaceKind::Outlet,
                                                            FaceKind::Symmetry, FaceKind::Partition};

/// Without faces the accessors may return anything, so the checker does not call them.
FaceGroup LentFaces(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL* partitionFaces) {
  bool const isEmpty =
      kind == FaceKind::Partition && (partitionFaces == nullptr || partitionFaces->NParInterFace() <= 0);
  if (!isEmpty) return FacesOf(kind, mesh, partitionFaces);
  FaceGroup none;
  none.kind = kind;
  return none;
}

}  // namespace

CheckedFaceGroup::CheckedFaceGroup(FaceGroup const& lent)
    : kind(lent.kind),
      count(Positive(lent.count)),
      cv(lent.cv),
      other(lent.other),
      area{lent.sx, lent.sy, lent.sz},
      centre{lent.xc, lent.yc, lent.zc},
      weight(lent.weight),
      type(lent.type),
      nodes(lent.nodes) {}

HostView::HostView(CZYN3DFiniteVolumeMesh const* meshOrNull, CPartitionFace_DLL* partitionFaces)
    : mesh(meshOrNull != nullptr ? *meshOrNull : CZYN3DFiniteVolumeMesh()),
      nCell(Positive(mesh.NCell)),
      nInner(std::min(Positive(mesh.NInnerCells), nCell)),
      nNode(Positive(mesh.NNode)),
      nodes{mesh.xn, mesh.yn, mesh.zn},
      centres{mesh.xc, mesh.yc, mesh.zc} {
  for (int g = 0; g < kGroups; ++g) groups[g] = CheckedFaceGroup(LentFaces(kOrder[g], mesh, partitionFaces));
}

void HostView::AddMarks() {
  for (CheckedFaceGroup& group : groups) {
    std::vector<char> const unknown(static_cast<std::size_t>(group.count) + 1, 0);
    for (auto* marks : {&group.cvSound, &group.otherSound, &group.areaSound, &group.turned,
                        &group.centreSound, &group.centreAway, &group.nodesSound}) {
      *marks = unknown;
    }
  }
  namer.resize(static_cast<std::size_t>(nCell) + 1);
  centreSound.assign(static_cast<std::size_t>(nCell) + 1, 0);
}

int HostView::GroupOfCode(int code) const {
  for (int g = 0; g < kGroups; ++g) {
    if (groups[g].Names().code == code) return g;
  }
  return -1;
}

std::string HostView::CellName(int c) const {
  if (IsInterior(c)) return "interior cell " + std::to_string(c);
  bool const isNamed = IsBeyond(c) && namer[c].group >= 0;
  if (!isNamed) return "cell " + std::to_string(c);
  bool const isHalo = groups[namer[c].group].LeadsToHalo();
  return (isHalo ? "halo cell " : "ghost cell ") + std::to_string(c);
}

}  // namespace host_check

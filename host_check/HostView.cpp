#include "host_check/HostView.h"

#include <algorithm>

namespace host_check {
namespace {

int Positive(int count) { return std::max(count, 0); }

FaceGroupView InnerFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {"inner",
          "ij",
          "NInnerFaces",
          "Lamda",
          "FaceType",
          0,
          FarSide::Interior,
          Positive(m.NInnerFaces),
          m.ijCV,
          m.ij,
          {m.ijSx, m.ijSy, m.ijSz},
          {m.ijxc, m.ijyc, m.ijzc},
          m.Lamda,
          m.FaceType,
          m.ijLnods};
}

FaceGroupView WallFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {"wall",
          "ijWall",
          "NWall",
          "",
          "",
          1,
          FarSide::Ghost,
          Positive(m.NWall),
          m.ijWallCV,
          m.ijWall,
          {m.ijWallSx, m.ijWallSy, m.ijWallSz},
          {m.ijWallxc, m.ijWallyc, m.ijWallzc},
          nullptr,
          nullptr,
          m.ijWallLnods};
}

FaceGroupView InletFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {"inlet",
          "ijInlet",
          "NInlet",
          "",
          "",
          2,
          FarSide::Ghost,
          Positive(m.NInlet),
          m.ijInletCV,
          m.ijInlet,
          {m.ijInletSx, m.ijInletSy, m.ijInletSz},
          {m.ijInletxc, m.ijInletyc, m.ijInletzc},
          nullptr,
          nullptr,
          m.ijInletLnods};
}

FaceGroupView OutletFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {"outlet",
          "ijOutlet",
          "NOutlet",
          "",
          "",
          3,
          FarSide::Ghost,
          Positive(m.NOutlet),
          m.ijOutletCV,
          m.ijOutlet,
          {m.ijOutletSx, m.ijOutletSy, m.ijOutletSz},
          {m.ijOutletxc, m.ijOutletyc, m.ijOutletzc},
          nullptr,
          nullptr,
          m.ijOutletLnods};
}

FaceGroupView SymmetryFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {"symmetry",
          "ijSymmetry",
          "NSymmetry",
          "",
          "",
          5,
          FarSide::Ghost,
          Positive(m.NSymmetry),
          m.ijSymmetryCV,
          m.ijSymmetry,
          {m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz},
          {m.ijSymmetryxc, m.ijSymmetryyc, m.ijSymmetryzc},
          nullptr,
          nullptr,
          m.ijSymmetryLnods};
}

FaceGroupView PartitionFaces(CPartitionFace_DLL* p, CZYN3DFiniteVolumeMesh const& m) {
  char const* const names[] = {"partition", "ijPar", "NParInterFace()", "ParInterFace_Lamda",
                               "FaceType_Partition"};
  // Without faces the accessors may return anything; they are not asked.
  if (p == nullptr || p->NParInterFace() <= 0) {
    return {names[0], names[1], names[2], names[3], names[4], 101,     FarSide::Halo, 0,
            nullptr,  nullptr,  {},       {},       nullptr,  nullptr, nullptr};
  }
  return {names[0],
          names[1],
          names[2],
          names[3],
          names[4],
          101,
          FarSide::Halo,
          p->NParInterFace(),
          p->ijParCV(),
          p->ijPar(),
          {p->ijParSx(), p->ijParSy(), p->ijParSz()},
          {p->ijParxc(), p->ijParyc(), p->ijParzc()},
          p->ParInterFace_Lamda(),
          p->FaceType_Partition(),
          m.ijParLnods};
}

}  // namespace

HostView::HostView(CZYN3DFiniteVolumeMesh const* meshOrNull, CPartitionFace_DLL* partitionFaces)
    : mesh(meshOrNull != nullptr ? *meshOrNull : CZYN3DFiniteVolumeMesh()),
      nCell(Positive(mesh.NCell)),
      nInner(std::min(Positive(mesh.NInnerCells), nCell)),
      nNode(Positive(mesh.NNode)),
      nodes{mesh.xn, mesh.yn, mesh.zn},
      centres{mesh.xc, mesh.yc, mesh.zc},
      groups{InnerFaces(mesh),  WallFaces(mesh),     InletFaces(mesh),
             OutletFaces(mesh), SymmetryFaces(mesh), PartitionFaces(partitionFaces, mesh)} {}

void HostView::AddMarks() {
  for (FaceGroupView& group : groups) {
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
    if (groups[g].code == code) return g;
  }
  return -1;
}

std::string HostView::CellName(int c) const {
  if (IsInterior(c)) return "interior cell " + std::to_string(c);
  bool const isNamed = IsBeyond(c) && namer[c].group >= 0;
  if (!isNamed) return "cell " + std::to_string(c);
  bool const isHalo = groups[namer[c].group].farSide == FarSide::Halo;
  return (isHalo ? "halo cell " : "ghost cell ") + std::to_string(c);
}

}  // namespace host_check

#include "tests/support/host/FaceHost.h"

namespace rbf_face_test {
namespace {

using rbf_cell_test::CellFace;

constexpr int kGroupCode[7] = {-1, 0, 1, 2, 3, 101, 5};
constexpr int kNotALength = -77;  // in the two tables whose rows do not begin with one

std::vector<CellFace> CellFaces(std::vector<Face> const& faces) {
  std::vector<CellFace> result;
  for (Face const& face : faces) result.push_back({face.cv, face.other, face.centre, face.area});
  return result;
}

std::vector<std::vector<int>> NodesOf(std::vector<Face> const& faces) {
  std::vector<std::vector<int>> rows(1);
  for (Face const& face : faces) rows.push_back(face.nodes);
  return rows;
}

/// One column of the cells' faces.
template <typename Take>
std::vector<std::vector<int>> OfCellFaces(MeshPlan const& plan, Take take) {
  std::vector<std::vector<int>> rows(plan.cellFaces.size());
  for (std::size_t c = 1; c < rows.size(); ++c)
    for (FaceOfCell const& face : plan.cellFaces[c]) rows[c].push_back(take(face));
  return rows;
}

std::vector<std::vector<int>> Numbers(MeshPlan const& plan) {
  return OfCellFaces(plan, [](FaceOfCell const& face) { return face.number; });
}

std::vector<std::vector<int>> Codes(MeshPlan const& plan) {
  return OfCellFaces(plan, [](FaceOfCell const& face) { return kGroupCode[face.group]; });
}

void SpoilLengths(rbf_cell_test::LentTable& table) {
  for (std::size_t i = 1; i < table.Rows().size(); ++i) table.Data()[i][0] = kNotALength;
}

}  // namespace

LentGroup::LentGroup(std::vector<Face> const& faces) : arrays(CellFaces(faces)), nodes(NodesOf(faces)) {}

bool LentGroup::IdenticalTo(LentGroup const& other) const {
  rbf_cell_test::LentFaces const &a = arrays, &b = other.arrays;
  return a.cv.IdenticalTo(b.cv) && a.other.IdenticalTo(b.other) && a.xc.IdenticalTo(b.xc) &&
         a.yc.IdenticalTo(b.yc) && a.zc.IdenticalTo(b.zc) && a.sx.IdenticalTo(b.sx) &&
         a.sy.IdenticalTo(b.sy) && a.sz.IdenticalTo(b.sz) && nodes.Rows() == other.nodes.Rows();
}

FaceHost::FaceHost(MeshPlan const& plan, std::string const& baseFileName)
    : plan_(plan),
      baseFileName_(baseFileName.c_str(), baseFileName.c_str() + baseFileName.size() + 1),
      xn_(plan.NNode()),
      yn_(plan.NNode()),
      zn_(plan.NNode()),
      xc_(plan.NCell()),
      yc_(plan.NCell()),
      zc_(plan.NCell()),
      cellNodeNumber_(plan.nInnerCells),
      cellNodes_(plan.cellNodes),
      cellFace_(Numbers(plan)),
      cellFaceType_(Codes(plan)),
      nodeCell_(plan.nodeCells),
      groups_{
          std::make_unique<LentGroup>(std::vector<Face>()), std::make_unique<LentGroup>(plan.Of(kInner)),
          std::make_unique<LentGroup>(plan.Of(kWall)),      std::make_unique<LentGroup>(plan.Of(kInlet)),
          std::make_unique<LentGroup>(plan.Of(kOutlet)),    std::make_unique<LentGroup>(plan.Of(kPartition)),
          std::make_unique<LentGroup>(plan.Of(kSymmetry))},
      partitionFaces(*groups_[kPartition]) {
  globals.BaseFileName = baseFileName_.data();
  LendCells();
  LendNodes();
  LendInnerFaces();
  LendWallsAndInlets();
  LendOutletsAndSymmetry();
}

void FaceHost::LendCells() {
  for (int c = 1; c <= plan_.NCell(); ++c) {
    Point const& centre = plan_.centres[static_cast<std::size_t>(c)];
    xc_[c] = centre.x;
    yc_[c] = centre.y;
    zc_[c] = centre.z;
  }
  for (int c = 1; c <= plan_.nInnerCells; ++c)
    cellNodeNumber_[c] = static_cast<int>(plan_.cellNodes[static_cast<std::size_t>(c)].size());
  SpoilLengths(cellNodes_);
  SpoilLengths(cellFaceType_);
  mesh.NCell = plan_.NCell();
  mesh.NInnerCells = plan_.nInnerCells;
  mesh.xc = xc_.Data(), mesh.yc = yc_.Data(), mesh.zc = zc_.Data();
  mesh.CellLnods = cellNodes_.Data();
  mesh.CellLnodsNumber = cellNodeNumber_.Data();
  mesh.CellFace = cellFace_.Data();
  mesh.CellFaceType = cellFaceType_.Data();
}

void FaceHost::LendNodes() {
  for (int n = 1; n <= plan_.NNode(); ++n) {
    Point const& node = plan_.nodes[static_cast<std::size_t>(n)];
    xn_[n] = node.x;
    yn_[n] = node.y;
    zn_[n] = node.z;
  }
  mesh.NNode = plan_.NNode();
  mesh.xn = xn_.Data(), mesh.yn = yn_.Data(), mesh.zn = zn_.Data();
  mesh.NodeCell = nodeCell_.Data();
}

void FaceHost::LendInnerFaces() {
  LentGroup& g = *groups_[kInner];
  mesh.NInnerFaces = g.arrays.count;
  mesh.ijCV = g.Lend(g.arrays.cv), mesh.ij = g.Lend(g.arrays.other);
  mesh.ijxc = g.Lend(g.arrays.xc), mesh.ijyc = g.Lend(g.arrays.yc), mesh.ijzc = g.Lend(g.arrays.zc);
  mesh.ijSx = g.Lend(g.arrays.sx), mesh.ijSy = g.Lend(g.arrays.sy), mesh.ijSz = g.Lend(g.arrays.sz);
  mesh.ijLnods = g.nodes.Data();
  mesh.ijParLnods = groups_[kPartition]->nodes.Data();
}

void FaceHost::LendWallsAndInlets() {
  LentGroup &w = *groups_[kWall], &i = *groups_[kInlet];
  mesh.NWall = w.arrays.count;
  mesh.ijWallCV = w.Lend(w.arrays.cv), mesh.ijWall = w.Lend(w.arrays.other);
  mesh.ijWallxc = w.Lend(w.arrays.xc), mesh.ijWallyc = w.Lend(w.arrays.yc);
  mesh.ijWallzc = w.Lend(w.arrays.zc), mesh.ijWallSx = w.Lend(w.arrays.sx);
  mesh.ijWallSy = w.Lend(w.arrays.sy), mesh.ijWallSz = w.Lend(w.arrays.sz);
  mesh.ijWallLnods = w.nodes.Data();
  mesh.NInlet = i.arrays.count;
  mesh.ijInletCV = i.Lend(i.arrays.cv), mesh.ijInlet = i.Lend(i.arrays.other);
  mesh.ijInletxc = i.Lend(i.arrays.xc), mesh.ijInletyc = i.Lend(i.arrays.yc);
  mesh.ijInletzc = i.Lend(i.arrays.zc), mesh.ijInletSx = i.Lend(i.arrays.sx);
  mesh.ijInletSy = i.Lend(i.arrays.sy), mesh.ijInletSz = i.Lend(i.arrays.sz);
  mesh.ijInletLnods = i.nodes.Data();
}

void FaceHost::LendOutletsAndSymmetry() {
  LentGroup &o = *groups_[kOutlet], &s = *groups_[kSymmetry];
  mesh.NOutlet = o.arrays.count;
  mesh.ijOutletCV = o.Lend(o.arrays.cv), mesh.ijOutlet = o.Lend(o.arrays.other);
  mesh.ijOutletxc = o.Lend(o.arrays.xc), mesh.ijOutletyc = o.Lend(o.arrays.yc);
  mesh.ijOutletzc = o.Lend(o.arrays.zc), mesh.ijOutletSx = o.Lend(o.arrays.sx);
  mesh.ijOutletSy = o.Lend(o.arrays.sy), mesh.ijOutletSz = o.Lend(o.arrays.sz);
  mesh.ijOutletLnods = o.nodes.Data();
  mesh.NSymmetry = s.arrays.count;
  mesh.ijSymmetryCV = s.Lend(s.arrays.cv), mesh.ijSymmetry = s.Lend(s.arrays.other);
  mesh.ijSymmetryxc = s.Lend(s.arrays.xc), mesh.ijSymmetryyc = s.Lend(s.arrays.yc);
  mesh.ijSymmetryzc = s.Lend(s.arrays.zc), mesh.ijSymmetrySx = s.Lend(s.arrays.sx);
  mesh.ijSymmetrySy = s.Lend(s.arrays.sy), mesh.ijSymmetrySz = s.Lend(s.arrays.sz);
  mesh.ijSymmetryLnods = s.nodes.Data();
}

bool FaceHost::InputsUntouched() const {
  FaceHost const fresh(plan_, baseFileName_.data());
  for (Group const group : kGroups)
    if (!groups_[group]->IdenticalTo(*fresh.groups_[group])) return false;
  return xn_.IdenticalTo(fresh.xn_) && yn_.IdenticalTo(fresh.yn_) && zn_.IdenticalTo(fresh.zn_) &&
         xc_.IdenticalTo(fresh.xc_) && yc_.IdenticalTo(fresh.yc_) && zc_.IdenticalTo(fresh.zc_) &&
         cellNodeNumber_.IdenticalTo(fresh.cellNodeNumber_) && cellNodes_.Rows() == fresh.cellNodes_.Rows() &&
         cellFace_.Rows() == fresh.cellFace_.Rows() && cellFaceType_.Rows() == fresh.cellFaceType_.Rows() &&
         nodeCell_.Rows() == fresh.nodeCell_.Rows() && baseFileName_ == fresh.baseFileName_;
}

}  // namespace rbf_face_test

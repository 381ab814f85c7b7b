#include "tests/support/host/CellHost.h"

namespace rbf_cell_test {
namespace {

using gradient_test::GuardedArray;

PartitionArrays ArraysOf(std::vector<CellFace> const& faces) {
  LentFaces const lent(faces);
  PartitionArrays arrays;
  arrays.count = lent.count;
  arrays.cv = lent.cv;
  arrays.other = lent.other;
  arrays.xc = lent.xc;
  arrays.yc = lent.yc;
  arrays.zc = lent.zc;
  return arrays;
}

/// Rows with an unused row 0 from rows that begin with face 1.
std::vector<std::vector<int>> FromOne(std::vector<std::vector<int>> const& rows) {
  std::vector<std::vector<int>> result(1);
  result.insert(result.end(), rows.begin(), rows.end());
  return result;
}

bool Same(LentFaces const& a, LentFaces const& b) {
  return a.cv.IdenticalTo(b.cv) && a.other.IdenticalTo(b.other) && a.xc.IdenticalTo(b.xc) &&
         a.yc.IdenticalTo(b.yc) && a.zc.IdenticalTo(b.zc) && a.sx.IdenticalTo(b.sx) &&
         a.sy.IdenticalTo(b.sy) && a.sz.IdenticalTo(b.sz);
}

}  // namespace

LentTable::LentTable(std::vector<std::vector<int>> const& rows) : rows_(rows.size()), pointers_(rows.size()) {
  for (std::size_t i = 1; i < rows.size(); ++i) {
    std::vector<int> row(1, static_cast<int>(rows[i].size()));
    row.insert(row.end(), rows[i].begin(), rows[i].end());
    rows_[i] = std::vector<int>(row.begin(), row.end());
    pointers_[i] = rows_[i].data();
  }
}

LentFaces::LentFaces(std::vector<CellFace> const& faces)
    : count(static_cast<int>(faces.size())),
      cv(count),
      other(count),
      xc(count),
      yc(count),
      zc(count),
      sx(count),
      sy(count),
      sz(count) {
  for (int f = 1; f <= count; ++f) {
    CellFace const& face = faces[static_cast<std::size_t>(f - 1)];
    cv[f] = face.cv;
    other[f] = face.other;
    xc[f] = face.centre.x;
    yc[f] = face.centre.y;
    zc[f] = face.centre.z;
    sx[f] = face.area.x;
    sy[f] = face.area.y;
    sz[f] = face.area.z;
  }
}

CellHost::CellHost(CellMesh const& description, std::string const& baseFileName)
    : partition(ArraysOf(description.partition)),
      description_(description),
      baseFileName_(baseFileName.c_str(), baseFileName.c_str() + baseFileName.size() + 1),
      xc_(description.NCell()),
      yc_(description.NCell()),
      zc_(description.NCell()),
      inner_(description.inner),
      wall_(description.wall),
      inlet_(description.inlet),
      outlet_(description.outlet),
      symmetry_(description.symmetry),
      cellCell_(description.neighbours),
      nodeCell_(description.nodeCells),
      partitionNodes_(FromOne(description.partitionNodes)) {
  LendCells();
  LendFaces();
  LendNodes();
}

void CellHost::LendCells() {
  for (int c = 1; c <= description_.NCell(); ++c) {
    xc_[c] = description_.Centre(c).x;
    yc_[c] = description_.Centre(c).y;
    zc_[c] = description_.Centre(c).z;
  }
  mesh.xc = xc_.Data();
  mesh.yc = yc_.Data();
  mesh.zc = zc_.Data();
  mesh.NCell = description_.NCell();
  mesh.NInnerCells = description_.nInnerCells;
  mesh.CellCell = cellCell_.Data();
}

// Groups without faces stay null, as a host may leave them.
void CellHost::LendFaces() {
  mesh.NInnerFaces = inner_.count;
  mesh.NWall = wall_.count;
  mesh.NInlet = inlet_.count;
  mesh.NOutlet = outlet_.count;
  mesh.NSymmetry = symmetry_.count;
  auto const lend = [](auto& array) { return array.Size() == 0 ? nullptr : array.Data(); };
  mesh.ijCV = lend(inner_.cv), mesh.ij = lend(inner_.other);
  mesh.ijxc = lend(inner_.xc), mesh.ijyc = lend(inner_.yc), mesh.ijzc = lend(inner_.zc);
  mesh.ijSx = lend(inner_.sx), mesh.ijSy = lend(inner_.sy), mesh.ijSz = lend(inner_.sz);
  mesh.ijWallCV = lend(wall_.cv), mesh.ijWall = lend(wall_.other);
  mesh.ijWallxc = lend(wall_.xc), mesh.ijWallyc = lend(wall_.yc), mesh.ijWallzc = lend(wall_.zc);
  mesh.ijInletCV = lend(inlet_.cv), mesh.ijInlet = lend(inlet_.other);
  mesh.ijInletxc = lend(inlet_.xc), mesh.ijInletyc = lend(inlet_.yc), mesh.ijInletzc = lend(inlet_.zc);
  mesh.ijOutletCV = lend(outlet_.cv), mesh.ijOutlet = lend(outlet_.other);
  mesh.ijOutletxc = lend(outlet_.xc), mesh.ijOutletyc = lend(outlet_.yc), mesh.ijOutletzc = lend(outlet_.zc);
  mesh.ijSymmetryCV = lend(symmetry_.cv), mesh.ijSymmetry = lend(symmetry_.other);
  mesh.ijSymmetryxc = lend(symmetry_.xc), mesh.ijSymmetryyc = lend(symmetry_.yc);
  mesh.ijSymmetryzc = lend(symmetry_.zc);
}

void CellHost::LendNodes() {
  mesh.NNode = static_cast<int>(description_.nodeCells.size()) - 1;
  mesh.NodeCell = mesh.NNode == 0 ? nullptr : nodeCell_.Data();
  mesh.ijParLnods = partition.count == 0 ? nullptr : partitionNodes_.Data();
}

CZyn3dGV* CellHost::NewGlobals() {
  auto* const globals = new WatchedGlobals(destroyed);
  globals->BaseFileName = baseFileName_.data();
  return globals;
}

CPartitionFace_DLL* CellHost::NewPartitionFaces() { return new WatchedPartitionFaces(destroyed, partition); }

CCommunication* CellHost::NewCommunication() {
  return new WatchedCommunication(destroyed, communicationCalls);
}

CZYNGVGPU* CellHost::NewGPU() { return new WatchedGPU(destroyed); }

CZYNGVOpenMP* CellHost::NewOpenMP() { return new WatchedOpenMP(destroyed); }

bool CellHost::InputsUntouched() const {
  CellHost const fresh(description_, baseFileName_.data());
  return xc_.IdenticalTo(fresh.xc_) && yc_.IdenticalTo(fresh.yc_) && zc_.IdenticalTo(fresh.zc_) &&
         Same(inner_, fresh.inner_) && Same(wall_, fresh.wall_) && Same(inlet_, fresh.inlet_) &&
         Same(outlet_, fresh.outlet_) && Same(symmetry_, fresh.symmetry_) &&
         partition.cv.IdenticalTo(fresh.partition.cv) && partition.other.IdenticalTo(fresh.partition.other) &&
         partition.xc.IdenticalTo(fresh.partition.xc) && partition.yc.IdenticalTo(fresh.partition.yc) &&
         partition.zc.IdenticalTo(fresh.partition.zc) && cellCell_.Rows() == fresh.cellCell_.Rows() &&
         nodeCell_.Rows() == fresh.nodeCell_.Rows() &&
         partitionNodes_.Rows() == fresh.partitionNodes_.Rows() && baseFileName_ == fresh.baseFileName_;
}

}  // namespace rbf_cell_test

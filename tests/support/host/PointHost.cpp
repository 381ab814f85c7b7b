#include "tests/support/host/PointHost.h"

namespace rbf_ib_test {
namespace {

using gradient_test::GuardedArray;
using Rows = std::vector<std::vector<int>>;

rbf_cell_test::PartitionArrays ArraysOf(LentGroup const& faces) {
  rbf_cell_test::PartitionArrays arrays;
  arrays.count = faces.count;
  arrays.cv = faces.cv;
  arrays.other = faces.other;
  arrays.xc = faces.xc;
  arrays.yc = faces.yc;
  arrays.zc = faces.zc;
  return arrays;
}

Rows NodesOf(std::vector<Face> const& faces) {
  Rows rows(1);
  for (Face const& face : faces) rows.push_back(face.nodes);
  return rows;
}

bool Same(LentGroup const& a, LentGroup const& b) {
  return a.cv.IdenticalTo(b.cv) && a.other.IdenticalTo(b.other) && a.xc.IdenticalTo(b.xc) &&
         a.yc.IdenticalTo(b.yc) && a.zc.IdenticalTo(b.zc) && a.nodes.Rows() == b.nodes.Rows();
}

void LendPoints(std::vector<Point> const& points, GuardedArray<double>& x, GuardedArray<double>& y,
                GuardedArray<double>& z) {
  for (int i = 1; i < static_cast<int>(points.size()); ++i) {
    Point const& p = points[static_cast<std::size_t>(i)];
    x[i] = p.x;
    y[i] = p.y;
    z[i] = p.z;
  }
}

// A group without faces stays null, as a host may leave it.
template <typename T>
T* Lend(GuardedArray<T>& array) {
  return array.Size() == 0 ? nullptr : array.Data();
}

}  // namespace

LentGroup::LentGroup(std::vector<Face> const& faces)
    : count(static_cast<int>(faces.size())),
      cv(count),
      other(count),
      xc(count),
      yc(count),
      zc(count),
      nodes(NodesOf(faces)) {
  for (int f = 1; f <= count; ++f) {
    Face const& face = faces[static_cast<std::size_t>(f - 1)];
    cv[f] = face.cv;
    other[f] = face.other;
    xc[f] = face.centre.x;
    yc[f] = face.centre.y;
    zc[f] = face.centre.z;
  }
}

PointHost::PointHost(PointMesh const& d, std::string const& baseFileName)
    : description_(d),
      baseFileName_(baseFileName.c_str(), baseFileName.c_str() + baseFileName.size() + 1),
      xc_(d.NCell()),
      yc_(d.NCell()),
      zc_(d.NCell()),
      xn_(d.NNode()),
      yn_(d.NNode()),
      zn_(d.NNode()),
      nodeNumbers_(d.NCell()),
      inner_(d.inner),
      wall_(d.wall),
      inlet_(d.inlet),
      outlet_(d.outlet),
      symmetry_(d.symmetry),
      partition_(d.partition),
      nodeCell_(d.nodeCells),
      cellNodes_(d.cellNodes) {
  partition = ArraysOf(partition_);
  globals.BaseFileName = baseFileName_.data();
  LendCellsAndNodes();
  LendFaces();
}

void PointHost::LendCellsAndNodes() {
  LendPoints(description_.centres, xc_, yc_, zc_);
  LendPoints(description_.nodes, xn_, yn_, zn_);
  mesh.xc = xc_.Data(), mesh.yc = yc_.Data(), mesh.zc = zc_.Data();
  mesh.xn = Lend(xn_), mesh.yn = Lend(yn_), mesh.zn = Lend(zn_);
  mesh.NCell = description_.NCell();
  mesh.NInnerCells = description_.nInnerCells;
  mesh.NNode = description_.NNode();
  mesh.NodeCell = nodeCell_.Data();
  mesh.CellLnods = cellNodes_.Data();
  mesh.CellLnodsNumber = nodeNumbers_.Data();
  for (int c = 1; c <= mesh.NCell; ++c) {
    nodeNumbers_[c] = static_cast<int>(description_.CellNodes(c).size());
    mesh.CellLnods[c][0] = gradient_test::GuardValue<int>();  // not a length in this table
  }
}

void PointHost::LendFaces() {
  mesh.NInnerFaces = inner_.count;
  mesh.NWall = wall_.count;
  mesh.NInlet = inlet_.count;
  mesh.NOutlet = outlet_.count;
  mesh.NSymmetry = symmetry_.count;
  mesh.ijCV = Lend(inner_.cv), mesh.ij = Lend(inner_.other);
  mesh.ijWallCV = Lend(wall_.cv), mesh.ijWall = Lend(wall_.other);
  mesh.ijWallxc = Lend(wall_.xc), mesh.ijWallyc = Lend(wall_.yc), mesh.ijWallzc = Lend(wall_.zc);
  mesh.ijInletCV = Lend(inlet_.cv), mesh.ijInlet = Lend(inlet_.other);
  mesh.ijInletxc = Lend(inlet_.xc), mesh.ijInletyc = Lend(inlet_.yc), mesh.ijInletzc = Lend(inlet_.zc);
  mesh.ijOutletCV = Lend(outlet_.cv), mesh.ijOutlet = Lend(outlet_.other);
  mesh.ijOutletxc = Lend(outlet_.xc), mesh.ijOutletyc = Lend(outlet_.yc), mesh.ijOutletzc = Lend(outlet_.zc);
  mesh.ijSymmetryCV = Lend(symmetry_.cv), mesh.ijSymmetry = Lend(symmetry_.other);
  mesh.ijSymmetryxc = Lend(symmetry_.xc), mesh.ijSymmetryyc = Lend(symmetry_.yc);
  mesh.ijSymmetryzc = Lend(symmetry_.zc);
  auto const rows = [](LentGroup& group) { return group.count == 0 ? nullptr : group.nodes.Data(); };
  mesh.ijWallLnods = rows(wall_), mesh.ijInletLnods = rows(inlet_), mesh.ijOutletLnods = rows(outlet_);
  mesh.ijSymmetryLnods = rows(symmetry_), mesh.ijParLnods = rows(partition_);
}

bool PointHost::InputsUntouched() const {
  PointHost const fresh(description_, baseFileName_.data());
  return xc_.IdenticalTo(fresh.xc_) && yc_.IdenticalTo(fresh.yc_) && zc_.IdenticalTo(fresh.zc_) &&
         xn_.IdenticalTo(fresh.xn_) && yn_.IdenticalTo(fresh.yn_) && zn_.IdenticalTo(fresh.zn_) &&
         nodeNumbers_.IdenticalTo(fresh.nodeNumbers_) && Same(inner_, fresh.inner_) &&
         Same(wall_, fresh.wall_) && Same(inlet_, fresh.inlet_) && Same(outlet_, fresh.outlet_) &&
         Same(symmetry_, fresh.symmetry_) && Same(partition_, fresh.partition_) &&
         partition.other.IdenticalTo(fresh.partition.other) && nodeCell_.Rows() == fresh.nodeCell_.Rows() &&
         cellNodes_.Rows() == fresh.cellNodes_.Rows() && baseFileName_ == fresh.baseFileName_;
}

}  // namespace rbf_ib_test

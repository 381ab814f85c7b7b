#include "Slab.h"

namespace {

// Codes of the groups in CellFaceType.
constexpr int kInner = 0, kWall = 1, kInlet = 2, kOutlet = 3, kPartition = 101;

}  // namespace

Slab::Slab(int ownPart, int nParts, std::array<int, 3> size, double edge)
    : part(ownPart), size_(size), nParts_(nParts), edge_(edge) {
  MakeNodes();
  MakeCells();
  MakeFaces();
  MakeNodeCells();
  LendAll();
}

void Slab::MakeNodes() {
  int const firstX = part * size_[0];  // slabs follow each other along x
  for (int k = 0; k <= size_[2]; ++k) {
    for (int j = 0; j <= size_[1]; ++j) {
      for (int i = 0; i <= size_[0]; ++i) {
        xn_.push_back((firstX + i) * edge_);
        yn_.push_back(j * edge_);
        zn_.push_back(k * edge_);
      }
    }
  }
}

void Slab::MakeCells() {
  int const n = size_[0] * size_[1] * size_[2];
  for (Rows* rows : {&cellCell_, &cellFace_, &cellFaceType_, &cellNodes_}) rows->Resize(n);
  for (int k = 0; k < size_[2]; ++k) {
    for (int j = 0; j < size_[1]; ++j) {
      for (int i = 0; i < size_[0]; ++i) {
        int const c = AddCell({(part * size_[0] + i + 0.5) * edge_, (j + 0.5) * edge_, (k + 0.5) * edge_});
        for (Place const& corner :
             {Place{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}})
          cellNodes_.Append(c, Node({i + corner[0], j + corner[1], k + corner[2]}));
        volume_.push_back(edge_ * edge_ * edge_);
        nCellNodes_.push_back(8);
      }
    }
  }
  mesh.NInnerCells = n;
}

// Each cell adds its high faces, and its low faces at the boundary of the slab; so every inner face is added once.
void Slab::MakeFaces() {
  for (int k = 0; k < size_[2]; ++k) {
    for (int j = 0; j < size_[1]; ++j) {
      for (int i = 0; i < size_[0]; ++i) {
        Place const p = {i, j, k};
        for (int axis = 0; axis < 3; ++axis) {
          if (p[axis] == 0) AddFace(p, axis, false);
          AddFace(p, axis, true);
        }
      }
    }
  }
}

void Slab::AddFace(Place const& p, int axis, bool isHighSide) {
  int const step = isHighSide ? 1 : -1;
  Place beyond = p;
  beyond[axis] += step;
  if (0 <= beyond[axis] && beyond[axis] < size_[axis]) {
    AddTo(inner_, kInner, p, Cell(beyond), axis, isHighSide);
    return;
  }
  int const neighbour = part + step;
  if (axis == 0 && 0 <= neighbour && neighbour < nParts_) {
    // The halo cell copies a cell of the neighbour, at the same place. In the neighbour it is the first or last along
    // x.
    std::array<double, 3> centre = FaceCentre(p, axis, isHighSide);
    centre[0] += 0.5 * step * edge_;
    int const other = AddCell(centre);
    halo.push_back({other, neighbour, Cell({isHighSide ? 0 : size_[0] - 1, p[1], p[2]})});
    AddTo(partitionFaces, kPartition, p, other, axis, isHighSide);
    return;
  }
  // The ghost cell lies at the centre of its face, where the boundary value applies.
  int const ghost = AddCell(FaceCentre(p, axis, isHighSide));
  if (axis != 0) {
    AddTo(wall_, kWall, p, ghost, axis, isHighSide);
  } else {
    AddTo(isHighSide ? outlet_ : inlet_, isHighSide ? kOutlet : kInlet, p, ghost, axis, isHighSide);
  }
}

void Slab::AddTo(FaceTable& faces, int code, Place const& p, int other, int axis, bool isHighSide) {
  int const c = Cell(p);
  faces.cell.push_back(c);
  faces.other.push_back(other);
  double const area = (isHighSide ? 1.0 : -1.0) * edge_ * edge_;
  faces.sx.push_back(axis == 0 ? area : 0.0);
  faces.sy.push_back(axis == 1 ? area : 0.0);
  faces.sz.push_back(axis == 2 ? area : 0.0);
  std::array<double, 3> const centre = FaceCentre(p, axis, isHighSide);
  faces.x.push_back(centre[0]);
  faces.y.push_back(centre[1]);
  faces.z.push_back(centre[2]);
  faces.weight.push_back(0.5);
  faces.type.push_back(0);

  // The corners turn around the area vector: from axis b to axis d, which follow `axis`, or backwards on the low side.
  int const b = (axis + 1) % 3, d = (axis + 2) % 3;
  std::array<int, 4> corners = {};
  for (int n = 0; n < 4; ++n) {
    int const turn = isHighSide ? n : 3 - n;
    Place corner = p;
    corner[axis] += isHighSide ? 1 : 0;
    corner[b] += turn == 1 || turn == 2 ? 1 : 0;
    corner[d] += turn >= 2 ? 1 : 0;
    corners[static_cast<std::size_t>(n)] = Node(corner);
  }
  faces.nodes.AddRow(corners);

  for (int const side : {c, other}) {
    if (side > mesh.NInnerCells) continue;
    cellCell_.Append(side, side == c ? other : c);
    cellFace_.Append(side, faces.count());
    cellFaceType_.Append(side, code);
  }
}

int Slab::AddCell(std::array<double, 3> const& centre) {
  xc_.push_back(centre[0]);
  yc_.push_back(centre[1]);
  zc_.push_back(centre[2]);
  return static_cast<int>(xc_.size()) - 1;
}

std::array<double, 3> Slab::FaceCentre(Place const& p, int axis, bool isHighSide) const {
  auto const c = static_cast<std::size_t>(Cell(p));
  std::array<double, 3> centre = {xc_[c], yc_[c], zc_[c]};
  centre[static_cast<std::size_t>(axis)] += (isHighSide ? 0.5 : -0.5) * edge_;
  return centre;
}

// The cells around each node: interior cells, and the ghost and halo cells whose face contains the node.
void Slab::MakeNodeCells() {
  nodeCell_.Resize(static_cast<int>(xn_.size()) - 1);
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    for (int k = 1; k <= 8; ++k) nodeCell_.Append(cellNodes_[c][static_cast<std::size_t>(k)], c);
  }
  for (FaceTable const* faces : {&inlet_, &outlet_, &wall_, &partitionFaces}) {
    for (int f = 1; f <= faces->count(); ++f) {
      for (std::size_t k = 1; k <= 4; ++k)
        nodeCell_.Append(faces->nodes[f][k], faces->other[static_cast<std::size_t>(f)]);
    }
  }
}

void Slab::LendAll() {
  mesh.NNode = static_cast<int>(xn_.size()) - 1;
  mesh.xn = xn_.data(), mesh.yn = yn_.data(), mesh.zn = zn_.data();
  mesh.NCell = static_cast<int>(xc_.size()) - 1;
  mesh.xc = xc_.data(), mesh.yc = yc_.data(), mesh.zc = zc_.data(), mesh.Volume = volume_.data();
  mesh.CellCell = cellCell_.Lend(), mesh.CellFace = cellFace_.Lend();
  mesh.CellFaceType = cellFaceType_.Lend();
  mesh.CellLnods = cellNodes_.Lend(), mesh.CellLnodsNumber = nCellNodes_.data();
  mesh.NodeCell = nodeCell_.Lend();

  mesh.NInnerFaces = inner_.count();
  mesh.ijCV = inner_.cell.data(), mesh.ij = inner_.other.data();
  mesh.ijSx = inner_.sx.data(), mesh.ijSy = inner_.sy.data(), mesh.ijSz = inner_.sz.data();
  mesh.ijxc = inner_.x.data(), mesh.ijyc = inner_.y.data(), mesh.ijzc = inner_.z.data();
  mesh.Lamda = inner_.weight.data(), mesh.FaceType = inner_.type.data();
  mesh.ijLnods = inner_.nodes.Lend(), mesh.ijParLnods = partitionFaces.nodes.Lend();

  mesh.NWall = wall_.count();
  mesh.ijWallCV = wall_.cell.data(), mesh.ijWall = wall_.other.data();
  mesh.ijWallSx = wall_.sx.data(), mesh.ijWallSy = wall_.sy.data(), mesh.ijWallSz = wall_.sz.data();
  mesh.ijWallxc = wall_.x.data(), mesh.ijWallyc = wall_.y.data(), mesh.ijWallzc = wall_.z.data();
  mesh.ijWallLnods = wall_.nodes.Lend();

  mesh.NInlet = inlet_.count();
  mesh.ijInletCV = inlet_.cell.data(), mesh.ijInlet = inlet_.other.data();
  mesh.ijInletSx = inlet_.sx.data(), mesh.ijInletSy = inlet_.sy.data(), mesh.ijInletSz = inlet_.sz.data();
  mesh.ijInletxc = inlet_.x.data(), mesh.ijInletyc = inlet_.y.data(), mesh.ijInletzc = inlet_.z.data();
  mesh.ijInletLnods = inlet_.nodes.Lend();

  mesh.NOutlet = outlet_.count();
  mesh.ijOutletCV = outlet_.cell.data(), mesh.ijOutlet = outlet_.other.data();
  mesh.ijOutletSx = outlet_.sx.data(), mesh.ijOutletSy = outlet_.sy.data();
  mesh.ijOutletSz = outlet_.sz.data();
  mesh.ijOutletxc = outlet_.x.data(), mesh.ijOutletyc = outlet_.y.data(), mesh.ijOutletzc = outlet_.z.data();
  mesh.ijOutletLnods = outlet_.nodes.Lend();
  // There is no symmetry group: its count is 0 and its arrays stay null.
}

#include <algorithm>

#include "reference_host/CellGeometry.h"
#include "reference_host/FaceGeometry.h"
#include "reference_host/HostTables.h"

namespace reference_host {
namespace {

constexpr std::array<FaceKind, 4> kBoundaryKinds = {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry,
                                                    FaceKind::Wall};

void FillGroupCells(const MeshPart& part, const HostNumbering& numbering, FaceKind kind,
                    FaceGroupTable& group) {
  const std::vector<int>& partFaces = numbering.PartFaces(kind);
  group.cv.assign(partFaces.size(), 0);
  group.other.assign(partFaces.size(), 0);
  for (int f = 1; f <= group.size(); ++f) {
    const int owner = numbering.cell[part.owner[partFaces[f]]];
    const int neighbour = part.neighbour[partFaces[f]];
    const int other = neighbour < 0 ? numbering.GhostCell(kind, f) : numbering.cell[neighbour];
    // The CV cell is the lower one: of two interior cells by definition, and ghost and halo cells come behind
    // these.
    group.cv[f] = std::min(owner, other);
    group.other[f] = std::max(owner, other);
  }
}

/// Numbers nodes at their first use, so that the nodes of near cells are near each other.
class NodeNumbers {
 public:
  explicit NodeNumbers(std::size_t nNodes) : number_(nNodes, 0) { partNode_.reserve(nNodes + 1); }

  void Use(int partNode) {
    if (number_[partNode] != 0) return;
    number_[partNode] = static_cast<int>(partNode_.size());
    partNode_.push_back(partNode);
  }
  void UseRemaining() {
    for (std::size_t node = 0; node < number_.size(); ++node) Use(static_cast<int>(node));
  }
  int operator[](int partNode) const { return number_[partNode]; }
  const std::vector<int>& partNode() const { return partNode_; }  ///< [1..NNode]

 private:
  std::vector<int> number_;
  std::vector<int> partNode_ = {-1};
};

/// Calls visit(node) once for every node of an owned cell. `lastCell` remembers by node which cell visited it
/// last; `mark` is a number that no earlier call had for this cell.
template <class Visit>
void ForEachNodeOfCell(const FaceTable& faces, const HostNumbering& numbering, int partCell, int mark,
                       std::vector<int>& lastCell, const Visit& visit) {
  for (std::size_t i = numbering.cellFaceStart[partCell]; i < numbering.cellFaceStart[partCell + 1]; ++i) {
    const int f = numbering.cellFace[i];
    const int* nodes = faces.Nodes(f);
    for (int k = 0; k < faces.NodeCount(f); ++k) {
      if (lastCell[nodes[k]] == mark) continue;
      lastCell[nodes[k]] = mark;
      visit(nodes[k]);
    }
  }
}

/// Host numbers of the halo cells' numbers in the part, to walk these in host order.
std::vector<int> HaloCellsInHostOrder(const MeshPart& part, const HostNumbering& numbering) {
  std::vector<int> halo(part.nHalo());
  for (int h = 0; h < part.nHalo(); ++h) {
    halo[numbering.cell[part.nOwned + h] - numbering.nInterior - numbering.nGhost - 1] = h;
  }
  return halo;
}

/// Builds CellLnods and, on the way, the numbers of the nodes.
class CellNodeTable {
 public:
  CellNodeTable(const MeshPart& part, const HostNumbering& numbering, NodeNumbers& nodeNumbers)
      : part_(part),
        faces_(part),
        numbering_(numbering),
        nodeNumbers_(nodeNumbers),
        lastCell_(part.points.size(), 0),
        halo_(HaloCellsInHostOrder(part, numbering)) {}

  void Build(HostTables& tables) {
    Count(tables.cellNodeNumber);
    tables.cellNodes = RaggedTable(tables.cellNodeNumber);
    FillInterior(tables.cellNodes);
    FillGhosts(tables.cellNodes);
    FillHalo(tables.cellNodes);
    for (int c = 1; c <= numbering_.nCells(); ++c) {
      int* row = tables.cellNodes[c];
      std::sort(row + 1, row + 1 + row[0]);
    }
  }

 private:
  void Count(std::vector<int>& number) {
    number.assign(numbering_.nCells() + 1, 0);
    for (int c = 1; c <= numbering_.nInterior; ++c) {
      ForEachNodeOfCell(faces_, numbering_, numbering_.partCell[c], c, lastCell_, [&](int node) {
        ++number[c];
        nodeNumbers_.Use(node);
      });
    }
    for (const FaceKind kind : kBoundaryKinds) {
      for (int f = 1; f <= numbering_.nFaces(kind); ++f) {
        number[numbering_.GhostCell(kind, f)] = faces_.NodeCount(numbering_.PartFaces(kind)[f]);
      }
    }
    int c = numbering_.nInterior + numbering_.nGhost;
    for (const int h : halo_) {
      number[++c] = static_cast<int>(part_.haloNodeStart[h + 1] - part_.haloNodeStart[h]);
      for (std::size_t i = part_.haloNodeStart[h]; i < part_.haloNodeStart[h + 1]; ++i) {
        nodeNumbers_.Use(part_.haloNode[i]);
      }
    }
    nodeNumbers_.UseRemaining();
  }

  void FillInterior(RaggedTable& table) {
    for (int c = 1; c <= numbering_.nInterior; ++c) {
      int* next = table[c] + 1;
      // Negative marks: the count has used the positive ones.
      ForEachNodeOfCell(faces_, numbering_, numbering_.partCell[c], -c, lastCell_,
                        [&](int node) { *next++ = nodeNumbers_[node]; });
    }
  }

  void FillGhosts(RaggedTable& table) {
    for (const FaceKind kind : kBoundaryKinds) {
      for (int f = 1; f <= numbering_.nFaces(kind); ++f) {
        int* row = table[numbering_.GhostCell(kind, f)];
        const int* nodes = faces_.Nodes(numbering_.PartFaces(kind)[f]);
        for (int k = 0; k < row[0]; ++k) row[k + 1] = nodeNumbers_[nodes[k]];
      }
    }
  }

  void FillHalo(RaggedTable& table) {
    int c = numbering_.nInterior + numbering_.nGhost;
    for (const int h : halo_) {
      int* row = table[++c];
      for (int k = 0; k < row[0]; ++k) row[k + 1] = nodeNumbers_[part_.haloNode[part_.haloNodeStart[h] + k]];
    }
  }

  const MeshPart& part_;
  const FaceTable faces_;
  const HostNumbering& numbering_;
  NodeNumbers& nodeNumbers_;
  std::vector<int> lastCell_;  // by part node
  std::vector<int> halo_;
};

void FillNodes(const MeshPart& part, const NodeNumbers& nodeNumbers, HostTables& tables) {
  const std::vector<int>& partNode = nodeNumbers.partNode();
  for (auto* values : {&tables.xn, &tables.yn, &tables.zn}) values->assign(partNode.size(), 0.0);
  tables.globalNode.assign(partNode.size(), 0);
  for (std::size_t node = 1; node < partNode.size(); ++node) {
    const Point& point = part.points[partNode[node]];
    tables.xn[node] = point[0];
    tables.yn[node] = point[1];
    tables.zn[node] = point[2];
    tables.globalNode[node] = part.globalNode[partNode[node]] + 1;
  }
}

/// Turns CellLnods around. Cells are walked upwards, so every row comes out as interior cells ascending, then
/// ghost, then halo cells, each once.
void FillNodeCells(HostTables& tables) {
  std::vector<int> nCellsOfNode(tables.xn.size(), 0);
  for (int c = 1; c <= tables.nCells(); ++c) {
    const int* nodes = tables.cellNodes[c];
    for (int k = 1; k <= nodes[0]; ++k) ++nCellsOfNode[nodes[k]];
  }
  tables.nodeCell = RaggedTable(nCellsOfNode);
  for (int node = 1; node <= tables.nodeCell.size(); ++node) tables.nodeCell[node][0] = 0;
  for (int c = 1; c <= tables.nCells(); ++c) {
    const int* nodes = tables.cellNodes[c];
    for (int k = 1; k <= nodes[0]; ++k) {
      int* row = tables.nodeCell[nodes[k]];
      row[++row[0]] = c;
    }
  }
}

/// Faces of a cell in the order of the part, which is that of the whole mesh: the rows list the same
/// neighbours in the same order in any partition.
void FillCellFaces(const HostNumbering& numbering, HostTables& tables) {
  std::vector<int> nFacesOfCell(numbering.nInterior + 1, 0);
  for (int c = 1; c <= numbering.nInterior; ++c) {
    const int partCell = numbering.partCell[c];
    nFacesOfCell[c] =
        static_cast<int>(numbering.cellFaceStart[partCell + 1] - numbering.cellFaceStart[partCell]);
  }
  tables.cellCell = RaggedTable(nFacesOfCell);
  tables.cellFace = RaggedTable(nFacesOfCell);
  tables.cellFaceType = RaggedTable(nFacesOfCell);
  for (int c = 1; c <= numbering.nInterior; ++c) {
    const int* partFace = numbering.cellFace.data() + numbering.cellFaceStart[numbering.partCell[c]];
    for (int k = 1; k <= nFacesOfCell[c]; ++k, ++partFace) {
      const FaceKind kind = numbering.kind[*partFace];
      const int f = numbering.face[*partFace];
      const FaceGroupTable& group = tables.Group(kind);
      tables.cellCell[c][k] = group.cv[f] == c ? group.other[f] : group.cv[f];
      tables.cellFace[c][k] = f;
      tables.cellFaceType[c][k] = kGroupCode[static_cast<std::size_t>(kind)];
    }
  }
}

/// Nodes of a group's faces, beginning with the three that span the plane best. Where the area vector was
/// negated, the row runs backwards from the last of the three, so that it turns around the vector in every
/// case.
void FillFaceNodes(const MeshPart& part, const HostNumbering& numbering, const NodeNumbers& nodeNumbers,
                   FaceKind kind, FaceGroupTable& group) {
  const FaceTable faces(part);
  const std::vector<int>& partFaces = numbering.PartFaces(kind);
  std::vector<int> length(partFaces.size(), 0);
  for (std::size_t f = 1; f < partFaces.size(); ++f) length[f] = faces.NodeCount(partFaces[f]);
  group.nodes = RaggedTable(length);
  for (int f = 1; f <= group.size(); ++f) {
    const int* nodes = faces.Nodes(partFaces[f]);
    const int n = length[f];
    const bool isTurned = group.cv[f] != numbering.cell[faces.Owner(partFaces[f])];
    const double sign = isTurned ? -1.0 : 1.0;
    const Point area = {sign * group.sx[f], sign * group.sy[f], sign * group.sz[f]};
    const int best = BestSpanningTriple(part.points, nodes, n, area);
    int* row = group.nodes[f];
    for (int k = 0; k < n; ++k) {
      const int from = isTurned ? best + 2 - k + n : best + k;
      row[k + 1] = nodeNumbers[nodes[from % n]];
    }
  }
}

}  // namespace

void FillFaceCells(const MeshPart& part, const HostNumbering& numbering, HostTables& tables) {
  tables.nInterior = numbering.nInterior;
  tables.nGhost = numbering.nGhost;
  tables.nHalo = numbering.nHalo;
  for (std::size_t k = 0; k < kFaceKinds; ++k) {
    FillGroupCells(part, numbering, static_cast<FaceKind>(k), tables.groups[k]);
  }
  for (const FaceKind kind : {FaceKind::Inner, FaceKind::Partition}) {
    FaceGroupTable& group = tables.Group(kind);
    group.faceType.assign(group.cv.size(), 0);
  }

  tables.globalCell.assign(numbering.nCells() + 1, 0);
  for (std::size_t c = 0; c < part.globalCell.size(); ++c) {
    tables.globalCell[numbering.cell[c]] = part.globalCell[c] + 1;
  }
  tables.patchOfGhost.assign(numbering.nCells() + 1, -1);
  for (const FaceKind kind : kBoundaryKinds) {
    for (int f = 1; f <= numbering.nFaces(kind); ++f) {
      tables.patchOfGhost[numbering.GhostCell(kind, f)] = part.facePatch[numbering.PartFaces(kind)[f]];
    }
  }
}

void FillTopology(const MeshPart& part, const HostNumbering& numbering, HostTables& tables) {
  FillCellFaces(numbering, tables);
  NodeNumbers nodeNumbers(part.points.size());
  CellNodeTable(part, numbering, nodeNumbers).Build(tables);
  FillNodes(part, nodeNumbers, tables);
  FillNodeCells(tables);
  for (std::size_t k = 0; k < kFaceKinds; ++k) {
    FillFaceNodes(part, numbering, nodeNumbers, static_cast<FaceKind>(k), tables.groups[k]);
  }
}

}  // namespace reference_host

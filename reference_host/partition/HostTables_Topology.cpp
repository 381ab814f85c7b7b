#include "reference_host/partition/HostTables.h"

#include <algorithm>
#include <array>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceGeometry.h"

namespace reference_host {
namespace {

void FillGroupCells(MeshPart const& part, HostNumbering const& numbering, FaceKind kind,
                    OwnedFaceGroup& group) {
  std::vector<int> const& partFaces = numbering.PartFaces(kind);
  group.cv.assign(partFaces.size(), 0);
  group.other.assign(partFaces.size(), 0);
  for (int f = 1; f <= group.size(); ++f) {
    int const owner = numbering.cell[part.owner[partFaces[f]]];
    int const neighbour = part.neighbour[partFaces[f]];
    int const other = neighbour < 0 ? numbering.GhostCell(kind, f) : numbering.cell[neighbour];
    // The CV cell is the lower one: of two interior cells by definition, and ghost and halo cells have higher
    // numbers.
    group.cv[f] = std::min(owner, other);
    group.other[f] = std::max(owner, other);
  }
}

/// Numbers nodes at their first use. Faces have the order of their cells, so nearby cells have nearby nodes.
class NodeNumbers {
 public:
  explicit NodeNumbers(std::size_t nNodes) : number_(nNodes, 0) { partNode_.reserve(nNodes + 1); }

  int Use(int partNode) {
    if (number_[partNode] == 0) {
      number_[partNode] = static_cast<int>(partNode_.size());
      partNode_.push_back(partNode);
    }
    return number_[partNode];
  }
  std::vector<int> const& partNode() const { return partNode_; }  ///< [1..NNode]

 private:
  std::vector<int> number_;
  std::vector<int> partNode_ = {-1};
};

/// Nodes of a group's faces, beginning with the three that span the plane best. If the area vector was
/// negated, the row runs backwards from the last of the three, so that it always goes around the vector.
void FillFaceNodes(MeshPart const& part, HostNumbering const& numbering, NodeNumbers& nodeNumbers,
                   FaceKind kind, OwnedFaceGroup& group) {
  FaceTable const faces(part);
  std::vector<int> const& partFaces = numbering.PartFaces(kind);
  std::vector<int> length(partFaces.size(), 0);
  for (std::size_t f = 1; f < partFaces.size(); ++f) length[f] = faces.NodeCount(partFaces[f]);
  group.nodes = RaggedTable(length);
  for (int f = 1; f <= group.size(); ++f) {
    int const* nodes = faces.Nodes(partFaces[f]);
    int const n = length[f];
    bool const isTurned = group.cv[f] != numbering.cell[faces.Owner(partFaces[f])];
    double const sign = isTurned ? -1.0 : 1.0;
    Point const area = {sign * group.sx[f], sign * group.sy[f], sign * group.sz[f]};
    int const best = BestSpanningTriple(part.points, nodes, n, area);
    int* row = group.nodes[f];
    for (int k = 0; k < n; ++k) {
      int const from = isTurned ? best + 2 - k + n : best + k;
      row[k + 1] = nodeNumbers.Use(nodes[from % n]);
    }
  }
}

/// Builds CellLnods with ascending rows.
class CellNodeTable {
 public:
  CellNodeTable(MeshPart const& part, HostNumbering const& numbering, NodeNumbers& nodeNumbers,
                HostTables& tables)
      : part_(part),
        numbering_(numbering),
        nodeNumbers_(nodeNumbers),
        tables_(tables),
        lastCell_(part.points.size() + 1, 0),
        halo_(part.nHalo()) {
    for (int h = 0; h < part.nHalo(); ++h) halo_[numbering.cell[part.nOwned + h] - FirstHalo()] = h;
  }

  void Build() {
    Count();
    tables_.cellNodes = RaggedTable(tables_.cellNodeNumber);
    FillInterior();
    FillGhosts();
    FillHalo();
    for (int c = 1; c <= numbering_.nCells(); ++c) {
      int* row = tables_.cellNodes[c];
      std::sort(row + 1, row + 1 + row[0]);
    }
  }

 private:
  int FirstHalo() const { return numbering_.nInterior + numbering_.nGhost + 1; }

  /// Calls visit(node) once for every node of an interior cell. `mark` must differ from those of all earlier
  /// calls.
  template <class Visit>
  void ForEachNode(int c, int mark, Visit const& visit) {
    int const* cellFace = tables_.cellFace[c];
    int const* cellFaceType = tables_.cellFaceType[c];
    for (int k = 1; k <= cellFace[0]; ++k) {
      int const* nodes = tables_.Group(GroupWithCode(cellFaceType[k])->kind).nodes[cellFace[k]];
      for (int i = 1; i <= nodes[0]; ++i) {
        if (lastCell_[nodes[i]] == mark) continue;
        lastCell_[nodes[i]] = mark;
        visit(nodes[i]);
      }
    }
  }

  void Count() {
    std::vector<int>& number = tables_.cellNodeNumber;
    number.assign(numbering_.nCells() + 1, 0);
    for (int c = 1; c <= numbering_.nInterior; ++c) {
      ForEachNode(c, c, [&](int) { ++number[c]; });
    }
    for (FaceKind const kind : kGhostOrder) {
      OwnedFaceGroup const& group = tables_.Group(kind);
      for (int f = 1; f <= group.size(); ++f) number[group.other[f]] = group.nodes[f][0];
    }
    for (std::size_t i = 0; i < halo_.size(); ++i) {
      int const h = halo_[i];
      number[FirstHalo() + i] = static_cast<int>(part_.haloNodeStart[h + 1] - part_.haloNodeStart[h]);
    }
  }

  void FillInterior() {
    for (int c = 1; c <= numbering_.nInterior; ++c) {
      int* next = tables_.cellNodes[c] + 1;
      // Negative marks, because counting has used the positive ones.
      ForEachNode(c, -c, [&](int node) { *next++ = node; });
    }
  }

  void FillGhosts() {
    for (FaceKind const kind : kGhostOrder) {
      OwnedFaceGroup const& group = tables_.Group(kind);
      for (int f = 1; f <= group.size(); ++f) {
        int const* nodes = group.nodes[f];
        std::copy(nodes, nodes + nodes[0] + 1, tables_.cellNodes[group.other[f]]);
      }
    }
  }

  void FillHalo() {
    int c = FirstHalo();
    for (int const h : halo_) {
      int* row = tables_.cellNodes[c++];
      int const* nodes = part_.haloNode.data() + part_.haloNodeStart[h];
      for (int k = 0; k < row[0]; ++k) row[k + 1] = nodeNumbers_.Use(nodes[k]);
    }
  }

  MeshPart const& part_;
  HostNumbering const& numbering_;
  NodeNumbers& nodeNumbers_;
  HostTables& tables_;
  std::vector<int> lastCell_;  // by node: the mark of the last visit
  std::vector<int> halo_;      // part numbers of the halo cells, counted from 0, in host order
};

void FillNodes(MeshPart const& part, NodeNumbers const& nodeNumbers, HostTables& tables) {
  std::vector<int> const& partNode = nodeNumbers.partNode();
  for (auto* values : {&tables.xn, &tables.yn, &tables.zn}) values->assign(partNode.size(), 0.0);
  tables.globalNode.assign(partNode.size(), 0);
  for (std::size_t node = 1; node < partNode.size(); ++node) {
    Point const& point = part.points[partNode[node]];
    tables.xn[node] = point[0];
    tables.yn[node] = point[1];
    tables.zn[node] = point[2];
    tables.globalNode[node] = part.globalNode[partNode[node]] + 1;
  }
}

/// Inverts CellLnods. Cells are visited in ascending order, so every row has the interior cells in ascending
/// order, then the ghost cells, then the halo cells, each once.
void FillNodeCells(HostTables& tables) {
  std::vector<int> nCellsOfNode(tables.xn.size(), 0);
  for (int c = 1; c <= tables.nCells(); ++c) {
    int const* nodes = tables.cellNodes[c];
    for (int k = 1; k <= nodes[0]; ++k) ++nCellsOfNode[nodes[k]];
  }
  tables.nodeCell = RaggedTable(nCellsOfNode);
  for (int node = 1; node <= tables.nodeCell.size(); ++node) tables.nodeCell[node][0] = 0;
  for (int c = 1; c <= tables.nCells(); ++c) {
    int const* nodes = tables.cellNodes[c];
    for (int k = 1; k <= nodes[0]; ++k) {
      int* row = tables.nodeCell[nodes[k]];
      row[++row[0]] = c;
    }
  }
}

/// Lists the faces of a cell in the order of the part, which is that of the whole mesh, so that the rows have
/// the same neighbours in the same order in any partition.
void FillCellFaces(HostNumbering const& numbering, HostTables& tables) {
  std::vector<int> nFacesOfCell(numbering.nInterior + 1, 0);
  for (int c = 1; c <= numbering.nInterior; ++c) {
    int const partCell = numbering.partCell[c];
    nFacesOfCell[c] =
        static_cast<int>(numbering.cellFaceStart[partCell + 1] - numbering.cellFaceStart[partCell]);
  }
  tables.cellCell = RaggedTable(nFacesOfCell);
  tables.cellFace = RaggedTable(nFacesOfCell);
  tables.cellFaceType = RaggedTable(nFacesOfCell);
  for (int c = 1; c <= numbering.nInterior; ++c) {
    int const* partFace = numbering.cellFace.data() + numbering.cellFaceStart[numbering.partCell[c]];
    for (int k = 1; k <= nFacesOfCell[c]; ++k, ++partFace) {
      FaceKind const kind = numbering.kind[*partFace];
      int const f = numbering.face[*partFace];
      OwnedFaceGroup const& group = tables.Group(kind);
      tables.cellCell[c][k] = group.cv[f] == c ? group.other[f] : group.cv[f];
      tables.cellFace[c][k] = f;
      tables.cellFaceType[c][k] = MembersOf(kind).code;
    }
  }
}

}  // namespace

void FillFaceCells(MeshPart const& part, HostNumbering const& numbering, HostTables& tables) {
  tables.nInterior = numbering.nInterior;
  tables.nGhost = numbering.nGhost;
  tables.nHalo = numbering.nHalo;
  for (FaceGroupMembers const& members : face_groups::kTable) {
    FillGroupCells(part, numbering, members.kind, tables.Group(members.kind));
  }
  for (FaceKind const kind : {FaceKind::Inner, FaceKind::Partition}) {
    OwnedFaceGroup& group = tables.Group(kind);
    group.type.assign(group.cv.size(), 0);
  }

  tables.globalCell.assign(numbering.nCells() + 1, 0);
  for (std::size_t c = 0; c < part.globalCell.size(); ++c) {
    tables.globalCell[numbering.cell[c]] = part.globalCell[c] + 1;
  }
  tables.shifts = part.shifts;
  tables.haloPeriod.assign(part.haloPart.size(), 0);
  int const firstHalo = numbering.nInterior + numbering.nGhost + 1;
  for (int h = 0; h < part.nHalo(); ++h) {
    tables.haloPeriod[numbering.cell[part.nOwned + h] - firstHalo] = part.haloPeriod[h];
  }
  tables.patchOfGhost.assign(numbering.nCells() + 1, -1);
  for (FaceKind const kind : kGhostOrder) {
    for (int f = 1; f <= numbering.nFaces(kind); ++f) {
      tables.patchOfGhost[numbering.GhostCell(kind, f)] = part.facePatch[numbering.PartFaces(kind)[f]];
    }
  }
}

void FillTopology(MeshPart const& part, HostNumbering const& numbering, HostTables& tables) {
  FillCellFaces(numbering, tables);
  NodeNumbers nodeNumbers(part.points.size());
  // The inner faces come first. Nearly all nodes are on one of them, so nodes are numbered in the order of
  // the cells.
  for (FaceGroupMembers const& members : face_groups::kTable) {
    FillFaceNodes(part, numbering, nodeNumbers, members.kind, tables.Group(members.kind));
  }
  CellNodeTable(part, numbering, nodeNumbers, tables).Build();
  // Points that no cell uses get a number, too.
  for (int node = 0; node < static_cast<int>(part.points.size()); ++node) nodeNumbers.Use(node);
  FillNodes(part, nodeNumbers, tables);
  FillNodeCells(tables);
}

}  // namespace reference_host

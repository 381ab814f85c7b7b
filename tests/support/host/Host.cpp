#include "tests/support/host/Host.h"

#include <algorithm>

namespace zyn_test {
namespace {

GuardedGradient Components(std::vector<Point> const& points) {
  GuardedGradient components(static_cast<int>(points.size()) - 1);
  int i = 0;
  for (auto point = points.begin() + 1; point != points.end(); ++point) {
    ++i;
    components.x[i] = point->x;
    components.y[i] = point->y;
    components.z[i] = point->z;
  }
  return components;
}

GuardedArray<int> Lengths(std::vector<std::vector<int>> const& rows) {
  GuardedArray<int> lengths(static_cast<int>(rows.size()) - 1);
  for (int i = 1; i <= lengths.Size(); ++i)
    lengths[i] = static_cast<int>(rows[static_cast<std::size_t>(i)].size());
  return lengths;
}

/// One number of each face of each cell.
template <typename Take>
RaggedTable OfCellFaces(TestMesh const& mesh, Take take) {
  std::vector<std::vector<int>> rows(mesh.cellFaces.size());
  for (std::size_t c = 1; c < rows.size(); ++c)
    for (FaceOfCell const& face : mesh.cellFaces[c]) rows[c].push_back(take(face));
  return RaggedTable(rows);
}

}  // namespace

Host::Host(TestMesh const& description, Reads const& reads, std::string const& baseFileName,
           Exchange const& exchange, bool lendEmptyArrays)
    : HostObjects(LentPartition({}, reads.partition), description.NCell(), exchange),
      centres(Components(description.centres)),
      volume(Guarded(description.volumes)),
      previous(description.NCell(), 1e9),
      description_(description),
      reads_(reads),
      baseFileName_(baseFileName.c_str(), baseFileName.c_str() + baseFileName.size() + 1),
      nodes_(Components(description.nodes)),
      nodesOfCell_(Lengths(description.cellNodes)),
      neighbours_(description.neighbours),
      cellNodes_(description.cellNodes),
      cellFaces_(OfCellFaces(description, [](FaceOfCell const& face) { return face.number; })),
      cellFaceTypes_(OfCellFaces(description,
                                 [](FaceOfCell const& face) { return MembersOf(KindOf(face.group)).code; })),
      nodeCells_(description.nodeCells) {
  globals.BaseFileName = baseFileName_.data();
  LendCells();
  LendNodes();
  LendTables();
  for (Group const group : kGroups) {
    Faces(KindOf(group)) = LentFaces(description.Of(group));
    Faces(KindOf(group)).lendEmptyArrays = lendEmptyArrays;
    LendGroup(KindOf(group));
  }
}

void Host::LendCells() {
  mesh.NCell = description_.NCell();
  mesh.NInnerCells = description_.nInnerCells;
  mesh.xc = centres.x.Data();
  mesh.yc = centres.y.Data();
  mesh.zc = centres.z.Data();
  if (reads_.volumes) mesh.Volume = volume.Data();
  globals.PrevGradX = previous.x.Data();
  globals.PrevGradY = previous.y.Data();
  globals.PrevGradZ = previous.z.Data();
}

void Host::LendNodes() {
  mesh.NNode = static_cast<int>(std::max(description_.nodes.size(), description_.nodeCells.size())) - 1;
  if (!reads_.nodePoints || description_.NNode() == 0) return;
  mesh.xn = nodes_.x.Data();
  mesh.yn = nodes_.y.Data();
  mesh.zn = nodes_.z.Data();
}

void Host::LendTables() {
  // In these two tables the rows do not begin with their lengths.
  cellNodes_.SetLengths(GuardValue<int>());
  cellFaceTypes_.SetLengths(GuardValue<int>());
  if (reads_.neighbours) mesh.CellCell = neighbours_.Data();
  if (reads_.cellNodes) mesh.CellLnods = cellNodes_.Data();
  if (reads_.cellNodes) mesh.CellLnodsNumber = nodesOfCell_.Data();
  if (reads_.cellFaces) mesh.CellFace = cellFaces_.Data();
  if (reads_.cellFaces) mesh.CellFaceType = cellFaceTypes_.Data();
  if (reads_.nodeCells) mesh.NodeCell = nodeCells_.Data();
}

void Host::LendGroup(FaceKind kind) {
  FaceGroupMembers const& m = MembersOf(kind);
  LentFaces& faces = Faces(kind);
  GroupReads const& reads = kind == FaceKind::Inner       ? reads_.inner
                            : kind == FaceKind::Partition ? reads_.partition
                                                          : reads_.boundary;
  if (reads.nodes) mesh.*m.nodes = faces.nodes.Data();
  if (kind == FaceKind::Partition) return;  // all else behind its accessors
  mesh.*m.count = faces.count;
  mesh.*m.cv = faces.Lend(faces.cv);
  mesh.*m.other = faces.Lend(faces.other);
  if (reads.areas) {
    mesh.*m.sx = faces.Lend(faces.sx);
    mesh.*m.sy = faces.Lend(faces.sy);
    mesh.*m.sz = faces.Lend(faces.sz);
  }
  if (reads.centres) {
    mesh.*m.xc = faces.Lend(faces.xc);
    mesh.*m.yc = faces.Lend(faces.yc);
    mesh.*m.zc = faces.Lend(faces.zc);
  }
  if (reads.weights && m.weight != nullptr) {
    mesh.*m.weight = faces.Lend(faces.weight);
    mesh.*m.type = faces.Lend(faces.type);
  }
}

bool Host::InputsUntouched() const {
  Host const fresh(description_, reads_, baseFileName_.data());
  for (Group const group : kGroups)
    if (!Faces(KindOf(group)).IdenticalTo(fresh.Faces(KindOf(group)))) return false;
  return centres.IdenticalTo(fresh.centres) && volume.IdenticalTo(fresh.volume) &&
         nodes_.IdenticalTo(fresh.nodes_) && nodesOfCell_.IdenticalTo(fresh.nodesOfCell_) &&
         neighbours_.Rows() == fresh.neighbours_.Rows() && cellNodes_.Rows() == fresh.cellNodes_.Rows() &&
         cellFaces_.Rows() == fresh.cellFaces_.Rows() &&
         cellFaceTypes_.Rows() == fresh.cellFaceTypes_.Rows() &&
         nodeCells_.Rows() == fresh.nodeCells_.Rows() && baseFileName_ == fresh.baseFileName_;
}

}  // namespace zyn_test

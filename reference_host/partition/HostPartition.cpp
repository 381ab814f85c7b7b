#include "reference_host/partition/HostPartition.h"

#include <utility>

#include "reference_host/partition/HostNumbering.h"
#include "reference_host/partition/HostTables.h"
#include "reference_host/partition/LentPartitionFaces.h"

namespace reference_host {
namespace {

void LendCellsAndNodes(HostTables& tables, CZYN3DFiniteVolumeMesh& mesh) {
  mesh.NCell = tables.nCells();
  mesh.NInnerCells = tables.nInterior;
  mesh.NNode = tables.nodeCell.size();
  mesh.xn = tables.xn.data();
  mesh.yn = tables.yn.data();
  mesh.zn = tables.zn.data();
  mesh.xc = tables.xc.data();
  mesh.yc = tables.yc.data();
  mesh.zc = tables.zc.data();
  mesh.Volume = tables.volume.data();
  mesh.CellCell = tables.cellCell.rows();
  mesh.CellFace = tables.cellFace.rows();
  mesh.CellFaceType = tables.cellFaceType.rows();
  mesh.CellLnods = tables.cellNodes.rows();
  mesh.CellLnodsNumber = tables.cellNodeNumber.data();
  mesh.NodeCell = tables.nodeCell.rows();
}

/// The record has only the nodes of the partition faces; LentPartitionFaces lends the rest.
void LendFaces(FaceKind kind, OwnedFaceGroup& group, CZYN3DFiniteVolumeMesh& mesh) {
  FaceGroupMembers const& members = MembersOf(kind);
  mesh.*members.nodes = group.nodes.rows();
  if (kind == FaceKind::Partition) return;
  mesh.*members.count = group.size();
  mesh.*members.cv = group.cv.data();
  mesh.*members.other = group.other.data();
  mesh.*members.sx = group.sx.data();
  mesh.*members.sy = group.sy.data();
  mesh.*members.sz = group.sz.data();
  mesh.*members.xc = group.xc.data();
  mesh.*members.yc = group.yc.data();
  mesh.*members.zc = group.zc.data();
  if (IsBoundary(kind)) return;
  mesh.*members.weight = group.weight.data();
  mesh.*members.type = group.type.data();
}

/// Moves the centres of cells beyond a period from the places of their owners.
void ShiftHaloCentres(HostTables& tables) {
  if (tables.shifts.empty()) return;
  int c = tables.nInterior + tables.nGhost;
  tables.ownerCentre.clear();
  for (int h = 1; h <= tables.nHalo; ++h) {
    tables.ownerCentre.push_back({tables.xc[c + h], tables.yc[c + h], tables.zc[c + h]});
  }
  for (int const period : tables.haloPeriod) {
    ++c;
    if (period == 0) continue;
    Point const shift = ShiftOf(tables.shifts, period);
    tables.xc[c] += shift[0];
    tables.yc[c] += shift[1];
    tables.zc[c] += shift[2];
  }
}

}  // namespace

struct HostPartition::Storage {
  int part = 0;
  int nParts = 1;
  HostTables tables;
  std::vector<ExchangeList> exchangeLists;
  std::vector<Patch> patches;

  CZYN3DFiniteVolumeMesh mesh;
  LentPartitionFaces partitionFaces{tables.Group(FaceKind::Partition)};

  CZyn3dGV globals;
  std::vector<double> prevGradX, prevGradY, prevGradZ;  // [1..NCell]
  std::vector<double> resetReal = std::vector<double>(5, 0.0);
  std::vector<int> resetInt = std::vector<int>(5, 0);
  std::string baseFileName;

  void LendMesh();
  void LendGlobals();
};

void HostPartition::Storage::LendMesh() {
  LendCellsAndNodes(tables, mesh);
  for (FaceGroupMembers const& members : face_groups::kTable) {
    LendFaces(members.kind, tables.Group(members.kind), mesh);
  }
}

void HostPartition::Storage::LendGlobals() {
  for (auto* values : {&prevGradX, &prevGradY, &prevGradZ}) values->assign(tables.nCells() + 1, 0.0);
  globals.PrevGradX = prevGradX.data();
  globals.PrevGradY = prevGradY.data();
  globals.PrevGradZ = prevGradZ.data();
  globals.ResetRealBlock = resetReal.data();
  globals.ResetIntBlock = resetInt.data();
  globals.BaseFileName = baseFileName.data();
}

HostPartition::HostPartition(MeshPart const& part) : storage_(std::make_unique<Storage>()) {
  Storage& s = *storage_;
  s.part = part.part;
  s.nParts = part.nParts;
  s.patches = part.patches;

  HostNumbering const numbering = NumberPartition(part);
  FillFaceCells(part, numbering, s.tables);
  FillGeometry(part, numbering, s.tables);
  FillTopology(part, numbering, s.tables);
  OwnedFaceGroup& partitionGroup = s.tables.Group(FaceKind::Partition);
  partitionGroup.weight.assign(partitionGroup.cv.size(), 0.0);
  s.exchangeLists = BuildExchangeLists(part, numbering);
  s.LendMesh();
  s.LendGlobals();
}

HostPartition::~HostPartition() = default;

void HostPartition::CompleteHalo(CCommunication& communication) {
  HostTables& tables = storage_->tables;
  communication.DDM_Exch(tables.xc.data());
  communication.DDM_Exch(tables.yc.data());
  communication.DDM_Exch(tables.zc.data());
  ShiftHaloCentres(tables);
  FillWeights(tables, tables.Group(FaceKind::Partition));
}

void HostPartition::SetBaseFileName(std::string const& name) {
  storage_->baseFileName = name;
  storage_->globals.BaseFileName = storage_->baseFileName.data();
}

CZYN3DFiniteVolumeMesh* HostPartition::mesh() { return &storage_->mesh; }
CPartitionFace_DLL* HostPartition::partitionFaces() { return &storage_->partitionFaces; }
CZyn3dGV* HostPartition::globals() { return &storage_->globals; }

int HostPartition::part() const { return storage_->part; }
int HostPartition::nParts() const { return storage_->nParts; }
int HostPartition::nHaloCells() const { return storage_->tables.nHalo; }
Point HostPartition::OwnerCentre(int c) const {
  HostTables const& tables = storage_->tables;
  int const h = c - tables.nInterior - tables.nGhost - 1;
  if (h >= 0 && !tables.ownerCentre.empty()) return tables.ownerCentre[h];
  return {tables.xc[c], tables.yc[c], tables.zc[c]};
}
std::vector<int> const& HostPartition::haloPeriod() const { return storage_->tables.haloPeriod; }
std::vector<ExchangeList> const& HostPartition::exchangeLists() const { return storage_->exchangeLists; }
std::vector<std::int64_t> const& HostPartition::globalCell() const { return storage_->tables.globalCell; }
std::vector<std::int64_t> const& HostPartition::globalNode() const { return storage_->tables.globalNode; }
std::vector<Patch> const& HostPartition::patches() const { return storage_->patches; }
std::vector<int> const& HostPartition::patchOfGhost() const { return storage_->tables.patchOfGhost; }

}  // namespace reference_host

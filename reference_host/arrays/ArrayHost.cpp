#include "reference_host/arrays/ArrayHost.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "reference_host/arrays/ArrayTopology.h"

namespace reference_host {
namespace array_host {

/// The cells of a group's faces, [1..count], as the operators number them.
struct FaceCells {
  std::vector<int> cv, other;
};

inline std::vector<int> CountedFromOne(int const* numbers, int count) {
  std::vector<int> result(static_cast<std::size_t>(count) + 1, 0);
  for (int i = 0; i < count; ++i) result[i + 1] = numbers[i] + 1;
  return result;
}

/// Zeros that are never written: of a large block the system gives them no memory.
class Zeros {
 public:
  explicit Zeros(int count)
      : zeros_(static_cast<int*>(std::calloc(static_cast<std::size_t>(count), sizeof(int)))) {
    if (!zeros_) throw std::bad_alloc();
  }
  int* data() const { return zeros_.get(); }

 private:
  struct Free {
    void operator()(int* block) const { std::free(block); }
  };
  std::unique_ptr<int[], Free> zeros_;
};

/// The array of a solver as one that begins with an element 1. The operators write to none of those that they borrow,
/// but the records do not say so.
double* FromOne(double const* array) { return array == nullptr ? nullptr : const_cast<double*>(array) - 1; }

/// Numbers from 0 of the first cell of each kind. Ghost cells follow interior cells by group.
struct FirstCells {
  explicit FirstCells(ArrayMesh const& arrays) {
    int next = arrays.nCells;
    for (FaceKind const kind : {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry, FaceKind::Wall}) {
      ghost[IndexOf(kind)] = next;
      next += FacesOf(kind, arrays).count;
    }
    halo = next - arrays.nEmptyFaces;
    empty = halo + arrays.nHaloCells;
    end = empty + arrays.nEmptyFaces;
  }

  std::array<int, kFaceKinds> ghost = {};  // by IndexOf(kind)
  int halo, empty, end;
};

FaceCells CellsOf(FaceKind kind, ArrayMesh const& arrays, FirstCells const& first) {
  ArrayFaces const& faces = FacesOf(kind, arrays);
  FaceCells cells;
  cells.cv = CountedFromOne(faces.owner, faces.count);
  if (kind == FaceKind::Inner) {
    cells.other = CountedFromOne(arrays.neighbour, faces.count);
    return cells;
  }
  cells.other.assign(cells.cv.size(), 0);
  int const nWithoutEmpty = faces.count - (kind == FaceKind::Wall ? arrays.nEmptyFaces : 0);
  for (int f = 0; f < faces.count; ++f) {
    int const beyond = kind == FaceKind::Partition
                           ? first.halo + (arrays.haloCell == nullptr ? f : arrays.haloCell[f])
                       : f < nWithoutEmpty ? first.ghost[IndexOf(kind)] + f
                                           : first.empty + f - nWithoutEmpty;
    cells.other[f + 1] = beyond + 1;
  }
  return cells;
}

class LentFaces : public CPartitionFace_DLL {
 public:
  explicit LentFaces(FaceGroup const& group) : group_(group) {}

  int NParInterFace() override { return group_.count; }
  int* ijParCV() override { return const_cast<int*>(group_.cv); }
  int* ijPar() override { return const_cast<int*>(group_.other); }
  double* ijParSx() override { return const_cast<double*>(group_.sx); }
  double* ijParSy() override { return const_cast<double*>(group_.sy); }
  double* ijParSz() override { return const_cast<double*>(group_.sz); }
  double* ijParxc() override { return const_cast<double*>(group_.xc); }
  double* ijParyc() override { return const_cast<double*>(group_.yc); }
  double* ijParzc() override { return const_cast<double*>(group_.zc); }
  double* ParInterFace_Lamda() override { return const_cast<double*>(group_.weight); }
  int* FaceType_Partition() override { return const_cast<int*>(group_.type); }

 private:
  FaceGroup const& group_;
};

}  // namespace array_host

using array_host::FaceCells, array_host::FirstCells, array_host::FromOne, array_host::LentFaces;

struct ArrayHost::Storage {
  Storage(ArrayMesh const& arrays, Extent extent);

  FaceGroup& Group(FaceKind kind) { return groups[IndexOf(kind)]; }
  void LendGeometry(ArrayMesh const& arrays);
  void LendCells(ArrayMesh const& arrays);
  void LendNodes(ArrayMesh const& arrays);
  void LendFaces();
  void LendTopology(ArrayMesh const& arrays);
  void LendGlobals();

  FirstCells const first;
  std::array<FaceCells, kFaceKinds> cells;   // by IndexOf(kind)
  array_host::Zeros const faceType;          // 0 throughout: both cells of a face take its flux
  std::array<FaceGroup, kFaceKinds> groups;  // by IndexOf(kind)
  ArrayTopology topology;

  CZYN3DFiniteVolumeMesh mesh, meshWithoutEmptyFaces;
  LentFaces partitionFaces{Group(FaceKind::Partition)};
  CZyn3dGV globals;
  std::vector<double> prevGradX, prevGradY, prevGradZ;  // [1..NCell]
  std::array<double, 5> resetReal = {};
  std::array<int, 5> resetInt = {};
  std::string baseFileName;
};

ArrayHost::Storage::Storage(ArrayMesh const& arrays, Extent extent)
    : first(arrays), faceType(std::max(arrays.inner.count, arrays.partition.count) + 1) {
  for (FaceGroupMembers const& members : face_groups::kTable) {
    FaceKind const kind = members.kind;
    FaceCells& faceCells = cells[IndexOf(kind)] = array_host::CellsOf(kind, arrays, first);
    ArrayFaces const& faces = FacesOf(kind, arrays);
    FaceGroup& group = Group(kind);
    group.kind = kind;
    group.count = faces.count;
    group.cv = faceCells.cv.data();
    group.other = faceCells.other.data();
  }
  Group(FaceKind::Inner).type = Group(FaceKind::Partition).type = faceType.data();

  if (extent == Extent::kTopology) LendTopology(arrays);
  LendGeometry(arrays);
  LendGlobals();
}

void ArrayHost::Storage::LendGeometry(ArrayMesh const& arrays) {
  for (FaceGroup& group : groups) {
    ArrayFaces const& faces = FacesOf(group.kind, arrays);
    group.sx = FromOne(faces.area.x), group.sy = FromOne(faces.area.y), group.sz = FromOne(faces.area.z);
    group.xc = FromOne(faces.centre.x), group.yc = FromOne(faces.centre.y),
    group.zc = FromOne(faces.centre.z);
  }
  Group(FaceKind::Inner).weight = FromOne(arrays.neighbourWeight);
  Group(FaceKind::Partition).weight = FromOne(arrays.haloWeight);

  LendCells(arrays);
  LendFaces();
  if (mesh.NodeCell != nullptr) LendNodes(arrays);

  meshWithoutEmptyFaces = mesh;
  meshWithoutEmptyFaces.NWall -= arrays.nEmptyFaces;
  meshWithoutEmptyFaces.NCell -= arrays.nEmptyFaces;
}

void ArrayHost::Storage::LendCells(ArrayMesh const& arrays) {
  mesh.NInnerCells = arrays.nCells;
  mesh.NCell = first.end;
  mesh.xc = FromOne(arrays.centre.x);
  mesh.yc = FromOne(arrays.centre.y);
  mesh.zc = FromOne(arrays.centre.z);
  mesh.Volume = FromOne(arrays.volume);
}

void ArrayHost::Storage::LendNodes(ArrayMesh const& arrays) {
  mesh.NNode = arrays.nNodes;
  mesh.xn = FromOne(arrays.node.x);
  mesh.yn = FromOne(arrays.node.y);
  mesh.zn = FromOne(arrays.node.z);
}

/// The record has no arrays of the partition faces but their nodes.
void ArrayHost::Storage::LendFaces() {
  for (FaceGroupMembers const& m : face_groups::kTable) {
    if (m.kind == FaceKind::Partition) continue;
    FaceGroup const& group = Group(m.kind);
    mesh.*m.count = group.count;
    mesh.*m.cv = const_cast<int*>(group.cv);
    mesh.*m.other = const_cast<int*>(group.other);
    mesh.*m.sx = const_cast<double*>(group.sx);
    mesh.*m.sy = const_cast<double*>(group.sy);
    mesh.*m.sz = const_cast<double*>(group.sz);
    mesh.*m.xc = const_cast<double*>(group.xc);
    mesh.*m.yc = const_cast<double*>(group.yc);
    mesh.*m.zc = const_cast<double*>(group.zc);
    if (IsBoundary(m.kind)) continue;
    mesh.*m.weight = const_cast<double*>(group.weight);
    mesh.*m.type = const_cast<int*>(group.type);
  }
}

void ArrayHost::Storage::LendTopology(ArrayMesh const& arrays) {
  topology = MakeTopology(arrays, groups, first.end);
  for (FaceGroupMembers const& m : face_groups::kTable)
    mesh.*m.nodes = topology.faceNodes[IndexOf(m.kind)].rows();
  mesh.CellCell = topology.cellCell.rows();
  mesh.CellFace = topology.cellFace.rows();
  mesh.CellFaceType = topology.cellFaceType.rows();
  mesh.CellLnods = topology.cellNodes.rows();
  mesh.CellLnodsNumber = topology.cellNodeNumber.data();
  mesh.NodeCell = topology.nodeCell.rows();
}

void ArrayHost::Storage::LendGlobals() {
  globals.ResetRealBlock = resetReal.data();
  globals.ResetIntBlock = resetInt.data();
  globals.BaseFileName = baseFileName.data();
}

ArrayHost::ArrayHost(ArrayMesh const& arrays, Extent extent)
    : storage_(std::make_unique<Storage>(arrays, extent)) {}

ArrayHost::~ArrayHost() = default;

void ArrayHost::MakeIterationArrays() {
  Storage& s = *storage_;
  if (s.globals.PrevGradX != nullptr) return;
  for (auto* values : {&s.prevGradX, &s.prevGradY, &s.prevGradZ}) values->assign(nCells() + 1, 0.0);
  s.globals.PrevGradX = s.prevGradX.data();
  s.globals.PrevGradY = s.prevGradY.data();
  s.globals.PrevGradZ = s.prevGradZ.data();
}

void ArrayHost::SetBaseFileName(std::string const& name) {
  storage_->baseFileName = name;
  storage_->globals.BaseFileName = storage_->baseFileName.data();
}

void ArrayHost::LendGeometry(ArrayMesh const& arrays) { storage_->LendGeometry(arrays); }

CZYN3DFiniteVolumeMesh* ArrayHost::mesh() { return &storage_->mesh; }
CZYN3DFiniteVolumeMesh* ArrayHost::meshWithoutEmptyFaces() { return &storage_->meshWithoutEmptyFaces; }
CPartitionFace_DLL* ArrayHost::partitionFaces() { return &storage_->partitionFaces; }
CZyn3dGV* ArrayHost::globals() { return &storage_->globals; }

int ArrayHost::nCells() const { return storage_->first.end; }
int ArrayHost::FirstGhost(FaceKind kind) const { return storage_->first.ghost[IndexOf(kind)]; }
int ArrayHost::FirstHalo() const { return storage_->first.halo; }
int ArrayHost::FirstGhostOfEmptyFaces() const { return storage_->first.empty; }

}  // namespace reference_host

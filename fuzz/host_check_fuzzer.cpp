// Gives the checker of hosts wrong records, of two kinds: a sound host with contradicting counts and arrays
// of the true length, so that one step too far leaves an array; and records of any content, with arrays as
// long as the largest count that the checker may believe.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "host_check/CheckHostData.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/partition/HostPartition.h"

namespace {

/// Partition faces that return anything.
class AnyFaces : public CPartitionFace_DLL {
 public:
  int NParInterFace() override { return count; }
  int* ijParCV() override { return cv; }
  int* ijPar() override { return other; }
  double* ijParSx() override { return real[0]; }
  double* ijParSy() override { return real[1]; }
  double* ijParSz() override { return real[2]; }
  double* ijParxc() override { return real[3]; }
  double* ijParyc() override { return real[4]; }
  double* ijParzc() override { return real[5]; }
  double* ParInterFace_Lamda() override { return real[6]; }
  int* FaceType_Partition() override { return type; }

  int count = 0;
  int *cv = nullptr, *other = nullptr, *type = nullptr;
  std::array<double*, 7> real{};
};

/// An exchange that writes to one cell, and a reduction that may change its argument.
class AnyCommunication : public CCommunication {
 public:
  explicit AnyCommunication(int cell) : cell_(cell) {}
  void DDM_Exch(double* field) override { field[cell_] = 1.0; }
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId) override { field[cell_] = 2.0; }
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId) override { field[cell_] = 1.0; }

 private:
  int cell_;
};

class AnyReduction : public CZYNCom {
 public:
  explicit AnyReduction(int shift) : shift_(shift) {}
  int AllMin(int& value) override {
    value = value > INT_MIN + 8 ? value - shift_ : value;
    return 0;
  }

 private:
  int shift_;
};

double AnyNumber(FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange(0, 7)) {
    case 0:
      return std::numeric_limits<double>::quiet_NaN();
    case 1:
      return std::numeric_limits<double>::infinity();
    case 2:
      return input.ConsumeFloatingPoint<double>();
    case 3:
      return 0.0;
    default:
      return input.ConsumeFloatingPointInRange<double>(-2.0, 2.0);
  }
}

constexpr int kLongest = 24;  // the largest count, except for a grossly wrong one
// The longest row that the checker may believe: a row of NodeCell with an entry for each node of each face.
constexpr std::size_t kLongestRow = 8192;

/// A record of any content.
class AnyHost {
 public:
  explicit AnyHost(FuzzedDataProvider& input) : input_(input), pool_(kLongestRow + 512) {
    for (std::size_t i = 0; i < 512; ++i) pool_[i] = AnyIndex();
    FillCounts();
    FillReals();
    FillIntegers();
    FillTables();
    FillGlobals();
  }

  void Check() {
    host_check::HostCheckOptions options;
    options.cellRows = input_.ConsumeIntegralInRange(0, 7) != 0;
    options.nodeTables = input_.ConsumeIntegralInRange(0, 7) != 0;
    options.communication = input_.ConsumeBool();
    AnyCommunication communication(input_.ConsumeIntegralInRange(0, 8));
    AnyReduction reduction(input_.ConsumeIntegralInRange(0, 3) / 3);
    host_check::HostCheckReport report;
    CheckHostData(&mesh_, input_.ConsumeIntegralInRange(0, 15) == 0 ? nullptr : &faces_, &communication,
                  &reduction, &globals_, report, options);
  }

 private:
  int AnyIndex() {
    constexpr int kOdd[] = {-1, 101, INT_MAX, INT_MIN};
    int const i = input_.ConsumeIntegralInRange(0, kLongest + 4);
    return i <= kLongest ? i : kOdd[i - kLongest - 1];
  }

  void FillCounts() {
    std::vector<int*> counts = {&mesh_.NInnerCells, &mesh_.NNode, &faces_.count};
    for (FaceGroupMembers const& group : face_groups::kTable)
      if (group.kind != FaceKind::Partition) counts.push_back(&(mesh_.*group.count));
    for (int* count : counts) *count = input_.ConsumeIntegralInRange(0, 6);
    mesh_.NInnerFaces = input_.ConsumeIntegralInRange(0, kLongest);
    mesh_.NNode = input_.ConsumeIntegralInRange(0, kLongest);
    mesh_.NCell = input_.ConsumeIntegralInRange(0, kLongest);
    int const odd = input_.ConsumeIntegralInRange(0, 31);
    constexpr int kOdd[] = {INT_MAX, -1, INT_MIN, 1 << 30};
    if (odd < 8) *counts[static_cast<std::size_t>(odd)] = kOdd[input_.ConsumeIntegralInRange(0, 3)];
    if (odd == 8) mesh_.NCell = kOdd[input_.ConsumeIntegralInRange(0, 3)];
  }

  double* Reals() {
    if (input_.ConsumeIntegralInRange(0, 63) == 0) return nullptr;
    reals_.push_back(std::make_unique<double[]>(kLongest + 1));
    for (int i = 0; i <= kLongest; ++i) reals_.back()[i] = AnyNumber(input_);
    return reals_.back().get();
  }

  int* Integers() {
    if (input_.ConsumeIntegralInRange(0, 63) == 0) return nullptr;
    integers_.push_back(std::make_unique<int[]>(kLongest + 1));
    for (int i = 0; i <= kLongest; ++i) integers_.back()[i] = AnyIndex();
    return integers_.back().get();
  }

  int** Table() {
    if (input_.ConsumeIntegralInRange(0, 63) == 0) return nullptr;
    tables_.push_back(std::make_unique<int*[]>(kLongest + 1));
    for (int i = 0; i <= kLongest; ++i) {
      std::size_t const at = input_.ConsumeIntegralInRange<std::size_t>(0, 511);
      tables_.back()[i] = at == 511 ? nullptr : pool_.data() + at;
    }
    return tables_.back().get();
  }

  void FillReals() {
    CZYN3DFiniteVolumeMesh& m = mesh_;
    for (double** array : {&m.xn, &m.yn, &m.zn, &m.xc, &m.yc, &m.zc, &m.Lamda, &m.Volume}) *array = Reals();
    for (FaceGroupMembers const& group : face_groups::kTable) {
      if (group.kind == FaceKind::Partition) continue;
      for (auto const array : {group.sx, group.sy, group.sz, group.xc, group.yc, group.zc})
        m.*array = Reals();
    }
    for (double*& array : faces_.real) array = Reals();
  }

  void FillIntegers() {
    for (int** array : {&mesh_.FaceType, &mesh_.CellLnodsNumber, &faces_.cv, &faces_.other, &faces_.type})
      *array = Integers();
    for (FaceGroupMembers const& group : face_groups::kTable) {
      if (group.kind == FaceKind::Partition) continue;
      mesh_.*group.cv = Integers();
      mesh_.*group.other = Integers();
    }
  }

  void FillTables() {
    CZYN3DFiniteVolumeMesh& m = mesh_;
    for (int*** table : {&m.CellCell, &m.CellLnods, &m.CellFace, &m.CellFaceType, &m.NodeCell})
      *table = Table();
    for (FaceGroupMembers const& group : face_groups::kTable) m.*group.nodes = Table();
  }

  void FillGlobals() {
    globals_.PrevGradX = Reals();
    globals_.PrevGradY = input_.ConsumeBool() ? Reals() : mesh_.Volume;
    globals_.PrevGradZ = input_.ConsumeBool() ? Reals() : reinterpret_cast<double*>(pool_.data());
    globals_.ResetRealBlock = Reals();
    globals_.ResetIntBlock = Integers();
    name_ = input_.ConsumeRandomLengthString(1100);
    globals_.BaseFileName = name_.data();
  }

  FuzzedDataProvider& input_;
  std::vector<int> pool_;
  std::vector<std::unique_ptr<double[]>> reals_;
  std::vector<std::unique_ptr<int[]>> integers_;
  std::vector<std::unique_ptr<int*[]>> tables_;
  std::string name_;
  CZYN3DFiniteVolumeMesh mesh_;
  AnyFaces faces_;
  CZyn3dGV globals_;
};

/// The first of two partitions of a box. Nothing in it ever changes.
reference_host::HostPartition& SoundPartition() {
  static auto const partition = [] {
    reference_host::BoxSpec box;
    box.nx = box.ny = box.nz = 3;
    reference_host::MeshPart part = MakeBoxPart(box, 0, 2);
    for (auto& patch : part.patches) patch.group = reference_host::GroupByName(patch.name, patch.type);
    auto made = std::make_unique<reference_host::HostPartition>(part);
    made->SetBaseFileName("case.cas");
    return made;
  }();
  return *partition;
}

/// Plants a count that contradicts the others; the arrays have the true lengths. The checker must report the
/// count and must not rely on it.
void CheckContradiction(FuzzedDataProvider& input) {
  reference_host::HostPartition& partition = SoundPartition();
  CZYN3DFiniteVolumeMesh mesh = *partition.mesh();
  int* const counts[] = {&mesh.NWall,     &mesh.NInlet,      &mesh.NOutlet,
                         &mesh.NSymmetry, &mesh.NInnerCells, &mesh.NCell};
  int const which = input.ConsumeIntegralInRange(0, 5);
  int const by = input.ConsumeIntegralInRange(1, INT_MAX);
  int& count = *counts[which];
  if (which == 5) {
    count -= by;
  } else {
    count = count > INT_MAX - by ? INT_MAX : count + by;
  }
  host_check::HostCheckOptions options;
  options.communication = false;
  options.nodeTables = input.ConsumeBool();
  host_check::HostCheckReport report;
  CheckHostData(&mesh, partition.partitionFaces(), nullptr, nullptr, partition.globals(), report, options);
  if (report.Count() == 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  if (input.ConsumeIntegralInRange(0, 7) == 0) {
    CheckContradiction(input);
  } else {
    AnyHost(input).Check();
  }
  return 0;
}

// The radial-basis gradient on meshes of every element type, whole and cut into parts.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "foundation/DQKernel.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"
#include "foundation/FaceGroups.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "tests/property/ObservedOrder.h"
#include "tests/property/meshes/PartitionedGradients.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using partitioned::Field;
using partitioned::HostPartition;
using partitioned::Point;
using reference_host::FaceMesh;
using Partitions = std::vector<std::unique_ptr<HostPartition>>;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

double Smooth(Point const& p) { return std::sin(2 * p[0]) * p[1] + p[2] * p[2]; }
Point SlopeOfSmooth(Point const& p) { return {2 * std::cos(2 * p[0]) * p[1], std::sin(2 * p[0]), 2 * p[2]}; }

/// A new folder for the settings files of one test, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = ::testing::TempDir() + "/radial_basis_XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test: " + name);
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::string const& path() const { return path_; }

 private:
  std::string path_;
};

/// Runs `call` and discards what it writes to standard output.
template <class Call>
void Quietly(Call call) {
  ::testing::internal::CaptureStdout();
  call();
  ::testing::internal::GetCapturedStdout();
}

/// A mesh cut into parts with complete halos, each with a settings file of its own.
class CutMesh {
 public:
  CutMesh(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) : group_(nParts) {
    for (auto const& part : reference_host::SplitMesh(mesh, partOfCell, nParts))
      partitions_.push_back(std::make_unique<HostPartition>(part));
    ForEachPart([](HostPartition& own, auto& exchange, auto&) { own.CompleteHalo(exchange); });
    for (auto& own : partitions_)
      own->SetBaseFileName(folder_.path() + "/part" + std::to_string(own->part()) + ".cas");
  }
  explicit CutMesh(FaceMesh const& mesh)
      : CutMesh(mesh, std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0), 1) {}

  Partitions const& partitions() const { return partitions_; }

  /// call(partition, exchange, reduction) in a thread for each part.
  template <class Call>
  void ForEachPart(Call const& call) {
    reference_host::RunInProcess(group_, [&](int p) {
      reference_host::InProcessCommunication exchange(group_, *partitions_[p]);
      reference_host::InProcessReduction reduction(group_);
      call(*partitions_[p], exchange, reduction);
    });
  }

 private:
  TemporaryFolder folder_;
  Partitions partitions_;
  reference_host::InProcessGroup group_;
};

/// The cell operator on one partition with its weights derived. It only borrows its host objects.
class CellOperator {
 public:
  CellOperator(HostPartition& own, double span, int shapeNormalize) {
    op_.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op_.getPartitionFace(own.partitionFaces());
    Quietly([&] {
      op_.InitialRBFSetting();
      op_.Span = span;
      op_.iShape_Normalize = shapeNormalize;
      op_.DeriveRBFweighting();
    });
  }
  ~CellOperator() {
    op_.m_pGV = nullptr;  // the destructor would destroy it
    op_.m_pPartFace = nullptr;
  }
  CellOperator(CellOperator const&) = delete;
  CellOperator& operator=(CellOperator const&) = delete;

  CZynRBFInternalObject* operator->() { return &op_; }
  CZynRBFInternalObject& operator*() { return op_; }

 private:
  CZynRBFInternalObject op_;
};

/// One cell's system A w = b, assembled anew from the kernel.
struct System {
  int order = 0;
  std::vector<double> A;     // order x order, row-major
  std::vector<double> b[3];  // of d/dx, d/dy, d/dz

  double at(int row, int column) const { return A[static_cast<std::size_t>(row * order + column)]; }
};

// This rounding is part of the method. Volatile, because GCC 12 at -O2 drops such a rounding in loops that it
// vectorises.
double InSinglePrecision(double value) {
  float const volatile rounded = static_cast<float>(value);
  return static_cast<double>(rounded);
}

template <class Kernel>
System Assembled(Kernel const& kernel, std::vector<DQVector> const& points) {
  int const n = static_cast<int>(points.size());
  System system;
  system.order = n + 1;
  system.A.resize(static_cast<std::size_t>(system.order * system.order));
  FillKernelMatrix(kernel, points.data(), n, system.A.data(), n + 1);
  AddConstantTerm(system.A.data(), n);
  for (int k = 0; k < n; ++k) {
    DQVector const g = kernel.Gradient(kernel.Scaled(OffsetBetween(points[k], points[0])));
    int d = 0;
    for (double const component : {g.x, g.y, g.z}) system.b[d++].push_back(InSinglePrecision(component));
  }
  for (auto& column : system.b) column.push_back(0.0);
  return system;
}

System SystemOf(CZynRBFInternalObject const& op, int cell) {
  std::vector<DQVector> points;
  int const* const row = op.m_ppRBFCellConn[cell];
  for (int k = 1; k <= row[0]; ++k) {
    RBFnode const& node = op.m_pRBFnode[row[k]];
    points.push_back({node.x, node.y, node.z});
  }
  if (op.iShape_Normalize != 1) return Assembled(PlainDQKernel(op.Span, op.m_pSupportLength[cell]), points);
  RBFnode const& extent = op.m_pStencilExtent[cell];
  return Assembled(ShapeNormalisedDQKernel(op.Span, {extent.x, extent.y, extent.z}), points);
}

/// The stored solution for one direction, the multiplier last.
std::vector<double> Solution(CZynRBFInternalObject const& op, int cell, int direction) {
  std::vector<double> w;
  for (int k = 1; k <= op.m_ppRBFCellConn[cell][0] + 1; ++k) {
    RBFnode const& r = op.m_ppRBFCellCoef[cell][k];
    w.push_back(direction == 0 ? r.x : direction == 1 ? r.y : r.z);
  }
  return w;
}

double MaxNorm(std::vector<double> const& v) {
  double largest = 0;
  for (double const x : v) largest = std::isnan(x) ? x : std::max(largest, std::abs(x));
  return largest;
}

double RowSumNorm(System const& s) {
  double largest = 0;
  for (int i = 0; i < s.order; ++i) {
    double sum = 0;
    for (int j = 0; j < s.order; ++j) sum += std::abs(s.at(i, j));
    largest = std::max(largest, sum);
  }
  return largest;
}

// |A w - b| / (|A| |w| + |b|) in the maximum norm, sums in extended precision.
double BackwardError(System const& s, int direction, std::vector<double> const& w) {
  double largest = 0;
  for (int i = 0; i < s.order; ++i) {
    long double r = -s.b[direction][i];
    for (int j = 0; j < s.order; ++j) r += static_cast<long double>(s.at(i, j)) * w[j];
    largest = std::max(largest, static_cast<double>(std::abs(r)));
  }
  return largest / (RowSumNorm(s) * MaxNorm(w) + MaxNorm(s.b[direction]));
}

// |A| |A^-1| in the maximum norm, by Gauss-Jordan elimination in extended precision.
double ConditionNumber(System const& s) {
  int const n = s.order, width = 2 * n;
  std::vector<long double> t(static_cast<std::size_t>(n * width), 0.0L);
  auto const at = [&](int i, int j) -> long double& { return t[static_cast<std::size_t>(i * width + j)]; };
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) at(i, j) = s.at(i, j);
    at(i, n + i) = 1.0L;
  }
  for (int c = 0; c < n; ++c) {
    int pivot = c;
    for (int i = c + 1; i < n; ++i)
      if (std::abs(at(i, c)) > std::abs(at(pivot, c))) pivot = i;
    for (int j = 0; j < width; ++j) std::swap(at(c, j), at(pivot, j));
    long double const p = at(c, c);
    for (int j = 0; j < width; ++j) at(c, j) /= p;
    for (int i = 0; i < n; ++i) {
      long double const factor = i == c ? 0.0L : at(i, c);
      for (int j = 0; j < width; ++j) at(i, j) -= factor * at(c, j);
    }
  }
  long double inverseNorm = 0;
  for (int i = 0; i < n; ++i) {
    long double sum = 0;
    for (int j = n; j < width; ++j) sum += std::abs(at(i, j));
    inverseNorm = std::max(inverseNorm, sum);
  }
  return RowSumNorm(s) * static_cast<double>(inverseNorm);
}

/// Runs check(operator, partition) for every kind of mesh, both forms of the kernel and a wide and a narrow
/// support.
template <class Check>
void ForAllOperators(Check const& check) {
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    CutMesh cut(mesh, test_meshes::RandomParts(mesh.nCells, 2), 2);
    for (double const span : {500.0, 5.0}) {
      for (int const shapeNormalize : {0, 1}) {
        for (auto const& own : cut.partitions()) {
          SCOPED_TRACE(std::string(name) + ", Span " + std::to_string(span) + ", form " +
                       std::to_string(shapeNormalize) + ", part " + std::to_string(own->part()));
          CellOperator op(*own, span, shapeNormalize);
          check(*op, *own);
        }
      }
    }
  }
}

TEST(RadialBasisOnMeshes, StoredWeightsSolveEveryCellsSystem) {
  double worst = 0;
  ForAllOperators([&](CZynRBFInternalObject& op, HostPartition& own) {
    for (int cell = 1; cell <= own.mesh()->NInnerCells; ++cell) {
      System const system = SystemOf(op, cell);
      for (int d = 0; d < 3; ++d) {
        double const error = BackwardError(system, d, Solution(op, cell, d));
        ASSERT_LT(error, 1e-12) << "cell " << cell << ", direction " << d;
        worst = std::max(worst, error);
      }
    }
  });
  ::testing::Test::RecordProperty("worst_backward_error_in_eps", std::to_string(worst / kEpsilon));
}

using Gradients = std::vector<Point>;  // [0..NCell]

Gradients GradientOf(CZynRBFInternalObject& op, std::vector<double> phi) {
  std::vector<double> g[3];
  for (auto& component : g) component.assign(phi.size(), 1.0);
  op.MultiplyRBFCoefficent(phi.data(), g[0].data(), g[1].data(), g[2].data());
  Gradients gradients(phi.size());
  for (std::size_t c = 1; c < phi.size(); ++c) gradients[c] = {g[0][c], g[1][c], g[2][c]};
  return gradients;
}

double SumOfMagnitudes(std::vector<double> const& v) {
  double sum = 0;
  for (double const x : v) sum += std::abs(x);
  return sum;
}

// The weights sum to zero up to the round-off of the solution and of the dot product: a few units in the last
// place of the sum of their magnitudes. The largest value observed is below 2.
TEST(RadialBasisOnMeshes, ConstantFieldHasNoSlopeBeyondRoundOffOfTheWeights) {
  constexpr double kConstant = 3.25, kUnits = 8;
  double worst = 0;
  ForAllOperators([&](CZynRBFInternalObject& op, HostPartition& own) {
    std::size_t const size = static_cast<std::size_t>(own.mesh()->NCell) + 1;
    Gradients const g = GradientOf(op, std::vector<double>(size, kConstant));
    for (int cell = 1; cell <= own.mesh()->NInnerCells; ++cell) {
      for (int d = 0; d < 3; ++d) {
        double const unit = kEpsilon * kConstant * SumOfMagnitudes(Solution(op, cell, d));
        ASSERT_LE(std::abs(g[cell][d]), kUnits * unit) << "cell " << cell << ", direction " << d;
        worst = std::max(worst, std::abs(g[cell][d]) / unit);
      }
    }
  });
  ::testing::Test::RecordProperty("worst_in_units", std::to_string(worst));
}

/// Largest distance to the exact slope of the smooth field, in cells at symmetry faces and in all others.
struct SlopeErrors {
  double besideSymmetry = 0, elsewhere = 0;
};

SlopeErrors ErrorsOnHexahedra(int n) {
  CutMesh const whole(test_meshes::HexBox(n, n, n));
  HostPartition& own = *whole.partitions()[0];
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  CellOperator op(own, 500.0, 0);
  Gradients const g = GradientOf(*op, partitioned::Filled(mesh, Smooth));
  std::vector<bool> atSymmetry(g.size(), false);
  FaceGroup const symmetry = FacesOf(FaceKind::Symmetry, mesh);
  for (int f = 1; f <= symmetry.count; ++f) atSymmetry[symmetry.cv[f]] = true;
  SlopeErrors errors;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    Point const exact = SlopeOfSmooth({mesh.xc[c], mesh.yc[c], mesh.zc[c]});
    double& error = atSymmetry[c] ? errors.besideSymmetry : errors.elsewhere;
    for (int d = 0; d < 3; ++d) error = std::max(error, std::abs(g[c][d] - exact[d]));
  }
  return errors;
}

/// L2 errors of the smooth field's slope, in cells without boundary faces and in cells at boundary faces
/// other than symmetry faces.
struct SlopeOrders {
  ObservedOrder inside, atBoundary;
};

void AddErrors(FaceMesh const& boxes, int n, SlopeOrders& orders) {
  CutMesh const whole(boxes);
  HostPartition& own = *whole.partitions()[0];
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  CellOperator op(own, 500.0, 0);
  Gradients const g = GradientOf(*op, partitioned::Filled(mesh, Smooth));
  enum { kInside, kAtBoundary, kAtSymmetry };
  std::vector<int> kind(g.size(), kInside);
  for (FaceKind const group : {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Wall, FaceKind::Symmetry}) {
    FaceGroup const faces = FacesOf(group, mesh);
    for (int f = 1; f <= faces.count; ++f)
      kind[faces.cv[f]] = group == FaceKind::Symmetry ? kAtSymmetry : kAtBoundary;
  }
  double sum[3] = {}, count[3] = {};
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    Point const exact = SlopeOfSmooth({mesh.xc[c], mesh.yc[c], mesh.zc[c]});
    for (int d = 0; d < 3; ++d) sum[kind[c]] += (g[c][d] - exact[d]) * (g[c][d] - exact[d]);
    ++count[kind[c]];
  }
  orders.inside.Add(1.0 / n, std::sqrt(sum[kInside] / count[kInside]));
  orders.atBoundary.Add(1.0 / n, std::sqrt(sum[kAtBoundary] / count[kAtBoundary]));
}

// The slack allows for the right-hand sides in single precision, whose errors do not decrease with the cell
// size, and for coarse meshes, where many cells are at edges.
TEST(RadialBasisOnMeshes, OrderIsSecondOnHexahedraAndFirstOnTetrahedraAndPrisms) {
  SlopeOrders hexahedra, tetrahedra, prisms;
  for (int const n : {4, 8, 16}) {
    AddErrors(test_meshes::HexBox(n, n, n), n, hexahedra);
    AddErrors(test_meshes::TetBox(n), n, tetrahedra);
    AddErrors(test_meshes::PrismBox(n), n, prisms);
  }
  ExpectOrder(hexahedra.inside, 2, 0.25, "inside hexahedra");
  ExpectOrder(hexahedra.atBoundary, 2, 0.25, "hexahedra at the boundary");
  ExpectOrder(tetrahedra.inside, 1, 0.25, "tetrahedra");
  ExpectOrder(prisms.inside, 1, 0.25, "prisms");
}

// Second order, like central differences: 1.6e-2 and 4.5e-3 observed for slopes up to 2.
TEST(RadialBasisOnMeshes, SmoothFieldOnHexahedraIsNearTheExactSlopeAwayFromSymmetryFaces) {
  SlopeErrors const coarse = ErrorsOnHexahedra(8), fine = ErrorsOnHexahedra(16);
  EXPECT_LT(coarse.elsewhere, 2e-2);
  EXPECT_LT(fine.elsewhere, 6e-3);
  EXPECT_LT(fine.elsewhere, coarse.elsewhere / 3);
}

// Their side cells are at the origin. If that changes, this test fails, and the documentation has to change,
// too.
TEST(RadialBasisOnMeshes, CellsBesideSymmetryFacesAreFartherOff) {
  SlopeErrors const errors = ErrorsOnHexahedra(16);
  EXPECT_GT(errors.besideSymmetry, 10 * errors.elsewhere);
}

// The host lists a cell's neighbours in the same order in every part, and halo cells have their owners'
// centres. So the system of a cell is the same in any part, even at a cut.
TEST(RadialBasisOnMeshes, EveryCellHasTheBitsOfTheWholeMeshInAnyPart) {
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    CutMesh const whole(mesh), cut(mesh, test_meshes::RandomParts(mesh.nCells, 3), 3);
    HostPartition& all = *whole.partitions()[0];
    CellOperator wholeOperator(all, 500.0, 0);
    Gradients const expected = GradientOf(*wholeOperator, partitioned::Filled(*all.mesh(), Smooth));
    std::vector<int> cellOf(all.globalCell().size());
    for (int c = 1; c <= all.mesh()->NInnerCells; ++c) cellOf[all.globalCell()[c]] = c;
    for (auto const& part : cut.partitions()) {
      SCOPED_TRACE(std::string(name) + ", part " + std::to_string(part->part()));
      CellOperator partOperator(*part, 500.0, 0);
      Gradients const g = GradientOf(*partOperator, partitioned::Filled(*part->mesh(), Smooth));
      for (int c = 1; c <= part->mesh()->NInnerCells; ++c)
        ASSERT_EQ(expected[cellOf[part->globalCell()[c]]], g[c]) << "cell " << c;
    }
  }
}

void ReverseNeighbours(CZYN3DFiniteVolumeMesh& mesh) {
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    std::reverse(mesh.CellCell[c] + 1, mesh.CellCell[c] + 1 + mesh.CellCell[c][0]);
}

// A solver may list the neighbours in another order after it has cut its mesh. The weights then differ like
// the solutions of two equally conditioned systems: by round-off times the condition number.
TEST(RadialBasisOnMeshes, AnotherOrderOfNeighboursChangesTheGradientByRoundOffTimesTheCondition) {
  double worst = 0, worstShare = 0;
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    SCOPED_TRACE(name);
    CutMesh const whole(mesh);
    HostPartition& own = *whole.partitions()[0];
    std::vector<double> const phi = partitioned::Filled(*own.mesh(), Smooth);  // below 2
    CellOperator once(own, 500.0, 0);
    Gradients const before = GradientOf(*once, phi);
    ReverseNeighbours(*own.mesh());
    CellOperator reversed(own, 500.0, 0);
    Gradients const after = GradientOf(*reversed, phi);
    for (int c = 1; c <= own.mesh()->NInnerCells; ++c) {
      double const condition = ConditionNumber(SystemOf(*once, c));
      for (int d = 0; d < 3; ++d) {
        double const bound = kEpsilon * condition * 2 * SumOfMagnitudes(Solution(*once, c, d));
        double const difference = std::abs(after[c][d] - before[c][d]);
        ASSERT_LE(difference, bound) << "cell " << c << ", direction " << d;
        worst = std::max(worst, difference);
        worstShare = std::max(worstShare, difference / bound);
      }
    }
  }
  EXPECT_GT(worst, 0.0) << "the order makes no difference, so nothing was tested";
  ::testing::Test::RecordProperty("worst_difference_in_eps", std::to_string(worst / kEpsilon));
  ::testing::Test::RecordProperty("worst_share_of_bound", std::to_string(worstShare));
}

// Checks a partition's gradient in the ghost and halo cells, through the operator that a solver calls.
void CheckBesideTheInterior(HostPartition& own, COperatorGradient& op, std::vector<std::string>& failures) {
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  std::vector<double> g[3];
  partitioned::CallGradient(op, {"radial basis", 2, 1, false}, mesh, Smooth, g);
  std::vector<int> copiedFrom(g[0].size(), 0);
  for (FaceKind const kind : {FaceKind::Wall, FaceKind::Inlet}) {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) copiedFrom[faces.other[f]] = faces.cv[f];
  }
  for (auto const& component : g)
    for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c)
      if (component[c] != (copiedFrom[c] > 0 ? component[copiedFrom[c]] : 0.0))
        failures.push_back("part " + std::to_string(own.part()) + ", cell " + std::to_string(c));
}

TEST(RadialBasisOnMeshes, NoExchangeFollowsAndHaloCellsAreZero) {
  constexpr int kParts = 3;
  for (auto const& [name, mesh] : test_meshes::AllMeshes()) {
    SCOPED_TRACE(name);
    CutMesh cut(mesh, test_meshes::RandomParts(mesh.nCells, kParts), kParts);
    std::vector<std::vector<std::string>> failures(kParts);
    Quietly([&] {
      cut.ForEachPart([&](HostPartition& own, auto& exchange, auto& reduction) {
        COperatorGradient op;
        op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
        op.getPartitionFace(own.partitionFaces());
        op.getCommunication(&exchange, &reduction);
        int type = 2;
        op.getGradType(type);
        if (op.Initialize() != 1) failures[own.part()].push_back("Initialize");
        CheckBesideTheInterior(own, op, failures[own.part()]);
      });
    });
    for (auto const& part : failures) EXPECT_EQ(std::vector<std::string>(), part);
    for (auto const& own : cut.partitions()) EXPECT_GT(own->nHaloCells(), 0);
  }
}

}  // namespace

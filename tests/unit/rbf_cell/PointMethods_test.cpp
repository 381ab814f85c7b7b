#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/CDenseSolver.h"
#include "foundation/DQKernel.h"
#include "host/ZYNOptKer.h"
#include "tests/support/exact/ExactPower.h"
#include "tests/support/host/GuardedArray.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/SettingsFolder.h"
#include "tests/support/watch/Undestroyed.h"

// The cell operator's own six methods for free points, which do not add up to a working path: what each does and
// what it leaves alone.

namespace zyn_test::point_methods_test {
namespace {

using Array = GuardedArray<double>;
using List = std::vector<int>;

std::string const kDefaults = "Default DQ parameter is adopted.\n";

/// An operator whose global variables have the two blocks that are to be cleared.
struct PointBed : CellBed {
  explicit PointBed(TestMesh const& mesh) : CellBed(mesh), realBlock(4, 7.5), intBlock(4, 75) {
    object->m_pGV->ResetRealBlock = realBlock.Data();
    object->m_pGV->ResetIntBlock = intBlock.Data();
  }
  PointBed(TestMesh const& mesh, std::string const& settings) : PointBed(mesh) { folder.Write(settings); }

  /// The first method, without the arrays that it does not use. @return what was printed
  std::string Initialize(int nPoint) {
    return Printed([this, nPoint] {
      EXPECT_EQ(0,
                object->Initialize_IBInterpolateData(nullptr, nPoint, nullptr, nullptr, nullptr, 1, -1.0, 0));
    });
  }

  List Stencil(int i) const {
    int const* const row = object->m_ppIBConn[i];
    return List(row + 1, row + 1 + row[0]);
  }

  Array realBlock;
  GuardedArray<int> intBlock;
};

/// Interior cells along the diagonal at (0, 0, 0), (1, 1, 1), ..., each joined to the next.
TestMesh Diagonal(int n) {
  TestMesh mesh;
  for (int c = 0; c < n; ++c) mesh.AddInteriorCell({1.0 * c, 1.0 * c, 1.0 * c});
  for (int c = 1; c < n; ++c) mesh.JoinInterior(c, c + 1);
  return mesh;
}

TestMesh SomeMesh() {
  LatticeOptions options;
  options.cells = Cells::HexaPyramids;
  return LatticeMesh(options);
}

List Ascending(List list) {
  std::sort(list.begin(), list.end());
  return list;
}

/// A tree that holds all cells of a mesh at their centres; identity b stands for cell NCell + 1 - b.
struct FilledTree {
  explicit FilledTree(TestMesh const& mesh) : cellOfBlock(static_cast<std::size_t>(mesh.NCell()) + 1, 0) {
    tree.SetADTreeRange(9, 9, 9, 0, 0, 0, 1, 10000, 200000);
    for (int b = 1; b <= mesh.NCell(); ++b) {
      int const c = mesh.NCell() + 1 - b;
      Point const& p = mesh.Centre(c);
      cellOfBlock[static_cast<std::size_t>(b)] = c;
      tree.AddSurfaceToADTree(b, p.x + 1e-6, p.y + 1e-6, p.z + 1e-6, p.x - 1e-6, p.y - 1e-6, p.z - 1e-6);
    }
  }

  CZYNOptKer tree;
  List cellOfBlock;
};

/// Everything up to the stencils, for points at the given x.
struct Searched : PointBed {
  Searched(TestMesh const& mesh, std::vector<double> const& xs, int method, double distance, int number)
      : PointBed(mesh), filled(mesh), x(static_cast<int>(xs.size())), support(x.Size(), -7.5) {
    for (int i = 1; i <= x.Size(); ++i) x[i] = xs[static_cast<std::size_t>(i - 1)];
    Initialize(x.Size());
    EXPECT_EQ(0, object->SearchIBADTress(x.Data(), nullptr, nullptr, method, distance, number,
                                         filled.cellOfBlock.data(), filled.tree, support.Data()));
  }

  FilledTree filled;
  Array x, support;
};

// ------------------------------------------------------------------------------------------------ the set-up

TEST(CellPointSetUp, PrintsTwoLinesPerCellBehindTheCollation) {
  PointBed bed(Diagonal(3));
  EXPECT_EQ(kDefaults +
                "IB Memory Allocation ok\nSetNodeCollation ok\n"
                "*pGV->NCell = 3\nicell = 1\n*pGV->NCell = 3\nicell = 2\n*pGV->NCell = 3\nicell = 3\n",
            bed.Initialize(5));
}

TEST(CellPointSetUp, PrintsTwiceAsManyLinesAsThereAreCellsOfAnyKind) {
  TestMesh const mesh = SomeMesh();
  PointBed bed(mesh, DefaultSettings());
  std::string const printed = bed.Initialize(5);
  std::string const before = "IB Memory Allocation ok\nSetNodeCollation ok\n";
  ASSERT_EQ(0U, printed.find(before));
  EXPECT_EQ(2 * mesh.NCell(),
            std::count(printed.begin() + static_cast<std::ptrdiff_t>(before.size()), printed.end(), '\n'));
}

TEST(CellPointSetUp, FlushesItsLines) {
  PointBed bed(Diagonal(1));
  std::string arrived;
  {
    FlushedOutput const output;
    bed.object->Initialize_IBInterpolateData(nullptr, 1, nullptr, nullptr, nullptr, 1, 0.0, 0);
    arrived = output.Arrived();
  }
  EXPECT_EQ(kDefaults + "IB Memory Allocation ok\nSetNodeCollation ok\n*pGV->NCell = 1\nicell = 1\n",
            arrived);
}

TEST(CellPointSetUp, ReadsTheOperatorsOwnSettingsFile) {
  PointBed bed(Diagonal(3), Settings("37.5", "1"));
  EXPECT_EQ(0U, bed.Initialize(2).find("iShape_Normalize = On\nIB Memory Allocation ok\n"));
  EXPECT_EQ(37.5, bed.object->Span);
  EXPECT_EQ(1, bed.object->iShape_Normalize);
  EXPECT_EQ(bed.folder.SettingsFileName(), bed.object->m_szRBFFileName);
  PointBed foreign(Diagonal(3), "1002\nSpan = 1\nm = 2\nd = 3\nn = 4\n");
  foreign.Initialize(2);
  EXPECT_EQ(DefaultSettings(), foreign.folder.Read());
}

// A folder stands where the settings file should be: it can be neither written nor read.
TEST(CellPointSetUp, KeepsTheDefaultsWhereThereCanBeNoSettingsFile) {
  Searched bed(SomeMesh(), {0.5, 1.5, 2.5}, 1, 0.75, 0);
  PointBed unread(SomeMesh());
  std::filesystem::create_directory(unread.folder.SettingsFileName());
  unread.Initialize(3);
  EXPECT_EQ(500.0, unread.object->Span);
  EXPECT_EQ(0, unread.object->iShape_Normalize);
  unread.object->SearchIBADTress(bed.x.Data(), nullptr, nullptr, 1, 0.75, 0, bed.filled.cellOfBlock.data(),
                                 bed.filled.tree, bed.support.Data());
  for (CZynRBFInternalObject* const object : {bed.object, unread.object})
    object->DeriveIBCoefficentBysolveDQfullMatrix(1, bed.x.Data(), bed.x.Data(), bed.x.Data(),
                                                  bed.support.Data());
  ASSERT_LT(0, unread.object->m_ppIBConn[1][0]);
  for (int k = 1; k <= unread.object->m_ppIBConn[1][0]; ++k) {
    EXPECT_TRUE(std::isfinite(unread.object->m_ppIBValueCoef[1][k])) << k;
    EXPECT_EQ(bed.object->m_ppIBValueCoef[1][k], unread.object->m_ppIBValueCoef[1][k]) << k;
  }
}

TEST(CellPointSetUp, MakesTablesWithoutRows) {
  PointBed bed(Diagonal(3));
  bed.Initialize(5);
  EXPECT_EQ(5, bed.object->m_iNIBNode);
  for (int i = 0; i <= 5; ++i) {
    EXPECT_EQ(nullptr, bed.object->m_ppIBConn[i]);
    EXPECT_EQ(nullptr, bed.object->m_ppIBCoef[i]);
    EXPECT_EQ(nullptr, bed.object->m_ppIBValueCoef[i]);
  }
}

TEST(CellPointSetUp, SearchesNothingEvenForGivenPoints) {
  TestMesh const mesh = Diagonal(3);
  PointBed bed(mesh);
  Array marks(3, -1.0), x(2, 1.0), y(2, 1.0), z(2, 1.0);
  Printed([&] {
    bed.object->Initialize_IBInterpolateData(marks.Data(), 2, x.Data(), y.Data(), z.Data(), 2, 5.0, 2);
  });
  EXPECT_EQ(nullptr, bed.object->m_ppIBConn[1]);
  EXPECT_EQ(nullptr, bed.object->m_ppIBConn[2]);
}

TEST(CellPointSetUp, ClearsTheTwoResetBlocksAndNothingAround) {
  PointBed bed(Diagonal(3));
  bed.Initialize(1);
  for (int k = 1; k <= 4; ++k) {
    EXPECT_EQ(0.0, bed.realBlock[k]);
    EXPECT_EQ(0, bed.intBlock[k]);
  }
  EXPECT_TRUE(bed.realBlock.GuardsIntact());
  EXPECT_TRUE(bed.intBlock.GuardsIntact());
}

TEST(CellPointSetUp, LeavesTheMeshAndCallsNoExchange) {
  PointBed bed(SomeMesh());
  bed.Initialize(3);
  EXPECT_TRUE(bed.host.InputsUntouched());
  EXPECT_TRUE(bed.host.exchanges.empty());
}

TEST(CellPointSetUp, LeavesAllMemoryToTheDestructor) {
  SettingsFolder const folder;
  folder.Write(DefaultSettings());
  CellHost host(SomeMesh(), folder.BaseFileName());
  host.destroyed.reserve(100);
  double reals[5];
  int ints[5];
  FilledTree filled(SomeMesh());
  Array x(4, 0.5), support(4);
  auto const live = [&] {
    long const before = LiveAllocations();
    CZynRBFInternalObject* const object = CellBed::NewConnected(host);
    object->m_pGV->ResetRealBlock = reals;
    object->m_pGV->ResetIntBlock = ints;
    Printed(
        [object] { object->Initialize_IBInterpolateData(nullptr, 4, nullptr, nullptr, nullptr, 1, 0.0, 0); });
    for (double const distance : {1.0, 2.0})  // the second search replaces the rows of the first
      object->SearchIBADTress(x.Data(), nullptr, nullptr, 1, distance, 0, filled.cellOfBlock.data(),
                              filled.tree, support.Data());
    delete object;
    host.destroyed.clear();
    return LiveAllocations() - before;
  };
  live();  // what the C++ library keeps for good from the first use of a stream
  EXPECT_EQ(0, live());
}

// ---------------------------------------------------------------------------------------------- the collation

TEST(CellPointCollation, PlacesAllCellsLikeTheCollationForGradients) {
  for (Cells const cells : kAllCells) {
    LatticeOptions options;
    options.cells = cells;
    TestMesh const mesh = LatticeMesh(options);
    PointBed bed(mesh);
    bed.Initialize(1);
    PlainCellOperator plain(mesh, 500.0, 0);
    plain.Collate();
    for (int c = 1; c <= mesh.NCell(); ++c) {
      CollatedPoint const& p = plain.points[static_cast<std::size_t>(c)];
      EXPECT_TRUE(SameRecord("point", {p.point.x, p.point.y, p.point.z}, p.id, bed.object->m_pRBFnode[c]))
          << c;
      EXPECT_EQ(p.kind, bed.object->m_piNodeKind[c]) << c;
    }
    EXPECT_TRUE(SameValue("mean distance", plain.meanDistance, bed.object->m_dMeanCellDistance));
    double const expected[] = {plain.boundMax.x, plain.boundMax.y, plain.boundMax.z,
                               plain.boundMin.x, plain.boundMin.y, plain.boundMin.z};
    for (int a = 0; a < 3; ++a) {
      EXPECT_EQ(expected[a], bed.object->m_dBoundMax[a]);
      EXPECT_EQ(expected[a + 3], bed.object->m_dBoundMin[a]);
    }
  }
}

TEST(CellPointCollation, LeavesSymmetrySideCellsAtTheOrigin) {
  TestMesh mesh = Diagonal(2);
  int const ghost = mesh.AddSide(kSymmetry, 1, {5, 5, 5}, {6, 6, 6});
  PointBed bed(mesh);
  bed.Initialize(1);
  EXPECT_TRUE(SameRecord("point", {0, 0, 0}, 0, bed.object->m_pRBFnode[ghost]));
  EXPECT_EQ(0, bed.object->m_piNodeKind[ghost]);
}

TEST(CellPointCollation, LeavesOutletCentresOutOfTheBounds) {
  TestMesh mesh = Diagonal(2);
  mesh.AddSide(kOutlet, 1, {50, 50, 50}, {60, 60, 60});
  mesh.AddSide(kInlet, 1, {-5, -6, -7}, {-9, -9, -9});
  PointBed bed(mesh);
  bed.Initialize(1);
  EXPECT_EQ(1.0, bed.object->m_dBoundMax[0]);
  EXPECT_EQ(-5.0, bed.object->m_dBoundMin[0]);
  EXPECT_EQ(-7.0, bed.object->m_dBoundMin[2]);
}

TEST(CellPointCollation, AsASingleStepAnswers1AndPrintsNothing) {
  PointBed bed(Diagonal(2));
  bed.Initialize(1);
  bed.object->m_pRBFnode[1].x = 77.0;
  bed.realBlock[2] = 5.0;
  EXPECT_EQ("", Printed([&] { EXPECT_EQ(1, bed.object->SetIBNodeCollation()); }));
  EXPECT_EQ(0.0, bed.object->m_pRBFnode[1].x);
  EXPECT_EQ(0.0, bed.realBlock[2]);
}

/// Takes over tables that a set-up leaves behind, so that this test gives them back.
void Release(RBFnode* points, int* kinds) {
  CZynRBFInternalObject holder;
  holder.m_pRBFnode = points;
  holder.m_piNodeKind = kinds;
}

TEST(CellPointCollation, MakesPointsAndKindsAnewAndLeavesThoseOfTheGradient) {
  PointBed bed(Diagonal(3));
  bed.SetUp();
  RBFnode* const points = bed.object->m_pRBFnode;
  int* const kinds = bed.object->m_piNodeKind;
  int** const stencils = bed.object->m_ppRBFCellConn;
  bed.Initialize(1);
  EXPECT_NE(points, bed.object->m_pRBFnode);
  EXPECT_NE(kinds, bed.object->m_piNodeKind);
  EXPECT_EQ(stencils, bed.object->m_ppRBFCellConn);
  EXPECT_EQ(2.0, points[3].x);
  EXPECT_EQ(1, kinds[3]);
  Release(points, kinds);
}

/// Takes over the tables of points that a set-up leaves behind.
void Release(int** conn, RBFnode** coef, double** valueCoef, int nPoint) {
  CZynRBFInternalObject holder;
  holder.m_ppIBConn = conn;
  holder.m_ppIBCoef = coef;
  holder.m_ppIBValueCoef = valueCoef;
  holder.m_iNIBNode = nPoint;
}

// A copy reads the tables that it shares with its source, whatever the source is told to do afterwards.
TEST(CellPointSetUp, ASecondOneLeavesTheTablesToACopyMadeInBetween) {
  Searched bed(SomeMesh(), {0.5, 1.5, 2.5}, 1, 0.75, 0);
  Array y(3, 0.25), z(3, 0.75);
  for (int i = 1; i <= 3; ++i)
    bed.object->DeriveIBCoefficentBysolveDQfullMatrix(i, bed.x.Data(), y.Data(), z.Data(),
                                                      bed.support.Data());
  Undestroyed<CZynRBFInternalObject> copy(*bed.object);
  std::vector<List> stencils;
  std::vector<double> weights;
  for (int i = 1; i <= 3; ++i) {
    stencils.push_back(bed.Stencil(i));
    ASSERT_FALSE(stencils.back().empty());
    weights.push_back(bed.object->m_ppIBValueCoef[i][1] + bed.object->m_ppIBCoef[i][1].x);
  }
  RBFnode* const points = bed.object->m_pRBFnode;
  int* const kinds = bed.object->m_piNodeKind;

  bed.Initialize(5);
  EXPECT_EQ(5, bed.object->m_iNIBNode);
  EXPECT_EQ(nullptr, bed.object->m_ppIBConn[1]);
  ASSERT_EQ(3, copy->m_iNIBNode);
  for (int i = 1; i <= 3; ++i) {
    int const* const row = copy->m_ppIBConn[i];
    EXPECT_EQ(stencils[static_cast<std::size_t>(i - 1)], List(row + 1, row + 1 + row[0])) << i;
    EXPECT_EQ(weights[static_cast<std::size_t>(i - 1)],
              copy->m_ppIBValueCoef[i][1] + copy->m_ppIBCoef[i][1].x)
        << i;
  }
  Release(points, kinds);
  Release(copy->m_ppIBConn, copy->m_ppIBCoef, copy->m_ppIBValueCoef, 3);
}

// ----------------------------------------------------------------------------------------------- the tree step

TEST(CellPointTree, OnlyPrintsForEveryCellAndLeavesTheTreeToItsOwner) {
  TestMesh const mesh = Diagonal(2);
  PointBed bed(mesh);
  FilledTree filled(mesh);
  int blockOfCell[] = {7, 7, 7};
  Array marks(2, -1.0);
  EXPECT_EQ("*pGV->NCell = 2\nicell = 1\n*pGV->NCell = 2\nicell = 2\n", Printed([&] {
              EXPECT_EQ(0, bed.object->SetIBADTress(marks.Data(), {0, 1, 2}, filled.tree, blockOfCell));
            }));
  for (int const b : blockOfCell) EXPECT_EQ(7, b);
  int count = 0;
  filled.tree.SearchNearBlockID(-9, -9, -9, 9, 9, 9, count, 0);
  EXPECT_EQ(2, count) << "nothing was added and nothing lost";
}

TEST(CellPointTree, ReadsNeitherMarksNorMap) {
  PointBed bed(Diagonal(1));
  EXPECT_EQ("*pGV->NCell = 1\nicell = 1\n",
            Printed([&] { bed.object->SetIBADTress(nullptr, {}, CZYNOptKer(), nullptr); }));
}

// -------------------------------------------------------------------------------------------------- the search

TEST(CellPointSearch, OfMethod1TakesTheCubeOfTheGivenHalfWidthAroundX) {
  Searched const s(Diagonal(7), {3.0, 0.25}, 1, 1.5, 1000);
  EXPECT_EQ((List{3, 4, 5}), Ascending(s.Stencil(1)));
  EXPECT_EQ((List{1, 2}), Ascending(s.Stencil(2)));
  EXPECT_EQ(1.5, s.support[1]);
  EXPECT_EQ(1.5, s.support[2]);
  EXPECT_TRUE(s.support.GuardsIntact());
}

TEST(CellPointSearch, OfMethod1IsEmptyWhereTheCubeHoldsNothing) {
  Searched const s(Diagonal(7), {30.0, 3.0}, 1, 0.25, 0);
  EXPECT_EQ(List(), s.Stencil(1));
  EXPECT_EQ((List{4}), s.Stencil(2));
  EXPECT_EQ(0.25, s.support[1]);
}

TEST(CellPointSearch, OfMethod2GrowsByTheMeanDistanceUntilItHoldsEnough) {
  Searched const s(Diagonal(12), {3.1}, 2, 1000.0, 4);
  EXPECT_DOUBLE_EQ(std::sqrt(3.0), s.object->m_dMeanCellDistance);
  EXPECT_EQ((List{1, 2, 3, 4, 5, 6, 7}), Ascending(s.Stencil(1)))
      << "all of the cube, unsorted, not only four";
  EXPECT_EQ(2.0 * s.object->m_dMeanCellDistance, s.support[1]);
}

TEST(CellPointSearch, OfMethod2WithANumberBeyondAllCellsEnds) {
  Searched const s(Diagonal(7), {3.1, 500.0}, 2, 0.0, 1000);
  EXPECT_EQ((List{1, 2, 3, 4, 5, 6, 7}), Ascending(s.Stencil(1)));
  EXPECT_EQ((List{1, 2, 3, 4, 5, 6, 7}), Ascending(s.Stencil(2)));
}

TEST(CellPointSearch, OfMethod2WithANumberOfZeroTakesTheFirstCube) {
  Searched const s(Diagonal(7), {3.1, 500.0}, 2, 0.0, 0);
  EXPECT_EQ((List{3, 4, 5}), Ascending(s.Stencil(1)));
  EXPECT_EQ(List(), s.Stencil(2));
}

TEST(CellPointSearch, OfAnyOtherMethodIsEmpty) {
  for (int const method : {0, 3, -1}) {
    Searched const s(Diagonal(7), {3.1, 2.0}, method, 5.0, 2);
    for (int const i : {1, 2}) {
      EXPECT_EQ(List(), s.Stencil(i));
      EXPECT_EQ(0.0, s.support[i]);
    }
  }
}

// Cells off the diagonal are not found by what y and z would say.
TEST(CellPointSearch, OfPointsWithTheSameXIsTheSameWhateverTheirYAndZ) {
  TestMesh const mesh = SomeMesh();
  PointBed bed(mesh);
  FilledTree filled(mesh);
  bed.Initialize(2);
  Array x(2, 1.1), y(2), z(2), support(2);
  y[1] = 0.3, y[2] = 2.9, z[1] = 1.8, z[2] = 0.1;
  for (int const method : {1, 2}) {
    PointBed other(mesh);
    other.Initialize(2);
    other.object->SearchIBADTress(x.Data(), y.Data(), z.Data(), method, 0.8, 5, filled.cellOfBlock.data(),
                                  filled.tree, support.Data());
    EXPECT_EQ(other.Stencil(1), other.Stencil(2));
    EXPECT_GT(other.Stencil(1).size(), 1U);
    EXPECT_EQ(support[1], support[2]);
  }
}

TEST(CellPointSearch, MakesZeroedRowsOfTheStencilsSize) {
  Searched const s(Diagonal(7), {3.0}, 1, 1.5, 0);
  for (int k = 0; k <= 3; ++k) {
    EXPECT_TRUE(SameRecord("coefficient", {0, 0, 0}, 0, s.object->m_ppIBCoef[1][k]));
    EXPECT_EQ(0.0, s.object->m_ppIBValueCoef[1][k]);
  }
}

TEST(CellPointSearch, LeavesTheCallersTreeUsable) {
  Searched s(Diagonal(7), {3.0}, 1, 1.5, 0);
  int count = 0;
  s.filled.tree.SearchNearBlockID(-9, -9, -9, 9, 9, 9, count, 0);
  EXPECT_EQ(7, count);
}

// --------------------------------------------------------------------------------------------- the coefficients

/// Derives the coefficients of all points at (x, y, z) = (x, 0.5 x, 0.25 x).
struct Derived : Searched {
  Derived(TestMesh const& mesh, std::vector<double> const& xs, double distance, double span)
      : Searched(mesh, xs, 1, distance, 0), y(x), z(x) {
    object->Span = span;
    for (int i = 1; i <= x.Size(); ++i) {
      y[i] = 0.5 * x[i];
      z[i] = 0.25 * x[i];
      EXPECT_EQ(
          1, object->DeriveIBCoefficentBysolveDQfullMatrix(i, x.Data(), y.Data(), z.Data(), support.Data()));
    }
  }

  Array y, z;
};

struct PlainSolution {
  std::vector<Triple> slopes;
  std::vector<double> values;
};

/// The system on the cells at `nodes` for a point, assembled entry by entry, without a constant term.
PlainSolution SolvePlainly(std::vector<Point> const& nodes, Point p, double span, double support) {
  double const c = span * support, c2 = c * span * support, c8 = ExactPower(c, 8);
  auto const value = [=](double r) {
    return ExactPower(1.0 - r / c, 6) * (r * 35.0 * r / c2 + r * 18.0 / c + 3.0);
  };
  std::vector<double> a, b;
  for (Point const& xk : nodes) {
    DQVector const d = OffsetBetween(xk, p);
    double const r = Length(d), power = ExactPower(c - r, 5);
    for (double const component : {d.x, d.y, d.z})
      b.push_back(-(component * 56.0 * (r * 5.0 + c) * power / c8));
    b.push_back(value(r));
    for (Point const& xj : nodes) a.push_back(value(Length(OffsetBetween(xj, xk))));
  }
  CDenseSolver().Solve(static_cast<int>(nodes.size()), a.data(), b.data(), b.data(), 4);
  PlainSolution solution;
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    solution.slopes.push_back({b[4 * k], b[4 * k + 1], b[4 * k + 2]});
    solution.values.push_back(b[4 * k + 3]);
  }
  return solution;
}

TEST(CellPointWeights, EqualAPlainSystemBitForBitWithTheTripleTwiceAndThePointsNumber) {
  for (Cells const cells : kAllCells) {
    LatticeOptions options;
    options.cells = cells;
    TestMesh const mesh = LatticeMesh(options);
    for (double const span : {500.0, 5.0}) {
      Derived const d(mesh, {0.6, 1.0, 1.4}, 0.9, span);
      for (int i = 1; i <= 3; ++i) {
        std::vector<Point> nodes;
        for (int const c : d.Stencil(i)) {
          RBFnode const& p = d.object->m_pRBFnode[c];
          nodes.push_back({p.x, p.y, p.z});
        }
        ASSERT_GT(nodes.size(), 2U);
        PlainSolution const plain = SolvePlainly(nodes, {d.x[i], d.y[i], d.z[i]}, span, d.support[i]);
        EXPECT_TRUE(SameRecord("element 0", {0, 0, 0}, 0, d.object->m_ppIBCoef[i][0]));
        for (std::size_t k = 0; k < nodes.size(); ++k) {
          ASSERT_TRUE(SameRecord("slope", plain.slopes[k], i, d.object->m_ppIBCoef[i][k + 1])) << Name(cells);
          ASSERT_TRUE(SameValue("value", plain.values[k], d.object->m_ppIBValueCoef[i][k + 1]))
              << Name(cells);
        }
      }
    }
  }
}

// phi(r) w = phi(r), and -g w_x = ... with a single member: w = right-hand side / 3, in full double precision.
TEST(CellPointWeights, OfASingleMemberAreTheRightHandSidesOver3) {
  Derived const d(Diagonal(7), {3.125}, 0.5, 4.0);
  ASSERT_EQ((List{4}), d.Stencil(1));
  PlainDQKernel const kernel(4.0, 0.5);
  DQVector const offset = {3.125 - 3.0, 0.5 * 3.125 - 3.0, 0.25 * 3.125 - 3.0};
  DQVector const g = kernel.Gradient(offset);
  RBFnode const& w = d.object->m_ppIBCoef[1][1];
  EXPECT_NEAR(g.x / 3.0, w.x, 1e-15 * std::fabs(g.x)) << "a float would be off by 1e-8";
  EXPECT_NEAR(g.y / 3.0, w.y, 1e-15 * std::fabs(g.y));
  EXPECT_NEAR(kernel.Value(Length(offset)) / 3.0, d.object->m_ppIBValueCoef[1][1], 1e-14);
}

TEST(CellPointWeights, HaveTheirSupportFromTheCaller) {
  Derived d(Diagonal(7), {3.125}, 1.5, 4.0);
  double const before = d.object->m_ppIBValueCoef[1][1];
  d.support[1] *= 2.0;
  d.object->DeriveIBCoefficentBysolveDQfullMatrix(1, d.x.Data(), d.y.Data(), d.z.Data(), d.support.Data());
  EXPECT_NE(before, d.object->m_ppIBValueCoef[1][1]);
}

TEST(CellPointWeights, AreOfThePlainFormWhateverTheShapeNormalisation) {
  Derived d(SomeMesh(), {1.0}, 0.9, 20.0);
  double const value = d.object->m_ppIBValueCoef[1][1], slope = d.object->m_ppIBCoef[1][1].x;
  d.object->iShape_Normalize = 1;
  d.object->DeriveIBCoefficentBysolveDQfullMatrix(1, d.x.Data(), d.y.Data(), d.z.Data(), d.support.Data());
  EXPECT_EQ(value, d.object->m_ppIBValueCoef[1][1]);
  EXPECT_EQ(slope, d.object->m_ppIBCoef[1][1].x);
}

TEST(CellPointWeights, OfAnEmptyStencilAreNone) {
  Derived const d(Diagonal(7), {30.0}, 0.25, 4.0);
  EXPECT_EQ(List(), d.Stencil(1));
  EXPECT_EQ(0.0, d.object->m_ppIBValueCoef[1][0]);
}

TEST(CellPointWeights, GatherNoResiduals) {
  Derived const d(SomeMesh(), {1.0}, 0.9, 20.0);
  CZynRBFInternalObject fresh;
  EXPECT_EQ(fresh.MAXResidual_X, d.object->MAXResidual_X);
  EXPECT_EQ(fresh.m_iWorstElement, d.object->m_iWorstElement);
}

// ----------------------------------------------------------------------------------------------- the application

/// Output arrays that begin with a value which must not stay.
struct Outputs {
  explicit Outputs(int n) : value(n, -7.5), x(n, -7.5), y(n, -7.5), z(n, -7.5) {}
  int Apply(CZynRBFInternalObject& object, double* field) {
    return object.Multiply_IBRBFCoefficent(field, value.Data(), x.Data(), y.Data(), z.Data());
  }
  Array value, x, y, z;
};

TEST(CellPointApplication, GivesZerosWhateverFieldAndCoefficients) {
  Derived d(Diagonal(7), {3.125, 1.0}, 1.5, 4.0);
  Array field(7, 1e30);
  for (double* const f : {field.Data(), static_cast<double*>(nullptr)}) {
    Outputs out(2);
    EXPECT_EQ(0, out.Apply(*d.object, f));
    for (Array const* const a : {&out.value, &out.x, &out.y, &out.z}) {
      EXPECT_TRUE(a->GuardsIntact());
      for (int const i : {1, 2}) EXPECT_TRUE(SameValue("result", 0.0, (*a)[i]));
    }
  }
  EXPECT_NE(0.0, d.object->m_ppIBValueCoef[1][1]) << "although there are coefficients";
}

TEST(CellPointApplication, BeforeTheSetUpTouchesNothing) {
  CZynRBFInternalObject object;
  Outputs out(2);
  EXPECT_EQ(0, out.Apply(object, nullptr));
  for (Array const* const a : {&out.value, &out.x, &out.y, &out.z})
    EXPECT_TRUE(a->IdenticalTo(Array(2, -7.5)));
}

}  // namespace
}  // namespace zyn_test::point_methods_test

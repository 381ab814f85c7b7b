#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "gradient/COperatorGradientImpl.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/host/RecordingCom.h"
#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// Gradient type 2: when the cell operator is made and set up, how a gradient call reaches it, and that it is left
// behind at the end, with all host objects alive.

namespace zyn_test::radial_basis_branch_test {
namespace {

using Array = GuardedArray<double>;

/// Cell operators that gradient operators left behind on purpose, kept where a leak checker sees them to the end.
std::vector<CZynRBFInternalObject*>& LeftBehind() {
  static auto* const objects = new std::vector<CZynRBFInternalObject*>;
  return *objects;
}

TestMesh SomeMesh() {
  LatticeOptions options;
  options.cells = Cells::HexaPyramids;
  return LatticeMesh(options);
}

/// A gradient operator of type 2 with the host objects of a solver, which are on the stack: an operator that
/// destroyed one of them would crash here.
struct Solver {
  explicit Solver(TestMesh const& description) : mesh(description), host(mesh, folder.BaseFileName()) {
    EXPECT_EQ(1, gradient->getZyn3dGV(&host.globals, &host.gpu, &host.openMP, &host.mesh));
    EXPECT_EQ(1, gradient->getPartitionFace(&host.partitionFaces));
    EXPECT_EQ(1, gradient->getCommunication(&host.communication, &host.com));
    int type = 2;
    EXPECT_EQ(1, gradient->getGradType(type));
  }
  ~Solver() { Destroy(); }

  CZynRBFInternalObject* CellOperator() const { return gradient->m_pImpl->m_pRBF; }

  /// @return what was printed
  std::string Initialize(int expected = 1) {
    return Printed([&] { EXPECT_EQ(expected, gradient->Initialize()); });
  }

  void Destroy() {
    if (gradient == nullptr) return;
    if (CellOperator() != nullptr) LeftBehind().push_back(CellOperator());
    delete gradient;
    gradient = nullptr;
  }

  TestMesh const mesh;
  SettingsFolder folder;
  CellHost host;
  COperatorGradient* gradient = new COperatorGradient;
};

std::string const kCollationLines =
    "NInnerFaces ok!\nNWall ok!\nNInlet ok!\nNInnerCells ok!\nNWall ok!\nNInlet ok!\nNOutlet ok!\npPartFace "
    "ok!\n";

TEST(RadialBasisBranch, InitializeMakesACellOperatorWithAllHostObjects) {
  Solver solver(SomeMesh());
  EXPECT_EQ(nullptr, solver.CellOperator());
  solver.Initialize();
  CZynRBFInternalObject const* const object = solver.CellOperator();
  ASSERT_NE(nullptr, object);
  EXPECT_EQ(&solver.host.globals, object->m_pGV);
  EXPECT_EQ(&solver.host.gpu, object->m_pGVGPU);
  EXPECT_EQ(&solver.host.openMP, object->m_pGVOpenMP);
  EXPECT_EQ(&solver.host.mesh, object->m_pMesh);
  EXPECT_EQ(&solver.host.partitionFaces, object->m_pPartFace);
  EXPECT_EQ(&solver.host.communication, object->m_pComm);
}

TEST(RadialBasisBranch, InitializeDerivesTheWeights) {
  Solver solver(SomeMesh());
  std::string const printed = solver.Initialize();
  EXPECT_EQ(0U, printed.find("Default DQ parameter is adopted.\n" + kCollationLines +
                             "Cell RBF flux Interpolation is done.\nSpan = 500.000000, MAXResidual_X = "));
  PlainCellOperator plain(solver.mesh, 500.0, 0);
  plain.Collate();
  plain.DeriveAll();
  EXPECT_TRUE(SameWeights(plain, *solver.CellOperator()));
  EXPECT_EQ(DefaultSettings(), solver.folder.Read());
}

TEST(RadialBasisBranch, InitializeReadsTheSettingsFile) {
  Solver solver(SomeMesh());
  solver.folder.Write(Settings("37.25", "1"));
  EXPECT_EQ(0U, solver.Initialize().find("iShape_Normalize = On\n" + kCollationLines));
  EXPECT_EQ(37.25, solver.CellOperator()->Span);
  EXPECT_EQ(1, solver.CellOperator()->iShape_Normalize);
}

TEST(RadialBasisBranch, InitializeReducesTheStatusOfTheWeights) {
  Solver solver(SomeMesh());
  solver.Initialize();
  EXPECT_EQ(std::vector<int>({1}), solver.host.com.values);
}

TEST(RadialBasisBranch, SecondInitializeDerivesNothingAgain) {
  Solver solver(SomeMesh());
  solver.Initialize();
  CZynRBFInternalObject* const object = solver.CellOperator();
  object->m_ppRBFCellCoef[1][1].x = 42.0;
  EXPECT_EQ("", solver.Initialize());
  EXPECT_EQ(object, solver.CellOperator());
  EXPECT_EQ(42.0, object->m_ppRBFCellCoef[1][1].x);
  EXPECT_EQ(std::vector<int>({1, 0}), solver.host.com.values);
}

TEST(RadialBasisBranch, ReleaseDestroysTheCellOperatorButNoHostObjectAndInitializeMakesAnother) {
  Solver solver(SomeMesh());
  solver.host.com.values.reserve(64);
  solver.Initialize();
  solver.gradient->Release();
  EXPECT_EQ(nullptr, solver.CellOperator());
  long const live = LiveAllocations(), blocks = LiveBlocks();
  for (int n = 0; n < 3; ++n) {
    solver.Initialize();
    PlainCellOperator plain(solver.mesh, 500.0, 0);
    plain.Collate();
    plain.DeriveAll();
    EXPECT_TRUE(SameWeights(plain, *solver.CellOperator()));
    solver.gradient->Release();
  }
  EXPECT_EQ(live, LiveAllocations());
  EXPECT_EQ(blocks, LiveBlocks());
}

TEST(RadialBasisBranch, UpdateGeometryDerivesTheWeightsOfTheMovedMesh) {
  Solver solver(SomeMesh());
  solver.Initialize();
  TestMesh moved = solver.mesh;
  for (int c = 1; c <= moved.NCell(); ++c) {
    solver.host.centres.x[c] *= 1.5;
    moved.Centre(c).x = solver.host.centres.x[c];
  }
  Printed([&] { EXPECT_EQ(1, solver.gradient->UpdateGeometry()); });
  PlainCellOperator plain(moved, 500.0, 0);
  plain.Collate();
  plain.DeriveAll();
  EXPECT_TRUE(SameWeights(plain, *solver.CellOperator()));
  EXPECT_EQ(std::vector<int>({1, 1}), solver.host.com.values);
}

TEST(RadialBasisBranch, FailureOfAnotherPartitionFailsHereAndKeepsTheCellOperator) {
  Solver solver(SomeMesh());
  solver.host.com.othersMinimum = -1;
  solver.Initialize(-1);
  EXPECT_NE(nullptr, solver.CellOperator());
  EXPECT_STREQ("Operator Gradient Error = ", solver.gradient->getErrorMsg());
}

TEST(RadialBasisBranch, SecondInitializeSucceedsEvenWhenTheFirstFailed) {
  Solver solver(SomeMesh());
  solver.host.com.othersMinimum = -1;
  solver.Initialize(-1);
  CZynRBFInternalObject* const object = solver.CellOperator();
  solver.host.com.othersMinimum = 0;
  EXPECT_EQ("", solver.Initialize(1));
  EXPECT_EQ(object, solver.CellOperator());
}

TEST(RadialBasisBranch, OtherTypesMakeNoCellOperator) {
  for (int type : {0, 3, 4, -1}) {
    Solver solver(SomeMesh());
    solver.gradient->getGradType(type);
    EXPECT_EQ("", solver.Initialize());
    EXPECT_EQ(nullptr, solver.CellOperator());
    EXPECT_FALSE(solver.folder.Exists());
  }
}

// ------------------------------------------------------------------------------------------------ gradients

/// A field with the value of a smooth function at each cell's point.
Array SomeField(TestMesh const& mesh) {
  Array phi(mesh.NCell());
  for (int c = 1; c <= mesh.NCell(); ++c) {
    Point const& p = mesh.Centre(c);
    phi[c] = p.x * p.y - 0.5 * p.z + p.y * p.y;
  }
  return phi;
}

struct Gradient {
  explicit Gradient(int n) : x(n, -7.5), y(n, -7.5), z(n, -7.5) {}
  Array x, y, z;
};

TEST(RadialBasisBranch, GradientIsThatOfTheCellOperatorWhateverTheLastArgument) {
  Solver solver(SomeMesh());
  solver.Initialize();
  int const n = solver.mesh.NCell();
  Array phi = SomeField(solver.mesh);
  Gradient expected(n);
  solver.CellOperator()->MultiplyRBFCoefficent(phi.Data(), expected.x.Data(), expected.y.Data(),
                                               expected.z.Data());
  for (int const last : {1, 0, -3, 2, 1000}) {
    Gradient g(n);
    solver.gradient->GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), last);
    EXPECT_TRUE(g.x.IdenticalTo(expected.x)) << last;
    EXPECT_TRUE(g.y.IdenticalTo(expected.y)) << last;
    EXPECT_TRUE(g.z.IdenticalTo(expected.z)) << last;
  }
}

TEST(RadialBasisBranch, GradientExchangesNothingAndLeavesHaloCellsZero) {
  for (bool const nonBlocking : {false, true}) {
    Solver solver(SomeMesh());
    solver.host.globals.UseNonBlockingExch = nonBlocking ? 1 : 0;
    solver.Initialize();
    Array phi = SomeField(solver.mesh);
    Gradient g(solver.mesh.NCell());
    solver.gradient->GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
    EXPECT_TRUE(solver.host.exchanges.empty());
    EXPECT_EQ(1U, solver.host.com.values.size()) << "Initialize's alone";
    ASSERT_FALSE(solver.mesh.partition.empty());
    for (Face const& face : solver.mesh.partition) EXPECT_EQ(0.0, g.x[face.other]);
  }
}

TEST(RadialBasisBranch, GradientAllocatesNothing) {
  Solver solver(SomeMesh());
  solver.Initialize();
  Array phi = SomeField(solver.mesh);
  Gradient g(solver.mesh.NCell());
  long const before = Allocations();
  solver.gradient->GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  EXPECT_EQ(before, Allocations());
}

TEST(RadialBasisBranch, ChangeOfTypeLeavesTheCellOperatorForLater) {
  Solver solver(SomeMesh());
  solver.Initialize();
  CZynRBFInternalObject* const object = solver.CellOperator();
  int type = 3;
  solver.gradient->getGradType(type);
  EXPECT_EQ(object, solver.CellOperator());
  type = 2;
  solver.gradient->getGradType(type);
  EXPECT_EQ("", solver.Initialize());
  EXPECT_EQ(object, solver.CellOperator());
}

TEST(RadialBasisBranchDeathTest, GradientBeforeInitializeReachesANullObject) {
  Solver solver(SomeMesh());
  Array phi = SomeField(solver.mesh);
  Gradient g(solver.mesh.NCell());
  EXPECT_DEATH(solver.gradient->GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1), "");
}

// ---------------------------------------------------------------------------------------------- destruction

TEST(RadialBasisBranch, DestructionLeavesTheHostObjectsAlive) {
  Solver solver(SomeMesh());
  solver.Initialize();
  solver.Destroy();
  EXPECT_TRUE(solver.host.destroyed.empty());
  EXPECT_EQ(solver.mesh.NCell(), solver.host.mesh.NCell);
  EXPECT_TRUE(solver.host.InputsUntouched());
  EXPECT_EQ(static_cast<int>(solver.mesh.partition.size()), solver.host.partitionFaces.NParInterFace());
}

TEST(RadialBasisBranch, DestructionLeavesTheCellOperatorBehindUsable) {
  Solver solver(SomeMesh());
  solver.Initialize();
  CZynRBFInternalObject* const object = solver.CellOperator();
  solver.Destroy();
  Array phi(solver.mesh.NCell(), 1.0);
  Gradient g(solver.mesh.NCell());
  EXPECT_EQ(1, object->MultiplyRBFCoefficent(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data()));
  EXPECT_EQ(0.0, g.x[solver.mesh.outlet[0].other]);
}

}  // namespace
}  // namespace zyn_test::radial_basis_branch_test

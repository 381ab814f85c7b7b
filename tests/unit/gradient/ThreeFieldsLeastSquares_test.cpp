#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"

// Three fields by least squares in one call: each gets what its own call gives.

namespace zyn_test::three_fields_least_squares_test {
namespace {

std::vector<Vector3> const kAllAxes = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoX = {{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

/// A host, its operator with moments, three fields and their gradients.
struct ThreeFits {
  explicit ThreeFits(TestMesh const& theMesh)
      : mesh(theMesh),
        host(mesh, ExchangeWithItself(mesh)),
        op(host, 1),
        g(3, GuardedGradient(mesh.NCell(), 0.75)) {
    Random random(5);
    for (int k = 0; k < 3; ++k) {
      fields.push_back(TameField(random, mesh));
      phi.push_back(Guarded(fields.back()));
    }
    op.gradient.Initialize();
  }

  /// @return what it printed
  std::string Run() {
    testing::internal::CaptureStdout();
    op.gradient.GradMethod_LeastSquares_3(phi[0].Data(), phi[1].Data(), phi[2].Data(), g[0].x.Data(),
                                          g[0].y.Data(), g[0].z.Data(), g[1].x.Data(), g[1].y.Data(),
                                          g[1].z.Data(), g[2].x.Data(), g[2].y.Data(), g[2].z.Data());
    return testing::internal::GetCapturedStdout();
  }
  void ExpectOwnCalls() {
    Moments const moments = LeastSquaresMoments(mesh);
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_TRUE(SameBits(LeastSquares(mesh, moments, fields[k], ExchangeWithItself(mesh)).g, g[k])) << k;
  }
  std::vector<double*> Outputs() {
    std::vector<double*> arrays;
    for (GuardedGradient& own : g)
      for (GuardedArray<double>* component : {&own.x, &own.y, &own.z}) arrays.push_back(component->Data());
    return arrays;
  }

  TestMesh mesh;
  GradientHost host;
  ConnectedOperator op;
  std::vector<Field> fields;
  std::vector<GuardedArray<double>> phi;
  std::vector<GuardedGradient> g;
};

TestMesh Box() { return ClosedBox({0, 1, 2, 4}, {0, 1, 2, 3}, {0, 1, 3, 4}); }

TEST(ThreeFieldsLeastSquares, EachFieldHasTheBitsOfItsOwnCall) {
  ThreeFits fits(Box());
  EXPECT_EQ("", fits.Run());
  fits.ExpectOwnCalls();
  EXPECT_TRUE(fits.host.communication.RulesKept() && fits.host.InputsUntouched());
}

TEST(ThreeFieldsLeastSquares, OneArrayMayBeAllThreeFields) {
  ThreeFits fits(Box());
  double* const phi = fits.phi[0].Data();
  std::vector<double*> const out = fits.Outputs();
  fits.op.gradient.GradMethod_LeastSquares_3(phi, phi, phi, out[0], out[1], out[2], out[3], out[4], out[5],
                                             out[6], out[7], out[8]);
  EXPECT_TRUE(SameBits(fits.g[0], fits.g[1]));
  EXPECT_TRUE(SameBits(fits.g[0], fits.g[2]));
}

TEST(ThreeFieldsLeastSquares, TheGradientTypeHasNoInfluence) {
  ThreeFits fits(Box());
  for (int type : {0, 3, 7}) {
    fits.op.gradient.getGradType(type);
    fits.Run();
    fits.ExpectOwnCalls();
  }
}

TEST(ThreeFieldsLeastSquares, NineOutputsAreExchangedInTheOrderOfTheArguments) {
  ThreeFits fits(Box());
  fits.Run();
  std::vector<double*> const outputs = fits.Outputs();
  auto const& calls = fits.host.communication.Calls();
  ASSERT_EQ(outputs.size(), calls.size());
  for (std::size_t i = 0; i < outputs.size(); ++i) EXPECT_EQ(outputs[i], calls[i].field) << i;
}

TEST(ThreeFieldsLeastSquares, NonBlockingExchangesGiveTheSame) {
  ThreeFits fits(Box());
  fits.host.UseNonBlockingExchange(true);
  fits.Run();
  fits.ExpectOwnCalls();
  EXPECT_EQ(18u, fits.host.communication.Calls().size());
  EXPECT_TRUE(fits.host.communication.RulesKept());
}

TEST(ThreeFieldsLeastSquares, TheExchangeCanBeLeftOut) {
  ThreeFits fits(Box());
  fits.op.gradient.SetResultExchange(false);
  fits.Run();
  EXPECT_TRUE(fits.host.communication.Calls().empty());
  LeastSquaresResult const expected =
      LeastSquares(fits.mesh, LeastSquaresMoments(fits.mesh), fits.fields[2], ExchangeWithItself(fits.mesh));
  EXPECT_TRUE(SameBits(fits.mesh.nInnerCells, expected.g.y.data(), fits.g[2].y.Data()));
}

// In any place of cells that are solved side by side.
TEST(ThreeFieldsLeastSquares, ASingularCellStopsAllThreeWithItsLinesOnceAndNoExchange) {
  for (std::size_t place = 0; place < 9; ++place) {
    std::vector<std::vector<Vector3>> cells(9, kAllAxes);
    cells[place] = kNoX;
    ThreeFits fits(CellsWithWallNeighbours(cells));
    EXPECT_EQ("aa[ii][j]=0.\n4\n", fits.Run()) << place;
    fits.ExpectOwnCalls();
    EXPECT_TRUE(fits.host.communication.Calls().empty()) << place;
  }
}

TEST(ThreeFieldsLeastSquares, PartitionWithoutInteriorCellsClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({1.0 * c, 0.0, 0.0});
  GradientHost host(mesh);
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  GuardedArray<double> phi(3, 1.5);
  std::vector<GuardedGradient> g(3, GuardedGradient(3, 0.75));
  op.gradient.GradMethod_LeastSquares_3(phi.Data(), phi.Data(), phi.Data(), g[0].x.Data(), g[0].y.Data(),
                                        g[0].z.Data(), g[1].x.Data(), g[1].y.Data(), g[1].z.Data(),
                                        g[2].x.Data(), g[2].y.Data(), g[2].z.Data());
  for (GuardedGradient const& own : g) EXPECT_TRUE(SameBits(GuardedGradient(3, 0.0), own));
  EXPECT_EQ(9u, host.communication.Calls().size());
}

}  // namespace
}  // namespace zyn_test::three_fields_least_squares_test

#include "cli/info/MeshFacts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// The matrix of AspectRatio for a box with edges a, b, c, turned by `angle` about z.
SymmetricMatrix OfBox(double a, double b, double c, double angle) {
  double const s = std::sin(angle), k = std::cos(angle);
  double const x = 2 * b * c, y = 2 * a * c, z = 2 * a * b;
  return {x * k * k + y * s * s, x * s * s + y * k * k, z, (x - y) * s * k, 0.0, 0.0};
}

TEST(MeshFacts, AspectRatioOfABoxIsThatOfItsEdges) {
  EXPECT_DOUBLE_EQ(1.0, AspectRatio(OfBox(2, 2, 2, 0)));
  EXPECT_DOUBLE_EQ(6.0, AspectRatio(OfBox(3, 1, 0.5, 0)));
  EXPECT_NEAR(6.0, AspectRatio(OfBox(3, 1, 0.5, 0.7)), 1e-13);
  // As flat as cells at a wall get: the least eigenvalue keeps its digits beside the others.
  EXPECT_NEAR(1e6, AspectRatio(OfBox(1, 1, 1e-6, 0.7)), 1e-4);
  EXPECT_EQ(std::numeric_limits<double>::infinity(), AspectRatio({1, 1, 0, 0, 0, 0}));
}

TEST(MeshFacts, EigenvaluesOfAKnownMatrix) {
  // (1, 2, 4) in the axes (1,1,1), (1,-1,0), (1,1,-2), each divided by its length.
  double const a = 1.0 / 3.0, b = 0.5, c = 1.0 / 6.0;
  std::array<double, 3> const values = Eigenvalues(
      {a + 2 * b + 4 * c, a + 2 * b + 4 * c, a + 16 * c, a - 2 * b + 4 * c, a - 8 * c, a - 8 * c});
  EXPECT_NEAR(1.0, values[0], 1e-14);
  EXPECT_NEAR(2.0, values[1], 1e-14);
  EXPECT_NEAR(4.0, values[2], 1e-14);
}

MeshFacts Of(std::string const& box) {
  auto const partition = BoxPartition(box);
  return CollectMeshFacts(TestRanks(), *partition);
}

TEST(MeshFacts, CountsTheCellsOfEachType) {
  std::array<std::int64_t, 5> const hex = {0, 24, 0, 0, 0}, tet = {24 * 5, 0, 0, 0, 0},
                                    prism = {0, 0, 48, 0, 0};
  EXPECT_EQ(hex, Of("box:2,3,4").nOfType);
  MeshFacts const tets = Of("box:2,3,4:tet");
  EXPECT_EQ(tets.nCells, tets.nOfType[0]);
  EXPECT_GE(tets.nCells, tet[0]);
  EXPECT_EQ(prism, Of("box:2,3,4:prism").nOfType);
  MeshFacts const dual = Of("box:3,3,3:dual");
  EXPECT_GT(dual.nOfType[4], 0);
  EXPECT_EQ(dual.nCells,
            dual.nOfType[0] + dual.nOfType[1] + dual.nOfType[2] + dual.nOfType[3] + dual.nOfType[4]);
}

TEST(MeshFacts, MeasuresTheUnitBox) {
  MeshFacts const facts = Of("box:2,4,8");
  EXPECT_EQ((std::array<double, 3>{0, 0, 0}), facts.lowest);
  EXPECT_EQ((std::array<double, 3>{1, 1, 1}), facts.highest);
  EXPECT_NEAR(1.0, facts.totalVolume, 1e-14);
  EXPECT_NEAR(1.0 / 64, facts.leastVolume, 1e-16);
  EXPECT_NEAR(1.0 / 64, facts.greatestVolume, 1e-16);
  EXPECT_NEAR(4.0, facts.maxAspectRatio, 1e-13);
  EXPECT_NEAR(4.0 * 64, facts.sumAspectRatio, 1e-11);
}

TEST(MeshFacts, NamesTheSmallestCell) {
  MeshFacts const facts = Of("box:4,1,1:hex:stretch=2");
  EXPECT_GT(facts.greatestVolume, 1.5 * facts.leastVolume);
  EXPECT_GE(facts.leastVolumeCell, 1);
  EXPECT_LE(facts.leastVolumeCell, 4);
  std::ostringstream out;
  PrintMeshFacts(out, facts);
  EXPECT_NE(out.str().find("4 hexahedra"), std::string::npos) << out.str();
  EXPECT_NE(out.str().find(" in cell " + std::to_string(facts.leastVolumeCell) + '\n'), std::string::npos);
  EXPECT_EQ(facts.leastVolumeCell, MeshFactsAsJson(facts)["volume"]["leastCell"]);
}

}  // namespace
}  // namespace zyngrad

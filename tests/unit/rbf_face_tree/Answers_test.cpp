#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/tree/RecordingTree.h"

// What the order in which a tree answers means for stencils: it decides between equals, and in method 1 it is the
// order of the stencil.

namespace zyn_test {
namespace {

using Row = std::vector<int>;

void Reversed(std::vector<int>& ids) { std::reverse(ids.begin(), ids.end()); }

/// A fixed order without a pattern.
using Arrangement = std::function<void(std::vector<int>&)>;

Arrangement Shuffled(std::uint64_t seed) {
  return [seed](std::vector<int>& ids) {
    auto const rank = [seed](int id) {
      std::uint64_t x = seed * 0x9e3779b97f4a7c15ULL + static_cast<std::uint64_t>(id);
      x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
      return (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    };
    std::sort(ids.begin(), ids.end(), [&](int a, int b) { return rank(a) < rank(b); });
  };
}

/// An operator whose trees answer in the given order.
struct Answered {
  Answered(TestMesh const& plan, int faceType, FaceSettings const& settings, Arrangement const& arrangement)
      : bed(plan), stages(bed.object, faceType, settings) {
    StartAnew();
    stages.FillTree();
    Calls().arrange = arrangement;
  }
  ~Answered() { StartAnew(); }
  Row Stencil(int i) { return RowOf(bed.object.m_ppFaceCellConn[i]); }

  FaceBed bed;
  Stages stages;
};

// Unit cubes; this face between the cells 13 and 14 has 27 cells in the first cube around it.
constexpr int kMiddle = 9;

TEST(TreeAnswers, AreTheStencilOfMethod1InTheirOrder) {
  for (Arrangement const& arrangement : {Arrangement(), Arrangement(Reversed), Shuffled(3)}) {
    Answered o(CubesOfAllGroups(), kInner, {1, 50.0, 20}, arrangement);
    o.stages.FindStencils();
    Row expected = o.Stencil(kMiddle);
    std::sort(expected.begin(), expected.end());
    if (arrangement) arrangement(expected);
    EXPECT_EQ(27U, expected.size());
    EXPECT_EQ(expected, o.Stencil(kMiddle));
  }
}

// Half a unit away are the cells 13 and 14, one unit the inlet's face, then eight cells at sqrt(5)/2.
TEST(TreeAnswers, OfEqualDistanceKeepTheirOrderInMethod2) {
  Row const ties = {10, 11, 16, 17, 4, 5, 22, 23};
  for (Arrangement const& arrangement : {Arrangement(), Arrangement(Reversed), Shuffled(3), Shuffled(4)}) {
    Answered o(CubesOfAllGroups(), kInner, {2, 50.0, 11}, arrangement);
    o.stages.FindStencils();
    Row const stencil = o.Stencil(kMiddle);
    ASSERT_EQ(11U, stencil.size());
    Row nearest = {13, 14}, tied = ties;
    std::sort(tied.begin(), tied.end());
    if (arrangement) arrangement(nearest), arrangement(tied);
    EXPECT_EQ(nearest, Row(stencil.begin(), stencil.begin() + 2));
    EXPECT_EQ(o.bed.host.Description().Of(kInlet)[4].other, stencil[2]);
    EXPECT_EQ(tied, Row(stencil.begin() + 3, stencil.end()));
  }
}

// Only some of the eight equally far cells are kept: the first that the tree gave.
TEST(TreeAnswers, OfEqualDistanceAreCutToTheFirst) {
  for (int const number : {4, 6, 9}) {
    Answered o(CubesOfAllGroups(), kInner, {2, 50.0, number}, Reversed);
    o.stages.FindStencils();
    Row const all = {23, 22, 17, 16, 11, 10, 5, 4};
    Row const stencil = o.Stencil(kMiddle);
    EXPECT_EQ(Row(all.begin(), all.begin() + number - 3), Row(stencil.begin() + 3, stencil.end()));
  }
}

TEST(TreeAnswers, DecideBetweenEquallyNearCells) {
  Row const equals = {1, 2};
  for (Arrangement const& arrangement : {Arrangement(), Arrangement(Reversed)}) {
    Answered o(TwoCubes(), kInner, {}, arrangement);
    EXPECT_EQ(arrangement ? 2 : 1, o.bed.object.Search_ClosestCellID_byNode(0.0, 0.0, 0.0));
  }
}

TEST(TreeAnswers, DecideBetweenCellsAtOnePoint) {
  TestMesh plan = TwoCubes();
  plan.Of(kInlet)[0].centre = plan.centres[2];  // side cell 3 where cell 2 stands
  for (Arrangement const& arrangement : {Arrangement(), Arrangement(Reversed)}) {
    Answered o(plan, kInner, {}, arrangement);
    EXPECT_EQ(arrangement ? 3 : 2, o.bed.object.Search_ClosestCellID_byNode(0.5, 0.0, 0.0));
  }
}

// The squares are 1 + 2^-52 and 1, the distances both 1.
TEST(TreeAnswers, DecideBetweenCellsWhoseDistancesAreEqualThoughTheirSquaresAreNot) {
  Answered o(TwoCubes(), kInner, {}, Arrangement());
  for (int c = 3; c <= 12; ++c) o.bed.object.m_pNodeTable[c].SetData(50.0, 0.0, 0.0, c);
  o.bed.object.m_pNodeTable[1].SetData(1.0, std::ldexp(1.0, -26), 0.0, 1);
  o.bed.object.m_pNodeTable[2].SetData(-1.0, 0.0, 0.0, 2);
  EXPECT_EQ(1, o.bed.object.Search_ClosestCellID_byNode(0.0, 0.0, 0.0));
  Calls().arrange = Reversed;
  EXPECT_EQ(2, o.bed.object.Search_ClosestCellID_byNode(0.0, 0.0, 0.0));
}

TEST(TreeAnswers, DoNotDecideBetweenCellsAtUnequalDistance) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    Answered o(SkewedCubesOfAllGroups(), kInner, {}, Shuffled(seed));
    for (int c = 1; c <= 27; ++c) {
      IBCnode const& p = o.bed.object.m_pNodeTable[c];
      EXPECT_EQ(c, o.bed.object.Search_ClosestCellID_byNode(p.x + 0.01, p.y, p.z));
    }
  }
}

// All tables of stencils and coefficients against the plain form, whose tree answers in the same order.
TEST(TreeAnswers, InAnyOrderGiveTheTablesOfThePlainForm) {
  for (int const method : {1, 2, 4}) {
    for (Group const group : kGroups) {
      for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        FaceSettings const settings = {method, 50.0, 9};
        Answered o(CubesOfAllGroups(), group, settings, Shuffled(seed));
        o.stages.Derive();
        PlainFaceOperator plain = o.bed.Plain(group, settings);
        plain.Run();
        ASSERT_TRUE(SameStencils(plain, o.bed.object)) << method << " " << group << " " << seed;
        ASSERT_TRUE(SameStencilWork(plain, o.bed.object)) << method << " " << group << " " << seed;
        ASSERT_TRUE(SameCoefficients(plain, o.bed.object)) << method << " " << group << " " << seed;
        ASSERT_TRUE(SameReport(plain, o.bed.object)) << method << " " << group << " " << seed;
      }
    }
  }
}

}  // namespace
}  // namespace zyn_test

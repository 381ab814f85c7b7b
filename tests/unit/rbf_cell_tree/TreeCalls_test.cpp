#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/PlainCellOperator.h"
#include "tests/support/tree/RecordingTree.h"

// Which calls the cell operator makes of the search tree, in which order and with which numbers.

namespace zyn_test {
namespace {

TestMesh SomeMesh() {
  LatticeOptions options;
  options.cells = Cells::HexaPyramids;
  TestMesh mesh = LatticeMesh(options);
  mesh.wall.back().other = mesh.inlet.front().other;  // one number for two boxes
  return mesh;
}

/// Sets up an operator and derives its weights. @return the calls of that
TreeCalls CallsOf(TestMesh const& mesh) {
  StartAnewWithoutAnswers();
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  return Calls();
}

TEST(CellOperatorTree, GetsItsRangeOnceBeforeTheFirstBox) {
  TestMesh const mesh = SomeMesh();
  TreeCalls const calls = CallsOf(mesh);
  PlainCellOperator plain(mesh, 500.0, 0);
  plain.Collate();
  Point const &high = plain.boundMax, &low = plain.boundMin;
  ASSERT_EQ(1U, calls.ranges.size());
  std::array<double, 9> const expected = {high.x, high.y, high.z,  low.x,   low.y,
                                          low.z,  1.0,    10000.0, 200000.0};
  EXPECT_EQ(expected, calls.ranges[0].arguments);
  EXPECT_EQ(0, calls.ranges[0].boxesBefore);
}

TEST(CellOperatorTree, GetsItsRangeInsideOutForAMeshWithoutInnerFacesWallsAndInlets) {
  TreeCalls const calls = CallsOf(SevenPoints());
  ASSERT_EQ(1U, calls.ranges.size());
  std::array<double, 9> const expected = {-1e10, -1e10, -1e10, 1e10, 1e10, 1e10, 1.0, 10000.0, 200000.0};
  EXPECT_EQ(expected, calls.ranges[0].arguments);
  EXPECT_EQ(7U, calls.boxes.size());
}

TEST(CellOperatorTree, GetsTheBoxesKindByKindHighCornerFirst) {
  TestMesh const mesh = SomeMesh();
  TreeCalls const calls = CallsOf(mesh);

  std::vector<TreeCalls::Box> expected;
  auto const add = [&expected](int c, Point p) {
    double const d = 1e-6;
    expected.push_back({1, c, Corners{p.x + d, p.y + d, p.z + d, p.x - d, p.y - d, p.z - d}});
  };
  for (int c = 1; c <= mesh.nInnerCells; ++c) add(c, mesh.Centre(c));
  for (Face const& face : mesh.wall) add(face.other, face.centre);
  for (Face const& face : mesh.inlet) add(face.other, face.centre);
  for (Face const& face : mesh.outlet) add(face.other, face.centre);
  for (Face const& face : mesh.partition) add(face.other, mesh.Centre(face.other));

  ASSERT_EQ(expected.size(), calls.boxes.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].id, calls.boxes[i].id) << i;
    EXPECT_EQ(expected[i].corners, calls.boxes[i].corners) << i;
  }
}

TEST(CellOperatorTree, IsNotSearched) { EXPECT_TRUE(CallsOf(SomeMesh()).queries.empty()); }

TEST(CellOperatorTree, IsMadeByTheSetUpAndDestroyedWithTheOperator) {
  StartAnewWithoutAnswers();
  {
    CellBed bed(SevenPoints());
    EXPECT_EQ(0, Calls().constructed);
    bed.SetUp();
    EXPECT_EQ(1, Calls().constructed);
    EXPECT_EQ(0, Calls().destroyed);
  }
  EXPECT_EQ(1, Calls().destroyed);
}

}  // namespace
}  // namespace zyn_test

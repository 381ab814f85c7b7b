#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/AllocationCount.h"

// A set-up allocates for its tables and for the largest stencil, not for each point.

namespace zyn_test::point_allocations_test {
namespace {

std::vector<Point> RandomPoints(int n) {
  std::mt19937_64 random(8);
  std::uniform_real_distribution<double> anywhere(0.1, 2.9);
  std::vector<Point> points;
  for (int i = 0; i < n; ++i) points.push_back({anywhere(random), anywhere(random), anywhere(random)});
  return points;
}

long AllocationsOfSetUp(int nPoint, int method) {
  TestMesh const mesh = Hexahedra({});
  PointBed bed(mesh, PointSettings{50.0, method, 8});
  std::vector<Point> const points = RandomPoints(nPoint);
  long const before = Allocations() + LiveBlocks();
  bed.SetUp(InteriorUsable(mesh), points);
  return Allocations() + LiveBlocks() - before;
}

TEST(PointOperatorAllocations, DoNotGrowWithTheNumberOfPoints) {
  for (int const method : {1, 2, 3}) {
    AllocationsOfSetUp(10, method);  // what the C++ library keeps for good from the first use
    long const few = AllocationsOfSetUp(100, method), many = AllocationsOfSetUp(2000, method);
    EXPECT_LT(many - few, 100) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::point_allocations_test

#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// Memory may run out at every allocation of a set-up: the exception is the allocator's, the operator can be destroyed or
// set up again, and nothing stays behind.

namespace zyn_test::memory_exhaustion_test {
namespace {

using Object = CZynIBRBFInternalObject;

struct Case {
  Case(int method, PointHost& pointHost, TestMesh const& mesh)
      : host(pointHost), marks(InteriorUsable(mesh)), points({{1.1, 1.2, 1.3}, {0.5, 0.4, 1.5}}) {
    parameters.block.Span = 50;
    parameters.block.iSearch_method = method;
    parameters.block.Search_number = 8;
  }

  void Connect(Object& object) {
    PointBed::Connect(object, host);
    object.SetZYNKNCMP(&parameters);
  }

  void SetUp(Object& object) {
    object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                        points.z.Data());
  }

  PointHost& host;
  PointParameters parameters;
  Array marks;
  PointArrays points;
};

/// A set-up, the second one of the object if `second`, whose n-th allocation fails; if `again`, one that has all memory
/// after it. @return whether there were so many
bool SetUpWithAFailure(Case& c, long n, bool second, bool again) {
  long const live = LiveAllocations(), blocks = LiveBlocks();
  bool threw = false, happened = false;
  {
    std::optional<Object> object, fresh;
    object.emplace();
    c.Connect(*object);
    if (second) c.SetUp(*object);
    {
      FailingAllocation const failing(n);
      try {
        c.SetUp(*object);
      } catch (std::bad_alloc const&) {
        threw = true;
      }
      happened = failing.Happened();
    }
    EXPECT_EQ(threw, happened) << "allocation " << n;
    if (again) {
      c.SetUp(*object);
      fresh.emplace();
      c.Connect(*fresh);
      c.SetUp(*fresh);
      EXPECT_TRUE(SameContent(*fresh, *object)) << "after allocation " << n;
    }
  }
  EXPECT_EQ(live, LiveAllocations()) << "allocation " << n;
  EXPECT_EQ(blocks, LiveBlocks()) << "allocation " << n;
  return happened;
}

TEST(PointOperatorWithoutMemory, NoSetUpLeavesAnythingBehind) {
  TestMesh const mesh = Hexahedra({});
  SettingsFolder const folder;
  PointHost host(mesh, folder.BaseFileName());
  for (int const method : {1, 2, 3}) {
    Case c(method, host, mesh);
    testing::internal::CaptureStdout();
    SetUpWithAFailure(c, 0, true, true);  // what the C++ library keeps for good from the first use
    long n = 1;
    while (SetUpWithAFailure(c, n, n % 2 == 0, n % 4 < 2)) ++n;
    testing::internal::GetCapturedStdout();
    EXPECT_LT(30, n) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::memory_exhaustion_test

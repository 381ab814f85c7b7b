#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/AllocationCount.h"
#include "tests/support/watch/SettingsFolder.h"

// Memory may run out at every allocation of a set-up: the exception is the allocator's, the operator can be destroyed or
// set up again, and nothing stays behind.

namespace zyn_test::memory_exhaustion_test {
namespace {

using Object = CZynFaceRBFInternalObject;

struct Tables {
  explicit Tables(Object const& object)
      : conn(object.m_ppFaceCellConn),
        gradient(object.m_ppFaceGradCoef),
        value(object.m_ppFaceFiCoef),
        normal(object.m_ppFaceDnCoef) {}

  /// Gives back those that `object` has not got any more: a second set-up leaves the first one's results behind.
  void ReleaseLost(Object const& object) const {
    Object holder;
    if (conn != object.m_ppFaceCellConn) holder.m_ppFaceCellConn = conn;
    if (gradient != object.m_ppFaceGradCoef) holder.m_ppFaceGradCoef = gradient;
    if (value != object.m_ppFaceFiCoef) holder.m_ppFaceFiCoef = value;
    if (normal != object.m_ppFaceDnCoef) holder.m_ppFaceDnCoef = normal;
  }

  int** conn;
  IBCnode** gradient;
  double **value, **normal;
};

/// One set-up whose n-th allocation fails, and one that has all memory, of another group. @return whether there were so
/// many
bool SetUpWithAFailure(FaceHost& host, int method, long n, bool again) {
  long const live = LiveAllocations(), blocks = LiveBlocks();
  bool threw = false, happened = false;
  {
    std::optional<Object> object;
    object.emplace();
    Connect(*object, host.globals, host.mesh, host.partitionFaces);
    host.parameters.block.iSearch_method = method;
    object->SetZYNKNCMP(&host.parameters);
    {
      FailingAllocation const failing(n);
      try {
        object->Initialize_FaceInterpolateData(kOutlet);
      } catch (std::bad_alloc const&) {
        threw = true;
      }
      happened = failing.Happened();
    }
    EXPECT_EQ(threw, happened) << "allocation " << n;
    EXPECT_EQ(nullptr, object->m_pNodeTable) << "work tables end with the set-up, however it ends";
    EXPECT_TRUE(object->m_FaceX.Empty());
    if (again) {
      Tables const tables(*object);
      object->Initialize_FaceInterpolateData(kInner);
      EXPECT_LT(0, object->NFace);
      for (int i = 1; i <= object->NFace; ++i) EXPECT_LT(0, object->m_ppFaceCellConn[i][0]);
      tables.ReleaseLost(*object);
    }
  }
  EXPECT_EQ(live, LiveAllocations()) << "allocation " << n << ", method " << method;
  EXPECT_EQ(blocks, LiveBlocks()) << "allocation " << n << ", method " << method;
  return happened;
}

TEST(FaceOperatorWithoutMemory, NoSetUpLeavesAnythingBehind) {
  for (int const method : {1, 2, 3, 4}) {
    SettingsFolder const folder;
    FaceHost host(CubesOfAllGroups(), folder.BaseFileName());
    host.parameters.block.Span = 50;
    host.parameters.block.Search_number = 8;
    testing::internal::CaptureStdout();
    SetUpWithAFailure(host, method, 0, true);  // what the C++ library keeps for good from the first use
    long n = 1;
    while (SetUpWithAFailure(host, method, n, n % 4 == 0)) ++n;
    testing::internal::GetCapturedStdout();
    EXPECT_LT(40, n) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::memory_exhaustion_test

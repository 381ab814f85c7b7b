#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/watch/AllocationCount.h"

// Memory may run out at every allocation: the exception is the allocator's, the operator can be destroyed, and nothing
// stays behind.

namespace zyn_test::memory_exhaustion_test {
namespace {

/// The OpenMP runtime starts at the first loop. LLVM's holds a lock then, which it keeps for ever when an exception passes.
void StartOpenMP() {
  GradientHost host(ClosedBox({0, 1}, {0, 1}, {0, 1}));
  COperatorGradient gradient;
  Connect(gradient, host);
  int leastSquares = 1;
  gradient.getGradType(leastSquares);
  gradient.Initialize();
}

TEST(GradientWithoutMemory, NoSetUpLeavesAnythingBehind) {
  StartOpenMP();
  for (int type : {0, 1}) {
    long n = 0;
    for (bool happened = true; happened;) {
      ++n;
      long const live = LiveAllocations();
      bool threw = false;
      {
        GradientHost host(ClosedBox({0, 1, 2}, {0, 1, 2}, {0, 1, 2}));  // what it records is its own
        std::optional<COperatorGradient> gradient;
        FailingAllocation const failing(n);
        try {
          gradient.emplace();
          Connect(*gradient, host);
          gradient->getGradType(type);
          gradient->Initialize();
        } catch (std::bad_alloc const&) {
          threw = true;
        }
        happened = failing.Happened();
      }
      EXPECT_EQ(threw, happened) << "allocation " << n;
      EXPECT_EQ(live, LiveAllocations()) << "allocation " << n;
    }
    EXPECT_LT(type == 1 ? 10 : 1, n) << "the state, and nine arrays of cells for least squares";
  }
}

}  // namespace
}  // namespace zyn_test::memory_exhaustion_test

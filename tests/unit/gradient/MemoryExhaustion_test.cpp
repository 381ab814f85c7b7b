#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "tests/support/host/TestHost.h"
#include "tests/support/watch/AllocationCount.h"

// Memory may run out at every allocation: the exception is the allocator's, the operator can be destroyed, and nothing
// stays behind.

namespace gradient_test {
namespace {

/// The OpenMP runtime starts at the first loop. LLVM's holds a lock then, which it keeps for ever when an exception passes.
void StartOpenMP() {
  TestHost host(Box({0, 1}, {0, 1}, {0, 1}));
  COperatorGradient gradient;
  host.ConnectTo(gradient);
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
        TestHost host(Box({0, 1, 2}, {0, 1, 2}, {0, 1, 2}));  // what it records is its own
        std::optional<COperatorGradient> gradient;
        FailingAllocation const failing(n);
        try {
          gradient.emplace();
          host.ConnectTo(*gradient);
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
}  // namespace gradient_test

#pragma once

namespace zyn_test {

/// Allocations by operator new in this program so far, in any of its forms.
long Allocations();

/// Allocations by operator new that have not been given back.
long LiveAllocations();

/// Blocks of the library's large tables that have not been given back.
long LiveBlocks();

/// For its lifetime, the n-th allocation from now on, by operator new or of such a block, fails as if there were no
/// memory left for it.
class FailingAllocation {
 public:
  explicit FailingAllocation(long n);
  ~FailingAllocation();
  FailingAllocation(FailingAllocation const&) = delete;
  FailingAllocation& operator=(FailingAllocation const&) = delete;

  /// Whether there were so many.
  bool Happened() const;
};

}  // namespace zyn_test

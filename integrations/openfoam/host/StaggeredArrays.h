#pragma once

#include <cstddef>
#include <memory>

#include "host/LargePages.h"

namespace Foam {
namespace zyn {

/// Arrays of doubles of one length, in one block, without values to begin with.
///
/// A walk over faces reads the same element of several arrays at once. Arrays of their own begin at the same place of a
/// page, as large blocks of the allocator do, and so compete for the same few places of the cache. Here each begins five
/// cache lines further.
class StaggeredArrays {
 public:
  StaggeredArrays() = default;
  StaggeredArrays(int count, std::size_t size)
      : count_(count),
        stride_((size + kPage - 1) / kPage * kPage + kStagger),
        block_(new double[count * stride_]) {
    AdviseLargePages(block_.get(), count * stride_ * sizeof(double));
  }

  int count() const { return count_; }
  double* operator[](int i) { return block_.get() + i * stride_; }
  double const* operator[](int i) const { return block_.get() + i * stride_; }

 private:
  static constexpr std::size_t kPage = 512, kStagger = 40;  // doubles

  int count_ = 0;
  std::size_t stride_ = 0;
  std::unique_ptr<double[]> block_;
};

}  // namespace zyn
}  // namespace Foam

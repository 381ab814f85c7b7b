#pragma once

#include <cstddef>

namespace reference_host::test {

/// The most bytes from operator new that this process has had at once since the object was made, beyond what it had
/// then. What MPI takes for itself does not count.
class HeapPeak {
 public:
  HeapPeak();
  double Bytes() const;

 private:
  std::ptrdiff_t before_;
};

}  // namespace reference_host::test

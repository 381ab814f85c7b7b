#pragma once

#include <fenv.h>

namespace zyn_test {

/// For its lifetime, division by zero, invalid operations and overflow stop the program, as solvers have it that look
/// for their own errors: what runs meanwhile has none of them.
class ArmedTraps {
 public:
  ArmedTraps() {
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(kTraps);
  }
  ~ArmedTraps() {
    fedisableexcept(kTraps);
    feclearexcept(FE_ALL_EXCEPT);
  }
  ArmedTraps(ArmedTraps const&) = delete;
  ArmedTraps& operator=(ArmedTraps const&) = delete;

  /// Whether they are still set.
  bool StillArmed() const { return (fegetexcept() & kTraps) == kTraps; }

 private:
  static constexpr int kTraps = FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW;
};

}  // namespace zyn_test

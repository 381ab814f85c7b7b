#pragma once

#include <cfenv>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

/// As long as this lives, floating-point exceptions do not trap; afterwards they trap as they did before.
///
/// Solvers run with traps for division by zero, invalid operations and overflow to find their own errors. The
/// set-ups of the operators have results that are defined to be infinite or not a number (a mean over no faces,
/// the error of no points, a stencil without extent), and what a LAPACK does inside is its own affair. Neither may
/// stop the solver. A program without traps is left alone, so that it finds the flags raised as ever; where the C library
/// cannot tell whether there are traps, the flags raised meanwhile are lost.
///
/// What is computed meanwhile must be stored, or passed to a call that is not inlined, before the end: a compiler may move
/// arithmetic on local values past it.
class WithoutTraps {
 public:
  WithoutTraps() : held_(SomethingTraps() && std::feholdexcept(&environment_) == 0) {}
  ~WithoutTraps() {
    if (held_) std::fesetenv(&environment_);
  }
  WithoutTraps(WithoutTraps const&) = delete;
  WithoutTraps& operator=(WithoutTraps const&) = delete;

 private:
  static bool SomethingTraps() {
#if defined(__GLIBC__)
#if defined(__SSE__)
    constexpr unsigned kMasks =
        0x1f80;  // a bit that is not set is a trap; fegetexcept asks the x87 unit alone
    if ((~_mm_getcsr() & kMasks) != 0) return true;
#endif
    return fegetexcept() != 0;
#else
    return true;
#endif
  }

  std::fenv_t environment_;
  bool held_;
};

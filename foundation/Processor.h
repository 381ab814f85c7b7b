#pragma once

/// @file
/// Which instructions beyond those that the library is compiled for the processor has. Code for such instructions stands
/// beside code without, takes the same operations in the same order, and so gives the same bits.
///
/// A function for AVX2 is marked `ZYN_TARGET_AVX2`, so that its file needs no compiler flags; ZYN_HAS_TARGETS says
/// whether this compiler and this architecture have such functions.

#if defined(__GNUC__) && defined(__x86_64__)
#define ZYN_HAS_TARGETS 1
#define ZYN_TARGET_AVX2 __attribute__((target("avx2")))
#define ZYN_TARGET_FMA __attribute__((target("fma")))
#define ZYN_TARGET_AVX2_FMA __attribute__((target("avx2,fma")))
#else
#define ZYN_HAS_TARGETS 0
#endif

namespace processor {

bool HasAvx2();
bool HasFma();

/// As long as this lives, the processor is taken for one without such instructions: for tests, which compare the results
/// of either code.
class TakenForPlain {
 public:
  TakenForPlain();
  ~TakenForPlain();
  TakenForPlain(TakenForPlain const&) = delete;
  TakenForPlain& operator=(TakenForPlain const&) = delete;
};

}  // namespace processor

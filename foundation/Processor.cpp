#include "foundation/Processor.h"

namespace processor {
namespace {

int g_takenForPlain = 0;

}  // namespace

#if ZYN_HAS_TARGETS
bool HasAvx2() { return g_takenForPlain == 0 && __builtin_cpu_supports("avx2") != 0; }
bool HasFma() { return g_takenForPlain == 0 && __builtin_cpu_supports("fma") != 0; }
#else
bool HasAvx2() { return false; }
bool HasFma() { return false; }
#endif

TakenForPlain::TakenForPlain() { ++g_takenForPlain; }
TakenForPlain::~TakenForPlain() { --g_takenForPlain; }

}  // namespace processor

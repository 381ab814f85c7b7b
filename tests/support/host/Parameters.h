#pragma once

#include <functional>
#include <type_traits>

#include "host/ZYNKNCompParm.h"

namespace zyn_test {

/// The solver's parameters with one block of them, for faces or for points; there is none of the other. Counts how
/// often the block is asked for.
template <typename Block>
class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return Lend<CZYNCMP_FaceRBF_Parm>(); }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return Lend<CZYNCMP_IBRBF_Parm>(); }

  Block block;
  int calls = 0;
  std::function<void()> onCall;  ///< may be empty

 private:
  template <typename Asked>
  Asked* Lend() {
    if constexpr (std::is_same_v<Asked, Block>) {
      ++calls;
      if (onCall) onCall();
      return &block;
    } else {
      return nullptr;
    }
  }
};

using FaceParameters = Parameters<CZYNCMP_FaceRBF_Parm>;
using PointParameters = Parameters<CZYNCMP_IBRBF_Parm>;

}  // namespace zyn_test

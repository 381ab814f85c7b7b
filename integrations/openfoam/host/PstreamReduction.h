#pragma once

#include "PstreamReduceOps.H"
#include "host/ZYNCom.h"

namespace Foam {
namespace zyn {

/// The minimum over all processes, by OpenFOAM's own communication.
class PstreamReduction : public CZYNCom {
 public:
  int AllMin(int& value) override {
    label minimum = value;
    reduce(minimum, minOp<label>());
    value = static_cast<int>(minimum);
    return 1;
  }
};

}  // namespace zyn
}  // namespace Foam

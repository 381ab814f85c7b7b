#include "sampling/WeightSums.h"

#include "PstreamReduceOps.H"
#include "messageStream.H"

namespace Foam {
namespace zyn {

void WarnOfWeights(word const& name, double error) {
  constexpr double kMostError = 1e-3;
  reduce(error, maxOp<double>());
  if (error <= kMostError) return;
  WarningInFunction << "The weights of a value of " << name << " sum to 1 only within " << error
                    << ": the value is poor. Try another span or number" << endl;
}

}  // namespace zyn
}  // namespace Foam

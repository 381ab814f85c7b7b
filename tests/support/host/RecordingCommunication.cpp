#include "tests/support/host/RecordingCommunication.h"

namespace gradient_test {

std::vector<ExchangeCall> ThreeArrayExchange(bool nonBlocking, double const* x, double const* y,
                                             double const* z) {
  using Operation = ExchangeOperation;
  if (!nonBlocking)
    return {{Operation::Blocking, x, -1}, {Operation::Blocking, y, -1}, {Operation::Blocking, z, -1}};
  return {{Operation::Start, x, 0}, {Operation::Start, y, 1}, {Operation::Start, z, 2},
          {Operation::Wait, x, 0},  {Operation::Wait, y, 1},  {Operation::Wait, z, 2}};
}

}  // namespace gradient_test

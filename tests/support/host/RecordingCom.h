#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "host/ZYNCom.h"

namespace zyn_test {

/// A reduction that writes down what it was given and plays the other partitions: they contribute
/// `othersMinimum`.
class RecordingCom : public CZYNCom {
 public:
  int AllMin(int& value) override {
    values.push_back(value);
    if (onCall) onCall();
    value = std::min(value, othersMinimum);
    return result;
  }

  std::vector<int> values;       ///< `value` at each call, before the reduction
  std::function<void()> onCall;  ///< run within each call, may be empty
  int othersMinimum = std::numeric_limits<int>::max();
  int result = 0;  ///< what AllMin returns
};

}  // namespace zyn_test

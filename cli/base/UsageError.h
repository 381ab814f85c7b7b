#pragma once

#include <stdexcept>

namespace zyngrad {

/// Says in one line what is wrong with the user's input; names the option, place or value. Ends the program with
/// exit code 2. In parallel, every rank throws it with the same text (see Ranks::Together).
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace zyngrad

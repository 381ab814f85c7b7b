#pragma once

#include <string>

#include "cli/base/UsageError.h"

namespace zyngrad {

/// An error on which all ranks of a communicator agree: each of them throws it with the same text.
class AgreedError : public UsageError {
 public:
  AgreedError(std::string const& what, int rankCount) : UsageError(what), rankCount_(rankCount) {}

  int rankCount() const { return rankCount_; }  ///< of the communicator

 private:
  int rankCount_;
};

}  // namespace zyngrad

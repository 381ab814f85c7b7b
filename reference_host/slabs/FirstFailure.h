#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// What is wrong with a mesh of which each rank sees a share. Reading the whole from front to back would find the failure
/// of the lowest place, so that is the one that is reported.
class FirstFailure {
 public:
  void Note(std::int64_t place, std::string const& text) {
    if (place >= place_) return;
    place_ = place;
    text_ = text;
  }

  /// Collective. Throws MeshError with the same text on every rank if any rank has noted a failure.
  void ThrowIfAny(MpiCommunicator const& communicator) const;

 private:
  static constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();

  std::int64_t place_ = kNone;
  std::string text_;
};

}  // namespace reference_host

#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "cli/check/CheckedSystem.h"

namespace zyngrad {

constexpr char const* kNowhere = "/dev/null";

/// The number of systems with a finding.
inline int Count(std::vector<CheckedSystem> const& systems, std::uint32_t finding) {
  return static_cast<int>(std::count_if(systems.begin(), systems.end(), [finding](CheckedSystem const& s) {
    return (s.findings & finding) != 0;
  }));
}

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/options/RadialBasisSettings.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. What a user has to know about the radial-basis gradient on this mesh, a line each, the same on
/// every rank: the cells beside symmetry faces, whose side cells the operator leaves at the origin, and the
/// scale of the shape-normalised form.
std::vector<std::string> RadialBasisRemarks(Ranks const& ranks, reference_host::HostPartition& partition,
                                            RadialBasisSettings const& settings);

}  // namespace zyngrad

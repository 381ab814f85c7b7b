#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/options/RadialBasisSettings.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Collective. What you have to know about the radial-basis gradient on this mesh, one line each and the same on
/// every rank: how many cells are beside symmetry faces, whose ghost cells the operator leaves at the origin; and the
/// scale of the shape-normalised form.
std::vector<std::string> RadialBasisRemarks(Ranks const& ranks, reference_host::HostPartition& partition,
                                            RadialBasisSettings const& settings);

}  // namespace zyngrad

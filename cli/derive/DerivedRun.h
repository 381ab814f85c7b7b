#pragma once

#include <vector>

#include "cli/derive/DerivedReport.h"
#include "cli/gradient/GradientRun.h"

namespace zyngrad {

/// Collective. Computes the quantities of each vector field of the case from the gradients of each method that ran.
/// @param[in] results  of the methods, with their arrays
std::vector<DerivedOfField> DeriveFromGradients(Ranks const& ranks, reference_host::HostPartition& partition,
                                                std::vector<Quantity const*> const& quantities,
                                                GradientCase const& theCase,
                                                std::vector<MethodResult> const& results);

/// The quantities as arrays for viewers, "vorticity_U_lsq", and with exact values "exact_vorticity_U" and
/// "error_vorticity_U_lsq". The gradient itself is not among them: the gradients of the methods are that.
std::vector<VtkArray> DerivedArrays(std::vector<DerivedOfField> const& derived);

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

#include "cli/FaceGroup.h"
#include "cli/FaceRun.h"
#include "cli/OutputFolder.h"
#include "cli/Ranks.h"
#include "reference_host/HostPartition.h"

namespace zyngrad {

/// The names of all files that StageFaces stages on all ranks.
std::vector<std::string> FacesFiles(Ranks const& ranks);

/// Collective. Stages the faces as polygons with value, exact value and error (their difference): faces.vtp
/// on one rank, faces.pvtp and a piece per rank in faces/ on several.
/// @return the name of the file to open
std::string StageFaces(Ranks const& ranks, reference_host::HostPartition& partition,
                       FacesOfGroup const& faces, FaceRows const& rows, std::vector<double> const& exact,
                       OutputFolder& folder);

}  // namespace zyngrad

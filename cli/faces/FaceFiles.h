#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/faces/FaceRun.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The names of all files that StageFaces stages on all ranks.
std::vector<std::string> FacesFiles(Ranks const& ranks);

/// Collective. Stages the faces as polygons with value, exact value and error (their difference): faces.vtp
/// on one rank; faces.pvtp and one piece per rank in faces/ on several ranks.
/// @return the name of the file to open
std::string StageFaces(Ranks const& ranks, reference_host::HostPartition& partition,
                       TargetedFaces const& faces, FaceRows const& rows, std::vector<double> const& exact,
                       OutputFolder& folder);

}  // namespace zyngrad

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/faces/FaceRun.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/output/OutputFolder.h"
#include "cli/vtk/SeriesFiles.h"
#include "cli/vtk/VtkXml.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The files of the faces: faces.vtp on one rank; faces.pvtp and one piece per rank in faces/ on several ranks. For
/// several times, faces_TIME.vtp for each and faces.pvd.
/// @param[in] times  a single one may be empty
SeriesFiles FacesFiles(Ranks const& ranks, std::vector<std::string> const& times);

/// The values of a formula, exact and error (their difference).
/// @param[in] value, exact  [1..count]
std::vector<VtkArray> FormulaArrays(std::vector<double> const& value, std::vector<double> const& exact);

/// The values of a field from a file: a scalar, or a vector.
/// @param[in] components  1 or 3, [1..count] each
VtkArray FieldArray(std::string const& name, std::vector<std::vector<double>> const& components);

/// Collective. Stages the faces of one time as polygons with these arrays, and what the operator says of each face.
void StageFaces(Ranks const& ranks, reference_host::HostPartition& partition, TargetedFaces const& faces,
                FaceRows const& rows, std::vector<VtkArray> arrays, PieceFiles const& files,
                OutputFolder& folder);

}  // namespace zyngrad

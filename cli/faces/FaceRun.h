#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/base/TextTable.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// The results of interpolation to the faces of one group on this rank, [1..count of the group] each.
struct FaceRows {
  std::vector<double> value;   ///< on the face, U
  std::vector<double> rowSum;  ///< sum of the weights; not finite if one of them is not
  std::vector<int> members;    ///< cells in the stencil
};

/// Each time is that of the slowest rank; all ranks begin a call together.
struct FaceTimes {
  double setUp = 0.0;      ///< seconds
  double first = 0.0;      ///< first application, seconds
  double later = 0.0;      ///< median of the applications after it, seconds
  double usPerFace = 0.0;  ///< set-up of a rank, per face of its own
  double nsPerFace = 0.0;  ///< a rank's median of the later applications, per face of its own
};

struct FaceRun {
  FaceRows rows;
  FaceTimes times;
};

/// Collective. Sets up the operator for the group, with the settings beside the partition's base file name, and
/// applies it to the field.
/// @param[in] field    [1..NCell]; only read, although the operator takes it without const
/// @param[in] logFile  receives what the operator prints on this rank
FaceRun RunFaces(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
                 std::vector<double>& field, std::string const& logFile);

/// Collective. @return [1..count] the formula at the faces' targets. Throws UsageError that names the place where
/// the formula is not finite.
/// @param[in] placeDigits  from PlaceDigits
std::vector<double> ExactFaceValues(Ranks const& ranks, TargetedFaces const& faces, FaceKind group,
                                    Expression const& expression, int placeDigits = kPlaceDigits);

}  // namespace zyngrad

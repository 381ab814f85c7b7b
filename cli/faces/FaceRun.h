#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/base/TextTable.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// What interpolation to the faces of one group gave on this rank, [1..count of the group] each.
struct FaceRows {
  std::vector<double> value;   ///< on the face, U
  std::vector<double> rowSum;  ///< of the weights; not finite if one of them is not
  std::vector<int> members;    ///< cells in the stencil
};

/// Of the slowest rank each; all calls begin together.
struct FaceTimes {
  double setUp = 0.0;      ///< seconds
  double first = 0.0;      ///< first application, seconds
  double later = 0.0;      ///< median of the applications after it, seconds
  double usPerFace = 0.0;  ///< set-up of a rank over its own faces
  double nsPerFace = 0.0;  ///< a rank's median of the later applications over its own faces
};

struct FaceRun {
  FaceRows rows;
  FaceTimes times;
};

/// Collective. Sets the operator up for the group, with the settings of the partition's base file name, and
/// applies it to the field.
/// @param[in] field    [1..NCell]; the operator takes it without const and only reads it
/// @param[in] logFile  takes what the operator prints on this rank
FaceRun RunFaces(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
                 std::vector<double>& field, std::string const& logFile);

/// Collective. [1..count] the formula at the faces' targets. Throws UsageError naming the place where it is
/// not finite.
/// @param[in] placeDigits  from PlaceDigits
std::vector<double> ExactFaceValues(Ranks const& ranks, TargetedFaces const& faces, FaceKind group,
                                    Expression const& expression, int placeDigits = kPlaceDigits);

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/base/TextTable.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
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

/// The operator for the faces of one group. It is set up once and applied to one field after the other.
class FaceOperator {
 public:
  /// Collective. Sets up the operator, with the settings beside the partition's base file name.
  /// @param[in] logFile  receives what the operator prints on this rank
  FaceOperator(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group, std::string logFile);
  FaceOperator(FaceOperator const&) = delete;
  FaceOperator& operator=(FaceOperator const&) = delete;

  /// Collective. @return [1..count of the group] the values on the faces, U. The first field is interpolated four times
  /// to time it.
  /// @param[in] field  [1..NCell]; only read, although the operator takes it without const
  std::vector<double> Apply(std::vector<double>& field);

  /// Sums of weights and stencils, without values.
  FaceRows const& rows() const { return rows_; }
  /// @pre Apply
  FaceTimes const& times() const { return times_; }

 private:
  Ranks const& ranks_;
  std::string logFile_;
  CZynFaceRBFInternalObject op_;
  FaceRows rows_;
  FaceTimes times_;
  double setUpSeconds_ = 0.0;  ///< of this rank
  bool isFirst_ = true;
};

/// Collective. A FaceOperator for one field.
FaceRun RunFaces(Ranks const& ranks, reference_host::LoadedMesh& mesh, FaceKind group,
                 std::vector<double>& field, std::string const& logFile);

/// Collective. @return [1..count] the formula at the faces' targets. Throws UsageError that names the place where
/// the formula is not finite.
/// @param[in] placeDigits  from PlaceDigits
std::vector<double> ExactFaceValues(Ranks const& ranks, TargetedFaces const& faces, FaceKind group,
                                    Expression const& expression, int placeDigits = kPlaceDigits);

}  // namespace zyngrad

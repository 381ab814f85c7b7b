#pragma once

#include <memory>
#include <vector>

#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "sampling/PointSampler.h"
#include "sampling/RadialBasisSettings.h"
#include "sampling/SamplingMesh.h"

namespace Foam {
namespace zyn {

/// Values of fields at faces of the mesh, each from the cells around it.
///
/// The operator of faces serves all inner or all uncoupled boundary faces at once, whichever are asked for. Faces of
/// coupled patches are points for it, by the same method if that is 1 or 2, and by method 2 otherwise: the value that
/// the operator of faces has for them is that of the halo cell.
class FaceSampler {
 public:
  /// @param mesh   borrowed; must outlive the object
  /// @param faces  numbers of faces of the mesh of this process; none on a patch of type empty
  FaceSampler(SamplingMesh& mesh, UList<label> const& faces, RadialBasisSettings const& settings);

  /// @param[out] values  one for each face, overwritten: of a component of the field that `mesh` was filled with
  void Sample(direction component, std::vector<double>& values);

  /// How far the sum of a face's weights is from 1, at most; infinite if one is not a number.
  double LargestErrorOfOne() const;

 private:
  enum Group { kInner, kWall, kCoupled };
  static constexpr int kOperators = 2;

  struct Place {
    Group group;
    int number;  ///< of the face in the group, from 1
  };

  Place PlaceOf(label face) const;
  void SetUp(Group group, int nFaces);

  SamplingMesh& mesh_;
  LentSettings settings_;
  std::vector<Place> places_;
  CZynFaceRBFInternalObject operators_[kOperators];  // of inner and of wall faces
  std::vector<double> values_[kOperators];           // [1..faces of the operator]
  std::vector<double> cleared_;  // the operator also clears three arrays, here one for all
  std::unique_ptr<PointSampler> coupled_;
};

}  // namespace zyn
}  // namespace Foam

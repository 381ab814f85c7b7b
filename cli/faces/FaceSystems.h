#pragma once

#include <vector>

#include "cli/faces/TargetedFaces.h"
#include "cli/options/InterpolationOptions.h"
#include "foundation/DQVector.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The systems behind the interpolation to the faces of a group. The operator is set up step by step as far as its
/// stencils, so that its work tables are still there; what it prints goes to standard output.
class FaceSystems {
 public:
  FaceSystems(reference_host::HostPartition& partition, FaceKind group,
              InterpolationSettings const& settings);
  ~FaceSystems();
  FaceSystems(FaceSystems const&) = delete;
  FaceSystems& operator=(FaceSystems const&) = delete;

  CZynFaceRBFInternalObject& op() { return op_; }
  TargetedFaces const& faces() const { return faces_; }
  bool isByNormal() const;  ///< search method 4, whose faces have a system on each side instead of one

  /// Nodes of the system of face f in 1..faces().count: the cells of its stencil; by vertices the face's two cells and
  /// its vertices.
  std::vector<DQVector> NodesOf(int f) const;
  double ConditionOf(int f) const;

  /// The system of a point on the normal of a face.
  struct Side {
    std::vector<DQVector> nodes;
    bool hasTwins = false;   ///< cells that the operator drops for another one at the same place
    double condition = 0.0;  ///< estimate, see ConditionEstimate
  };
  enum SideNumber { kP = 1, kE = 2 };
  Side SideOf(int f, SideNumber side) const;

 private:
  DQVector PointOf(int cell) const;

  CZYN3DFiniteVolumeMesh const& mesh_;
  TargetedFaces faces_;
  CZynFaceRBFInternalObject op_;
};

}  // namespace zyngrad

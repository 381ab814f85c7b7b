#pragma once

#include <vector>

#include "cli/faces/TargetedFaces.h"
#include "cli/options/InterpolationOptions.h"
#include "foundation/DQVector.h"
#include "foundation/KernelSystem.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The systems behind the interpolation to the faces of a group, with the nodes and matrices that the operator itself
/// solves. The operator is set up as far as its stencils, so that its work tables are still there. What it prints
/// goes to standard output.
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

  /// Nodes of the system of face f in 1..faces().count, in the operator's order: the cells of its stencil; with
  /// search method 3 the face's two cells and its vertices. L. @pre not isByNormal()
  std::vector<DQVector> NodesOf(int f) const;
  double ConditionOf(int f) const;  ///< of that system, an estimate: see ConditionEstimate

  /// The system of one of the two points on the normal of a face.
  struct Side {
    std::vector<DQVector> nodes;
    bool hasTwins = false;   ///< whether the operator dropped a cell for another one at the same place
    double condition = 0.0;  ///< an estimate: see ConditionEstimate
  };
  enum SideNumber { kP = 1, kE = 2 };
  Side SideOf(int f, SideNumber side) const;  ///< @pre isByNormal()

 private:
  KernelSystem SystemOf(int f) const;

  TargetedFaces faces_;
  CZynFaceRBFInternalObject op_;
};

}  // namespace zyngrad

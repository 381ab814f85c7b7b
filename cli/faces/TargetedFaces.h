#pragma once

#include <array>
#include <optional>
#include <string>

#include "foundation/FaceGroups.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// "inner", "wall", ...
std::string NameOf(FaceKind kind);

/// The kind of that name; empty for anything else.
std::optional<FaceKind> FaceKindFromName(std::string const& name);

/// "inner, wall, inlet, outlet, partition or symmetry", for messages.
std::string FaceKindNames();

/// A group of faces, and where the operator for faces puts the value of each: at the face's centre, for a partition
/// face at the centre of its halo cell. Borrows the lent records.
struct TargetedFaces : FaceGroup {
  std::array<double const*, 3> target = {};  ///< by face, for partition faces by cell

  double Area(int f) const;
  std::array<double, 3> Target(int f) const;
};

TargetedFaces TargetedFacesOf(reference_host::HostPartition& partition, FaceKind kind);

}  // namespace zyngrad

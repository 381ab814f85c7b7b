#pragma once

#include <array>
#include <optional>
#include <string>

#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The groups of faces, numbered as the operator for faces wants them.
enum class FaceGroup { Inner = 1, Wall = 2, Inlet = 3, Outlet = 4, Partition = 5, Symmetry = 6 };

/// "inner", "wall", ...
std::string NameOf(FaceGroup group);

/// The group of that name; empty for anything else.
std::optional<FaceGroup> FaceGroupFromName(std::string const& name);

/// "inner, wall, inlet, outlet, partition or symmetry", for messages.
std::string FaceGroupNames();

/// Whether it is wall, inlet, outlet or symmetry.
bool IsBoundary(FaceGroup group);

/// One group of one partition, [1..count]; borrows the lent records.
struct FacesOfGroup {
  int count = 0;
  int const* cell = nullptr;               ///< interior cell
  int const* other = nullptr;              ///< cell on the other side: interior, ghost or halo cell
  std::array<double const*, 3> area = {};  ///< area vector, L^2
  /// Where the operator gives a face its value: the face's centre, for partition faces the centre of the
  /// halo cell.
  std::array<double const*, 3> target = {};
  bool targetsAreCells = false;  ///< `target` is by cell, at other[f], instead of by face
  int** nodes = nullptr;         ///< ragged rows

  double Area(int f) const;
  std::array<double, 3> Target(int f) const;
};

FacesOfGroup FacesOf(reference_host::HostPartition& partition, FaceGroup group);

}  // namespace zyngrad

#pragma once

#include <iosfwd>
#include <string>

namespace host_check {

/// What CheckHostData looks at and how strictly. The switches must be the same on all partitions.
struct HostCheckOptions {
  int maxPerKind = 5;  ///< so many breaches of a kind are told one by one, the others only counted

  /// Each breach is written here when it is found, a line each: it is then seen even if a later step, such as
  /// an exchange, does not come back. Borrowed; null: only the report gets them.
  std::ostream* log = nullptr;
  std::string label;  ///< begins each line of `log`, for example "partition 3: "

  /// CellCell, CellFace, CellFaceType. A solver that uses no radial-basis operator may leave them out.
  bool cellRows = true;
  /// Nodes, face nodes, CellLnods and NodeCell. A solver that uses no interpolation to faces or points may
  /// leave them out.
  bool nodeTables = true;
  /// AllMin and the exchanges, which are collective.
  bool communication = true;
  /// DDM_IExch_Start and DDM_IExch_Wait, as a part of `communication`.
  bool nonBlocking = true;

  double closureTolerance = 1e-6;   ///< |sum of a cell's area vectors| over the sum of their lengths
  double positionTolerance = 1e-6;  ///< of positions that must agree, over the distance of the cells
  /// How far a face centre may lie outside the hull of its nodes, over the hull's width in that direction, and
  /// a cell centre outside the box of its nodes or its faces. The usual centres lie inside.
  double centreTolerance = 0.05;
  double areaTolerance = 0.05;  ///< of a face's area against the one its nodes span, over the larger
  /// Of a cell's volume against the one that its faces enclose, over the larger: definitions of centres and
  /// volumes differ where faces are warped.
  double volumeTolerance = 0.15;
  /// Of the factor between volumes that is common to the cells: there the differences of single cells even out.
  double commonVolumeTolerance = 0.03;
};

}  // namespace host_check

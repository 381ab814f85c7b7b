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
  /// How far outside the box of its nodes a face or cell centre may lie, over the box's diagonal. Wide, since
  /// the centre of a strongly warped thin face is not bound to lie between its nodes.
  double centreTolerance = 1.0;
  double volumeTolerance = 0.5;  ///< of a volume against the one that the faces enclose, over the larger
};

}  // namespace host_check

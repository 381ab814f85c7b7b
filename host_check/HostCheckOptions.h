#pragma once

#include <iosfwd>
#include <string>

namespace host_check {

/// What CheckHostData checks, and how strictly. The switches must be the same on all partitions.
struct HostCheckOptions {
  int maxPerKind = 5;  ///< up to this many breaches of a kind are reported one by one; the others are counted

  /// Each breach is written here as soon as it is found, one line each: you see it even if a later step, such
  /// as an exchange, never returns. Borrowed; null: only the report gets them.
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
  /// Halo cells may hold weighted means of several cells' values, as they do beyond a non-conforming interface.
  /// Otherwise each must hold a copy of one cell's value.
  bool interpolatedHalo = false;

  double closureTolerance = 1e-6;   ///< |sum of a cell's area vectors| over the sum of their lengths
  double positionTolerance = 1e-6;  ///< of positions that must agree, over the distance of the cells
  /// How far a face centre may lie outside the hull of its nodes, as a fraction of the hull's width in that
  /// direction, and a cell centre outside its faces or the bounding box of its nodes. The usual centres lie
  /// inside.
  double centreTolerance = 0.05;
  double areaTolerance = 0.05;  ///< of a face's area against the one its nodes span, over the larger
  /// Largest difference between a cell's volume and the one that its faces enclose, as a fraction of the
  /// larger: definitions of centres and volumes differ for warped faces.
  double volumeTolerance = 0.15;
  /// The same for the factor that is common to all volumes, where the differences of single cells average
  /// out.
  double commonVolumeTolerance = 0.03;
};

}  // namespace host_check

#pragma once

namespace host_check {

/// The ways in which a host can break its contract. NameOf() gives the name that messages begin with;
/// docs/use/porting.md explains each under that name.
enum class HostBreach {
  // objects, counts and arrays
  MissingObject,
  BadCount,
  MissingArray,
  MissingRow,
  ArraysOverlap,
  BadFileName,
  // faces and their cells
  IndexOutOfRange,
  FaceOnOneCell,
  GhostNamedTwice,
  // geometry
  NotFinite,
  ZeroArea,
  AreaWrongWay,
  GhostNotBeyondFace,
  GhostBesideFace,
  FaceCentreAway,
  AreaDisagrees,
  CellNotClosed,
  BadVolume,
  VolumeDisagrees,
  CellCentreAway,
  WeightOutOfRange,
  WeightOfOtherSide,
  WeightAway,
  // tables of cells and nodes
  RowLength,
  RowEntryMissing,
  RowEntryExtra,
  RowEntryTwice,
  UnknownFaceCode,
  GroupInNoRow,
  FewFaceNodes,
  NodesSpanNoPlane,
  NodesOffPlane,
  FaceNodeNotInCell,
  // communication
  MinimumWrong,
  MinimumDiffers,
  ExchangeChoiceDiffers,
  HaloNotFilled,
  HaloFromElsewhere,
  HaloIsMean,
  HaloLosesConstant,
  ExchangeChangesInterior,
  ExchangeChangesGhost,
  ExchangeOutsideCells,
  NonBlockingEarly,
  NonBlockingMixed,
  NonBlockingDiffers,
};

constexpr int kHostBreaches = static_cast<int>(HostBreach::NonBlockingDiffers) + 1;

/// For example "area-wrong-way".
char const* NameOf(HostBreach breach);

}  // namespace host_check

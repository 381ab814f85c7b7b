#pragma once

namespace zyn_test {

/// Which arrays of a group of faces are lent besides the two cells of each face.
struct GroupReads {
  bool areas = false, centres = false, nodes = false;
  bool weights = false;  ///< with the types
};

constexpr GroupReads kAllOfAGroup = {true, true, true, true};

/// What an operator reads of the mesh. A host lends this and leaves all else null, as a solver may, so that whoever
/// reads more crashes.
struct Reads {
  GroupReads inner, boundary, partition;
  bool volumes = false, nodePoints = false;
  bool neighbours = false;  ///< CellCell
  bool cellNodes = false;   ///< CellLnods and their numbers
  bool cellFaces = false;   ///< CellFace and CellFaceType
  bool nodeCells = false;   ///< NodeCell
};

constexpr Reads ReadByGreenGaussAndLeastSquares() {
  Reads reads;
  reads.inner.areas = reads.inner.centres = reads.inner.weights = true;
  reads.boundary.areas = true;
  reads.partition = reads.inner;
  reads.volumes = true;
  return reads;
}

constexpr Reads ReadByTheCellOperator() {
  Reads reads;
  reads.inner.areas = reads.inner.centres = true;
  reads.boundary.centres = true;
  reads.partition.centres = reads.partition.nodes = true;
  reads.neighbours = reads.nodeCells = true;
  return reads;
}

constexpr Reads ReadByTheFaceOperator() {
  Reads reads;
  reads.inner.areas = reads.inner.centres = reads.inner.nodes = true;
  reads.boundary = reads.inner;
  reads.partition.areas = reads.partition.nodes = true;
  reads.nodePoints = reads.cellNodes = reads.cellFaces = reads.nodeCells = true;
  return reads;
}

constexpr Reads ReadByThePointOperator() {
  Reads reads;
  reads.boundary.centres = reads.boundary.nodes = true;
  reads.partition = reads.boundary;
  reads.nodePoints = reads.cellNodes = reads.nodeCells = true;
  return reads;
}

}  // namespace zyn_test

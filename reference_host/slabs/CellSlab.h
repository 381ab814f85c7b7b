#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/mesh/CellShapes.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// One rank's share of a mesh of standard cells as a file gives it: a block of the nodes, of the cells and of the surface
/// elements. Numbers count from 0 in the order of the file.
struct CellSlab {
  BlockRanges nodes, cells;

  std::vector<Point> points;  ///< of the own block; not all nodes need be used by cells

  std::vector<CellShape> shape;  ///< of the own block of cells
  std::vector<std::int64_t>
      node;  ///< the nodes of cell after cell, NodeCount(shape) each, in the order of the shape

  /// Own surface elements; node[3] = -1: a triangle. If several lie on a boundary face, the first counts, with those of
  /// lower ranks first.
  std::vector<std::array<std::int64_t, 4>> surface;
  std::vector<std::int64_t>
      label;  ///< by own surface element: what SurfaceOfFace tells about it; not negative

  std::function<std::int64_t(std::int64_t)> nodeNumber;  ///< for own nodes, see SlabNames
  std::function<std::string(std::int64_t)> nameOfCell;   ///< for own cells, see SlabNames
};

/// The mesh of a CellSlab.
struct JoinedSlab {
  MeshSlab mesh;  ///< without patches; facePatch is -1 everywhere
  /// by own face: the label of the surface element on it; -1: none, or not at the boundary
  std::vector<std::int64_t> labelOfFace;
  /// The own block of the file's nodes, by place: their numbers in the mesh; -1: no cell uses the node
  std::vector<std::int64_t> numberOfNode;
};

/// Collective. Makes of standard cells what FaceMeshBuilder makes of the whole: the same cells, faces, nodes, in the
/// same order, and the same messages. A face is on the rank that has its owner.
/// @param[in] meshName  what messages begin with, such as the file
/// @throws MeshError  with the same text on every rank
JoinedSlab JoinCells(MpiCommunicator const& communicator, std::string const& meshName, CellSlab&& slab);

}  // namespace reference_host

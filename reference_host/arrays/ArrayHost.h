#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "host/Zyn3dGV.h"

namespace reference_host {

/// Three coordinates of places or vectors, an array each, borrowed.
struct Coordinates {
  double const *x = nullptr, *y = nullptr, *z = nullptr;
};

/// Faces of one group as a solver stores them: arrays from 0, cells counted from 0, all borrowed.
struct ArrayFaces {
  int count = 0;
  int const* owner = nullptr;  ///< [0..count-1] interior cell that the area vector points out of
  Coordinates area;            ///< [0..count-1] L^2
  Coordinates centre;          ///< [0..count-1] L

  /// Face f has the nodes node[nodeStart[f]] .. node[nodeStart[f+1] - 1], in order around it; null if there are no nodes.
  int const* nodeStart = nullptr;
  int const* node = nullptr;
};

/// A partition of a mesh as a solver stores it: faces with an owner and a neighbour.
///
/// Cells are numbered from 0: interior cells, then one ghost cell for each boundary face by group (inlets, outlets,
/// symmetry planes, walls), then the halo cells, then the ghost cells of the empty faces. Fields for the operators are
/// numbered in this way, too.
struct ArrayMesh {
  int nCells = 0;  ///< interior cells
  int nHaloCells = 0;

  /// [0..all cells-1] cell centres; of a ghost cell, the point where the boundary value holds. L
  Coordinates centre;
  double const* volume = nullptr;  ///< [0..nCells-1] L^3

  ArrayFaces inner;
  int const* neighbour = nullptr;  ///< [0..inner.count-1] interior cell on the other side
  double const* neighbourWeight =
      nullptr;  ///< [0..inner.count-1] w in phi_f = (1 - w) phi_owner + w phi_neighbour

  ArrayFaces inlet, outlet, symmetry, wall;

  /// The last faces of `wall` that belong to a mesh of one layer of cells, across which nothing varies. Least squares
  /// needs their ghost cells; Green-Gauss leaves them out.
  int nEmptyFaces = 0;

  ArrayFaces partition;
  int const* haloCell = nullptr;  ///< [0..partition.count-1] 0..nHaloCells-1; null: face i has halo cell i
  double const* haloWeight = nullptr;  ///< [0..partition.count-1] w of the halo cell, like neighbourWeight

  int nNodes = 0;  ///< 0: without nodes, gradients by Green-Gauss and least squares are possible and no more
  Coordinates node;  ///< [0..nNodes-1] L

  /// Halo cell h has the nodes haloNode[haloNodeStart[h]] .. haloNode[haloNodeStart[h+1] - 1], as far as this partition
  /// has them. Null: the nodes of its partition faces.
  int const* haloNodeStart = nullptr;
  int const* haloNode = nullptr;
};

/// The records that the operators need, made of a solver's own arrays. Numbers are copied, since the operators count
/// from 1; all other arrays are lent to the operators as they are, and so must outlive the object and stay in place.
class ArrayHost {
 public:
  /// What is made besides the cells and areas of the faces.
  enum class Extent {
    kFaces,    ///< what Green-Gauss and least squares need
    kTopology  ///< nodes and the tables of cells, faces and nodes, for the radial-basis operators
  };

  /// @pre the arrays that `extent` needs are there, and all numbers are in range: nothing is checked
  ArrayHost(ArrayMesh const& arrays, Extent extent);
  ~ArrayHost();
  ArrayHost(ArrayHost const&) = delete;
  ArrayHost& operator=(ArrayHost const&) = delete;

  /// The record with all faces.
  CZYN3DFiniteVolumeMesh* mesh();

  /// The record without empty faces and their ghost cells, for Green-Gauss.
  CZYN3DFiniteVolumeMesh* meshWithoutEmptyFaces();

  CPartitionFace_DLL* partitionFaces();
  CZyn3dGV* globals();  ///< reset blocks are allocated; BaseFileName is empty until set

  /// Allocates the work arrays of the iterated Green-Gauss gradient. Further calls do nothing.
  void MakeIterationArrays();

  /// Sets BaseFileName of the globals; the text is copied.
  void SetBaseFileName(std::string const& name);

  int nCells() const;  ///< all cells: interior, ghost and halo

  // Numbers from 0 of the first cell of a kind.
  int FirstGhost(FaceKind kind) const;  ///< of a boundary group
  int FirstHalo() const;
  int FirstGhostOfEmptyFaces() const;

 private:
  struct Storage;
  std::unique_ptr<Storage> storage_;
};

}  // namespace reference_host

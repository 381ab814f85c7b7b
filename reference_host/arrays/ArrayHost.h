#pragma once

#include <memory>
#include <string>

#include "foundation/FaceGroups.h"
#include "host/Zyn3dGV.h"
#include "reference_host/arrays/ArrayMesh.h"

namespace reference_host {

/// The records that the operators need, made of a solver's own arrays. Numbers are copied, since the operators count
/// from 1; all other arrays are lent to the operators as they are, and so must outlive the object and stay in place
/// until others are lent.
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

  /// Takes the arrays of places, areas, volumes and weights anew, for a solver that has moved its points to other arrays
  /// or that makes an array only when an operator needs it. An array that no operator in use reads may be null.
  /// @pre `arrays` has the numbers of cells, faces and nodes that the object was made with
  void LendGeometry(ArrayMesh const& arrays);

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

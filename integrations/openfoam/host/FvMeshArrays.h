#pragma once

#include <cstddef>
#include <vector>

#include "fvMesh.H"
#include "host/StaggeredArrays.h"
#include "reference_host/arrays/ArrayMesh.h"
#include "volFields.H"

namespace Foam {
namespace zyn {

/// An fvMesh as arrays of single coordinates, which the operators read.
///
///   interior cell c            cell c
///   patch, not coupled         faces of the wall group; the ghost cell holds the patch's value at the face centre
///   coupled patch              partition faces; the halo cell holds patchNeighbourField at the owner's centre + delta,
///                              which is the neighbour's centre, shifted or turned to this side of a periodic patch
///   patch of type empty        the last faces of the wall group; the ghost cell holds the value of the cell itself
///
/// Every patch that is not coupled is a wall, symmetry planes and wedges included: OpenFOAM's patch fields say what the
/// value at the face is, and all walls take it as it is.
///
/// The weight of a face is that of the neighbour here, 1 - weights() of OpenFOAM. Cell volumes, numbers of cells and
/// nodes of faces are OpenFOAM's own arrays; the others are copies. Centres and nodes are copied on demand.
class FvMeshArrays {
 public:
  /// Where the faces of a patch are, and the cells beyond them. Its face i is the face firstFace + i of its group, and the
  /// cell beyond it is firstCell + i, both from 0.
  struct PatchPlace {
    label patch;
    int size;
    int firstFace;
    int firstCell;
  };

  /// Aborts with a message if a count is beyond int, which is what the operators count in.
  explicit FvMeshArrays(fvMesh const& mesh);

  fvMesh const& mesh() const { return mesh_; }
  reference_host::ArrayMesh const& arrays() const { return arrays_; }

  /// All cells: interior, ghost and halo.
  int nAllCells() const { return nAllCells_; }
  std::vector<PatchPlace> const& uncoupledPatches() const { return uncoupled_; }  ///< walls
  std::vector<PatchPlace> const& emptyPatches() const { return empty_; }          ///< walls, too
  std::vector<PatchPlace> const& coupledPatches() const { return coupled_; }      ///< partition faces

  // What only some operators need. Further calls do nothing. The radial-basis operators need all three.
  void MakeCellCentres();
  void MakeFaceCentres();
  void MakeNodes();

  /// Whether the volumes are still where they were when they were lent.
  bool VolumesAreInPlace() const { return arrays_.volume == mesh_.V().field().cdata(); }

  /// Copies areas, weights, centres and nodes again, after points have moved.
  void UpdateGeometry();

  /// The values of all cells, as the operators read them. Collective on meshes with a cyclicAMI patch.
  /// @param[out] phi  one array [0..nAllCells()-1] for each component, overwritten
  template <class Type>
  void Fill(GeometricField<Type, fvPatchField, volMesh> const& field, double* const* phi) const;

 private:
  void CountCells();
  void MakeNumbers();
  void CopyAreas();
  void CopyWeights();
  void CopyCellCentres();
  void CopyFaceCentres();
  void CopyNodes();
  void MakeFaceNodes();

  fvMesh const& mesh_;
  reference_host::ArrayMesh arrays_;
  int nAllCells_ = 0;
  std::vector<PatchPlace> uncoupled_, coupled_, empty_;
  std::vector<int> owner_, neighbour_;  // copies where labels have 64 bits
  std::vector<int> wallOwner_, partitionOwner_;

  /// The coordinates of the faces of each group.
  struct FaceVectors {
    StaggeredArrays inner, wall, partition;
  };
  FaceVectors areas_, faceCentres_;
  StaggeredArrays weight_, haloWeight_, cellCentres_, nodes_;

  struct FaceNodes {
    std::vector<int> start, node;
  };
  FaceNodes innerNodes_, wallNodes_, partitionNodes_;
};

}  // namespace zyn
}  // namespace Foam

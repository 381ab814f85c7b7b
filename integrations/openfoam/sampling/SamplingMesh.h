#pragma once

#include <memory>
#include <vector>

#include "host/FvMeshHost.h"
#include "host/StaggeredArrays.h"
#include "reference_host/arrays/ArrayHost.h"
#include "volFields.H"

namespace Foam {
namespace zyn {

/// The records of a mesh for the radial-basis operators, and the values of a field as these operators number cells.
///
/// They search cells by their places, so they get a cell only once, where the host has more: a cell of another process
/// that several faces lead to is one halo cell here. Ghost cells of empty faces are left out: their values are those of
/// the cells between them, and they would crowd the stencils.
class SamplingMesh {
 public:
  /// Collective. The mesh must not change during the life of the object.
  explicit SamplingMesh(fvMesh const& mesh);

  fvMesh const& mesh() const { return host_.arrays().mesh(); }
  FvMeshArrays const& arrays() const { return host_.arrays(); }
  /// Whether the mesh is one layer of cells.
  bool IsFlat() const { return mesh().nGeometricD() < 3; }
  /// On a mesh of one layer, the point at the height of the cell centres of this process. Else the point itself.
  point InItsPlane(point const& p) const;

  /// Gives an operator its mesh. Operators only read it.
  template <class Operator>
  void Wire(Operator& op) {
    op.getZyn3dGV(records_->globals(), nullptr, nullptr, records_->mesh());
    op.getPartitionFace(records_->partitionFaces());
  }
  int nCells() const { return records_->nCells(); }

  /// Collective. Takes over the values of a field.
  template <class Type>
  void Fill(GeometricField<Type, fvPatchField, volMesh> const& field);

  /// A component of the values of all cells, [1..nCells()]. Valid until the next call of Fill.
  double* Component(direction d) { return values_[d] - 1; }

 private:
  std::vector<int> NumberHaloCells();
  void MergeHaloCells(double* cells) const;
  void MakeOwnRecords(int nHaloCells);

  FvMeshHost& host_;
  std::vector<int> haloCell_;                       // by partition face: of several for one cell, the first
  StaggeredArrays centres_;                         // of the own records
  std::unique_ptr<reference_host::ArrayHost> own_;  // null: the host's records need no change
  reference_host::ArrayHost* records_;              // that operators get
  StaggeredArrays values_;
};

}  // namespace zyn
}  // namespace Foam

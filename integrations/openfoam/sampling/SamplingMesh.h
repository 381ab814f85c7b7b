#pragma once

#include <iosfwd>
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
/// Ghost cells of empty faces are left out: their values are those of the cells between them, and they would crowd the
/// stencils.
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
    op.getZyn3dGV(records().globals(), nullptr, nullptr, records().mesh());
    op.getPartitionFace(records().partitionFaces());
  }
  int nCells() { return records().nCells(); }

  /// A component of the values of all cells, [1..nCells()]. Valid until the next call of Fill.
  double* Component(direction d) { return values_[d] - 1; }

  /// Collective.
  template <class Type>
  void Fill(GeometricField<Type, fvPatchField, volMesh> const& field) {
    constexpr direction nComponents = pTraits<Type>::nComponents;
    if (values_.count() < nComponents) values_ = StaggeredArrays(nComponents, arrays().nAllCells());
    double* components[nComponents];
    for (direction d = 0; d < nComponents; ++d) components[d] = values_[d];
    arrays().Fill(field, components);
  }

 private:
  reference_host::ArrayHost& records() { return flat_ ? *flat_ : host_.Topology(); }

  FvMeshHost& host_;
  std::unique_ptr<reference_host::ArrayHost> flat_;  // without empty faces, if there are any
  StaggeredArrays values_;
};

/// Keeps what operators print while they are set up off the screen.
class SilentOutput {
 public:
  SilentOutput();
  ~SilentOutput();
  SilentOutput(SilentOutput const&) = delete;
  SilentOutput& operator=(SilentOutput const&) = delete;

 private:
  std::streambuf* const screen_;
};

}  // namespace zyn
}  // namespace Foam

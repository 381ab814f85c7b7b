#pragma once

#include <memory>

#include "MeshObject.H"
#include "fvMesh.H"
#include "host/CoupledExchange.h"
#include "host/FvMeshArrays.h"
#include "host/PstreamReduction.h"
#include "reference_host/arrays/ArrayHost.h"

namespace Foam {
namespace zyn {

class FvGradients;

/// What the operators need of an fvMesh, kept with the mesh: their records, the exchange, the reduction, and the
/// gradients themselves.
///
///   FvMeshHost& host = FvMeshHost::Of(mesh);
///
/// Everything is made when it is first asked for. When points move, the arrays are copied again, in place, at the next
/// use. When the topology changes, OpenFOAM deletes the object, and the next use makes another one; so keep no reference
/// to it from one time step to the next.
///
/// It is an object of the polyMesh: that one hears of its points in all cases, an fvMesh does not when a program such as
/// postProcess reads them from a time folder.
///
/// With the debug switch `zyn` above 0, records are checked when they are made, and what is wrong with them is printed.
class FvMeshHost : public MeshObject<polyMesh, MoveableMeshObject, FvMeshHost> {
 public:
  TypeName("zynHost");

  /// The object of the mesh, current with its points. Collective.
  static FvMeshHost& Of(fvMesh const& mesh);

  explicit FvMeshHost(polyMesh const& mesh);
  ~FvMeshHost() override;

  /// The records for Green-Gauss and least squares. Their centres are null until MakeCellCentres and MakeFaceCentres.
  reference_host::ArrayHost& Faces();
  /// The records with nodes and the tables of cells, faces and nodes, for the radial-basis operators.
  reference_host::ArrayHost& Topology();
  void MakeCellCentres();
  void MakeFaceCentres();

  FvMeshArrays const& arrays() const { return arrays_; }
  CoupledExchange& exchange() { return exchange_; }
  PstreamReduction& reduction() { return reduction_; }
  FvGradients& gradients();

  /// Changes whenever the arrays have been copied again because points moved.
  int nMotions() const { return nMotions_; }

  bool movePoints() override;

 private:
  void Refresh();
  void LendGeometry();
  std::unique_ptr<reference_host::ArrayHost> MakeHost(reference_host::ArrayHost::Extent extent);
  void Check(reference_host::ArrayHost& host, bool hasTopology);

  FvMeshArrays arrays_;
  CoupledExchange exchange_;
  PstreamReduction reduction_;
  bool pointsHaveMoved_ = false;
  int nMotions_ = 0;
  std::unique_ptr<reference_host::ArrayHost> faces_, topology_;
  std::unique_ptr<FvGradients> gradients_;  // last: its operators borrow all of the above
};

}  // namespace zyn
}  // namespace Foam

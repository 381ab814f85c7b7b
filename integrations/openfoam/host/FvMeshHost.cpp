#include "host/FvMeshHost.h"

#include <sstream>

#include "cyclicAMIPolyPatch.H"
#include "host/FvGradients.h"
#include "host_check/CheckHostData.h"

namespace Foam {
namespace zyn {

defineTypeName(FvMeshHost);
defineDebugSwitchWithName(FvMeshHost, "zyn", 0);
registerDebugSwitchWithName(FvMeshHost, FvMeshHost, "zyn");

FvMeshHost& FvMeshHost::Of(fvMesh const& mesh) {
  // The registry lends what it keeps as const.
  auto& host = const_cast<FvMeshHost&>(New(mesh));
  host.Refresh();
  return host;
}

FvMeshHost::FvMeshHost(polyMesh const& mesh)
    : MeshObject<polyMesh, MoveableMeshObject, FvMeshHost>(mesh),
      arrays_(refCast<fvMesh const>(mesh)),
      exchange_(arrays_) {}

FvMeshHost::~FvMeshHost() = default;

bool FvMeshHost::movePoints() {
  pointsHaveMoved_ = true;
  return true;
}

void FvMeshHost::Refresh() {
  if (!pointsHaveMoved_ && arrays_.VolumesAreInPlace()) return;
  pointsHaveMoved_ = false;
  ++nMotions_;
  arrays_.UpdateGeometry();
  LendGeometry();
}

void FvMeshHost::LendGeometry() {
  for (auto* host : {faces_.get(), topology_.get()})
    if (host != nullptr) host->LendGeometry(arrays_.arrays());
}

void FvMeshHost::MakeCellCentres() {
  arrays_.MakeCellCentres();
  LendGeometry();
}

void FvMeshHost::MakeFaceCentres() {
  arrays_.MakeFaceCentres();
  LendGeometry();
}

reference_host::ArrayHost& FvMeshHost::Faces() {
  if (!faces_) {
    if (debug > 0) {
      arrays_.MakeCellCentres();
      arrays_.MakeFaceCentres();
    }
    faces_ = MakeHost(reference_host::ArrayHost::Extent::kFaces);
  }
  return *faces_;
}

reference_host::ArrayHost& FvMeshHost::Topology() {
  if (!topology_) {
    arrays_.MakeCellCentres();
    arrays_.MakeFaceCentres();
    arrays_.MakeNodes();
    LendGeometry();
    topology_ = MakeHost(reference_host::ArrayHost::Extent::kTopology);
  }
  return *topology_;
}

std::unique_ptr<reference_host::ArrayHost> FvMeshHost::MakeHost(reference_host::ArrayHost::Extent extent) {
  auto host = std::make_unique<reference_host::ArrayHost>(arrays_.arrays(), extent);
  host->globals()->UseNonBlockingExch = 1;
  if (debug > 0) Check(*host, extent == reference_host::ArrayHost::Extent::kTopology);
  return host;
}

void FvMeshHost::Check(reference_host::ArrayHost& host, bool hasTopology) {
  host_check::HostCheckOptions options;
  options.cellRows = options.nodeTables = hasTopology;
  for (polyPatch const& patch : arrays_.mesh().boundaryMesh())
    if (isA<cyclicAMIPolyPatch>(patch)) options.interpolatedHalo = true;
  // What a gradient would have made later counts as missing.
  host.MakeIterationArrays();
  host.SetBaseFileName("zyn.run");
  host_check::HostCheckReport report;
  host_check::CheckHostData(host.mesh(), host.partitionFaces(), &exchange_, &reduction_, host.globals(),
                            report, options);
  std::ostringstream text;
  report.Print(text, "zyn: ");
  Pout << text.str().c_str() << flush;
}

FvGradients& FvMeshHost::gradients() {
  if (!gradients_) gradients_ = std::make_unique<FvGradients>(*this);
  return *gradients_;
}

}  // namespace zyn
}  // namespace Foam

// The operators on small meshes with degeneracies: empty cells, points that coincide, groups without faces,
// fields with NaN and infinities, settings out of range. Indices are sound, as a host's are; everything else may
// be anything. No crash, no step beyond an array, no endless loop.

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "fuzz/FuzzFolder.h"
#include "gradient/COperatorGradient.h"
#include "host/ZYNKNCompParm.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace {

using Field = std::vector<double>;

class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &face; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points; }

  CZYNCMP_FaceRBF_Parm face;
  CZYNCMP_IBRBF_Parm points;
};

double AnyNumber(FuzzedDataProvider& input) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  switch (input.ConsumeIntegralInRange(0, 7)) {
    case 0:
      return std::numeric_limits<double>::quiet_NaN();
    case 1:
      return kInfinity;
    case 2:
      return -kInfinity;
    case 3:
      return -0.0;
    case 4:
      return input.ConsumeFloatingPoint<double>();
    default:
      return input.ConsumeFloatingPointInRange<double>(-2.0, 2.0);
  }
}

Field AnyField(FuzzedDataProvider& input, int n) {
  Field field(static_cast<std::size_t>(n) + 1);
  for (double& value : field) value = AnyNumber(input);
  return field;
}

reference_host::MeshPart AnyPart(FuzzedDataProvider& input) {
  std::string text = "box:";
  for (int d = 0; d < 3; ++d) text += (d > 0 ? "," : "") + std::to_string(input.ConsumeIntegralInRange(1, 3));
  text += input.PickValueInArray({":hex", ":tet", ":prism"});
  if (input.ConsumeBool()) text += ":perturb=0.3,seed=" + std::to_string(input.ConsumeIntegralInRange(1, 9));
  reference_host::MeshPart part = reference_host::MakeBoxPart(reference_host::ParseBoxSpec(text), 0, 1);
  using reference_host::BoundaryGroup;
  for (reference_host::Patch& patch : part.patches)
    patch.group = input.PickValueInArray(
        {BoundaryGroup::Inlet, BoundaryGroup::Outlet, BoundaryGroup::Wall, BoundaryGroup::Symmetry});
  return part;
}

// Numbers of the mesh are replaced here and there, those of one array at a time.
void Spoil(FuzzedDataProvider& input, CZYN3DFiniteVolumeMesh& m) {
  struct Array {
    double* values;
    int size;
  };
  Array const arrays[] = {{m.xc, m.NCell},           {m.yc, m.NCell},          {m.zc, m.NCell},
                          {m.xn, m.NNode},           {m.yn, m.NNode},          {m.zn, m.NNode},
                          {m.Volume, m.NInnerCells}, {m.Lamda, m.NInnerFaces}, {m.ijSx, m.NInnerFaces},
                          {m.ijSy, m.NInnerFaces},   {m.ijSz, m.NInnerFaces},  {m.ijxc, m.NInnerFaces},
                          {m.ijWallxc, m.NWall},     {m.ijInletyc, m.NInlet}};
  int const nSpoilt = input.ConsumeIntegralInRange(0, 12);
  for (int k = 0; k < nSpoilt; ++k) {
    Array const& array = input.PickValueInArray(arrays);
    if (array.size < 1) continue;
    int const first = input.ConsumeIntegralInRange(1, array.size);
    int const last = input.ConsumeBool() ? array.size : first;
    double const value = AnyNumber(input);
    for (int i = first; i <= last; ++i) array.values[i] = value;
  }
}

void RunGradients(FuzzedDataProvider& input, reference_host::HostPartition& host, CCommunication& exchange,
                  CZYNCom& reduction) {
  int const nCell = host.mesh()->NCell;
  Field phi = AnyField(input, nCell), weight = AnyField(input, nCell);
  Field g[9];
  for (Field& field : g) field.assign(static_cast<std::size_t>(nCell) + 1, 0.0);
  for (int type : {0, 1, 2}) {
    COperatorGradient gradient;
    gradient.getZyn3dGV(host.globals(), nullptr, nullptr, host.mesh());
    gradient.getPartitionFace(host.partitionFaces());
    gradient.getCommunication(&exchange, &reduction);
    gradient.getGradType(type);
    gradient.Initialize();
    int const nSweep = input.ConsumeIntegralInRange(-1, 4);
    gradient.GradMethod(phi.data(), g[0].data(), g[1].data(), g[2].data(), nSweep);
    if (type != 0) continue;
    gradient.GradMethod_Weighted(phi.data(), g[0].data(), g[1].data(), g[2].data(), weight.data(), 1);
    gradient.GradMethod_3(phi.data(), weight.data(), phi.data(), g[0].data(), g[1].data(), g[2].data(),
                          g[3].data(), g[4].data(), g[5].data(), g[6].data(), g[7].data(), g[8].data());
  }
}

void RunFaces(FuzzedDataProvider& input, reference_host::HostPartition& host, Parameters& parameters) {
  CZynFaceRBFInternalObject faces;
  faces.getZyn3dGV(host.globals(), nullptr, nullptr, host.mesh());
  faces.getPartitionFace(host.partitionFaces());
  faces.SetZYNKNCMP(&parameters);
  parameters.face.Span = input.ConsumeIntegralInRange(-1, 2000);
  parameters.face.iSearch_method = input.ConsumeIntegralInRange(0, 5);
  parameters.face.Search_number = input.ConsumeIntegralInRange(-1, 60);
  parameters.face.Search_distance = AnyNumber(input);
  parameters.face.iDebugMode = input.ConsumeIntegralInRange(0, 1);
  faces.Initialize_FaceInterpolateData(input.ConsumeIntegralInRange(0, 7));
  Field phi = AnyField(input, host.mesh()->NCell);
  Field out[4];
  for (Field& field : out) field.assign(static_cast<std::size_t>(faces.NFace) + 1, 0.0);
  bool const hasStencils = 1 <= faces.iSearch_method && faces.iSearch_method <= 4;
  if (hasStencils)
    faces.Multiply_FaceRBFCoefficent(phi.data(), out[0].data(), out[1].data(), out[2].data(), out[3].data());
}

void RunPoints(FuzzedDataProvider& input, reference_host::HostPartition& host, Parameters& parameters) {
  int const nCell = host.mesh()->NCell;
  CZynIBRBFInternalObject points;
  points.getZyn3dGV(host.globals(), nullptr, nullptr, host.mesh());
  points.getPartitionFace(host.partitionFaces());
  points.SetZYNKNCMP(&parameters);
  parameters.points.Span = input.ConsumeIntegralInRange(-1, 2000);
  parameters.points.iSearch_method = input.ConsumeIntegralInRange(0, 4);
  parameters.points.Search_number = input.ConsumeIntegralInRange(-1, 60);
  parameters.points.Search_distance = AnyNumber(input);
  for (int setUp = 0; setUp < 2; ++setUp) {
    int const nPoint = input.ConsumeIntegralInRange(0, 4);
    Field mark = AnyField(input, nCell);
    Field x = AnyField(input, nPoint), y = AnyField(input, nPoint), z = AnyField(input, nPoint);
    points.Initialize_IBInterpolateData(mark.data(), nPoint, x.data(), y.data(), z.data());
    if (points.iSearch_method < 1 || points.iSearch_method > 3) continue;
    Field phi = AnyField(input, nCell);
    Field out[4];
    for (Field& field : out) field.assign(static_cast<std::size_t>(nPoint) + 1, 0.0);
    points.Multiply_IBRBFCoefficent(phi.data(), out[0].data(), out[1].data(), out[2].data(), out[3].data());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  static bool const quiet = (fuzz::DropStandardOutput(), true);
  static_cast<void>(quiet);

  FuzzedDataProvider input(data, size);
  reference_host::HostPartition host(AnyPart(input));
  reference_host::InProcessGroup group(1);
  reference_host::InProcessCommunication exchange(group, host);
  reference_host::InProcessReduction reduction(group);
  host.CompleteHalo(exchange);
  host.SetBaseFileName(folder.Path("run.cas"));
  Spoil(input, *host.mesh());

  Parameters parameters;
  RunGradients(input, host, exchange, reduction);
  RunFaces(input, host, parameters);
  RunPoints(input, host, parameters);
  return 0;
}

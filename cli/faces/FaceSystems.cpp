#include "cli/faces/FaceSystems.h"

#include <algorithm>

#include "cli/systems/KernelCondition.h"
#include "cli/systems/StencilRow.h"
#include "foundation/DQKernel.h"
#include "rbf_face/FaceC2Kernel.h"

namespace zyngrad {
namespace {

constexpr int kByVertices = 3, kByNormal = 4;  // search methods

}  // namespace

FaceSystems::FaceSystems(reference_host::HostPartition& partition, FaceKind group,
                         InterpolationSettings const& settings)
    : mesh_(*partition.mesh()), faces_(TargetedFacesOf(partition, group)) {
  op_.getZyn3dGV(partition.globals(), nullptr, nullptr, partition.mesh());
  op_.getPartitionFace(partition.partitionFaces());
  op_.iFaceType = static_cast<int>(group);
  op_.NFace = faces_.count;
  op_.Span = settings.span;
  op_.iSearch_method = settings.method;
  op_.Search_number = settings.number;
  if (op_.NFace == 0) return;
  op_.Initialize_Face_memory_allocate();
  op_.SetFaceNodeCollation();
  op_.SetFaceADTress();
  op_.SearchFaceADTress();
}

FaceSystems::~FaceSystems() {
  if (op_.NFace > 0) op_.Release_Memory();
}

bool FaceSystems::isByNormal() const { return op_.iSearch_method == kByNormal; }

DQVector FaceSystems::PointOf(int cell) const {
  IBCnode const& node = op_.m_pNodeTable[cell];
  return {node.x, node.y, node.z};
}

std::vector<DQVector> FaceSystems::NodesOf(int f) const {
  bool const byVertices = op_.iSearch_method == kByVertices;
  int const* const cells = op_.m_ppFaceCellConn[f];
  std::vector<DQVector> nodes;
  for (int k = 1; k <= (byVertices ? 2 : cells[0]); ++k) nodes.push_back(PointOf(cells[k]));
  if (!byVertices) return nodes;
  int const* const vertices = op_.m_ppFaceLnods[f];
  for (int k = 1; k <= vertices[0]; ++k)
    nodes.push_back({mesh_.xn[vertices[k]], mesh_.yn[vertices[k]], mesh_.zn[vertices[k]]});
  return nodes;
}

double FaceSystems::ConditionOf(int f) const {
  return KernelCondition(InterpolationDQKernel(op_.Span, op_.m_pFaceSupport[f]), NodesOf(f));
}

// The operator leaves the position 0 for a cell that it drops, where it then reads the length of the stencil as a cell
// number.
FaceSystems::Side FaceSystems::SideOf(int f, SideNumber number) const {
  IBCnode const& node = op_.m_ppVirtualNode[f][number];
  DQVector const at = {node.x, node.y, node.z};
  int const* const positions = StencilRow(op_.m_pFaceRows[f], number);
  Side side;
  double reach = 0.0;
  for (int k = 1; k <= positions[0]; ++k) {
    if (positions[k] == 0) side.hasTwins = true;
    int const c = op_.m_ppFaceCellConn[f][positions[k]];
    side.nodes.push_back(PointOf(c <= mesh_.NCell ? c : 0));
    reach = std::max(reach, Length(OffsetBetween(side.nodes.back(), at)));
  }
  side.condition = KernelCondition(FaceC2Kernel(op_.Span, reach), side.nodes);
  return side;
}

}  // namespace zyngrad

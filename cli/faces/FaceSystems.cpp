#include "cli/faces/FaceSystems.h"

#include "cli/operators/WireOperator.h"
#include "cli/systems/KernelCondition.h"
#include "rbf_face/FaceNodes.h"

namespace zyngrad {
namespace {

constexpr int kByVertices = 3, kByNormal = 4;  // search methods

}  // namespace

FaceSystems::FaceSystems(reference_host::HostPartition& partition, FaceKind group,
                         InterpolationSettings const& settings)
    : faces_(TargetedFacesOf(partition, group)) {
  WireOperator(op_, partition);
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

KernelSystem FaceSystems::SystemOf(int f) const {
  KernelSystem system;
  if (op_.iSearch_method == kByVertices) {
    face_nodes::TakePairAndVertices(op_, f, system);
  } else {
    face_nodes::TakeStencil(op_, f, system);
  }
  return system;
}

std::vector<DQVector> FaceSystems::NodesOf(int f) const { return SystemOf(f).Nodes(); }

double FaceSystems::ConditionOf(int f) const {
  KernelSystem system = SystemOf(f);
  return KernelCondition(face_nodes::FaceKernel(op_, f), system);
}

FaceSystems::Side FaceSystems::SideOf(int f, SideNumber number) const {
  KernelSystem system;
  face_nodes::TakeSide(op_, f, number, system);
  DQVector const at = face_nodes::PointOf(op_.m_ppVirtualNode[f][number]);
  Side side;
  side.nodes = system.Nodes();
  side.hasTwins = face_nodes::HasDroppedTwins(op_, f, number);
  side.condition = KernelCondition(face_nodes::VirtualNodeKernel(op_, at, system), system);
  return side;
}

}  // namespace zyngrad

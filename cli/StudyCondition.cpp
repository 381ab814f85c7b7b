#include "cli/StudyCondition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include "cli/CellStencil.h"
#include "cli/ConditionEstimate.h"
#include "cli/FaceGroup.h"
#include "cli/KernelCondition.h"
#include "cli/RunSettings.h"
#include "cli/StdoutToFile.h"
#include "cli/StencilRow.h"
#include "cli/TemporaryFolder.h"
#include "cli/Timing.h"
#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_face/FaceC2Kernel.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

DQVector At(const IBCnode& node) { return {node.x, node.y, node.z}; }

DQVector NodeAt(const CZYN3DFiniteVolumeMesh& mesh, int node) {
  return {mesh.xn[node], mesh.yn[node], mesh.zn[node]};
}

// --- faces

/// The operator's set-up up to the stencils, without the solutions and with its work tables still there.
class FaceStencils {
 public:
  FaceStencils(HostPartition& partition, const InterpolationSettings& settings)
      : mesh_(*partition.mesh()), silence_("/dev/null") {
    op_.getZyn3dGV(partition.globals(), nullptr, nullptr, partition.mesh());
    op_.getPartitionFace(partition.partitionFaces());
    op_.iFaceType = static_cast<int>(FaceGroup::Inner);
    op_.NFace = mesh_.NInnerFaces;
    op_.Span = settings.span;
    op_.iSearch_method = settings.method;
    op_.Search_number = settings.number;
    if (op_.NFace == 0) return;
    op_.Initialize_Face_memory_allocate();
    op_.SetFaceNodeCollation();
    op_.SetFaceADTress();
    op_.SearchFaceADTress();
  }
  ~FaceStencils() {
    if (op_.NFace > 0) op_.Release_Memory();
  }
  FaceStencils(const FaceStencils&) = delete;
  FaceStencils& operator=(const FaceStencils&) = delete;

  void AppendConditions(int f, std::vector<double>& conditions) const {
    if (op_.iSearch_method == 4) {
      for (const int side : {1, 2}) conditions.push_back(ConditionOfSide(f, side));
    } else {
      conditions.push_back(
          KernelCondition(InterpolationDQKernel(op_.Span, op_.m_pFaceSupport[f]), NodesOf(f)));
    }
  }

 private:
  /// Cells; for method 3 the face's two cells and its vertices.
  std::vector<DQVector> NodesOf(int f) const {
    const bool byVertices = op_.iSearch_method == 3;
    const int* const cells = op_.m_ppFaceCellConn[f];
    std::vector<DQVector> nodes;
    for (int k = 1; k <= (byVertices ? 2 : cells[0]); ++k) nodes.push_back(At(op_.m_pNodeTable[cells[k]]));
    if (!byVertices) return nodes;
    const int* const vertices = op_.m_ppFaceLnods[f];
    for (int k = 1; k <= vertices[0]; ++k) nodes.push_back(NodeAt(mesh_, vertices[k]));
    return nodes;
  }

  /// Of the point P (side 1) or E (side 2) on the face's normal.
  double ConditionOfSide(int f, int side) const {
    const IBCnode& point = op_.m_ppVirtualNode[f][side];
    const int* const positions = StencilRow(op_.m_pFaceRows[f], side);
    std::vector<DQVector> nodes;
    double reach = 0.0;
    for (int k = 1; k <= positions[0]; ++k) {
      if (positions[k] == 0) continue;  // a cell at the place of another one
      nodes.push_back(At(op_.m_pNodeTable[op_.m_ppFaceCellConn[f][positions[k]]]));
      reach = std::max(reach, Length(OffsetBetween(nodes.back(), At(point))));
    }
    return KernelCondition(FaceC2Kernel(op_.Span, reach), nodes);
  }

  const CZYN3DFiniteVolumeMesh& mesh_;
  StdoutToFile silence_;
  CZynFaceRBFInternalObject op_;
};

// --- points

double ConditionOfPoint(const CZynIBRBFInternalObject& op, const CZYN3DFiniteVolumeMesh& mesh, int i) {
  const bool byNodes = op.iSearch_method == 3;
  const int* const cells = op.m_ppIBConn[i];
  const int nCells = byNodes ? std::min(cells[0], op.m_pIBTwoSeeds[i] == 1 ? 2 : 1) : cells[0];
  std::vector<DQVector> nodes;
  for (int k = 1; k <= nCells; ++k) nodes.push_back(At(op.m_pIBCnode[cells[k]]));
  if (byNodes) {
    const int* const row = op.m_ppIBNodeConn[i];
    for (int k = 1; k <= row[0]; ++k) nodes.push_back(NodeAt(mesh, row[k]));
  }
  return KernelCondition(InterpolationDQKernel(op.Span, op.m_pIBSupportLength[i]), nodes);
}

}  // namespace

StudyCondition SummariseConditions(const Ranks& ranks, const std::vector<double>& own) {
  std::vector<double> all = ranks.GatherOnFirst(own);
  for (double& condition : all)
    if (std::isnan(condition)) condition = std::numeric_limits<double>::infinity();
  std::vector<double> summary = {static_cast<double>(all.size()), 0.0, 0.0};
  if (!all.empty()) {
    summary[1] = Median(all);
    summary[2] = *std::max_element(all.begin(), all.end());
  }
  ranks.Broadcast(summary);
  return {static_cast<std::int64_t>(summary[0]), summary[1], summary[2]};
}

std::vector<int> SpreadSample(int n) {
  const int step = n / kMostSystems + 1;
  std::vector<int> sample;
  for (int k = 1; k <= n; k += step) sample.push_back(k);
  return sample;
}

std::vector<double> GradientConditions(HostPartition& partition, const RadialBasisSettings& settings) {
  std::vector<double> conditions;
  VisitCellStencils(partition, SpreadSample(partition.mesh()->NInnerCells), settings, "/dev/null",
                    [&conditions](int, const CellStencil& stencil) {
                      conditions.push_back(ConditionEstimate(stencil.matrix, stencil.Order()));
                    });
  return conditions;
}

std::vector<double> FaceConditions(HostPartition& partition, const InterpolationSettings& settings) {
  const FaceStencils stencils(partition, settings);
  std::vector<double> conditions;
  for (const int f : SpreadSample(partition.mesh()->NInnerFaces)) stencils.AppendConditions(f, conditions);
  return conditions;
}

std::vector<double> PointConditions(HostPartition& partition, UsableCells& usable, const PointSet& points,
                                    const InterpolationSettings& settings) {
  PointSet chosen;
  chosen.x = chosen.y = chosen.z = {0.0};  // the operator counts from 1
  for (const int i : SpreadSample(static_cast<int>(points.size()))) {
    const auto k = static_cast<std::size_t>(i) - 1;
    chosen.x.push_back(points.x[k]);
    chosen.y.push_back(points.y[k]);
    chosen.z.push_back(points.z[k]);
  }
  const int nPoints = static_cast<int>(chosen.size()) - 1;
  if (nPoints == 0) return {};

  const TemporaryFolder folder;
  partition.SetBaseFileName(WriteSettingsText(folder.path() + "/settings.rbf", PointSettingsText(settings)));
  const StdoutToFile silence("/dev/null");
  CZynIBRBFInternalObject op;
  op.getZyn3dGV(partition.globals(), nullptr, nullptr, partition.mesh());
  op.getPartitionFace(partition.partitionFaces());
  op.Initialize_IBInterpolateData(usable.mark.data(), nPoints, chosen.x.data(), chosen.y.data(),
                                  chosen.z.data());
  std::vector<double> conditions;
  for (int i = 1; i <= nPoints; ++i) conditions.push_back(ConditionOfPoint(op, *partition.mesh(), i));
  return conditions;
}

}  // namespace zyngrad

// The systems behind interpolation to faces, as the operator sets them up.

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <utility>

#include "cli/CheckFindings.h"
#include "cli/CheckInterpolation.h"
#include "cli/CheckStencil.h"
#include "cli/FaceErrors.h"
#include "cli/KernelCondition.h"
#include "cli/StdoutToFile.h"
#include "cli/StencilRow.h"
#include "foundation/DQKernel.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_face/FaceC2Kernel.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

constexpr int kByVertices = 3, kByNormal = 4;  // search methods
constexpr int kP = 1, kE = 2;                  // the two points on a face's normal

/// The operator's set-up step by step, so that its work tables are still there when a face is looked at.
class FaceSystems {
 public:
  FaceSystems(HostPartition& partition, FaceGroup group, const InterpolationSettings& settings)
      : partition_(partition), mesh_(*partition.mesh()), group_(group), faces_(FacesOf(partition, group)) {
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
  ~FaceSystems() {
    if (op_.NFace > 0) op_.Release_Memory();
  }
  FaceSystems(const FaceSystems&) = delete;
  FaceSystems& operator=(const FaceSystems&) = delete;

  int count() const { return faces_.count; }

  CheckedSystem Check(int f) {
    CheckedSystem face = Describe(f);
    if (op_.iSearch_method == kByNormal) {
      CheckSide(f, kP, face);
      if (!IsBoundary(group_)) CheckSide(f, kE, face);
    } else {
      const std::vector<DQVector> nodes = NodesOf(f);
      CheckPlaces(nodes, face);
      CheckCondition(KernelCondition(InterpolationDQKernel(op_.Span, op_.m_pFaceSupport[f]), nodes), face);
    }
    Derive(f);
    CheckRows(f, face);
    return face;
  }

 private:
  CheckedSystem Describe(int f) const {
    const auto number = [this](int c) { return partition_.globalCell()[static_cast<std::size_t>(c)]; };
    const auto [x, y, z] = faces_.Target(f);
    CheckedSystem face;
    face.number = number(faces_.cell[f]);
    face.other = number(faces_.other[f]);
    if (face.other > 0 && face.other < face.number) std::swap(face.number, face.other);
    face.at[0] = x, face.at[1] = y, face.at[2] = z;
    face.members = op_.m_ppFaceCellConn[f][0];
    return face;
  }

  DQVector PointOf(int c) const {
    const IBCnode& node = op_.m_pNodeTable[c];
    return {node.x, node.y, node.z};
  }

  /// Cells; by vertices the face's two cells and its vertices.
  std::vector<DQVector> NodesOf(int f) const {
    const bool byVertices = op_.iSearch_method == kByVertices;
    const int* const cells = op_.m_ppFaceCellConn[f];
    std::vector<DQVector> nodes;
    for (int k = 1; k <= (byVertices ? 2 : cells[0]); ++k) nodes.push_back(PointOf(cells[k]));
    if (!byVertices) return nodes;
    const int* const vertices = op_.m_ppFaceLnods[f];
    for (int k = 1; k <= vertices[0]; ++k)
      nodes.push_back({mesh_.xn[vertices[k]], mesh_.yn[vertices[k]], mesh_.zn[vertices[k]]});
    return nodes;
  }

  // The operator drops cells at the place of another one and leaves the position 0 for them, where it then
  // reads the length of the stencil as a cell number.
  void CheckSide(int f, int side, CheckedSystem& face) const {
    const IBCnode& node = op_.m_ppVirtualNode[f][side];
    const DQVector at = {node.x, node.y, node.z};
    const int* const positions = StencilRow(op_.m_pFaceRows[f], side);
    std::vector<DQVector> nodes;
    double reach = 0.0;
    for (int k = 1; k <= positions[0]; ++k) {
      if (positions[k] == 0) face.findings |= kHasCoincidentMembers;
      const int c = op_.m_ppFaceCellConn[f][positions[k]];
      nodes.push_back(PointOf(c <= mesh_.NCell ? c : 0));
      reach = std::max(reach, Length(OffsetBetween(nodes.back(), at)));
    }
    CheckPlaces(nodes, face);
    CheckCondition(KernelCondition(FaceC2Kernel(op_.Span, reach), nodes), face);
  }

  void Derive(int f) {
    if (op_.iSearch_method == kByNormal)
      op_.DeriveFaceCoefficentBysolveDQfullMatrix_Virtual_Node(f);
    else if (op_.iSearch_method == kByVertices)
      op_.DeriveFaceCoefficentBysolveDQfullMatrix_20_03(f);
    else
      op_.DeriveFaceCoefficentBysolveDQfullMatrix(f);
  }

  void CheckRows(int f, CheckedSystem& face) const {
    const bool byNormal = op_.iSearch_method == kByNormal;
    RowSum value, normal, x, y, z;
    for (int k = 1; k <= face.members; ++k) {
      value.Add(op_.m_ppFaceFiCoef[f][k]);
      if (byNormal) {
        normal.Add(op_.m_ppFaceDnCoef[f][k]);
        continue;
      }
      const IBCnode& slope = op_.m_ppFaceGradCoef[f][k];
      x.Add(slope.x);
      y.Add(slope.y);
      z.Add(slope.z);
    }
    const bool isZeroByDesign = byNormal && IsBoundary(group_);
    if (!isZeroByDesign || !value.IsFinite()) CheckRowOfValue(value, kRowSumTolerance, face);
    for (const RowSum& row : {normal, x, y, z}) CheckRowOfSlope(row, kRowSumTolerance, face);
  }

  HostPartition& partition_;
  const CZYN3DFiniteVolumeMesh& mesh_;
  FaceGroup group_;
  FacesOfGroup faces_;
  CZynFaceRBFInternalObject op_;
};

}  // namespace

std::vector<CheckedSystem> CheckFaces(HostPartition& partition, FaceGroup group,
                                      const InterpolationSettings& settings, const std::string& logFile) {
  const StdoutToFile log(logFile);
  std::cout << NameOf(group) << " faces" << std::endl;
  FaceSystems systems(partition, group, settings);
  std::vector<CheckedSystem> faces;
  for (int f = 1; f <= systems.count(); ++f) faces.push_back(systems.Check(f));
  return faces;
}

}  // namespace zyngrad

#include "cli/compare_ranks/RunOnParts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "cli/base/StdoutToFile.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/gradient/LeastSquaresCheck.h"
#include "cli/operators/InitializeGradient.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/operators/WireOperator.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/study/StudyPoints.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/GradientTypes.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// Finds the faces of a mesh by their cells.
class FaceNumbers {
 public:
  explicit FaceNumbers(reference_host::FaceMesh const& mesh) {
    for (int f = 0; f < mesh.nFaces(); ++f) {
      auto const i = static_cast<std::size_t>(f);
      if (mesh.neighbour[i] < 0) continue;
      auto const [known, isNew] = faceOf_.try_emplace(KeyOf(mesh.owner[i] + 1, mesh.neighbour[i] + 1), f);
      if (!isNew) known->second = kAmbiguous;
    }
  }

  /// The number of the face, from 0; negative if the cells share several faces. @param[in] a,b  cells, from 1
  int NumberOf(std::int64_t a, std::int64_t b) const { return faceOf_.at(KeyOf(a, b)); }

 private:
  static constexpr int kAmbiguous = -1;
  static std::pair<std::int64_t, std::int64_t> KeyOf(std::int64_t a, std::int64_t b) {
    return std::minmax(a, b);
  }

  std::map<std::pair<std::int64_t, std::int64_t>, int> faceOf_;
};

/// Runs the cases on one part, in the thread that owns it.
class PartRun {
 public:
  PartRun(reference_host::InProcessGroup& group, HostPartition& partition, RankQuestion const& question)
      : question_(question),
        partition_(partition),
        settings_(partition),
        exchange_(group, partition),
        reduction_(group) {
    partition_.CompleteHalo(exchange_);
    field_ = question.field.ValuesOn(partition_);
  }

  /// @param[out] result  receives the items of this part
  void Run(StudyCase const& theCase, FaceNumbers const& faces, RankResult& result) {
    switch (theCase.method->kind) {
      case StudyMethod::Kind::Gradient:
        RunGradient(theCase, result);
        break;
      case StudyMethod::Kind::Faces:
        RunFaces(theCase, faces, result);
        break;
      case StudyMethod::Kind::Points:
        RunPoints(theCase, result);
        break;
    }
  }

 private:
  void RunGradient(StudyCase const& theCase, RankResult& result) {
    GradientMethod const& method = *theCase.method->gradient;
    if (theCase.method->TakesSpan()) settings_.Write(SettingsFileText({theCase.span, false}));
    COperatorGradient op;
    WireOperator(op, partition_, &exchange_, &reduction_);
    InitializeGradient(op, method.gradientType);
    if (StopsSomewhere(method, op)) {
      if (partition_.part() == 0) result.notRun = "least squares stops at a zero pivot";
      return;
    }
    MethodData data;
    data.field = {&field_, &field_, &field_};
    data.nSweeps = theCase.nSweeps;
    data.weight.assign(field_.size(), 1.0);
    data.exchange = &exchange_;
    GradientArrays& g = data.gradient[0];
    for (auto* component : {&g.x, &g.y, &g.z}) component->assign(field_.size(), 0.0);
    method.run(op, data);
    for (int c = 1; c <= partition_.mesh()->NInnerCells; ++c) {
      auto const i = static_cast<std::size_t>(c);
      SetItem(result, partition_.globalCell()[i] - 1, {g.x[i], g.y[i], g.z[i]});
    }
  }

  static void SetItem(RankResult& result, std::int64_t number, reference_host::Point const& value) {
    result.item[static_cast<std::size_t>(number)] = value;
    result.isThere[static_cast<std::size_t>(number)] = 1;
  }

  InterpolationSettings SettingsOf(StudyCase const& theCase) const {
    return {theCase.method->searchMethod, theCase.span, question_.searchNumber, 0.0, false};
  }

  void RunFaces(StudyCase const& theCase, FaceNumbers const& faces, RankResult& result) {
    settings_.Write(FaceSettingsText(SettingsOf(theCase)));
    CZynFaceRBFInternalObject op;
    WireOperator(op, partition_, &exchange_);
    op.Initialize_FaceInterpolateData(static_cast<int>(FaceKind::Inner));
    CZYN3DFiniteVolumeMesh const& mesh = *partition_.mesh();
    std::vector<double> value(static_cast<std::size_t>(mesh.NInnerFaces) + 1, 0.0),
        zero[3] = {value, value, value};
    op.Multiply_FaceRBFCoefficent(field_.data(), value.data(), zero[0].data(), zero[1].data(),
                                  zero[2].data());
    for (int f = 1; f <= mesh.NInnerFaces; ++f) {
      int const number = faces.NumberOf(Number(mesh.ijCV[f]), Number(mesh.ij[f]));
      if (number >= 0) SetItem(result, number, {value[static_cast<std::size_t>(f)], 0.0, 0.0});
    }
  }

  std::int64_t Number(int cell) const { return partition_.globalCell()[static_cast<std::size_t>(cell)]; }

  void RunPoints(StudyCase const& theCase, RankResult& result) {
    std::vector<int> const cells = CellsWithPoints(partition_, static_cast<std::int64_t>(result.item.size()));
    if (cells.empty()) return;
    std::vector<double> x = {0.0}, y = {0.0}, z = {0.0};  // the operator counts from 1
    for (int const c : cells) {
      reference_host::Point const point = PointInCell(partition_, c);
      x.push_back(point[0]);
      y.push_back(point[1]);
      z.push_back(point[2]);
    }
    std::vector<double> mark(field_.size(), 1.0);
    for (std::size_t c = 1; c < mark.size(); ++c)
      if (partition_.globalCell()[c] > 0) mark[c] = -1.0;

    settings_.Write(PointSettingsText(SettingsOf(theCase)));
    CZynIBRBFInternalObject op;
    WireOperator(op, partition_);
    op.Initialize_IBInterpolateData(mark.data(), static_cast<int>(cells.size()), x.data(), y.data(),
                                    z.data());
    std::vector<double> value(x.size(), 0.0), slope[3] = {value, value, value};
    op.Multiply_IBRBFCoefficent(field_.data(), value.data(), slope[0].data(), slope[1].data(),
                                slope[2].data());
    for (std::size_t k = 0; k < cells.size(); ++k)
      SetItem(result, Number(cells[k]) - 1, {value[k + 1], 0.0, 0.0});
  }

  /// Collective. At such a cell the method would return without its exchange, and the other parts would wait for it.
  bool StopsSomewhere(GradientMethod const& method, COperatorGradient& op) {
    if (method.gradientType != kLeastSquaresType) return false;
    COperatorGradientImpl const& moments = *op.m_pImpl;
    int goesOn = 1;
    for (int c = 1; c <= partition_.mesh()->NInnerCells; ++c)
      if (LeastSquaresStopsAt(moments.m_pSxx[c], moments.m_pSxy[c], moments.m_pSyy[c])) goesOn = 0;
    reduction_.AllMin(goesOn);
    return goesOn == 0;
  }

  RankQuestion const& question_;
  HostPartition& partition_;
  TemporarySettings settings_;
  reference_host::InProcessCommunication exchange_;
  reference_host::InProcessReduction reduction_;
  std::vector<double> field_;
};

std::vector<std::unique_ptr<HostPartition>> MakePartitions(WholeMesh const& mesh, int nParts,
                                                           bool nonBlocking) {
  std::vector<std::unique_ptr<HostPartition>> partitions;
  for (auto const& part : reference_host::SplitMesh(mesh.faces, mesh.PartOfCell(nParts), nParts)) {
    auto partition = std::make_unique<HostPartition>(part);
    partition->globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
    partitions.push_back(std::move(partition));
  }
  return partitions;
}

RankResult EmptyResult(WholeMesh const& mesh, StudyCase const& theCase) {
  bool const ofFaces = theCase.method->kind == StudyMethod::Kind::Faces;
  auto const n = static_cast<std::size_t>(ofFaces ? mesh.faces.nFaces() : mesh.nCells());
  RankResult result;
  result.item.assign(n, {0.0, 0.0, 0.0});
  result.isThere.assign(n, 0);
  return result;
}

}  // namespace

std::vector<RankResult> RunOnParts(WholeMesh const& mesh, int nParts, RankQuestion const& question,
                                   bool nonBlocking) {
  auto const partitions = MakePartitions(mesh, nParts, nonBlocking);
  FaceNumbers const faces(mesh.faces);
  std::vector<RankResult> results;
  for (StudyCase const& theCase : question.cases) results.push_back(EmptyResult(mesh, theCase));

  StdoutToFile const silence("/dev/null");
  reference_host::InProcessGroup group(nParts);
  reference_host::RunInProcess(group, [&](int part) {
    PartRun run(group, *partitions[static_cast<std::size_t>(part)], question);
    for (std::size_t k = 0; k < results.size(); ++k) run.Run(question.cases[k], faces, results[k]);
  });
  for (RankResult& result : results)
    if (!result.notRun.empty()) result = {result.notRun, {}, {}};
  return results;
}

}  // namespace zyngrad

#include "cli/CompareRanksRun.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

#include "cli/LeastSquaresCheck.h"
#include "cli/OneLine.h"
#include "cli/StdoutToFile.h"
#include "cli/TemporaryFolder.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "gradient/COperatorGradientImpl.h"
#include "reference_host/HostPartition.h"
#include "reference_host/InProcessExchange.h"
#include "reference_host/MeshPart.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

constexpr int kLeastSquaresType = 1;

/// One part, in the thread that has it.
class PartRun {
 public:
  PartRun(reference_host::InProcessGroup& group, HostPartition& partition, const RankQuestion& question)
      : question_(question), partition_(partition), exchange_(group, partition), reduction_(group) {
    partition_.CompleteHalo(exchange_);
    const CZYN3DFiniteVolumeMesh& mesh = *partition_.mesh();
    field_.assign(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
    for (int c = 1; c <= mesh.NCell; ++c) {
      double& value = field_[static_cast<std::size_t>(c)];
      value = question.field.Value(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
      if (std::isfinite(value)) continue;
      throw UsageError("the field " + Quoted(question.field.text()) + " is not finite at " +
                       Place(mesh.xc[c], mesh.yc[c], mesh.zc[c]));
    }
  }

  /// @param[out] result  its cells of this part
  void Run(const GradientMethod& method, RankResult& result) {
    COperatorGradient op;
    op.getZyn3dGV(partition_.globals(), nullptr, nullptr, partition_.mesh());
    op.getPartitionFace(partition_.partitionFaces());
    op.getCommunication(&exchange_, &reduction_);
    int type = method.gradientType;
    op.getGradType(type);
    op.Initialize();
    if (StopsSomewhere(method, op)) {
      if (partition_.part() == 0) result.notRun = "least squares stops at a zero pivot";
      return;
    }
    MethodData data;
    data.field = {&field_, &field_, &field_};
    data.nSweeps = question_.nSweeps;
    data.weight.assign(field_.size(), 1.0);
    data.exchange = &exchange_;
    GradientArrays& g = data.gradient[0];
    for (auto* component : {&g.x, &g.y, &g.z}) component->assign(field_.size(), 0.0);
    method.run(op, data);
    for (int c = 1; c <= partition_.mesh()->NInnerCells; ++c) {
      const auto i = static_cast<std::size_t>(c);
      result.gradient[static_cast<std::size_t>(partition_.globalCell()[i] - 1)] = {g.x[i], g.y[i], g.z[i]};
    }
  }

 private:
  /// Collective. The method would leave without its exchange there, and the other parts would wait for it.
  bool StopsSomewhere(const GradientMethod& method, COperatorGradient& op) {
    if (method.gradientType != kLeastSquaresType) return false;
    const COperatorGradientImpl& moments = *op.m_pImpl;
    int goesOn = 1;
    for (int c = 1; c <= partition_.mesh()->NInnerCells; ++c)
      if (LeastSquaresStopsAt(moments.m_pSxx[c], moments.m_pSxy[c], moments.m_pSyy[c])) goesOn = 0;
    reduction_.AllMin(goesOn);
    return goesOn == 0;
  }

  const RankQuestion& question_;
  HostPartition& partition_;
  reference_host::InProcessCommunication exchange_;
  reference_host::InProcessReduction reduction_;
  std::vector<double> field_;
};

std::vector<std::unique_ptr<HostPartition>> MakePartitions(const WholeMesh& mesh, int nParts,
                                                           const std::string& folder,
                                                           const RankQuestion& question, bool nonBlocking) {
  std::vector<std::unique_ptr<HostPartition>> partitions;
  for (const auto& part : reference_host::SplitMesh(mesh.faces, mesh.PartOfCell(nParts), nParts)) {
    auto partition = std::make_unique<HostPartition>(part);
    // A file for each part: the operators read them at the same time, and rewrite what they do not know.
    const std::string file = folder + "/part" + std::to_string(part.part) + ".rbf";
    partition->SetBaseFileName(WriteSettingsFile(file, question.radialBasis));
    partition->globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
    partitions.push_back(std::move(partition));
  }
  return partitions;
}

}  // namespace

std::vector<RankResult> RunOnParts(const WholeMesh& mesh, int nParts, const RankQuestion& question,
                                   bool nonBlocking) {
  const TemporaryFolder folder;
  const auto partitions = MakePartitions(mesh, nParts, folder.path(), question, nonBlocking);
  std::vector<RankResult> results(question.methods.size());
  for (RankResult& result : results) result.gradient.resize(static_cast<std::size_t>(mesh.nCells()));

  const StdoutToFile silence("/dev/null");
  reference_host::InProcessGroup group(nParts);
  reference_host::RunInProcess(group, [&](int part) {
    PartRun run(group, *partitions[static_cast<std::size_t>(part)], question);
    for (std::size_t k = 0; k < results.size(); ++k) run.Run(*question.methods[k], results[k]);
  });
  for (RankResult& result : results)
    if (!result.notRun.empty()) result.gradient.clear();
  return results;
}

}  // namespace zyngrad

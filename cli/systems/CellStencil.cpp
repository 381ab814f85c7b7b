#include "cli/systems/CellStencil.h"

#include <cstddef>
#include <numeric>
#include <utility>

#include "cli/base/StdoutToFile.h"
#include "cli/operators/TemporarySettings.h"
#include "cli/operators/WireOperator.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_cell/CellSystem.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The operator on a partition, set up as far as its stencils. The operator would destroy its host objects, so they
/// are taken back at the end.
class BorrowingOperator {
 public:
  explicit BorrowingOperator(HostPartition& partition) {
    WireOperator(op_, partition);
    op_.InitialRBFSetting();
  }
  ~BorrowingOperator() {
    op_.m_pGV = nullptr;
    op_.m_pPartFace = nullptr;
  }
  BorrowingOperator(BorrowingOperator const&) = delete;
  BorrowingOperator& operator=(BorrowingOperator const&) = delete;

  CZynRBFInternalObject& op() { return op_; }

 private:
  CZynRBFInternalObject op_;
};

DQVector Triple(RBFnode const& node) { return {node.x, node.y, node.z}; }

StencilMember MakeMember(HostPartition const& partition, int nInnerCells, int cell) {
  auto const at = static_cast<std::size_t>(cell);
  StencilMember member;
  member.cell = partition.globalCell()[at];
  if (member.cell > 0) {
    member.place = cell <= nInnerCells ? "interior" : "other rank";
  } else {
    member.place = partition.patches()[static_cast<std::size_t>(partition.patchOfGhost()[at])].name;
  }
  return member;
}

std::vector<double> MatrixOf(CZynRBFInternalObject const& op, int cell) {
  CellSystem system;
  system.Assemble(op, cell);
  auto const order = static_cast<std::size_t>(system.Order());
  return {system.Matrix(), system.Matrix() + order * order};
}

}  // namespace

DQVector CellStencil::SumOfWeights() const {
  DQVector sum = {0.0, 0.0, 0.0};
  for (StencilMember const& member : members) {
    sum.x += member.weight.x;
    sum.y += member.weight.y;
    sum.z += member.weight.z;
  }
  return sum;
}

namespace {

CellStencil StencilOf(HostPartition& partition, CZynRBFInternalObject& op, int cell) {
  op.DeriveCellCoefficentBysolveDQfullMatrix(cell);

  int const* const row = op.m_ppRBFCellConn[cell];
  RBFnode const* const weights = op.m_ppRBFCellCoef[cell];
  CellStencil stencil;
  for (int k = 1; k <= row[0]; ++k) {
    StencilMember member = MakeMember(partition, partition.mesh()->NInnerCells, row[k]);
    member.atOrigin = op.m_piNodeKind[row[k]] == 0;
    member.point = Triple(op.m_pRBFnode[row[k]]);
    member.weight = Triple(weights[k]);
    stencil.members.push_back(std::move(member));
  }
  stencil.multiplier = Triple(weights[row[0] + 1]);
  stencil.supportLength = op.m_pSupportLength[cell];
  stencil.extent = Triple(op.m_pStencilExtent[cell]);
  stencil.settings = {op.Span, op.iShape_Normalize == 1};
  stencil.matrix = MatrixOf(op, cell);
  return stencil;
}

}  // namespace

CellStencil DeriveCellStencil(HostPartition& partition, int cell, RadialBasisSettings const& settings) {
  TemporarySettings file(partition);
  file.Write(SettingsFileText(settings));
  StdoutToFile const silence("/dev/null");
  BorrowingOperator borrowing(partition);
  return StencilOf(partition, borrowing.op(), cell);
}

void VisitCellStencils(HostPartition& partition, RadialBasisSettings const& settings,
                       std::string const& logFile,
                       std::function<void(int cell, CellStencil const&)> const& visit) {
  std::vector<int> all(static_cast<std::size_t>(partition.mesh()->NInnerCells));
  std::iota(all.begin(), all.end(), 1);
  VisitCellStencils(partition, all, settings, logFile, visit);
}

void VisitCellStencils(HostPartition& partition, std::vector<int> const& cells,
                       RadialBasisSettings const& settings, std::string const& logFile,
                       std::function<void(int cell, CellStencil const&)> const& visit) {
  TemporarySettings file(partition);
  file.Write(SettingsFileText(settings));
  StdoutToFile const log(logFile);
  BorrowingOperator borrowing(partition);
  for (int const cell : cells) visit(cell, StencilOf(partition, borrowing.op(), cell));
}

}  // namespace zyngrad

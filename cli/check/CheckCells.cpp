#include "cli/check/CheckCells.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>

#include "cli/base/StdoutToFile.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/SystemChecks.h"
#include "cli/operators/InitializeGradient.h"
#include "cli/operators/WireOperator.h"
#include "cli/systems/CellStencil.h"
#include "cli/systems/ConditionEstimate.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/GradientTypes.h"
#include "gradient/NormalEquations.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;
using reference_host::LoadedMesh;

constexpr int kSweeps = 3;  // of the iterated method; the later sweeps use the gradients of the first

void EnterStencil(CellStencil const& stencil, CheckedSystem& cell) {
  cell.members = static_cast<int>(stencil.members.size());
  std::vector<DQVector> points;
  std::vector<std::int64_t> known;
  RowSum x, y, z;
  for (StencilMember const& member : stencil.members) {
    x.Add(member.weight.x);
    y.Add(member.weight.y);
    z.Add(member.weight.z);
    if (member.atOrigin) cell.findings |= kHasMemberAtOrigin;
    // Two cells may share several faces. The same number then appears again, and is not a second cell in that place.
    if (member.cell > 0 && std::find(known.begin(), known.end(), member.cell) != known.end()) {
      cell.findings |= kHasRepeatedMember;
      continue;
    }
    known.push_back(member.cell);
    points.push_back(member.point);
  }
  CheckPlaces(points, cell);
  CheckCondition(ConditionEstimate(stencil.matrix, stencil.Order()), cell);
  for (RowSum const& row : {x, y, z}) CheckRowOfSlope(row, kCellRowSumTolerance, cell);
}

/// 1 + x + 2y + 3z in all cells. A linear field exercises every face value and every division of a method.
std::vector<double> LinearField(CZYN3DFiniteVolumeMesh const& mesh) {
  std::vector<double> field(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c)
    field[static_cast<std::size_t>(c)] = 1.0 + mesh.xc[c] + 2.0 * mesh.yc[c] + 3.0 * mesh.zc[c];
  return field;
}

void EnterNotFinite(MethodData const& data, std::uint32_t finding, std::vector<CheckedSystem>& cells) {
  for (std::size_t c = 1; c <= cells.size(); ++c) {
    for (GradientArrays const& g : data.gradient) {
      if (g.x.empty()) continue;
      if (!std::isfinite(g.x[c]) || !std::isfinite(g.y[c]) || !std::isfinite(g.z[c]))
        cells[c - 1].findings |= finding;
    }
  }
}

bool StopsSomewhere(Ranks const& ranks, std::vector<CheckedSystem> const& cells) {
  bool const stops = std::any_of(cells.begin(), cells.end(), [](CheckedSystem const& cell) {
    return (cell.findings & kHasZeroPivot) != 0;
  });
  return ranks.Max(stops ? 1.0 : 0.0) > 0.0;
}

}  // namespace

bool CellCheckCase::HasType(int gradientType) const {
  return std::any_of(methods.begin(), methods.end(), [gradientType](GradientMethod const* method) {
    return method->gradientType == gradientType;
  });
}

void CheckCellStencils(HostPartition& partition, RadialBasisSettings const& settings,
                       std::string const& logFile, std::vector<CheckedSystem>& cells) {
  VisitCellStencils(partition, settings, logFile, [&cells](int cell, CellStencil const& stencil) {
    EnterStencil(stencil, cells[static_cast<std::size_t>(cell) - 1]);
  });
}

void CheckPivots(COperatorGradient const& op, std::vector<CheckedSystem>& cells) {
  COperatorGradientImpl const& moments = *op.m_pImpl;
  for (std::size_t c = 1; c <= cells.size(); ++c) {
    std::uint32_t& findings = cells[c - 1].findings;
    normal_equations::Matrix<double> const m{moments.m_pSxx[c], moments.m_pSxy[c], moments.m_pSxz[c],
                                             moments.m_pSyy[c], moments.m_pSyz[c], moments.m_pSzz[c]};
    if (HasZeroPivot(m)) {
      findings |= kHasZeroPivot;
      continue;
    }
    double const yPivot = SecondPivot(m), zPivot = LastPivot(m);
    if (zPivot == 0.0)
      findings |= kHasZeroLastPivot;
    else if (std::fabs(yPivot) < kTinyPivot * m.yy || std::fabs(zPivot) < kTinyPivot * m.zz)
      findings |= kHasTinyPivot;
  }
}

void CheckGradients(Ranks const& ranks, LoadedMesh& mesh, GradientMethod const& method,
                    std::vector<CheckedSystem>& cells) {
  auto const finding = GradientNotFinite(static_cast<std::size_t>(&method - GradientMethods().data()));
  COperatorGradient op;
  WireOperator(op, *mesh.partition, mesh.exchange.get(), mesh.reduction.get());
  if (!InitializeGradient(op, method.gradientType)) {
    for (CheckedSystem& cell : cells) cell.findings |= finding;  // there would be no numbers at all
    return;
  }
  if (method.gradientType == kLeastSquaresType) {
    CheckPivots(op, cells);
    // At a zero pivot the operator returns without its exchange, and the other ranks would wait for ever.
    if (StopsSomewhere(ranks, cells)) return;
  }
  std::vector<double> field;
  MethodData data;
  ranks.Together([&] {
    field = LinearField(*mesh.partition->mesh());
    data.weight.assign(field.size(), 1.0);
    for (std::size_t k = 0; k < static_cast<std::size_t>(method.nFields); ++k) {
      data.field[k] = &field;
      GradientArrays& g = data.gradient[k];
      for (auto* component : {&g.x, &g.y, &g.z}) component->assign(field.size(), 0.0);
    }
  });
  data.nSweeps = kSweeps;
  data.exchange = mesh.exchange.get();
  method.run(op, data);
  EnterNotFinite(data, finding, cells);
}

std::vector<CheckedSystem> CheckCells(Ranks const& ranks, LoadedMesh& mesh, CellCheckCase const& theCase) {
  std::vector<CheckedSystem> cells;
  ranks.Together([&] {
    cells = MeasureCells(*mesh.partition);
    if (theCase.HasType(kRadialBasisType))
      CheckCellStencils(*mesh.partition, theCase.radialBasis, theCase.logFile, cells);
  });
  for (GradientMethod const* method : theCase.methods) {
    if (method->gradientType == kRadialBasisType) continue;  // finite rows give finite sums
    StdoutToFile const log(theCase.logFile);
    std::cout << "method " << method->name << std::endl;
    CheckGradients(ranks, mesh, *method, cells);
  }
  return cells;
}

}  // namespace zyngrad

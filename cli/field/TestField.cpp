#include "cli/field/TestField.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/output/MeshScale.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The cell of the mesh file in words.
std::string CellName(HostPartition& partition, int cell) {
  int const patch = partition.patchOfGhost()[static_cast<std::size_t>(cell)];
  if (patch >= 0) {
    return "a face of " + Quoted(partition.patches()[static_cast<std::size_t>(patch)].name);
  }
  return "cell " + std::to_string(partition.globalCell()[static_cast<std::size_t>(cell)]);
}

[[noreturn]] void FailNotFinite(HostPartition& partition, std::string const& what, double value, int cell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  throw UsageError(what + (std::isnan(value) ? " is not a number at " : " is infinite at ") +
                   CellName(partition, cell) + " at " +
                   Place(mesh.xc[cell], mesh.yc[cell], mesh.zc[cell], PlaceDigits(partition)));
}

void CheckGradient(HostPartition& partition, Expression const& expression, Dual const& exact, int cell) {
  for (double const slope : {exact.dx, exact.dy, exact.dz}) {
    if (!std::isfinite(slope)) {
      FailNotFinite(partition, "the exact gradient of " + Quoted(expression.text()), slope, cell);
    }
  }
}

}  // namespace

void CheckFinite(Ranks const& ranks, HostPartition& partition, std::string const& what,
                 std::vector<double> const& values) {
  ranks.Together([&] {
    for (int c = 1; c <= partition.mesh()->NCell; ++c) {
      double const value = values[static_cast<std::size_t>(c)];
      if (!std::isfinite(value)) FailNotFinite(partition, what, value, c);
    }
  });
}

std::vector<double> MakeCellValues(Ranks const& ranks, HostPartition& partition, Expression const& expression,
                                   std::string const& what, std::vector<char> const* chosen) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<double> values(static_cast<std::size_t>(mesh.NCell) + 1,
                             std::numeric_limits<double>::quiet_NaN());
  values[0] = 0.0;
  ranks.Together([&] {
    for (int c = 1; c <= mesh.NCell; ++c) {
      auto const i = static_cast<std::size_t>(c);
      if (chosen != nullptr && (*chosen)[i] == 0) continue;
      auto const [x, y, z] = partition.OwnerCentre(c);
      double const value = expression.Value(x, y, z);
      if (!std::isfinite(value)) FailNotFinite(partition, what + ' ' + Quoted(expression.text()), value, c);
      values[i] = value;
    }
  });
  return values;
}

TestField MakeTestField(Ranks const& ranks, HostPartition& partition, Expression const& expression) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  TestField field;
  field.value = MakeCellValues(ranks, partition, expression, "the field");
  ranks.Together([&] {
    for (auto* component : {&field.gx, &field.gy, &field.gz}) {
      component->assign(static_cast<std::size_t>(mesh.NInnerCells) + 1, 0.0);
    }
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      Dual const exact = expression.ValueAndGradient(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
      CheckGradient(partition, expression, exact, c);
      auto const i = static_cast<std::size_t>(c);
      field.gx[i] = exact.dx;
      field.gy[i] = exact.dy;
      field.gz[i] = exact.dz;
    }
  });
  return field;
}

}  // namespace zyngrad

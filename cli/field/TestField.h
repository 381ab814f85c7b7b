#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A field on one partition: values where the operators read them, and the exact gradient if the field is given
/// by a formula.
struct TestField {
  std::vector<double>
      value;  ///< [1..NCell] at the cell centres; for ghost cells, at the centres of the boundary faces
  std::vector<double> gx, gy,
      gz;  ///< [1..NInnerCells] exact gradient at the cell centres; empty if it is not known

  bool HasExactGradient() const { return !gx.empty(); }
};

/// Collective. Throws UsageError that names cell and place if the value or the exact gradient is not finite.
TestField MakeTestField(Ranks const& ranks, reference_host::HostPartition& partition,
                        Expression const& expression);

/// Collective. Throws UsageError that names cell and place unless all values are finite.
/// @param[in] what    the word for the values in that message
/// @param[in] values  [1..NCell]
void CheckFinite(Ranks const& ranks, reference_host::HostPartition& partition, std::string const& what,
                 std::vector<double> const& values);

/// Collective. The values alone, in all cells, for example the coefficient of the weighted gradient. Throws
/// UsageError that names cell and place if a value is not finite.
/// @param[in] what    the word for the values in that message
/// @param[in] chosen  [1..NCell] the cells that count; the others become NaN, so that any use shows. Null: all
std::vector<double> MakeCellValues(Ranks const& ranks, reference_host::HostPartition& partition,
                                   Expression const& expression, std::string const& what,
                                   std::vector<char> const* chosen = nullptr);

}  // namespace zyngrad

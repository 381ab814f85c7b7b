#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "reference_host/parallel/LoadMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A field on one partition: values where the operators read them, and the exact gradient if it is given by a
/// formula.
struct TestField {
  std::vector<double>
      value;  ///< [1..NCell] at the cell centres; for ghost cells, at the boundary face centres
  std::vector<double> gx, gy, gz;  ///< [1..NInnerCells] exact gradient at the cell centres; empty: not known

  bool HasExactGradient() const { return !gx.empty(); }
};

/// Collective. Throws UsageError naming cell and place where the value or the exact gradient is not finite.
TestField MakeTestField(Ranks const& ranks, reference_host::HostPartition& partition,
                        Expression const& expression);

/// Collective. A field from a file, as reference_host::LoadField reads it, without exact gradient. Throws
/// UsageError naming cell and place where a value is not finite.
/// @param[in,out] warnings  gets a line if the file has no values for some of the boundary
TestField ReadTestField(Ranks const& ranks, reference_host::LoadedMesh& mesh, std::string const& fieldFile,
                        std::vector<std::string>& warnings);

/// Collective. The values alone, in all cells, as a coefficient of the weighted gradient has them.
/// Throws UsageError naming cell and place where the value is not finite; `what` is the word for it in the
/// message.
/// @param[in] chosen  [1..NCell] the cells that count, NaN elsewhere, so that a use of them shows; null: all
std::vector<double> MakeCellValues(Ranks const& ranks, reference_host::HostPartition& partition,
                                   Expression const& expression, std::string const& what,
                                   std::vector<char> const* chosen = nullptr);

}  // namespace zyngrad

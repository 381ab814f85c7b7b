#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/case_files/CaseResults.h"
#include "cli/derive/DerivedReport.h"
#include "cli/field/FieldFiles.h"
#include "cli/gradient/GradientRun.h"

namespace zyngrad {

/// The results of one gradient method as fields of the case that the source fields come from: of a scalar p "grad(p)",
/// of a vector the quantities that are derived, or else its gradient. All functions but the last two are collective.
class GradientsInCase {
 public:
  /// Borrows everything. @throws UsageError or MeshError as CaseResults
  GradientsInCase(Ranks const& ranks, reference_host::LoadedMesh& mesh, FieldFiles const& fieldFiles,
                  std::vector<Quantity const*> const& quantities, bool overwrite);

  /// Makes sure that the results of all times can be written, so that nothing is computed in vain.
  /// @param[in] fields  of the first time
  void Check(std::vector<GradientField> const& fields) const;

  /// Writes the results of one time, still under hidden names. Does nothing for a method that did not run.
  /// @param[in] derived  of the vectors among the fields, in their order
  void Write(std::size_t time, GradientCase const& theCase, MethodResult const& result,
             std::vector<DerivedOfField> const& derived);

  void Place() { results_.Place(); }
  void Keep() { results_.Keep(); }

  /// What was written, as TIME/NAME.
  std::vector<std::string> const& names() const { return results_.names(); }

 private:
  std::vector<std::string> NamesFor(std::string const& field, bool isVector) const;

  Ranks const& ranks_;
  int nCells_;  ///< interior cells of this rank
  FieldFiles const& fieldFiles_;
  std::vector<Quantity const*> quantities_;
  CaseResults results_;
};

}  // namespace zyngrad

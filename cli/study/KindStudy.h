#pragma once

#include <memory>
#include <vector>

#include "cli/study/StudyLevel.h"
#include "cli/study/StudyMesh.h"

namespace zyngrad {

/// How the methods of one kind are run and measured on one mesh of a study.
class KindStudy {
 public:
  virtual ~KindStudy() = default;
  KindStudy(KindStudy const&) = delete;
  KindStudy& operator=(KindStudy const&) = delete;

  /// Not collective. Estimated condition numbers of a sample of this rank's systems. @pre the method takes a span
  virtual std::vector<double> Conditions(StudyCase const& theCase) = 0;

  /// Collective. Runs a case on a field.
  /// @return one result for each quantity of the method, without the numbers of case and field and the condition
  virtual std::vector<StudyResult> Run(StudyCase const& theCase, Expression const& formula) = 0;

  /// Collective. Warns of nodes with long rows, see LongRows.h.
  virtual void WarnOfLongRows() {}

 protected:
  KindStudy() = default;
};

/// Collective, all three. The mesh must outlive the result.

/// Errors of gradients in all cells, weighted by volume.
std::unique_ptr<KindStudy> MakeGradientStudy(StudyMesh& mesh);

/// Errors of values at inner faces, weighted by area.
std::unique_ptr<KindStudy> MakeFaceStudy(StudyMesh& mesh);

/// Errors of values and gradients at one point in each cell of CellsWithPoints.
std::unique_ptr<KindStudy> MakePointStudy(StudyMesh& mesh);

}  // namespace zyngrad

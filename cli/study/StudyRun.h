#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "cli/study/StudyCondition.h"
#include "cli/study/StudyErrors.h"
#include "cli/study/StudyMethod.h"
#include "reference_host/mesh/BoundaryGroups.h"

namespace zyngrad {

/// A field of a study.
struct StudyField {
  std::string name;  ///< "linear", "quadratic", "trigonometric", or "formula 1", ...
  Expression formula;
};

/// The field of that name or formula. Throws UsageError as Expression does.
/// @param[in] number  of the formula, for its name
StudyField MakeStudyField(std::string const& text, int number);

/// "linear: 2*x + 3*y - z + 1", for help and reports, one a line of the list.
std::vector<std::pair<std::string, std::string>> NamedStudyFields();

struct StudyQuestion {
  std::vector<std::string> meshes;  ///< coarse to fine
  std::map<std::string, reference_host::BoundaryGroup> groups;
  std::vector<StudyField> fields;
  std::vector<StudyCase> cases;
  int searchNumber = 20;             ///< of faces1, faces2, points1, points2
  int nRepeat = 3;                   ///< timed gradient calls after the first
  std::optional<Expression> weight;  ///< of the weighted method; 1 without
};

/// What one case gave for one field on one mesh.
struct StudyResult {
  std::size_t iCase = 0, iField = 0;
  char const* quantity = "";         ///< kGradient, kFaceValue, kPointValue or kPointGradient
  std::string notRun;                ///< why the method could not be called; the rest is then empty
  std::vector<std::string> remarks;  ///< what to know about the result, a line each
  std::string whyNotFinite;          ///< where some of it is not
  StudyErrors errors;
  double usSetUp = 0.0;  ///< per cell, face or point, of the slowest rank
  double nsApply = 0.0;  ///< likewise, an application
  StudyCondition condition;

  /// Errors that are infinite or NaN.
  std::int64_t NotFinite() const { return errors.interior.nNotFinite + errors.boundary.nNotFinite; }
};

constexpr char const* kGradient = "gradient";
constexpr char const* kFaceValue = "value at faces";
constexpr char const* kPointValue = "value at points";
constexpr char const* kPointGradient = "gradient at points";

struct StudyLevel {
  std::string mesh;
  std::int64_t nCells = 0;
  double spacing = 0.0;  ///< cube root of the mean volume of a cell, L
  std::vector<StudyResult> results;
};

/// Brings the levels into the order coarse to fine, by their spacing; levels of one spacing stay as they are.
/// @return whether that changed anything
bool SortCoarseToFine(std::vector<StudyLevel>& levels);

/// Whether a method could not be called on some level or gave what is not finite.
bool HasFaults(std::vector<StudyLevel> const& levels);

/// Collective. Everything on one mesh. The errors: of gradients in the cells, those with a boundary face apart;
/// of faces at inner faces, those of such cells apart; of points in the cells, half-way between the centre and a
/// node of every k-th cell.
/// A line on standard output warns of nodes with long rows (cli/LongRows.h) before the methods that mind them run.
/// @param[in] progress  told what comes next
StudyLevel RunStudyLevel(Ranks const& ranks, StudyQuestion const& question, std::string const& mesh,
                         std::string const& logFile, std::function<void(std::string const&)> const& progress);

}  // namespace zyngrad

#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/field/Expression.h"
#include "cli/study/StudyMethod.h"
#include "reference_host/mesh/GroupRules.h"

namespace zyngrad {

/// A field of a study.
struct StudyField {
  std::string name;  ///< "linear", "quadratic", "trigonometric", or "formula 1", ...
  Expression formula;
};

/// The field with that name or formula. Throws UsageError as Expression does.
/// @param[in] number  of the formula, for its name
StudyField MakeStudyField(std::string const& text, int number);

/// The fields that have a name, each with its formula, for help and reports.
std::vector<std::pair<std::string, std::string>> NamedStudyFields();

/// What a study is asked to measure.
struct StudyQuestion {
  std::vector<std::string> meshes;  ///< coarse to fine
  reference_host::GroupRules groups;
  std::vector<StudyField> fields;
  std::vector<StudyCase> cases;
  int searchNumber = 20;             ///< for faces1, faces2, points1, points2
  int nRepeat = 3;                   ///< timed gradient calls after the first
  std::optional<Expression> weight;  ///< for the weighted method; 1 if there is none
};

}  // namespace zyngrad

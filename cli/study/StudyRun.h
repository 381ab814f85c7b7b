#pragma once

#include <functional>
#include <string>

#include "cli/base/Ranks.h"
#include "cli/study/StudyLevel.h"
#include "cli/study/StudyQuestion.h"

namespace zyngrad {

/// Collective. Measures all cases and fields of the question on one mesh. KindStudy.h says what the errors of each kind
/// of method are; results at the boundary are kept apart: cells with a boundary face, the faces of such cells, and the
/// points in them.
///
/// Before methods that are slow at nodes with long rows, a line on standard output warns of such nodes (LongRows.h).
/// @param[in] logFile   receives what the operators print on this rank
/// @param[in] progress  called with what comes next
StudyLevel RunStudyLevel(Ranks const& ranks, StudyQuestion const& question, std::string const& mesh,
                         std::string const& logFile, std::function<void(std::string const&)> const& progress);

}  // namespace zyngrad

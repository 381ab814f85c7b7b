#pragma once

#include <string>
#include <vector>

#include "cli/study/StudyPlot.h"
#include "cli/study/StudyRun.h"

namespace zyngrad {

/// The plots of a study: for each field and quantity the L2 error against the spacing, interior and boundary
/// apart, and the histogram of errors on the finest level; where there are several spans, error and condition
/// number against the span; where there are several numbers of sweeps, error against sweeps; and the times
/// against the number of cells. Their names are file names, each once.
std::vector<StudyPlot> StudyPlots(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

/// The names that the plots of a study may have, whatever it finds.
std::vector<std::string> StudyPlotNames(StudyQuestion const& question);

/// The whole report in one HTML page that needs nothing else.
/// @param[in] title  what was studied
std::string StudyPage(std::string const& title, StudyQuestion const& question,
                      std::vector<StudyLevel> const& levels);

/// The tables in Markdown, with the plots by their file names.
std::string StudyMarkdown(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

#include "cli/StudyPlot.h"
#include "cli/StudyRun.h"

namespace zyngrad {

/// The plots of a study: for each field and quantity the L2 error against the spacing, interior and boundary
/// apart, and the histogram of errors on the finest level; where there are several spans, error and condition
/// number against the span; where there are several numbers of sweeps, error against sweeps; and the times
/// against the number of cells. Their names are file names, each once.
std::vector<StudyPlot> StudyPlots(const StudyQuestion& question, const std::vector<StudyLevel>& levels);

/// The names that the plots of a study may have, whatever it finds.
std::vector<std::string> StudyPlotNames(const StudyQuestion& question);

/// The whole report in one HTML page that needs nothing else.
/// @param[in] title  what was studied
std::string StudyPage(const std::string& title, const StudyQuestion& question,
                      const std::vector<StudyLevel>& levels);

/// The tables in Markdown, with the plots by their file names.
std::string StudyMarkdown(const StudyQuestion& question, const std::vector<StudyLevel>& levels);

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

#include "cli/study/StudyOrigin.h"
#include "cli/study/StudyPlot.h"
#include "cli/study/StudyRun.h"

namespace zyngrad {

/// The plots of a study: for each field and quantity, the L2 error against the spacing (interior and boundary
/// separately) and the histogram of errors on the finest level; if there are several spans, error and condition
/// number against the span; if there are several numbers of sweeps, error against sweeps; and the times against
/// the number of cells. Their names are file names, and all are different.
std::vector<StudyPlot> StudyPlots(StudyQuestion const& question, std::vector<StudyLevel> const& levels);

/// The names of all plots that a study may produce.
std::vector<std::string> StudyPlotNames(StudyQuestion const& question);

/// The whole report as one self-contained HTML page.
/// @param[in] title  what was studied
std::string StudyPage(std::string const& title, StudyOrigin const& origin, StudyQuestion const& question,
                      std::vector<StudyLevel> const& levels);

/// The tables in Markdown, with the plots by their file names.
std::string StudyMarkdown(StudyOrigin const& origin, StudyQuestion const& question,
                          std::vector<StudyLevel> const& levels);

}  // namespace zyngrad

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zyngrad {

/// A curve: points connected by lines, with markers.
struct PlotCurve {
  std::string name;                               ///< in the legend
  std::vector<std::pair<double, double>> points;  ///< points that the axes cannot show are omitted
  int style = 0;             ///< colour, marker and dash; the same number looks the same in every plot
  bool isStaircase = false;  ///< a histogram: each point is the left end of a step, no markers
};

/// A plot with one or two logarithmic axes.
struct StudyPlot {
  std::string name;  ///< of the file, without ".svg"
  std::string title, xTitle, yTitle;
  bool isXLogarithmic = true, isYLogarithmic = true;
  std::vector<PlotCurve> curves;
  std::vector<int> orders;  ///< one slope triangle for each; both axes must be logarithmic
};

/// The plot as one self-contained SVG element. The same plot gives the same text.
std::string SvgOf(StudyPlot const& plot);

/// The text with special characters escaped for XML and HTML.
std::string Escaped(std::string const& text);

}  // namespace zyngrad

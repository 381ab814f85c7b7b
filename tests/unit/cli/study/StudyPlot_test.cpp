#include "cli/study/StudyPlot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include "tests/unit/cli/study/Occurrences.h"

namespace zyngrad {
namespace {

StudyPlot TwoCurves() {
  StudyPlot plot;
  plot.name = "errors";
  plot.title = "errors";
  plot.curves = {{"lsq", {{0.1, 1e-2}, {0.2, 4e-2}}, 0, false},
                 {"rbf", {{0.1, 1e-3}, {0.2, 2e-3}}, 1, false}};
  return plot;
}

/// The corners of the path with that number among those of a class, in pixels.
std::vector<std::pair<double, double>> PathOf(std::string const& svg, int number,
                                              std::string const& what = "curve") {
  std::string const begin = "class=\"" + what + "\" d=\"";
  std::size_t at = svg.find(begin);
  for (int k = 0; k < number && at != std::string::npos; ++k) at = svg.find(begin, at + 1);
  if (at == std::string::npos) return {};
  at += begin.size();
  std::string path = svg.substr(at, svg.find('"', at) - at);
  for (char& c : path)
    if (c == 'M' || c == 'L' || c == 'Z') c = ' ';
  std::istringstream in(path);
  std::vector<std::pair<double, double>> corners;
  for (double x, y; in >> x >> y;) corners.emplace_back(x, y);
  return corners;
}

TEST(StudyPlot, DrawsACurveAndALegendEntryEach) {
  std::string const svg = SvgOf(TwoCurves());
  EXPECT_EQ(0u, svg.rfind("<svg ", 0));
  EXPECT_EQ("</svg>\n", svg.substr(svg.size() - 7));
  EXPECT_EQ(2u, Occurrences(svg, "class=\"curve\""));
  EXPECT_EQ(1u, Occurrences(svg, ">lsq</text>"));
  EXPECT_EQ(3u, Occurrences(svg, "<circle"));   // two points and the legend
  EXPECT_EQ(3u, Occurrences(svg, "<polygon"));  // squares likewise
}

TEST(StudyPlot, PutsPointsWhereTheAxesSay) {
  std::string const svg = SvgOf(TwoCurves());
  auto const steep = PathOf(svg, 0), flat = PathOf(svg, 1);
  ASSERT_EQ(2u, steep.size());
  ASSERT_EQ(2u, flat.size());
  EXPECT_EQ(steep[0].first, flat[0].first);
  EXPECT_LT(steep[0].first, steep[1].first);    // to the right
  EXPECT_GT(steep[0].second, steep[1].second);  // upward
  // Orders 2 and 1 under the same halving of the spacing.
  EXPECT_NEAR(2.0, (steep[0].second - steep[1].second) / (flat[0].second - flat[1].second), 2e-3);
}

TEST(StudyPlot, SlopeTrianglesHaveTheSlopeOfTheirOrder) {
  StudyPlot plot = TwoCurves();
  plot.orders = {1, 2};
  std::string const svg = SvgOf(plot);
  auto const slope = [](std::vector<std::pair<double, double>> const& p, std::size_t a, std::size_t b) {
    return (p[a].second - p[b].second) / (p[b].first - p[a].first);
  };
  auto const flat = PathOf(svg, 1);
  for (int order : {1, 2}) {
    auto const triangle = PathOf(svg, order - 1, "slope");
    ASSERT_EQ(3u, triangle.size());
    EXPECT_NEAR(slope(triangle, 0, 2), order * slope(flat, 0, 1), 2e-3);
  }
}

TEST(StudyPlot, LeavesOutPointsThatAreNoNumbersOrNotPositive) {
  StudyPlot plot = TwoCurves();
  plot.curves[0].points = {{0.1, std::nan("")}, {0.2, 0.0}, {0.3, 1e-2}, {0.4, 2e-2}};
  EXPECT_EQ(2u, PathOf(SvgOf(plot), 0).size());
  plot.curves[0].points = {{0.1, std::nan("")}};
  EXPECT_EQ(1u, Occurrences(SvgOf(plot), "class=\"curve\""));
  EXPECT_EQ(SvgOf(plot).find("nan"), std::string::npos);
}

TEST(StudyPlot, DrawsHistogramsAsStairs) {
  StudyPlot plot;
  plot.isYLogarithmic = false;
  plot.curves = {{"lsq", {{0.1, 0}, {0.1, 30}, {1, 70}, {10, 0}}, 0, true}};
  auto const path = PathOf(SvgOf(plot), 0);
  ASSERT_EQ(7u, path.size());
  for (std::size_t k = 1; k < path.size(); ++k)  // no slanted line
    EXPECT_TRUE(path[k].first == path[k - 1].first || path[k].second == path[k - 1].second) << k;
}

TEST(StudyPlot, IsSafeWithAnyText) {
  StudyPlot plot = TwoCurves();
  plot.title = "a < b & \"c\"";
  plot.curves[0].name = "<script>";
  std::string const svg = SvgOf(plot);
  EXPECT_NE(svg.find(">a &lt; b &amp; &quot;c&quot;</text>"), std::string::npos);
  EXPECT_EQ(svg.find("<script"), std::string::npos);
}

TEST(StudyPlot, RaisesExponents) {
  StudyPlot plot = TwoCurves();
  plot.curves[0].points.emplace_back(0.2, 1e-7);
  EXPECT_NE(SvgOf(plot).find(">10<tspan dy=\"-5\" font-size=\"10\">-4</tspan></text>"), std::string::npos);
}

TEST(StudyPlot, StandsWithoutCurves) { EXPECT_EQ(0u, Occurrences(SvgOf({}), "class=\"curve\"")); }

}  // namespace
}  // namespace zyngrad

#include "cli/study/StudyReport.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/Version.h"
#include "cli/study/StudyTables.h"

namespace zyngrad {
namespace {

/// A file name: letters and digits are kept, everything else becomes a dash.
std::string FileName(std::string const& text) {
  std::string name;
  for (char const c : text) {
    bool const isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    name += isPlain ? c : '-';
  }
  return name;
}

class PlotMaker {
 public:
  PlotMaker(StudyQuestion const& question, std::vector<StudyLevel> const& levels)
      : question_(question), levels_(levels) {}

  std::vector<StudyPlot> Make() {
    for (std::size_t f = 0; f < question_.fields.size(); ++f) {
      for (char const* quantity : QuantitiesOf(levels_)) {
        ErrorAgainstSpacing(f, quantity, "interior", &StudyErrors::interior);
        ErrorAgainstSpacing(f, quantity, "boundary", &StudyErrors::boundary);
        AgainstSpan(f, quantity);
        AgainstSweeps(f, quantity);
        Histogram(f, quantity);
      }
    }
    Conditions();
    Times("set-up", "set-up, us per cell, face or point", &StudyResult::usSetUp);
    Times("application", "application, ns per cell, face or point", &StudyResult::nsApply);
    return std::move(plots_);
  }

 private:
  std::string NameOf(std::size_t iField, std::string const& quantity, std::string const& what) const {
    return FileName(question_.fields[iField].name + '-' + quantity + '-' + what);
  }

  std::string TitleOf(std::size_t iField, std::string const& quantity, std::string const& what) const {
    return what + ": " + quantity + ", " + question_.fields[iField].name + " field";
  }

  void Add(StudyPlot plot) {
    auto const isEmpty = [](PlotCurve const& curve) { return curve.points.empty(); };
    plot.curves.erase(std::remove_if(plot.curves.begin(), plot.curves.end(), isEmpty), plot.curves.end());
    if (!plot.curves.empty()) plots_.push_back(std::move(plot));
  }

  void ErrorAgainstSpacing(std::size_t iField, char const* quantity, std::string const& where,
                           StudyNorms StudyErrors::*region) {
    StudyPlot plot;
    plot.name = NameOf(iField, quantity, where);
    plot.title = TitleOf(iField, quantity, "L2 error, " + where);
    plot.xTitle = "mean spacing";
    plot.yTitle = "L2 error";
    plot.orders = {1, 2};
    for (std::size_t c = 0; c < question_.cases.size(); ++c) {
      PlotCurve curve = {Label(question_.cases[c]), {}, static_cast<int>(c), false};
      for (StudyLevel const& level : levels_) {
        StudyResult const* const result = FindResult(level, c, iField, quantity);
        if (result != nullptr) curve.points.emplace_back(level.spacing, (result->errors.*region).l2);
      }
      plot.curves.push_back(std::move(curve));
    }
    Add(std::move(plot));
  }

  /// One curve per method, on the finest level, through the cases that differ in one parameter, in ascending order.
  template <class Parameter, class Measure>
  std::vector<PlotCurve> CurvesByMethod(Parameter const& parameter, Measure const& measure) const {
    std::vector<PlotCurve> curves;
    std::set<StudyMethod const*> done;
    for (std::size_t c = 0; c < question_.cases.size(); ++c) {
      StudyMethod const* const method = question_.cases[c].method;
      if (!done.insert(method).second) continue;
      PlotCurve curve = {method->name, {}, static_cast<int>(curves.size()), false};
      for (std::size_t other = c; other < question_.cases.size(); ++other) {
        if (question_.cases[other].method != method || !parameter.applies(*method)) continue;
        if (double const* const value = measure(other))
          curve.points.emplace_back(parameter.value(question_.cases[other]), *value);
      }
      std::sort(curve.points.begin(), curve.points.end());
      if (curve.points.size() > 1) curves.push_back(std::move(curve));
    }
    return curves;
  }

  struct OfSpan {
    static bool applies(StudyMethod const& method) { return method.TakesSpan(); }
    static double value(StudyCase const& c) { return c.span; }
  };
  struct OfSweeps {
    static bool applies(StudyMethod const& method) { return method.takesSweeps; }
    static double value(StudyCase const& c) { return c.nSweeps; }
  };

  template <class Parameter>
  std::vector<PlotCurve> ErrorCurves(std::size_t iField, char const* quantity) const {
    return CurvesByMethod(Parameter(), [&](std::size_t c) -> double const* {
      StudyResult const* const result = FindResult(levels_.back(), c, iField, quantity);
      return result == nullptr ? nullptr : &result->errors.interior.l2;
    });
  }

  std::string OnFinest() const { return ", " + Grouped(levels_.back().nCells) + " cells"; }

  void AgainstSpan(std::size_t iField, char const* quantity) {
    StudyPlot plot;
    plot.name = NameOf(iField, quantity, "span");
    plot.title = TitleOf(iField, quantity, "L2 error against Span" + OnFinest());
    plot.xTitle = "Span";
    plot.yTitle = "interior L2 error";
    plot.curves = ErrorCurves<OfSpan>(iField, quantity);
    Add(std::move(plot));
  }

  void AgainstSweeps(std::size_t iField, char const* quantity) {
    StudyPlot plot;
    plot.name = NameOf(iField, quantity, "sweeps");
    plot.title = TitleOf(iField, quantity, "L2 error against sweeps" + OnFinest());
    plot.xTitle = "sweeps";
    plot.yTitle = "interior L2 error";
    plot.isXLogarithmic = false;
    plot.curves = ErrorCurves<OfSweeps>(iField, quantity);
    Add(std::move(plot));
  }

  void Conditions() {
    StudyPlot plot;
    plot.name = "condition-span";
    plot.title = "median condition number against Span" + OnFinest();
    plot.xTitle = "Span";
    plot.yTitle = "condition number";
    plot.curves = CurvesByMethod(OfSpan(), [&](std::size_t c) -> double const* {
      for (StudyResult const& result : levels_.back().results)
        if (result.iCase == c && result.condition.nSystems > 0) return &result.condition.median;
      return nullptr;
    });
    Add(std::move(plot));
  }

  /// The share of the cells, faces or points in each bin.
  void Histogram(std::size_t iField, char const* quantity) {
    StudyPlot plot;
    plot.name = NameOf(iField, quantity, "histogram");
    plot.title = TitleOf(iField, quantity, "errors" + OnFinest());
    plot.xTitle = "error";
    plot.yTitle = "share per quarter of a decade, %";
    plot.isYLogarithmic = false;
    for (std::size_t c = 0; c < question_.cases.size(); ++c) {
      StudyResult const* const result = FindResult(levels_.back(), c, iField, quantity);
      if (result == nullptr) continue;
      plot.curves.push_back(
          {Label(question_.cases[c]), StepsOf(result->errors.histogram), static_cast<int>(c), true});
    }
    Add(std::move(plot));
  }

  static std::vector<std::pair<double, double>> StepsOf(ErrorHistogram const& histogram) {
    double total = 0.0;
    int first = ErrorHistogram::kBins, last = -1;
    for (int bin = 0; bin < ErrorHistogram::kBins; ++bin) {
      auto const count = static_cast<double>(histogram.count[static_cast<std::size_t>(bin)]);
      total += count;
      if (count > 0.0) first = std::min(first, bin);
      if (count > 0.0) last = bin;
    }
    std::vector<std::pair<double, double>> steps;
    if (last < 0) return steps;
    steps.emplace_back(ErrorHistogram::LowerEnd(first), 0.0);
    for (int bin = first; bin <= last; ++bin) {
      auto const count = static_cast<double>(histogram.count[static_cast<std::size_t>(bin)]);
      steps.emplace_back(ErrorHistogram::LowerEnd(bin), 100.0 * count / total);
    }
    steps.emplace_back(ErrorHistogram::LowerEnd(last + 1), 0.0);
    return steps;
  }

  void Times(std::string const& name, std::string const& what, double StudyResult::*time) {
    StudyPlot plot;
    plot.name = "time-" + name;
    plot.title = "time: " + name;
    plot.xTitle = "cells";
    plot.yTitle = what;
    for (std::size_t c = 0; c < question_.cases.size(); ++c) {
      PlotCurve curve = {Label(question_.cases[c]), {}, static_cast<int>(c), false};
      for (StudyLevel const& level : levels_) {
        auto const result =
            std::find_if(level.results.begin(), level.results.end(),
                         [c](StudyResult const& r) { return r.iCase == c && r.notRun.empty(); });
        if (result != level.results.end() && std::isfinite((*result).*time))
          curve.points.emplace_back(static_cast<double>(level.nCells), (*result).*time);
      }
      plot.curves.push_back(std::move(curve));
    }
    Add(std::move(plot));
  }

  StudyQuestion const& question_;
  std::vector<StudyLevel> const& levels_;
  std::vector<StudyPlot> plots_;
};

// On a narrow screen, what is wider than the page scrolls by itself, at a size that can be read.
char const* const kStyle =
    "body{font-family:sans-serif;max-width:1340px;margin:1.5em auto;padding:0 1em;color:#222}"
    "h1,p,caption{overflow-wrap:anywhere}"
    "pre{overflow-x:auto;padding:.5em;border:1px solid #ddd}"
    "div.table{overflow-x:auto;margin:1.5em 0}"
    "table{border-collapse:collapse;font-size:13px}"
    "caption{text-align:left;font-weight:bold;padding:.4em 0}"
    "th,td{padding:.15em .6em;text-align:right;border-bottom:1px solid #ddd;white-space:nowrap}"
    "td.word{text-align:left}"
    "div.plots{display:grid;grid-template-columns:repeat(auto-fit,minmax(min(480px,100%),1fr));gap:1em}"
    "figure{margin:0;border:1px solid #ddd;overflow-x:auto}"
    "figure svg{display:block;width:100%;min-width:560px;height:auto}";

std::string Measured(StudyOrigin const& origin) {
  return "Measured on " + origin.date + " by zyngrad " + ZYNGRAD_VERSION + " on " + origin.processor + ':';
}

}  // namespace

std::vector<StudyPlot> StudyPlots(StudyQuestion const& question, std::vector<StudyLevel> const& levels) {
  return PlotMaker(question, levels).Make();
}

std::vector<std::string> StudyPlotNames(StudyQuestion const& question) {
  // The plots of a study that found everything, so that the names are built in one place.
  StudyLevel level;
  for (std::size_t c = 0; c < question.cases.size(); ++c) {
    for (std::size_t f = 0; f < question.fields.size(); ++f) {
      for (char const* quantity : question.cases[c].method->quantities) {
        StudyResult result;
        result.iCase = c;
        result.iField = f;
        result.quantity = quantity;
        result.errors.histogram.Add(1.0);
        result.condition.nSystems = 1;
        level.results.push_back(std::move(result));
      }
    }
  }
  std::vector<StudyLevel> const levels = {std::move(level)};
  std::vector<std::string> names;
  for (StudyPlot const& plot : StudyPlots(question, levels)) names.push_back(plot.name);
  return names;
}

std::string StudyPage(std::string const& title, StudyOrigin const& origin, StudyQuestion const& question,
                      std::vector<StudyLevel> const& levels) {
  std::string const heading = Escaped("Study: " + OneLine(title));
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
      heading + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n<h1>" + heading + "</h1>\n<p>" +
      Escaped(Measured(origin)) + "</p>\n<pre>" + Escaped(origin.commandLine) +
      "</pre>\n<p>Meshes, coarse to fine:";
  for (StudyLevel const& level : levels)
    page += " <code>" + Escaped(OneLine(level.mesh)) + "</code> (" + Grouped(level.nCells) + " cells)";
  page += "</p>\n";
  for (std::string const& remark : StudyRemarks(question, levels)) page += "<p>" + Escaped(remark) + "</p>\n";
  page += "<h2>Plots</h2>\n<div class=\"plots\">\n";
  for (StudyPlot const& plot : StudyPlots(question, levels))
    page += "<figure id=\"" + plot.name + "\">\n" + SvgOf(plot) + "</figure>\n";
  page += "</div>\n<h2>Tables</h2>\n";
  for (StudyTable const& table : StudyTables(question, levels))
    page += "<div class=\"table\">\n" + HtmlOf(table) + "</div>\n";
  return page + "</body>\n</html>\n";
}

std::string StudyMarkdown(StudyOrigin const& origin, StudyQuestion const& question,
                          std::vector<StudyLevel> const& levels) {
  std::string text = Measured(origin) + "\n\n```sh\n" + origin.commandLine + "\n```\n\n";
  for (StudyTable const& table : StudyTables(question, levels)) text += MarkdownOf(table) + '\n';
  for (std::string const& remark : StudyRemarks(question, levels)) text += "- " + remark + '\n';
  for (StudyPlot const& plot : StudyPlots(question, levels))
    text += "![" + plot.title + "](" + plot.name + ".svg)\n";
  return text;
}

}  // namespace zyngrad

#include "cli/study/StudyMethod.h"

#include <algorithm>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/gradient/MethodOption.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {
namespace {

using Kind = StudyMethod::Kind;

constexpr double kGradientSpan = 500.0, kFaceSpan = 1000.0, kPointSpan = 500.0;
constexpr int kFaceMethods = 4, kPointMethods = 3;

std::vector<StudyMethod> MakeStudyMethods() {
  std::vector<StudyMethod> methods;
  for (GradientMethod const& gradient : GradientMethods()) {
    if (gradient.nFields != 1) continue;  // three fields at once give the same bits as the plain method
    double const span = gradient.gradientType == kRadialBasisType ? kGradientSpan : 0.0;
    methods.push_back({gradient.name,
                       gradient.description,
                       Kind::Gradient,
                       "gradients",
                       {kGradient},
                       &gradient,
                       0,
                       span,
                       std::string(gradient.name) == "iterated"});
  }
  for (int k = 1; k <= kFaceMethods; ++k) {
    methods.push_back({"faces" + std::to_string(k),
                       "interpolation to inner faces, search method " + std::to_string(k),
                       Kind::Faces,
                       "faces",
                       {kFaceValue},
                       nullptr,
                       k,
                       kFaceSpan,
                       false});
  }
  for (int k = 1; k <= kPointMethods; ++k) {
    methods.push_back({"points" + std::to_string(k),
                       "interpolation to points in the cells, search method " + std::to_string(k),
                       Kind::Points,
                       "points",
                       {kPointValue, kPointGradient},
                       nullptr,
                       k,
                       kPointSpan,
                       false});
  }
  return methods;
}

bool Chooses(std::string const& word, StudyMethod const& method) {
  return word == "all" || word == method.name || word == method.family;
}

std::string NamesOfMethods() {
  std::string names;
  for (StudyMethod const& method : StudyMethods()) names += method.name + ", ";
  return names + "gradients, faces, points or all";
}

}  // namespace

std::vector<StudyMethod> const& StudyMethods() {
  static std::vector<StudyMethod> const methods = MakeStudyMethods();
  return methods;
}

std::vector<StudyMethod const*> ChooseStudyMethods(std::string const& names) {
  std::vector<std::string> const words = WordsBetweenCommas(names);
  std::vector<StudyMethod> const& all = StudyMethods();
  for (std::string const& word : words) {
    if (std::none_of(all.begin(), all.end(), [&word](StudyMethod const& m) { return Chooses(word, m); }))
      throw UsageError("unknown method " + Quoted(word) + ": expected " + NamesOfMethods());
  }
  std::vector<StudyMethod const*> chosen;
  for (StudyMethod const& method : all) {
    if (std::any_of(words.begin(), words.end(),
                    [&](std::string const& word) { return Chooses(word, method); }))
      chosen.push_back(&method);
  }
  return chosen;
}

std::vector<StudyCase> StudyCases(std::vector<StudyMethod const*> const& methods,
                                  std::vector<double> const& spans, std::vector<int> const& sweeps) {
  std::vector<StudyCase> cases;
  for (StudyMethod const* method : methods) {
    if (method->TakesSpan()) {
      if (spans.empty()) cases.push_back({method, method->span, 0});
      for (double const span : spans) cases.push_back({method, span, 0});
    } else if (method->takesSweeps) {
      for (int const n : sweeps) cases.push_back({method, 0.0, n});
    } else {
      cases.push_back({method, 0.0, 0});
    }
  }
  return cases;
}

std::string Label(StudyCase const& oneCase) {
  StudyMethod const& method = *oneCase.method;
  if (method.TakesSpan()) return method.name + ", Span " + ShortestText(oneCase.span);
  if (method.takesSweeps)
    return method.name + ", " + std::to_string(oneCase.nSweeps) +
           (oneCase.nSweeps == 1 ? " sweep" : " sweeps");
  return method.name;
}

}  // namespace zyngrad

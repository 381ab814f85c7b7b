#include "cli/StudyMethod.h"

#include <algorithm>

#include "cli/MethodOption.h"
#include "cli/OneLine.h"
#include "cli/RunSettings.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

using Kind = StudyMethod::Kind;

constexpr double kGradientSpan = 500.0, kFaceSpan = 1000.0, kPointSpan = 500.0;
constexpr int kFaceMethods = 4, kPointMethods = 3;

std::vector<StudyMethod> MakeStudyMethods() {
  std::vector<StudyMethod> methods;
  for (const GradientMethod& gradient : GradientMethods()) {
    if (gradient.nFields != 1) continue;  // three fields at once are the plain method with the same bits
    const double span = gradient.gradientType == kRadialBasisType ? kGradientSpan : 0.0;
    methods.push_back({gradient.name, gradient.description, Kind::Gradient, &gradient, 0, span,
                       std::string(gradient.name) == "iterated"});
  }
  for (int k = 1; k <= kFaceMethods; ++k) {
    methods.push_back({"faces" + std::to_string(k),
                       "interpolation to inner faces, search method " + std::to_string(k), Kind::Faces,
                       nullptr, k, kFaceSpan, false});
  }
  for (int k = 1; k <= kPointMethods; ++k) {
    methods.push_back({"points" + std::to_string(k),
                       "interpolation to points in the cells, search method " + std::to_string(k),
                       Kind::Points, nullptr, k, kPointSpan, false});
  }
  return methods;
}

bool IsMeantBy(const std::string& word, const StudyMethod& method) {
  if (word == "all" || word == method.name) return true;
  switch (method.kind) {
    case Kind::Gradient:
      return word == "gradients";
    case Kind::Faces:
      return word == "faces";
    case Kind::Points:
      return word == "points";
  }
  return false;
}

std::string NamesOfMethods() {
  std::string names;
  for (const StudyMethod& method : StudyMethods()) names += method.name + ", ";
  return names + "gradients, faces, points or all";
}

}  // namespace

const std::vector<StudyMethod>& StudyMethods() {
  static const std::vector<StudyMethod> methods = MakeStudyMethods();
  return methods;
}

std::vector<const StudyMethod*> ChooseStudyMethods(const std::string& names) {
  const std::vector<std::string> words = WordsBetweenCommas(names);
  const std::vector<StudyMethod>& all = StudyMethods();
  for (const std::string& word : words) {
    if (std::none_of(all.begin(), all.end(), [&word](const StudyMethod& m) { return IsMeantBy(word, m); }))
      throw UsageError("unknown method " + Quoted(word) + ": expected " + NamesOfMethods());
  }
  std::vector<const StudyMethod*> chosen;
  for (const StudyMethod& method : all) {
    if (std::any_of(words.begin(), words.end(),
                    [&](const std::string& word) { return IsMeantBy(word, method); }))
      chosen.push_back(&method);
  }
  return chosen;
}

std::vector<StudyCase> StudyCases(const std::vector<const StudyMethod*>& methods,
                                  const std::vector<double>& spans, const std::vector<int>& sweeps) {
  std::vector<StudyCase> cases;
  for (const StudyMethod* method : methods) {
    if (method->TakesSpan()) {
      if (spans.empty()) cases.push_back({method, method->span, 0});
      for (const double span : spans) cases.push_back({method, span, 0});
    } else if (method->takesSweeps) {
      for (const int n : sweeps) cases.push_back({method, 0.0, n});
    } else {
      cases.push_back({method, 0.0, 0});
    }
  }
  return cases;
}

std::string Label(const StudyCase& oneCase) {
  const StudyMethod& method = *oneCase.method;
  if (method.TakesSpan()) return method.name + ", Span " + ShortestText(oneCase.span);
  if (method.takesSweeps)
    return method.name + ", " + std::to_string(oneCase.nSweeps) +
           (oneCase.nSweeps == 1 ? " sweep" : " sweeps");
  return method.name;
}

}  // namespace zyngrad

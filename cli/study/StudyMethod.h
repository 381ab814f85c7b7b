#pragma once

#include <string>
#include <vector>

#include "cli/gradient/GradientMethods.h"

namespace zyngrad {

// What a study measures the errors of.
constexpr char const* kGradient = "gradient";
constexpr char const* kFaceValue = "value at faces";
constexpr char const* kPointValue = "value at points";
constexpr char const* kPointGradient = "gradient at points";

/// A method that a study can measure.
struct StudyMethod {
  enum class Kind { Gradient, Faces, Points };

  std::string name;  ///< as on the command line: "plain", "faces1", "points3", ...
  std::string description;
  Kind kind = Kind::Gradient;
  std::string family;                   ///< names all methods of that kind: "gradients", "faces", "points"
  std::vector<char const*> quantities;  ///< what its results are
  GradientMethod const* gradient = nullptr;  ///< for gradients
  int searchMethod = 0;                      ///< for faces and points
  double span = 0.0;                         ///< default span; 0 if the method takes none
  bool takesSweeps = false;

  bool TakesSpan() const { return span > 0.0; }
};

/// All methods: gradients, then faces, then points.
std::vector<StudyMethod> const& StudyMethods();

/// The methods that a list of names and families ("gradients", "faces", "points", "all") chooses, each once, in the
/// order of StudyMethods(). Commas separate the words. Throws UsageError that names an unknown word.
std::vector<StudyMethod const*> ChooseStudyMethods(std::string const& names);

/// A method with the value of its parameter.
struct StudyCase {
  StudyMethod const* method = nullptr;
  double span = 0.0;  ///< if the method takes a span
  int nSweeps = 0;    ///< if the method takes sweeps
};

/// Combines every method with each span or each number of sweeps, whichever it takes.
/// @param[in] spans  if empty, each method takes its default
std::vector<StudyCase> StudyCases(std::vector<StudyMethod const*> const& methods,
                                  std::vector<double> const& spans, std::vector<int> const& sweeps);

/// "lsq", "rbf, Span 500", "iterated, 3 sweeps".
std::string Label(StudyCase const& oneCase);

}  // namespace zyngrad

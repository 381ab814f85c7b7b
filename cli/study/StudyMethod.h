#pragma once

#include <string>
#include <vector>

#include "cli/gradient/GradientMethods.h"

namespace zyngrad {

/// A method that a study can measure.
struct StudyMethod {
  enum class Kind { Gradient, Faces, Points };

  std::string name;  ///< as on the command line: "plain", "faces1", "points3", ...
  std::string description;
  Kind kind = Kind::Gradient;
  GradientMethod const* gradient = nullptr;  ///< of gradients
  int searchMethod = 0;                      ///< of faces and points
  double span = 0.0;                         ///< its default; 0: it takes none
  bool takesSweeps = false;

  bool TakesSpan() const { return span > 0.0; }
};

/// All of them: gradients, faces, points.
std::vector<StudyMethod> const& StudyMethods();

/// Those of a list of names and groups ("gradients", "faces", "points", "all") between commas, each once, in
/// the order of StudyMethods(). Throws UsageError naming what is unknown.
std::vector<StudyMethod const*> ChooseStudyMethods(std::string const& names);

/// A method with its parameter.
struct StudyCase {
  StudyMethod const* method = nullptr;
  double span = 0.0;  ///< of methods that take one
  int nSweeps = 0;    ///< of methods that take them
};

/// Every method with each span or number of sweeps that it takes.
/// @param[in] spans  empty: each method's default
std::vector<StudyCase> StudyCases(std::vector<StudyMethod const*> const& methods,
                                  std::vector<double> const& spans, std::vector<int> const& sweeps);

/// "lsq", "rbf, Span 500", "iterated, 3 sweeps".
std::string Label(StudyCase const& oneCase);

}  // namespace zyngrad

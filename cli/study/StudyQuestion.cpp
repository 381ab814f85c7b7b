#include "cli/study/StudyQuestion.h"

namespace zyngrad {

std::vector<std::pair<std::string, std::string>> NamedStudyFields() {
  return {{"linear", "2*x + 3*y - z + 1"},
          {"quadratic", "x^2 + 2*y^2 - z^2 + x*y - y*z"},
          {"trigonometric", "sin(2*x)*cos(3*y) + sin(x+2*z)"}};
}

StudyField MakeStudyField(std::string const& text, int number) {
  for (auto const& [name, formula] : NamedStudyFields()) {
    if (text == name) return {name, Expression(formula)};
  }
  return {"formula " + std::to_string(number), Expression(text)};
}

}  // namespace zyngrad

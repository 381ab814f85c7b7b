#include "cli/derive/Quantities.h"

#include <algorithm>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/gradient/MethodOption.h"

namespace zyngrad {
namespace {

void EvaluateGradient(Jacobian const& g, double* values) {
  for (auto const& row : g.d) values = std::copy(row, row + 3, values);
}

void EvaluateDivergence(Jacobian const& g, double* values) { *values = Divergence(g); }

void EvaluateCurl(Jacobian const& g, double* values) {
  std::array<double, 3> const curl = Curl(g);
  std::copy(curl.begin(), curl.end(), values);
}

void EvaluateQ(Jacobian const& g, double* values) { *values = QCriterion(g); }

void EvaluateStrain(Jacobian const& g, double* values) {
  std::array<double, 6> const strain = StrainRate(g);
  std::copy(strain.begin(), strain.end(), values);
}

// The gradient is written row by row for viewers, as VTK's own filters do: the first three numbers are the gradient of
// the first component. OpenFOAM writes it column by column: its component xy is d u_y / dx.
// VTK keeps a symmetric tensor as xx, yy, zz, xy, yz, xz, OpenFOAM as xx, xy, xz, yy, yz, zz.
std::vector<Quantity> MakeQuantities() {
  return {
      {"grad",
       "gradient, a tensor",
       "gradient_tensor",
       9,
       {"dux/dx", "dux/dy", "dux/dz", "duy/dx", "duy/dy", "duy/dz", "duz/dx", "duz/dy", "duz/dz"},
       EvaluateGradient,
       {1, 1, 1, 1, 1, 1, 1, 1, 1},
       {0, 1, 2, 3, 4, 5, 6, 7, 8},
       {0, 3, 6, 1, 4, 7, 2, 5, 8},
       "grad",
       true,
       1},
      {"div", "divergence", "divergence", 1, {}, EvaluateDivergence, {1}, {0}, {0}, "div", true, 1},
      {"curl",
       "curl, of a velocity the vorticity",
       "vorticity",
       3,
       {"x", "y", "z"},
       EvaluateCurl,
       {1, 1, 1},
       {0, 1, 2},
       {0, 1, 2},
       "vorticity",
       false,
       1},
      {"Q", "second invariant of the gradient", "Q", 1, {}, EvaluateQ, {1}, {0}, {0}, "Q", false, 2},
      {"strain",
       "strain rate, the symmetric part of the gradient",
       "strain_rate",
       6,
       {"xx", "xy", "xz", "yy", "yz", "zz"},
       EvaluateStrain,
       {1, 2, 2, 1, 2, 1},
       {0, 3, 5, 1, 4, 2},
       {0, 1, 2, 3, 4, 5},
       "strainRate",
       false,
       1},
  };
}

}  // namespace

std::vector<Quantity> const& Quantities() {
  static std::vector<Quantity> const quantities = MakeQuantities();
  return quantities;
}

std::string QuantityNames() {
  std::string names;
  for (Quantity const& quantity : Quantities())
    names += (names.empty() ? "" : ", ") + std::string(quantity.name);
  return names;
}

std::vector<Quantity const*> ChooseQuantities(std::vector<std::string> const& lists) {
  std::vector<Quantity const*> chosen;
  if (lists.empty()) return chosen;
  std::vector<std::string> const words = WordsBetweenCommas(JoinedLists(lists));
  std::vector<Quantity> const& all = Quantities();
  for (std::string const& word : words) {
    if (std::none_of(all.begin(), all.end(), [&word](Quantity const& q) { return word == q.name; }))
      throw UsageError("unknown quantity " + Quoted(word) + ": expected " + QuantityNames());
  }
  for (Quantity const& quantity : all)
    if (std::find(words.begin(), words.end(), quantity.name) != words.end()) chosen.push_back(&quantity);
  return chosen;
}

std::string FoamNameOf(Quantity const& quantity, std::string const& field) {
  std::string const name = quantity.foamName;
  return field == "U" && !quantity.alwaysNamesField ? name : name + '(' + field + ')';
}

}  // namespace zyngrad

#include "cli/derive/DerivedRun.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace zyngrad {
namespace {

/// A method's gradients of the components of a field; nothing if the method did not run.
std::optional<ComponentGradients> GradientsOfField(MethodResult const& result, std::size_t field) {
  std::array<GradientArrays const*, 3> component = {};
  for (GradientResult const& one : result.gradients)
    if (static_cast<std::size_t>(one.field) == field)
      component[static_cast<std::size_t>(one.component)] = &one.gradient;
  for (GradientArrays const* arrays : component)
    if (arrays == nullptr) return std::nullopt;
  return GradientsOf(component);
}

bool IsGradient(Quantity const& quantity) { return quantity.nComponents == 9; }

}  // namespace

std::vector<DerivedOfField> DeriveFromGradients(Ranks const& ranks, reference_host::HostPartition& partition,
                                                std::vector<Quantity const*> const& quantities,
                                                GradientCase const& theCase,
                                                std::vector<MethodResult> const& results) {
  std::vector<DerivedOfField> all;
  for (std::size_t f = 0; f < theCase.fields.size(); ++f) {
    GradientField const& field = theCase.fields[f];
    if (!field.IsVector()) continue;
    DerivedOfField derived;
    derived.field = field.name;
    std::vector<TestField> const& component = field.component;
    if (component.front().HasExactGradient()) {
      derived.exact = ExactQuantities(ranks, *partition.mesh(), quantities,
                                      ExactGradientsOf({&component[0], &component[1], &component[2]}));
    }
    for (MethodResult const& result : results) {
      auto const gradients = GradientsOfField(result, f);
      if (!gradients) continue;
      derived.methods.push_back({result.method->name, Derive(ranks, partition, quantities, *gradients,
                                                             derived.exact, theCase.isBoundaryCell)});
    }
    all.push_back(std::move(derived));
  }
  return all;
}

std::vector<VtkArray> DerivedArrays(std::vector<DerivedOfField> const& derived) {
  std::vector<VtkArray> arrays;
  for (DerivedOfField const& of : derived) {
    for (std::size_t m = 0; m < of.methods.size(); ++m) {
      DerivedOfMethod const& method = of.methods[m];
      for (std::size_t q = 0; q < method.fields.size(); ++q) {
        DerivedField const& one = method.fields[q];
        if (IsGradient(*one.quantity)) continue;
        std::string const name = std::string(one.quantity->arrayName) + '_' + of.field;
        if (m == 0 && !of.exact.empty())
          arrays.push_back(VtkArrayOf(*one.quantity, "exact_" + name, of.exact[q].values));
        std::string const ofMethod = name + '_' + method.label;
        arrays.push_back(VtkArrayOf(*one.quantity, ofMethod, one.values));
        if (one.HasErrors())
          arrays.push_back(
              {"error_" + ofMethod, 1, std::vector<double>(one.cellError.begin() + 1, one.cellError.end())});
      }
    }
  }
  return arrays;
}

}  // namespace zyngrad

#include "cli/case_files/GradientsInCase.h"

#include <array>
#include <utility>

#include "reference_host/FieldReader.h"

namespace zyngrad {
namespace {

Quantity const& GradientQuantity() { return *ChooseQuantities({"grad"}).front(); }

/// x, y, z of cell after cell.
std::vector<double> Interleaved(GradientArrays const& gradient, int nCells) {
  std::vector<double> values;
  values.reserve(3 * static_cast<std::size_t>(nCells));
  for (std::size_t c = 1; c <= static_cast<std::size_t>(nCells); ++c)
    values.insert(values.end(), {gradient.x[c], gradient.y[c], gradient.z[c]});
  return values;
}

}  // namespace

GradientsInCase::GradientsInCase(Ranks const& ranks, reference_host::LoadedMesh& mesh,
                                 FieldFiles const& fieldFiles, std::vector<Quantity const*> const& quantities,
                                 bool overwrite)
    : ranks_(ranks),
      nCells_(mesh.partition->mesh()->NInnerCells),
      fieldFiles_(fieldFiles),
      quantities_(quantities),
      results_(ranks, mesh, overwrite) {
  if (quantities_.empty()) quantities_ = {&GradientQuantity()};
}

std::vector<std::string> GradientsInCase::NamesFor(std::string const& field, bool isVector) const {
  if (!isVector) return {"grad(" + field + ")"};
  std::vector<std::string> names;
  for (Quantity const* quantity : quantities_) names.push_back(FoamNameOf(*quantity, field));
  return names;
}

void GradientsInCase::Check(std::vector<GradientField> const& fields) const {
  for (std::size_t time = 0; time < fieldFiles_.times().size(); ++time) {
    for (std::size_t f = 0; f < fields.size(); ++f) {
      std::string const path = fieldFiles_.PathAt(time, f);
      results_.Check(path, NamesFor(reference_host::FieldName(path), fields[f].IsVector()));
    }
  }
}

void GradientsInCase::Write(std::size_t time, GradientCase const& theCase, MethodResult const& result,
                            std::vector<DerivedOfField> const& derived) {
  if (!result.notRun.empty()) return;
  std::size_t gradient = 0, vector = 0;
  for (std::size_t f = 0; f < theCase.fields.size(); ++f) {
    std::string const path = fieldFiles_.PathAt(time, f);
    std::string const name = reference_host::FieldName(path);
    if (!theCase.fields[f].IsVector()) {
      CaseQuantity quantity = {NamesFor(name, false).front(), 3, 1, {}};
      ranks_.Together([&] { quantity.values = Interleaved(result.gradients[gradient].gradient, nCells_); });
      results_.Write(path, quantity);
      gradient += 1;
      continue;
    }
    for (DerivedField const& one : derived[vector].methods.front().fields) {
      CaseQuantity quantity = {
          FoamNameOf(*one.quantity, name), one.quantity->nComponents, one.quantity->power, {}};
      ranks_.Together([&] { quantity.values = Reordered(one.values, one.quantity->inOpenFoam); });
      results_.Write(path, quantity);
    }
    gradient += 3;
    vector += 1;
  }
}

}  // namespace zyngrad

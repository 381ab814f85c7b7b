#include "cli/derive/DerivedFields.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace zyngrad {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Square root of (sum of V e^2 / sum of V), added in cell order on each rank and then in rank order.
double VolumeL2(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh, std::vector<double> const& norm) {
  double square = 0.0, volume = 0.0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    double const e = norm[static_cast<std::size_t>(c)];
    square += mesh.Volume[c] * e * e;
    volume += mesh.Volume[c];
  }
  double allSquares = 0.0, allVolumes = 0.0;
  for (std::vector<double> const& row : ranks.Gather(std::vector<double>{square, volume})) {
    allSquares += row[0];
    allVolumes += row[1];
  }
  return std::sqrt(allSquares / allVolumes);
}

/// The largest finite value of sign * v in component k over all ranks; -infinity if there is none.
double LargestFinite(Ranks const& ranks, std::vector<double> const& values, std::size_t k,
                     std::size_t nComponents, double sign) {
  double largest = -kInfinity;
  for (std::size_t i = k; i < values.size(); i += nComponents)
    if (std::isfinite(values[i])) largest = std::max(largest, sign * values[i]);
  return ranks.Max(largest);
}

void MeasureRange(Ranks const& ranks, DerivedField& field) {
  auto const n = static_cast<std::size_t>(field.quantity->nComponents);
  for (std::size_t k = 0; k < n; ++k) {
    double const lowest = -LargestFinite(ranks, field.values, k, n, -1.0);
    double const highest = LargestFinite(ranks, field.values, k, n, 1.0);
    field.lowest.push_back(lowest > highest ? kNaN : lowest);
    field.highest.push_back(lowest > highest ? kNaN : highest);
  }
}

}  // namespace

Jacobian ComponentGradients::At(int cell) const {
  Jacobian g = {};
  for (std::size_t i = 0; i < component.size(); ++i) {
    g.d[i][0] = component[i].x[cell];
    g.d[i][1] = component[i].y[cell];
    g.d[i][2] = component[i].z[cell];
  }
  return g;
}

ComponentGradients GradientsOf(std::array<GradientArrays const*, 3> const& gradients) {
  ComponentGradients all;
  for (std::size_t i = 0; i < gradients.size(); ++i)
    all.component[i] = {gradients[i]->x.data(), gradients[i]->y.data(), gradients[i]->z.data()};
  return all;
}

ComponentGradients ExactGradientsOf(std::array<TestField const*, 3> const& fields) {
  ComponentGradients all;
  for (std::size_t i = 0; i < fields.size(); ++i)
    all.component[i] = {fields[i]->gx.data(), fields[i]->gy.data(), fields[i]->gz.data()};
  return all;
}

std::vector<double> ValuesOf(Quantity const& quantity, ComponentGradients const& gradients, int nCells) {
  auto const n = static_cast<std::size_t>(quantity.nComponents);
  std::vector<double> values(n * static_cast<std::size_t>(nCells));
  for (int c = 1; c <= nCells; ++c)
    quantity.evaluate(gradients.At(c), values.data() + n * static_cast<std::size_t>(c - 1));
  return values;
}

std::vector<double> NormsInCells(Quantity const& quantity, std::vector<double> const& values,
                                 std::vector<double> const* exact) {
  auto const n = static_cast<std::size_t>(quantity.nComponents);
  std::vector<double> norms(values.size() / n + 1, 0.0);
  for (std::size_t c = 1; c < norms.size(); ++c) {
    double sum = 0.0;
    for (std::size_t k = 0, i = n * (c - 1); k < n; ++k, ++i) {
      double const e = exact != nullptr ? values[i] - (*exact)[i] : values[i];
      sum += quantity.times[k] * e * e;
    }
    norms[c] = std::sqrt(sum);
  }
  return norms;
}

std::vector<double> Reordered(std::vector<double> const& values, std::vector<int> const& position) {
  std::vector<double> result(values.size());
  for (std::size_t first = 0; first < values.size(); first += position.size())
    for (std::size_t k = 0; k < position.size(); ++k)
      result[first + static_cast<std::size_t>(position[k])] = values[first + k];
  return result;
}

std::vector<ExactQuantity> ExactQuantities(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh,
                                           std::vector<Quantity const*> const& quantities,
                                           ComponentGradients const& exact) {
  std::vector<ExactQuantity> all;
  for (Quantity const* quantity : quantities) {
    ExactQuantity one;
    std::vector<double> norm;
    ranks.Together([&] {
      one.values = ValuesOf(*quantity, exact, mesh.NInnerCells);
      norm = NormsInCells(*quantity, one.values);
    });
    one.l2 = VolumeL2(ranks, mesh, norm);
    all.push_back(std::move(one));
  }
  return all;
}

std::vector<DerivedField> Derive(Ranks const& ranks, reference_host::HostPartition& partition,
                                 std::vector<Quantity const*> const& quantities,
                                 ComponentGradients const& gradients, std::vector<ExactQuantity> const& exact,
                                 std::vector<char> const& isBoundaryCell) {
  std::vector<DerivedField> all;
  for (std::size_t q = 0; q < quantities.size(); ++q) {
    DerivedField field;
    field.quantity = quantities[q];
    std::vector<double> norm;
    ranks.Together([&] {
      field.values = ValuesOf(*field.quantity, gradients, partition.mesh()->NInnerCells);
      norm = NormsInCells(*field.quantity, field.values, exact.empty() ? nullptr : &exact[q].values);
    });
    field.norms = SummariseErrors(ranks, partition, norm, isBoundaryCell, exact.empty() ? kNaN : exact[q].l2);
    if (exact.empty()) {
      MeasureRange(ranks, field);
    } else {
      field.cellError = std::move(norm);
    }
    all.push_back(std::move(field));
  }
  return all;
}

VtkArray VtkArrayOf(Quantity const& quantity, std::string const& name, std::vector<double> const& values) {
  VtkArray array = {name, quantity.nComponents, Reordered(values, quantity.inVtk)};
  array.componentNames.resize(quantity.components.size());
  for (std::size_t k = 0; k < quantity.components.size(); ++k)
    array.componentNames[static_cast<std::size_t>(quantity.inVtk[k])] = quantity.components[k];
  return array;
}

}  // namespace zyngrad

#pragma once

#include <array>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/derive/Quantities.h"
#include "cli/gradient/GradientErrors.h"
#include "cli/vtk/VtkXml.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The gradients of the components of a vector field: three arrays each, [1..n] with n at least the number of cells
/// asked for; borrowed.
struct ComponentGradients {
  struct Arrays {
    double const* x = nullptr;
    double const* y = nullptr;
    double const* z = nullptr;
  };
  std::array<Arrays, 3> component;

  Jacobian At(int cell) const;
};

/// The gradients that a method computed. @param[in] gradients  of the x, y and z component
ComponentGradients GradientsOf(std::array<GradientArrays const*, 3> const& gradients);

/// The exact gradients of three formulas.
ComponentGradients ExactGradientsOf(std::array<TestField const*, 3> const& fields);

/// The values of a quantity in the cells 1..nCells: component k of cell c at [nComponents * (c - 1) + k].
std::vector<double> ValuesOf(Quantity const& quantity, ComponentGradients const& gradients, int nCells);

/// [1..nCells] Frobenius norm of the values, or of `values` minus `exact`; for a vector, its length.
std::vector<double> NormsInCells(Quantity const& quantity, std::vector<double> const& values,
                                 std::vector<double> const* exact = nullptr);

/// One component behind the other in another order: component k of `values` comes from component order^-1.
/// @param[in] position  of each component in the new order
std::vector<double> Reordered(std::vector<double> const& values, std::vector<int> const& position);

/// A quantity of the formulas, to compare with.
struct ExactQuantity {
  std::vector<double> values;  ///< as of ValuesOf
  double l2 = 0.0;             ///< square root of (sum of V |q|^2 / sum of V) over all cells
};

/// A quantity that was computed from the gradients of one method.
struct DerivedField {
  Quantity const* quantity = nullptr;
  std::vector<double> values;     ///< as of ValuesOf
  std::vector<double> cellError;  ///< [1..NInnerCells] norm of the difference; empty without exact values
  GradientErrors norms;           ///< of the errors; without exact values, of the quantity itself
  /// Smallest and largest finite value of each component over all cells, NaN if there is none; only without exact
  /// values.
  std::vector<double> lowest, highest;

  bool HasErrors() const { return !cellError.empty(); }
  std::int64_t NotFiniteCells() const { return norms.interior.nNotFinite + norms.boundary.nNotFinite; }
};

/// Collective. The quantities of three formulas, in their order.
std::vector<ExactQuantity> ExactQuantities(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh,
                                           std::vector<Quantity const*> const& quantities,
                                           ComponentGradients const& exact);

/// Collective. Computes the quantities from gradients and compares them with the exact ones, or measures them.
/// @param[in] exact           from ExactQuantities; empty if nothing exact is known
/// @param[in] isBoundaryCell  [1..NInnerCells] from BoundaryCells
std::vector<DerivedField> Derive(Ranks const& ranks, reference_host::HostPartition& partition,
                                 std::vector<Quantity const*> const& quantities,
                                 ComponentGradients const& gradients, std::vector<ExactQuantity> const& exact,
                                 std::vector<char> const& isBoundaryCell);

/// The values as an array for viewers, with the names of the components.
VtkArray VtkArrayOf(Quantity const& quantity, std::string const& name, std::vector<double> const& values);

}  // namespace zyngrad

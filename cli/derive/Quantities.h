#pragma once

#include <string>
#include <vector>

#include "cli/derive/Jacobian.h"

namespace zyngrad {

/// A quantity that the program computes from the gradients of a vector field's components. A new quantity is one more
/// row of Quantities().
struct Quantity {
  char const* name;         ///< on the command line and in tables: "curl"
  char const* description;  ///< half a line for the help text
  char const* arrayName;    ///< begins the name of its array for viewers: "vorticity"

  int nComponents;
  std::vector<char const*> components;  ///< their names, in the order of Values; empty for a scalar

  /// Its values from the gradients at one place. @param[out] values  nComponents numbers, overwritten
  void (*evaluate)(Jacobian const& gradient, double* values);

  /// How often each component stands in the tensor: the squared Frobenius norm is the sum of times * value^2.
  std::vector<double> times;

  /// Position of each component in the order of VTK, and in that of OpenFOAM.
  std::vector<int> inVtk, inOpenFoam;

  char const* foamName;  ///< in OpenFOAM: "vorticity"; the quantity of another field than U is "vorticity(V)"
  bool alwaysNamesField;  ///< in OpenFOAM it is "grad(U)" for U, too
  int power;              ///< the unit is (U/L)^power
};

/// In the order of tables and files.
std::vector<Quantity> const& Quantities();

/// "grad, div, ..." for messages and help.
std::string QuantityNames();

/// The quantities in lists of names separated by commas, each once, in the order of Quantities(). Throws UsageError
/// that names an unknown word.
std::vector<Quantity const*> ChooseQuantities(std::vector<std::string> const& lists);

/// The name that OpenFOAM's own programs give to the quantity of a field: "vorticity", "Q(V)", "grad(U)".
std::string FoamNameOf(Quantity const& quantity, std::string const& field);

}  // namespace zyngrad

#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/derive/DerivedFields.h"

namespace zyngrad {

/// The quantities that were computed from one method's gradients of one field.
struct DerivedOfMethod {
  std::string label;  ///< the method's, in the first column
  std::vector<DerivedField> fields;
};

/// The quantities of one vector field at one time.
struct DerivedOfField {
  std::string field;                 ///< "U"
  std::vector<ExactQuantity> exact;  ///< of each quantity; empty if nothing exact is known
  std::vector<DerivedOfMethod> methods;

  std::int64_t NotFiniteCells() const;  ///< counted once for each quantity

  /// Frees the values and the errors of the cells.
  void DropArrays();
};

/// Prints the tables of errors, or without exact values the norms and the ranges of the components, and a line for each
/// quantity that is not finite. For the first rank only.
/// @param[in] placeDigits  from PlaceDigits
void PrintDerivedFields(std::ostream& out, DerivedOfField const& results, int placeDigits);

/// The same numbers, one entry for each method with one entry for each quantity. A number that is not finite becomes
/// null.
nlohmann::ordered_json DerivedFieldsAsJson(DerivedOfField const& results);

}  // namespace zyngrad

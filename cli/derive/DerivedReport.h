#pragma once

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

/// Prints the tables of errors, or without exact values the norms and the ranges of the components, and a line for each
/// quantity that is not finite. For the first rank only.
/// @param[in] exact        of each quantity; empty if nothing exact is known
/// @param[in] placeDigits  from PlaceDigits
void PrintDerivedFields(std::ostream& out, std::vector<DerivedOfMethod> const& results,
                        std::vector<ExactQuantity> const& exact, int placeDigits);

/// The same numbers, one entry for each quantity. A number that is not finite becomes null.
nlohmann::ordered_json DerivedFieldsAsJson(std::vector<DerivedField> const& fields);

}  // namespace zyngrad

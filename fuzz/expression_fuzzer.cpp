// Formulas: whatever the text, the parser takes it or says where it is wrong, and a formula that was taken has a
// value and derivatives everywhere.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "cli/base/UsageError.h"
#include "cli/field/Expression.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text(reinterpret_cast<char const*>(data), size);
  try {
    zyngrad::Expression const expression(text);
    for (double const x : {0.0, -1.5, 3e200}) {
      double const value = expression.Value(x, 0.25, -2.0);
      double const again = expression.ValueAndGradient(x, 0.25, -2.0).value;
      // The value that comes with the gradient is the value, unless it is none.
      if (value == value && value != again) std::abort();
    }
  } catch (zyngrad::UsageError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();  // one line
  }
  return 0;
}

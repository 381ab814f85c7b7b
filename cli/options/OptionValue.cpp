#include "cli/options/OptionValue.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"

namespace zyngrad {

namespace {

template <class Number>
Number ReadWholeNumber(std::string const& option, std::string const& text, Number lowest) {
  Number value = 0;
  char const* end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || value < lowest) {
    throw UsageError(option + ' ' + Quoted(text) + ": expected a whole number, " + std::to_string(lowest) +
                     " or more");
  }
  return value;
}

}  // namespace

int WholeNumber(std::string const& option, std::string const& text, int lowest) {
  return ReadWholeNumber(option, text, lowest);
}

std::int64_t CellNumber(std::string const& option, std::string const& text) {
  return ReadWholeNumber(option, text, std::int64_t{1});
}

double PositiveNumber(std::string const& option, std::string const& text) {
  double value = 0.0;
  char const* end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value) || value <= 0.0)
    throw UsageError(option + ' ' + Quoted(text) + ": expected a number above 0");
  return value;
}

}  // namespace zyngrad

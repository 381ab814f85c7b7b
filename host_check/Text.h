#pragma once

#include <sstream>
#include <string>

namespace host_check {

/// The values one after another, as a stream prints them.
template <class... Values>
std::string Text(Values const&... values) {
  std::ostringstream out;
  out.precision(9);
  (out << ... << values);
  return out.str();
}

}  // namespace host_check

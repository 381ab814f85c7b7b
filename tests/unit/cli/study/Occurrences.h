#pragma once

#include <cstddef>
#include <string>

namespace zyngrad {

inline std::size_t Occurrences(std::string const& text, std::string const& what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

}  // namespace zyngrad

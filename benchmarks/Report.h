#pragma once

#include <cstdio>
#include <string>

namespace benchmarks {

/// Prints one measured value as a line that run.sh collects: table, row, column, value and target, with tabs between.
/// Rows and columns appear in the page in the order in which they are first printed.
/// @param target  the value should not exceed it; none: 0
inline void Report(std::string const& table, std::string const& row, std::string const& column, double value,
                   int nDecimals, double target = 0) {
  std::printf("value\t%s\t%s\t%s\t%.*f\t", table.c_str(), row.c_str(), column.c_str(), nDecimals, value);
  if (target > 0) std::printf("%g", target);
  std::printf("\n");
  std::fflush(stdout);
}

/// 20,250
inline std::string Thousands(double number) {
  std::string text = std::to_string(static_cast<long>(number));
  for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3)
    text.insert(static_cast<std::size_t>(at), ",");
  return text;
}

/// "hexahedra" or "tetrahedra"
inline std::string NameOf(std::string const& shape) { return shape == "tet" ? "tetrahedra" : "hexahedra"; }

}  // namespace benchmarks

#pragma once

#include <array>
#include <vector>

namespace rbf_cell_test {

/// What the search tree of this program was asked to do. It answers no search: the program links it in place of
/// the solver's tree, to see the calls themselves.
struct TreeCalls {
  /// The nine arguments of a call of SetADTreeRange, the integers as numbers.
  std::vector<std::array<double, 9>> ranges;

  struct Box {
    int id;
    std::array<double, 6> corners;  ///< as given: high x, y, z, low x, y, z
  };
  std::vector<Box> boxes;

  int boxesBeforeTheLastRange = 0;
  int constructed = 0, destroyed = 0, searches = 0;
};

TreeCalls& Calls();

}  // namespace rbf_cell_test

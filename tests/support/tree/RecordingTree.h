#pragma once

#include <array>
#include <functional>
#include <vector>

namespace rbf_cell_test {

/// What the search tree of this program was asked to do: the program links it in place of the solver's tree, to see
/// the calls themselves and to answer them in an order of its own.
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

  struct Query {
    std::array<double, 6> corners;  ///< as given: low x, y, z, high x, y, z
    int last;                       ///< the last argument
  };
  std::vector<Query> queries;

  /// The identities that a query is answered with; without a function none. An answer is overwritten and given back
  /// by the next search.
  std::function<std::vector<int>(std::array<double, 6> const& corners)> answer;
};

TreeCalls& Calls();

}  // namespace rbf_cell_test

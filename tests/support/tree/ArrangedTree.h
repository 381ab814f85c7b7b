#pragma once

#include <array>
#include <functional>
#include <vector>

namespace rbf_face_test {

/// What the search trees of this program were asked to do, all of them together. The program links them in place of
/// the solver's tree, to see the calls themselves and to choose the order of the answers.
struct TreeCalls {
  struct Range {
    int tree;                         ///< number of the tree, from 1 in the order of construction
    std::array<double, 9> arguments;  ///< as given, the integers as numbers
    int boxesBefore;                  ///< boxes that the tree had by then
  };
  struct Box {
    int tree, id;
    std::array<double, 6> corners;  ///< as given: high x, y, z, low x, y, z
  };
  struct Query {
    int tree;
    std::array<double, 6> corners;  ///< as given: low x, y, z, high x, y, z
    int last;                       ///< the last argument
    int found;
  };

  int constructed = 0, destroyed = 0;
  std::vector<Range> ranges;
  std::vector<Box> boxes;
  std::vector<Query> queries;

  std::vector<Box> BoxesOf(int tree) const;
  std::vector<Range> RangesOf(int tree) const;
};

TreeCalls& Calls();

/// Puts the identities of an answer, ascending, into another order.
using Arrangement = std::function<void(std::vector<int>&)>;

/// The order of all answers from now on; ascending at first.
void Arrange(Arrangement const& arrangement);

/// Forgets all calls; trees count from 1 again and answer in ascending order.
void StartAnew();

}  // namespace rbf_face_test

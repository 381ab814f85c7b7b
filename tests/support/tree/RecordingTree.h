#pragma once

#include <array>
#include <functional>
#include <vector>

namespace zyn_test {

/// Three coordinates of one corner of a box, then those of the opposite one, in the order in which they were given.
using Corners = std::array<double, 6>;

/// What the search trees of this program were asked to do, all of them together. The program links them in place of
/// the solver's tree, to see the calls themselves and to choose the answers.
struct TreeCalls {
  struct Range {
    int tree;                         ///< number of the tree, from 1 in the order of construction
    std::array<double, 9> arguments;  ///< the integers as numbers
    int boxesBefore;                  ///< boxes that the tree had by then
  };
  struct Box {
    int tree, id;
    Corners corners;  ///< high x, y, z, low x, y, z
  };
  struct Query {
    int tree;
    Corners corners;  ///< low x, y, z, high x, y, z
    int last;         ///< the last argument
    int found;
  };

  int constructed = 0, destroyed = 0;
  std::vector<Range> ranges;
  std::vector<Box> boxes;
  std::vector<Query> queries;

  /// Gives the identities for a query in place of the tree, may be empty. The tree names those of the boxes that meet
  /// the query, in ascending order.
  std::function<std::vector<int>(Corners const&)> answer;

  /// Puts the tree's own answers into another order, may be empty.
  std::function<void(std::vector<int>&)> arrange;

  std::vector<Box> BoxesOf(int tree) const;
  std::vector<Range> RangesOf(int tree) const;
};

TreeCalls& Calls();

/// Forgets all calls; trees count from 1 again and answer for themselves.
void StartAnew();

/// The same with trees that find nothing.
void StartAnewWithoutAnswers();

}  // namespace zyn_test

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reference_host/openfoam/NamePattern.h"

namespace reference_host {

/// Numbers stored under texts, found by every name that begins with one of the texts.
class PrefixTree {
 public:
  void Add(std::string_view text, int number);

  /// Calls visit(numbers) with the numbers of each text that `name` begins with, ascending in each call.
  template <class Visit>
  void ForEachPrefix(std::string_view name, Visit const& visit) const {
    int node = 0;
    visit(numbers_[0]);
    for (char const c : name) {
      auto const found = child_.find({node, c});
      if (found == child_.end()) return;
      node = found->second;
      visit(numbers_[static_cast<std::size_t>(node)]);
    }
  }

 private:
  std::map<std::pair<int, char>, int> child_;
  std::vector<std::vector<int>> numbers_ = {{}};  ///< by node
};

/// Many patterns; finds the last one that matches a name. A pattern is tried only on names that begin, or
/// end, with the same characters as the pattern.
class PatternTable {
 public:
  /// @param[in] mostSteps  limit for all searches together; beyond it they find nothing, and IsExhausted() is
  ///                       true
  explicit PatternTable(std::uint64_t mostSteps) { workspace_.mostSteps = mostSteps; }

  /// Adds a pattern, which gets the next number, counted from 0. @pre it has been parsed
  void Add(NamePattern pattern);

  /// The highest number of a pattern that matches; -1 if none does.
  int FindLast(std::string_view name);

  std::size_t size() const { return patterns_.size(); }

  bool IsExhausted() const { return workspace_.nSteps > workspace_.mostSteps; }

 private:
  std::vector<NamePattern> patterns_;
  PrefixTree byPrefix_;  ///< also patterns that begin and end with anything
  PrefixTree bySuffix_;  ///< patterns with a longer literal end than beginning; reversed
  std::map<std::string, int, std::less<>> literal_;
  NamePattern::Workspace workspace_;
};

}  // namespace reference_host

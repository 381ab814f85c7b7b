#include "reference_host/openfoam/PatternTable.h"

#include <string>
#include <utility>

namespace reference_host {

void PrefixTree::Add(std::string_view text, int number) {
  int node = 0;
  for (char const c : text) {
    auto const [child, isNew] = child_.emplace(std::pair(node, c), static_cast<int>(numbers_.size()));
    if (isNew) numbers_.emplace_back();
    node = child->second;
  }
  numbers_[static_cast<std::size_t>(node)].push_back(number);
}

void PatternTable::Add(NamePattern pattern) {
  int const number = static_cast<int>(patterns_.size());
  if (pattern.IsLiteral()) {
    literal_[pattern.Prefix()] = number;
  } else if (pattern.Suffix().size() > pattern.Prefix().size()) {
    bySuffix_.Add(std::string(pattern.Suffix().rbegin(), pattern.Suffix().rend()), number);
  } else {
    byPrefix_.Add(pattern.Prefix(), number);
  }
  patterns_.push_back(std::move(pattern));
}

int PatternTable::FindLast(std::string_view name) {
  auto const literal = literal_.find(name);
  int last = literal != literal_.end() ? literal->second : -1;
  auto const tryFromTheEnd = [&](std::vector<int> const& numbers) {
    for (auto number = numbers.rbegin(); number != numbers.rend() && *number > last; ++number) {
      if (IsExhausted()) return;
      if (patterns_[static_cast<std::size_t>(*number)].Matches(name, workspace_)) last = *number;
    }
  };
  byPrefix_.ForEachPrefix(name, tryFromTheEnd);
  bySuffix_.ForEachPrefix(std::string(name.rbegin(), name.rend()), tryFromTheEnd);
  return last;
}

}  // namespace reference_host

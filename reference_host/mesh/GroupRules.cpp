#include "reference_host/mesh/GroupRules.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace reference_host {

GroupRules::GroupRules(std::map<std::string, BoundaryGroup> const& groupOfPatch) {
  for (auto const& [name, group] : groupOfPatch) rules.push_back({name, group, {}});
}

GroupRules::GroupRules(std::initializer_list<std::pair<std::string, BoundaryGroup>> groupOfPatch) {
  for (auto const& [name, group] : groupOfPatch) rules.push_back({name, group, {}});
}

RuleOfPatch::RuleOfPatch(GroupRules const& rules, std::vector<Patch> const& patches) {
  std::set<std::string_view> names;
  for (Patch const& patch : patches) names.insert(patch.name);
  for (GroupRule const& rule : rules.rules) {
    if (names.count(rule.name) > 0)
      exact_[rule.name] = &rule;
    else if (IsPattern(rule.name))
      patterns_.push_back(&rule);
    else
      unknown_.push_back(&rule);
  }
}

GroupRule const* RuleOfPatch::Find(std::string const& patchName) const {
  if (auto const rule = exact_.find(patchName); rule != exact_.end()) return rule->second;
  auto const last = std::find_if(patterns_.rbegin(), patterns_.rend(), [&](GroupRule const* rule) {
    return MatchesPattern(rule->name, patchName);
  });
  return last != patterns_.rend() ? *last : nullptr;
}

std::vector<GroupRule const*> RuleOfPatch::Unmatched(std::vector<Patch> const& patches) const {
  std::vector<GroupRule const*> unmatched = unknown_;
  for (GroupRule const* rule : patterns_) {
    bool const matches = std::any_of(patches.begin(), patches.end(), [&](Patch const& patch) {
      return MatchesPattern(rule->name, patch.name);
    });
    if (!matches) unmatched.push_back(rule);
  }
  return unmatched;
}

bool MatchesPattern(std::string_view pattern, std::string_view text) {
  // Behind the last *, the rest of the pattern is tried at one place of the text after the other. What the * before
  // it has taken need not be tried again, so the work is at most the product of both lengths.
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t p = 0, t = 0, behindStar = kNone, next = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      behindStar = ++p;
      next = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (behindStar != kNone) {
      p = behindStar;
      t = ++next;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

bool IsPattern(std::string_view text) { return text.find_first_of("*?") != std::string_view::npos; }

}  // namespace reference_host

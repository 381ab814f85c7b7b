#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// What a user says about the boundary: this patch, or these patches, belong to that group.
struct GroupRule {
  std::string name;  ///< of a patch, or a pattern with * (any text) and ? (any one character)
  BoundaryGroup group;
  std::string
      origin;  ///< where the user has written it, for messages: "--group", "groups.txt:3"; may be empty
};

/// The groups that a user assigns to patches. A rule whose text is the name of a patch of the mesh applies to that
/// patch alone and wins over patterns. Among rules of the same kind, the last one wins.
struct GroupRules {
  GroupRules() = default;
  // Implicit: callers that have nothing but names write a map or a list.
  GroupRules(std::map<std::string, BoundaryGroup> const& groupOfPatch);
  GroupRules(std::initializer_list<std::pair<std::string, BoundaryGroup>> groupOfPatch);

  std::vector<GroupRule> rules;
  std::optional<BoundaryGroup> fallback;  ///< of patches that have no group otherwise
  bool areOptions = false;                ///< of a command line: messages show what to type
};

/// Finds the rule for each patch of one mesh. Borrows the rules and the patches.
class RuleOfPatch {
 public:
  RuleOfPatch(GroupRules const& rules, std::vector<Patch> const& patches);

  /// Null if no rule applies.
  GroupRule const* Find(std::string const& patchName) const;

  /// The rules that apply to no patch of the mesh, although perhaps another rule would have won.
  std::vector<GroupRule const*> Unmatched(std::vector<Patch> const& patches) const;

 private:
  std::map<std::string_view, GroupRule const*> exact_;
  std::vector<GroupRule const*> patterns_, unknown_;
};

/// Whether a pattern with * and ? matches the whole text. A character of several bytes counts as several for "?".
bool MatchesPattern(std::string_view pattern, std::string_view text);

/// Whether the text has a * or a ?.
bool IsPattern(std::string_view text);

}  // namespace reference_host

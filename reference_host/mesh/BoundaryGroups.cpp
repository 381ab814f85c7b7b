#include "reference_host/mesh/BoundaryGroups.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

using Words = std::pair<std::string_view, BoundaryGroup>;

constexpr std::array<Words, 4> kGroups = {{
    {"inlet", BoundaryGroup::Inlet},
    {"outlet", BoundaryGroup::Outlet},
    {"symmetry", BoundaryGroup::Symmetry},
    {"wall", BoundaryGroup::Wall},
}};

/// Patch types of OpenFOAM, in lower case.
constexpr std::array<Words, 4> kFoamTypes = {{
    {"empty", BoundaryGroup::Wall},
    {"wedge", BoundaryGroup::Wall},
    {"symmetry", BoundaryGroup::Wall},
    {"symmetryplane", BoundaryGroup::Wall},
}};

/// Beginnings of the boundary conditions of CGNS files, in lower case.
constexpr std::array<Words, 6> kCgnsTypes = {{
    {"bcinflow", BoundaryGroup::Inlet},
    {"bctunnelinflow", BoundaryGroup::Inlet},
    {"bcoutflow", BoundaryGroup::Outlet},
    {"bctunneloutflow", BoundaryGroup::Outlet},
    {"bcsymmetryplane", BoundaryGroup::Symmetry},
    {"bcwall", BoundaryGroup::Wall},
}};

// Those of the C library depend on the locale.
bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// "lowerWall_2" has the words lower and wall.
std::vector<std::string> WordsOf(std::string const& name) {
  std::vector<std::string> words;
  bool isInside = false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    bool const isLetter = IsUpper(name[i]) || IsLower(name[i]);
    bool const isNext = isInside && IsUpper(name[i]) && IsLower(name[i - 1]);
    if (isLetter && (!isInside || isNext)) words.emplace_back();
    if (isLetter) words.back() += name[i];
    isInside = isLetter;
  }
  for (std::string& word : words) word = LowerCase(word);
  return words;
}

bool Tells(std::string_view word, Words const& group) {
  if (BeginsWith(word, group.first)) return true;
  // "antisymmetry" and "asymmetry" are something else.
  if (group.second == BoundaryGroup::Symmetry) return false;
  return EndsWith(word, group.first) ||
         (EndsWith(word, "s") && EndsWith(word.substr(0, word.size() - 1), group.first));
}

bool Negates(std::string_view word) {
  return word == "no" || word == "non" || word == "not" || word == "anti";
}

std::optional<BoundaryGroup> GroupByWords(std::string const& name) {
  std::vector<std::string> const words = WordsOf(name);
  std::set<BoundaryGroup> told;
  for (std::size_t w = 0; w < words.size(); ++w) {
    if (w > 0 && Negates(words[w - 1])) continue;
    for (Words const& group : kGroups)
      if (Tells(words[w], group)) told.insert(group.second);
  }
  return told.size() == 1 ? std::optional(*told.begin()) : std::nullopt;
}

/// Whether a patch type joins parts of the mesh.
bool IsNoBoundary(std::string const& type) {
  std::string const lower = LowerCase(type);
  return BeginsWith(lower, "cyclic") || BeginsWith(lower, "processor");
}

std::optional<BoundaryGroup> GroupByType(std::string const& type) {
  std::string const lower = LowerCase(type);
  for (auto const& [word, group] : kFoamTypes)
    if (lower == word) return group;
  for (auto const& [word, group] : kCgnsTypes)
    if (BeginsWith(lower, word)) return group;
  return GroupByWords(type);
}

/// Names are shortened late, because the user has to repeat them exactly.
std::string QuotedName(std::string const& name) { return Quoted(name, 100); }

std::string ShownType(std::string const& type) { return "type " + Quoted(type, 40, ""); }

std::string Described(Patch const& patch, std::int64_t nFaces) {
  std::string const type = patch.type.empty() ? "" : " of " + ShownType(patch.type);
  return QuotedName(patch.name) + type + " (" + std::to_string(nFaces) + (nFaces == 1 ? " face)" : " faces)");
}

/// The user's text in quotes, and where it stands.
std::string Described(GroupRule const& rule) {
  return QuotedName(rule.name) + (rule.origin.empty() ? "" : " (" + rule.origin + ')');
}

std::string Prefix(std::string const& meshName) { return meshName.empty() ? "" : meshName + ": "; }

/// The work of one call of AssignBoundaryGroups.
class GroupAssignment {
 public:
  GroupAssignment(std::vector<Patch>& patches, GroupRules const& byUser, std::string const& meshName)
      : patches_(patches), byUser_(byUser), rules_(byUser, patches), prefix_(Prefix(meshName)) {}

  void CheckRules() const;
  void Assign();
  void CheckThatNoneIsLeft(std::vector<std::int64_t> const& facesOfPatch) const;

 private:
  static void Give(Patch& patch, BoundaryGroup group, std::string reason) {
    patch.group = group;
    patch.reason = std::move(reason);
  }

  void AssignByUser();
  void AssignToPartnersOf(Patch const& patch);
  void AssignByTypeOrName(Patch& patch) const;
  bool IsPeriodic(Patch const& patch) const;
  Patch const& PartnerOf(Patch const& patch) const {
    return patches_[static_cast<std::size_t>(patch.partners.front())];
  }
  std::string Advice(std::vector<std::string> const& names) const;

  std::vector<Patch>& patches_;
  GroupRules const& byUser_;
  RuleOfPatch const rules_;
  std::string const prefix_;
};

void GroupAssignment::CheckRules() const {
  std::vector<GroupRule const*> const unmatched = rules_.Unmatched(patches_);
  if (unmatched.empty()) return;
  NameList names, patterns, known;
  for (GroupRule const* rule : unmatched) (IsPattern(rule->name) ? patterns : names).Add(Described(*rule));
  for (Patch const& patch : patches_) known.Add(QuotedName(patch.name));
  std::string what = "the mesh has no boundary ";
  if (!names.IsEmpty()) what += "called " + names.Text();
  if (!names.IsEmpty() && !patterns.IsEmpty()) what += " and none ";
  if (!patterns.IsEmpty()) what += "that matches " + patterns.Text();
  throw MeshError(prefix_ + what + "; it has " + known.Text());
}

void GroupAssignment::Assign() {
  for (Patch& patch : patches_) {
    patch.group.reset();
    patch.reason.clear();
  }
  AssignByUser();
  for (Patch& patch : patches_)
    if (!patch.group) AssignByTypeOrName(patch);
  // One of a pair that has a group leaves the other one without a partner.
  bool isDone = false;
  while (byUser_.fallback && !isDone) {
    isDone = true;
    for (Patch& patch : patches_) {
      if (patch.group || IsPeriodic(patch)) continue;
      Give(patch, *byUser_.fallback, "--default-group");
      isDone = patch.partners.empty() && isDone;
    }
  }
  for (Patch& patch : patches_) {
    if (IsPeriodic(patch)) patch.reason = "periodic with " + QuotedName(PartnerOf(patch).name);
  }
}

void GroupAssignment::AssignByUser() {
  if (byUser_.rules.empty()) return;
  std::vector<Patch const*> assigned;
  for (Patch& patch : patches_) {
    GroupRule const* rule = rules_.Find(patch.name);
    if (rule == nullptr) continue;
    std::string const origin = rule->origin.empty() ? "chosen" : rule->origin;
    Give(patch, rule->group,
         IsPattern(rule->name) && rule->name != patch.name ? origin + ' ' + QuotedName(rule->name) : origin);
    assigned.push_back(&patch);
  }
  for (Patch const* patch : assigned) AssignToPartnersOf(*patch);
}

void GroupAssignment::AssignToPartnersOf(Patch const& patch) {
  for (int const partner : patch.partners) {
    Patch& other = patches_[static_cast<std::size_t>(partner)];
    if (!other.group) Give(other, *patch.group, "partner of " + QuotedName(patch.name));
  }
}

void GroupAssignment::AssignByTypeOrName(Patch& patch) const {
  if (IsNoBoundary(patch.type)) return;
  if (auto const byType = GroupByType(patch.type))
    Give(patch, *byType, ShownType(patch.type));
  else if (auto const byName = GroupByWords(patch.name))
    Give(patch, *byName, "name");
}

bool GroupAssignment::IsPeriodic(Patch const& patch) const {
  return !patch.group && !patch.partners.empty() &&
         std::none_of(patch.partners.begin(), patch.partners.end(), [&](int partner) {
           return patches_[static_cast<std::size_t>(partner)].group.has_value();
         });
}

void GroupAssignment::CheckThatNoneIsLeft(std::vector<std::int64_t> const& facesOfPatch) const {
  NameList unmapped;
  std::vector<std::string> names;
  for (std::size_t p = 0; p < patches_.size(); ++p) {
    Patch const& patch = patches_[p];
    if (patch.group || facesOfPatch[p] == 0 || IsPeriodic(patch)) continue;
    unmapped.Add(Described(patch, facesOfPatch[p]));
    names.push_back(patch.name);
  }
  if (unmapped.IsEmpty()) return;
  throw MeshError(prefix_ + "boundary faces without a group: " + unmapped.Text() + "; " + Advice(names));
}

/// "hole12" without its number.
std::string_view Stem(std::string_view name) {
  std::size_t const last = name.find_last_not_of("0123456789");
  return last == std::string_view::npos ? name : name.substr(0, last + 1);
}

/// As an argument that a shell passes on unchanged.
std::string ForShell(std::string const& text) {
  std::string quoted = "'";
  for (char const c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + '\'';
}

/// What to type for patches without a group: one option for names that differ in their number only, if its pattern
/// matches no other patch, otherwise one for each of a few names.
std::string GroupAssignment::Advice(std::vector<std::string> const& names) const {
  if (!byUser_.areOptions) return "map each name to inlet, outlet, symmetry or wall";
  std::map<std::string_view, std::ptrdiff_t> ofStem;
  for (std::string const& name : names) ++ofStem[Stem(name)];
  auto const hasOthers = [&](std::string const& pattern, std::ptrdiff_t nNames) {
    return nNames != std::count_if(patches_.begin(), patches_.end(),
                                   [&](Patch const& patch) { return MatchesPattern(pattern, patch.name); });
  };
  constexpr std::size_t kMost = 3, kLongest = 300;
  std::set<std::string> options;
  for (std::string const& name : names) {
    std::string const pattern = std::string(Stem(name)) + '*';
    std::ptrdiff_t const nNames = ofStem[Stem(name)];
    bool const isPattern = nNames > 1 && !hasOthers(pattern, nNames);
    options.insert("--group " + ForShell((isPattern ? pattern : name) + "=wall"));
    if (options.size() > kMost) break;
  }
  std::string specific;
  for (std::string const& option : options) specific += option + ' ';
  bool const isShort = options.size() <= kMost && specific.size() <= kLongest;
  return "type " + (isShort ? specific + "or " : "") + "--default-group wall (or inlet, outlet, symmetry)";
}

}  // namespace

std::string NameOfGroup(BoundaryGroup group) {
  for (auto const& [word, candidate] : kGroups) {
    if (candidate == group) return std::string(word);
  }
  return "unknown";
}

std::optional<BoundaryGroup> GroupFromWord(std::string const& word) {
  for (auto const& [candidate, group] : kGroups) {
    if (LowerCase(word) == candidate) return group;
  }
  return std::nullopt;
}

std::optional<BoundaryGroup> GroupByName(std::string const& name, std::string const& type) {
  if (IsNoBoundary(type)) return std::nullopt;
  std::optional<BoundaryGroup> const byType = GroupByType(type);
  return byType ? byType : GroupByWords(name);
}

void AssignBoundaryGroups(std::vector<Patch>& patches, std::vector<std::int64_t> const& facesOfPatch,
                          GroupRules const& byUser, std::string const& meshName) {
  GroupAssignment assignment(patches, byUser, meshName);
  assignment.CheckRules();
  assignment.Assign();
  assignment.CheckThatNoneIsLeft(facesOfPatch);
}

}  // namespace reference_host

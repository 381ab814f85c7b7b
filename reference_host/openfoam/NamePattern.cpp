#include "reference_host/openfoam/NamePattern.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace reference_host {
namespace {

constexpr std::string_view kRepeats = "*+?";

/// POSIX names of character classes, with the C library's test for each.
struct CharacterClass {
  std::string_view name;
  int (*isMember)(int);
};
constexpr std::array<CharacterClass, 12> kClasses = {{{"alnum", std::isalnum},
                                                      {"alpha", std::isalpha},
                                                      {"blank", std::isblank},
                                                      {"cntrl", std::iscntrl},
                                                      {"digit", std::isdigit},
                                                      {"graph", std::isgraph},
                                                      {"lower", std::islower},
                                                      {"print", std::isprint},
                                                      {"punct", std::ispunct},
                                                      {"space", std::isspace},
                                                      {"upper", std::isupper},
                                                      {"xdigit", std::isxdigit}}};

std::size_t Byte(char c) { return static_cast<unsigned char>(c); }

}  // namespace

/// Builds the states of a pattern from left to right. Open brackets wait on an explicit stack, so that deep
/// nesting costs only memory.
class NamePatternParser {
 public:
  NamePatternParser(std::string_view text, NamePattern& pattern) : text_(text), pattern_(pattern) {}

  std::string Parse() {
    if (text_.empty()) return "is empty";
    if (text_.size() > NamePattern::kLongest) {
      return "has " + std::to_string(text_.size()) + " characters, more than " +
             std::to_string(NamePattern::kLongest);
    }
    std::size_t end = text_.size();
    if (text_[0] == '^') at_ = 1;
    if (end > at_ && text_[end - 1] == '$' && !IsEscaped(end - 1)) --end;
    text_ = text_.substr(0, end);
    groups_.emplace_back();
    while (at_ < text_.size() && failure_.empty()) ReadNext();
    if (!failure_.empty()) return failure_;
    if (groups_.size() > 1) return "has a '(' that is not closed";
    Piece const whole = Finish(groups_.back());
    Connect(whole, AddState(NamePattern::kNone, NamePattern::kNone, NamePattern::kNone));
    pattern_.start_ = whole.start;
    FindLiteralEnds();
    return {};
  }

 private:
  /// States with one entry and one exit state, whose `out` is still open.
  struct Piece {
    int start = NamePattern::kNone;
    int end = NamePattern::kNone;
  };

  /// The part of a group, or of the whole pattern, that has been read: finished alternatives and the current
  /// one.
  struct Group {
    Piece alternatives;  ///< joined so far
    Piece sequence;      ///< of the current alternative, without its last item
    Piece last;          ///< the item that a repeat would apply to
  };

  /// An item of the outermost sequence: a literal character, or anything else.
  struct Item {
    bool isCharacter;
    char character;
  };

  bool IsEscaped(std::size_t position) const {
    std::size_t nBackslashes = 0;
    while (nBackslashes < position && text_[position - 1 - nBackslashes] == '\\') ++nBackslashes;
    return nBackslashes % 2 == 1;
  }

  void ReadNext() {
    char const c = text_[at_++];
    if (c == '(') {
      groups_.emplace_back();
    } else if (c == ')') {
      CloseGroup();
    } else if (c == '|') {
      EndAlternative(groups_.back());
      if (groups_.size() == 1) hasAlternatives_ = true;
    } else if (kRepeats.find(c) != std::string_view::npos) {
      Repeat(c);
    } else if (c == '[') {
      ReadClass();
    } else if (c == '.') {
      AddSet(NamePattern::Set().set());
    } else if (c == '\\') {
      ReadEscaped();
    } else if (c == '{') {
      failure_ = "has a counted repeat '{'; only ?, + and * can be read";
    } else if (c == '^' || c == '$') {
      failure_ = std::string("has a '") + c + "' inside; the whole name has to match anyway";
    } else {
      AddCharacter(c);
    }
  }

  void ReadEscaped() {
    if (at_ == text_.size()) {
      failure_ = "ends in a backslash";
    } else if (std::isalnum(static_cast<unsigned char>(text_[at_])) != 0) {
      failure_ = std::string("has the escape '\\") + text_[at_] + "', which cannot be read";
    } else {
      AddCharacter(text_[at_++]);
    }
  }

  void AddCharacter(char c) {
    int const state = AddState(static_cast<int>(Byte(c)), NamePattern::kNone, NamePattern::kNone);
    Append({state, state});
    if (groups_.size() == 1) items_.back() = {true, c};
  }

  void AddSet(NamePattern::Set const& set) {
    int const number = NamePattern::kFirstSet + static_cast<int>(pattern_.sets_.size());
    pattern_.sets_.push_back(set);
    int const state = AddState(number, NamePattern::kNone, NamePattern::kNone);
    Append({state, state});
  }

  int AddState(int takes, int out, int other) {
    pattern_.states_.push_back({takes, out, other});
    return static_cast<int>(pattern_.states_.size()) - 1;
  }

  /// Makes the piece the last item of the current sequence.
  void Append(Piece const& piece) {
    Group& group = groups_.back();
    EndLast(group);
    group.last = piece;
    if (groups_.size() == 1) items_.push_back({false, '\0'});
  }

  /// The last item can no longer be repeated.
  void EndLast(Group& group) {
    if (group.last.start < 0) return;
    if (group.sequence.start < 0) {
      group.sequence = group.last;
    } else {
      Connect(group.sequence, group.last.start);
      group.sequence.end = group.last.end;
    }
    group.last = {};
  }

  void Connect(Piece const& piece, int state) { pattern_.states_[piece.end].out = state; }

  void EndAlternative(Group& group) {
    EndLast(group);
    if (group.sequence.start < 0) {  // an empty alternative matches nothing
      int const nothing = AddState(NamePattern::kNone, NamePattern::kNone, NamePattern::kNone);
      group.sequence = {nothing, nothing};
    }
    if (group.alternatives.start < 0) {
      group.alternatives = group.sequence;
    } else {
      int const fork = AddState(NamePattern::kNone, group.alternatives.start, group.sequence.start);
      int const join = AddState(NamePattern::kNone, NamePattern::kNone, NamePattern::kNone);
      Connect(group.alternatives, join);
      Connect(group.sequence, join);
      group.alternatives = {fork, join};
    }
    group.sequence = {};
  }

  Piece Finish(Group& group) {
    EndAlternative(group);
    return group.alternatives;
  }

  void CloseGroup() {
    if (groups_.size() == 1) {
      failure_ = "has one ')' too many";
      return;
    }
    Piece const piece = Finish(groups_.back());
    groups_.pop_back();
    Append(piece);
  }

  void Repeat(char c) {
    Group& group = groups_.back();
    if (group.last.start < 0) {
      failure_ = std::string("has a '") + c + "' with nothing to repeat";
      return;
    }
    Piece const inner = group.last;
    int const fork = AddState(NamePattern::kNone, NamePattern::kNone, inner.start);
    if (c == '?') {
      // The fork enters the piece or skips it; both paths meet after it.
      int const join = AddState(NamePattern::kNone, NamePattern::kNone, NamePattern::kNone);
      pattern_.states_[fork].out = join;
      Connect(inner, join);
      group.last = {fork, join};
    } else {
      // After the piece, the fork leads back to it or onward.
      Connect(inner, fork);
      group.last = {c == '*' ? fork : inner.start, fork};
    }
    if (groups_.size() == 1) items_.back() = {false, '\0'};
  }

  // [abc] [a-z] [^abc] []abc] [[:digit:]_]
  void ReadClass() {
    NamePattern::Set set;
    bool const isInverted = at_ < text_.size() && text_[at_] == '^';
    if (isInverted) ++at_;
    for (bool isFirst = true;; isFirst = false) {
      if (at_ == text_.size()) {
        failure_ = "has a '[' that is not closed";
        return;
      }
      if (text_[at_] == ']' && !isFirst) break;
      bool const isNamed = text_[at_] == '[' && at_ + 1 < text_.size() &&
                           std::string_view(":.=").find(text_[at_ + 1]) != std::string_view::npos;
      if (isNamed ? !ReadNamedClass(set) : !ReadRange(set)) return;
    }
    ++at_;
    AddSet(isInverted ? ~set : set);
  }

  bool ReadNamedClass(NamePattern::Set& set) {
    std::size_t const close = text_.find(":]", at_ + 2);
    if (text_[at_ + 1] == ':' && close != std::string_view::npos) {
      std::string_view const name = text_.substr(at_ + 2, close - at_ - 2);
      for (CharacterClass const& known : kClasses) {
        if (known.name != name) continue;
        for (int c = 0; c < 256; ++c) {
          if (known.isMember(c) != 0) set.set(static_cast<std::size_t>(c));
        }
        at_ = close + 2;
        return true;
      }
    }
    failure_ = "has an unknown class of characters";
    return false;
  }

  bool ReadRange(NamePattern::Set& set) {
    std::size_t const first = Byte(text_[at_++]);
    std::size_t last = first;
    if (at_ + 1 < text_.size() && text_[at_] == '-' && text_[at_ + 1] != ']') {
      last = Byte(text_[at_ + 1]);
      at_ += 2;
    }
    if (last < first) {
      failure_ = "has a range of characters in descending order";
      return false;
    }
    for (std::size_t c = first; c <= last; ++c) set.set(c);
    return true;
  }

  void FindLiteralEnds() {
    if (hasAlternatives_) return;
    auto const isCharacter = [](Item const& item) { return item.isCharacter; };
    auto const stop = std::find_if_not(items_.begin(), items_.end(), isCharacter);
    for (auto item = items_.begin(); item != stop; ++item) pattern_.prefix_ += item->character;
    auto const back = std::find_if_not(items_.rbegin(), items_.rend(), isCharacter);
    for (auto item = back.base(); item != items_.end(); ++item) pattern_.suffix_ += item->character;
    pattern_.isLiteral_ = stop == items_.end();
  }

  std::string_view text_;
  NamePattern& pattern_;
  std::size_t at_ = 0;
  std::string failure_;
  std::vector<Group> groups_;
  std::vector<Item> items_;
  bool hasAlternatives_ = false;
};

std::string NamePattern::Parse(std::string_view text) {
  *this = NamePattern();
  return NamePatternParser(text, *this).Parse();
}

bool NamePattern::Takes(State const& state, char c) const {
  if (state.takes >= kFirstSet) return sets_[state.takes - kFirstSet][Byte(c)];
  return state.takes == static_cast<int>(Byte(c));
}

/// Adds the state to the list, or the states that it leads to without a character.
void NamePattern::Reach(int state, std::vector<int>& list, Workspace& workspace) const {
  workspace.waiting.assign(1, state);
  while (!workspace.waiting.empty()) {
    int const at = workspace.waiting.back();
    workspace.waiting.pop_back();
    ++workspace.nSteps;
    if (at < 0 || workspace.seen[at] == workspace.round) continue;
    workspace.seen[at] = workspace.round;
    State const& here = states_[at];
    bool const isEnd = at + 1 == static_cast<int>(states_.size());
    if (isEnd || here.takes >= 0) {
      list.push_back(at);
    } else {
      workspace.waiting.push_back(here.out);
      workspace.waiting.push_back(here.other);
    }
  }
}

bool NamePattern::Matches(std::string_view name, Workspace& workspace) const {
  if (workspace.seen.size() < states_.size()) workspace.seen.resize(states_.size(), 0);
  workspace.now.clear();
  ++workspace.round;
  Reach(start_, workspace.now, workspace);
  for (char const c : name) {
    if (workspace.now.empty() || workspace.nSteps > workspace.mostSteps) return false;
    workspace.next.clear();
    ++workspace.round;
    for (int const state : workspace.now) {
      if (Takes(states_[state], c)) Reach(states_[state].out, workspace.next, workspace);
    }
    workspace.nSteps += workspace.now.size();
    workspace.now.swap(workspace.next);
  }
  int const end = static_cast<int>(states_.size()) - 1;
  return std::find(workspace.now.begin(), workspace.now.end(), end) != workspace.now.end();
}

}  // namespace reference_host

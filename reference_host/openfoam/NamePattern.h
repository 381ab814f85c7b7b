#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace reference_host {

/// A pattern for names, as users of OpenFOAM write them in quotes: literal characters, a dot for any
/// character, classes in square brackets with ranges, negation and names such as digit, groups in round
/// brackets, bars between alternatives, and question mark, plus and star after a character, a class or a
/// group. A backslash makes the next character literal. A circumflex at the beginning and a dollar sign at
/// the end change nothing, because the whole name has to match anyway.
///
/// Counted repeats, a number in curly brackets, are rejected: nested, they describe patterns of any size.
/// Without them, a pattern has at most three states for each of its characters. Matching follows all states
/// in parallel: a character of the name costs a few steps for each state, without backtracking or recursion.
class NamePattern {
 public:
  /// The longest pattern, in characters.
  static constexpr std::size_t kLongest = 1000;

  /// Work arrays for any number of matches, one after another.
  struct Workspace {
    std::vector<int> now, next, waiting;
    std::vector<std::uint64_t> seen;  ///< by state: the last round that reached it
    std::uint64_t round = 0;
    std::uint64_t nSteps = 0;  ///< states visited, over all matches
    std::uint64_t mostSteps = std::numeric_limits<std::uint64_t>::max();  ///< after these, nothing matches
  };

  /// Parses the text of a pattern. Returns what is wrong with it, as in "has one ')' too many"; empty if
  /// nothing is.
  std::string Parse(std::string_view text);

  /// Whether the whole of `name` matches. @pre Parse has returned an empty text
  bool Matches(std::string_view name, Workspace& workspace) const;

  /// Characters that every matching name begins and ends with.
  std::string const& Prefix() const { return prefix_; }
  std::string const& Suffix() const { return suffix_; }

  /// Whether only one name matches, which is Prefix().
  bool IsLiteral() const { return isLiteral_; }

 private:
  friend class NamePatternParser;
  using Set = std::bitset<256>;

  /// Consumes a character and continues at `out`; or consumes none and continues at `out` and `other` (-1:
  /// nowhere).
  struct State {
    int takes;  ///< a character, or 256 + the number of a set of them, or -1: none
    int out;
    int other;
  };
  static constexpr int kNone = -1;
  static constexpr int kFirstSet = 256;

  bool Takes(State const& state, char c) const;
  void Reach(int state, std::vector<int>& list, Workspace& workspace) const;

  std::vector<Set> sets_;
  std::vector<State> states_;  ///< the last one is the end of the pattern
  int start_ = kNone;
  std::string prefix_, suffix_;
  bool isLiteral_ = false;
};

}  // namespace reference_host

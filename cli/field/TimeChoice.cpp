#include "cli/field/TimeChoice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "reference_host/mesh/MessageText.h"

namespace zyngrad {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The value of a decimal number; NaN for other texts.
double ValueOf(std::string const& text) {
  if (text.empty() || text.find_first_not_of("+-.0123456789eE") != std::string::npos) return std::nan("");
  char* end = nullptr;
  double const value = std::strtod(text.c_str(), &end);
  return *end == '\0' && std::isfinite(value) ? value : std::nan("");
}

/// Whether two times are the same. Names of folders have few digits: OpenFOAM writes six.
bool IsSame(double a, double b) {
  constexpr double kRelative = 1e-9;
  return std::fabs(a - b) <= kRelative * std::max(std::fabs(a), std::fabs(b));
}

std::string NamesOf(std::vector<CaseTime> const& times) {
  reference_host::NameList names;
  for (CaseTime const& time : times) names.Add(time.name);
  return names.Text();
}

}  // namespace

void TimeChoice::Fail(std::string const& what) const {
  throw UsageError("--time " + Quoted(text_) + ": " + what);
}

TimeChoice::TimeChoice(std::string text) : text_(std::move(text)) {
  if (text_ == "latest") {
    isLatest_ = true;
    return;
  }
  if (text_ == "all") {
    ranges_.push_back({"", -kInfinity, kInfinity});
    return;
  }
  std::istringstream in(text_ + ',');
  for (std::string word; std::getline(in, word, ',');) {
    std::size_t const colon = word.find(':');
    Range range;
    if (colon == std::string::npos) {
      range = {word, ValueOf(word), ValueOf(word)};
    } else {
      std::string const from = word.substr(0, colon), to = word.substr(colon + 1);
      range = {"", from.empty() ? -kInfinity : ValueOf(from), to.empty() ? kInfinity : ValueOf(to)};
    }
    if (std::isnan(range.from) || std::isnan(range.to))
      Fail("expected latest, all, or times and ranges such as 0.1,0.5:2");
    if (range.from > range.to) Fail("the range " + word + " ends before it begins");
    ranges_.push_back(range);
  }
}

bool TimeChoice::NeedsFields() const {
  return std::all_of(ranges_.begin(), ranges_.end(), [](Range const& range) { return range.name.empty(); });
}

std::vector<std::string> TimeChoice::ChooseFrom(std::vector<CaseTime> const& times) const {
  std::vector<char> isChosen(times.size(), 0);
  if (isLatest_) {
    for (std::size_t t = times.size(); t-- > 0;) {
      if (!times[t].hasFields) continue;
      isChosen[t] = 1;
      break;
    }
  }
  for (Range const& range : ranges_) {
    if (!range.name.empty()) {
      auto found = std::find_if(times.begin(), times.end(),
                                [&range](CaseTime const& time) { return time.name == range.name; });
      if (found == times.end())
        found = std::find_if(times.begin(), times.end(), [&range](CaseTime const& time) {
          return IsSame(ValueOf(time.name), range.from);
        });
      if (found == times.end()) Fail("no time " + range.name + "; times: " + NamesOf(times));
      isChosen[static_cast<std::size_t>(found - times.begin())] = 1;
      continue;
    }
    for (std::size_t t = 0; t < times.size(); ++t) {
      double const value = ValueOf(times[t].name);
      bool const isWithin = (value >= range.from || IsSame(value, range.from)) &&
                            (value <= range.to || IsSame(value, range.to));
      if (isWithin && times[t].hasFields) isChosen[t] = 1;
    }
  }
  std::vector<std::string> chosen;
  for (std::size_t t = 0; t < times.size(); ++t)
    if (isChosen[t] != 0) chosen.push_back(times[t].name);
  if (chosen.empty()) Fail("no time in this range has the fields; times: " + NamesOf(times));
  return chosen;
}

}  // namespace zyngrad

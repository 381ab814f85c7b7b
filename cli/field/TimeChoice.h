#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// A time of a case, by the name of its folder.
struct CaseTime {
  std::string name;
  bool hasFields = false;  ///< all that were asked for
};

/// The times that --time chooses: "latest", "all", or numbers and ranges (0.1,0.5:2,3:). A number means the time whose
/// folder has this name or value. "latest", "all" and ranges choose among the times that have the fields.
class TimeChoice {
 public:
  /// @throws UsageError  anything else
  explicit TimeChoice(std::string text);

  /// The chosen times in the order of the case, each once.
  /// @param[in] times  of the case, ascending
  /// @throws UsageError  names the times that there are if one does not exist or if nothing is chosen
  std::vector<std::string> ChooseFrom(std::vector<CaseTime> const& times) const;

  /// Whether only times that have the fields can be chosen: no time is given by its number.
  bool NeedsFields() const;

 private:
  struct Range {
    std::string name;  ///< as given; empty for a range
    double from, to;
  };
  [[noreturn]] void Fail(std::string const& what) const;

  std::string text_;
  bool isLatest_ = false;
  std::vector<Range> ranges_;
};

}  // namespace zyngrad

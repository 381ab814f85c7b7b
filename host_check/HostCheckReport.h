#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "host_check/HostBreach.h"
#include "host_check/HostCheckOptions.h"

namespace host_check {

/// The findings of a check in one partition.
class HostCheckReport {
 public:
  struct Entry {
    HostBreach kind;
    int entity;  ///< number of the face, cell, node or element that the text names; 0: none
    std::string text;
  };

  /// Clears the report and takes the limit and the log from the options.
  void Begin(HostCheckOptions const& options);

  /// Counts a breach, and reports it unless there are already many of its kind.
  /// @param makeText  std::string(), called only if the breach is reported
  template <class MakeText>
  void Add(HostBreach kind, int entity, MakeText const& makeText) {
    if (++counts_[static_cast<std::size_t>(kind)] <= maxPerKind_) Tell({kind, entity, makeText()});
  }

  /// Adds something that the reader should know but that is not a breach.
  void AddNote(std::string const& text);

  int Count() const;  ///< breaches of all kinds, including those that are only counted
  int Count(HostBreach kind) const { return counts_[static_cast<std::size_t>(kind)]; }
  std::vector<Entry> const& Told() const { return told_; }  ///< in the order in which they were found
  std::vector<std::string> const& Notes() const { return notes_; }

  /// Writes the reported breaches line by line, kind by kind, with the number of further ones of each kind;
  /// then the notes and the total. Each line begins with `label`.
  void Print(std::ostream& out, std::string const& label = "") const;

 private:
  void Tell(Entry entry);

  int maxPerKind_ = HostCheckOptions().maxPerKind;
  std::ostream* log_ = nullptr;
  std::string label_;
  std::array<int, kHostBreaches> counts_{};
  std::vector<Entry> told_;
  std::vector<std::string> notes_;
};

}  // namespace host_check

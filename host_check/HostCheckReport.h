#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "host_check/HostBreach.h"
#include "host_check/HostCheckOptions.h"

namespace host_check {

/// What a check has found in one partition.
class HostCheckReport {
 public:
  struct Entry {
    HostBreach kind;
    int entity;  ///< number of the face, cell, node or element that the text names; 0: of none
    std::string text;
  };

  /// Forgets everything and takes the limit and the log of the options.
  void Begin(HostCheckOptions const& options);

  /// Counts a breach, and tells it if there are still few of its kind.
  /// @param makeText  std::string(), called only when the breach is told
  template <class MakeText>
  void Add(HostBreach kind, int entity, MakeText const& makeText) {
    if (++counts_[static_cast<std::size_t>(kind)] <= maxPerKind_) Tell({kind, entity, makeText()});
  }

  /// Something the reader should know that is no breach.
  void AddNote(std::string const& text);

  int Count() const;  ///< breaches of all kinds, also those that are not told
  int Count(HostBreach kind) const { return counts_[static_cast<std::size_t>(kind)]; }
  std::vector<Entry> const& Told() const { return told_; }  ///< in the order in which they were found
  std::vector<std::string> const& Notes() const { return notes_; }

  /// Writes a line per told breach, kind by kind, how many more there are of each kind, the notes and the
  /// sum. Each line begins with `label`.
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

#pragma once

#include <optional>
#include <string>

#include "cli/base/Interruption.h"
#include "cli/base/Ranks.h"

namespace zyngrad {

/// A new folder among the system's temporary files; it goes with its content when the object does, or when a
/// signal ends the program.
class TemporaryFolder {
 public:
  TemporaryFolder();  ///< throws UsageError when there is no place for it
  explicit TemporaryFolder(
      Ranks const& ranks);  ///< collective: one for each rank, or the same UsageError on all
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::string const& path() const { return path_; }

 private:
  void Make();
  void Remove() const;

  std::string path_;
  std::optional<Cleanup> cleanup_;
};

}  // namespace zyngrad

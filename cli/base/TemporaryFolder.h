#pragma once

#include <optional>
#include <string>

#include "cli/base/Interruption.h"
#include "cli/base/Ranks.h"

namespace zyngrad {

/// A new folder among the system's temporary files. It is removed with its content when the object is destroyed or
/// a signal ends the program.
class TemporaryFolder {
 public:
  TemporaryFolder();  ///< throws UsageError if it cannot be created
  explicit TemporaryFolder(
      Ranks const& ranks);  ///< collective: each rank gets one, or all throw the same UsageError
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

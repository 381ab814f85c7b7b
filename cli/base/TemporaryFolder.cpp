#include "cli/base/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() { Make(); }

TemporaryFolder::TemporaryFolder(Ranks const& ranks) {
  try {
    ranks.Together([this] { Make(); });
  } catch (...) {
    NoInterruption const wait;
    Remove();
    throw;
  }
}

void TemporaryFolder::Make() {
  cleanup_.emplace([this] { Remove(); });
  NoInterruption const wait;
  std::error_code error;
  fs::path const parent = fs::temp_directory_path(error);
  if (error) throw UsageError("there is no folder for temporary files: " + error.message());
  std::string path = (parent / "zyngrad-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr)
    throw UsageError("cannot create a folder in " + QuotedPath(parent.string()) + ": " +
                     std::strerror(errno));
  path_ = path;
}

TemporaryFolder::~TemporaryFolder() {
  NoInterruption const wait;
  Remove();
}

void TemporaryFolder::Remove() const {
  // When a signal ends the run, an operator may be about to write its settings file, so one try may not be enough.
  constexpr int kMostTries = 3;
  std::error_code error;
  for (int attempt = 0; attempt < kMostTries && !path_.empty(); ++attempt) {
    fs::remove_all(path_, error);
    if (!error) return;
  }
}

}  // namespace zyngrad

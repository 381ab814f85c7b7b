#include "cli/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  if (error) throw UsageError("no folder for temporary files: " + error.message());
  path_ = (parent / "zyngrad-XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr)
    throw UsageError("cannot make a folder in " + Quoted(parent.string()) + ": " + std::strerror(errno));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

}  // namespace zyngrad

#pragma once

#include <string>

namespace zyngrad {

/// A new folder among the system's temporary files; it goes with its content when the object does.
class TemporaryFolder {
 public:
  TemporaryFolder();  ///< throws UsageError when there is no place for it
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace zyngrad

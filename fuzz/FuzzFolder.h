#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

/// A folder of this process for files that readers want by name; removed at the end.
class FuzzFolder {
 public:
  FuzzFolder() : path_(std::filesystem::temp_directory_path() / ("zyn_fuzz_" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~FuzzFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  FuzzFolder(FuzzFolder const&) = delete;
  FuzzFolder& operator=(FuzzFolder const&) = delete;

  std::string Path(std::string const& name) const { return (path_ / name).string(); }

  /// Writes a file and gives its path.
  std::string Write(std::string const& name, char const* bytes, std::size_t size) const {
    std::string const path = Path(name);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) std::abort();
    std::fwrite(bytes, 1, size, file);
    std::fclose(file);
    return path;
  }

 private:
  std::filesystem::path path_;
};

/// The library's progress lines would be most of what a fuzzer does.
inline void DropStandardOutput() {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
}

}  // namespace fuzz

#include "python/src/SettingsFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace zyn_python {
namespace {

constexpr std::size_t kLongestName = 1000;  // the operators keep names in 1024 characters

}  // namespace

SettingsFolder::SettingsFolder(std::string const& text) {
  folder_ = (std::filesystem::temp_directory_path() / "zyn3dgradop-XXXXXX").string();
  if (mkdtemp(folder_.data()) == nullptr)
    throw std::runtime_error(folder_ + ": the folder for the settings cannot be created");
  baseFileName_ = folder_ + "/settings.run";
  std::ofstream file(folder_ + "/settings.rbf");
  file << text;
  file.close();
  if (!file || baseFileName_.size() > kLongestName) {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    throw std::runtime_error(folder_ + ": the settings cannot be written there");
  }
}

SettingsFolder::~SettingsFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

}  // namespace zyn_python

#include "tests/support/watch/SettingsFolder.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zyn_test {

SettingsFolder::SettingsFolder() {
  std::string name = ::testing::TempDir() + "/settings_XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test: " + name);
  path_ = name;
}

SettingsFolder::~SettingsFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void SettingsFolder::Write(std::string const& bytes) const {
  std::ofstream file(SettingsFileName(), std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + SettingsFileName());
}

std::string SettingsFolder::Read() const {
  std::ifstream file(SettingsFileName(), std::ios::binary);
  if (!file) return "<no file>";
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool SettingsFolder::Exists() const { return std::filesystem::exists(SettingsFileName()); }

}  // namespace zyn_test

#pragma once

#include <gtest/gtest.h>

#include <string>

namespace rbf_cell_test {

/// A settings file with the given values, in the operator's own layout.
std::string Settings(std::string const& span, std::string const& shapeNormalize);

/// The settings file as the operator writes it.
std::string DefaultSettings();

/// A new folder for one test, removed with everything in it at the end.
class SettingsFolder {
 public:
  SettingsFolder();
  ~SettingsFolder();
  SettingsFolder(SettingsFolder const&) = delete;
  SettingsFolder& operator=(SettingsFolder const&) = delete;

  std::string const& Path() const { return path_; }
  std::string BaseFileName() const { return path_ + "/run.cas"; }
  std::string SettingsFileName() const { return path_ + "/run.rbf"; }

  void Write(std::string const& bytes) const;
  std::string Read() const;  ///< all bytes of the settings file; "<no file>" when there is none
  bool Exists() const;

 private:
  std::string path_;
};

/// What `call` writes to standard output.
template <typename Call>
std::string Printed(Call call) {
  ::testing::internal::CaptureStdout();
  call();
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace rbf_cell_test

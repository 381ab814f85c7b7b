#pragma once

#include <gtest/gtest.h>

#include <string>

namespace zyn_test {

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

}  // namespace zyn_test

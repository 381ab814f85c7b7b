#pragma once

#include <string>

namespace zyn_python {

/// A new folder among the system's temporary files with a settings file in it. It lives as long as the object, so that
/// no file is left in the user's folder.
class SettingsFolder {
 public:
  /// @param[in] text  content of the settings file
  explicit SettingsFolder(std::string const& text);
  ~SettingsFolder();
  SettingsFolder(SettingsFolder const&) = delete;
  SettingsFolder& operator=(SettingsFolder const&) = delete;

  /// The base file name from which an operator makes the name of the settings file.
  std::string const& baseFileName() const { return baseFileName_; }

 private:
  std::string folder_, baseFileName_;
};

}  // namespace zyn_python

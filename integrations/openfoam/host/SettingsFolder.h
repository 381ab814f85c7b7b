#pragma once

#include <string>

#include "fvMesh.H"

namespace Foam {
namespace zyn {

/// A temporary folder with the settings file of the radial-basis gradient, for the time of its set-up; each process has
/// one. The set-up may delete or write the file, and must find neither the case's own file nor the working folder.
///
/// The settings are those of `system/zyn.rbf` in the case, if it is there, and the defaults otherwise.
class SettingsFolder {
 public:
  /// Collective: the first process reads the case's file for all. Ends the program with a message if that is no settings
  /// file of the gradient.
  explicit SettingsFolder(fvMesh const& mesh);
  ~SettingsFolder();
  SettingsFolder(SettingsFolder const&) = delete;
  SettingsFolder& operator=(SettingsFolder const&) = delete;

  /// What the operators make the name of the settings file of.
  std::string BaseFileName() const { return folder_ + "/zyn.run"; }

 private:
  std::string SettingsFile() const { return folder_ + "/zyn.rbf"; }

  std::string folder_;
};

}  // namespace zyn
}  // namespace Foam

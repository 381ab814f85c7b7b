#include "host/SettingsFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "OSspecific.H"
#include "Pstream.H"
#include "Time.H"

namespace Foam {
namespace zyn {
namespace {

constexpr char kFormat[] = "1001";  // the first line of a settings file of the gradient

/// The text of the case's settings file; empty if there is none.
std::string CaseSettings(fvMesh const& mesh) {
  string text;
  if (Pstream::master()) {
    fileName const path = mesh.time().globalPath() / mesh.time().system() / "zyn.rbf";
    if (isFile(path, false)) {
      std::ostringstream content;
      content << std::ifstream(path).rdbuf();
      text = content.str();
      if (text.compare(0, sizeof(kFormat) - 1, kFormat) != 0) {
        FatalErrorInFunction << path
                             << " is no settings file of the radial-basis gradient: its first line must be "
                             << kFormat << exit(FatalError);
      }
    }
  }
  Pstream::scatter(text);
  return text;
}

std::string NewTemporaryFolder() {
  char const* parent = std::getenv("TMPDIR");
  std::string name = std::string(parent != nullptr ? parent : "/tmp") + "/zynXXXXXX";
  if (::mkdtemp(&name[0]) == nullptr)
    FatalErrorInFunction << "Cannot make a temporary folder " << name.c_str() << exit(FatalError);
  return name;
}

}  // namespace

SettingsFolder::SettingsFolder(fvMesh const& mesh) {
  std::string const text = CaseSettings(mesh);
  folder_ = NewTemporaryFolder();
  if (!text.empty()) std::ofstream(SettingsFile()) << text;
}

SettingsFolder::~SettingsFolder() {
  rm(SettingsFile());
  ::rmdir(folder_.c_str());
}

}  // namespace zyn
}  // namespace Foam

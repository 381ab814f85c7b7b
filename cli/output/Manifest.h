#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/output/Fingerprint.h"

namespace zyngrad {

/// The list of files that a run leaves in its output folder. A later run replaces or removes only files that are in
/// the list and still have the content recorded there.
struct Manifest {
  struct File {
    std::string name;  ///< relative to the output folder
    Fingerprint fingerprint;
  };

  std::string command;  ///< "gradient", ...
  std::vector<File>
      files;  ///< while a run moves its files, a name may appear twice, with the old and the new content
  std::vector<std::string>
      folders;  ///< created by a run inside the output folder; removed when they are empty

  std::string Text() const;

  /// The manifest of an output folder, if there is one.
  /// Throws UsageError if the file is not of this form, or names a place outside the folder.
  static std::optional<Manifest> Read(std::string const& folder);
};

/// The manifest's name in the output folder.
constexpr char kManifestName[] = "zyngrad-manifest.json";

}  // namespace zyngrad

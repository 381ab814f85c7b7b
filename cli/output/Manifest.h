#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/output/Fingerprint.h"

namespace zyngrad {

/// The list that a run leaves in its output folder of what it wrote there. A later run replaces or removes
/// only files that the list names and that still have the content that it says.
struct Manifest {
  struct File {
    std::string name;  ///< relative to the output folder
    Fingerprint fingerprint;
  };

  std::string command;      ///< "gradient", ...
  std::vector<File> files;  ///< a name twice, while a run moves its files: the old and the new content
  std::vector<std::string> folders;  ///< inside the output folder, made by a run; they go when they are empty

  std::string Text() const;

  /// The manifest of an output folder, if there is one.
  /// Throws UsageError when what stands there is none of this form, or names a place outside the folder.
  static std::optional<Manifest> Read(std::string const& folder);
};

/// The manifest's name in the output folder.
constexpr char kManifestName[] = "zyngrad-manifest.json";

}  // namespace zyngrad

#pragma once

#include <string>
#include <vector>

namespace zyngrad {

/// Whether a name that was read from a file can only lead to a place inside a folder: it is relative, of
/// reasonable length, and free of control characters, empty steps, "." and "..".
bool IsSafeName(std::string const& name);

/// What exists under a name inside a folder. Links are not followed, neither at the name nor on the way to it.
struct PlaceInFolder {
  enum class Kind { Free, File, Folder, Other } kind = Kind::Free;
  std::string path;  ///< of what exists, which may be something on the way to the name
  int error = 0;     ///< why the system cannot say what exists there; `kind` is then Other
};

/// @param[in] name  as in IsSafeName
PlaceInFolder LookAt(std::string const& folder, std::string const& name);

/// The folders on the way to files that are named relative to one folder, each once, outer folders first.
std::vector<std::string> FoldersOf(std::vector<std::string> const& files);

/// A path in double quotes, not shortened, because the user has to find it.
std::string QuotedPath(std::string const& path);

}  // namespace zyngrad

#pragma once

#include <string>

namespace zyngrad {

/// Whether a name that was read from a file leads to a place inside a folder and nowhere else: relative,
/// without empty steps, "." and "..", without control characters, of reasonable length.
bool IsSafeName(std::string const& name);

/// What stands at a name inside a folder. Links are not followed, neither at the name nor on the way to it.
struct PlaceInFolder {
  enum class Kind { Free, File, Folder, Other } kind = Kind::Free;
  std::string path;  ///< of that thing, which may be one that stands in the way to the name
  int error = 0;     ///< why the system does not tell what stands there; Other then
};

/// @param[in] name  as in IsSafeName
PlaceInFolder LookAt(std::string const& folder, std::string const& name);

/// A path in double quotes, uncut: the user has to find it.
std::string QuotedPath(std::string const& path);

}  // namespace zyngrad

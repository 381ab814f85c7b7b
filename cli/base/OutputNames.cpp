#include "cli/base/OutputNames.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "cli/base/OneLine.h"

namespace zyngrad {

namespace fs = std::filesystem;

bool IsSafeName(std::string const& name) {
  constexpr std::size_t kLongest = 1000;
  auto const isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
  if (name.empty() || name.size() > kLongest || std::any_of(name.begin(), name.end(), isControl))
    return false;
  std::size_t begin = 0;
  while (begin <= name.size()) {
    std::size_t const end = std::min(name.find('/', begin), name.size());
    std::string const step = name.substr(begin, end - begin);
    if (step.empty() || step == "." || step == "..") return false;
    begin = end + 1;
  }
  return true;
}

PlaceInFolder LookAt(std::string const& folder, std::string const& name) {
  using Kind = PlaceInFolder::Kind;
  fs::path way = folder;
  Kind kind = Kind::Folder;
  for (fs::path const& step : fs::path(name)) {
    if (kind != Kind::Folder) return {Kind::Other, way.string()};
    way /= step;
    std::error_code error;
    fs::file_type const type = fs::symlink_status(way, error).type();
    if (type == fs::file_type::not_found) return {Kind::Free, way.string()};
    if (type == fs::file_type::none) return {Kind::Other, way.string(), error.value()};
    kind = Kind::Other;
    if (type == fs::file_type::regular) kind = Kind::File;
    if (type == fs::file_type::directory) kind = Kind::Folder;
  }
  return {kind, way.string()};
}

std::vector<std::string> FoldersOf(std::vector<std::string> const& files) {
  std::set<std::string> folders;  // a folder's name sorts before those of the folders inside
  for (std::string const& file : files)
    for (fs::path way = fs::path(file).parent_path(); !way.empty(); way = way.parent_path())
      folders.insert(way.string());
  return {folders.begin(), folders.end()};
}

std::string QuotedPath(std::string const& path) { return '"' + OneLine(path) + '"'; }

}  // namespace zyngrad

#include <cgnslib.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"

namespace reference_host {
namespace {

/// Numbers have at least 4 bytes, and the compression of the format achieves at most 1032:1.
constexpr std::int64_t kMostPerByte = 1032 / 4;

/// Adds the file that the library's current node is linked to.
void AddLink(std::set<std::string>& files) {
  int length = 0;
  if (cg_is_link(&length) != CG_OK || length <= 0) return;
  char *file = nullptr, *path = nullptr;
  if (cg_link_read(&file, &path) != CG_OK) return;
  if (file != nullptr && *file != '\0') files.insert(file);
  cg_free(file);
  cg_free(path);
}

}  // namespace

void CgnsFile::CheckRoom(std::int64_t count, std::string const& what) const {
  if (count >= 0 && count / kMostPerByte <= nBytes_) return;
  if (count >= 0 && count / kMostPerByte <= nBytes_ + SizeOfLinkedFiles()) return;
  Fail("the file says " + std::to_string(count) + " " + what + ", more than it can hold");
}

std::int64_t CgnsFile::SizeOfLinkedFiles() const {
  std::set<std::string> files;
  if (cg_goto(handle_, base_, "Zone_t", zone(), "end") == CG_OK) AddLink(files);
  for (char const* const label : {"GridCoordinates_t", "ZoneBC_t", "Elements_t", "FlowSolution_t"}) {
    // The search ends at a number that does not exist.
    for (int i = 1; cg_goto(handle_, base_, "Zone_t", zone(), label, i, "end") == CG_OK; ++i) AddLink(files);
  }
  for (int i = 1;
       cg_goto(handle_, base_, "Zone_t", zone(), "GridCoordinates_t", 1, "DataArray_t", i, "end") == CG_OK;
       ++i) {
    AddLink(files);
  }
  std::int64_t nBytes = 0;
  std::filesystem::path const folder = std::filesystem::path(name_).parent_path();
  for (std::string const& file : files) {
    std::error_code error;
    std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) size = std::filesystem::file_size(folder / file, error);
    if (!error) nBytes += static_cast<std::int64_t>(size);
  }
  return nBytes;
}

}  // namespace reference_host

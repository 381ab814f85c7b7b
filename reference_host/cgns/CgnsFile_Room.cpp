#include <cgns_io.h>
#include <cgnslib.h>

#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/mesh/MessageText.h"

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

struct ListLength {
  char const* name;
  std::int64_t expected;
};

/// Whether a section has a list of that name whose first dimension is not as expected.
bool IsOfOtherLength(int io, double sectionId, ListLength const& list) {
  double id = 0.0;
  if (cgio_get_node_id(io, sectionId, list.name, &id) != CGIO_ERR_NONE) return false;
  int nDimensions = 0;
  std::array<cgsize_t, CGIO_MAX_DIMENSIONS> sizes{};
  bool const isKnown = cgio_get_dimensions(io, id, &nDimensions, sizes.data()) == CGIO_ERR_NONE;
  cgio_release_id(io, id);
  return !isKnown || nDimensions < 1 || sizes[0] != list.expected;
}

}  // namespace

void CgnsFile::CheckListLengths(CgnsSection const& section) const {
  int io = 0;
  double zoneId = 0.0, sectionId = 0.0;
  std::string const failure = "section " + Quoted(section.name) + " cannot be read";
  Check(cg_get_cgio(handle_, &io), failure);
  Check(cg_zone_id(handle_, base_, zone(), &zoneId), failure);
  if (cgio_get_node_id(io, zoneId, section.name.c_str(), &sectionId) != CGIO_ERR_NONE) Fail(failure);
  std::int64_t const n = section.size();
  bool isWrong = false;
  for (ListLength const& list : {ListLength{"ElementStartOffset", n + 1}, ListLength{"ParentElements", n},
                                 ListLength{"ParentElementsPosition", n}, ListLength{"ParentData", n}}) {
    isWrong = isWrong || IsOfOtherLength(io, sectionId, list);
  }
  cgio_release_id(io, sectionId);
  if (isWrong) Fail(failure + ": its length is wrong");
}

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

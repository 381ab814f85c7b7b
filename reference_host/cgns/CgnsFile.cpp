#include "reference_host/cgns/CgnsFile.h"

#include <cgnslib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
CgnsFile::OpenFile::~OpenFile() {
  if (handle >= 0) cg_close(handle);
}

CgnsFile::CgnsFile(std::string name) : name_(std::move(name)) {
  RequireRegularFile(name_);
  std::error_code ignored;
  nBytes_ = static_cast<std::int64_t>(std::filesystem::file_size(name_, ignored));
  int handle = -1;
  Check(cg_open(name_.c_str(), CG_MODE_READ, &handle), "not a CGNS file that can be read");
  open_.handle = handle;
  handle_ = handle;
  FindBase();
  FindZone();
}

CgnsFile::~CgnsFile() = default;

void CgnsFile::Check(int status, std::string const& what) const {
  if (status == CG_OK) return;
  std::string const reason = cg_get_error();
  Fail(what + " (" + reason.substr(0, reason.find('\n')) + ")");
}

void CgnsFile::Fail(std::string const& what) const { throw MeshError(name_ + ": " + what); }

void CgnsFile::FindBase() {
  int nBases = 0;
  Check(cg_nbases(handle_, &nBases), "the bases cannot be read");
  NameList names;
  int nFound = 0;
  for (int base = 1; base <= nBases; ++base) {
    std::array<char, kCgnsNameSize> name{};
    int cellDimension = 0, physicalDimension = 0;
    Check(cg_base_read(handle_, base, name.data(), &cellDimension, &physicalDimension),
          "a base cannot be read");
    if (cellDimension != 3 || physicalDimension != 3) continue;
    base_ = base;
    ++nFound;
    names.Add(Quoted(name.data()));
  }
  if (nBases == 0) Fail("the file has no base");
  if (nFound == 0) Fail("no base has three-dimensional cells in three-dimensional space");
  if (nFound > 1) Fail("several three-dimensional bases (" + names.Text() + "); a file with one is needed");
}

void CgnsFile::FindZone() {
  int nZones = 0;
  Check(cg_nzones(handle_, base_, &nZones), "the zones cannot be read");
  if (nZones == 0) Fail("the base has no zone");
  NameList names;
  std::array<char, kCgnsNameSize> name{};
  std::array<cgsize_t, 9> sizes{};
  for (int zone = 1; zone <= nZones; ++zone) {
    CGNS_ENUMT(ZoneType_t) type = CGNS_ENUMV(ZoneTypeNull);
    Check(cg_zone_read(handle_, base_, zone, name.data(), sizes.data()), "a zone cannot be read");
    Check(cg_zone_type(handle_, base_, zone, &type), "a zone cannot be read");
    if (type != CGNS_ENUMV(Unstructured))
      Fail("zone " + Quoted(name.data()) + " is structured; convert it first");
    names.Add(Quoted(name.data()));
  }
  if (nZones > 1) Fail("several zones are not supported (" + names.Text() + "); join them into one first");
  nNodes_ = sizes[0];
  nCells_ = sizes[1];
  zoneName_ = name.data();
  CheckRoom(nNodes_, "nodes");
  CheckRoom(nCells_, "cells");
}

void CgnsFile::RequireIntCounts() const {
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  if (nNodes_ > kMost || nCells_ > kMost) {
    Fail("zone " + Quoted(zoneName_) + " has more nodes or cells than an int can count");
  }
}

std::vector<double> CgnsFile::Coordinate(char const* coordinate, std::int64_t first, std::int64_t n) const {
  std::vector<double> values(static_cast<std::size_t>(n));
  auto const begin = static_cast<cgsize_t>(first + 1), last = static_cast<cgsize_t>(first + n);
  Check(
      cg_coord_read(handle_, base_, zone(), coordinate, CGNS_ENUMV(RealDouble), &begin, &last, values.data()),
      std::string(coordinate) + " cannot be read");
  return values;
}

std::vector<Point> CgnsFile::Points(std::int64_t first, std::int64_t n) const {
  std::vector<Point> points(static_cast<std::size_t>(n));
  std::array<char const*, 3> const names = {"CoordinateX", "CoordinateY", "CoordinateZ"};
  for (std::size_t d = 0; d < names.size(); ++d) {
    std::vector<double> const values = Coordinate(names[d], first, n);
    for (std::size_t i = 0; i < values.size(); ++i) points[i][d] = values[i];
  }
  return points;
}

std::vector<CgnsSection> CgnsFile::Sections() const {
  int nSections = 0;
  Check(cg_nsections(handle_, base_, zone(), &nSections), "the sections cannot be read");
  std::vector<CgnsSection> sections;
  for (int s = 1; s <= nSections; ++s) {
    std::array<char, kCgnsNameSize> name{};
    CGNS_ENUMT(ElementType_t) type = CGNS_ENUMV(ElementTypeNull);
    cgsize_t first = 0, last = 0;
    int nBoundary = 0, hasParents = 0;
    Check(cg_section_read(handle_, base_, zone(), s, name.data(), &type, &first, &last, &nBoundary,
                          &hasParents),
          "a section cannot be read");
    if (first < 1 || last < first) Fail("section " + Quoted(name.data()) + " has no range of elements");
    CheckRoom(last - first + 1, "elements of section " + Quoted(name.data()));
    sections.push_back({name.data(), s, static_cast<int>(type), first, last, hasParents != 0});
  }
  std::sort(sections.begin(), sections.end(),
            [](CgnsSection const& a, CgnsSection const& b) { return a.first < b.first; });
  for (std::size_t s = 1; s < sections.size(); ++s) {
    if (sections[s].first <= sections[s - 1].last) {
      Fail("sections " + Quoted(sections[s - 1].name) + " and " + Quoted(sections[s].name) +
           " both have element " + std::to_string(sections[s].first));
    }
  }
  return sections;
}

CgnsElements CgnsFile::Elements(CgnsSection const& section) const {
  std::string const failure = "section " + Quoted(section.name) + " cannot be read";
  cgsize_t nEntries = 0;
  Check(cg_ElementDataSize(handle_, base_, zone(), section.index, &nEntries), failure);
  CheckRoom(nEntries, "entries of section " + Quoted(section.name));
  CheckListLengths(section);
  auto const n = static_cast<std::size_t>(section.size());
  std::vector<cgsize_t> entries(static_cast<std::size_t>(nEntries)), parents(section.hasParents ? 4 * n : 0);
  cgsize_t* const parentData = section.hasParents ? parents.data() : nullptr;

  CgnsElements elements;
  int nodesOfElement = 0;
  auto const type = static_cast<CGNS_ENUMT(ElementType_t)>(section.type);
  Check(cg_npe(type, &nodesOfElement), failure);
  if (nodesOfElement > 0) {
    if (entries.size() != n * static_cast<std::size_t>(nodesOfElement))
      Fail(failure + ": its length is wrong");
    Check(cg_elements_read(handle_, base_, zone(), section.index, entries.data(), parentData), failure);
    for (std::size_t i = 0; i <= n; ++i)
      elements.start.push_back(i * static_cast<std::size_t>(nodesOfElement));
  } else {
    std::vector<cgsize_t> offsets(n + 1);
    Check(cg_poly_elements_read(handle_, base_, zone(), section.index, entries.data(), offsets.data(),
                                parentData),
          failure);
    if (offsets.front() != 0 || offsets.back() != nEntries ||
        !std::is_sorted(offsets.begin(), offsets.end())) {
      Fail(failure + ": the starts of its elements do not ascend from 0 to its length");
    }
    elements.start.assign(offsets.begin(), offsets.end());
  }
  elements.entry.assign(entries.begin(), entries.end());
  if (section.hasParents)
    elements.parent.assign(parents.begin(), parents.begin() + static_cast<std::ptrdiff_t>(2 * n));
  return elements;
}

}  // namespace reference_host

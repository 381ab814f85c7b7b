#include "reference_host/cgns/CgnsSectionReader.h"

#include <cgns_io.h>
#include <cgnslib.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "reference_host/mesh/MessageText.h"

namespace reference_host {

CgnsSectionReader::CgnsSectionReader(CgnsFile const& file, CgnsSection const& section)
    : file_(file), section_(section), failure_("section " + Quoted(section.name) + " cannot be read") {
  cgsize_t nEntries = 0;
  file_.Check(cg_ElementDataSize(file_.handle(), file_.base(), CgnsFile::zone(), section_.index, &nEntries),
              failure_);
  file_.CheckRoom(nEntries, "entries of section " + Quoted(section_.name));
  file_.CheckListLengths(section_);
  nEntries_ = nEntries;
  file_.Check(cg_npe(static_cast<CGNS_ENUMT(ElementType_t)>(section_.type), &nodesOfElement_), failure_);
  if (nodesOfElement_ > 0) {
    if (nEntries_ != section_.size() * nodesOfElement_) file_.Fail(failure_ + ": its length is wrong");
  } else if (!OpenLists()) {
    whole_ = file_.Elements(section_);
  }
}

CgnsSectionReader::~CgnsSectionReader() {
  for (List const* list : {&offsets_, &entries_, &parents_}) {
    if (list->isOpen) cgio_release_id(io_, list->id);
  }
}

/// @return false: there is none, or none with whole numbers
bool CgnsSectionReader::Open(double sectionId, char const* name, List& list) const {
  if (cgio_get_node_id(io_, sectionId, name, &list.id) != CGIO_ERR_NONE) return false;
  list.isOpen = true;
  std::array<char, CGIO_MAX_DATATYPE_LENGTH + 1> type{};
  std::array<cgsize_t, CGIO_MAX_DIMENSIONS> sizes{};
  if (cgio_get_data_type(io_, list.id, type.data()) != CGIO_ERR_NONE ||
      cgio_get_dimensions(io_, list.id, &list.nDimensions, sizes.data()) != CGIO_ERR_NONE) {
    return false;
  }
  list.isLong = std::strcmp(type.data(), "I8") == 0;
  list.size = sizes[0];
  return list.isLong || std::strcmp(type.data(), "I4") == 0;
}

bool CgnsSectionReader::OpenLists() {
  double zoneId = 0.0, sectionId = 0.0;
  if (cg_get_cgio(file_.handle(), &io_) != CG_OK ||
      cg_zone_id(file_.handle(), file_.base(), CgnsFile::zone(), &zoneId) != CG_OK ||
      cgio_get_node_id(io_, zoneId, section_.name.c_str(), &sectionId) != CGIO_ERR_NONE) {
    return false;
  }
  bool const hasLists =
      Open(sectionId, "ElementStartOffset", offsets_) && Open(sectionId, "ElementConnectivity", entries_) &&
      offsets_.nDimensions == 1 && entries_.nDimensions == 1 && entries_.size == nEntries_ &&
      offsets_.size == section_.size() + 1 &&
      (!section_.hasParents || (Open(sectionId, "ParentElements", parents_) && parents_.nDimensions == 2 &&
                                parents_.size == section_.size()));
  cgio_release_id(io_, sectionId);
  return hasLists;
}

/// @param[in] column  of a list with two dimensions, counted from 1
std::vector<std::int64_t> CgnsSectionReader::ReadList(List const& list, std::int64_t first, std::int64_t n,
                                                      int column) const {
  std::vector<std::int64_t> numbers(static_cast<std::size_t>(n));
  if (n == 0) return numbers;
  std::array<cgsize_t, 2> const begin = {static_cast<cgsize_t>(first + 1), column},
                                end = {static_cast<cgsize_t>(first + n), column}, stride = {1, 1};
  cgsize_t const one = 1, size = static_cast<cgsize_t>(n);
  std::vector<std::int32_t> shorter(list.isLong ? 0 : numbers.size());
  void* const data = list.isLong ? static_cast<void*>(numbers.data()) : static_cast<void*>(shorter.data());
  if (cgio_read_data(io_, list.id, begin.data(), end.data(), stride.data(), 1, &size, &one, &size, &one,
                     data) != CGIO_ERR_NONE) {
    file_.Fail(failure_);
  }
  std::copy(shorter.begin(), shorter.end(), numbers.begin());
  return numbers;
}

CgnsElements CgnsSectionReader::Read(std::int64_t first, std::int64_t n) const {
  if (n == 0) return {{0}, {}, {}};
  if (nodesOfElement_ > 0) return ReadOfOneSize(first, n);
  if (!whole_) return ReadFromLists(first, n);
  CgnsElements part;
  auto const begin = whole_->start.begin() + first;
  for (auto at = begin; at <= begin + n; ++at) part.start.push_back(*at - *begin);
  part.entry.assign(whole_->entry.begin() + static_cast<std::ptrdiff_t>(*begin),
                    whole_->entry.begin() + static_cast<std::ptrdiff_t>(*(begin + n)));
  return part;
}

CgnsElements CgnsSectionReader::ReadOfOneSize(std::int64_t first, std::int64_t n) const {
  auto const size = static_cast<std::size_t>(nodesOfElement_);
  std::vector<cgsize_t> entries(static_cast<std::size_t>(n) * size);
  file_.Check(cg_elements_partial_read(file_.handle(), file_.base(), CgnsFile::zone(), section_.index,
                                       static_cast<cgsize_t>(section_.first + first),
                                       static_cast<cgsize_t>(section_.first + first + n - 1), entries.data(),
                                       nullptr),
              failure_);
  CgnsElements elements;
  for (std::size_t i = 0; i <= static_cast<std::size_t>(n); ++i) elements.start.push_back(i * size);
  elements.entry.assign(entries.begin(), entries.end());
  return elements;
}

CgnsElements CgnsSectionReader::ReadFromLists(std::int64_t first, std::int64_t n) const {
  std::vector<std::int64_t> const offsets = ReadList(offsets_, first, n + 1);
  bool const isFirst = first == 0, isLast = first + n == section_.size();
  if (offsets.front() < 0 || (isFirst && offsets.front() != 0) || offsets.back() > nEntries_ ||
      (isLast && offsets.back() != nEntries_) || !std::is_sorted(offsets.begin(), offsets.end())) {
    file_.Fail(failure_ + ": the starts of its elements do not ascend from 0 to its length");
  }
  CgnsElements elements;
  elements.start.reserve(offsets.size());
  for (std::int64_t const offset : offsets) {
    elements.start.push_back(static_cast<std::size_t>(offset - offsets.front()));
  }
  elements.entry = ReadList(entries_, offsets.front(), offsets.back() - offsets.front());
  return elements;
}

std::vector<std::int64_t> CgnsSectionReader::ReadParents(std::int64_t first, std::int64_t n) const {
  if (!whole_) {
    std::vector<std::int64_t> parents = ReadList(parents_, first, n, 1);
    std::vector<std::int64_t> const second = ReadList(parents_, first, n, 2);
    parents.insert(parents.end(), second.begin(), second.end());
    return parents;
  }
  auto const firstParent = whole_->parent.begin() + first, secondParent = firstParent + section_.size();
  std::vector<std::int64_t> parents(firstParent, firstParent + n);
  parents.insert(parents.end(), secondParent, secondParent + n);
  return parents;
}

}  // namespace reference_host

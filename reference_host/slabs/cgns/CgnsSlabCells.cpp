#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsElement.h"
#include "reference_host/cgns/CgnsSectionReader.h"
#include "reference_host/cgns/CgnsTopology.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/CellSlab.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/cgns/CgnsSlabTopology.h"

namespace reference_host {
namespace {

/// Elements that are read at a time: a few megabytes.
constexpr std::int64_t kElementsOfPiece = std::int64_t{1} << 16;

/// What an element of a section costs beside those of others: about the number of its nodes. Surface elements are
/// forgotten after they have named their faces.
std::int64_t WeightOf(CgnsSection const& section) {
  constexpr std::int64_t kOfMixed = 6, kOfOther = 1;
  switch (RoleOfCgnsType(section.type)) {
    case CgnsRole::Cell:
      return NodeCountOfCgnsType(section.type);
    case CgnsRole::Mixed:
      return kOfMixed;
    case CgnsRole::PassedOver:
      return 0;
    default:
      return kOfOther;
  }
}

/// Elements in the order of the file, divided into blocks of about the same weight.
/// @return by section: the elements [0] .. [1] - 1 of this rank
std::vector<std::array<std::int64_t, 2>> ShareElements(MpiCommunicator const& communicator,
                                                       std::vector<CgnsSection> const& sections) {
  std::int64_t whole = 0;
  for (CgnsSection const& section : sections) whole += WeightOf(section) * section.size();
  BlockRanges const blocks = BlockRanges::Even(whole, communicator.size());
  std::vector<std::array<std::int64_t, 2>> shares;
  std::int64_t before = 0;
  for (CgnsSection const& section : sections) {
    std::int64_t const weight = WeightOf(section);
    // The first element that begins at or behind a place among the weights.
    auto const firstFrom = [&](std::int64_t place) {
      if (weight == 0) return section.first;
      std::int64_t const n = (std::max<std::int64_t>(place - before, 0) + weight - 1) / weight;
      return section.first + std::min(n, section.size());
    };
    shares.push_back(
        {firstFrom(blocks.First(communicator.rank())), firstFrom(blocks.End(communicator.rank()))});
    before += weight * section.size();
  }
  return shares;
}

/// The elements of own cells: cell c is element firstElement + c - firstCell of the last run with firstCell <= c.
class ElementsOfCells {
 public:
  void Add(std::int64_t element) {
    if (runs_.empty() || element - runs_.back()[1] != nCells_ - runs_.back()[0])
      runs_.push_back({nCells_, element});
    ++nCells_;
  }
  std::int64_t size() const { return nCells_; }
  std::int64_t operator[](std::int64_t cell) const {
    auto const behind = std::upper_bound(
        runs_.begin(), runs_.end(), cell,
        [](std::int64_t wanted, std::array<std::int64_t, 2> const& run) { return wanted < run[0]; });
    return (behind - 1)->at(1) + cell - (behind - 1)->at(0);
  }

 private:
  std::vector<std::array<std::int64_t, 2>> runs_;
  std::int64_t nCells_ = 0;
};

/// Reads this rank's share of all sections into a CellSlab.
class CgnsCellReader {
 public:
  CgnsCellReader(MpiCommunicator const& communicator, CgnsFile const& file,
                 std::vector<CgnsSection> const& sections)
      : communicator_(communicator), file_(file), sections_(sections) {}

  CgnsSlabTopology Read() {
    result_.ownElements = ShareElements(communicator_, sections_);
    slab_.nodes = BlockRanges::Even(file_.nNodes(), communicator_.size());
    RunTogether(communicator_, [this] { ReadPoints(); });
    Reserve();
    for (std::size_t s = 0; s < sections_.size(); ++s) {
      RunTogether(communicator_, [this, s] { ReadSection(s); });
    }
    slab_.cells = RangesOf(communicator_, elementOfCell_.size());
    if (slab_.cells.nItems() != file_.nCells()) {
      file_.Fail("the zone has " + std::to_string(file_.nCells()) + " cells, its sections have " +
                 std::to_string(slab_.cells.nItems()));
    }
    slab_.nameOfCell = [sections = sections_, elements = std::move(elementOfCell_),
                        first = slab_.cells.First(communicator_.rank())](std::int64_t cell) {
      return NameOfElement(sections, elements[cell - first]);
    };
    JoinedSlab joined = JoinCells(communicator_, file_.Name(), std::move(slab_));
    result_.mesh = std::move(joined.mesh);
    result_.elementOfFace = std::move(joined.labelOfFace);
    return std::move(result_);
  }

 private:
  void ReadPoints() {
    std::int64_t const n = slab_.nodes.Size(communicator_.rank());
    // A zone without nodes shows the message of the library.
    if (n > 0 || file_.nNodes() == 0) slab_.points = file_.Points(slab_.nodes.First(communicator_.rank()), n);
  }

  void Reserve() {
    std::size_t nCells = 0, nNodes = 0;
    for (std::size_t s = 0; s < sections_.size(); ++s) {
      if (RoleOfCgnsType(sections_[s].type) != CgnsRole::Cell) continue;
      auto const n = static_cast<std::size_t>(result_.ownElements[s][1] - result_.ownElements[s][0]);
      nCells += n;
      nNodes += n * static_cast<std::size_t>(NodeCountOfCgnsType(sections_[s].type));
    }
    slab_.shape.reserve(nCells);
    slab_.node.reserve(nNodes);
  }

  void ReadSection(std::size_t s) {
    CgnsSection const& section = sections_[s];
    CgnsSectionReader const reader(file_, section);
    bool const isMixed = RoleOfCgnsType(section.type) == CgnsRole::Mixed;
    auto const [begin, end] = result_.ownElements[s];
    for (std::int64_t first = begin; first < end; first += kElementsOfPiece) {
      std::int64_t const n = std::min(kElementsOfPiece, end - first);
      ForEachStandardElement(file_, section, reader.Read(first - section.first, n), first,
                             [&](CgnsStandardElement const& element) { Take(element, isMixed); });
    }
  }

  void Take(CgnsStandardElement const& element, bool isMixed) {
    std::array<std::int64_t, 8> const& nodes = element.nodes;
    if (element.isCell) {
      elementOfCell_.Add(element.element);
      slab_.shape.push_back(element.shape);
      slab_.node.insert(slab_.node.end(), nodes.begin(), nodes.begin() + element.nNodes);
      return;
    }
    slab_.surface.push_back({nodes[0], nodes[1], nodes[2], element.nNodes == 4 ? nodes[3] : -1});
    slab_.label.push_back(element.element);
    if (isMixed) result_.surfacesOfMixed.push_back(element.element);
  }

  MpiCommunicator const& communicator_;
  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  CellSlab slab_;
  ElementsOfCells elementOfCell_;
  CgnsSlabTopology result_;
};

}  // namespace

CgnsSlabTopology JoinCgnsSlabCells(MpiCommunicator const& communicator, CgnsFile const& file,
                                   std::vector<CgnsSection> const& sections) {
  return CgnsCellReader(communicator, file, sections).Read();
}

}  // namespace reference_host

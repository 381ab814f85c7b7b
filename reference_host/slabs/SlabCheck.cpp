#include "reference_host/slabs/SlabCheck.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabFaces.h"

namespace reference_host {
namespace {

constexpr std::size_t kFacesChecked = std::size_t{1} << 16;  // in a round
constexpr int kFewestFaces = 4;

std::string PrefixOf(std::string const& meshName) { return meshName.empty() ? "" : meshName + ": "; }

bool IsFinite(Point const& p) { return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]); }

/// The tables of one rank's slab.
class SlabTableChecker {
 public:
  SlabTableChecker(MpiCommunicator const& communicator, MeshSlab const& slab, std::string const& meshName)
      : communicator_(communicator),
        slab_(slab),
        names_(communicator, slab),
        prefix_(PrefixOf(meshName)),
        rank_(communicator.rank()) {}

  void CheckAll() const {
    if (slab_.cells.nItems() < 1) Fail("the mesh has no cells");
    CheckPoints();
    CheckLengths();
    CheckFaces();
    CheckFaceCounts();
  }

 private:
  /// How a face is bad. The text names one more item, or a number.
  enum class Fault { FewNodes, BeyondTable, NodeNumber, NodeTwice, CellNumber, Itself, NoPatch };
  struct BadFace {
    Fault fault = Fault::FewNodes;
    std::int64_t item = 0;
  };

  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(prefix_ + what); }

  void CheckPoints() const {
    auto const bad = std::find_if_not(slab_.points.begin(), slab_.points.end(), IsFinite);
    bool const isBad = bad != slab_.points.end();
    FirstOfAll const first =
        FindFirst(communicator_, isBad ? slab_.nodes.First(rank_) + (bad - slab_.points.begin()) : kNoNumber);
    if (first.number != kNoNumber) Fail(names_.Node(first.number) + " has a coordinate that is not finite");
  }

  void CheckLengths() const {
    std::size_t const nFaces = slab_.owner.size();
    bool const isGood = slab_.faceStart.size() == nFaces + 1 && slab_.neighbour.size() == nFaces &&
                        slab_.facePatch.size() == nFaces &&
                        slab_.faces.Size(rank_) == static_cast<std::int64_t>(nFaces);
    if (SumOverRanks(communicator_, isGood ? 0 : 1) > 0) Fail("the face tables differ in length");
  }

  void CheckFaces() const {
    BadFace bad;
    std::size_t f = 0;
    while (f < slab_.nOwnFaces() && IsGood(f, bad)) ++f;
    bool const isBad = f < slab_.nOwnFaces();
    FirstOfAll const first = FindFirst(communicator_, isBad ? slab_.NumberOfFace(f, rank_) : kNoNumber);
    if (first.number == kNoNumber) return;

    MPI_Bcast(&bad, sizeof(bad), MPI_BYTE, first.rank, communicator_.get());
    FaceInQuestion const face =
        BroadcastFace(communicator_, first.rank, rank_ == first.rank ? InQuestion(f) : FaceInQuestion{});
    std::string const name = names_.Face(face);
    Fail(name + " " + TextOf(bad));
  }

  FaceInQuestion InQuestion(std::size_t f) const {
    std::size_t const end = std::min(slab_.faceStart[f + 1], slab_.faceNode.size());
    std::size_t const begin = std::min(slab_.faceStart[f], end);
    return {slab_.NumberOfFace(f, rank_),
            {slab_.faceNode.begin() + static_cast<std::ptrdiff_t>(begin),
             slab_.faceNode.begin() + static_cast<std::ptrdiff_t>(end)},
            slab_.owner[f]};
  }

  std::string TextOf(BadFace const& bad) const {
    switch (bad.fault) {
      case Fault::FewNodes:
        return "has fewer than 3 nodes";
      case Fault::BeyondTable:
        return "goes beyond the end of the node table";
      case Fault::NodeNumber:
        return "has node " + std::to_string(bad.item + 1) + ", but there are " +
               std::to_string(slab_.nodes.nItems());
      case Fault::NodeTwice:
        return "has " + names_.Node(bad.item) + " twice";
      case Fault::CellNumber:
        return "has cell " + std::to_string(bad.item + 1) + ", but there are " +
               std::to_string(slab_.cells.nItems());
      case Fault::Itself:
        return "joins " + names_.Cell(bad.item) + " to itself";
      case Fault::NoPatch:
        return "is at the boundary, but in no patch";
    }
    return {};
  }

  bool IsGood(std::size_t f, BadFace& bad) const { return AreNodesGood(f, bad) && AreCellsGood(f, bad); }

  bool AreNodesGood(std::size_t f, BadFace& bad) const {
    std::size_t const begin = slab_.faceStart[f], end = slab_.faceStart[f + 1];
    if (end < begin + 3) return Complain(bad, Fault::FewNodes, 0);
    if (end > slab_.faceNode.size()) return Complain(bad, Fault::BeyondTable, 0);
    bool const isTwice = HasNodeTwice(begin, end);
    for (std::size_t i = begin; i < end; ++i) {
      std::int64_t const node = slab_.faceNode[i];
      if (node < 0 || node >= slab_.nodes.nItems()) return Complain(bad, Fault::NodeNumber, node);
      if (isTwice && IsBefore(begin, i)) return Complain(bad, Fault::NodeTwice, node);
    }
    return true;
  }

  bool HasNodeTwice(std::size_t begin, std::size_t end) const {
    constexpr std::size_t kFew = 16;
    if (end - begin <= kFew) {
      for (std::size_t i = begin + 1; i < end; ++i) {
        if (IsBefore(begin, i)) return true;
      }
      return false;
    }
    std::vector<std::int64_t> nodes(slab_.faceNode.begin() + static_cast<std::ptrdiff_t>(begin),
                                    slab_.faceNode.begin() + static_cast<std::ptrdiff_t>(end));
    std::sort(nodes.begin(), nodes.end());
    return std::adjacent_find(nodes.begin(), nodes.end()) != nodes.end();
  }

  /// Whether the face that begins there has the node at place i before that.
  bool IsBefore(std::size_t begin, std::size_t i) const {
    for (std::size_t j = begin; j < i; ++j) {
      if (slab_.faceNode[j] == slab_.faceNode[i]) return true;
    }
    return false;
  }

  bool AreCellsGood(std::size_t f, BadFace& bad) const {
    std::int64_t const owner = slab_.owner[f], neighbour = slab_.neighbour[f];
    if (!IsCell(owner)) return Complain(bad, Fault::CellNumber, owner);
    if (neighbour != -1 && !IsCell(neighbour)) return Complain(bad, Fault::CellNumber, neighbour);
    if (owner == neighbour) return Complain(bad, Fault::Itself, owner);
    int const patch = slab_.facePatch[f];
    bool const inPatch = patch >= 0 && static_cast<std::size_t>(patch) < slab_.patches.size();
    return neighbour != -1 || inPatch || Complain(bad, Fault::NoPatch, 0);
  }

  bool IsCell(std::int64_t cell) const { return cell >= 0 && cell < slab_.cells.nItems(); }

  static bool Complain(BadFace& bad, Fault fault, std::int64_t item) {
    bad.fault = fault;
    bad.item = item;
    return false;
  }

  void CheckFaceCounts() const {
    std::vector<unsigned char> const nFaces = CountFacesOfCells();
    auto const few =
        std::find_if(nFaces.begin(), nFaces.end(), [](unsigned char n) { return n < kFewestFaces; });
    bool const isBad = few != nFaces.end();
    FirstOfAll const first =
        FindFirst(communicator_, isBad ? slab_.cells.First(rank_) + (few - nFaces.begin()) : kNoNumber);
    if (first.number == kNoNumber) return;
    int count = isBad ? *few : 0;
    MPI_Bcast(&count, 1, MPI_INT, first.rank, communicator_.get());
    Fail(names_.Cell(first.number) + " has " + std::to_string(count) + " faces; a cell needs 4 or more");
  }

  /// Of the own block, up to kFewestFaces.
  std::vector<unsigned char> CountFacesOfCells() const {
    std::int64_t const firstCell = slab_.cells.First(rank_);
    std::vector<unsigned char> nFaces(static_cast<std::size_t>(slab_.cells.Size(rank_)), 0);
    auto const count = [&](std::int64_t cell) {
      unsigned char& n = nFaces[static_cast<std::size_t>(cell - firstCell)];
      if (n < kFewestFaces) ++n;
    };
    std::size_t const nRounds = CountRounds(communicator_, slab_.nOwnFaces(), kFacesChecked);
    std::vector<std::int64_t> elsewhere;
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::size_t const begin = std::min(slab_.nOwnFaces(), round * kFacesChecked);
      std::size_t const end = std::min(slab_.nOwnFaces(), begin + kFacesChecked);
      elsewhere.clear();
      for (std::size_t f = begin; f < end; ++f) {
        for (std::int64_t const cell : {slab_.owner[f], slab_.neighbour[f]}) {
          if (cell < 0) continue;
          if (cell >= firstCell && cell < slab_.cells.End(rank_)) {
            count(cell);
          } else {
            elsewhere.push_back(cell);
          }
        }
      }
      RankLists<std::int64_t> const counted =
          SwapLists(communicator_, ListsByRank<std::int64_t>(
                                       communicator_.size(), elsewhere.size(),
                                       [&](std::size_t i) { return slab_.cells.BlockOf(elsewhere[i]); },
                                       [&](std::size_t i) { return elsewhere[i]; }));
      for (std::int64_t const cell : counted.items) count(cell);
    }
    return nFaces;
  }

  MpiCommunicator const& communicator_;
  MeshSlab const& slab_;
  SlabNaming names_;
  std::string prefix_;
  int rank_;
};

}  // namespace

void CheckSlabTables(MpiCommunicator const& communicator, MeshSlab const& slab, std::string const& meshName) {
  SlabTableChecker(communicator, slab, meshName).CheckAll();
}

void CheckPartGeometry(MpiCommunicator const& communicator, MeshPart const& part,
                       std::vector<std::int64_t> const& numberOfFace, SlabNaming const& names,
                       std::string const& meshName) {
  int const face = FirstFaceWithoutArea(part);
  FirstOfAll const flat =
      FindFirst(communicator, face >= 0 ? numberOfFace[static_cast<std::size_t>(face)] : kNoNumber);
  if (flat.number != kNoNumber) {
    FaceInQuestion question;
    if (communicator.rank() == flat.rank) {
      question.number = flat.number;
      question.owner = part.globalCell[static_cast<std::size_t>(part.owner[static_cast<std::size_t>(face)])];
      for (std::size_t i = part.faceStart[face]; i < part.faceStart[face + 1]; ++i) {
        question.node.push_back(part.globalNode[static_cast<std::size_t>(part.faceNode[i])]);
      }
    }
    question = BroadcastFace(communicator, flat.rank, question);
    throw MeshError(PrefixOf(meshName) + names.Face(question) + " has no area");
  }

  BadCell const bad = FirstBadCell(part, part.nOwned);
  FirstOfAll const first = FindFirst(
      communicator, bad.cell >= 0 ? part.globalCell[static_cast<std::size_t>(bad.cell)] : kNoNumber);
  if (first.number == kNoNumber) return;
  throw MeshError(PrefixOf(meshName) + names.Cell(first.number) + " " +
                  ShareText(communicator, first.rank, bad.complaint));
}

}  // namespace reference_host

#include "reference_host/slabs/SlabDistribution.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/GlobalIndex.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabCheck.h"
#include "reference_host/slabs/SlabFaces.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {
namespace {

// So many items travel at once, so that what is on its way needs little memory beside the slab and the part.
constexpr std::size_t kFacesARound = std::size_t{1} << 16;
constexpr std::size_t kNodesARound = std::size_t{1} << 17;

/// Where a cell is once the mesh is cut: its part and its number among the part's own cells, in one number. Places
/// ascend by part, then by the number in the whole mesh.
constexpr std::int64_t PlaceOf(int part, int cell) { return (std::int64_t{part} << 32) | std::int64_t{cell}; }
constexpr int PartOf(std::int64_t place) { return static_cast<int>(place >> 32); }
constexpr int CellOf(std::int64_t place) { return static_cast<int>(place & 0xffffffff); }

/// Two faces that a period joins. In the list of nodes, those of b follow those of a.
struct PairHead {
  FaceHead a, b;
  int period;  // index into the periods
  int turn;    // as Period::turn
};

template <class T>
void Free(std::vector<T>& items) {
  std::vector<T>().swap(items);
}

template <class T>
void SortUnique(std::vector<T>& items) {
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
}

/// Lists for all ranks, filled one item after another once the number of items of each rank is known.
template <class T>
class ListFiller {
 public:
  explicit ListFiller(int nRanks) { lists_.start.assign(static_cast<std::size_t>(nRanks) + 1, 0); }

  void Count(int rank, std::size_t nItems = 1) { lists_.start[static_cast<std::size_t>(rank) + 1] += nItems; }
  void Allocate() {
    std::partial_sum(lists_.start.begin(), lists_.start.end(), lists_.start.begin());
    lists_.items.resize(lists_.start.back());
    next_.assign(lists_.start.begin(), lists_.start.end() - 1);
  }
  void Add(int rank, T const& item) { lists_.items[next_[static_cast<std::size_t>(rank)]++] = item; }

  RankLists<T> const& lists() const { return lists_; }

 private:
  RankLists<T> lists_;
  std::vector<std::size_t> next_;
};

/// One call of DistributeSlab.
///
/// Each rank receives the faces of its own cells, then those of their halo cells from the ranks that own these. It
/// makes a small FaceMesh of them, whose cells and nodes ascend by their numbers in the whole mesh as its own faces do.
/// Cells beyond the halo are missing in it. ExtractPart finds the same part in it as in the whole mesh.
class SlabDistributor {
 public:
  SlabDistributor(MpiCommunicator const& communicator, MeshSlab& slab, std::string const& meshName)
      : communicator_(communicator),
        slab_(slab),
        prefix_(meshName.empty() ? "" : meshName + ": "),
        rank_(communicator.rank()),
        nRanks_(communicator.size()) {}

  MeshPart Distribute(std::vector<int> const& partOfOwnCell) {
    {
      std::vector<std::int64_t> const place = NumberCells(partOfOwnCell);
      PlaceCellsOfFaces(place);
    }
    SwapPairs();
    SwapFaces();
    AddPairs(pairs_);
    pairs_ = {};
    ReceiveHalo();
    NumberMergedCells();
    NumberNodes();
    return CutPart();
  }

  /// [face of the part] its number in the whole mesh
  std::vector<std::int64_t> ReleaseNumbers() { return std::move(number_); }

 private:
  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(prefix_ + what); }

  /// Not collective: call it in RunTogether.
  void CheckThatIntFits(std::size_t count, char const* what) const {
    if (count < INT_MAX) return;
    Fail("mesh has " + std::to_string(count) + " " + what + " in one partition, more than " +
         std::to_string(INT_MAX - 1) + ": use more partitions");
  }

  void CheckPartNumbers(std::vector<int> const& partOfOwnCell) const {
    auto const nOwn = static_cast<std::size_t>(slab_.cells.Size(rank_));
    RunTogether(communicator_, [&] {
      if (partOfOwnCell.size() == nOwn) return;
      Fail("partition has " + std::to_string(partOfOwnCell.size()) + " part numbers for " +
           std::to_string(nOwn) + " cells");
    });
    RunTogether(communicator_, [&] {
      for (std::size_t c = 0; c < nOwn; ++c) {
        if (partOfOwnCell[c] >= 0 && partOfOwnCell[c] < nRanks_) continue;
        Fail("partition puts cell " +
             std::to_string(slab_.cells.First(rank_) + static_cast<std::int64_t>(c) + 1) + " into part " +
             std::to_string(partOfOwnCell[c]) + " of " + std::to_string(nRanks_) + " (counted from 0)");
      }
    });
  }

  /// Tells each rank which cells it owns.
  /// @return the places of the cells of the own block
  std::vector<std::int64_t> NumberCells(std::vector<int> const& partOfOwnCell) {
    CheckPartNumbers(partOfOwnCell);
    auto const partOf = [&](std::size_t c) { return partOfOwnCell[c]; };
    std::int64_t const first = slab_.cells.First(rank_);
    // The blocks ascend with the ranks, so what arrives ascends.
    globalCell_ =
        SwapLists(communicator_, ListsByRank<std::int64_t>(
                                     nRanks_, partOfOwnCell.size(), partOf,
                                     [&](std::size_t c) { return first + static_cast<std::int64_t>(c); }))
            .items;
    RunTogether(communicator_, [&] { CheckThatIntFits(globalCell_.size(), "cells"); });

    std::vector<std::int64_t> count(static_cast<std::size_t>(nRanks_), 0), next(count);
    for (int const part : partOfOwnCell) ++count[static_cast<std::size_t>(part)];
    MPI_Exscan(count.data(), next.data(), nRanks_, MPI_INT64_T, MPI_SUM, communicator_.get());
    if (rank_ == 0) std::fill(next.begin(), next.end(), 0);
    std::vector<std::int64_t> place;
    place.reserve(partOfOwnCell.size());
    for (int const part : partOfOwnCell) {
      place.push_back(PlaceOf(part, static_cast<int>(next[static_cast<std::size_t>(part)]++)));
    }
    return place;
  }

  bool IsInOwnBlock(std::int64_t cell) const {
    return cell >= slab_.cells.First(rank_) && cell < slab_.cells.End(rank_);
  }

  /// Replaces the cells of the faces of the slab by their places.
  /// @param[in] place  of the cells of the own block
  void PlaceCellsOfFaces(std::vector<std::int64_t> const& place) {
    auto const placeOfOwn = [&](std::int64_t own) { return place[static_cast<std::size_t>(own)]; };
    std::int64_t const first = slab_.cells.First(rank_);
    std::size_t const nFaces = slab_.nOwnFaces();
    std::size_t const nRounds = CountRounds(communicator_, nFaces, kFacesARound);
    std::vector<std::int64_t> elsewhere;
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::size_t const begin = std::min(nFaces, round * kFacesARound);
      std::size_t const end = std::min(nFaces, begin + kFacesARound);
      elsewhere.clear();
      for (std::size_t f = begin; f < end; ++f) {
        for (std::int64_t const cell : {slab_.owner[f], slab_.neighbour[f]}) {
          if (cell >= 0 && !IsInOwnBlock(cell)) elsewhere.push_back(cell);
        }
      }
      std::vector<std::int64_t> const fetched =
          FetchItems<std::int64_t>(communicator_, slab_.cells, elsewhere, placeOfOwn);
      std::size_t next = 0;
      for (std::size_t f = begin; f < end; ++f) {
        for (std::int64_t* const cell : {&slab_.owner[f], &slab_.neighbour[f]}) {
          if (*cell >= 0) *cell = IsInOwnBlock(*cell) ? placeOfOwn(*cell - first) : fetched[next++];
        }
      }
    }
  }

  /// Calls action(part) for the one or two parts that own a cell of the face of the slab.
  template <class Action>
  void ForEachPart(std::size_t f, Action const& action) const {
    int const part = PartOf(slab_.owner[f]);
    action(part);
    if (slab_.neighbour[f] >= 0 && PartOf(slab_.neighbour[f]) != part) action(PartOf(slab_.neighbour[f]));
  }

  /// Sends the pairs of the periods to the parts that own a cell of theirs.
  void SwapPairs() {
    RunTogether(communicator_, [this] {
      for (SlabPeriod const& period : slab_.periods) {
        if (period.turn.size() != period.faces.size()) Fail("the periods of the mesh are not joined");
      }
    });
    for (std::size_t k = 0; k < slab_.periods.size(); ++k) {
      SlabPeriod& period = slab_.periods[k];
      std::size_t const nRounds = CountRounds(communicator_, period.faces.size(), kFacesARound);
      for (std::size_t round = 0; round < nRounds; ++round) {
        std::size_t const begin = std::min(period.faces.size(), round * kFacesARound);
        SwapPairsOf(period, static_cast<int>(k), begin, std::min(period.faces.size(), begin + kFacesARound));
      }
      Free(period.faces);
      Free(period.turn);
    }
  }

  void SwapPairsOf(SlabPeriod const& period, int k, std::size_t begin, std::size_t end) {
    std::vector<std::int64_t> partners;
    for (std::size_t i = begin; i < end; ++i) partners.push_back(period.faces[i][1]);
    FaceRows const far = FetchFaces(communicator_, slab_, partners);
    PairSender sender(nRanks_);
    for (bool const isCounting : {true, false}) {
      for (std::size_t i = begin; i < end; ++i) {
        std::size_t const j = i - begin;
        auto const f = static_cast<std::size_t>(period.faces[i][0] - slab_.faces.First(rank_));
        PairHead const pair = {HeadOfFace(slab_, f, rank_), far.head[j], k, period.turn[i]};
        int const partA = PartOf(pair.a.owner), partB = PartOf(pair.b.owner);
        auto const send = [&](int part) {
          sender.Add(isCounting, part, pair, slab_.faceNode.data() + slab_.faceStart[f],
                     far.node.data() + far.start[j]);
        };
        send(partA);
        if (partB != partA) send(partB);
      }
      if (isCounting) sender.Allocate();
    }
    sender.Swap(communicator_, pairs_);
  }

  /// Pairs with their nodes, one after the other.
  struct PairRows {
    std::vector<PairHead> head;
    std::vector<std::int64_t> node;
  };

  /// Lists of pairs for all ranks.
  class PairSender {
   public:
    explicit PairSender(int nRanks) : heads_(nRanks), nodes_(nRanks) {}

    void Add(bool isCounting, int rank, PairHead const& pair, std::int64_t const* nodesOfA,
             std::int64_t const* nodesOfB) {
      if (isCounting) {
        heads_.Count(rank);
        nodes_.Count(rank, static_cast<std::size_t>(pair.a.nNodes) + static_cast<std::size_t>(pair.b.nNodes));
        return;
      }
      heads_.Add(rank, pair);
      for (int i = 0; i < pair.a.nNodes; ++i) nodes_.Add(rank, nodesOfA[i]);
      for (int i = 0; i < pair.b.nNodes; ++i) nodes_.Add(rank, nodesOfB[i]);
    }

    void Allocate() {
      heads_.Allocate();
      nodes_.Allocate();
    }

    /// Appends what arrives.
    void Swap(MpiCommunicator const& communicator, PairRows& rows) const {
      RankLists<PairHead> const heads = SwapLists(communicator, heads_.lists());
      RankLists<std::int64_t> const nodes = SwapLists(communicator, nodes_.lists());
      rows.head.insert(rows.head.end(), heads.items.begin(), heads.items.end());
      rows.node.insert(rows.node.end(), nodes.items.begin(), nodes.items.end());
    }

   private:
    ListFiller<PairHead> heads_;
    ListFiller<std::int64_t> nodes_;
  };

  /// By rank: where the faces and nodes that come from it begin among all that come.
  struct Arrival {
    std::vector<std::size_t> face, node;
  };

  Arrival CountArrivals() {
    std::vector<std::size_t> faceStart(static_cast<std::size_t>(nRanks_) + 1, 0), nodeStart(faceStart);
    for (std::size_t f = 0; f < slab_.nOwnFaces(); ++f) {
      ForEachPart(f, [&](int part) {
        ++faceStart[static_cast<std::size_t>(part) + 1];
        nodeStart[static_cast<std::size_t>(part) + 1] += slab_.faceStart[f + 1] - slab_.faceStart[f];
      });
    }
    std::partial_sum(faceStart.begin(), faceStart.end(), faceStart.begin());
    std::partial_sum(nodeStart.begin(), nodeStart.end(), nodeStart.begin());
    return {SwapSizes(communicator_, faceStart), SwapSizes(communicator_, nodeStart)};
  }

  /// Sends each face of the slab to the parts of its cells, and frees the tables of the faces.
  void SwapFaces() {
    Arrival next = CountArrivals();
    RunTogether(communicator_, [&] {
      CheckThatIntFits(next.face.back(), "faces");
      nFaces_ = next.face.back();
      number_.resize(nFaces_);
      faceStart_.resize(nFaces_ + 1);
      owner_.resize(nFaces_);
      neighbour_.resize(nFaces_);
      patch_.resize(nFaces_);
      faceNode_.resize(next.node.back());
    });
    faceStart_.back() = next.node.back();

    std::size_t const nRounds = CountRounds(communicator_, slab_.nOwnFaces(), kFacesARound);
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::size_t const begin = std::min(slab_.nOwnFaces(), round * kFacesARound);
      SwapFacesOf(begin, std::min(slab_.nOwnFaces(), begin + kFacesARound), next);
    }
    Free(slab_.faceStart);
    Free(slab_.faceNode);
    Free(slab_.owner);
    Free(slab_.neighbour);
    Free(slab_.facePatch);
  }

  void SwapFacesOf(std::size_t begin, std::size_t end, Arrival& next) {
    RankLists<FaceHead> heads;
    RankLists<std::int64_t> nodes;
    {
      FaceSender sender(nRanks_);
      for (bool const isCounting : {true, false}) {
        for (std::size_t f = begin; f < end; ++f) {
          ForEachPart(f, [&](int part) {
            FaceHead const head = HeadOfFace(slab_, f, rank_);
            std::int64_t const* const node = slab_.faceNode.data() + slab_.faceStart[f];
            if (part != rank_) {
              sender.Add(isCounting, part, head, node);
            } else if (isCounting) {
              StoreFace(head, node, rank_, next);
            }
          });
        }
        if (isCounting) sender.Allocate();
      }
      heads = SwapLists(communicator_, sender.heads.lists());
      nodes = SwapLists(communicator_, sender.nodes.lists());
    }
    for (int rank = 0; rank < nRanks_; ++rank) {
      auto const r = static_cast<std::size_t>(rank);
      std::int64_t const* node = nodes.items.data() + nodes.start[r];
      for (std::size_t i = heads.start[r]; i < heads.start[r + 1]; ++i) {
        StoreFace(heads.items[i], node, rank, next);
        node += heads.items[i].nNodes;
      }
    }
  }

  /// Puts a face that comes from the rank behind those that have come from it.
  void StoreFace(FaceHead const& head, std::int64_t const* nodes, int from, Arrival& next) {
    std::size_t const f = next.face[static_cast<std::size_t>(from)]++;
    std::size_t& node = next.node[static_cast<std::size_t>(from)];
    faceStart_[f] = node;
    number_[f] = head.number;
    owner_[f] = LocalCell(head.owner);
    neighbour_[f] = LocalCell(head.neighbour);
    patch_[f] = head.patch;
    for (int i = 0; i < head.nNodes; ++i) faceNode_[node++] = LocalNode(nodes[i]);
  }

  /// Lists of faces for all ranks.
  struct FaceSender {
    explicit FaceSender(int nRanks) : heads(nRanks), nodes(nRanks) {}

    void Add(bool isCounting, int rank, FaceHead const& head, std::int64_t const* nodesOfFace) {
      if (isCounting) {
        heads.Count(rank);
        nodes.Count(rank, static_cast<std::size_t>(head.nNodes));
        return;
      }
      heads.Add(rank, head);
      for (int i = 0; i < head.nNodes; ++i) nodes.Add(rank, nodesOfFace[i]);
    }

    void Allocate() {
      heads.Allocate();
      nodes.Allocate();
    }

    ListFiller<FaceHead> heads;
    ListFiller<std::int64_t> nodes;
  };

  /// The number of an own cell; -1: none; below: -2 - position in away_ of a cell of another part.
  int LocalCell(std::int64_t place) {
    if (place < 0) return -1;
    if (PartOf(place) == rank_) return CellOf(place);
    away_.push_back(place);
    return -1 - static_cast<int>(away_.size());
  }

  /// In the order of arrival, until NumberNodes.
  int LocalNode(std::int64_t node) { return static_cast<int>(node_.Add(node)); }

  /// A face that has no own cell, behind those that have.
  int AddFace(FaceHead const& head, int owner, int neighbour, std::int64_t const* nodes) {
    for (int i = 0; i < head.nNodes; ++i) faceNode_.push_back(LocalNode(nodes[i]));
    faceStart_.push_back(faceNode_.size());
    owner_.push_back(owner);
    neighbour_.push_back(neighbour);
    patch_.push_back(head.patch);
    return static_cast<int>(owner_.size()) - 1;
  }

  /// Exactly, since doubling the tables would cost much.
  void ReserveFaces(std::size_t nMore, std::size_t nMoreNodes) {
    faceNode_.reserve(faceNode_.size() + nMoreNodes);
    faceStart_.reserve(faceStart_.size() + nMore);
    owner_.reserve(owner_.size() + nMore);
    neighbour_.reserve(neighbour_.size() + nMore);
    patch_.reserve(patch_.size() + nMore);
  }

  /// A pair in the small mesh.
  struct LocalPair {
    PairHead head;
    int a, b;
  };

  /// Adds the faces of pairs that are not there yet.
  void AddPairs(PairRows const& pairs) {
    ReserveFaces(2 * pairs.head.size(), pairs.node.size());
    std::int64_t const* node = pairs.node.data();
    auto const add = [&](FaceHead const& head) {
      std::int64_t const* const nodes = node;
      node += head.nNodes;
      if (PartOf(head.owner) == rank_) {
        auto const found = std::lower_bound(number_.begin(), number_.end(), head.number);
        return static_cast<int>(found - number_.begin());
      }
      return AddFace(head, LocalCell(head.owner), -1, nodes);
    };
    for (PairHead const& pair : pairs.head) {
      int const a = add(pair.a);
      int const b = add(pair.b);
      localPairs_.push_back({pair, a, b});
    }
  }

  /// The halo cells and all of their faces from the ranks that own them.
  void ReceiveHalo() {
    haloPlace_ = away_;
    SortUnique(haloPlace_);
    for (std::vector<int>* const cells : {&owner_, &neighbour_}) {
      for (int& cell : *cells) {
        if (cell < -1) cell = -2 - HaloOf(away_[static_cast<std::size_t>(-2 - cell)]);
      }
    }
    Free(away_);

    RankLists<int> asked =
        SwapLists(communicator_,
                  ListsByRank<int>(
                      nRanks_, haloPlace_.size(), [this](std::size_t i) { return PartOf(haloPlace_[i]); },
                      [this](std::size_t i) { return CellOf(haloPlace_[i]); }));
    RankLists<std::int64_t> answers;
    answers.start = asked.start;
    for (int const cell : asked.items) answers.items.push_back(globalCell_[static_cast<std::size_t>(cell)]);
    // The halo cells ascend by their part, and so do the answers.
    globalHalo_ = SwapLists(communicator_, answers).items;
    SwapHaloFaces(asked);
  }

  /// @return -1 if it is no halo cell
  int HaloOf(std::int64_t place) const {
    auto const found = std::lower_bound(haloPlace_.begin(), haloPlace_.end(), place);
    return found != haloPlace_.end() && *found == place ? static_cast<int>(found - haloPlace_.begin()) : -1;
  }

  /// Who asks for which own cell.
  struct Asker {
    int cell, rank;
  };

  static std::vector<Asker> SortedAskers(RankLists<int> const& asked) {
    std::vector<Asker> askers;
    for (std::size_t r = 0; r + 1 < asked.start.size(); ++r) {
      for (std::size_t i = asked.start[r]; i < asked.start[r + 1]; ++i) {
        askers.push_back({asked.items[i], static_cast<int>(r)});
      }
    }
    std::stable_sort(askers.begin(), askers.end(), [](Asker a, Asker b) { return a.cell < b.cell; });
    return askers;
  }

  /// The place of a cell of an own face.
  std::int64_t PlaceOfLocal(int cell) const {
    if (cell >= 0) return PlaceOf(rank_, cell);
    return cell == -1 ? -1 : haloPlace_[static_cast<std::size_t>(-2 - cell)];
  }

  /// Calls send(rank) for each rank that has asked for a cell of the own face, once.
  template <class Send>
  void ForEachAsker(std::vector<Asker> const& askers, std::vector<char> const& isAsked, int f,
                    Send const& send) const {
    auto const isOwnAndAsked = [&](int cell) {
      return cell >= 0 && isAsked[static_cast<std::size_t>(cell)] != 0;
    };
    auto const begin = [&](int cell) {
      return std::lower_bound(askers.begin(), askers.end(), cell,
                              [](Asker const& a, int c) { return a.cell < c; });
    };
    int const owner = owner_[f], neighbour = neighbour_[f];
    if (isOwnAndAsked(owner)) {
      for (auto i = begin(owner); i != askers.end() && i->cell == owner; ++i) send(i->rank);
    }
    if (!isOwnAndAsked(neighbour)) return;
    for (auto i = begin(neighbour); i != askers.end() && i->cell == neighbour; ++i) {
      bool isSent = false;
      if (isOwnAndAsked(owner)) {
        for (auto j = begin(owner); j != askers.end() && j->cell == owner; ++j) isSent |= j->rank == i->rank;
      }
      if (!isSent) send(i->rank);
    }
  }

  /// Sends the faces of the cells that others ask for, without those that they have.
  void SwapHaloFaces(RankLists<int> const& asked) {
    std::vector<Asker> const askers = SortedAskers(asked);
    std::vector<char> isAsked(globalCell_.size(), 0);
    for (Asker const& asker : askers) isAsked[static_cast<std::size_t>(asker.cell)] = 1;
    std::vector<std::pair<int, std::size_t>> const pairOfFace = PairsOfOwnFaces();

    FaceSender faces(nRanks_);
    PairSender pairs(nRanks_);
    std::vector<std::int64_t> nodes, nodesOfB;
    for (bool const isCounting : {true, false}) {
      for (std::size_t f = 0; f < nFaces_; ++f) {
        int const face = static_cast<int>(f);
        bool areNodesThere = false;
        ForEachAsker(askers, isAsked, face, [&](int rank) {
          auto const found =
              std::lower_bound(pairOfFace.begin(), pairOfFace.end(), std::pair(face, std::size_t{0}));
          if (found != pairOfFace.end() && found->first == face) {
            LocalPair const& pair = localPairs_[found->second];
            if (PartOf(pair.head.a.owner) == rank || PartOf(pair.head.b.owner) == rank) return;
            nodes = NodesOfFace(pair.a);
            nodesOfB = NodesOfFace(pair.b);
            pairs.Add(isCounting, rank, pair.head, nodes.data(), nodesOfB.data());
            return;
          }
          std::int64_t const owner = PlaceOfLocal(owner_[f]), neighbour = PlaceOfLocal(neighbour_[f]);
          if (PartOf(owner) == rank || (neighbour >= 0 && PartOf(neighbour) == rank)) return;
          if (!areNodesThere) nodes = NodesOfFace(face);
          areNodesThere = true;
          faces.Add(isCounting, rank,
                    {number_[f], owner, neighbour, patch_[f], static_cast<int>(nodes.size())}, nodes.data());
        });
      }
      if (isCounting) {
        faces.Allocate();
        pairs.Allocate();
      }
    }
    AddHaloFaces(SwapLists(communicator_, faces.heads.lists()),
                 SwapLists(communicator_, faces.nodes.lists()));
    PairRows rows;
    pairs.Swap(communicator_, rows);
    AddHaloPairs(rows);
  }

  /// Own faces in a period with the index of their pair, ascending.
  std::vector<std::pair<int, std::size_t>> PairsOfOwnFaces() const {
    std::vector<std::pair<int, std::size_t>> pairs;
    for (std::size_t i = 0; i < localPairs_.size(); ++i) {
      for (int const face : {localPairs_[i].a, localPairs_[i].b}) {
        if (static_cast<std::size_t>(face) < nFaces_) pairs.emplace_back(face, i);
      }
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
  }

  std::vector<std::int64_t> NodesOfFace(int f) const {
    std::vector<std::int64_t> nodes;
    for (std::size_t i = faceStart_[f]; i < faceStart_[f + 1]; ++i) {
      nodes.push_back(node_.numbers()[static_cast<std::size_t>(faceNode_[i])]);
    }
    return nodes;
  }

  /// As in the tables of faces; -1 for a cell beyond the halo.
  int KnownCell(std::int64_t place) const {
    if (place < 0) return -1;
    if (PartOf(place) == rank_) return CellOf(place);
    int const halo = HaloOf(place);
    return halo < 0 ? -1 : -2 - halo;
  }

  void AddHaloFaces(RankLists<FaceHead> const& heads, RankLists<std::int64_t> const& nodes) {
    ReserveFaces(heads.items.size(), nodes.items.size());
    std::int64_t const* node = nodes.items.data();
    for (FaceHead const& head : heads.items) {
      AddFace(head, KnownCell(head.owner), KnownCell(head.neighbour), node);
      node += head.nNodes;
    }
  }

  /// A pair may come from the owners of both of its cells.
  void AddHaloPairs(PairRows const& pairs) {
    std::vector<std::pair<std::int64_t, std::size_t>> order;  // number of the first face, position
    for (std::size_t i = 0; i < pairs.head.size(); ++i) order.emplace_back(pairs.head[i].a.number, i);
    std::sort(order.begin(), order.end());
    std::vector<char> isFirst(pairs.head.size(), 0);
    for (std::size_t i = 0; i < order.size(); ++i) {
      isFirst[order[i].second] = i == 0 || order[i].first != order[i - 1].first ? 1 : 0;
    }
    ReserveFaces(2 * pairs.head.size(), pairs.node.size());
    std::int64_t const* node = pairs.node.data();
    for (std::size_t i = 0; i < pairs.head.size(); ++i) {
      PairHead const& pair = pairs.head[i];
      if (isFirst[i] != 0) {
        int const a = AddFace(pair.a, KnownCell(pair.a.owner), -1, node);
        int const b = AddFace(pair.b, KnownCell(pair.b.owner), -1, node + pair.a.nNodes);
        localPairs_.push_back({pair, a, b});
      }
      node += pair.a.nNodes + pair.b.nNodes;
    }
  }

  /// Numbers own and halo cells together, in the order of the whole mesh.
  void NumberMergedCells() {
    std::vector<int> order(globalHalo_.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [this](int a, int b) { return globalHalo_[a] < globalHalo_[b]; });
    std::size_t const nCells = globalCell_.size() + globalHalo_.size();
    std::vector<int> numberOfOwn(globalCell_.size()), numberOfHalo(globalHalo_.size());
    std::vector<std::int64_t> merged;
    merged.reserve(nCells);
    partOfCell_.reserve(nCells);
    std::size_t own = 0;
    auto const addOwnBefore = [&](std::int64_t end) {
      for (; own < globalCell_.size() && globalCell_[own] < end; ++own) {
        numberOfOwn[own] = static_cast<int>(merged.size());
        merged.push_back(globalCell_[own]);
        partOfCell_.push_back(rank_);
      }
    };
    for (int const halo : order) {
      addOwnBefore(globalHalo_[halo]);
      numberOfHalo[halo] = static_cast<int>(merged.size());
      merged.push_back(globalHalo_[halo]);
      partOfCell_.push_back(PartOf(haloPlace_[halo]));
    }
    addOwnBefore(slab_.cells.nItems());
    for (std::vector<int>* const cells : {&owner_, &neighbour_}) {
      for (int& cell : *cells) {
        if (cell != -1) cell = cell >= 0 ? numberOfOwn[cell] : numberOfHalo[-2 - cell];
      }
    }
    globalCell_ = std::move(merged);
    Free(globalHalo_);
    Free(haloPlace_);
  }

  /// Numbers the nodes in the order of the whole mesh.
  void NumberNodes() {
    RunTogether(communicator_, [&] {
      CheckThatIntFits(globalCell_.size(), "cells");
      CheckThatIntFits(owner_.size(), "faces");
      CheckThatIntFits(node_.numbers().size(), "nodes");
    });
    std::vector<std::int64_t> arrived = node_.Release();
    globalNode_ = arrived;
    std::sort(globalNode_.begin(), globalNode_.end());
    std::vector<int> numberOf;
    numberOf.reserve(arrived.size());
    for (std::int64_t const node : arrived) {
      auto const found = std::lower_bound(globalNode_.begin(), globalNode_.end(), node);
      numberOf.push_back(static_cast<int>(found - globalNode_.begin()));
    }
    for (int& node : faceNode_) node = numberOf[static_cast<std::size_t>(node)];
  }

  std::vector<Point> FetchPoints() {
    std::vector<Point> points;
    points.reserve(globalNode_.size());
    std::size_t const nRounds = CountRounds(communicator_, globalNode_.size(), kNodesARound);
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::size_t const begin = std::min(globalNode_.size(), round * kNodesARound);
      std::size_t const end = std::min(globalNode_.size(), begin + kNodesARound);
      std::vector<Point> const fetched =
          FetchItems<Point>(communicator_, slab_.nodes,
                            {globalNode_.begin() + static_cast<std::ptrdiff_t>(begin),
                             globalNode_.begin() + static_cast<std::ptrdiff_t>(end)},
                            [this](std::int64_t own) { return slab_.points[static_cast<std::size_t>(own)]; });
      points.insert(points.end(), fetched.begin(), fetched.end());
    }
    Free(slab_.points);
    return points;
  }

  MeshPart CutPart() {
    FaceMesh mesh;
    mesh.points = FetchPoints();
    mesh.faceStart = std::move(faceStart_);
    mesh.faceNode = std::move(faceNode_);
    mesh.owner = std::move(owner_);
    mesh.neighbour = std::move(neighbour_);
    mesh.facePatch = std::move(patch_);
    mesh.patches = std::move(slab_.patches);
    mesh.nCells = static_cast<int>(globalCell_.size());
    for (SlabPeriod& period : slab_.periods) mesh.periods.push_back(std::move(period.description));
    for (LocalPair const& pair : localPairs_) {
      Period& period = mesh.periods[static_cast<std::size_t>(pair.head.period)];
      period.faces.emplace_back(pair.a, pair.b);
      period.turn.push_back(pair.head.turn);
    }
    MeshPart part;
    RunTogether(communicator_, [&] { part = ExtractPart(mesh, partOfCell_, rank_, nRanks_); });
    for (std::int64_t& cell : part.globalCell) cell = globalCell_[static_cast<std::size_t>(cell)];
    for (std::int64_t& node : part.globalNode) node = globalNode_[static_cast<std::size_t>(node)];
    return part;
  }

  MpiCommunicator const& communicator_;
  MeshSlab& slab_;
  std::string prefix_;
  int rank_, nRanks_;

  // The small mesh. Its first nFaces_ faces are those of own cells. Until NumberMergedCells, cells count from 0 among
  // the own ones, and halo cells have the number -2 - i.
  std::size_t nFaces_ = 0;
  std::vector<std::int64_t> number_;  // of own faces in the whole mesh
  std::vector<std::size_t> faceStart_;
  std::vector<int> faceNode_, owner_, neighbour_, patch_;
  GlobalIndex node_;
  std::vector<std::int64_t> globalNode_;
  std::vector<std::int64_t> globalCell_;
  std::vector<int> partOfCell_;

  std::vector<std::int64_t> away_;                    // places of cells of other parts, as faces name them
  std::vector<std::int64_t> haloPlace_, globalHalo_;  // ascending by place
  PairRows pairs_;                                    // with an own cell
  std::vector<LocalPair> localPairs_;
};

}  // namespace

MeshPart DistributeSlab(MpiCommunicator const& communicator, MeshSlab&& slab,
                        std::vector<int> const& partOfOwnCell, std::string const& meshName,
                        CheckGeometry check) {
  MeshPart part;
  std::vector<std::int64_t> numberOfFace;
  {
    SlabDistributor distributor(communicator, slab, meshName);
    part = distributor.Distribute(partOfOwnCell);
    numberOfFace = distributor.ReleaseNumbers();
  }
  if (check == CheckGeometry::Yes) {
    CheckPartGeometry(communicator, part, numberOfFace, SlabNaming(communicator, slab), meshName);
  }
  return part;
}

}  // namespace reference_host

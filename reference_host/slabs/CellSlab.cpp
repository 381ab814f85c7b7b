#include "reference_host/slabs/CellSlab.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/MpiRounds.h"
#include "reference_host/slabs/NumberSet.h"
#include "reference_host/slabs/SlabFaces.h"
#include "reference_host/slabs/SlabNaming.h"
#include "reference_host/slabs/UsedNodes.h"

namespace reference_host {
namespace {

/// A face of an own cell: the cell's place in the block times 8, plus which face of the cell.
using OwnSide = std::uint64_t;

/// A side or a surface element on its way to the rank where all of the same nodes meet.
struct Traveller {
  ShortFace<std::int64_t> nodes;  ///< ascending
  std::int64_t item;              ///< cell, or number of cells + surface element
  std::int64_t label;             ///< of a surface element
  /// [i] position among the ascending nodes of the i-th node around the face
  std::array<std::uint8_t, 4> order;
};

/// What comes back for a side: a cell, kNobody, or the label of a surface element as -2 - label.
constexpr std::int64_t kNobody = -1;
constexpr std::int64_t LabelAsAnswer(std::int64_t label) { return -2 - label; }

Traveller MakeTraveller(ShortFace<std::int64_t> const& around, std::int64_t item, std::int64_t label) {
  Traveller traveller = {Sorted(around), item, label, {}};
  auto const n = static_cast<std::size_t>(NodeCountOfFace(around));
  for (std::size_t i = 0; i < n; ++i) {
    traveller.order[i] = static_cast<std::uint8_t>(
        std::find(traveller.nodes.begin(), traveller.nodes.end(), around[i]) - traveller.nodes.begin());
  }
  return traveller;
}

ShortFace<std::int64_t> NodesAround(Traveller const& traveller) {
  ShortFace<std::int64_t> around = {-1, -1, -1, -1};
  auto const n = static_cast<std::size_t>(NodeCountOfFace(traveller.nodes));
  for (std::size_t i = 0; i < n; ++i) around[i] = traveller.nodes[traveller.order[i]];
  return around;
}

/// Cells that cannot all have the same face. Of all in a mesh, the one with the lowest nodes is reported.
struct CellConflict {
  ShortFace<std::int64_t> nodes;      ///< ascending
  std::array<std::int64_t, 3> cells;  ///< [2] = -1: two cells on the same side
};

/// Where the sides with a certain lowest node meet, and in which round. Both are scattered, since the sides of one
/// rank often have their lowest nodes close together.
class MeetingPlaces {
 public:
  MeetingPlaces(int nRanks, std::uint64_t nRounds)
      : nRanks_(static_cast<std::uint64_t>(nRanks)), nRounds_(nRounds) {}

  int RankOf(std::int64_t lowestNode) const {
    return static_cast<int>((Scattered(lowestNode) >> 32) % nRanks_);
  }
  std::uint64_t RoundOf(std::int64_t lowestNode) const {
    return (Scattered(lowestNode) & 0xFFFFFFFF) * nRounds_ >> 32;
  }

 private:
  /// The multiplier is odd and its bits are irregular, so that all bits of the product depend on the number.
  static std::uint64_t Scattered(std::int64_t number) {
    std::uint64_t const product = static_cast<std::uint64_t>(number + 1) * 0x9E3779B97F4A7C15U;
    return product ^ (product >> 29);
  }

  std::uint64_t nRanks_, nRounds_;
};

/// Makes a JoinedSlab. Sides meet first on the rank of their cells. A side goes to another rank only if no own cell
/// has it, too, or if cells of other ranks have all of its nodes: they might have the side as well.
class SlabJoiner {
 public:
  SlabJoiner(MpiCommunicator const& communicator, std::string const& meshName, CellSlab&& slab)
      : communicator_(communicator), meshName_(meshName), slab_(std::move(slab)) {}

  JoinedSlab Join() {
    RunTogether(communicator_, [this] { NumberNodesHere(); });
    FetchNodes();
    RunTogether(communicator_, [this] {
      OrientCells();
      MatchOwnSides();
    });
    MatchTravellers();
    ReportConflict();
    NumberNodes();
    RunTogether(communicator_, [this] { CollectFaces(); });
    result_.mesh.faces = RangesOf(communicator_, static_cast<std::int64_t>(result_.mesh.owner.size()));
    return std::move(result_);
  }

 private:
  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(meshName_ + ": " + what); }

  std::int64_t FirstCell() const { return slab_.cells.First(communicator_.rank()); }
  std::string NameOfCell(std::int64_t cell) const {
    return slab_.nameOfCell ? slab_.nameOfCell(cell) : "cell " + std::to_string(cell + 1);
  }

  /// Numbers the nodes of own cells 0, 1, ... in the order of their numbers in the file.
  void NumberNodesHere() {
    NumberSet set(slab_.nodes.nItems());
    nodeStart_.reserve(slab_.shape.size() + 1);
    sideStart_.reserve(slab_.shape.size() + 1);
    for (CellShape const shape : slab_.shape) {
      std::int64_t const* const nodes = slab_.node.data() + nodeStart_.back();
      int const nNodes = NodeCount(shape);
      if (FirstRepeated(nodes, nNodes) < nNodes) {
        Fail(NameOfCell(FirstCell() + static_cast<std::int64_t>(nodeStart_.size()) - 1) +
             " has a node twice");
      }
      std::for_each(nodes, nodes + nNodes, [&](std::int64_t node) { set.Insert(node); });
      nodeStart_.push_back(nodeStart_.back() + static_cast<std::size_t>(nNodes));
      sideStart_.push_back(sideStart_.back() + static_cast<std::size_t>(FaceCount(shape)));
    }
    set.Count();
    if (set.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
      Fail("the cells of rank " + std::to_string(communicator_.rank()) +
           " have more nodes than an int can count");
    }
    fileNode_ = set.Ascending();
    node_.reserve(slab_.node.size());
    for (std::int64_t const node : slab_.node) node_.push_back(static_cast<int>(set.PlaceOf(node)));
    slab_.node = {};
  }

  /// Gets the points of the nodes here, and which of them cells of other ranks have, too.
  void FetchNodes() {
    nUsers_ = CountUsers(communicator_, slab_.nodes, fileNode_);
    struct Answer {
      Point point;
      std::int64_t isShared;
    };
    point_.resize(fileNode_.size());
    isShared_.resize(fileNode_.size());
    FetchInRounds<Answer>(
        communicator_, slab_.nodes, fileNode_,
        [this](std::int64_t own) {
          auto const n = static_cast<std::size_t>(own);
          return Answer{slab_.points[n], nUsers_[n] > 1 ? 1 : 0};
        },
        [this](std::size_t i, Answer const& answer) {
          point_[i] = answer.point;
          isShared_[i] = static_cast<char>(answer.isShared);
        });
  }

  void OrientCells() {
    for (std::size_t c = 0; c < slab_.shape.size(); ++c) {
      OrientCell(point_, slab_.shape[c], node_.data() + nodeStart_[c]);
    }
    point_ = {};
  }

  ShortFace<int> NodesOf(OwnSide side) const {
    auto const cell = static_cast<std::size_t>(side / 8);
    return FaceOfCell(slab_.shape[cell], static_cast<int>(side % 8), node_.data() + nodeStart_[cell]);
  }
  std::int64_t CellOf(OwnSide side) const { return FirstCell() + static_cast<std::int64_t>(side / 8); }
  std::int64_t& OtherOf(OwnSide side) { return other_[sideStart_[side / 8] + side % 8]; }

  ShortFace<std::int64_t> InFile(ShortFace<int> const& nodes) const {
    ShortFace<std::int64_t> file{};
    for (std::size_t i = 0; i < file.size(); ++i)
      file[i] = nodes[i] < 0 ? -1 : fileNode_[static_cast<std::size_t>(nodes[i])];
    return file;
  }

  bool IsSharedSide(ShortFace<int> const& nodes) const {
    return std::all_of(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes),
                       [this](int node) { return isShared_[static_cast<std::size_t>(node)] != 0; });
  }

  /// The own sides in the order of their lowest node: equal ones end up among a few dozen others, in linear time.
  /// Those of node n are at startOfNode[n]..startOfNode[n+1]-1, by ascending cell.
  void SortByLowestNode(std::vector<std::size_t>& startOfNode) {
    auto const forEachSide = [this](auto const& visit) {
      for (std::size_t c = 0; c < slab_.shape.size(); ++c) {
        for (int local = 0; local < FaceCount(slab_.shape[c]); ++local) {
          ShortFace<int> const nodes = FaceOfCell(slab_.shape[c], local, node_.data() + nodeStart_[c]);
          visit(OwnSide{8 * c + static_cast<std::size_t>(local)},
                static_cast<std::size_t>(
                    *std::min_element(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes))));
        }
      }
    };
    // Counting sort. The counts are shifted by one more place than usual, because placing a side advances the
    // start of its node to the start of the next node.
    startOfNode.assign(fileNode_.size() + 2, 0);
    forEachSide([&](OwnSide, std::size_t lowest) { ++startOfNode[lowest + 2]; });
    for (std::size_t n = 2; n < startOfNode.size(); ++n) startOfNode[n] += startOfNode[n - 1];
    travelling_.resize(startOfNode.back());
    forEachSide([&](OwnSide side, std::size_t lowest) { travelling_[startOfNode[lowest + 1]++] = side; });
  }

  struct SortedSide {
    std::array<int, 3> otherNodes;  ///< ascending; -1 in place of a triangle's fourth node
    OwnSide side;
  };

  /// Joins own cells, and leaves in travelling_ the sides that have to meet those of other ranks.
  void MatchOwnSides() {
    std::vector<std::size_t> startOfNode;
    SortByLowestNode(startOfNode);
    other_.assign(sideStart_.back(), kNobody);

    auto const before = [](SortedSide const& a, SortedSide const& b) {
      if (a.otherNodes != b.otherNodes) return a.otherNodes < b.otherNodes;
      return a.side < b.side;
    };
    std::size_t nTravelling = 0;
    std::vector<SortedSide> ofNode;
    for (std::size_t n = 0; n < fileNode_.size(); ++n) {
      ofNode.clear();
      for (std::size_t i = startOfNode[n]; i < startOfNode[n + 1]; ++i) {
        ShortFace<int> const nodes = Sorted(NodesOf(travelling_[i]));
        ofNode.push_back({{nodes[1], nodes[2], nodes[3]}, travelling_[i]});
      }
      std::sort(ofNode.begin(), ofNode.end(), before);
      SortedSide const* const end = ofNode.data() + ofNode.size();
      for (SortedSide const* first = ofNode.data(); first != end;) {
        SortedSide const* last = first + 1;
        while (last != end && last->otherNodes == first->otherNodes) ++last;
        if (last - first == 1 || IsSharedSide(NodesOf(first->side))) {
          for (SortedSide const* s = first; s != last; ++s) travelling_[nTravelling++] = s->side;
        } else {
          MatchEqualSides(first, last);
        }
        first = last;
      }
    }
    travelling_.resize(nTravelling);
    travelling_.shrink_to_fit();
  }

  void MatchEqualSides(SortedSide const* first, SortedSide const* last) {
    OwnSide const a = first[0].side, b = first[1].side;
    ShortFace<int> const nodes = NodesOf(a);
    if (last - first > 2) {
      NoteConflict({Sorted(InFile(nodes)), {CellOf(a), CellOf(b), CellOf(first[2].side)}});
    } else if (!IsReverse(nodes, NodesOf(b))) {
      NoteConflict({Sorted(InFile(nodes)), {CellOf(a), CellOf(b), -1}});
    } else {
      OtherOf(a) = CellOf(b);
      OtherOf(b) = CellOf(a);
    }
  }

  void NoteConflict(CellConflict const& conflict) {
    if (!conflict_ || conflict.nodes < conflict_->nodes) conflict_ = conflict;
  }

  /// Lets the sides of travelling_ and the surface elements meet those with the same nodes.
  void MatchTravellers() {
    for (std::size_t s = 0; s < slab_.surface.size(); ++s) travelling_.push_back(FirstSurface() + s);
    firstSurfaceItem_ =
        slab_.cells.nItems() +
        RangesOf(communicator_, static_cast<std::int64_t>(slab_.surface.size())).First(communicator_.rank());
    std::size_t const nRounds = CountRounds(communicator_, travelling_.size(), kItemsOfRound);
    MeetingPlaces const places(communicator_.size(), nRounds);
    std::vector<std::size_t> const startOfRound = SortByRound(places, nRounds);
    for (std::size_t round = 0; round < nRounds; ++round) {
      LetMeet(places, travelling_.data() + startOfRound[round],
              startOfRound[round + 1] - startOfRound[round]);
    }
    travelling_ = {};
    slab_.surface = {};
    slab_.label = {};
  }

  /// @return [0..nRounds] where the travellers of each round start in travelling_
  std::vector<std::size_t> SortByRound(MeetingPlaces const& places, std::uint64_t nRounds) {
    std::vector<std::size_t> start(nRounds + 1, 0);
    if (nRounds < 2) {
      start.back() = travelling_.size();
      return start;
    }
    auto const roundOf = [&](std::uint64_t traveller) { return places.RoundOf(LowestNodeOf(traveller)); };
    for (std::uint64_t const traveller : travelling_) ++start[roundOf(traveller) + 1];
    for (std::size_t r = 0; r < nRounds; ++r) start[r + 1] += start[r];
    std::vector<std::size_t> next(start.begin(), start.end() - 1);
    std::vector<std::uint64_t> sorted(travelling_.size());
    for (std::uint64_t const traveller : travelling_) sorted[next[roundOf(traveller)]++] = traveller;
    travelling_ = std::move(sorted);
    return start;
  }

  /// Collective. One round, with n travellers from here.
  void LetMeet(MeetingPlaces const& places, std::uint64_t const* travellers, std::size_t n) {
    std::vector<int> rank(n);
    for (std::size_t i = 0; i < n; ++i) rank[i] = places.RankOf(LowestNodeOf(travellers[i]));
    auto const rankOf = [&](std::size_t i) { return rank[i]; };
    RankLists<std::int64_t> answers = AnswersTo(SwapLists(
        communicator_, ListsByRank<Traveller>(communicator_.size(), n, rankOf,
                                              [&](std::size_t i) { return TravellerOf(travellers[i]); })));
    answers = SwapLists(communicator_, answers);
    std::vector<std::size_t>& next = answers.start;
    for (std::size_t i = 0; i < n; ++i) {
      std::int64_t const answer = answers.items[next[static_cast<std::size_t>(rank[i])]++];
      if (travellers[i] < FirstSurface()) OtherOf(travellers[i]) = answer;
    }
  }

  /// Surface element s counts as side FirstSurface() + s among the travellers.
  std::uint64_t FirstSurface() const { return 8 * slab_.shape.size(); }

  std::int64_t LowestNodeOf(std::uint64_t traveller) const {
    auto const lowest = [](auto const& nodes) {
      return *std::min_element(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes));
    };
    if (traveller < FirstSurface()) return fileNode_[static_cast<std::size_t>(lowest(NodesOf(traveller)))];
    return lowest(slab_.surface[traveller - FirstSurface()]);
  }

  Traveller TravellerOf(std::uint64_t traveller) const {
    if (traveller < FirstSurface()) return MakeTraveller(InFile(NodesOf(traveller)), CellOf(traveller), -1);
    std::size_t const s = traveller - FirstSurface();
    return MakeTraveller(slab_.surface[s], firstSurfaceItem_ + static_cast<std::int64_t>(s), slab_.label[s]);
  }

  /// Matches the sides and surfaces of all ranks that have met here.
  RankLists<std::int64_t> AnswersTo(RankLists<Traveller> const& met) {
    struct Place {
      std::int64_t lowestNode;
      std::size_t at;
    };
    std::vector<Place> order;
    order.reserve(met.items.size());
    for (Traveller const& traveller : met.items) order.push_back({traveller.nodes[0], order.size()});
    std::sort(order.begin(), order.end(), [&](Place const& a, Place const& b) {
      if (a.lowestNode != b.lowestNode) return a.lowestNode < b.lowestNode;
      Traveller const &x = met.items[a.at], &y = met.items[b.at];
      return x.nodes != y.nodes ? x.nodes < y.nodes : x.item < y.item;
    });
    RankLists<std::int64_t> answers;
    answers.start = met.start;
    answers.items.assign(met.items.size(), kNobody);
    std::vector<std::size_t> equal;
    for (std::size_t i = 0; i < order.size();) {
      ShortFace<std::int64_t> const& nodes = met.items[order[i].at].nodes;
      equal.clear();
      for (; i < order.size() && met.items[order[i].at].nodes == nodes; ++i) equal.push_back(order[i].at);
      AnswerEqual(met.items, equal, answers.items);
    }
    return answers;
  }

  /// @param[in] at  the places of equal sides, cells first, each ascending
  void AnswerEqual(std::vector<Traveller> const& met, std::vector<std::size_t> const& at,
                   std::vector<std::int64_t>& answers) {
    auto const nCells = std::count_if(
        at.begin(), at.end(), [&](std::size_t place) { return met[place].item < slab_.cells.nItems(); });
    Traveller const& first = met[at[0]];
    if (nCells > 2) {
      NoteConflict({first.nodes, {first.item, met[at[1]].item, met[at[2]].item}});
    } else if (nCells == 2 && !IsReverse(NodesAround(first), NodesAround(met[at[1]]))) {
      NoteConflict({first.nodes, {first.item, met[at[1]].item, -1}});
    } else if (nCells == 2) {
      answers[at[0]] = met[at[1]].item;
      answers[at[1]] = first.item;
    } else if (nCells == 1 && at.size() > 1) {
      answers[at[0]] = LabelAsAnswer(met[at[1]].label);
    }
  }

  /// Throws if any rank has noted a conflict.
  void ReportConflict() {
    constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();
    CellConflict const own = conflict_.value_or(CellConflict{{kNone, kNone, kNone, kNone}, {}});
    std::vector<CellConflict> conflicts(static_cast<std::size_t>(communicator_.size()));
    MPI_Allgather(&own, sizeof(CellConflict), MPI_BYTE, conflicts.data(), sizeof(CellConflict), MPI_BYTE,
                  communicator_.get());
    CellConflict const& first =
        *std::min_element(conflicts.begin(), conflicts.end(),
                          [](CellConflict const& a, CellConflict const& b) { return a.nodes < b.nodes; });
    if (first.nodes[0] == kNone) return;
    std::string const a = NameFromItsRank(first.cells[0]), b = NameFromItsRank(first.cells[1]);
    if (first.cells[2] < 0) {
      Fail(b + " lies on the same side of a common face as " + a +
           " (the cell occurs twice, or cells overlap)");
    }
    Fail(NameFromItsRank(first.cells[2]) + " shares a face with " + a + " and " + b +
         ": a face has two sides");
  }

  /// Collective.
  std::string NameFromItsRank(std::int64_t cell) const {
    int const rank = slab_.cells.BlockOf(cell);
    return ShareText(communicator_, rank, rank == communicator_.rank() ? NameOfCell(cell) : "");
  }

  /// Numbers the nodes that cells use, and replaces fileNode_ by those numbers.
  void NumberNodes() {
    MeshSlab& mesh = result_.mesh;
    NumberedNodes numbered = NumberUsedNodes(communicator_, slab_.nodes, nUsers_, slab_.points, fileNode_);
    mesh.names.nodeNumber = NamesOfUsedNodes(numbered, slab_.nodes, communicator_.rank(), slab_.nodeNumber);
    mesh.names.cell = slab_.nameOfCell;
    mesh.nodes = std::move(numbered.nodes);
    mesh.points = std::move(slab_.points);
    result_.numberOfNode = std::move(numbered.numberOfNode);
    nUsers_ = {};
  }

  /// Calls visit(cell, other, nodes) for the faces that are on this rank, in order.
  template <class Visit>
  void ForEachFace(Visit const& visit) const {
    for (std::size_t c = 0; c < slab_.shape.size(); ++c) {
      std::int64_t const cell = FirstCell() + static_cast<std::int64_t>(c);
      for (std::size_t side = sideStart_[c]; side < sideStart_[c + 1]; ++side) {
        if (other_[side] >= 0 && other_[side] < cell) continue;  // the other cell is the owner
        visit(
            cell, other_[side],
            FaceOfCell(slab_.shape[c], static_cast<int>(side - sideStart_[c]), node_.data() + nodeStart_[c]));
      }
    }
  }

  void CollectFaces() {
    MeshSlab& mesh = result_.mesh;
    std::size_t nFaces = 0, nNodes = 0;
    ForEachFace([&](std::int64_t, std::int64_t, ShortFace<int> const& nodes) {
      ++nFaces;
      nNodes += static_cast<std::size_t>(NodeCountOfFace(nodes));
    });
    mesh.cells = slab_.cells;
    mesh.faceStart.reserve(nFaces + 1);
    mesh.faceNode.reserve(nNodes);
    mesh.owner.reserve(nFaces);
    mesh.neighbour.reserve(nFaces);
    result_.labelOfFace.reserve(nFaces);
    ForEachFace([&](std::int64_t cell, std::int64_t other, ShortFace<int> const& nodes) {
      for (int i = 0; i < NodeCountOfFace(nodes); ++i) {
        auto const node = static_cast<std::size_t>(nodes[static_cast<std::size_t>(i)]);
        mesh.faceNode.push_back(fileNode_[node]);
      }
      mesh.faceStart.push_back(mesh.faceNode.size());
      mesh.owner.push_back(cell);
      mesh.neighbour.push_back(std::max(other, std::int64_t{-1}));
      result_.labelOfFace.push_back(other < kNobody ? LabelAsAnswer(other) : -1);
    });
    mesh.facePatch.assign(nFaces, -1);
  }

  MpiCommunicator const& communicator_;
  std::string const& meshName_;
  CellSlab slab_;
  JoinedSlab result_;

  std::vector<std::size_t> nodeStart_ = {0}, sideStart_ = {0};  // [cell of the block]
  std::vector<int> node_;                                       // of the own cells, into fileNode_
  std::vector<std::int64_t> fileNode_;  // ascending: number in the file; at the end, in the mesh
  std::vector<Point> point_;            // of fileNode_
  std::vector<char> isShared_;          // by fileNode_: cells of other ranks have it, too
  std::vector<std::uint8_t> nUsers_;    // CountUsers, of the own nodes of the file

  std::vector<std::uint64_t> travelling_;  // own sides, and then surface elements, too
  std::vector<std::int64_t> other_;        // by own side: the other cell, or as the answer to a traveller
  std::int64_t firstSurfaceItem_ = 0;      // Traveller::item of the first own surface element
  std::optional<CellConflict> conflict_;
};

}  // namespace

JoinedSlab JoinCells(MpiCommunicator const& communicator, std::string const& meshName, CellSlab&& slab) {
  return SlabJoiner(communicator, meshName, std::move(slab)).Join();
}

}  // namespace reference_host

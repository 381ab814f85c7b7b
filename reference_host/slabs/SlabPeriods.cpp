#include "reference_host/slabs/SlabPeriods.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceTurn.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabFaces.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {
namespace {

constexpr std::size_t kPairsARound = std::size_t{1} << 15;

/// Some pairs of faces with the places of their nodes.
struct PairsInPlace {
  FaceRows here, there;
  std::vector<std::int64_t> node;  // ascending
  std::vector<Point> point;        // by node

  std::vector<Point> PlacesOf(FaceRows const& faces, std::size_t i) const {
    std::vector<Point> places;
    for (std::size_t j = faces.start[i]; j < faces.start[i + 1]; ++j) {
      auto const found = std::lower_bound(node.begin(), node.end(), faces.node[j]);
      places.push_back(point[static_cast<std::size_t>(found - node.begin())]);
    }
    return places;
  }
};

/// Joins the periods of one rank's slab.
class SlabPeriodJoiner {
 public:
  SlabPeriodJoiner(MpiCommunicator const& communicator, MeshSlab& slab, std::string const& meshName)
      : communicator_(communicator), slab_(slab), meshName_(meshName), rank_(communicator.rank()) {}

  void JoinAll() {
    DropUnwanted();
    for (SlabPeriod& period : slab_.periods) Join(period);
  }

 private:
  [[noreturn]] void Fail(SlabPeriod const& period, std::string const& what) const {
    FailPeriod(period.description, slab_.patches, meshName_, what);
  }

  void DropUnwanted() {
    std::vector<SlabPeriod> wanted;
    for (SlabPeriod& period : slab_.periods) {
      if (!IsWanted(period.description, slab_.patches)) continue;
      if (SumOverRanks(communicator_, static_cast<std::int64_t>(period.faces.size())) == 0) continue;
      wanted.push_back(std::move(period));
    }
    slab_.periods = std::move(wanted);
  }

  void Join(SlabPeriod& period) {
    if (!period.description.refusal.empty()) Fail(period, period.description.refusal);
    std::size_t const nPairs = period.faces.size();
    std::int64_t const firstPlace = RangesOf(communicator_, static_cast<std::int64_t>(nPairs)).First(rank_);
    auto const placeOf = [&](std::size_t i) {
      return period.place.empty() ? firstPlace + static_cast<std::int64_t>(i) : period.place[i];
    };
    FindShift(period, FindFirst(communicator_, nPairs > 0 ? placeOf(0) : kNoNumber).rank);
    period.turn.clear();
    std::size_t const nRounds = CountRounds(communicator_, nPairs, kPairsARound);
    std::vector<FaceInQuestion> misfit;  // the first pair that does not fit; empty: none
    for (std::size_t round = 0; round < nRounds; ++round) {
      std::size_t const begin = std::min(nPairs, round * kPairsARound);
      PairsInPlace const pairs = Fetch(period, begin, std::min(nPairs, begin + kPairsARound));
      for (std::size_t i = 0; i < pairs.here.head.size() && misfit.empty(); ++i) {
        int const turn = TurnOf(period.description, pairs, i);
        period.turn.push_back(turn);
        if (turn == kNoTurn) misfit = {InQuestion(pairs.here, i), InQuestion(pairs.there, i)};
      }
    }
    std::int64_t const place = misfit.empty() ? kNoNumber : placeOf(period.turn.size() - 1);
    CheckThatAllFit(period, FindFirst(communicator_, place), misfit);
  }

  /// @param[in] from  the rank that has the first pair, which measures
  void FindShift(SlabPeriod& period, int from) const {
    PairsInPlace const pairs = Fetch(period, 0, rank_ == from ? 1 : 0);
    std::string complaint;
    Point& shift = period.description.shift;
    if (rank_ == from) {
      std::vector<Point> const first = pairs.PlacesOf(pairs.here, 0);
      shift = ShiftBetween(first, pairs.PlacesOf(pairs.there, 0));
      complaint = ComplaintAboutShift(period.description, shift, SizeOfPlaces(first));
    }
    MPI_Bcast(shift.data(), 3, MPI_DOUBLE, from, communicator_.get());
    complaint = ShareText(communicator_, from, complaint);
    if (!complaint.empty()) Fail(period, complaint);
  }

  /// Collective. The pairs begin..end-1 of the rank's own.
  PairsInPlace Fetch(SlabPeriod const& period, std::size_t begin, std::size_t end) const {
    std::vector<std::int64_t> first, second;
    for (std::size_t i = begin; i < end; ++i) {
      first.push_back(period.faces[i][0]);
      second.push_back(period.faces[i][1]);
    }
    PairsInPlace pairs;
    pairs.here = FetchFaces(communicator_, slab_, first);
    pairs.there = FetchFaces(communicator_, slab_, second);
    pairs.node = pairs.here.node;
    pairs.node.insert(pairs.node.end(), pairs.there.node.begin(), pairs.there.node.end());
    std::sort(pairs.node.begin(), pairs.node.end());
    pairs.node.erase(std::unique(pairs.node.begin(), pairs.node.end()), pairs.node.end());
    pairs.point = FetchItems<Point>(communicator_, slab_.nodes, pairs.node, [this](std::int64_t own) {
      return slab_.points[static_cast<std::size_t>(own)];
    });
    return pairs;
  }

  static double SizeOfPlaces(std::vector<Point> const& face) {
    return SizeOfFace(static_cast<int>(face.size()),
                      [&face](int i) { return face[static_cast<std::size_t>(i)]; });
  }

  static int TurnOf(Period const& period, PairsInPlace const& pairs, std::size_t i) {
    std::vector<Point> const here = pairs.PlacesOf(pairs.here, i), there = pairs.PlacesOf(pairs.there, i);
    if (here.size() != there.size()) return kNoTurn;
    return FindTurn(
        static_cast<int>(here.size()), [&here](int j) { return here[static_cast<std::size_t>(j)]; },
        [&](int j) { return Difference(there[static_cast<std::size_t>(j)], period.shift); },
        period.tolerance * SizeOfPlaces(here));
  }

  static FaceInQuestion InQuestion(FaceRows const& faces, std::size_t i) {
    return {faces.head[i].number,
            {faces.node.begin() + static_cast<std::ptrdiff_t>(faces.start[i]),
             faces.node.begin() + static_cast<std::ptrdiff_t>(faces.start[i + 1])},
            faces.head[i].owner};
  }

  void CheckThatAllFit(SlabPeriod const& period, FirstOfAll const& first,
                       std::vector<FaceInQuestion> misfit) const {
    if (first.number == kNoNumber) return;
    misfit.resize(2);
    SlabNaming const names(communicator_, slab_);
    std::string const face = names.Face(BroadcastFace(communicator_, first.rank, misfit[0]));
    std::string const partner = names.Face(BroadcastFace(communicator_, first.rank, misfit[1]));
    Fail(period, "has " + face + ", which does not lie on " + partner + " when moved by " +
                     ShiftText(period.description.shift));
  }

  MpiCommunicator const& communicator_;
  MeshSlab& slab_;
  std::string const& meshName_;
  int rank_;
};

}  // namespace

void JoinSlabPeriods(MpiCommunicator const& communicator, MeshSlab& slab, std::string const& meshName) {
  SlabPeriodJoiner(communicator, slab, meshName).JoinAll();
}

}  // namespace reference_host

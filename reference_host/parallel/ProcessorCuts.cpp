#include "reference_host/parallel/ProcessorCuts.h"

#include <algorithm>
#include <cstdlib>

#include "reference_host/mesh/FaceTurn.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/mesh/Vector3.h"
#include "reference_host/parallel/MpiAgreement.h"

namespace reference_host {
namespace {

/// Both sides have the same coordinates, but perhaps with few digits. As a fraction of the face's size.
constexpr double kClose = 1e-4;

/// One side of a period sends under the tag under which the other receives.
int TagOf(int period) { return period >= 0 ? 2 * period : -2 * period - 1; }

std::vector<MpiNeighbours::Link> LinksOf(std::vector<ProcessorCut> const& cuts) {
  std::vector<MpiNeighbours::Link> links;
  links.reserve(cuts.size());
  for (ProcessorCut const& cut : cuts) {
    links.push_back({cut.neighbour, TagOf(cut.period), TagOf(-cut.period)});
  }
  return links;
}

int NodeCount(FaceMesh const& mesh, int f) {
  return static_cast<int>(mesh.faceStart[f + 1] - mesh.faceStart[f]);
}

}  // namespace

ProcessorCuts::ProcessorCuts(MpiCommunicator const& communicator, ProcessorMesh const& processor)
    : processor_(processor), neighbours_(communicator, LinksOf(processor.cuts)) {
  FaceMesh const& mesh = processor.mesh;
  std::vector<std::vector<int>> lengths;
  for (ProcessorCut const& cut : processor.cuts) {
    std::vector<int>& list = lengths.emplace_back();
    for (int f = cut.firstFace; f < cut.firstFace + cut.nFaces; ++f) list.push_back(NodeCount(mesh, f));
  }
  std::vector<std::vector<int>> const theirLengths = neighbours_.Swap(lengths);
  std::vector<std::vector<Point>> const theirs = SwapNodeValues(mesh.points);
  MeasureShifts(communicator, theirLengths, theirs);
  RunTogether(communicator, [&] { MatchFaces(theirLengths, theirs); });
}

/// Takes the shift of a period at its first face in the whole mesh, as JoinPeriods does.
void ProcessorCuts::MeasureShifts(MpiCommunicator const& communicator,
                                  std::vector<std::vector<int>> const& theirLengths,
                                  std::vector<std::vector<Point>> const& theirs) {
  std::size_t const nPeriods = processor_.mesh.periods.size();
  if (nPeriods == 0) return;
  std::vector<Measurement> own;
  RunTogether(communicator, [&] { own = MeasureOwnShifts(communicator.rank(), theirLengths, theirs); });
  std::vector<Measurement> all(nPeriods * static_cast<std::size_t>(communicator.size()));
  int const nBytes = static_cast<int>(nPeriods * sizeof(Measurement));
  MPI_Allgather(own.data(), nBytes, MPI_BYTE, all.data(), nBytes, MPI_BYTE, communicator.get());
  for (std::size_t k = 0; k < nPeriods; ++k) {
    Measurement best;
    for (std::size_t i = k; i < all.size(); i += nPeriods) {
      if (all[i].face < best.face) best = all[i];
    }
    shifts_.push_back(best.shift);
  }
}

/// Without the addressing of faces, their order is that of ranks and of faces on each.
std::vector<ProcessorCuts::Measurement> ProcessorCuts::MeasureOwnShifts(
    std::int64_t rank, std::vector<std::vector<int>> const& theirLengths,
    std::vector<std::vector<Point>> const& theirs) const {
  FaceMesh const& mesh = processor_.mesh;
  std::vector<Measurement> own(mesh.periods.size());
  for (std::size_t i = 0; i < processor_.cuts.size(); ++i) {
    ProcessorCut const& cut = processor_.cuts[i];
    if (cut.period >= 0) continue;  // no period, or its second side
    Period const& period = mesh.periods[-cut.period - 1];
    Measurement& best = own[-cut.period - 1];
    auto at = theirs[i].begin();
    for (int k = 0; k < cut.nFaces; ++k) {
      int const f = cut.firstFace + k;
      std::vector<std::int64_t> const& address = processor_.faceAddress;
      std::int64_t const number = address.empty() ? (rank << 32) + f : std::abs(address[f]);
      std::vector<Point> const there(at, at + theirLengths[i][k]);
      at += theirLengths[i][k];
      if (number >= best.face) continue;
      std::vector<Point> const here = PlacesOfFace(mesh, f);
      best = {number, ShiftBetween(here, there)};
      double const size = SizeOfFace(static_cast<int>(here.size()), [&here](int n) { return here[n]; });
      std::string const complaint = ComplaintAboutShift(period, best.shift, size);
      if (!complaint.empty()) FailPeriod(period, mesh.patches, processor_.folder, complaint);
    }
  }
  return own;
}

void ProcessorCuts::FailFace(ProcessorCut const& cut, int k, std::string const& what) const {
  std::string const number = std::to_string(cut.firstFace + k);
  if (cut.period == 0) {
    throw MeshError(processor_.folder + ": face " + number + " of patch " + Quoted(cut.patchName) + " " +
                    what);
  }
  std::size_t const period = static_cast<std::size_t>(std::abs(cut.period)) - 1;
  FailPeriod(processor_.mesh.periods[period], processor_.mesh.patches, processor_.folder,
             "has face " + number + " of patch " + Quoted(cut.patchName) + ", which " + what +
                 " when moved by " + ShiftText(ShiftOf(shifts_, -cut.period)));
}

void ProcessorCuts::MatchFaces(std::vector<std::vector<int>> const& theirLengths,
                               std::vector<std::vector<Point>> const& theirs) {
  for (std::size_t i = 0; i < processor_.cuts.size(); ++i) {
    ProcessorCut const& cut = processor_.cuts[i];
    std::vector<int>& nodes = nodes_.emplace_back();
    std::vector<std::size_t>& start = start_.emplace_back(1, 0);
    for (int k = 0; k < cut.nFaces; ++k) {
      int const n = NodeCount(processor_.mesh, cut.firstFace + k);
      if (theirLengths[i][k] != n) {
        FailFace(cut, k,
                 "has " + std::to_string(n) + " nodes, its counterpart in processor" +
                     std::to_string(cut.neighbour) + " has " + std::to_string(theirLengths[i][k]));
      }
      MatchFace(cut, k, theirs[i].data() + start.back(), nodes);
      start.push_back(nodes.size());
    }
  }
}

void ProcessorCuts::MatchFace(ProcessorCut const& cut, int k, Point const* theirs,
                              std::vector<int>& nodes) const {
  FaceMesh const& mesh = processor_.mesh;
  int const f = cut.firstFace + k, n = NodeCount(mesh, f);
  int const* const own = mesh.faceNode.data() + mesh.faceStart[f];
  bool const isPeriodic = cut.period != 0;
  Point const shift = isPeriodic ? ShiftOf(shifts_, cut.period) : Point{0.0, 0.0, 0.0};
  double const tolerance = isPeriodic ? mesh.periods[std::abs(cut.period) - 1].tolerance : kClose;
  auto const theirPlace = [&](int i) { return isPeriodic ? Sum(theirs[i], shift) : theirs[i]; };
  int const turn = FindTurn(
      n, theirPlace, [&](int i) { return mesh.points[own[i]]; }, tolerance * SizeOfFace(n, theirPlace));
  if (turn == kNoTurn) {
    FailFace(cut, k, "does not lie on its counterpart in processor" + std::to_string(cut.neighbour));
  }
  for (int i = 0; i < n; ++i) nodes.push_back(own[(turn + n - i) % n]);
}

}  // namespace reference_host

#include "reference_host/parallel/ProcessorCuts.h"

#include <algorithm>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Vector3.h"
#include "reference_host/parallel/MpiAgreement.h"

namespace reference_host {
namespace {

/// Both sides have the same coordinates, but perhaps with few digits. As a fraction of the face's size.
constexpr double kClose = 1e-4;

std::vector<int> RanksOf(std::vector<ProcessorCut> const& cuts) {
  std::vector<int> ranks;
  ranks.reserve(cuts.size());
  for (ProcessorCut const& cut : cuts) ranks.push_back(cut.neighbour);
  return ranks;
}

}  // namespace

ProcessorCuts::ProcessorCuts(MpiCommunicator const& communicator, ProcessorMesh const& processor)
    : processor_(processor), neighbours_(communicator, RanksOf(processor.cuts)) {
  FaceMesh const& mesh = processor.mesh;
  std::vector<std::vector<int>> lengths;
  for (ProcessorCut const& cut : processor.cuts) {
    std::vector<int>& list = lengths.emplace_back();
    for (int f = cut.firstFace; f < cut.firstFace + cut.nFaces; ++f) {
      list.push_back(static_cast<int>(mesh.faceStart[f + 1] - mesh.faceStart[f]));
    }
  }
  std::vector<std::vector<int>> const theirLengths = neighbours_.Swap(lengths);
  std::vector<std::vector<Point>> const theirs = SwapNodeValues(mesh.points);
  RunTogether(communicator, [&] { MatchFaces(theirLengths, theirs); });
}

void ProcessorCuts::MatchFaces(std::vector<std::vector<int>> const& theirLengths,
                               std::vector<std::vector<Point>> const& theirs) {
  FaceMesh const& mesh = processor_.mesh;
  for (std::size_t i = 0; i < processor_.cuts.size(); ++i) {
    ProcessorCut const& cut = processor_.cuts[i];
    std::vector<int>& nodes = nodes_.emplace_back();
    std::vector<std::size_t>& start = start_.emplace_back(1, 0);
    for (int k = 0; k < cut.nFaces; ++k) {
      std::size_t const n = mesh.faceStart[cut.firstFace + k + 1] - mesh.faceStart[cut.firstFace + k];
      if (theirLengths[i][k] != static_cast<int>(n)) {
        throw MeshError(processor_.folder + ": face " + std::to_string(cut.firstFace + k) + " of patch " +
                        Quoted(cut.patchName) + " has " + std::to_string(n) +
                        " nodes, its counterpart in processor" + std::to_string(cut.neighbour) + " has " +
                        std::to_string(theirLengths[i][k]));
      }
      MatchFace(cut, k, theirs[i].data() + start.back(), nodes);
      start.push_back(nodes.size());
    }
  }
}

/// The neighbour goes around the face in the opposite direction, usually from the same node.
void ProcessorCuts::MatchFace(ProcessorCut const& cut, int k, Point const* theirs,
                              std::vector<int>& nodes) const {
  FaceMesh const& mesh = processor_.mesh;
  std::size_t const begin = mesh.faceStart[cut.firstFace + k];
  std::size_t const n = mesh.faceStart[cut.firstFace + k + 1] - begin;
  auto const ownNode = [&](std::size_t shift, std::size_t i) {
    return mesh.faceNode[begin + (shift + n - i) % n];
  };
  double size = 0.0;
  for (std::size_t i = 1; i < n; ++i) size = std::max(size, Length(Difference(theirs[i], theirs[0])));
  // A shift ends at the first node that does not match, usually at once. Only a face with nearly all of its
  // nodes at one point could take n * n comparisons.
  std::size_t nLeft = 64 * n;
  for (std::size_t shift = 0; shift < n && nLeft > 0; ++shift) {
    bool fits = true;
    for (std::size_t i = 0; i < n && fits; ++i) {
      if (nLeft > 0) --nLeft;
      fits = Length(Difference(mesh.points[ownNode(shift, i)], theirs[i])) <= kClose * size;
    }
    if (!fits) continue;
    for (std::size_t i = 0; i < n; ++i) nodes.push_back(ownNode(shift, i));
    return;
  }
  throw MeshError(processor_.folder + ": face " + std::to_string(cut.firstFace + k) + " of patch " +
                  Quoted(cut.patchName) + " does not lie on its counterpart in processor" +
                  std::to_string(cut.neighbour));
}

}  // namespace reference_host

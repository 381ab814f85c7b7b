#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/parallel/MpiNeighbours.h"

namespace reference_host {

/// The cuts of a processor's mesh, matched node by node with those of its neighbours. Cuts of a period are matched
/// after its shift, and a processor may be its own neighbour beyond them.
class ProcessorCuts {
 public:
  /// Collective. Throws MeshError if a face does not lie on its counterpart. @pre PeriodSettler
  /// @param[in] communicator, processor  borrowed
  ProcessorCuts(MpiCommunicator const& communicator, ProcessorMesh const& processor);

  MpiNeighbours const& neighbours() const { return neighbours_; }

  /// The shifts of the periods, the same on every rank.
  std::vector<Point> const& shifts() const { return shifts_; }

  /// The own nodes of the k-th face of cut i, in the neighbour's order, are the elements Start(i)[k] to
  /// Start(i)[k+1]-1 of Nodes(i).
  std::vector<int> const& Nodes(std::size_t i) const { return nodes_[i]; }
  std::vector<std::size_t> const& Start(std::size_t i) const { return start_[i]; }

  /// Collective among neighbours. Swaps a value of every own node.
  /// @return by cut, the neighbour's values at Nodes(i)
  template <class T>
  std::vector<std::vector<T>> SwapNodeValues(std::vector<T> const& ofNode) const {
    FaceMesh const& mesh = processor_.mesh;
    std::vector<std::vector<T>> lists;
    for (ProcessorCut const& cut : processor_.cuts) {
      std::vector<T>& list = lists.emplace_back();
      for (std::size_t n = mesh.faceStart[cut.firstFace]; n < mesh.faceStart[cut.firstFace + cut.nFaces];
           ++n) {
        list.push_back(ofNode[mesh.faceNode[n]]);
      }
    }
    return neighbours_.Swap(lists);
  }

 private:
  /// The shift of a period measured at one face of its first side.
  struct Measurement {
    std::int64_t face = kNoFace;  ///< in the whole mesh; the lowest counts
    Point shift = {0.0, 0.0, 0.0};
  };
  static constexpr std::int64_t kNoFace = std::numeric_limits<std::int64_t>::max();

  void MeasureShifts(MpiCommunicator const& communicator, std::vector<std::vector<int>> const& theirLengths,
                     std::vector<std::vector<Point>> const& theirs);
  std::vector<Measurement> MeasureOwnShifts(std::int64_t rank,
                                            std::vector<std::vector<int>> const& theirLengths,
                                            std::vector<std::vector<Point>> const& theirs) const;
  void MatchFaces(std::vector<std::vector<int>> const& theirLengths,
                  std::vector<std::vector<Point>> const& theirs);
  void MatchFace(ProcessorCut const& cut, int k, Point const* theirs, std::vector<int>& nodes) const;
  [[noreturn]] void FailFace(ProcessorCut const& cut, int k, std::string const& what) const;

  ProcessorMesh const& processor_;
  MpiNeighbours neighbours_;
  std::vector<Point> shifts_;
  std::vector<std::vector<int>> nodes_;
  std::vector<std::vector<std::size_t>> start_;
};

}  // namespace reference_host

#pragma once

#include <cstddef>
#include <vector>

#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/parallel/MpiNeighbours.h"

namespace reference_host {

/// The cuts of a processor's mesh, matched node by node with those of its neighbours.
class ProcessorCuts {
 public:
  /// Collective. Throws MeshError if a face does not lie on its counterpart.
  /// @param[in] communicator, processor  borrowed
  ProcessorCuts(MpiCommunicator const& communicator, ProcessorMesh const& processor);

  MpiNeighbours const& neighbours() const { return neighbours_; }

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
  void MatchFaces(std::vector<std::vector<int>> const& theirLengths,
                  std::vector<std::vector<Point>> const& theirs);
  void MatchFace(ProcessorCut const& cut, int k, Point const* theirs, std::vector<int>& nodes) const;

  ProcessorMesh const& processor_;
  MpiNeighbours neighbours_;
  std::vector<std::vector<int>> nodes_;
  std::vector<std::vector<std::size_t>> start_;
};

}  // namespace reference_host

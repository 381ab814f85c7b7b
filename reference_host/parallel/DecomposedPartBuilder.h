#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/parallel/DecomposedNumbers.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/parallel/ProcessorCuts.h"

namespace reference_host {

/// Makes a MeshPart of a processor's mesh and the halo cells across its cuts, which the neighbours send.
class DecomposedPartBuilder {
 public:
  /// All borrowed.
  DecomposedPartBuilder(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                        ProcessorCuts const& cuts, DecomposedNumbers const& numbers);

  /// Collective. Call it once.
  MeshPart Build();

 private:
  /// The number of a cell or node in the whole mesh and the period beyond which it is; 0: at its own place.
  using Shifted = std::pair<std::int64_t, int>;

  /// A cell on the other side of a cut.
  struct HaloCell {
    Shifted cell;
    int part;
    std::vector<Shifted> nodes;  ///< ascending
  };
  using NumberedPoint = std::pair<Shifted, Point>;

  /// A node of a cell at a cut of a period, and the node on the other side with which it coincides.
  struct SharedNode {
    int cell, period, node;  ///< period: of the cut
    std::int64_t mate;
    Point place;  ///< of the mate
  };

  int CellAtCut(ProcessorCut const& cut, int k) const { return processor_.mesh.owner[cut.firstFace + k]; }

  std::vector<std::vector<int>> NodesOfCutCells() const;
  std::vector<SharedNode> NodesSharedBeyondPeriods(std::vector<std::vector<std::int64_t>> const& mates,
                                                   std::vector<std::vector<Point>> const& places) const;
  void FetchHalo();
  void UnpackHalo(std::size_t i, std::vector<std::int64_t> const& words, std::vector<Point> const& points);

  void NumberCells();
  void NumberNodes();
  void AddHaloNodes();
  std::vector<int> FacesInOrder() const;
  void AddFaces();
  void AddCutFace(std::size_t i, int k);
  void AddOwnFace(int f);
  void EndFace(int owner, int neighbour, int patch);

  int LocalNode(Shifted const& node) const;
  int LocalHaloCell(Shifted const& cell) const;

  MpiCommunicator const& communicator_;
  ProcessorMesh const& processor_;
  ProcessorCuts const& cuts_;
  DecomposedNumbers const& numbers_;

  /// by cut and face: the neighbour's cell in the whole mesh
  std::vector<std::vector<std::int64_t>> cellBeyond_;
  std::vector<HaloCell> halo_;  ///< ascending by cell
  std::vector<NumberedPoint> haloPoints_;
  std::vector<Shifted> nodes_;  ///< of the part, ascending
  std::vector<int> localCell_;  ///< [cell of the processor's mesh] number in the part
  std::vector<int> localNode_;  ///< [node of the processor's mesh] number in the part; -1: in no face
  MeshPart part_;
};

}  // namespace reference_host

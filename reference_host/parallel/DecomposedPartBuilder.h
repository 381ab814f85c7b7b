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
  /// A cell on the other side of a cut.
  struct HaloCell {
    std::int64_t cell;  ///< number in the whole mesh
    int part;
    std::vector<std::int64_t> nodes;  ///< ascending numbers in the whole mesh
  };
  using NumberedPoint = std::pair<std::int64_t, Point>;

  int CellAtCut(ProcessorCut const& cut, int k) const { return processor_.mesh.owner[cut.firstFace + k]; }

  std::vector<std::vector<int>> NodesOfCutCells() const;
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

  int LocalNode(std::int64_t global) const;
  int LocalHaloCell(std::int64_t global) const;

  MpiCommunicator const& communicator_;
  ProcessorMesh const& processor_;
  ProcessorCuts const& cuts_;
  DecomposedNumbers const& numbers_;

  /// by cut and face: the neighbour's cell in the whole mesh
  std::vector<std::vector<std::int64_t>> cellBeyond_;
  std::vector<HaloCell> halo_;  ///< ascending by cell
  std::vector<NumberedPoint> haloPoints_;
  std::vector<int> localCell_;  ///< [cell of the processor's mesh] number in the part
  std::vector<int> localNode_;  ///< [node of the processor's mesh] number in the part; -1: in no face
  MeshPart part_;
};

}  // namespace reference_host

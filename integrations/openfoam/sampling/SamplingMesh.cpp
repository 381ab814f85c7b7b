#include "sampling/SamplingMesh.h"

#include <iostream>

namespace Foam {
namespace zyn {

SamplingMesh::SamplingMesh(fvMesh const& mesh) : host_(FvMeshHost::Of(mesh)) {
  if (returnReduce(arrays().arrays().nEmptyFaces, sumOp<int>()) == 0) return;
  host_.Topology();  // for its nodes and centres
  // Empty faces and their ghost cells come last, so that the others keep their numbers.
  reference_host::ArrayMesh withoutEmptyFaces = arrays().arrays();
  withoutEmptyFaces.wall.count -= withoutEmptyFaces.nEmptyFaces;
  withoutEmptyFaces.nEmptyFaces = 0;
  flat_ = std::make_unique<reference_host::ArrayHost>(withoutEmptyFaces,
                                                      reference_host::ArrayHost::Extent::kTopology);
}

point SamplingMesh::InItsPlane(point const& p) const {
  point moved = p;
  for (direction d = 0; d < point::nComponents; ++d)
    if (mesh().geometricD()[d] < 0 && mesh().nCells() > 0) moved[d] = mesh().cellCentres()[0][d];
  return moved;
}

// A stream without a buffer discards what it is given. Its state has to be good again afterwards.
SilentOutput::SilentOutput() : screen_(std::cout.rdbuf(nullptr)) {}

SilentOutput::~SilentOutput() { std::cout.rdbuf(screen_); }

}  // namespace zyn
}  // namespace Foam

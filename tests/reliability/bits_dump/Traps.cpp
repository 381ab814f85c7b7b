#include <vector>

#include "tests/reliability/bits_dump/Bits.h"
#include "tests/support/host/TestHost.h"
#include "tests/support/watch/ArmedTraps.h"

namespace bits_dump {
namespace {

using namespace gradient_test;

/// A cell with neighbours in the given directions behind walls.
MeshDescription CellWithNeighbours(std::vector<Vector3> const& offsets) {
  MeshDescription mesh;
  mesh.AddInteriorCell({}, 1.0);
  for (Vector3 const& offset : offsets)
    mesh.wall.push_back({1, mesh.AddOuterCell(offset), {1.0, 0.0, 0.0}, {}, 0.5, 0});
  return mesh;
}

}  // namespace

// Optimisers may move a division out of the part in which it must not trap, so every build has to show that it does not.
void SolveSingularCellsWithTrapsArmed() {
  Vector3 const x = {1.0, 0.0, 0.0}, y = {0.0, 1.0, 0.0}, z = {0.0, 0.0, 1.0};
  for (std::vector<Vector3> const& offsets : {std::vector{x, y}, std::vector{x, z}, std::vector{y, z}}) {
    MeshDescription const mesh = CellWithNeighbours(offsets);
    TestHost host(mesh, NoExchange());
    ConnectedOperator op(host, 1);
    GuardedGradient g(mesh.NCell());
    GuardedArray<double> phi(mesh.NCell(), 2.0);
    ArmedTraps const traps;
    op.gradient.Initialize();
    op.gradient.GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  }
}

}  // namespace bits_dump

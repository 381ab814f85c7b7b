#include <vector>

#include "tests/reliability/bits_dump/Bits.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/watch/ArmedTraps.h"

namespace bits_dump {

using namespace zyn_test;

// Optimisers may move a division out of the part in which it must not trap, so every build has to show that it does not.
void SolveSingularCellsWithTrapsArmed() {
  Vector3 const x = {1.0, 0.0, 0.0}, y = {0.0, 1.0, 0.0}, z = {0.0, 0.0, 1.0};
  for (std::vector<Vector3> const& offsets : {std::vector{x, y}, std::vector{x, z}, std::vector{y, z}}) {
    TestMesh const mesh = CellsWithWallNeighbours({offsets});
    GradientHost host(mesh, NoExchange());
    ConnectedOperator op(host, 1);
    GuardedGradient g(mesh.NCell());
    GuardedArray<double> phi(mesh.NCell(), 2.0);
    ArmedTraps const traps;
    op.gradient.Initialize();
    op.gradient.GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  }
}

}  // namespace bits_dump

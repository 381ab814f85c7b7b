#include <gtest/gtest.h>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/watch/AllocationCount.h"

// A set-up allocates for its tables and for the largest face, not for each face.

namespace zyn_test::face_allocations_test {
namespace {

struct Counted {
  int nFace;
  long allocations;
};

Counted SetUpOn(int nCube, int method) {
  HexahedraOptions options;
  options.nx = options.ny = options.nz = nCube;
  FaceBed bed(Hexahedra(options));
  bed.UseBlock({method, 50.0, 8});
  long before = 0, after = 0;
  Printed([&] {
    before = Allocations() + LiveBlocks();
    bed.object.Initialize_FaceInterpolateData(kInner);
    after = Allocations() + LiveBlocks();
  });
  return {bed.object.NFace, after - before};
}

TEST(FaceOperatorAllocations, DoNotGrowWithTheNumberOfFaces) {
  for (int const method : {1, 2, 3, 4}) {
    SetUpOn(4, method);  // what the C++ library keeps for good from the first use
    Counted const small = SetUpOn(4, method), large = SetUpOn(10, method);
    EXPECT_LT(18 * small.nFace, large.nFace);
    EXPECT_LT(large.allocations - small.allocations, 100) << "method " << method;
    EXPECT_LT(large.allocations, large.nFace / 8) << "method " << method;
  }
}

}  // namespace
}  // namespace zyn_test::face_allocations_test

#pragma once

#include <random>
#include <vector>

#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

using Random = std::mt19937_64;

/// Uniform in [low, high], made from the generator's bits alone: the standard distributions differ between
/// libraries, and a failing seed must mean the same mesh everywhere.
double Uniform(Random& random, double low, double high);

/// Uniform in low..high.
int UniformInt(Random& random, int low, int high);

/// Most cells that a random mesh gets of each kind.
struct RandomMeshSize {
  int maxInnerCells = 40;
  int maxFacesPerGroup = 60;
};

/// A partition without geometry: any cells joined by any faces, with any areas, weights (also outside 0..1)
/// and face types, groups empty now and then. The operators read arrays and know no shapes, so it is as good
/// as a mesh.
TestMesh RandomMesh(Random& random, RandomMeshSize const& size = {});

/// Values [1..NCell] (element 0 is 0.0): smooth, or full of ties, or spread over many powers of ten, or now
/// and then with zeros of both signs, denormal and huge values, infinities and NaN.
std::vector<double> RandomField(Random& random, TestMesh const& mesh);

/// Values [1..NCell] between 0.5 and 2.
std::vector<double> TameField(Random& random, TestMesh const& mesh);

}  // namespace zyn_test

#include "tests/support/mesh/RandomMesh.h"

#include <cmath>
#include <cstddef>
#include <limits>

namespace zyn_test {

double Uniform(Random& random, double low, double high) {
  double const fraction = static_cast<double>(random() >> 11) * 0x1p-53;
  return low + fraction * (high - low);
}

int UniformInt(Random& random, int low, int high) {
  auto const span = static_cast<std::uint64_t>(high - low) + 1;
  return low + static_cast<int>(random() % span);
}

namespace {

bool OneIn(Random& random, int n) { return UniformInt(random, 1, n) == 1; }

Vector3 RandomVector(Random& random) {
  return {Uniform(random, -1.0, 1.0), Uniform(random, -1.0, 1.0), Uniform(random, -1.0, 1.0)};
}

double RandomWeight(Random& random) {
  switch (UniformInt(random, 0, 9)) {
    case 0:
      return 0.0;
    case 1:
      return 1.0;
    case 2:
      return 0.5;
    case 3:
      return Uniform(random, -0.5, 1.5);
    default:
      return Uniform(random, 0.0, 1.0);
  }
}

int RandomFaceType(Random& random) {
  int const types[] = {0, 0, 0, 1, 1, 2, -1, 101};
  return types[UniformInt(random, 0, 7)];
}

int RandomCount(Random& random, int most) { return OneIn(random, 5) ? 0 : UniformInt(random, 1, most); }

Face RandomFace(Random& random, int cv, int other) {
  return {
      cv, other, RandomVector(random), RandomVector(random), RandomWeight(random), RandomFaceType(random)};
}

void AddInnerFaces(TestMesh& mesh, Random& random, int count) {
  if (mesh.nInnerCells < 2) return;
  for (int f = 0; f < count; ++f) {
    int const cv = UniformInt(random, 1, mesh.nInnerCells);
    int const step = UniformInt(random, 1, mesh.nInnerCells - 1);
    mesh.inner.push_back(RandomFace(random, cv, 1 + (cv - 1 + step) % mesh.nInnerCells));
  }
}

/// Faces to cells beyond the interior. Some share the outer cell with the face before, as two faces to one
/// halo cell.
void AddOuterFaces(TestMesh& mesh, std::vector<Face>& faces, Random& random, int count) {
  if (mesh.nInnerCells < 1) return;
  for (int f = 0; f < count; ++f) {
    bool const share = !faces.empty() && OneIn(random, 4);
    int const outer = share ? faces.back().other : mesh.AddOuterCell(RandomVector(random));
    faces.push_back(RandomFace(random, UniformInt(random, 1, mesh.nInnerCells), outer));
  }
}

double SpecialValue(Random& random) {
  using Limits = std::numeric_limits<double>;
  double const values[] = {0.0,
                           -0.0,
                           Limits::denorm_min(),
                           -3.0 * Limits::denorm_min(),
                           Limits::max(),
                           -Limits::max(),
                           Limits::infinity(),
                           -Limits::infinity(),
                           Limits::quiet_NaN(),
                           1.0,
                           1e-300,
                           1e300};
  return values[UniformInt(random, 0, 11)];
}

enum class FieldKind { Smooth, Ties, ManyPowersOfTen, SomeSpecialValues };

double RandomValue(Random& random, FieldKind kind) {
  switch (kind) {
    case FieldKind::Ties:
      return UniformInt(random, -2, 2);
    case FieldKind::ManyPowersOfTen:
      return Uniform(random, -1.0, 1.0) * std::ldexp(1.0, UniformInt(random, -60, 60));
    case FieldKind::SomeSpecialValues:
      if (OneIn(random, 20)) return SpecialValue(random);
      return Uniform(random, -1.0, 1.0);
    case FieldKind::Smooth:
      break;
  }
  return Uniform(random, -1.0, 1.0);
}

}  // namespace

TestMesh RandomMesh(Random& random, RandomMeshSize const& size) {
  TestMesh mesh;
  int const nInnerCells = OneIn(random, 20) ? 0 : UniformInt(random, 1, size.maxInnerCells);
  for (int c = 1; c <= nInnerCells; ++c) {
    double const volume = OneIn(random, 30) ? 0.0 : Uniform(random, 0.01, 2.0);
    mesh.AddInteriorCell(RandomVector(random), volume);
  }
  AddInnerFaces(mesh, random, RandomCount(random, 3 * size.maxFacesPerGroup));
  std::vector<Face>* const outerGroups[] = {&mesh.wall, &mesh.partition, &mesh.inlet, &mesh.symmetry,
                                            &mesh.outlet};
  for (std::vector<Face>* faces : outerGroups)
    AddOuterFaces(mesh, *faces, random, RandomCount(random, size.maxFacesPerGroup));
  for (int extra = UniformInt(random, 0, 2); extra > 0; --extra) mesh.AddOuterCell(RandomVector(random));
  return mesh;
}

std::vector<double> RandomField(Random& random, TestMesh const& mesh) {
  auto const kind = static_cast<FieldKind>(UniformInt(random, 0, 3));
  std::vector<double> field(static_cast<std::size_t>(mesh.NCell()) + 1, 0.0);
  for (std::size_t c = 1; c < field.size(); ++c) field[c] = RandomValue(random, kind);
  return field;
}

std::vector<double> TameField(Random& random, TestMesh const& mesh) {
  std::vector<double> field(static_cast<std::size_t>(mesh.NCell()) + 1, 0.0);
  for (std::size_t c = 1; c < field.size(); ++c) field[c] = Uniform(random, 0.5, 2.0);
  return field;
}

}  // namespace zyn_test

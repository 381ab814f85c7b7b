#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/Processor.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_ib/PointBed.h"

// All weights of all operators, with the instructions of this processor and without.

namespace zyn_test::processors_test {
namespace {

using Numbers = std::vector<double>;

void Append(Numbers& numbers, double weight) { numbers.push_back(weight); }

template <typename Record>
void Append(Numbers& numbers, Record const& weights) {
  numbers.insert(numbers.end(), {weights.x, weights.y, weights.z});
}

/// Row i of a table, which a method may be without.
template <typename Weights>
void Append(Numbers& numbers, Weights* const* table, int i, int n) {
  if (table == nullptr || table[i] == nullptr) return;
  for (int k = 1; k <= n; ++k) Append(numbers, table[i][k]);
}

Numbers CellWeights(TestMesh const& mesh, bool shapeNormalised) {
  CellBed bed(mesh, Settings("500", shapeNormalised ? "1" : "0"));
  bed.SetUpAndDerive();
  Numbers numbers;
  for (int c = 1; c <= mesh.nInnerCells; ++c)
    Append(numbers, bed.object->m_ppRBFCellCoef, c, bed.object->m_ppRBFCellConn[c][0]);
  return numbers;
}

Numbers FaceWeights(TestMesh const& mesh, int faceType, int method) {
  FaceBed bed(mesh);
  FaceSettings settings;
  settings.method = method;
  settings.searchNumber = 8;
  bed.SetUp(faceType, settings);
  Numbers numbers;
  for (int i = 1; i <= bed.object.NFace; ++i) {
    int const* const stencil = bed.object.m_ppFaceCellConn[i];
    if (stencil == nullptr) continue;
    Append(numbers, bed.object.m_ppFaceFiCoef, i, stencil[0]);
    Append(numbers, bed.object.m_ppFaceDnCoef, i, stencil[0]);
    Append(numbers, bed.object.m_ppFaceGradCoef, i, stencil[0]);
  }
  return numbers;
}

Numbers PointWeights(TestMesh const& mesh, int method) {
  PointSettings settings;
  settings.method = method;
  settings.number = 8;
  PointBed bed(mesh, settings);
  bed.SetUp(AllUsable(mesh.NCell()), {{0.4, 0.7, 0.9}, {1.5, 1.5, 1.0}, {2.2, 1.1, 0.3}, {1.5, 0.5, 0.5}});
  Numbers numbers;
  for (int i = 1; i <= 4; ++i) {
    Append(numbers, bed.object.m_ppIBValueCoef, i, bed.object.m_ppIBConn[i][0]);
    Append(numbers, bed.object.m_ppIBCoef, i, bed.object.m_ppIBConn[i][0]);
  }
  return numbers;
}

/// What `weights` gives, on either processor.
template <typename Weights>
void ExpectSameOnPlainProcessor(Weights const& weights) {
  if (!processor::HasAvx2() && !processor::HasFma())
    GTEST_SKIP() << "this processor has no instructions to do without";
  for (int const nx : {3, 4}) {
    HexahedraOptions options;
    options.nx = nx;
    TestMesh const mesh = Hexahedra(options);
    Numbers const here = weights(mesh);
    processor::TakenForPlain const plain;
    Numbers const there = weights(mesh);
    ASSERT_EQ(here.size(), there.size());
    ASSERT_GT(here.size(), 40U);
    for (std::size_t i = 0; i < here.size(); ++i)
      ASSERT_TRUE(SameValue("weight " + std::to_string(i), here[i], there[i]));
  }
}

TEST(Processors, GiveCellsTheSameWeights) {
  for (bool const shapeNormalised : {false, true})
    ExpectSameOnPlainProcessor([=](TestMesh const& mesh) { return CellWeights(mesh, shapeNormalised); });
}

TEST(Processors, GiveFacesTheSameWeights) {
  for (int const method : {1, 2, 3, 4}) {
    for (int const faceType : {kInner, kWall})
      ExpectSameOnPlainProcessor([=](TestMesh const& mesh) { return FaceWeights(mesh, faceType, method); });
  }
}

TEST(Processors, GivePointsTheSameWeights) {
  for (int const method : {1, 2, 3})
    ExpectSameOnPlainProcessor([=](TestMesh const& mesh) { return PointWeights(mesh, method); });
}

}  // namespace
}  // namespace zyn_test::processors_test

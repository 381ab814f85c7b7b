#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>
#include <vector>

#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"

// The cell operator on random meshes of all cells: every table against the plain form bit for bit, and what holds
// of the weights on any mesh.

namespace zyn_test {
namespace {

struct Variant {
  Cells cells;
  double span;
  int shapeNormalize;
};

std::vector<Variant> AllVariants() {
  std::vector<Variant> variants;
  for (Cells const cells : kAllCells)
    for (double const span : {500.0, 37.25, 5.0, 0.75, -3.0})
      for (int const shape : {0, 1}) variants.push_back({cells, span, shape});
  return variants;
}

std::string NameOf(::testing::TestParamInfo<Variant> const& info) {
  std::string name = Name(info.param.cells) + "_Span_" + std::to_string(info.param.span) +
                     (info.param.shapeNormalize == 1 ? "_ShapeNormalised" : "_Plain");
  for (char& c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  return name;
}

LatticeOptions Options(Cells cells, std::uint64_t seed, double jitter) {
  LatticeOptions options;
  options.cells = cells;
  options.seed = seed;
  options.jitter = jitter;
  options.size = {1.0, 0.5 + 0.1 * static_cast<double>(seed), 2.0};
  return options;
}

class RandomMeshes : public ::testing::TestWithParam<Variant> {
 protected:
  static std::string SettingsOf(Variant const& variant) {
    return Settings(std::to_string(variant.span), std::to_string(variant.shapeNormalize));
  }

  static void ExpectSameAsPlainForm(TestMesh const& mesh, Variant const& variant) {
    CellBed bed(mesh, SettingsOf(variant));
    bed.SetUpAndDerive();
    PlainCellOperator plain(mesh, variant.span, variant.shapeNormalize);
    plain.Collate();
    plain.DeriveAll();
    EXPECT_TRUE(SameCollation(plain, *bed.object));
    EXPECT_TRUE(SameStencils(plain, *bed.object));
    EXPECT_TRUE(SameWeights(plain, *bed.object));
    EXPECT_TRUE(SameResiduals(plain, *bed.object));
  }
};

INSTANTIATE_TEST_SUITE_P(CellOperator, RandomMeshes, ::testing::ValuesIn(AllVariants()), NameOf);

TEST_P(RandomMeshes, EqualThePlainFormBitForBit) {
  for (std::uint64_t seed = 1; seed <= 3; ++seed)
    ExpectSameAsPlainForm(LatticeMesh(Options(GetParam().cells, seed, 0.3)), GetParam());
}

// Without jitter many members are at one distance, and kernel values repeat within a matrix.
TEST_P(RandomMeshes, WithTiesEqualThePlainFormBitForBit) {
  ExpectSameAsPlainForm(LatticeMesh(Options(GetParam().cells, 5, 0.0)), GetParam());
}

TEST_P(RandomMeshes, WithDoubledMembersEqualThePlainFormBitForBit) {
  Random random(9);
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    TestMesh mesh = LatticeMesh(Options(GetParam().cells, seed, 0.2));
    AddOddities(mesh, random);
    ExpectSameAsPlainForm(mesh, GetParam());
  }
}

// --------------------------------------------------------------------------------- properties of the weights

// ||A w - b|| / (||A|| ||w|| + ||b||) in the largest norms, the products in extended precision: LU with row
// exchanges leaves some tens of roundings at these orders, however bad the condition. Cells with two members
// at one point, whose systems may be singular, are left out.
double BackwardError(DenseSystem const& system, CZynRBFInternalObject const& object, int cell, int axis) {
  auto const n = static_cast<std::size_t>(system.order);
  auto const weight = [&](std::size_t j) {
    RBFnode const& w = object.m_ppRBFCellCoef[cell][j + 1];
    return axis == 0 ? w.x : axis == 1 ? w.y : w.z;
  };
  double residual = 0.0, normA = 0.0, normW = 0.0, normB = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    double const b = system.rightHandSides[3 * i + static_cast<std::size_t>(axis)];
    long double sum = -static_cast<long double>(b);
    double row = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
      double const a = system.matrix[n * i + j];
      sum += static_cast<long double>(a) * static_cast<long double>(weight(j));
      row += std::fabs(a);
    }
    residual = std::fmax(residual, static_cast<double>(std::fabs(sum)));
    normA = std::fmax(normA, row);
    normW = std::fmax(normW, std::fabs(weight(i)));
    normB = std::fmax(normB, std::fabs(b));
  }
  return residual / (normA * normW + normB);
}

TEST_P(RandomMeshes, WeightsHaveABackwardErrorBelow1e12) {
  TestMesh const mesh = LatticeMesh(Options(GetParam().cells, 1, 0.3));
  CellBed bed(mesh, SettingsOf(GetParam()));
  bed.SetUpAndDerive();
  PlainCellOperator plain(mesh, GetParam().span, GetParam().shapeNormalize);
  plain.Collate();
  int tested = 0;
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    if (plain.HasCoincidentPoints(c)) continue;
    DenseSystem const system = plain.SystemOf(c);
    for (int const axis : {0, 1, 2}) EXPECT_LT(BackwardError(system, *bed.object, c, axis), 1e-12) << c;
    ++tested;
  }
  EXPECT_GT(tested, mesh.nInnerCells / 4);
}

TEST_P(RandomMeshes, WeightsSumToZero) {
  TestMesh const mesh = LatticeMesh(Options(GetParam().cells, 2, 0.3));
  CellBed bed(mesh, SettingsOf(GetParam()));
  bed.SetUpAndDerive();
  PlainCellOperator plain(mesh, GetParam().span, GetParam().shapeNormalize);
  plain.Collate();
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    if (plain.HasCoincidentPoints(c)) continue;
    double x = 0.0, y = 0.0, z = 0.0, size = 0.0;
    for (int k = 1; k <= bed.object->m_ppRBFCellConn[c][0]; ++k) {
      RBFnode const& w = bed.object->m_ppRBFCellCoef[c][k];
      x += w.x, y += w.y, z += w.z;
      size += std::fabs(w.x) + std::fabs(w.y) + std::fabs(w.z);
    }
    for (double const sum : {x, y, z}) EXPECT_NEAR(0.0, sum, 1e-12 * size) << c;
  }
}

/// The mesh with its points at f(point).
template <typename Map>
TestMesh Mapped(TestMesh mesh, Map f) {
  for (Point& p : mesh.centres) p = f(p);
  for (auto* const group :
       {&mesh.inner, &mesh.wall, &mesh.inlet, &mesh.outlet, &mesh.symmetry, &mesh.partition})
    for (Face& face : *group) face.centre = f(face.centre);
  return mesh;
}

/// Compares the weights of a mesh with those of its image; `expected` says what a weight becomes.
template <typename Map, typename Weight>
void ExpectMappedWeights(Variant const& variant, Map map, Weight expected) {
  TestMesh const mesh = LatticeMesh(Options(variant.cells, 3, 0.3));
  std::string const settings = Settings(std::to_string(variant.span), std::to_string(variant.shapeNormalize));
  CellBed bed(mesh, settings), mapped(Mapped(mesh, map), settings);
  bed.SetUpAndDerive();
  mapped.SetUpAndDerive();
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    for (int k = 1; k <= bed.object->m_ppRBFCellConn[c][0] + 1; ++k) {
      RBFnode const& w = bed.object->m_ppRBFCellCoef[c][k];
      ASSERT_TRUE(SameRecord("weight", expected(w), c, mapped.object->m_ppRBFCellCoef[c][k]))
          << c << " " << k;
    }
  }
}

// Adding 0.0 takes the sign of a zero away, which mirroring need not keep.
double Negated(double w) { return 0.0 - w; }

TEST_P(RandomMeshes, MirroringInXChangesTheSignOfTheXWeightsAlone) {
  TestMesh const mesh = LatticeMesh(Options(GetParam().cells, 3, 0.3));
  CellBed bed(mesh, SettingsOf(GetParam()));
  CellBed mirrored(Mapped(mesh, [](Point p) { return Point{-p.x, p.y, p.z}; }), SettingsOf(GetParam()));
  bed.SetUpAndDerive();
  mirrored.SetUpAndDerive();
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    for (int k = 1; k <= bed.object->m_ppRBFCellConn[c][0] + 1; ++k) {
      RBFnode const &w = bed.object->m_ppRBFCellCoef[c][k], &m = mirrored.object->m_ppRBFCellCoef[c][k];
      ASSERT_TRUE(SameValue("x", Negated(w.x), m.x + 0.0)) << c << " " << k;
      ASSERT_TRUE(SameValue("y", w.y, m.y)) << c << " " << k;
      ASSERT_TRUE(SameValue("z", w.z, m.z)) << c << " " << k;
    }
  }
}

TEST_P(RandomMeshes, ExchangeOfXAndYExchangesTheirWeights) {
  ExpectMappedWeights(
      GetParam(),
      [](Point p) {
        return Point{p.y, p.x, p.z};
      },
      [](RBFnode const& w) {
        return Triple{w.y, w.x, w.z};
      });
}

// Powers of two are exact everywhere. The plain form differentiates by length, the shape-normalised one by scaled
// coordinates, which do not change.
TEST_P(RandomMeshes, ScalingByAPowerOfTwoScalesTheWeightsExactly) {
  double const factor = 1.0 / 1024.0;
  double const weightFactor = GetParam().shapeNormalize == 1 ? 1.0 : 1.0 / factor;
  ExpectMappedWeights(
      GetParam(),
      [factor](Point p) {
        return Point{factor * p.x, factor * p.y, factor * p.z};
      },
      [weightFactor](RBFnode const& w) {
        return Triple{weightFactor * w.x, weightFactor * w.y, weightFactor * w.z};
      });
}

// --------------------------------------------------------------------------------------------------- accuracy

// There is no linear term, but the kernel is nearly flat at the default span. 3e-4 is the largest error found.
TEST(CellOperatorAccuracy, LinearFieldIsReproducedToAThousandthAtSpan500AwayFromSymmetryFaces) {
  for (Cells const cells : kAllCells) {
    LatticeOptions options = Options(cells, 4, 0.15);
    options.size = {1.0, 1.0, 1.0};
    TestMesh mesh = LatticeMesh(options);
    for (Face const& face : mesh.symmetry) {  // a wall in place of symmetry, so that side cells are collated
      mesh.wall.push_back(face);
    }
    CellBed bed(mesh);
    bed.SetUpAndDerive();
    PlainCellOperator plain(mesh, 500.0, 0);
    plain.Collate();
    for (int c = 1; c <= mesh.nInnerCells; ++c) {
      if (plain.HasCoincidentPoints(c)) continue;
      Triple g{};
      for (int k = 1; k <= bed.object->m_ppRBFCellConn[c][0]; ++k) {
        RBFnode const& p = bed.object->m_pRBFnode[bed.object->m_ppRBFCellConn[c][k]];
        RBFnode const& w = bed.object->m_ppRBFCellCoef[c][k];
        double const value = 2.0 * p.x + 3.0 * p.y - p.z + 1.0;
        g[0] += value * w.x, g[1] += value * w.y, g[2] += value * w.z;
      }
      EXPECT_NEAR(2.0, g[0], 1e-3) << Name(cells) << " " << c;
      EXPECT_NEAR(3.0, g[1], 1e-3) << Name(cells) << " " << c;
      EXPECT_NEAR(-1.0, g[2], 1e-3) << Name(cells) << " " << c;
    }
  }
}

}  // namespace
}  // namespace zyn_test

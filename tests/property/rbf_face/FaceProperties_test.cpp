#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/property/rbf_face/PartitionedFaces.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/watch/SettingsFolder.h"

// What holds of the face operator on any mesh, whoever computes it: how well it reproduces constants and linear
// fields, and how it scales.

namespace zyn_test {
namespace {

double One(double, double, double) { return 1.0; }
double Linear(double x, double y, double z) { return 1.0 + 2.0 * x + 3.0 * y - z; }

/// Largest error of a field on inner faces.
template <typename Field>
double LargestError(FaceParts& mesh, FaceSettings const& settings, Field field) {
  FaceOperatorOnPart op(mesh.Part(0), kInner, settings);
  CZYN3DFiniteVolumeMesh const& m = *op.part.mesh();
  std::vector<double> const values = op.ValuesOf(field);
  double largest = 0.0;
  for (int i = 1; i <= m.NInnerFaces; ++i) {
    double const exact = field(m.ijxc[i], m.ijyc[i], m.ijzc[i]);
    double const error = std::fabs(values[static_cast<std::size_t>(i)] - exact);
    largest = std::isnan(error) ? error : std::max(largest, error);
  }
  return largest;
}

constexpr int kMethods[] = {1, 2, 3, 4};

// The field runs from 0 to 6. Errors come from the missing polynomial terms, less with a wider support, and from
// round-off times the condition number, which grows with it. The largest that was found is 1.8e-4, of method 4.
TEST(FaceProperties, LinearFieldIsReproducedOnInnerFacesAtTheStandardSpan) {
  for (MeshKind const& kind : AllMeshKinds()) {
    FaceParts mesh(kind.Make());
    for (int const method : kMethods)
      EXPECT_LT(LargestError(mesh, {method, 1000.0, 20}, Linear), 5e-4)
          << kind.name << " " << kind.perturbed << " " << method;
  }
}

// The largest that was found is 1.3e-5, of method 3, and 7e-7 of the others.
TEST(FaceProperties, ConstantFieldIsReproducedOnInnerFacesAtTheStandardSpan) {
  for (MeshKind const& kind : AllMeshKinds()) {
    FaceParts mesh(kind.Make());
    for (int const method : kMethods)
      EXPECT_LT(LargestError(mesh, {method, 1000.0, 20}, One), method == 3 ? 3e-5 : 2e-6)
          << kind.name << " " << kind.perturbed << " " << method;
  }
}

// Without a term for constants the error is of second order in the inverse of the span, or of higher order where
// stencils are rich: from 5 to 100 it falls by 20^2 = 400, and the factor found is at least 250.
TEST(FaceProperties, WiderSupportReproducesConstantsBetter) {
  for (MeshKind const& kind : AllMeshKinds()) {
    FaceParts mesh(kind.Make());
    for (int const method : kMethods) {
      double const narrow = LargestError(mesh, {method, 5.0, 20}, One);
      double const wide = LargestError(mesh, {method, 100.0, 20}, One);
      EXPECT_LE(wide, narrow / 200) << kind.name << " " << kind.perturbed << " " << method;
      bool const cellsOnTheNormal = method == 4 && !kind.perturbed && std::string(kind.name) == "Hexahedra";
      EXPECT_EQ(cellsOnTheNormal, narrow == 0.0);
    }
  }
}

FaceMesh Scaled(FaceMesh mesh, double factor) {
  for (auto& point : mesh.points)
    for (double& x : point) x *= factor;
  return mesh;
}

double LargestSlope(IBCnode const* row, int n) {
  double largest = 0.0;
  for (int k = 1; k <= n; ++k) largest = std::fmax(largest, std::fabs(row[k].y));
  return largest;
}

// Powers of two are exact everywhere but in the margin of the search, which decides nothing on moved nodes, and in
// the powers of lengths of the gradient's right-hand sides, which the library rounds by their size. The systems
// magnify that. Values and derivatives along the normal have none but powers of ratios. Slopes are per length.
TEST(FaceProperties, ScalingByAPowerOfTwoKeepsTheValuesExactlyAndScalesTheSlopes) {
  for (MeshKind const& kind : AllMeshKinds()) {
    if (!kind.perturbed) continue;
    FaceParts mesh(kind.Make());
    for (double const factor : {0.25, 8.0}) {
      FaceParts scaledMesh(Scaled(kind.Make(), factor));
      for (int const method : {2, 3, 4}) {
        FaceOperatorOnPart op(mesh.Part(0), kInner, {method, 100.0, 20}),
            scaled(scaledMesh.Part(0), kInner, {method, 100.0, 20});
        for (int i = 1; i <= op.object.NFace; ++i) {
          ASSERT_EQ(RowOf(op.object.m_ppFaceCellConn[i]), RowOf(scaled.object.m_ppFaceCellConn[i]));
          int const n = op.object.m_ppFaceCellConn[i][0];
          double const tolerance =
              method == 4 ? 0.0 : 1e-8 * LargestSlope(scaled.object.m_ppFaceGradCoef[i], n);
          for (int k = 1; k <= n; ++k) {
            ASSERT_TRUE(SameBits(op.object.m_ppFaceFiCoef[i][k], scaled.object.m_ppFaceFiCoef[i][k]));
            if (method == 4) {
              ASSERT_TRUE(
                  SameBits(op.object.m_ppFaceDnCoef[i][k] / factor, scaled.object.m_ppFaceDnCoef[i][k]));
            } else {
              double const slope = op.object.m_ppFaceGradCoef[i][k].y / factor;
              ASSERT_NEAR(slope, scaled.object.m_ppFaceGradCoef[i][k].y, tolerance);
            }
          }
        }
      }
    }
  }
}

double Distance(IBCnode const& a, IBCnode const& b) {
  return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y) + (a.z - b.z) * (a.z - b.z));
}

// Two members of a stencil are at most twice the support length apart, in the cubes of method 1 two diagonals: with a
// span of 1000 every argument is near 0, far from the kernel's edge at 1.
TEST(FaceProperties, KernelArgumentsStayNearZeroAtTheStandardSpan) {
  for (MeshKind const& kind : AllMeshKinds()) {
    FaceParts mesh(kind.Make());
    HostPartition& part = mesh.Part(0);
    for (int const method : {1, 2, 3}) {
      CZynFaceRBFInternalObject object;
      Connect(object, *part.globals(), *part.mesh(), *part.partitionFaces());
      Stages stages(object, kInner, {method, 1000.0, 20});
      stages.FindStencils();
      for (int i = 1; i <= object.NFace; ++i) {
        int const* const row = object.m_ppFaceCellConn[i];
        int const n = method == 3 ? 2 : row[0];  // of method 3, the two cells of the face
        double farthest = 0.0;
        for (int k = 1; k <= n; ++k)
          for (int l = 1; l < k; ++l)
            farthest = std::max(farthest, Distance(object.m_pNodeTable[row[k]], object.m_pNodeTable[row[l]]));
        double const argument = farthest / (object.Span * object.m_pFaceSupport[i]);
        EXPECT_GT(argument, 0.0);
        EXPECT_LE(argument, method == 1 ? 0.0035 : 0.0020000001) << kind.name << " " << method << " " << i;
      }
    }
  }
}

}  // namespace
}  // namespace zyn_test

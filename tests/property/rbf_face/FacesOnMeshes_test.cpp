#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "tests/property/rbf_face/PartitionedFaces.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_face/FaceTables.h"
#include "tests/support/watch/SettingsFolder.h"

// The face operator on meshes of every element type, whole and cut into parts: every table and result against the
// plain form bit for bit, and the error of every system.

namespace zyn_test {
namespace {

struct Variant {
  MeshKind mesh;
  int nParts;
};

std::vector<Variant> AllVariants() {
  std::vector<Variant> variants;
  for (MeshKind const& mesh : AllMeshKinds())
    for (int const nParts : {1, 3}) variants.push_back({mesh, nParts});
  return variants;
}

std::string NameOf(::testing::TestParamInfo<Variant> const& info) {
  return std::string(info.param.mesh.name) + (info.param.mesh.perturbed ? "_Perturbed_" : "_Orthogonal_") +
         std::to_string(info.param.nParts) + (info.param.nParts == 1 ? "_Part" : "_Parts");
}

/// Settings that a parameter block can hold: whole numbers for the span.
std::vector<FaceSettings> AllSettings() {
  return {{1, 1000.0, 6}, {2, 1000.0, 20}, {2, 5.0, 3}, {3, 1000.0, 20},
          {3, 5.0, 20},   {4, 1000.0, 20}, {4, 5.0, 20}};
}

std::string Text(FaceSettings const& s, int faceType, int part) {
  return "method " + std::to_string(s.method) + ", span " + std::to_string(s.span) + ", number " +
         std::to_string(s.searchNumber) + ", face type " + std::to_string(faceType) + ", part " +
         std::to_string(part);
}

class FacesOnMeshes : public ::testing::TestWithParam<Variant> {
 protected:
  FacesOnMeshes() : mesh_(GetParam().mesh.Make(), GetParam().nParts) {}

  /// check(part, faceType, settings, number of the part) for everything that there is.
  template <typename Check>
  void ForAll(std::vector<FaceSettings> const& allSettings, Check check) {
    for (int p = 0; p < mesh_.NParts(); ++p) {
      for (Group const group : kGroups) {
        for (FaceSettings const& settings : allSettings) {
          SCOPED_TRACE(Text(settings, group, p));
          check(mesh_.Part(p), group, settings, p);
          if (HasFatalFailure()) return;
        }
      }
    }
  }

  static PlainFaceOperator Plain(HostPartition& part, int faceType, FaceSettings const& settings) {
    PlainFaceOperator plain(*part.mesh(), *part.partitionFaces(), faceType, settings);
    if (plain.nFace > 0) plain.Run();
    return plain;
  }

  FaceParts mesh_;
};

INSTANTIATE_TEST_SUITE_P(FaceOperator, FacesOnMeshes, ::testing::ValuesIn(AllVariants()), NameOf);

/// The weights of all vertices, as the library gives them for the asking.
void ExpectSameVertexWeights(PlainFaceOperator& plain, CZynFaceRBFInternalObject& object) {
  for (int v = 1; v <= plain.mesh.NNode; ++v) {
    std::vector<double> const expected = plain.VertexWeights(v);
    std::vector<double> out(expected.size() + 1);
    object.DeriveFacefiBysolveDQfullMatrix_03(v, out.data());
    for (std::size_t k = 0; k < expected.size(); ++k) ASSERT_TRUE(SameBits(expected[k], out[k + 1])) << v;
  }
}

/// The weights of all virtual points from cells and from vertices.
void ExpectSameVirtualPointWeights(PlainFaceOperator& plain, CZynFaceRBFInternalObject& object) {
  for (int i = 1; i <= plain.nFace; ++i) {
    for (int const k : {1, 2}) {
      for (bool const fromVertices : {false, true}) {
        std::vector<double> const expected = plain.VirtualPointWeights(fromVertices, i, k);
        std::vector<double> out(expected.size() + 1);
        object.DeriveFacefiBysolveDQfullMatrix_Virtual03(fromVertices, i, k, out.data());
        for (std::size_t j = 0; j < expected.size(); ++j)
          ASSERT_TRUE(SameBits(expected[j], out[j + 1])) << i << " " << k;
      }
    }
  }
}

TEST_P(FacesOnMeshes, HaveTheTablesOfThePlainFormAfterEveryStep) {
  ForAll(AllSettings(), [](HostPartition& part, int faceType, FaceSettings const& settings, int) {
    PlainFaceOperator plain(*part.mesh(), *part.partitionFaces(), faceType, settings);
    if (plain.nFace == 0) return;
    CZynFaceRBFInternalObject object;
    Connect(object, *part.globals(), *part.mesh(), *part.partitionFaces());
    Stages stages(object, faceType, settings);
    plain.Collate();
    stages.Collate();
    ASSERT_TRUE(SameCollation(plain, object));
    ASSERT_TRUE(SameConnectivity(plain, object));
    plain.FillTree();
    plain.FindStencils();
    stages.FindStencils();
    ASSERT_TRUE(SameStencils(plain, object));
    ASSERT_TRUE(SameStencilWork(plain, object));
    plain.Derive();
    stages.Derive();
    ASSERT_TRUE(SameCoefficients(plain, object));
    ASSERT_TRUE(SameReport(plain, object));
    if (settings.method == 3) ExpectSameVertexWeights(plain, object);
    if (settings.method == 4) ExpectSameVirtualPointWeights(plain, object);
  });
}

TEST_P(FacesOnMeshes, HaveTheCellToFaceTableOfThePlainForm) {
  ForAll({{4, 1000.0, 20}}, [](HostPartition& part, int faceType, FaceSettings const& settings, int) {
    if (faceType != kInner) return;
    PlainFaceOperator plain(*part.mesh(), *part.partitionFaces(), faceType, settings);
    CZynFaceRBFInternalObject object;
    Connect(object, *part.globals(), *part.mesh(), *part.partitionFaces());
    Stages stages(object, faceType, settings);
    plain.Collate();
    plain.CreateCellFaces();
    stages.Collate();
    object.Create_m_ppRBFCell32Conn();
    for (std::size_t c = 1; c < plain.cellFaces.size(); ++c) {
      int const* const types = object.m_ppRBFCell32Type[c];
      ASSERT_EQ(plain.cellFaces[c], RowOf(object.m_ppRBFCell32Conn[c])) << c;
      ASSERT_EQ(plain.cellFaceTypes[c], std::vector<int>(types + 1, types + 1 + plain.cellFaces[c].size()))
          << c;
    }
  });
}

/// A set-up from the file or from the block, applied to two fields.
void ExpectSameResults(PlainFaceOperator const& plain, CZynFaceRBFInternalObject& object) {
  ASSERT_EQ(plain.nFace, object.NFace);
  if (plain.nFace == 0) return;
  ASSERT_TRUE(SameStencils(plain, object));
  ASSERT_TRUE(SameCoefficients(plain, object));
  ASSERT_TRUE(SameReport(plain, object));
  std::size_t const nCell = static_cast<std::size_t>(plain.mesh.NCell);
  for (bool const constant : {true, false}) {
    std::vector<double> phi(nCell + 1, 1.0), zeros(static_cast<std::size_t>(plain.nFace) + 1, 0.0);
    for (std::size_t c = 1; c <= nCell && !constant; ++c) phi[c] = std::sin(1.0 * static_cast<double>(c));
    std::vector<double> out[4] = {zeros, zeros, zeros, zeros};
    ASSERT_EQ(0, object.Multiply_FaceRBFCoefficent(phi.data(), out[0].data(), out[1].data(), out[2].data(),
                                                   out[3].data()));
    std::vector<double> const expected = plain.Apply(phi);
    for (std::size_t i = 1; i < zeros.size(); ++i) ASSERT_TRUE(SameBits(expected[i], out[0][i])) << i;
    for (int const k : {1, 2, 3}) ASSERT_EQ(zeros, out[k]);
  }
}

TEST_P(FacesOnMeshes, GiveTheResultsOfThePlainFormThroughTheParameterBlock) {
  ForAll(AllSettings(), [this](HostPartition& part, int faceType, FaceSettings const& settings, int p) {
    FaceOperatorOnPart op(part, faceType, settings);
    EXPECT_FALSE(std::ifstream(mesh_.SettingsFileName(p)).good());
    ExpectSameResults(Plain(part, faceType, settings), op.object);
  });
}

TEST_P(FacesOnMeshes, GiveTheResultsOfThePlainFormThroughTheFile) {
  std::vector<FaceSettings> const fractional = {{1, 37.25, 8}, {2, 12.5, 12}, {3, 2.75, 20}, {4, 1.625, 20}};
  ForAll(fractional, [this](HostPartition& part, int faceType, FaceSettings const& settings, int p) {
    std::ofstream(mesh_.SettingsFileName(p)) << Settings(settings);
    CZynFaceRBFInternalObject object;
    Connect(object, *part.globals(), *part.mesh(), *part.partitionFaces());
    Printed([&] { object.Initialize_FaceInterpolateData(faceType); });
    ExpectSameResults(Plain(part, faceType, settings), object);
  });
}

// The plain form solves the library's systems, as the tests above show bit for bit, and measures
// |A w - b| / (|A| |w| + |b|) with sums in extended precision. LU with row exchanges leaves some tens of roundings at
// these orders, however bad the condition.
TEST_P(FacesOnMeshes, SolveEverySystemWithABackwardErrorBelow1e12) {
  BackwardErrors worst;
  ForAll(AllSettings(), [&](HostPartition& part, int faceType, FaceSettings const& settings, int) {
    PlainFaceOperator const plain = Plain(part, faceType, settings);
    EXPECT_EQ(0, plain.backward.notFinite);
    EXPECT_LT(plain.backward.largest, 1e-12);
    worst.systems += plain.backward.systems;
    worst.largest = std::fmax(worst.largest, plain.backward.largest);
  });
  EXPECT_GT(worst.systems, 1000);
  RecordProperty("worst_backward_error", std::to_string(worst.largest / 1e-16) + "e-16");
}

}  // namespace
}  // namespace zyn_test

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "tests/property/meshes/PartitionedGradients.h"

namespace reference_host::test {
namespace {

double Wave(Point const& p) { return std::sin(3.0 * p[0]) * p[1] + p[2] * p[2]; }

void Prepare(COperatorGradient& op, LoadedMesh& mesh, int type) {
  HostPartition& own = *mesh.partition;
  op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
  op.getPartitionFace(own.partitionFaces());
  op.getCommunication(mesh.exchange.get(), mesh.reduction.get());
  op.getGradType(type);
  EXPECT_EQ(1, op.Initialize()) << op.getErrorMsg();
}

/// Compares interior and halo cells with the gradient of the whole mesh. The sums have another order there,
/// and the gradients have sizes of 1 to 3.
void ExpectGradientOfWhole(LoadedMesh& mesh, const std::vector<double> (&g)[3],
                           std::vector<Point> const& whole) {
  std::vector<std::int64_t> const& globalCell = mesh.partition->globalCell();
  for (int c = 1; c <= mesh.partition->mesh()->NCell; ++c) {
    if (globalCell[c] == 0) continue;  // ghost cell
    for (std::size_t d = 0; d < 3; ++d)
      EXPECT_NEAR(g[d][c], whole[globalCell[c] - 1][d], 1e-12) << "cell " << c;
  }
}

}  // namespace

TEST(GradientOverMpi, AgreesWithThatOfTheWholeMeshForEveryMethod) {
  for (std::string const text :
       {"box:6,5,4:perturb=0.2,seed=4", "box:4,4,3:tet:perturb=0.1", "box:5,4,3:prism"}) {
    FaceMesh whole = MakeBox(ParseBoxSpec(text));
    for (Patch& patch : whole.patches) patch.group = GroupByName(patch.name, patch.type);
    LoadedMesh mesh = Load(text);
    for (partitioned::Method const& method : partitioned::AllMethods()) {
      SCOPED_TRACE(text + ", " + method.name);
      std::vector<Point> const expected = partitioned::Gradient(whole, method, Wave).gradient;
      COperatorGradient op;
      Prepare(op, mesh, method.type);
      for (bool const nonBlocking : {false, true}) {
        mesh.partition->globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
        std::vector<double> g[3];
        partitioned::CallGradient(op, method, *mesh.partition->mesh(), Wave, g);
        ExpectGradientOfWhole(mesh, g, expected);
      }
    }
  }
}

TEST(GradientOverMpi, ThreeFieldsAtOnceAgreeWithOneByOne) {
  LoadedMesh mesh = Load("box:6,5,4:tet:perturb=0.1");
  CZYN3DFiniteVolumeMesh const& m = *mesh.partition->mesh();
  COperatorGradient op;
  Prepare(op, mesh, 0);
  std::vector<double> fields[3], single[3][3], together[9];
  for (int i = 0; i < 3; ++i) {
    fields[i] = partitioned::Filled(m, [i](Point const& p) { return Wave(p) * p[i]; });
    for (std::vector<double>& g : single[i]) g.assign(fields[i].size(), 0.0);
    op.GradMethod(fields[i].data(), single[i][0].data(), single[i][1].data(), single[i][2].data(), 1);
  }
  for (std::vector<double>& g : together) g.assign(fields[0].size(), 0.0);
  op.GradMethod_3(fields[0].data(), fields[1].data(), fields[2].data(), together[0].data(),
                  together[1].data(), together[2].data(), together[3].data(), together[4].data(),
                  together[5].data(), together[6].data(), together[7].data(), together[8].data());
  for (std::size_t i = 0; i < 9; ++i) {
    for (int c = 1; c <= m.NCell; ++c) EXPECT_NEAR(together[i][c], single[i / 3][i % 3][c], 1e-12);
  }
}

}  // namespace reference_host::test

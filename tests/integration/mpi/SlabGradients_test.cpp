#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "gradient/COperatorGradient.h"
#include "tests/property/meshes/PartitionedGradients.h"

namespace reference_host::test {
namespace {

double Ripple(Point const& p) { return std::sin(4.0 * p[0]) * std::cos(3.0 * p[1]) + p[2] * p[2] * p[0]; }

/// The components of the gradient by every method, in the numbering of the rank.
std::vector<double> AllGradients(LoadedMesh& mesh) {
  HostPartition& own = *mesh.partition;
  std::vector<double> all;
  for (partitioned::Method method : partitioned::AllMethods()) {
    COperatorGradient op;
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.getCommunication(mesh.exchange.get(), mesh.reduction.get());
    op.getGradType(method.type);
    EXPECT_EQ(1, op.Initialize()) << op.getErrorMsg();
    std::vector<double> g[3];
    partitioned::CallGradient(op, method, *own.mesh(), Ripple, g);
    for (std::vector<double> const& component : g) all.insert(all.end(), component.begin(), component.end());
  }
  return all;
}

bool HaveSameBits(std::vector<double> const& a, std::vector<double> const& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

LoadedMesh LoadBy(std::string const& meshSpec, MeshReading reading, std::string const& partitionFile) {
  return LoadMesh(MPI_COMM_WORLD, meshSpec, {}, {}, {reading, partitionFile});
}

}  // namespace

class GradientsOnSlabs : public testing::TestWithParam<char const*> {};

// The first meshes of the series of the study.
INSTANTIATE_TEST_SUITE_P(StudySeries, GradientsOnSlabs,
                         testing::Values("box:6,6,6:hex", "box:6,6,6:hex:perturb=0.25,seed=1",
                                         "box:3,3,3:tet", "box:4,4,4:prism", "box:6,6,6:hex:stretch=1000",
                                         "box:6,6,6:hex:skew=0.25", "box:5,5,5:dual", "box:9,8,7:tet",
                                         "box:12,11,10:prism:perturb=0.1"));

TEST_P(GradientsOnSlabs, HaveTheBitsOfTheSamePartsCutByRank0) {
  SharedFolder const folder;
  std::string const parts = folder.File("parts");
  LoadedMesh slabs = LoadBy(GetParam(), MeshReading::Slabs, "");
  SavePartition(MPI_COMM_WORLD, slabs, parts);
  std::vector<double> const expected = AllGradients(slabs);

  LoadedMesh whole = LoadBy(GetParam(), MeshReading::Whole, parts);
  EXPECT_EQ(whole.partition->globalCell(), slabs.partition->globalCell());
  EXPECT_EQ(whole.partition->globalNode(), slabs.partition->globalNode());
  EXPECT_TRUE(HaveSameBits(expected, AllGradients(whole)));

  LoadedMesh again = LoadBy(GetParam(), MeshReading::Slabs, parts);
  EXPECT_TRUE(HaveSameBits(expected, AllGradients(again)));
}

TEST_P(GradientsOnSlabs, HaveTheBitsOfTheSamePartsWhicheverWayTheyWereCut) {
  SharedFolder const folder;
  std::string const parts = folder.File("parts");
  LoadedMesh whole = LoadBy(GetParam(), MeshReading::Whole, "");  // by METIS
  SavePartition(MPI_COMM_WORLD, whole, parts);
  LoadedMesh slabs = LoadBy(GetParam(), MeshReading::Slabs, parts);
  EXPECT_EQ(whole.summary.nCutFaces, slabs.summary.nCutFaces);
  EXPECT_TRUE(HaveSameBits(AllGradients(whole), AllGradients(slabs)));
}

}  // namespace reference_host::test

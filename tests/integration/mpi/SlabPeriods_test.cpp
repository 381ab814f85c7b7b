#include "reference_host/slabs/SlabPeriods.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "SlabSupport.h"
#include "reference_host/MeshReader.h"
#include "reference_host/mesh/MeshError.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace reference_host::test {
namespace {

using test_meshes::AddPeriod;

/// Meshes with periods that are not joined.
std::vector<FaceMesh> MeshesToJoin() {
  std::vector<FaceMesh> meshes = {test_meshes::HexBox(2, 3, 4),
                                  test_meshes::Perturbed(test_meshes::TetBox(3), 0.04),
                                  test_meshes::PolyBox(2)};
  AddPeriod(meshes[0], 0);
  AddPeriod(meshes[0], 2);
  for (int direction = 0; direction < 3; ++direction) AddPeriod(meshes[1], direction);
  AddPeriod(meshes[2], 1);
  meshes.push_back(ReadMesh(ZYN_TEST_DATA "/openfoam_cases/channel"));
  return meshes;
}

void ExpectJoinedAsWhole(FaceMesh whole) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (SlabBlocks const& blocks : {EvenBlocks(whole, world), UnevenBlocks(whole, world, 5)}) {
    MeshSlab slab = SlabOf(whole, world, blocks);
    JoinSlabPeriods(world, slab, "m");
    FaceMesh joined = whole;
    JoinPeriods(joined, "m");
    ExpectEqual(Gather(slab, world), joined);
  }
}

std::string RefusalOfWhole(FaceMesh mesh) {
  try {
    JoinPeriods(mesh, "m");
  } catch (MeshError const& error) {
    return error.what();
  }
  ADD_FAILURE() << "the periods are not refused";
  return {};
}

void ExpectSameRefusal(FaceMesh const& whole) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (SlabBlocks const& blocks : {EvenBlocks(whole, world), UnevenBlocks(whole, world, 6)}) {
    MeshSlab slab = SlabOf(whole, world, blocks);
    EXPECT_EQ(ErrorOnEveryRank([&] { JoinSlabPeriods(world, slab, "m"); }), RefusalOfWhole(whole));
  }
}

}  // namespace

TEST(JoinSlabPeriods, FindsTheShiftsAndTurnsOfTheWhole) {
  for (FaceMesh const& mesh : MeshesToJoin()) ExpectJoinedAsWhole(mesh);
}

TEST(JoinSlabPeriods, TakesTheShiftOfTheFirstPair) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh whole = test_meshes::HexBox(3, 3, 3);
  AddPeriod(whole, 1);
  whole = test_meshes::Perturbed(std::move(whole), 1e-6, true);  // pairs differ in their shifts
  std::vector<std::pair<int, int>>& pairs = whole.periods[0].faces;
  std::mt19937 random(3);
  for (int trial = 0; trial < 4; ++trial) {
    std::shuffle(pairs.begin(), pairs.end(), random);
    MeshSlab slab = SlabOf(whole, world);
    JoinSlabPeriods(world, slab, "m");
    FaceMesh joined = whole;
    JoinPeriods(joined, "m");
    ASSERT_EQ(slab.periods.size(), 1u);
    EXPECT_EQ(slab.periods[0].description.shift, joined.periods[0].shift);
  }
}

TEST(JoinSlabPeriods, DropsPeriodsWithoutFacesAndThoseOfGroups) {
  FaceMesh mesh = test_meshes::HexBox(2, 2, 2);
  AddPeriod(mesh, 0);
  AddPeriod(mesh, 1);
  AddPeriod(mesh, 2);
  mesh.periods[0].faces.clear();
  mesh.patches.back().group = BoundaryGroup::Wall;
  ExpectJoinedAsWhole(mesh);
  MpiCommunicator const world(MPI_COMM_WORLD);
  MeshSlab slab = SlabOf(mesh, world);
  JoinSlabPeriods(world, slab, "m");
  ASSERT_EQ(slab.periods.size(), 1u);
  EXPECT_EQ(slab.periods[0].description.name, "cyclic patch 'low_y'");
}

TEST(JoinSlabPeriods, RefusesWhatIsNoTranslation) {
  FaceMesh mesh = test_meshes::HexBox(2, 2, 2);
  AddPeriod(mesh, 0);
  FaceMesh rotational = mesh;
  rotational.periods[0].refusal = "is rotational";
  ExpectSameRefusal(rotational);

  FaceMesh otherVector = mesh;
  otherVector.periods[0].vector = Point{1.1, 0.0, 0.0};
  ExpectSameRefusal(otherVector);

  FaceMesh onItself = test_meshes::HexBox(1, 1, 1);
  AddPeriod(onItself, 0);
  onItself.periods[0].faces[0].second = onItself.periods[0].faces[0].first;
  ExpectSameRefusal(onItself);

  ExpectSameRefusal(ReadMesh(ZYN_TEST_DATA "/openfoam_cases/sector"));
}

TEST(JoinSlabPeriods, NamesTheFirstPairThatDoesNotFit) {
  for (FaceMesh mesh : MeshesToJoin()) {
    std::vector<std::pair<int, int>>& pairs = mesh.periods.back().faces;
    ASSERT_GE(pairs.size(), 4u);
    std::swap(pairs[1].second, pairs[pairs.size() - 2].second);
    ExpectSameRefusal(mesh);
  }
}

TEST(JoinSlabPeriods, NamesTheMisfitOfTheLowestPlace) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh whole = test_meshes::HexBox(3, 3, 3);
  AddPeriod(whole, 2);
  std::vector<std::pair<int, int>>& pairs = whole.periods[0].faces;
  std::reverse(pairs.begin(), pairs.end());
  std::swap(pairs[2].second, pairs[6].second);
  MeshSlab slab = SlabOf(whole, world);
  EXPECT_EQ(ErrorOnEveryRank([&] { JoinSlabPeriods(world, slab, "m"); }), RefusalOfWhole(whole));
}

}  // namespace reference_host::test

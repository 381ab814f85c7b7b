#include "reference_host/parallel/MpiExchange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/parallel/MpiReduction.h"

namespace reference_host::test {
namespace {

char const* const kBox = "box:6,5,4:tet:perturb=0.1,seed=2";
constexpr double kOutside = -7.0;

/// Interior cells: scale times the number in the whole mesh; ghost and halo cells: kOutside.
std::vector<double> OwnValues(HostPartition const& partition, CZYN3DFiniteVolumeMesh const& mesh,
                              double scale) {
  std::vector<double> field(mesh.NCell + 1, kOutside);
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    field[c] = scale * static_cast<double>(partition.globalCell()[c]);
  return field;
}

/// The same, with the values of their owners in the halo cells; ghost cells have no number in the mesh.
std::vector<double> ExchangedValues(HostPartition const& partition, CZYN3DFiniteVolumeMesh const& mesh,
                                    double scale) {
  std::vector<double> field = OwnValues(partition, mesh, scale);
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c) {
    if (partition.globalCell()[c] > 0) field[c] = scale * static_cast<double>(partition.globalCell()[c]);
  }
  return field;
}

ZYNNonBlockingBufferId Buffer(int number) { return static_cast<ZYNNonBlockingBufferId>(number); }

}  // namespace

TEST(MpiExchange, DeliversOwnersValuesAndTouchesHaloCellsAlone) {
  LoadedMesh mesh = Load(kBox);
  HostPartition& partition = *mesh.partition;
  std::vector<double> field = OwnValues(partition, *partition.mesh(), 3.0);
  mesh.exchange->DDM_Exch(field.data());
  EXPECT_EQ(field, ExchangedValues(partition, *partition.mesh(), 3.0));
  EXPECT_EQ(partition.nHaloCells() > 0, RankCount() > 1);

  field = OwnValues(partition, *partition.mesh(), 5.0);
  mesh.exchange->DDM_IExch_Start(field.data(), ZYNNonBlockingBuffer2);
  EXPECT_EQ(field, OwnValues(partition, *partition.mesh(), 5.0));  // nothing arrives before the wait
  mesh.exchange->DDM_IExch_Wait(field.data(), ZYNNonBlockingBuffer2);
  EXPECT_EQ(field, ExchangedValues(partition, *partition.mesh(), 5.0));
}

TEST(MpiExchange, FourUnderWayMayBeWaitedForInAnyOrder) {
  LoadedMesh mesh = Load(kBox);
  HostPartition& partition = *mesh.partition;
  std::array<int, 4> order = {0, 1, 2, 3};
  // Every rank starts with another order, so that neighbours wait in different orders.
  for (int r = 0; r < 5 * Rank(); ++r) std::next_permutation(order.begin(), order.end());
  for (int round = 0; round < 24; ++round) {
    std::array<std::vector<double>, 4> fields;
    for (int b = 0; b < 4; ++b) {
      fields[b] = OwnValues(partition, *partition.mesh(), 1.0 + b + 4 * round);
      mesh.exchange->DDM_IExch_Start(fields[b].data(), Buffer(b));
    }
    for (int const b : order) mesh.exchange->DDM_IExch_Wait(fields[b].data(), Buffer(b));
    for (int b = 0; b < 4; ++b) {
      EXPECT_EQ(fields[b], ExchangedValues(partition, *partition.mesh(), 1.0 + b + 4 * round))
          << "buffer " << b;
    }
    std::next_permutation(order.begin(), order.end());
  }
}

TEST(MpiExchange, BufferIsFreeForAnotherFieldAfterTheWait) {
  LoadedMesh mesh = Load(kBox);
  HostPartition& partition = *mesh.partition;
  std::vector<double> a = OwnValues(partition, *partition.mesh(), 1.0);
  std::vector<double> b = OwnValues(partition, *partition.mesh(), 2.0);
  std::vector<double> c = OwnValues(partition, *partition.mesh(), 3.0);
  std::vector<double> blocking = OwnValues(partition, *partition.mesh(), 4.0);
  mesh.exchange->DDM_IExch_Start(a.data(), ZYNNonBlockingBuffer0);
  mesh.exchange->DDM_IExch_Start(b.data(), ZYNNonBlockingBuffer1);
  mesh.exchange->DDM_IExch_Wait(a.data(), ZYNNonBlockingBuffer0);
  mesh.exchange->DDM_IExch_Start(c.data(), ZYNNonBlockingBuffer0);
  mesh.exchange->DDM_Exch(blocking.data());  // between the others
  mesh.exchange->DDM_IExch_Wait(c.data(), ZYNNonBlockingBuffer0);
  mesh.exchange->DDM_IExch_Wait(b.data(), ZYNNonBlockingBuffer1);
  EXPECT_EQ(a, ExchangedValues(partition, *partition.mesh(), 1.0));
  EXPECT_EQ(b, ExchangedValues(partition, *partition.mesh(), 2.0));
  EXPECT_EQ(c, ExchangedValues(partition, *partition.mesh(), 3.0));
  EXPECT_EQ(blocking, ExchangedValues(partition, *partition.mesh(), 4.0));
}

TEST(MpiExchange, BrokenRulesAreLogicErrors) {
  LoadedMesh mesh = Load(kBox);
  MpiExchange& exchange = *mesh.exchange;
  std::vector<double> field = OwnValues(*mesh.partition, *mesh.partition->mesh(), 1.0), other = field;
  EXPECT_THROW(exchange.DDM_IExch_Wait(field.data(), ZYNNonBlockingBuffer0), std::logic_error);
  EXPECT_THROW(exchange.DDM_Exch(nullptr), std::logic_error);
  exchange.DDM_IExch_Start(field.data(), ZYNNonBlockingBuffer0);
  EXPECT_THROW(exchange.DDM_IExch_Start(other.data(), ZYNNonBlockingBuffer0), std::logic_error);
  EXPECT_THROW(exchange.DDM_IExch_Wait(other.data(), ZYNNonBlockingBuffer0), std::logic_error);
  exchange.DDM_IExch_Wait(field.data(), ZYNNonBlockingBuffer0);
  EXPECT_EQ(field, ExchangedValues(*mesh.partition, *mesh.partition->mesh(), 1.0));
}

TEST(MpiExchange, MayBeDestroyedWithAnExchangeUnderWay) {
  LoadedMesh mesh = Load(kBox);
  std::vector<double> field = OwnValues(*mesh.partition, *mesh.partition->mesh(), 1.0);
  mesh.exchange->DDM_IExch_Start(field.data(), ZYNNonBlockingBuffer3);
  mesh.exchange.reset();
  EXPECT_EQ(field, OwnValues(*mesh.partition, *mesh.partition->mesh(), 1.0));
}

TEST(MpiReduction, AllMinIsTheSmallestOfAllRanks) {
  MpiReduction reduction(MPI_COMM_WORLD);
  int value = 10 + Rank();
  reduction.AllMin(value);
  EXPECT_EQ(10, value);
  value = -Rank();
  reduction.AllMin(value);
  EXPECT_EQ(value, 1 - RankCount());
}

}  // namespace reference_host::test

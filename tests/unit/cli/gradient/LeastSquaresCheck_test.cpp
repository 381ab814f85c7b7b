#include "cli/gradient/LeastSquaresCheck.h"

#include <gtest/gtest.h>

#include "gradient/COperatorGradientImpl.h"
#include "reference_host/parallel/MpiExchange.h"
#include "reference_host/parallel/MpiReduction.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

TEST(LeastSquaresCheck, StopsAtAZeroFirstPivot) {
  EXPECT_TRUE(LeastSquaresStopsAt(0.0, 0.0, 1.0));
  EXPECT_TRUE(LeastSquaresStopsAt(-0.0, 0.0, 1.0));
}

TEST(LeastSquaresCheck, StopsAtAZeroSecondPivot) {
  EXPECT_TRUE(LeastSquaresStopsAt(1.0, 0.0, 0.0));
  EXPECT_TRUE(LeastSquaresStopsAt(2.0, 2.0, 2.0));  // neighbours along (1, 1)
}

TEST(LeastSquaresCheck, ComparesPivotsExactly) {
  EXPECT_FALSE(LeastSquaresStopsAt(1e-300, 0.0, 1e-300));
  EXPECT_FALSE(LeastSquaresStopsAt(1.0, 0.5, 1.0));
}

TEST(LeastSquaresCheck, NamesTheLowestCellOfTheMeshThatWouldStop) {
  auto const partition = BoxPartition("box:3,3,3");
  reference_host::MpiExchange exchange(TestRanks().communicator(), *partition);
  reference_host::MpiReduction reduction(TestRanks().communicator());
  COperatorGradient op;
  op.getZyn3dGV(partition->globals(), nullptr, nullptr, partition->mesh());
  op.getPartitionFace(partition->partitionFaces());
  op.getCommunication(&exchange, &reduction);
  int leastSquares = 1;
  op.getGradType(leastSquares);
  op.Initialize();
  EXPECT_EQ(std::nullopt, LeastSquaresObstacle(TestRanks(), op, *partition));

  for (int c = 1; c <= partition->mesh()->NInnerCells; ++c) {
    auto const number = partition->globalCell()[static_cast<std::size_t>(c)];
    if (number == 9 || number == 20) op.m_pImpl->m_pSxx[c] = 0.0;
  }
  EXPECT_EQ("least squares stops at cell 9 on rank 0 (zero pivot)",
            LeastSquaresObstacle(TestRanks(), op, *partition));
}

}  // namespace
}  // namespace zyngrad

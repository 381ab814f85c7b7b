#include <gtest/gtest.h>
#include <mpi.h>

#include <cstdio>
#include <string>

namespace {

/// Prints only failures, with the rank, on ranks other than 0.
class FailurePrinter : public testing::EmptyTestEventListener {
 public:
  explicit FailurePrinter(int rank) : rank_(rank) {}

 private:
  void OnTestStart(testing::TestInfo const& test) override {
    test_ = std::string(test.test_suite_name()) + "." + test.name();
  }

  void OnTestPartResult(testing::TestPartResult const& result) override {
    if (!result.failed()) return;
    std::printf("rank %d, %s, line %d: %s\n", rank_, test_.c_str(), result.line_number(), result.message());
    std::fflush(stdout);
  }

  int rank_;
  std::string test_;
};

}  // namespace

/// Every rank runs all tests; the exit code is 0 only if they passed on every rank.
int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  testing::InitGoogleTest(&argc, argv);
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  if (rank != 0) {
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    listeners.Append(new FailurePrinter(rank));
  }
  int result = RUN_ALL_TESTS();
  MPI_Allreduce(MPI_IN_PLACE, &result, 1, MPI_INT, MPI_MAX, MPI_COMM_WORLD);
  MPI_Finalize();
  return result;
}
